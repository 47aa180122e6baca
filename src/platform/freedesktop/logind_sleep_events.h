#pragma once

#include <functional>
#include <memory>

#include "platform/main_loop.h"
#include "platform/subscription.h"
#include "platform/system_sleep.h"

struct sd_bus;
struct sd_bus_slot;

namespace orvantis {
struct AppLog;
}

namespace orvantis::freedesktop {

/// Sleep and wake from the login manager: the signal PrepareForSleep(true) of
/// org.freedesktop.login1.Manager before the system sleeps, PrepareForSleep(false) after it
/// woke, on a system-bus connection of its own ($DBUS_SYSTEM_BUS_ADDRESS, else the standard
/// socket) watched by the main loop. Where there is no system bus or nobody owns
/// org.freedesktop.login1, nothing is ever reported and the log says so once. Main thread only.
class LogindSleepEvents final : public platform::SystemSleepEvents {
public:
    LogindSleepEvents(platform::MainLoop& loop, const AppLog& log);
    ~LogindSleepEvents() override;
    LogindSleepEvents(const LogindSleepEvents&) = delete;
    LogindSleepEvents& operator=(const LogindSleepEvents&) = delete;

    Subscription onWillSleep(std::function<void()> callback) override { return willSleep_.add(std::move(callback)); }
    Subscription onDidWake(std::function<void()> callback) override { return didWake_.add(std::move(callback)); }

    /// True when the login manager's signal is being followed.
    bool isFollowing() const { return slot_ != nullptr; }

private:
    friend struct LogindSleepSignal;
    void process();

    platform::MainLoop& loop_;
    const AppLog& log_;
    sd_bus* bus_ = nullptr;         ///< owned
    sd_bus_slot* slot_ = nullptr;   ///< owned; the signal's match
    Subscription watch_;
    CallbackList<> willSleep_;
    CallbackList<> didWake_;
};

}  // namespace orvantis::freedesktop
