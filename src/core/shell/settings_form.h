#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "core/clipboard/uuid.h"
#include "core/settings/app_settings.h"
#include "core/snippets/snippet_expander.h"
#include "core/strings/settings_strings.h"
#include "platform/subscription.h"

namespace orvantis {

/// The ten pages of the settings window, in toolbar order.
enum class SettingsSection { general, translator, layoutSwitcher, clipboard, pomodoro, password, snippets,
                             textTransformer, bonus, about };
inline constexpr std::array<SettingsSection, 10> kAllSettingsSections{
    SettingsSection::general,  SettingsSection::translator,      SettingsSection::layoutSwitcher,
    SettingsSection::clipboard, SettingsSection::pomodoro,       SettingsSection::password,
    SettingsSection::snippets, SettingsSection::textTransformer, SettingsSection::bonus,
    SettingsSection::about};
/// "general", "translator"...: the page's identifier after "settings.".
std::string_view caseName(SettingsSection section);
/// The toolbar label of the page.
std::string_view toolbarLabel(SettingsSection section, const SettingsStrings& strings);
/// The freedesktop icon-theme name of the page's toolbar icon.
std::string_view iconName(SettingsSection section);

/// The twelve hotkeys that the window edits, in their order.
enum class HotkeyField { layoutSwitch, translation, directTranslation, clipboard, pomodoro, password, snippets,
                         textTransformer, hotkeyOverlay, keyboardLock, menuBarHider, caffeine };
inline constexpr std::size_t kHotkeyFieldCount = 12;
std::string_view caseName(HotkeyField field);
const HotkeySetting& settingOf(HotkeyField field);
/// The field of a button identifier "hotkey:<case>", or nullopt for anything else.
std::optional<HotkeyField> hotkeyFieldFromIdentifier(std::string_view identifier);

/// The range of a slider, which may end below what the store accepts.
struct SliderRange {
    std::int64_t minimum, maximum;
    bool truncates;  ///< the value is truncated (the delay); otherwise rounded
};
/// The slider of an integer setting; nullopt for settings without one.
std::optional<SliderRange> sliderRange(const IntSetting& setting);
/// Where the slider stands for a form value: the value held to the slider's range.
std::int64_t sliderPosition(const IntSetting& setting, std::int64_t value);
/// The form value of a slider's raw position: truncated or rounded, held to the range.
std::int64_t sliderValue(const IntSetting& setting, double position);

/// The display helpers of the value labels.
std::string clearSecondsDisplay(std::int64_t seconds, const SettingsStrings& strings);
std::string menuBarHiderAutoCollapseDisplay(std::int64_t seconds, const SettingsStrings& strings);
std::string caffeineDurationDisplay(std::int64_t minutes, const SettingsStrings& strings);
/// The items of the keep-awake duration popup: the fixed list, plus `stored` when it is none of them.
std::vector<std::int64_t> caffeineDurationChoices(std::int64_t stored);

/// What a save does outside the settings store, in the order the save calls it. The window
/// gives the real collaborators; tests give a recording fake.
class SettingsSaveTarget {
public:
    virtual ~SettingsSaveTarget() = default;
    /// Asks whether clipboard syncing may be turned on. False aborts the save.
    virtual bool confirmClipboardSyncConsent() = 0;
    /// The launch-at-login setter, which also installs or removes the autostart entry.
    virtual void setLaunchAtLogin(bool enabled) = 0;
    virtual void postSettingsLanguageChanged() = 0;
    virtual void clearClipboardPersistence() = 0;
    virtual void applyScrollReverser() = 0;
    virtual void updateMenuBarHiderHotkey(const HotkeyDescriptor& hotkey) = 0;
    virtual void applyMenuBarHider() = 0;
    /// The alert shown when the lid-close mode is turned on with no application to watch.
    virtual void showLidCloseNeedsApp() = 0;
    virtual bool provisionLidCloseInteractively() = 0;
    virtual bool deprovisionLidClose() = 0;
    virtual void showLidCloseRemovalCancelled() = 0;
    virtual void applyCaffeine() = 0;
    virtual bool keyboardLocked() const = 0;
    virtual void unlockKeyboard(std::string_view reason) = 0;
    virtual void postMenuBarNeedsRebuild() = 0;
    /// One hotkey into the monitor; the layout switch hotkey comes first.
    virtual void updateMonitorHotkey(HotkeyField field, const HotkeyDescriptor& hotkey) = 0;
    virtual void setClipboardHistoryMaxSize(int size) = 0;
    virtual void settingsSyncToggled() = 0;
    virtual void clipboardSyncToggled() = 0;
    virtual void closeWindow() = 0;
};

/// The settings window's form, free of any toolkit: on opening it copies every setting, the
/// controls edit only the copies, and nothing reaches the settings until save(). Cancel and
/// closing drop the copies. Two things act at once: the language, previewed by the window as
/// soon as it changes (onLanguagePreview), and clearing the clipboard history, which the window
/// does itself.
///
/// Settings that another process changes while the form is open flow into the fields the user
/// has not touched; save() writes only the fields that differ from what the form read, so the
/// store's per-key merge keeps the other process's values for everything else.
///
/// Hotkey capture runs here too: begin, feed key downs, and the form tells the window what to
/// show; onCaptureActive tells whoever holds the global grabs to suspend them.
///
/// Borrows the settings. Main thread only.
class SettingsForm {
public:
    using Value = std::variant<bool, std::int64_t, std::string, std::vector<std::string>, SettingsLanguage,
                               PasswordMode, HotkeyDescriptor>;

    explicit SettingsForm(AppSettings& settings);
    ~SettingsForm();
    SettingsForm(const SettingsForm&) = delete;
    SettingsForm& operator=(const SettingsForm&) = delete;

    bool get(const BoolSetting& s) const { return std::get<bool>(value(s.name)); }
    std::int64_t get(const IntSetting& s) const { return std::get<std::int64_t>(value(s.name)); }
    std::string get(const StringSetting& s) const { return std::get<std::string>(value(s.name)); }
    std::vector<std::string> get(const StringListSetting& s) const { return std::get<std::vector<std::string>>(value(s.name)); }
    SettingsLanguage get(const LanguageSetting& s) const { return std::get<SettingsLanguage>(value(s.name)); }
    PasswordMode get(const PasswordModeSetting& s) const { return std::get<PasswordMode>(value(s.name)); }
    HotkeyDescriptor get(const HotkeySetting& s) const { return std::get<HotkeyDescriptor>(value(s.name)); }
    HotkeyDescriptor hotkey(HotkeyField field) const { return get(settingOf(field)); }

    void set(const BoolSetting& s, bool v) { edit(s.name, v); }
    void set(const IntSetting& s, std::int64_t v) { edit(s.name, v); }
    void set(const StringSetting& s, std::string v) { edit(s.name, std::move(v)); }
    void set(const StringListSetting& s, std::vector<std::string> v) { edit(s.name, std::move(v)); }
    void set(const PasswordModeSetting& s, PasswordMode v) { edit(s.name, v); }
    void set(const HotkeySetting& s, HotkeyDescriptor v) { edit(s.name, v); }
    /// Stores the language in the form and previews it at once.
    void setLanguage(SettingsLanguage language);
    SettingsLanguage language() const { return get(settings::kSettingsLanguage); }
    SettingsStrings strings() const { return SettingsStrings::make(language()); }

    /// Adds an application id to a list unless it is there already. True when added.
    bool addApp(const StringListSetting& list, const std::string& id);
    void removeApp(const StringListSetting& list, const std::string& id);

    /// The snippet table.
    const std::vector<SnippetEntry>& snippets() const { return snippets_; }
    /// Appends an empty entry and answers its row.
    std::size_t addSnippet();
    void removeSnippet(std::size_t row);
    void editSnippet(std::size_t row, std::optional<std::string> shortcut, std::optional<std::string> expansion);
    /// The form's snippet list could not be read from the store (it did not decode).
    bool snippetsUnreadable() const { return snippetsUnreadable_; }

    /// Hotkey capture. Beginning ends any capture in progress first.
    void beginCapture(HotkeyField field);
    enum class CaptureResult { notCapturing, cancelled, ignored, captured };
    /// One key down while capturing: Esc (53) cancels; a key without Shift, Ctrl, Super or Alt
    /// is ignored and capturing goes on; anything else is taken with the four modifier bits.
    CaptureResult captureKeyDown(std::uint16_t keyCode, std::uint64_t flags);
    /// Ends a capture without a result (a second click, the window closing, a lost grab).
    void cancelCapture();
    std::optional<HotkeyField> activeCapture() const { return activeCapture_; }
    /// The title of a hotkey button: pressKeys while it captures, else the hotkey's Linux name.
    std::string buttonTitle(HotkeyField field) const;
    /// Whether the conflict warning of the field shows: set when a capture ends on it.
    bool conflictShown(HotkeyField field) const { return conflictShown_[static_cast<std::size_t>(field)]; }
    /// The reserved list, or more than one of the eleven fields (all but the direct
    /// translation hotkey) holding `hotkey`.
    bool checkConflict(const HotkeyDescriptor& hotkey) const;

    /// Saves in the fixed order, calling `target` along the way. False when the clipboard
    /// sync consent was declined: nothing was written and the window stays.
    bool save(SettingsSaveTarget& target);

    /// Window-side hooks.
    std::function<void()> onLanguagePreview;
    std::function<void(bool active)> onCaptureActive;
    /// A field the user had not touched took a new value because the setting changed
    /// elsewhere (another process, the command line, a sync).
    std::function<void()> onExternalChange;

    /// Whether the user changed the field since the form was opened.
    bool edited(std::string_view name) const { return edited_.count(std::string(name)) != 0; }

private:
    const Value& value(std::string_view name) const;
    void edit(std::string_view name, Value v);
    /// Reads every setting; with `onlyUntouched`, fields the user edited keep their value.
    /// True when a field's value changed.
    bool readAll(bool onlyUntouched);
    void finishCapture();
    template <typename Setting>
    void writeIfEdited(const Setting& s);
    void writeInt(const IntSetting& s);

    AppSettings& settings_;
    SnippetExpander snippetStore_;
    UuidGenerator uuids_;
    std::map<std::string, Value, std::less<>> values_;
    std::map<std::string, Value, std::less<>> original_;
    std::set<std::string, std::less<>> edited_;
    std::vector<SnippetEntry> snippets_;
    std::vector<SnippetEntry> originalSnippets_;
    bool snippetsUnreadable_ = false;
    std::optional<HotkeyField> activeCapture_;
    std::array<bool, kHotkeyFieldCount> conflictShown_{};
    Subscription storeChanges_;
};

}  // namespace orvantis
