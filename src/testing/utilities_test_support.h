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
#include "platform/sim/system_utilities.h"
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

// The simulated desktop's system services under the names the tests use.
using FakePower = sim::PowerAssertions;
using FakeApplications = sim::Applications;
using FakeLidSleep = sim::LidSleepControl;
using FakeDevices = sim::PointerDevices;
using RecordingRunner = sim::CommandRunner;

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
