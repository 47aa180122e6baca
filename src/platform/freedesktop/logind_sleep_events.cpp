#include "platform/freedesktop/logind_sleep_events.h"

#include <cstring>
#include <string>
#include <utility>

#include "core/log/app_logger.h"
#include "platform/freedesktop/sd_bus_handles.h"

namespace orvantis::freedesktop {
namespace {

constexpr const char* kLogin = "org.freedesktop.login1";
constexpr std::uint64_t kStartTimeoutUsec = 2'000'000;

}  // namespace

/// The signal's handler; a friend, so it reaches the callback lists.
struct LogindSleepSignal {
    static int onPrepareForSleep(sd_bus_message* message, void* userdata, sd_bus_error*);
};

LogindSleepEvents::LogindSleepEvents(platform::MainLoop& loop, const AppLog& log) : loop_(loop), log_(log) {
    sd_bus* raw = nullptr;
    if (const int r = sd_bus_open_system(&raw); r < 0) {
        log_.app.info(std::string("pomodoro: no system bus (") + std::strerror(-r) +
                      "); sleep and wake are not followed");
        return;
    }
    SdBusPtr bus(raw);
    sd_bus_set_method_call_timeout(bus.get(), kStartTimeoutUsec);
    // Asked once, at start: a login manager that appears later is not followed.
    SdBusError error;
    sd_bus_message* reply = nullptr;
    int r = sd_bus_call_method(bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                               "NameHasOwner", error.get(), &reply, "s", kLogin);
    SdBusMessagePtr replyHeld(reply);
    int owned = 0;
    if (r >= 0) r = sd_bus_message_read(reply, "b", &owned);
    if (r < 0 || !owned) {
        log_.app.info("pomodoro: no login manager on the system bus; sleep and wake are not followed");
        return;
    }
    r = sd_bus_match_signal(bus.get(), &slot_, kLogin, "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                            "PrepareForSleep", &LogindSleepSignal::onPrepareForSleep, this);
    if (r < 0) {
        slot_ = nullptr;
        log_.app.warning(std::string("pomodoro: cannot follow the login manager's sleep signal: ") +
                         std::strerror(-r));
        return;
    }
    bus_ = bus.release();
    watch_ = loop_.watchReadable(sd_bus_get_fd(bus_), [this] { process(); });
    process();
    log_.app.info("pomodoro: following sleep and wake through the login manager");
}

LogindSleepEvents::~LogindSleepEvents() {
    watch_.reset();
    sd_bus_slot_unref(slot_);
    if (bus_ != nullptr) sd_bus_flush_close_unref(bus_);
}

void LogindSleepEvents::process() {
    if (bus_ == nullptr) return;
    int r = 0;
    do {
        r = sd_bus_process(bus_, nullptr);
    } while (r > 0);
    if (r < 0) {
        log_.app.warning(std::string("pomodoro: the system bus connection broke (") + std::strerror(-r) +
                         "); sleep and wake are no longer followed");
        watch_.reset();
        sd_bus_slot_unref(std::exchange(slot_, nullptr));
        sd_bus_flush_close_unref(std::exchange(bus_, nullptr));
    }
}

int LogindSleepSignal::onPrepareForSleep(sd_bus_message* message, void* userdata, sd_bus_error*) {
    auto* self = static_cast<LogindSleepEvents*>(userdata);
    int start = 0;
    if (sd_bus_message_read(message, "b", &start) < 0) {
        self->log_.app.warning("pomodoro: a PrepareForSleep signal without its flag was ignored");
        return 0;
    }
    if (start)
        self->willSleep_.notify();
    else
        self->didWake_.notify();
    return 0;
}

}  // namespace orvantis::freedesktop
