#include "core/settings/app_settings.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "testing/test_support.h"
#include "platform/sim/virtual_main_loop.h"

namespace orvantis {
namespace {

using testing::readFile;
using testing::TemporaryDirectory;

class AppSettingsTest : public ::testing::Test {
protected:
    std::filesystem::path file() const { return dir_.path() / "preferences.plist"; }
    /// A store over the same file, as a new launch would open it.
    PreferenceStore& relaunch() {
        settings_.reset();
        store_.reset();
        store_ = std::make_unique<PreferenceStore>(file(), *queue_, nullptr);
        return *store_;
    }
    AppSettings& settings() {
        if (!store_) relaunch();
        if (!settings_) settings_ = std::make_unique<AppSettings>(*store_);
        return *settings_;
    }

    TemporaryDirectory dir_;
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> queue_ = loop_.makeSerialQueue("prefs");
    std::unique_ptr<PreferenceStore> store_;
    std::unique_ptr<AppSettings> settings_;
};

TEST_F(AppSettingsTest, AFreshProfileAnswersEveryDefaultAlsoForUnregisteredKeys) {
    AppSettings& s = settings();
    int checked = 0;
    settings::forEach([&](const auto& setting) {
        using S = std::decay_t<decltype(setting)>;
        if constexpr (std::is_same_v<S, StringListSetting>) {
            EXPECT_TRUE(s.get(setting).empty()) << setting.name;
        } else if constexpr (std::is_same_v<S, IntSetting>) {
            EXPECT_EQ(s.get(setting), setting.defaultValue) << setting.name;
        } else {
            EXPECT_EQ(s.get(setting), setting.defaultValue) << setting.name;
        }
        ++checked;
    });
    EXPECT_EQ(checked, 58);
    EXPECT_TRUE(s.layoutSwitchEnabled());
    EXPECT_TRUE(s.translationEnabled());
    EXPECT_TRUE(s.iCloudSyncSettingsEnabled());
    EXPECT_FALSE(s.hasCompletedOnboarding());
    EXPECT_EQ(s.switchDelayMs(), 100);
    EXPECT_EQ(s.clipboardHistorySize(), 20);
    EXPECT_EQ(s.workDurationMinutes(), 25);
    EXPECT_EQ(s.breakDurationMinutes(), 5);
    EXPECT_EQ(s.longBreakDurationMinutes(), 15);
    EXPECT_EQ(s.passwordLength(), 16);
    EXPECT_EQ(s.passwordClipboardClearSeconds(), 60);
    EXPECT_EQ(s.keyboardLockAutoUnlockMinutes(), 10);
    EXPECT_EQ(s.menuBarHiderAutoCollapseSeconds(), 0);
    EXPECT_EQ(s.caffeineDefaultDurationMinutes(), 0);
    EXPECT_EQ(s.settingsLanguage(), SettingsLanguage::en);
    EXPECT_EQ(s.translatorPrimaryLanguage(), "en");
    EXPECT_EQ(s.translatorSecondaryLanguage(), "ru");
    EXPECT_EQ(s.translationEndpoint(), "https://translate.googleapis.com");
    EXPECT_EQ(s.passwordMode(), PasswordMode::popup);
}

TEST_F(AppSettingsTest, TheTwelveHotkeysDefaultAsTheTableShowsThem) {
    AppSettings& s = settings();
    EXPECT_EQ(s.hotkey().displayString(), "⇧⌫");
    EXPECT_EQ(s.translationHotkey().displayString(), "⌃⇧X");
    EXPECT_EQ(s.directTranslationHotkey().displayString(), "⌃⌥X");
    EXPECT_EQ(s.clipboardHistoryHotkey().displayString(), "⌃⇧V");
    EXPECT_EQ(s.pomodoroHotkey().displayString(), "⌃⇧M");
    EXPECT_EQ(s.passwordHotkey().displayString(), "⌃⇧P");
    EXPECT_EQ(s.snippetExpanderHotkey().displayString(), "⌃⇧⌫");
    EXPECT_EQ(s.textTransformerHotkey().displayString(), "⌃⇧T");
    EXPECT_EQ(s.hotkeyOverlayHotkey().displayString(), "⌃⇧H");
    EXPECT_EQ(s.keyboardLockHotkey().displayString(), "⌃⇧L");
    EXPECT_EQ(s.menuBarHiderHotkey().displayString(), "⌃⇧B");
    EXPECT_EQ(s.caffeineHotkey().displayString(), "⌃⇧K");
}

TEST_F(AppSettingsTest, ThirtyEightDefaultsAreRegisteredAndNoneIsWritten) {
    const auto defaults = AppSettings::registeredDefaults();
    EXPECT_EQ(defaults.size(), 38u);
    EXPECT_EQ(defaults.count("MOLVEX.Orvantis.switchDelayMs"), 1u);
    EXPECT_EQ(defaults.count("MOLVEX.Orvantis.hotkey"), 0u);
    EXPECT_EQ(defaults.count("MOLVEX.Orvantis.layoutSwitchEnabled"), 0u);
    EXPECT_EQ(defaults.count("MOLVEX.Orvantis.translationEndpoint"), 0u);
    EXPECT_EQ(defaults.at("MOLVEX.Orvantis.directTranslationHotkey"),
              PreferenceValue(PreferenceData{R"({"keyCode":7,"modifiers":786432})"}));
    EXPECT_EQ(defaults.at("MOLVEX.Orvantis.passwordMode"), PreferenceValue(std::string("popup")));
    settings();
    store_->flush();
    const std::string xml = readFile(file());
    EXPECT_EQ(xml.find("switchDelayMs"), std::string::npos);
    EXPECT_NE(xml.find("pomodoroHotkeyMigrationV1"), std::string::npos) << "only the migration flag";
    EXPECT_EQ(store_->storedValues().size(), 1u);
}

TEST_F(AppSettingsTest, AStoredFalseStaysFalseAndAbsenceGivesTrue) {
    settings().setLayoutSwitchEnabled(false);
    relaunch();
    EXPECT_FALSE(settings().layoutSwitchEnabled());
    settings().reset(settings::kLayoutSwitchEnabled);
    EXPECT_TRUE(settings().layoutSwitchEnabled());
}

TEST_F(AppSettingsTest, UndecodableHotkeyDataAnswersTheDefaultAndIsNotRepaired) {
    settings();
    store_->set("MOLVEX.Orvantis.hotkey", PreferenceData{"{not json"});
    EXPECT_EQ(settings().hotkey(), (HotkeyDescriptor{51, 0x20000}));
    EXPECT_EQ(settings().hotkey().displayString(), "⇧⌫");
    EXPECT_EQ(store_->dataForKey("MOLVEX.Orvantis.hotkey"), "{not json");
    store_->set("MOLVEX.Orvantis.hotkey", std::int64_t{5});
    EXPECT_EQ(settings().hotkey(), (HotkeyDescriptor{51, 0x20000}));
}

TEST_F(AppSettingsTest, HotkeysAreStoredAsTheirJsonData) {
    settings().setTranslationHotkey(HotkeyDescriptor{9, 0x120000});
    EXPECT_EQ(store_->dataForKey("MOLVEX.Orvantis.translationHotkey"), R"({"keyCode":9,"modifiers":1179648})");
    EXPECT_EQ(settings().translationHotkey().displayString(), "⇧⌘V");
}

TEST_F(AppSettingsTest, AnOldPomodoroHotkeyOnTextToolsKeysMovesOnceAndOnlyOnce) {
    relaunch().set("MOLVEX.Orvantis.pomodoroHotkey", PreferenceData{R"({"keyCode":17,"modifiers":393216})"});
    EXPECT_EQ(settings().pomodoroHotkey().displayString(), "⌃⇧M");
    EXPECT_TRUE(store_->boolForKey("MOLVEX.Orvantis.pomodoroHotkeyMigrationV1"));
    // The user sets it back on purpose: a later launch leaves it.
    settings().setPomodoroHotkey(HotkeyDescriptor{17, 0x60000});
    relaunch();
    EXPECT_EQ(settings().pomodoroHotkey().displayString(), "⌃⇧T");
}

TEST_F(AppSettingsTest, TheMigrationLeavesOtherAndUndecodableValues) {
    relaunch().set("MOLVEX.Orvantis.pomodoroHotkey", PreferenceData{R"({"keyCode":17,"modifiers":1179648})"});
    EXPECT_EQ(settings().pomodoroHotkey(), (HotkeyDescriptor{17, 0x120000}));
    settings_.reset();
    store_->remove("MOLVEX.Orvantis.pomodoroHotkeyMigrationV1");
    store_->set("MOLVEX.Orvantis.pomodoroHotkey", PreferenceData{"garbage"});
    settings();
    EXPECT_EQ(store_->dataForKey("MOLVEX.Orvantis.pomodoroHotkey"), "garbage");
    EXPECT_TRUE(store_->boolForKey("MOLVEX.Orvantis.pomodoroHotkeyMigrationV1"));
}

TEST_F(AppSettingsTest, UnknownEnumerationValuesReadAsTheFirstCase) {
    settings();
    store_->set("MOLVEX.Orvantis.settingsLanguage", std::string("de"));
    EXPECT_EQ(settings().settingsLanguage(), SettingsLanguage::en);
    store_->set("MOLVEX.Orvantis.settingsLanguage", std::string("ru"));
    EXPECT_EQ(settings().settingsLanguage(), SettingsLanguage::ru);
    store_->set("MOLVEX.Orvantis.passwordMode", std::string("typeIt"));
    EXPECT_EQ(settings().passwordMode(), PasswordMode::popup);
    settings().setPasswordMode(PasswordMode::copyOnly);
    EXPECT_EQ(store_->stringForKey("MOLVEX.Orvantis.passwordMode"), "copyOnly");
}

TEST_F(AppSettingsTest, AutoUnlockMinutesReadZeroAsTenAndClampTheRest) {
    settings();
    store_->set("MOLVEX.Orvantis.keyboardLockAutoUnlockMin", std::int64_t{0});
    EXPECT_EQ(settings().keyboardLockAutoUnlockMinutes(), 10);
    store_->set("MOLVEX.Orvantis.keyboardLockAutoUnlockMin", std::int64_t{500});
    EXPECT_EQ(settings().keyboardLockAutoUnlockMinutes(), 60);
    store_->set("MOLVEX.Orvantis.keyboardLockAutoUnlockMin", std::int64_t{-3});
    EXPECT_EQ(settings().keyboardLockAutoUnlockMinutes(), 1);
}

TEST_F(AppSettingsTest, IntegersAreClampedOnReadAndOnWrite) {
    settings();
    store_->set("MOLVEX.Orvantis.switchDelayMs", std::int64_t{9999});
    EXPECT_EQ(settings().switchDelayMs(), 500);
    store_->set("MOLVEX.Orvantis.clipboardHistorySize", std::int64_t{0});
    EXPECT_EQ(settings().clipboardHistorySize(), 1);
    store_->set("MOLVEX.Orvantis.workDurationMinutes", std::string("not a number"));
    EXPECT_EQ(settings().workDurationMinutes(), 5);
    settings().setPasswordLength(1000);
    EXPECT_EQ(store_->integerForKey("MOLVEX.Orvantis.passwordLength"), 128);
    settings().setSwitchDelayMs(0);
    EXPECT_EQ(settings().switchDelayMs(), 0);
    settings().setCaffeineDefaultDurationMinutes(-1);
    EXPECT_EQ(store_->integerForKey("MOLVEX.Orvantis.caffeineDefaultDurationMin"), 0);
}

TEST_F(AppSettingsTest, StringListsAnswerEmptyWhenAnyElementIsNoString) {
    settings().setClipboardIgnoredApps({"org.keepassxc.KeePassXC", "1password"});
    EXPECT_EQ(settings().clipboardIgnoredApps().size(), 2u);
    store_->set("MOLVEX.Orvantis.caffeineActiveApps", std::string("not a list"));
    EXPECT_TRUE(settings().caffeineActiveApps().empty());
}

TEST_F(AppSettingsTest, ShortKeysDropTheCommonPrefix) {
    EXPECT_EQ(AppSettings::shortKey(settings::kPasswordClipboardClearSeconds.key), "passwordClipboardClearSec");
    EXPECT_EQ(AppSettings::shortKey("other"), "other");
}

}  // namespace
}  // namespace orvantis
