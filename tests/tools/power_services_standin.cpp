// A stand-in for the desktop's power services on a test bus: the screen saver
// (org.freedesktop.ScreenSaver, Inhibit and UnInhibit) on the session bus, and with --logind the
// login manager's Inhibit (org.freedesktop.login1.Manager) on the system bus. Every call is
// written as one line to the record file:
//
//     Inhibit <application>|<reason> -> <cookie>
//     UnInhibit <cookie>
//     login1 Inhibit <what>|<who>|<why>|<mode>
//     login1 released <what>          (the descriptor handed out was closed)
//
//   power_services_standin --record FILE [--screensaver] [--logind]
//
// Runs until killed.

#include <poll.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

FILE* record = nullptr;
std::uint32_t nextCookie = 1;

struct Held {
    int readEnd;
    std::string what;
};
std::vector<Held> held;

void line(const std::string& text) {
    std::fprintf(record, "%s\n", text.c_str());
    std::fflush(record);
}

int inhibit(sd_bus_message* call, void*, sd_bus_error*) {
    const char* application = nullptr;
    const char* reason = nullptr;
    if (const int r = sd_bus_message_read(call, "ss", &application, &reason); r < 0) return r;
    const std::uint32_t cookie = nextCookie++;
    line(std::string("Inhibit ") + application + "|" + reason + " -> " + std::to_string(cookie));
    return sd_bus_reply_method_return(call, "u", cookie);
}

int unInhibit(sd_bus_message* call, void*, sd_bus_error*) {
    std::uint32_t cookie = 0;
    if (const int r = sd_bus_message_read(call, "u", &cookie); r < 0) return r;
    line("UnInhibit " + std::to_string(cookie));
    return sd_bus_reply_method_return(call, "");
}

int logindInhibit(sd_bus_message* call, void*, sd_bus_error*) {
    const char *what = nullptr, *who = nullptr, *why = nullptr, *mode = nullptr;
    if (const int r = sd_bus_message_read(call, "ssss", &what, &who, &why, &mode); r < 0) return r;
    line(std::string("login1 Inhibit ") + what + "|" + who + "|" + why + "|" + mode);
    int fds[2];
    if (pipe(fds) != 0) return -errno;
    held.push_back(Held{fds[0], what});
    const int r = sd_bus_reply_method_return(call, "h", fds[1]);
    close(fds[1]);  // the reply keeps its own copy
    return r;
}

const sd_bus_vtable kScreenSaver[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Inhibit", "ss", "u", inhibit, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("UnInhibit", "u", "", unInhibit, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

const sd_bus_vtable kLogin[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Inhibit", "ssss", "h", logindInhibit, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

}  // namespace

int main(int argc, char** argv) {
    bool screensaver = false, logind = false;
    const char* file = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--record") == 0 && i + 1 < argc) file = argv[++i];
        else if (std::strcmp(argv[i], "--screensaver") == 0) screensaver = true;
        else if (std::strcmp(argv[i], "--logind") == 0) logind = true;
    }
    if (file == nullptr || (!screensaver && !logind)) {
        std::fprintf(stderr, "usage: power_services_standin --record FILE [--screensaver] [--logind]\n");
        return 2;
    }
    record = std::fopen(file, "a");
    if (record == nullptr) return 1;
    std::vector<sd_bus*> buses;
    if (screensaver) {
        sd_bus* bus = nullptr;
        if (sd_bus_open_user(&bus) < 0) return 1;
        for (const char* path : {"/org/freedesktop/ScreenSaver", "/ScreenSaver"})
            if (sd_bus_add_object_vtable(bus, nullptr, path, "org.freedesktop.ScreenSaver", kScreenSaver, nullptr) < 0)
                return 1;
        if (sd_bus_request_name(bus, "org.freedesktop.ScreenSaver", 0) < 0) return 1;
        buses.push_back(bus);
    }
    if (logind) {
        sd_bus* bus = nullptr;
        if (sd_bus_open_system(&bus) < 0) return 1;
        if (sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/login1", "org.freedesktop.login1.Manager", kLogin,
                                     nullptr) < 0)
            return 1;
        if (sd_bus_request_name(bus, "org.freedesktop.login1", 0) < 0) return 1;
        buses.push_back(bus);
    }
    line("ready");
    for (;;) {
        for (sd_bus* bus : buses)
            while (sd_bus_process(bus, nullptr) > 0) {
            }
        std::vector<pollfd> fds;
        for (sd_bus* bus : buses) fds.push_back(pollfd{sd_bus_get_fd(bus), static_cast<short>(sd_bus_get_events(bus)), 0});
        for (const auto& h : held) fds.push_back(pollfd{h.readEnd, POLLIN, 0});
        poll(fds.data(), fds.size(), 200);
        // A closed inhibitor: its pipe's write end is gone everywhere.
        for (std::size_t i = 0; i < held.size();) {
            pollfd p{held[i].readEnd, POLLIN, 0};
            if (poll(&p, 1, 0) > 0 && (p.revents & (POLLHUP | POLLIN))) {
                line("login1 released " + held[i].what);
                close(held[i].readEnd);
                held.erase(held.begin() + static_cast<std::ptrdiff_t>(i));
            } else {
                ++i;
            }
        }
    }
}
