#include <gtest/gtest.h>

#include "core/settings/app_settings.h"
#include "testing/test_support.h"
#include "core/strings/settings_strings.h"
#include "platform/serial_queue.h"

namespace orvantis {
namespace {

/// The interface language comes from the settings alone, never from the system's locale.
TEST(InterfaceLanguageTest, AnAbsentSettingMeansEnglishEvenOnARussianSystem) {
    testing::TemporaryDirectory dir;
    const testing::ScopedEnv lang("LANG", "ru_RU.UTF-8");
    const testing::ScopedEnv all("LC_ALL", "ru_RU.UTF-8");
    const testing::ScopedEnv language("LANGUAGE", "ru");
    platform::ThreadSerialQueue writer("prefs");
    PreferenceStore store(dir.path() / "preferences.plist", writer, nullptr);
    AppSettings settings(store);
    const auto strings = SettingsStrings::make(settings.settingsLanguage());
    EXPECT_EQ(strings.menuQuitItem, "Quit Orvantis");
    EXPECT_EQ(strings.settingsWindowTitle, "Orvantis Settings");
    settings.setSettingsLanguage(SettingsLanguage::ru);
    EXPECT_EQ(SettingsStrings::make(settings.settingsLanguage()).menuQuitItem, "Выйти из Orvantis");
}

}  // namespace
}  // namespace orvantis
