#include "platform/freedesktop/power_inhibitors.h"

#include <cerrno>
#include <cstring>
#include <string>

#include "core/log/app_logger.h"
#include "platform/freedesktop/sd_bus_handles.h"

#include <fcntl.h>
#include <unistd.h>

namespace orvantis::freedesktop {
namespace {

constexpr const char* kWho = "Orvantis";

std::string describe(int r, SdBusError& error) {
    if (sd_bus_error_is_set(error.get())) {
        std::string text = error.get()->name != nullptr ? error.get()->name : "";
        if (error.get()->message != nullptr) text += std::string(": ") + error.get()->message;
        return text;
    }
    return std::strerror(-r);
}

SdBusPtr openSystemBus(std::chrono::milliseconds timeout) {
    sd_bus* raw = nullptr;
    if (sd_bus_open_system(&raw) < 0) return nullptr;
    SdBusPtr bus(raw);
    sd_bus_set_method_call_timeout(bus.get(), static_cast<std::uint64_t>(
                                                  std::chrono::duration_cast<std::chrono::microseconds>(timeout).count()));
    return bus;
}

}  // namespace

int takeLogindInhibitor(std::string_view what, std::string_view why, std::string_view mode,
                        std::chrono::milliseconds timeout, std::string& error) {
    SdBusPtr bus = openSystemBus(timeout);
    if (!bus) {
        error = "no system bus";
        return -1;
    }
    SdBusError callError;
    sd_bus_message* replyRaw = nullptr;
    const int r = sd_bus_call_method(bus.get(), std::string(kLogindService).c_str(), "/org/freedesktop/login1",
                                     "org.freedesktop.login1.Manager", "Inhibit", callError.get(), &replyRaw, "ssss",
                                     std::string(what).c_str(), kWho, std::string(why).c_str(),
                                     std::string(mode).c_str());
    SdBusMessagePtr reply(replyRaw);
    if (r < 0) {
        error = describe(r, callError);
        return -1;
    }
    int fd = -1;
    if (sd_bus_message_read(reply.get(), "h", &fd) < 0 || fd < 0) {
        error = "the login manager sent no descriptor";
        return -1;
    }
    // The message owns its descriptor: keep a copy of our own.
    const int own = fcntl(fd, F_DUPFD_CLOEXEC, 3);
    if (own < 0) error = std::strerror(errno);
    return own;
}

ScreenSaverInhibitor::ScreenSaverInhibitor(const LogCategory& log, std::chrono::milliseconds timeout)
    : log_(log), timeout_(timeout) {}

ScreenSaverInhibitor::~ScreenSaverInhibitor() {
    // The screen saver drops the cookies of a connection that closes; descriptors are ours.
    for (auto& [id, held] : held_)
        if (held.idleFd >= 0) close(held.idleFd);
    for (auto& [id, bus] : sessionBuses_) sd_bus_flush_close_unref(bus);
}

int ScreenSaverInhibitor::create(std::string_view name, std::uint32_t& id) {
    SdBusPtr bus = openSessionBus(std::chrono::duration_cast<std::chrono::microseconds>(timeout_));
    if (!bus) {
        log_.error("caffeine: no session bus, so the screen saver cannot be held off");
        return ENOTCONN;
    }
    SdBusError error;
    sd_bus_message* replyRaw = nullptr;
    const int r = sd_bus_call_method(bus.get(), std::string(kScreenSaverService).c_str(),
                                     "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver", "Inhibit",
                                     error.get(), &replyRaw, "ss", kWho, std::string(name).c_str());
    SdBusMessagePtr reply(replyRaw);
    std::uint32_t cookie = 0;
    if (r < 0 || sd_bus_message_read(reply.get(), "u", &cookie) < 0) {
        log_.error("caffeine: the screen saver service (org.freedesktop.ScreenSaver) refused: " +
                   (r < 0 ? describe(r, error) : std::string("a reply without a cookie")));
        return r < 0 ? -r : EBADMSG;
    }
    Held held{cookie, -1};
    std::string idleError;
    held.idleFd = takeLogindInhibitor("idle", name, "block", timeout_, idleError);
    if (held.idleFd < 0)
        log_.info("caffeine: no idle inhibitor of the login manager (" + idleError + "); the screen saver alone holds");
    id = nextId_++;
    held_[id] = held;
    // A bus connection that closes makes the screen saver forget the cookie: the connection
    // stays open while the assertion is held.
    sessionBuses_[id] = bus.release();
    return 0;
}

int ScreenSaverInhibitor::release(std::uint32_t id) {
    auto it = held_.find(id);
    if (it == held_.end()) return EINVAL;
    const Held held = it->second;
    held_.erase(it);
    if (held.idleFd >= 0) close(held.idleFd);
    auto bus = sessionBuses_.find(id);
    if (bus == sessionBuses_.end()) return EINVAL;
    SdBusPtr connection(bus->second);
    sessionBuses_.erase(bus);
    SdBusError error;
    const int r = sd_bus_call_method(connection.get(), std::string(kScreenSaverService).c_str(),
                                     "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver", "UnInhibit",
                                     error.get(), nullptr, "u", held.cookie);
    if (r < 0) {
        log_.warning("caffeine: the screen saver's UnInhibit failed: " + describe(r, error));
        return -r;
    }
    return 0;
}

LogindLidInhibitor::LogindLidInhibitor(const LogCategory& log, std::chrono::milliseconds timeout)
    : log_(log), timeout_(timeout) {}

LogindLidInhibitor::~LogindLidInhibitor() {
    if (fd_ >= 0) close(fd_);
}

bool LogindLidInhibitor::setDisableSleep(bool disable) {
    if (!disable) {
        if (fd_ >= 0) close(fd_);
        fd_ = -1;
        return true;
    }
    if (fd_ >= 0) return true;
    std::string error;
    fd_ = takeLogindInhibitor("handle-lid-switch", "Keeping the computer awake with the lid closed", "block", timeout_,
                              error);
    if (fd_ < 0) {
        log_.warning("lid-sleep: the login manager gave no lid-switch inhibitor: " + error);
        return false;
    }
    return true;
}

bool LogindLidInhibitor::provision() {
    std::string error;
    const int fd = takeLogindInhibitor("handle-lid-switch", "Checking that the lid switch can be held", "block",
                                       timeout_, error);
    if (fd < 0) {
        log_.info("lid-sleep: provision failed/cancelled (" + error + ")");
        return false;
    }
    close(fd);
    log_.info("lid-sleep: provision succeeded");
    return true;
}

bool LogindLidInhibitor::deprovision() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
    log_.info("lid-sleep: deprovision succeeded");
    return true;
}

}  // namespace orvantis::freedesktop
