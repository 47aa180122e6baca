// Stand-ins for the Pomodoro's end-to-end test, on the buses the test gives them:
//
//   pomodoro_bus_standin notifications FILE
//       owns org.freedesktop.Notifications on the session bus and appends one line per Notify,
//       "app<TAB>summary<TAB>body", to FILE.
//   pomodoro_bus_standin logind FIFO
//       owns org.freedesktop.login1 on the system bus ($DBUS_SYSTEM_BUS_ADDRESS) and emits
//       PrepareForSleep(true) for each line "sleep" read from FIFO, PrepareForSleep(false) for
//       "wake".
//
// Prints "ready" once the name is owned. Ends on SIGTERM.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace {

FILE* gRecord = nullptr;

int getServerInformation(sd_bus_message* call, void*, sd_bus_error*) {
    return sd_bus_reply_method_return(call, "ssss", "stand-in", "orvantis-e2e", "1", "1.2");
}

int notify(sd_bus_message* call, void*, sd_bus_error*) {
    const char *app = nullptr, *icon = nullptr, *summary = nullptr, *body = nullptr;
    unsigned replaces = 0;
    if (sd_bus_message_read(call, "susss", &app, &replaces, &icon, &summary, &body) < 0) return -EINVAL;
    std::fprintf(gRecord, "%s\t%s\t%s\n", app, summary, body);
    std::fflush(gRecord);
    return sd_bus_reply_method_return(call, "u", 1u);
}

const sd_bus_vtable kVtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("GetServerInformation", "", "ssss", getServerInformation, 0),
    SD_BUS_METHOD("Notify", "susssasa{sv}i", "u", notify, 0),
    SD_BUS_VTABLE_END,
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s notifications FILE | logind FIFO\n", argv[0]);
        return 2;
    }
    const std::string mode = argv[1];
    sd_bus* bus = nullptr;
    const int opened = mode == "logind" ? sd_bus_open_system(&bus) : sd_bus_open_user(&bus);
    if (opened < 0) {
        std::fprintf(stderr, "no bus: %s\n", std::strerror(-opened));
        return 1;
    }
    int fifo = -1;
    if (mode == "notifications") {
        gRecord = std::fopen(argv[2], "a");
        if (gRecord == nullptr || sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/Notifications",
                                                           "org.freedesktop.Notifications", kVtable, nullptr) < 0)
            return 1;
        if (sd_bus_request_name(bus, "org.freedesktop.Notifications", 0) < 0) return 1;
    } else if (mode == "logind") {
        fifo = ::open(argv[2], O_RDWR | O_NONBLOCK);  // RDWR: never sees an end of file
        if (fifo < 0 || sd_bus_request_name(bus, "org.freedesktop.login1", 0) < 0) return 1;
    } else {
        return 2;
    }
    std::printf("ready\n");
    std::fflush(stdout);
    std::string pending;
    for (;;) {
        while (sd_bus_process(bus, nullptr) > 0) {
        }
        pollfd fds[2] = {{sd_bus_get_fd(bus), static_cast<short>(sd_bus_get_events(bus)), 0}, {fifo, POLLIN, 0}};
        if (::poll(fds, fifo >= 0 ? 2 : 1, 200) < 0 && errno != EINTR) return 1;
        if (fifo >= 0 && (fds[1].revents & POLLIN)) {
            char buffer[256];
            const ssize_t n = ::read(fifo, buffer, sizeof buffer);
            if (n > 0) pending.append(buffer, static_cast<std::size_t>(n));
            for (auto end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
                const std::string line = pending.substr(0, end);
                pending.erase(0, end + 1);
                if (line == "sleep" || line == "wake")
                    sd_bus_emit_signal(bus, "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                                       "PrepareForSleep", "b", line == "sleep" ? 1 : 0);
                sd_bus_flush(bus);
            }
        }
    }
}
