#include "core/shell/settings_form.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/settings/hotkey_names.h"
#include "platform/sim/virtual_main_loop.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

using D = HotkeyDescriptor;
using testing::TemporaryDirectory;
namespace s = settings;

/// Records every call of the save and every key the store sees written, in one list.
class RecordingTarget final : public SettingsSaveTarget {
public:
    explicit RecordingTarget(PreferenceStore& store)
        : writes_(store.onChange([this](const std::vector<std::string>& keys) {
              for (const auto& key : keys) calls.push_back("write " + std::string(AppSettings::shortKey(key)));
          })) {}

    bool confirmClipboardSyncConsent() override { calls.push_back("consent"); return consent; }
    void setLaunchAtLogin(bool enabled) override { calls.push_back(enabled ? "launchAtLogin on" : "launchAtLogin off"); }
    void postSettingsLanguageChanged() override { calls.push_back("languageChanged"); }
    void clearClipboardPersistence() override { calls.push_back("clearPersistence"); }
    void applyScrollReverser() override { calls.push_back("applyScrollReverser"); }
    void updateMenuBarHiderHotkey(const HotkeyDescriptor&) override { calls.push_back("updateMenuBarHiderHotkey"); }
    void applyMenuBarHider() override { calls.push_back("applyMenuBarHider"); }
    void showLidCloseNeedsApp() override { calls.push_back("lidNeedsApp"); }
    bool provisionLidCloseInteractively() override { calls.push_back("provision"); return provisionResult; }
    bool deprovisionLidClose() override { calls.push_back("deprovision"); return deprovisionResult; }
    void showLidCloseRemovalCancelled() override { calls.push_back("lidRemovalCancelled"); }
    void applyCaffeine() override { calls.push_back("applyCaffeine"); }
    bool keyboardLocked() const override { return locked; }
    void unlockKeyboard(std::string_view reason) override { calls.push_back("unlock " + std::string(reason)); }
    void postMenuBarNeedsRebuild() override { calls.push_back("menuBarNeedsRebuild"); }
    void updateMonitorHotkey(HotkeyField field, const HotkeyDescriptor& hotkey) override {
        calls.push_back("monitor " + std::string(caseName(field)));
        monitor[static_cast<std::size_t>(field)] = hotkey;
    }
    void setClipboardHistoryMaxSize(int size) override { calls.push_back("maxSize " + std::to_string(size)); }
    void settingsSyncToggled() override { calls.push_back("settingsSyncToggled"); }
    void clipboardSyncToggled() override { calls.push_back("clipboardSyncToggled"); }
    void closeWindow() override { calls.push_back("close"); }

    std::ptrdiff_t position(std::string_view call) const {
        for (std::size_t i = 0; i < calls.size(); ++i)
            if (calls[i] == call) return static_cast<std::ptrdiff_t>(i);
        return -1;
    }
    bool has(std::string_view call) const { return position(call) >= 0; }

    std::vector<std::string> calls;
    std::array<HotkeyDescriptor, kHotkeyFieldCount> monitor{};
    bool consent = true, provisionResult = true, deprovisionResult = true, locked = false;

private:
    Subscription writes_;
};

class SettingsFormTest : public ::testing::Test {
protected:
    std::filesystem::path file() const { return dir_.path() / "preferences.plist"; }
    /// Reads what is on disk through a fresh store, as the next launch would.
    std::unique_ptr<PreferenceStore> onDisk() {
        store_.flush();
        return std::make_unique<PreferenceStore>(file(), *queue_, nullptr);
    }

    TemporaryDirectory dir_;
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> queue_ = loop_.makeSerialQueue("prefs");
    PreferenceStore store_{file(), *queue_, nullptr};
    AppSettings settings_{store_};
};

TEST_F(SettingsFormTest, CopiesEverySettingOnOpenAndWritesNothingBeforeSave) {
    settings_.setSwitchDelayMs(250);
    settings_.setSettingsLanguage(SettingsLanguage::ru);
    SettingsForm form(settings_);
    EXPECT_EQ(form.get(s::kSwitchDelayMs), 250);
    EXPECT_EQ(form.language(), SettingsLanguage::ru);
    const auto before = store_.storedValues();
    form.set(s::kSwitchDelayMs, 400);
    form.set(s::kPomodoroEnabled, false);
    form.set(s::kTranslationHotkey, D{1, D::kOption});
    form.addSnippet();
    EXPECT_EQ(store_.storedValues(), before);
    EXPECT_EQ(settings_.switchDelayMs(), 250);
}

TEST_F(SettingsFormTest, CancelAndCloseDropTheCopies) {
    {
        SettingsForm form(settings_);
        form.set(s::kSwitchDelayMs, 400);
        form.set(s::kClipboardHistoryEnabled, false);
    }  // the window closed without Save
    EXPECT_EQ(settings_.switchDelayMs(), 100);
    EXPECT_TRUE(settings_.clipboardHistoryEnabled());
    EXPECT_FALSE(store_.hasStoredValue(s::kSwitchDelayMs.key));
    SettingsForm reopened(settings_);
    EXPECT_EQ(reopened.get(s::kSwitchDelayMs), 100);
}

TEST_F(SettingsFormTest, SaveRunsTheSequenceInItsOrder) {
    settings_.setClipboardPersistEnabled(true);
    settings_.setCaffeineLidClose(true);
    SettingsForm form(settings_);
    RecordingTarget target(store_);
    target.locked = true;
    form.set(s::kHotkey, D{51, D::kOption});
    form.set(s::kSwitchDelayMs, 300);
    form.set(s::kLaunchAtLogin, true);
    form.setLanguage(SettingsLanguage::ru);
    form.set(s::kClipboardPersistEnabled, false);
    form.set(s::kPasswordLength, 20);
    form.set(s::kReverseMouseScroll, true);
    form.set(s::kMenuBarHiderEnabled, true);
    form.set(s::kCaffeineLidClose, false);
    form.set(s::kKeyboardLockEnabled, false);
    form.set(s::kClipboardHistorySize, 50);
    form.set(s::kICloudSyncClipboardEnabled, true);
    form.set(s::kICloudSyncSettingsEnabled, false);
    ASSERT_TRUE(form.save(target));
    const std::vector<std::string> expected{
        "consent",
        "write hotkey", "write switchDelayMs", "write launchAtLogin", "launchAtLogin on", "write settingsLanguage",
        "languageChanged",
        "write clipboardPersistEnabled", "clearPersistence",
        "write passwordLength",
        "write reverseMouseScroll", "applyScrollReverser",
        "write menuBarHiderEnabled", "updateMenuBarHiderHotkey", "applyMenuBarHider",
        "deprovision", "write caffeineLidClose", "write keyboardLockEnabled", "applyCaffeine",
        "unlock disabled-in-settings", "menuBarNeedsRebuild",
        "monitor layoutSwitch", "monitor translation", "monitor directTranslation", "monitor clipboard",
        "monitor pomodoro", "monitor password", "monitor snippets", "monitor textTransformer",
        "monitor hotkeyOverlay", "monitor keyboardLock", "monitor menuBarHider", "monitor caffeine",
        "maxSize 50",
        "write iCloudSyncSettingsEnabled", "write iCloudSyncClipboardEnabled", "settingsSyncToggled",
        "clipboardSyncToggled", "close"};
    // clipboardHistorySize is written with the clipboard settings, before the persistence.
    auto calls = target.calls;
    std::erase(calls, "write clipboardHistorySize");
    EXPECT_EQ(calls, expected);
    EXPECT_LT(target.position("write clipboardHistorySize"), target.position("clearPersistence"));
    EXPECT_EQ(target.monitor[0], (D{51, D::kOption}));
    auto disk = onDisk();
    AppSettings reread(*disk);
    EXPECT_EQ(reread.switchDelayMs(), 300);
    EXPECT_EQ(reread.settingsLanguage(), SettingsLanguage::ru);
}

TEST_F(SettingsFormTest, DeclinedClipboardConsentWritesNothingAndKeepsTheWindow) {
    SettingsForm form(settings_);
    RecordingTarget target(store_);
    target.consent = false;
    form.set(s::kSwitchDelayMs, 300);
    form.set(s::kICloudSyncClipboardEnabled, true);
    EXPECT_FALSE(form.save(target));
    EXPECT_EQ(target.calls, std::vector<std::string>{"consent"});
    EXPECT_FALSE(store_.hasStoredValue(s::kSwitchDelayMs.key));
}

TEST_F(SettingsFormTest, LanguagePreviewsAtOnceAndCancelKeepsTheOldLanguage) {
    {
        SettingsForm form(settings_);
        int previews = 0;
        form.onLanguagePreview = [&] { ++previews; };
        form.setLanguage(SettingsLanguage::ru);
        EXPECT_EQ(previews, 1);
        EXPECT_EQ(form.strings().save, SettingsStrings::make(SettingsLanguage::ru).save);
        EXPECT_EQ(settings_.settingsLanguage(), SettingsLanguage::en);
    }  // Cancel
    EXPECT_EQ(settings_.settingsLanguage(), SettingsLanguage::en);
    SettingsForm next(settings_);
    EXPECT_EQ(next.language(), SettingsLanguage::en);
}

TEST_F(SettingsFormTest, SaveWithTheLanguageUnchangedPostsOnlyTheMenuRebuild) {
    SettingsForm form(settings_);
    RecordingTarget target(store_);
    ASSERT_TRUE(form.save(target));
    EXPECT_FALSE(target.has("languageChanged"));
    EXPECT_TRUE(target.has("menuBarNeedsRebuild"));
}

TEST_F(SettingsFormTest, APlainLetterDuringCaptureDoesNothingAndCaptureGoesOn) {
    SettingsForm form(settings_);
    form.beginCapture(HotkeyField::translation);
    EXPECT_EQ(form.captureKeyDown(0, 0), SettingsForm::CaptureResult::ignored);
    EXPECT_EQ(form.activeCapture(), HotkeyField::translation);
    EXPECT_EQ(form.hotkey(HotkeyField::translation), s::kTranslationHotkey.defaultValue);
    EXPECT_EQ(form.buttonTitle(HotkeyField::translation), form.strings().pressKeys);
}

TEST_F(SettingsFormTest, EscDuringCaptureRestoresTheTitleAndLeavesTheForm) {
    SettingsForm form(settings_);
    form.beginCapture(HotkeyField::translation);
    EXPECT_EQ(form.captureKeyDown(53, D::kShift), SettingsForm::CaptureResult::cancelled);
    EXPECT_FALSE(form.activeCapture());
    EXPECT_EQ(form.buttonTitle(HotkeyField::translation), "Super+Shift+X");
    EXPECT_FALSE(form.edited(s::kTranslationHotkey.name));
}

TEST_F(SettingsFormTest, AReservedComboIsKeptWithTheWarning) {
    SettingsForm form(settings_);
    form.beginCapture(HotkeyField::pomodoro);
    EXPECT_EQ(form.captureKeyDown(49, D::kCommand | 0x10000), SettingsForm::CaptureResult::captured);
    EXPECT_EQ(form.hotkey(HotkeyField::pomodoro), (D{49, D::kCommand}));
    EXPECT_TRUE(form.conflictShown(HotkeyField::pomodoro));
    EXPECT_EQ(form.buttonTitle(HotkeyField::pomodoro), "Ctrl+Space");
    // The desktop's own combinations count as reserved too.
    form.beginCapture(HotkeyField::caffeine);
    form.captureKeyDown(48, D::kOption);  // Alt+Tab
    EXPECT_TRUE(form.conflictShown(HotkeyField::caffeine));
}

TEST_F(SettingsFormTest, TheSameHotkeyOnTwoFieldsWarnsOnTheFieldJustCaptured) {
    SettingsForm form(settings_);
    const D clipboard = form.hotkey(HotkeyField::clipboard);
    form.beginCapture(HotkeyField::password);
    form.captureKeyDown(clipboard.keyCode, clipboard.modifiers);
    EXPECT_TRUE(form.conflictShown(HotkeyField::password));
    EXPECT_FALSE(form.conflictShown(HotkeyField::clipboard));
}

TEST_F(SettingsFormTest, TheDirectTranslationHotkeyIsLeftOutOfTheCount) {
    SettingsForm form(settings_);
    const D direct = form.hotkey(HotkeyField::directTranslation);
    form.beginCapture(HotkeyField::caffeine);
    form.captureKeyDown(direct.keyCode, direct.modifiers);
    EXPECT_FALSE(form.conflictShown(HotkeyField::caffeine));
}

TEST_F(SettingsFormTest, CaptureSuspendsTheGrabsUntilItEnds) {
    SettingsForm form(settings_);
    std::vector<bool> states;
    form.onCaptureActive = [&](bool active) { states.push_back(active); };
    form.beginCapture(HotkeyField::translation);
    form.beginCapture(HotkeyField::clipboard);  // a second button: the first capture ends
    form.captureKeyDown(7, D::kShift);
    form.beginCapture(HotkeyField::pomodoro);
    form.cancelCapture();
    EXPECT_EQ(states, (std::vector<bool>{true, false, true, false, true, false}));
}

TEST_F(SettingsFormTest, ACapturedAndSavedHotkeyReachesTheMonitor) {
    SettingsForm form(settings_);
    form.beginCapture(HotkeyField::translation);
    form.captureKeyDown(16, D::kControl | D::kOption);
    RecordingTarget target(store_);
    ASSERT_TRUE(form.save(target));
    EXPECT_EQ(target.monitor[1], (D{16, D::kControl | D::kOption}));
    EXPECT_EQ(settings_.translationHotkey(), (D{16, D::kControl | D::kOption}));
}

TEST_F(SettingsFormTest, ASnippetRowWithOnlyAShortcutVanishesOnSave) {
    SettingsForm form(settings_);
    const auto a = form.addSnippet();
    form.editSnippet(a, "sig", std::nullopt);
    const auto b = form.addSnippet();
    form.editSnippet(b, "addr", "1 Main Street");
    RecordingTarget target(store_);
    ASSERT_TRUE(form.save(target));
    const auto entries = SnippetExpander(store_).entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].shortcut, "addr");
}

TEST_F(SettingsFormTest, AnUnreadableSnippetBlobShowsAnEmptyTableAndIsNotOverwrittenUnlessEdited) {
    store_.set(SnippetExpander::kKey, PreferenceData{"[{not json"});
    SettingsForm form(settings_);
    EXPECT_TRUE(form.snippetsUnreadable());
    EXPECT_TRUE(form.snippets().empty());
    RecordingTarget target(store_);
    ASSERT_TRUE(form.save(target));
    EXPECT_EQ(store_.dataForKey(SnippetExpander::kKey), "[{not json");
}

TEST_F(SettingsFormTest, AStoredDurationOutsideThePopupAddsAnItem) {
    settings_.setCaffeineDefaultDurationMinutes(45);
    SettingsForm form(settings_);
    const auto choices = caffeineDurationChoices(form.get(s::kCaffeineDefaultDurationMinutes));
    EXPECT_EQ(choices, (std::vector<std::int64_t>{0, 15, 30, 60, 120, 240, 480, 45}));
    EXPECT_EQ(caffeineDurationDisplay(45, form.strings()), "45 min");
    EXPECT_EQ(caffeineDurationChoices(60).size(), 7u);
    EXPECT_EQ(caffeineDurationDisplay(90, form.strings()), "1 h 30 min");
    EXPECT_EQ(caffeineDurationDisplay(120, form.strings()), "2 h");
    EXPECT_EQ(caffeineDurationDisplay(0, form.strings()), form.strings().caffeineDurationIndefinite);
}

TEST_F(SettingsFormTest, AStoredPasswordLengthAboveTheSliderSurvivesAPlainSave) {
    settings_.setPasswordLength(100);
    settings_.setPasswordClipboardClearSeconds(500);
    SettingsForm form(settings_);
    EXPECT_EQ(sliderPosition(s::kPasswordLength, form.get(s::kPasswordLength)), 64);
    EXPECT_EQ(sliderPosition(s::kPasswordClipboardClearSeconds, form.get(s::kPasswordClipboardClearSeconds)), 300);
    RecordingTarget target(store_);
    ASSERT_TRUE(form.save(target));
    EXPECT_EQ(settings_.passwordLength(), 100);
    EXPECT_EQ(settings_.passwordClipboardClearSeconds(), 500);
    SettingsForm moved(settings_);
    moved.set(s::kPasswordLength, sliderValue(s::kPasswordLength, 63.6));
    ASSERT_TRUE(moved.save(target));
    EXPECT_EQ(settings_.passwordLength(), 64);
}

TEST_F(SettingsFormTest, SliderRangesAndRounding) {
    const std::vector<std::pair<const IntSetting*, std::pair<int, int>>> ranges{
        {&s::kSwitchDelayMs, {0, 500}},           {&s::kClipboardHistorySize, {1, 200}},
        {&s::kWorkDurationMinutes, {5, 90}},      {&s::kBreakDurationMinutes, {1, 30}},
        {&s::kLongBreakDurationMinutes, {5, 45}}, {&s::kPasswordLength, {4, 64}},
        {&s::kPasswordClipboardClearSeconds, {0, 300}}, {&s::kKeyboardLockAutoUnlockMinutes, {1, 60}},
        {&s::kMenuBarHiderAutoCollapseSeconds, {0, 300}}};
    for (const auto& [setting, range] : ranges) {
        const auto r = sliderRange(*setting);
        ASSERT_TRUE(r) << setting->name;
        EXPECT_EQ(r->minimum, range.first) << setting->name;
        EXPECT_EQ(r->maximum, range.second) << setting->name;
    }
    EXPECT_EQ(sliderValue(s::kSwitchDelayMs, 120.9), 120);  // truncated
    EXPECT_EQ(sliderValue(s::kWorkDurationMinutes, 24.6), 25);  // rounded
    EXPECT_EQ(sliderValue(s::kWorkDurationMinutes, 1000), 90);
    EXPECT_FALSE(sliderRange(s::kCaffeineDefaultDurationMinutes));
}

TEST_F(SettingsFormTest, DisplayHelpers) {
    const auto en = SettingsStrings::make(SettingsLanguage::en);
    EXPECT_EQ(clearSecondsDisplay(0, en), en.passwordClipboardNever);
    EXPECT_EQ(clearSecondsDisplay(45, en), "45 sec");
    EXPECT_EQ(menuBarHiderAutoCollapseDisplay(0, en), en.menuBarHiderAutoCollapseOff);
    EXPECT_EQ(menuBarHiderAutoCollapseDisplay(30, en), "30 s");
}

TEST_F(SettingsFormTest, AnotherProcessesChangeFlowsIntoUntouchedFieldsAndSaveMergesAsTheStoreDoes) {
    settings_.setWorkDurationMinutes(25);
    store_.flush();
    SettingsForm form(settings_);
    int notices = 0;
    form.onExternalChange = [&] { ++notices; };
    form.set(s::kSwitchDelayMs, 300);  // the user's edit
    {
        PreferenceStore other(file(), *queue_, nullptr);
        AppSettings otherSettings(other);
        otherSettings.setSwitchDelayMs(50);
        otherSettings.setWorkDurationMinutes(40);
        other.flush();
    }
    store_.checkForExternalChanges();
    EXPECT_GE(notices, 1);
    EXPECT_EQ(form.get(s::kSwitchDelayMs), 300);       // the edit is kept
    EXPECT_EQ(form.get(s::kWorkDurationMinutes), 40);  // the untouched field follows
    RecordingTarget target(store_);
    ASSERT_TRUE(form.save(target));
    auto disk = onDisk();
    AppSettings reread(*disk);
    EXPECT_EQ(reread.switchDelayMs(), 300);
    EXPECT_EQ(reread.workDurationMinutes(), 40);
}

TEST_F(SettingsFormTest, AChangeThatLeavesEveryFieldAsItWasIsNoNews) {
    SettingsForm form(settings_);
    int notices = 0;
    form.onExternalChange = [&] { ++notices; };
    settings_.setMenuBarHiderCollapsed(false);  // the value it already had
    EXPECT_EQ(notices, 0);
    settings_.setBreakDurationMinutes(7);
    EXPECT_EQ(notices, 1);
    EXPECT_EQ(form.get(s::kBreakDurationMinutes), 7);
}

TEST_F(SettingsFormTest, LidCloseWithoutAnAppIsSwitchedOffWithItsAlert) {
    SettingsForm form(settings_);
    form.set(s::kCaffeineLidClose, true);
    RecordingTarget target(store_);
    ASSERT_TRUE(form.save(target));
    EXPECT_TRUE(target.has("lidNeedsApp"));
    EXPECT_FALSE(target.has("provision"));
    EXPECT_FALSE(settings_.caffeineLidClose());
    EXPECT_FALSE(form.get(s::kCaffeineLidClose));
}

TEST_F(SettingsFormTest, AFailedProvisionRestoresTheLidToggles) {
    SettingsForm form(settings_);
    form.set(s::kCaffeineLidCloseAlways, true);
    RecordingTarget target(store_);
    target.provisionResult = false;
    ASSERT_TRUE(form.save(target));
    EXPECT_TRUE(target.has("provision"));
    EXPECT_FALSE(settings_.caffeineLidCloseAlways());
    EXPECT_TRUE(target.has("close"));
}

TEST_F(SettingsFormTest, AFailedRemovalRestoresAndSaysSo) {
    settings_.setCaffeineLidCloseAlways(true);
    SettingsForm form(settings_);
    form.set(s::kCaffeineLidCloseAlways, false);
    RecordingTarget target(store_);
    target.deprovisionResult = false;
    ASSERT_TRUE(form.save(target));
    EXPECT_LT(target.position("deprovision"), target.position("lidRemovalCancelled"));
    EXPECT_TRUE(settings_.caffeineLidCloseAlways());
}

TEST_F(SettingsFormTest, AppListsRefuseDuplicates) {
    SettingsForm form(settings_);
    EXPECT_TRUE(form.addApp(s::kClipboardIgnoredApps, "org.example.Editor"));
    EXPECT_FALSE(form.addApp(s::kClipboardIgnoredApps, "org.example.Editor"));
    EXPECT_EQ(form.get(s::kClipboardIgnoredApps).size(), 1u);
    form.removeApp(s::kClipboardIgnoredApps, "org.example.Editor");
    EXPECT_TRUE(form.get(s::kClipboardIgnoredApps).empty());
}

TEST_F(SettingsFormTest, HotkeyButtonIdentifiers) {
    EXPECT_EQ(hotkeyFieldFromIdentifier("hotkey:caffeine"), HotkeyField::caffeine);
    EXPECT_EQ(hotkeyFieldFromIdentifier("hotkey:layoutSwitch"), HotkeyField::layoutSwitch);
    EXPECT_FALSE(hotkeyFieldFromIdentifier("caffeine"));
    EXPECT_FALSE(hotkeyFieldFromIdentifier("hotkey:nothing"));
}

}  // namespace
}  // namespace orvantis
