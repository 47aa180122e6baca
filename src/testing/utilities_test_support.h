#pragma once

// Shared pieces of the system utilities' tests: a settings store, a log whose lines are kept,
// the simulated desktop with a running event monitor, and fakes of the desktop's services.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "platform/applications.h"
#include "platform/sim/desktop.h"
#include "platform/system_utilities.h"
#include "testing/test_support.h"

namespace orvantis::utilities_testing {

class RecordingSink final : public SystemLogSink {
public:
    explicit RecordingSink(std::vector<std::string>& lines) : lines_(lines) {}
    void log(Type type, std::string_view, std::string_view message) override {
        const char* name = type == Type::Debug ? "debug" : type == Type::Info ? "info" : "error";
        lines_.push_back(std::string(name) + " " + std::string(message));
    }

private:
    std::vector<std::string>& lines_;
};

/// The power assertion service: counts and can refuse.
class FakePower final : public platform::PowerAssertions {
public:
    int create(std::string_view name, std::uint32_t& id) override {
        ++creates;
        lastName = std::string(name);
        if (refuse != 0) return refuse;
        id = ++nextId;
        held = true;
        return 0;
    }
    int release(std::uint32_t id) override {
        ++releases;
        releasedId = id;
        held = false;
        return releaseResult;
    }
    int creates = 0, releases = 0, refuse = 0, releaseResult = 0;
    std::uint32_t nextId = 100, releasedId = 0;
    bool held = false;
    std::string lastName;
};

/// Frontmost and running applications, set by the test, with their notices.
class FakeApplications final : public platform::Applications, public platform::ApplicationWatch {
public:
    std::optional<platform::ApplicationInfo> frontmostApplication() const override { return frontmost; }
    std::vector<platform::ApplicationInfo> runningApplications() const override { return running; }
    Subscription onActivated(Callback c) override { return activated.add(std::move(c)); }
    Subscription onLaunched(Callback c) override { return launched.add(std::move(c)); }
    Subscription onTerminated(Callback c) override { return terminated.add(std::move(c)); }

    void activate(const std::string& id) {
        frontmost = platform::ApplicationInfo{id, id, 1};
        activated.notify();
    }
    void launch(const std::string& id) {
        running.push_back(platform::ApplicationInfo{id, id, 2});
        launched.notify();
    }
    void terminate(const std::string& id) {
        std::erase_if(running, [&](const platform::ApplicationInfo& a) { return a.bundleID == id; });
        terminated.notify();
    }

    std::optional<platform::ApplicationInfo> frontmost;
    std::vector<platform::ApplicationInfo> running;
    CallbackList<> activated, launched, terminated;
};

/// Lid-close control that records each call and can fail.
class FakeLidSleep final : public platform::LidSleepControl {
public:
    bool setDisableSleep(bool disable) override {
        calls.push_back(disable ? "disable 1" : "disable 0");
        if (fail) return false;
        disabled = disable;
        return true;
    }
    bool provision() override {
        calls.push_back("provision");
        return provisionResult;
    }
    bool deprovision() override {
        calls.push_back("deprovision");
        return deprovisionResult;
    }
    std::vector<std::string> calls;
    bool fail = false, disabled = false, provisionResult = true, deprovisionResult = true;
};

/// The settings, the log and the simulated desktop with its monitor running.
class UtilitiesFixture {
public:
    UtilitiesFixture() { monitor.start(); }

    void settle() { desktop.loop().runUntilIdle(); }
    bool logged(const std::string& line) const {
        return std::find(logLines.begin(), logLines.end(), line) != logLines.end();
    }
    std::size_t logCount(const std::string& prefix) const {
        return static_cast<std::size_t>(std::count_if(logLines.begin(), logLines.end(), [&](const std::string& l) {
            return l.starts_with(prefix);
        }));
    }

    testing::TemporaryDirectory dir;
    sim::Desktop desktop;
    std::unique_ptr<platform::SerialQueue> prefsQueue = desktop.loop().makeSerialQueue("prefs");
    std::unique_ptr<platform::SerialQueue> logQueue = desktop.loop().makeSerialQueue("log");
    PreferenceStore store{dir.path() / "preferences.plist", *prefsQueue, nullptr};
    AppSettings settings{store};
    std::vector<std::string> logLines;
    AppLogger logger{dir.path() / "logs", *logQueue, desktop.loop(), std::make_unique<RecordingSink>(logLines)};
    GlobalEventMonitor monitor{settings, desktop.eventTap(), desktop.loop(), logger.log()};
};

}  // namespace orvantis::utilities_testing
