#pragma once

// Shared by the Pomodoro tests: a virtual desktop, a private settings store and log.

#include <memory>
#include <string>

#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "platform/sim/desktop.h"
#include "testing/test_support.h"

namespace orvantis::pomodoro_testing {

struct Environment {
    testing::TemporaryDirectory dir;
    sim::Desktop desktop;
    std::unique_ptr<platform::SerialQueue> prefsQueue = desktop.loop().makeSerialQueue("prefs");
    std::unique_ptr<platform::SerialQueue> logQueue = desktop.loop().makeSerialQueue("log");
    std::unique_ptr<platform::SerialQueue> historyQueue = desktop.loop().makeSerialQueue("history");
    PreferenceStore store{dir.path() / "preferences.plist", *prefsQueue, nullptr};
    AppSettings settings{store};
    AppLogger logger{dir.path() / "logs", *logQueue, desktop.loop()};
    AppLog log{logger};

    sim::VirtualMainLoop& loop() { return desktop.loop(); }
    /// Stores a raw value, past the typed view's clamping, as another program could.
    void storeRaw(const IntSetting& setting, std::int64_t value) { store.set(setting.key, value); }
    /// Everything the log files hold so far.
    std::string logText() {
        loop().runUntilIdle();
        std::string text;
        for (const auto& entry : std::filesystem::directory_iterator(dir.path() / "logs"))
            text += testing::readFile(entry.path());
        return text;
    }
};

}  // namespace orvantis::pomodoro_testing
