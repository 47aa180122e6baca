#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/settings/hotkey_descriptor.h"
#include "core/settings/password_mode.h"
#include "core/settings/preference_store.h"
#include "core/settings/settings_language.h"

namespace orvantis {

/// Descriptions of the settings: the property name, the full store key, the
/// default, whether the default is registered with the store, and for integers the range.
struct BoolSetting {
    std::string_view name, key;
    bool defaultValue;
    bool registered;
};
struct IntSetting {
    std::string_view name, key;
    std::int64_t defaultValue;
    std::int64_t minimum, maximum;
    bool registered;
    /// What a stored 0 reads as, where 0 is no value of the range (the auto-unlock minutes).
    std::optional<std::int64_t> zeroReadsAs;
    std::int64_t clamp(std::int64_t v) const { return v < minimum ? minimum : (v > maximum ? maximum : v); }
};
struct StringSetting {
    std::string_view name, key, defaultValue;
    bool registered;
};
struct StringListSetting {
    std::string_view name, key;
    bool registered;
};
struct LanguageSetting {
    std::string_view name, key;
    SettingsLanguage defaultValue;
    bool registered;
};
struct PasswordModeSetting {
    std::string_view name, key;
    PasswordMode defaultValue;
    bool registered;
};
struct HotkeySetting {
    std::string_view name, key;
    HotkeyDescriptor defaultValue;
    bool registered;
};

/// Every setting of the system.
namespace settings {
inline constexpr std::string_view kKeyPrefix = "MOLVEX.Orvantis.";
inline constexpr HotkeySetting kHotkey{"hotkey", "MOLVEX.Orvantis.hotkey", {51, 0x20000}, false};
inline constexpr HotkeySetting kTranslationHotkey{"translationHotkey", "MOLVEX.Orvantis.translationHotkey", {7, 0x60000}, false};
inline constexpr HotkeySetting kDirectTranslationHotkey{"directTranslationHotkey", "MOLVEX.Orvantis.directTranslationHotkey", {7, 0xC0000}, true};
inline constexpr HotkeySetting kClipboardHistoryHotkey{"clipboardHistoryHotkey", "MOLVEX.Orvantis.clipboardHistoryHotkey", {9, 0x60000}, false};
inline constexpr HotkeySetting kPomodoroHotkey{"pomodoroHotkey", "MOLVEX.Orvantis.pomodoroHotkey", {46, 0x60000}, true};
inline constexpr HotkeySetting kPasswordHotkey{"passwordHotkey", "MOLVEX.Orvantis.passwordHotkey", {35, 0x60000}, true};
inline constexpr HotkeySetting kSnippetExpanderHotkey{"snippetExpanderHotkey", "MOLVEX.Orvantis.snippetExpanderHotkey", {51, 0x60000}, true};
inline constexpr HotkeySetting kTextTransformerHotkey{"textTransformerHotkey", "MOLVEX.Orvantis.textTransformerHotkey", {17, 0x60000}, true};
inline constexpr HotkeySetting kHotkeyOverlayHotkey{"hotkeyOverlayHotkey", "MOLVEX.Orvantis.hotkeyOverlayHotkey", {4, 0x60000}, true};
inline constexpr HotkeySetting kKeyboardLockHotkey{"keyboardLockHotkey", "MOLVEX.Orvantis.keyboardLockHotkey", {37, 0x60000}, true};
inline constexpr HotkeySetting kMenuBarHiderHotkey{"menuBarHiderHotkey", "MOLVEX.Orvantis.menuBarHiderHotkey", {11, 0x60000}, true};
inline constexpr HotkeySetting kCaffeineHotkey{"caffeineHotkey", "MOLVEX.Orvantis.caffeineHotkey", {40, 0x60000}, true};
inline constexpr BoolSetting kHasCompletedOnboarding{"hasCompletedOnboarding", "MOLVEX.Orvantis.hasCompletedOnboarding", false, false};
inline constexpr BoolSetting kLaunchAtLogin{"launchAtLogin", "MOLVEX.Orvantis.launchAtLogin", false, false};
inline constexpr IntSetting kSwitchDelayMs{"switchDelayMs", "MOLVEX.Orvantis.switchDelayMs", 100, 0, 500, true, std::nullopt};
inline constexpr BoolSetting kLayoutSwitchEnabled{"layoutSwitchEnabled", "MOLVEX.Orvantis.layoutSwitchEnabled", true, false};
inline constexpr BoolSetting kTranslationEnabled{"translationEnabled", "MOLVEX.Orvantis.translationEnabled", true, false};
inline constexpr LanguageSetting kSettingsLanguage{"settingsLanguage", "MOLVEX.Orvantis.settingsLanguage", SettingsLanguage::en, false};
inline constexpr StringSetting kTranslatorPrimaryLanguage{"translatorPrimaryLanguage", "MOLVEX.Orvantis.translatorPrimaryLanguage", "en", false};
inline constexpr StringSetting kTranslatorSecondaryLanguage{"translatorSecondaryLanguage", "MOLVEX.Orvantis.translatorSecondaryLanguage", "ru", false};
/// Scheme and host of the translation endpoint. A machine's own choice: never mirrored to
/// other machines.
inline constexpr StringSetting kTranslationEndpoint{"translationEndpoint", "MOLVEX.Orvantis.translationEndpoint", "https://translate.googleapis.com", false};
inline constexpr BoolSetting kClipboardHistoryEnabled{"clipboardHistoryEnabled", "MOLVEX.Orvantis.clipboardHistoryEnabled", true, true};
inline constexpr IntSetting kClipboardHistorySize{"clipboardHistorySize", "MOLVEX.Orvantis.clipboardHistorySize", 20, 1, 200, true, std::nullopt};
inline constexpr BoolSetting kClipboardStoreNonText{"clipboardStoreNonText", "MOLVEX.Orvantis.clipboardStoreNonText", false, true};
inline constexpr BoolSetting kClipboardPersistEnabled{"clipboardPersistEnabled", "MOLVEX.Orvantis.clipboardPersistEnabled", true, true};
inline constexpr StringListSetting kClipboardIgnoredApps{"clipboardIgnoredApps", "MOLVEX.Orvantis.clipboardIgnoredApps", true};
inline constexpr BoolSetting kPomodoroEnabled{"pomodoroEnabled", "MOLVEX.Orvantis.pomodoroEnabled", true, true};
inline constexpr IntSetting kWorkDurationMinutes{"workDurationMinutes", "MOLVEX.Orvantis.workDurationMinutes", 25, 5, 90, true, std::nullopt};
inline constexpr IntSetting kBreakDurationMinutes{"breakDurationMinutes", "MOLVEX.Orvantis.breakDurationMinutes", 5, 1, 30, true, std::nullopt};
inline constexpr IntSetting kLongBreakDurationMinutes{"longBreakDurationMinutes", "MOLVEX.Orvantis.longBreakDurationMinutes", 15, 5, 45, true, std::nullopt};
inline constexpr BoolSetting kPomodoroToggleDND{"pomodoroToggleDND", "MOLVEX.Orvantis.pomodoroToggleDND", false, true};
inline constexpr BoolSetting kPomodoroDashboardPinned{"pomodoroDashboardPinned", "MOLVEX.Orvantis.pomodoroDashboardPinned", false, false};
inline constexpr BoolSetting kPasswordEnabled{"passwordEnabled", "MOLVEX.Orvantis.passwordEnabled", true, true};
inline constexpr PasswordModeSetting kPasswordMode{"passwordMode", "MOLVEX.Orvantis.passwordMode", PasswordMode::popup, true};
inline constexpr IntSetting kPasswordLength{"passwordLength", "MOLVEX.Orvantis.passwordLength", 16, 4, 128, true, std::nullopt};
inline constexpr BoolSetting kPasswordIncludeUppercase{"passwordIncludeUppercase", "MOLVEX.Orvantis.passwordIncludeUppercase", true, true};
inline constexpr BoolSetting kPasswordIncludeLowercase{"passwordIncludeLowercase", "MOLVEX.Orvantis.passwordIncludeLowercase", true, true};
inline constexpr BoolSetting kPasswordIncludeDigits{"passwordIncludeDigits", "MOLVEX.Orvantis.passwordIncludeDigits", true, true};
inline constexpr BoolSetting kPasswordIncludeSymbols{"passwordIncludeSymbols", "MOLVEX.Orvantis.passwordIncludeSymbols", false, true};
inline constexpr IntSetting kPasswordClipboardClearSeconds{"passwordClipboardClearSeconds", "MOLVEX.Orvantis.passwordClipboardClearSec", 60, 0, 600, true, std::nullopt};
inline constexpr BoolSetting kSnippetExpanderEnabled{"snippetExpanderEnabled", "MOLVEX.Orvantis.snippetExpanderEnabled", true, true};
inline constexpr BoolSetting kTextTransformerEnabled{"textTransformerEnabled", "MOLVEX.Orvantis.textTransformerEnabled", true, true};
inline constexpr BoolSetting kKeyboardLockEnabled{"keyboardLockEnabled", "MOLVEX.Orvantis.keyboardLockEnabled", true, true};
inline constexpr IntSetting kKeyboardLockAutoUnlockMinutes{"keyboardLockAutoUnlockMinutes", "MOLVEX.Orvantis.keyboardLockAutoUnlockMin", 10, 1, 60, true, 10};
inline constexpr BoolSetting kReverseTrackpadScroll{"reverseTrackpadScroll", "MOLVEX.Orvantis.reverseTrackpadScroll", false, false};
inline constexpr BoolSetting kReverseMouseScroll{"reverseMouseScroll", "MOLVEX.Orvantis.reverseMouseScroll", false, false};
inline constexpr BoolSetting kReverseMagicMouseScroll{"reverseMagicMouseScroll", "MOLVEX.Orvantis.reverseMagicMouseScroll", false, false};
inline constexpr BoolSetting kMenuBarHiderEnabled{"menuBarHiderEnabled", "MOLVEX.Orvantis.menuBarHiderEnabled", false, false};
inline constexpr BoolSetting kMenuBarHiderCollapsed{"menuBarHiderCollapsed", "MOLVEX.Orvantis.menuBarHiderCollapsed", false, false};
inline constexpr IntSetting kMenuBarHiderAutoCollapseSeconds{"menuBarHiderAutoCollapseSeconds", "MOLVEX.Orvantis.menuBarHiderAutoCollapseSec", 0, 0, 300, true, std::nullopt};
inline constexpr BoolSetting kCaffeineEnabled{"caffeineEnabled", "MOLVEX.Orvantis.caffeineEnabled", true, true};
inline constexpr IntSetting kCaffeineDefaultDurationMinutes{"caffeineDefaultDurationMinutes", "MOLVEX.Orvantis.caffeineDefaultDurationMin", 0, 0, 1440, true, std::nullopt};
inline constexpr StringListSetting kCaffeineActiveApps{"caffeineActiveApps", "MOLVEX.Orvantis.caffeineActiveApps", true};
inline constexpr BoolSetting kCaffeineLidClose{"caffeineLidClose", "MOLVEX.Orvantis.caffeineLidClose", false, true};
inline constexpr BoolSetting kCaffeineLidCloseAlways{"caffeineLidCloseAlways", "MOLVEX.Orvantis.caffeineLidCloseAlways", false, true};
inline constexpr BoolSetting kFinderCutEnabled{"finderCutEnabled", "MOLVEX.Orvantis.finderCutEnabled", false, false};
inline constexpr BoolSetting kICloudSyncSettingsEnabled{"iCloudSyncSettingsEnabled", "MOLVEX.Orvantis.iCloudSyncSettingsEnabled", true, false};
inline constexpr BoolSetting kICloudSyncClipboardEnabled{"iCloudSyncClipboardEnabled", "MOLVEX.Orvantis.iCloudSyncClipboardEnabled", false, false};
/// The folder that the user's sync client replicates, chosen in the settings window; empty for
/// the usual places. A machine's own choice: never mirrored, read once at launch, and kept out
/// of the list of settings that the settings window and the command line walk.
inline constexpr StringSetting kSyncFolderPath{"syncFolderPath", "MOLVEX.Orvantis.syncFolderPath", "", false};
/// The flag of the one-time move of the Pomodoro hotkey off ⌃⇧T, now the text tools' hotkey.
inline constexpr std::string_view kPomodoroHotkeyMigrationV1 = "MOLVEX.Orvantis.pomodoroHotkeyMigrationV1";

/// Calls `f` with every setting, hotkeys first, then in the order of the settings table.
template <typename F>
void forEach(F&& f) {
    f(kHotkey);
    f(kTranslationHotkey);
    f(kDirectTranslationHotkey);
    f(kClipboardHistoryHotkey);
    f(kPomodoroHotkey);
    f(kPasswordHotkey);
    f(kSnippetExpanderHotkey);
    f(kTextTransformerHotkey);
    f(kHotkeyOverlayHotkey);
    f(kKeyboardLockHotkey);
    f(kMenuBarHiderHotkey);
    f(kCaffeineHotkey);
    f(kHasCompletedOnboarding);
    f(kLaunchAtLogin);
    f(kSwitchDelayMs);
    f(kLayoutSwitchEnabled);
    f(kTranslationEnabled);
    f(kSettingsLanguage);
    f(kTranslatorPrimaryLanguage);
    f(kTranslatorSecondaryLanguage);
    f(kTranslationEndpoint);
    f(kClipboardHistoryEnabled);
    f(kClipboardHistorySize);
    f(kClipboardStoreNonText);
    f(kClipboardPersistEnabled);
    f(kClipboardIgnoredApps);
    f(kPomodoroEnabled);
    f(kWorkDurationMinutes);
    f(kBreakDurationMinutes);
    f(kLongBreakDurationMinutes);
    f(kPomodoroToggleDND);
    f(kPomodoroDashboardPinned);
    f(kPasswordEnabled);
    f(kPasswordMode);
    f(kPasswordLength);
    f(kPasswordIncludeUppercase);
    f(kPasswordIncludeLowercase);
    f(kPasswordIncludeDigits);
    f(kPasswordIncludeSymbols);
    f(kPasswordClipboardClearSeconds);
    f(kSnippetExpanderEnabled);
    f(kTextTransformerEnabled);
    f(kKeyboardLockEnabled);
    f(kKeyboardLockAutoUnlockMinutes);
    f(kReverseTrackpadScroll);
    f(kReverseMouseScroll);
    f(kReverseMagicMouseScroll);
    f(kMenuBarHiderEnabled);
    f(kMenuBarHiderCollapsed);
    f(kMenuBarHiderAutoCollapseSeconds);
    f(kCaffeineEnabled);
    f(kCaffeineDefaultDurationMinutes);
    f(kCaffeineActiveApps);
    f(kCaffeineLidClose);
    f(kCaffeineLidCloseAlways);
    f(kFinderCutEnabled);
    f(kICloudSyncSettingsEnabled);
    f(kICloudSyncClipboardEnabled);}
}  // namespace settings

/// The typed view of the user's preferences: one property per setting, read from and written
/// to the preference store at each call, so there is no copy to fall out of step. Integers are
/// clamped to their ranges both when read and when written; hotkeys and enumerations that do
/// not decode answer their defaults. Construction registers the defaults and runs the one-time
/// migrations. Thread-safe, like the store. Owned by the composition root.
class AppSettings {
public:
    explicit AppSettings(PreferenceStore& store);

    PreferenceStore& store() const { return store_; }
    /// A store key without the common prefix ("switchDelayMs"), as the key tables name them.
    static std::string_view shortKey(std::string_view key);

    bool get(const BoolSetting& s) const;
    std::int64_t get(const IntSetting& s) const;
    std::string get(const StringSetting& s) const;
    std::vector<std::string> get(const StringListSetting& s) const;
    SettingsLanguage get(const LanguageSetting& s) const;
    PasswordMode get(const PasswordModeSetting& s) const;
    HotkeyDescriptor get(const HotkeySetting& s) const;

    void set(const BoolSetting& s, bool value);
    void set(const IntSetting& s, std::int64_t value);
    void set(const StringSetting& s, std::string_view value);
    void set(const StringListSetting& s, const std::vector<std::string>& value);
    void set(const LanguageSetting& s, SettingsLanguage value);
    void set(const PasswordModeSetting& s, PasswordMode value);
    void set(const HotkeySetting& s, const HotkeyDescriptor& value);
    /// Removes the stored value: the setting answers its default again.
    template <typename Setting>
    void reset(const Setting& s) {
        store_.remove(s.key);
    }

    HotkeyDescriptor hotkey() const { return get(settings::kHotkey); }
    void setHotkey(const HotkeyDescriptor& value) { set(settings::kHotkey, value); }
    HotkeyDescriptor translationHotkey() const { return get(settings::kTranslationHotkey); }
    void setTranslationHotkey(const HotkeyDescriptor& value) { set(settings::kTranslationHotkey, value); }
    HotkeyDescriptor directTranslationHotkey() const { return get(settings::kDirectTranslationHotkey); }
    void setDirectTranslationHotkey(const HotkeyDescriptor& value) { set(settings::kDirectTranslationHotkey, value); }
    HotkeyDescriptor clipboardHistoryHotkey() const { return get(settings::kClipboardHistoryHotkey); }
    void setClipboardHistoryHotkey(const HotkeyDescriptor& value) { set(settings::kClipboardHistoryHotkey, value); }
    HotkeyDescriptor pomodoroHotkey() const { return get(settings::kPomodoroHotkey); }
    void setPomodoroHotkey(const HotkeyDescriptor& value) { set(settings::kPomodoroHotkey, value); }
    HotkeyDescriptor passwordHotkey() const { return get(settings::kPasswordHotkey); }
    void setPasswordHotkey(const HotkeyDescriptor& value) { set(settings::kPasswordHotkey, value); }
    HotkeyDescriptor snippetExpanderHotkey() const { return get(settings::kSnippetExpanderHotkey); }
    void setSnippetExpanderHotkey(const HotkeyDescriptor& value) { set(settings::kSnippetExpanderHotkey, value); }
    HotkeyDescriptor textTransformerHotkey() const { return get(settings::kTextTransformerHotkey); }
    void setTextTransformerHotkey(const HotkeyDescriptor& value) { set(settings::kTextTransformerHotkey, value); }
    HotkeyDescriptor hotkeyOverlayHotkey() const { return get(settings::kHotkeyOverlayHotkey); }
    void setHotkeyOverlayHotkey(const HotkeyDescriptor& value) { set(settings::kHotkeyOverlayHotkey, value); }
    HotkeyDescriptor keyboardLockHotkey() const { return get(settings::kKeyboardLockHotkey); }
    void setKeyboardLockHotkey(const HotkeyDescriptor& value) { set(settings::kKeyboardLockHotkey, value); }
    HotkeyDescriptor menuBarHiderHotkey() const { return get(settings::kMenuBarHiderHotkey); }
    void setMenuBarHiderHotkey(const HotkeyDescriptor& value) { set(settings::kMenuBarHiderHotkey, value); }
    HotkeyDescriptor caffeineHotkey() const { return get(settings::kCaffeineHotkey); }
    void setCaffeineHotkey(const HotkeyDescriptor& value) { set(settings::kCaffeineHotkey, value); }
    bool hasCompletedOnboarding() const { return get(settings::kHasCompletedOnboarding); }
    void setHasCompletedOnboarding(bool value) { set(settings::kHasCompletedOnboarding, value); }
    bool launchAtLogin() const { return get(settings::kLaunchAtLogin); }
    void setLaunchAtLogin(bool value) { set(settings::kLaunchAtLogin, value); }
    int switchDelayMs() const { return static_cast<int>(get(settings::kSwitchDelayMs)); }
    void setSwitchDelayMs(std::int64_t value) { set(settings::kSwitchDelayMs, value); }
    bool layoutSwitchEnabled() const { return get(settings::kLayoutSwitchEnabled); }
    void setLayoutSwitchEnabled(bool value) { set(settings::kLayoutSwitchEnabled, value); }
    bool translationEnabled() const { return get(settings::kTranslationEnabled); }
    void setTranslationEnabled(bool value) { set(settings::kTranslationEnabled, value); }
    SettingsLanguage settingsLanguage() const { return get(settings::kSettingsLanguage); }
    void setSettingsLanguage(SettingsLanguage value) { set(settings::kSettingsLanguage, value); }
    std::string translatorPrimaryLanguage() const { return get(settings::kTranslatorPrimaryLanguage); }
    void setTranslatorPrimaryLanguage(const std::string& value) { set(settings::kTranslatorPrimaryLanguage, value); }
    std::string translatorSecondaryLanguage() const { return get(settings::kTranslatorSecondaryLanguage); }
    void setTranslatorSecondaryLanguage(const std::string& value) { set(settings::kTranslatorSecondaryLanguage, value); }
    std::string translationEndpoint() const { return get(settings::kTranslationEndpoint); }
    void setTranslationEndpoint(const std::string& value) { set(settings::kTranslationEndpoint, value); }
    bool clipboardHistoryEnabled() const { return get(settings::kClipboardHistoryEnabled); }
    void setClipboardHistoryEnabled(bool value) { set(settings::kClipboardHistoryEnabled, value); }
    int clipboardHistorySize() const { return static_cast<int>(get(settings::kClipboardHistorySize)); }
    void setClipboardHistorySize(std::int64_t value) { set(settings::kClipboardHistorySize, value); }
    bool clipboardStoreNonText() const { return get(settings::kClipboardStoreNonText); }
    void setClipboardStoreNonText(bool value) { set(settings::kClipboardStoreNonText, value); }
    bool clipboardPersistEnabled() const { return get(settings::kClipboardPersistEnabled); }
    void setClipboardPersistEnabled(bool value) { set(settings::kClipboardPersistEnabled, value); }
    std::vector<std::string> clipboardIgnoredApps() const { return get(settings::kClipboardIgnoredApps); }
    void setClipboardIgnoredApps(const std::vector<std::string>& value) { set(settings::kClipboardIgnoredApps, value); }
    bool pomodoroEnabled() const { return get(settings::kPomodoroEnabled); }
    void setPomodoroEnabled(bool value) { set(settings::kPomodoroEnabled, value); }
    int workDurationMinutes() const { return static_cast<int>(get(settings::kWorkDurationMinutes)); }
    void setWorkDurationMinutes(std::int64_t value) { set(settings::kWorkDurationMinutes, value); }
    int breakDurationMinutes() const { return static_cast<int>(get(settings::kBreakDurationMinutes)); }
    void setBreakDurationMinutes(std::int64_t value) { set(settings::kBreakDurationMinutes, value); }
    int longBreakDurationMinutes() const { return static_cast<int>(get(settings::kLongBreakDurationMinutes)); }
    void setLongBreakDurationMinutes(std::int64_t value) { set(settings::kLongBreakDurationMinutes, value); }
    bool pomodoroToggleDND() const { return get(settings::kPomodoroToggleDND); }
    void setPomodoroToggleDND(bool value) { set(settings::kPomodoroToggleDND, value); }
    bool pomodoroDashboardPinned() const { return get(settings::kPomodoroDashboardPinned); }
    void setPomodoroDashboardPinned(bool value) { set(settings::kPomodoroDashboardPinned, value); }
    bool passwordEnabled() const { return get(settings::kPasswordEnabled); }
    void setPasswordEnabled(bool value) { set(settings::kPasswordEnabled, value); }
    PasswordMode passwordMode() const { return get(settings::kPasswordMode); }
    void setPasswordMode(PasswordMode value) { set(settings::kPasswordMode, value); }
    int passwordLength() const { return static_cast<int>(get(settings::kPasswordLength)); }
    void setPasswordLength(std::int64_t value) { set(settings::kPasswordLength, value); }
    bool passwordIncludeUppercase() const { return get(settings::kPasswordIncludeUppercase); }
    void setPasswordIncludeUppercase(bool value) { set(settings::kPasswordIncludeUppercase, value); }
    bool passwordIncludeLowercase() const { return get(settings::kPasswordIncludeLowercase); }
    void setPasswordIncludeLowercase(bool value) { set(settings::kPasswordIncludeLowercase, value); }
    bool passwordIncludeDigits() const { return get(settings::kPasswordIncludeDigits); }
    void setPasswordIncludeDigits(bool value) { set(settings::kPasswordIncludeDigits, value); }
    bool passwordIncludeSymbols() const { return get(settings::kPasswordIncludeSymbols); }
    void setPasswordIncludeSymbols(bool value) { set(settings::kPasswordIncludeSymbols, value); }
    int passwordClipboardClearSeconds() const { return static_cast<int>(get(settings::kPasswordClipboardClearSeconds)); }
    void setPasswordClipboardClearSeconds(std::int64_t value) { set(settings::kPasswordClipboardClearSeconds, value); }
    bool snippetExpanderEnabled() const { return get(settings::kSnippetExpanderEnabled); }
    void setSnippetExpanderEnabled(bool value) { set(settings::kSnippetExpanderEnabled, value); }
    bool textTransformerEnabled() const { return get(settings::kTextTransformerEnabled); }
    void setTextTransformerEnabled(bool value) { set(settings::kTextTransformerEnabled, value); }
    bool keyboardLockEnabled() const { return get(settings::kKeyboardLockEnabled); }
    void setKeyboardLockEnabled(bool value) { set(settings::kKeyboardLockEnabled, value); }
    int keyboardLockAutoUnlockMinutes() const { return static_cast<int>(get(settings::kKeyboardLockAutoUnlockMinutes)); }
    void setKeyboardLockAutoUnlockMinutes(std::int64_t value) { set(settings::kKeyboardLockAutoUnlockMinutes, value); }
    bool reverseTrackpadScroll() const { return get(settings::kReverseTrackpadScroll); }
    void setReverseTrackpadScroll(bool value) { set(settings::kReverseTrackpadScroll, value); }
    bool reverseMouseScroll() const { return get(settings::kReverseMouseScroll); }
    void setReverseMouseScroll(bool value) { set(settings::kReverseMouseScroll, value); }
    bool reverseMagicMouseScroll() const { return get(settings::kReverseMagicMouseScroll); }
    void setReverseMagicMouseScroll(bool value) { set(settings::kReverseMagicMouseScroll, value); }
    bool menuBarHiderEnabled() const { return get(settings::kMenuBarHiderEnabled); }
    void setMenuBarHiderEnabled(bool value) { set(settings::kMenuBarHiderEnabled, value); }
    bool menuBarHiderCollapsed() const { return get(settings::kMenuBarHiderCollapsed); }
    void setMenuBarHiderCollapsed(bool value) { set(settings::kMenuBarHiderCollapsed, value); }
    int menuBarHiderAutoCollapseSeconds() const { return static_cast<int>(get(settings::kMenuBarHiderAutoCollapseSeconds)); }
    void setMenuBarHiderAutoCollapseSeconds(std::int64_t value) { set(settings::kMenuBarHiderAutoCollapseSeconds, value); }
    bool caffeineEnabled() const { return get(settings::kCaffeineEnabled); }
    void setCaffeineEnabled(bool value) { set(settings::kCaffeineEnabled, value); }
    int caffeineDefaultDurationMinutes() const { return static_cast<int>(get(settings::kCaffeineDefaultDurationMinutes)); }
    void setCaffeineDefaultDurationMinutes(std::int64_t value) { set(settings::kCaffeineDefaultDurationMinutes, value); }
    std::vector<std::string> caffeineActiveApps() const { return get(settings::kCaffeineActiveApps); }
    void setCaffeineActiveApps(const std::vector<std::string>& value) { set(settings::kCaffeineActiveApps, value); }
    bool caffeineLidClose() const { return get(settings::kCaffeineLidClose); }
    void setCaffeineLidClose(bool value) { set(settings::kCaffeineLidClose, value); }
    bool caffeineLidCloseAlways() const { return get(settings::kCaffeineLidCloseAlways); }
    void setCaffeineLidCloseAlways(bool value) { set(settings::kCaffeineLidCloseAlways, value); }
    bool finderCutEnabled() const { return get(settings::kFinderCutEnabled); }
    void setFinderCutEnabled(bool value) { set(settings::kFinderCutEnabled, value); }
    bool iCloudSyncSettingsEnabled() const { return get(settings::kICloudSyncSettingsEnabled); }
    void setICloudSyncSettingsEnabled(bool value) { set(settings::kICloudSyncSettingsEnabled, value); }
    bool iCloudSyncClipboardEnabled() const { return get(settings::kICloudSyncClipboardEnabled); }
    void setICloudSyncClipboardEnabled(bool value) { set(settings::kICloudSyncClipboardEnabled, value); }
    /// The registered defaults: every setting marked as registered, hotkeys as their JSON data.
    static std::map<std::string, PreferenceValue> registeredDefaults();

private:
    void migrateIfNeeded();

    PreferenceStore& store_;
};

}  // namespace orvantis
