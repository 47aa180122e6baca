#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/focus_commands.h"
#include "platform/main_loop.h"
#include "platform/subscription.h"
#include "platform/system_sleep.h"
#include "platform/user_notifications.h"

namespace orvantis::sim {

/// Recording notifications: banners and beeps are counted; authorisation is a switch, answered
/// on the next turn of the loop. Main thread only.
class UserNotifications final : public platform::UserNotifications {
public:
    explicit UserNotifications(platform::MainLoop& loop) : loop_(loop) {}
    struct Banner {
        std::string title, body;
    };
    bool authorized = true;
    int authorizationRequests = 0;
    int beeps = 0;
    std::vector<Banner> banners;

    void requestAuthorization() override { ++authorizationRequests; }
    void checkAuthorization(std::function<void(bool)> done) override {
        loop_.post([this, done = std::move(done)] { done(authorized); });
    }
    void post(const std::string& title, const std::string& body) override { banners.push_back({title, body}); }
    void beep() override { ++beeps; }

private:
    platform::MainLoop& loop_;
};

/// Sleep and wake sent by hand.
class SystemSleepEvents final : public platform::SystemSleepEvents {
public:
    Subscription onWillSleep(std::function<void()> callback) override { return willSleep_.add(std::move(callback)); }
    Subscription onDidWake(std::function<void()> callback) override { return didWake_.add(std::move(callback)); }
    void sleep() { willSleep_.notify(); }
    void wake() { didWake_.notify(); }

private:
    CallbackList<> willSleep_;
    CallbackList<> didWake_;
};

/// A listing set by hand, and a record of the commands run.
class FocusCommands final : public platform::FocusCommands {
public:
    std::optional<std::string> listing = std::string();
    int listings = 0;
    std::vector<std::string> runs;

    std::optional<std::string> list() override {
        ++listings;
        return listing;
    }
    void run(const std::string& name) override { runs.push_back(name); }
};

}  // namespace orvantis::sim
