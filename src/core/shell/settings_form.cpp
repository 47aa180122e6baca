#include "core/shell/settings_form.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "core/settings/hotkey_names.h"

namespace orvantis {
namespace {

constexpr std::array<std::string_view, 10> kSectionNames{
    "general", "translator", "layoutSwitcher", "clipboard", "pomodoro",
    "password", "snippets", "textTransformer", "bonus", "about"};
// Icon-theme names; the window falls back to built-in pictures when the theme lacks them.
constexpr std::array<std::string_view, 10> kSectionIcons{
    "preferences-system", "preferences-desktop-locale", "input-keyboard", "edit-paste", "alarm-symbolic",
    "dialog-password", "insert-text", "format-text-bold", "starred", "help-about"};

constexpr std::array<std::string_view, kHotkeyFieldCount> kHotkeyFieldNames{
    "layoutSwitch", "translation", "directTranslation", "clipboard", "pomodoro", "password",
    "snippets", "textTransformer", "hotkeyOverlay", "keyboardLock", "menuBarHider", "caffeine"};

const std::array<const HotkeySetting*, kHotkeyFieldCount> kHotkeySettings{
    &settings::kHotkey,                 &settings::kTranslationHotkey,     &settings::kDirectTranslationHotkey,
    &settings::kClipboardHistoryHotkey, &settings::kPomodoroHotkey,        &settings::kPasswordHotkey,
    &settings::kSnippetExpanderHotkey,  &settings::kTextTransformerHotkey, &settings::kHotkeyOverlayHotkey,
    &settings::kKeyboardLockHotkey,     &settings::kMenuBarHiderHotkey,    &settings::kCaffeineHotkey};

constexpr std::int64_t kEscape = 53;
constexpr std::array<std::int64_t, 7> kCaffeineDurations{0, 15, 30, 60, 120, 240, 480};

template <typename Setting>
SettingsForm::Value readValue(const AppSettings& settings, const Setting& s) {
    return SettingsForm::Value(settings.get(s));
}

}  // namespace

std::string_view caseName(SettingsSection section) { return kSectionNames[static_cast<std::size_t>(section)]; }
std::string_view iconName(SettingsSection section) { return kSectionIcons[static_cast<std::size_t>(section)]; }

std::string_view toolbarLabel(SettingsSection section, const SettingsStrings& s) {
    switch (section) {
        case SettingsSection::general: return s.general;
        case SettingsSection::translator: return s.translator;
        case SettingsSection::layoutSwitcher: return s.toolbarLabelSwitcher;
        case SettingsSection::clipboard: return s.toolbarLabelClipboard;
        case SettingsSection::pomodoro: return s.toolbarLabelPomodoro;
        case SettingsSection::password: return s.toolbarLabelPassword;
        case SettingsSection::snippets: return s.toolbarLabelSnippets;
        case SettingsSection::textTransformer: return s.toolbarLabelTextTransformer;
        case SettingsSection::bonus: return s.toolbarLabelBonus;
        case SettingsSection::about: return s.about;
    }
    return s.general;
}

std::string_view caseName(HotkeyField field) { return kHotkeyFieldNames[static_cast<std::size_t>(field)]; }
const HotkeySetting& settingOf(HotkeyField field) { return *kHotkeySettings[static_cast<std::size_t>(field)]; }

std::optional<HotkeyField> hotkeyFieldFromIdentifier(std::string_view identifier) {
    constexpr std::string_view kPrefix = "hotkey:";
    if (identifier.substr(0, kPrefix.size()) != kPrefix) return std::nullopt;
    identifier.remove_prefix(kPrefix.size());
    for (std::size_t i = 0; i < kHotkeyFieldNames.size(); ++i)
        if (kHotkeyFieldNames[i] == identifier) return static_cast<HotkeyField>(i);
    return std::nullopt;
}

std::optional<SliderRange> sliderRange(const IntSetting& s) {
    using namespace settings;
    if (s.key == kSwitchDelayMs.key) return SliderRange{0, 500, true};
    if (s.key == kClipboardHistorySize.key) return SliderRange{1, 200, false};
    if (s.key == kWorkDurationMinutes.key) return SliderRange{5, 90, false};
    if (s.key == kBreakDurationMinutes.key) return SliderRange{1, 30, false};
    if (s.key == kLongBreakDurationMinutes.key) return SliderRange{5, 45, false};
    // The password sliders end below the store's 128 and 600: a larger stored value shows at
    // the end and survives a save while the slider is not moved.
    if (s.key == kPasswordLength.key) return SliderRange{4, 64, false};
    if (s.key == kPasswordClipboardClearSeconds.key) return SliderRange{0, 300, false};
    if (s.key == kKeyboardLockAutoUnlockMinutes.key) return SliderRange{1, 60, false};
    if (s.key == kMenuBarHiderAutoCollapseSeconds.key) return SliderRange{0, 300, false};
    return std::nullopt;
}

std::int64_t sliderPosition(const IntSetting& s, std::int64_t value) {
    const auto range = sliderRange(s);
    if (!range) return value;
    return std::clamp(value, range->minimum, range->maximum);
}

std::int64_t sliderValue(const IntSetting& s, double position) {
    const auto range = sliderRange(s);
    if (!std::isfinite(position)) position = 0;
    const double whole = range && range->truncates ? std::trunc(position) : std::round(position);
    const auto value = static_cast<std::int64_t>(std::clamp(whole, -1e12, 1e12));
    return range ? std::clamp(value, range->minimum, range->maximum) : s.clamp(value);
}

std::string clearSecondsDisplay(std::int64_t seconds, const SettingsStrings& s) {
    if (seconds < 1) return std::string(s.passwordClipboardNever);
    return std::to_string(seconds) + " " + std::string(s.passwordClipboardClearUnitSec);
}

std::string menuBarHiderAutoCollapseDisplay(std::int64_t seconds, const SettingsStrings& s) {
    if (seconds < 1) return std::string(s.menuBarHiderAutoCollapseOff);
    return std::to_string(seconds) + " " + std::string(s.menuBarHiderSecondsUnit);
}

std::string caffeineDurationDisplay(std::int64_t minutes, const SettingsStrings& s) {
    if (minutes == 0) return std::string(s.caffeineDurationIndefinite);
    if (minutes < 60) return std::to_string(minutes) + " " + std::string(s.caffeineMinutesUnit);
    const auto hours = minutes / 60, rest = minutes % 60;
    const std::string h = std::to_string(hours) + " " + std::string(s.caffeineHoursUnit);
    if (rest == 0) return h;
    return h + " " + std::to_string(rest) + " " + std::string(s.caffeineMinutesUnit);
}

std::vector<std::int64_t> caffeineDurationChoices(std::int64_t stored) {
    std::vector<std::int64_t> choices(kCaffeineDurations.begin(), kCaffeineDurations.end());
    if (std::find(choices.begin(), choices.end(), stored) == choices.end()) choices.push_back(stored);
    return choices;
}

SettingsForm::SettingsForm(AppSettings& settings) : settings_(settings), snippetStore_(settings.store()) {
    readAll(false);
    original_ = values_;
    storeChanges_ = settings_.store().onChange([this](const std::vector<std::string>&) {
        if (readAll(true) && onExternalChange) onExternalChange();
    });
}

SettingsForm::~SettingsForm() {
    if (activeCapture_ && onCaptureActive) onCaptureActive(false);
}

bool SettingsForm::readAll(bool onlyUntouched) {
    bool changed = false;
    settings::forEach([&](const auto& s) {
        const std::string name(s.name);
        Value fresh = readValue(settings_, s);
        if (onlyUntouched) {
            // Another process (or another part of this one) changed the store: take its value
            // where the user has not edited the field, and remember it as the new baseline.
            original_[name] = fresh;
            if (edited_.count(name) != 0) return;
        }
        auto it = values_.find(name);
        if (it != values_.end() && it->second == fresh) return;
        changed = true;
        values_[name] = std::move(fresh);
    });
    const auto raw = settings_.store().dataForKey(SnippetExpander::kKey);
    std::vector<SnippetEntry> stored;
    bool unreadable = false;
    if (raw) {
        if (auto decoded = SnippetExpander::decode(*raw)) stored = std::move(*decoded);
        else unreadable = true;
    }
    if ((!onlyUntouched || edited_.count("snippetEntries") == 0) && snippets_ != stored) {
        snippets_ = stored;
        changed = true;
    }
    if (!onlyUntouched || edited_.count("snippetEntries") == 0) snippetsUnreadable_ = unreadable;
    originalSnippets_ = std::move(stored);
    return changed;
}

const SettingsForm::Value& SettingsForm::value(std::string_view name) const {
    const auto it = values_.find(name);
    // Every setting is read at construction; a name outside the table is a bug of the caller.
    if (it == values_.end()) std::abort();
    return it->second;
}

void SettingsForm::edit(std::string_view name, Value v) {
    auto it = values_.find(name);
    if (it == values_.end()) std::abort();
    it->second = std::move(v);
    edited_.insert(std::string(name));
}

void SettingsForm::setLanguage(SettingsLanguage language) {
    edit(settings::kSettingsLanguage.name, language);
    if (onLanguagePreview) onLanguagePreview();
}

bool SettingsForm::addApp(const StringListSetting& list, const std::string& id) {
    auto apps = get(list);
    if (id.empty() || std::find(apps.begin(), apps.end(), id) != apps.end()) return false;
    apps.push_back(id);
    set(list, std::move(apps));
    return true;
}

void SettingsForm::removeApp(const StringListSetting& list, const std::string& id) {
    auto apps = get(list);
    apps.erase(std::remove(apps.begin(), apps.end(), id), apps.end());
    set(list, std::move(apps));
}

std::size_t SettingsForm::addSnippet() {
    snippets_.push_back(SnippetEntry{uuids_.generate(), {}, {}});
    edited_.insert("snippetEntries");
    return snippets_.size() - 1;
}

void SettingsForm::removeSnippet(std::size_t row) {
    if (row >= snippets_.size()) return;
    snippets_.erase(snippets_.begin() + static_cast<std::ptrdiff_t>(row));
    edited_.insert("snippetEntries");
}

void SettingsForm::editSnippet(std::size_t row, std::optional<std::string> shortcut,
                               std::optional<std::string> expansion) {
    if (row >= snippets_.size()) return;
    if (shortcut) snippets_[row].shortcut = std::move(*shortcut);
    if (expansion) snippets_[row].expansion = std::move(*expansion);
    edited_.insert("snippetEntries");
}

void SettingsForm::beginCapture(HotkeyField field) {
    if (activeCapture_) finishCapture();
    activeCapture_ = field;
    if (onCaptureActive) onCaptureActive(true);
}

void SettingsForm::finishCapture() {
    activeCapture_.reset();
    if (onCaptureActive) onCaptureActive(false);
}

void SettingsForm::cancelCapture() {
    if (activeCapture_) finishCapture();
}

SettingsForm::CaptureResult SettingsForm::captureKeyDown(std::uint16_t keyCode, std::uint64_t flags) {
    if (!activeCapture_) return CaptureResult::notCapturing;
    if (keyCode == kEscape) {
        finishCapture();
        return CaptureResult::cancelled;
    }
    const std::uint64_t modifiers = flags & HotkeyDescriptor::kModifierMask;
    if (modifiers == 0) return CaptureResult::ignored;
    const HotkeyField field = *activeCapture_;
    const HotkeyDescriptor hotkey{keyCode, modifiers};
    set(settingOf(field), hotkey);
    finishCapture();
    conflictShown_[static_cast<std::size_t>(field)] = checkConflict(hotkey);
    return CaptureResult::captured;
}

std::string SettingsForm::buttonTitle(HotkeyField field) const {
    if (activeCapture_ == field) return std::string(strings().pressKeys);
    return linuxHotkeyName(hotkey(field));
}

bool SettingsForm::checkConflict(const HotkeyDescriptor& candidate) const {
    if (isReservedHotkey(candidate)) return true;
    int count = 0;
    for (std::size_t i = 0; i < kHotkeyFieldCount; ++i) {
        const auto field = static_cast<HotkeyField>(i);
        // The direct translation hotkey is left out: its duplicates go unreported.
        if (field == HotkeyField::directTranslation) continue;
        if (hotkey(field) == candidate) ++count;
    }
    return count > 1;
}

template <typename Setting>
void SettingsForm::writeIfEdited(const Setting& s) {
    const std::string name(s.name);
    const auto& now = values_.at(name);
    if (now == original_.at(name)) return;
    using T = std::decay_t<decltype(settings_.get(s))>;
    settings_.set(s, std::get<T>(now));
}

void SettingsForm::writeInt(const IntSetting& s) {
    // Integers are clamped to the store's range on writing (AppSettings does it).
    writeIfEdited(s);
}

bool SettingsForm::save(SettingsSaveTarget& target) {
    using namespace settings;
    // Step 1, committing an edit in progress, is the window's: it happens before save().
    const bool clipboardSyncWas = settings_.get(kICloudSyncClipboardEnabled);
    const bool clipboardSyncNow = get(kICloudSyncClipboardEnabled);
    if (!clipboardSyncWas && clipboardSyncNow && !target.confirmClipboardSyncConsent()) return false;
    cancelCapture();
    // While writing, our own changes must not flow back into the form.
    storeChanges_ = Subscription();

    writeIfEdited(kHotkey);
    writeInt(kSwitchDelayMs);
    if (get(kLaunchAtLogin) != std::get<bool>(original_.at(std::string(kLaunchAtLogin.name)))) {
        settings_.set(kLaunchAtLogin, get(kLaunchAtLogin));
        target.setLaunchAtLogin(get(kLaunchAtLogin));
    }
    writeIfEdited(kLayoutSwitchEnabled);
    writeIfEdited(kTranslationEnabled);
    writeIfEdited(kTranslationHotkey);
    writeIfEdited(kDirectTranslationHotkey);
    writeIfEdited(kTranslatorPrimaryLanguage);
    writeIfEdited(kTranslatorSecondaryLanguage);
    const bool languageChanged = settings_.get(kSettingsLanguage) != language();
    writeIfEdited(kSettingsLanguage);
    if (languageChanged) target.postSettingsLanguageChanged();

    const bool persistWas = settings_.get(kClipboardPersistEnabled);
    writeIfEdited(kClipboardHistoryEnabled);
    writeIfEdited(kClipboardHistoryHotkey);
    writeInt(kClipboardHistorySize);
    writeIfEdited(kClipboardStoreNonText);
    writeIfEdited(kClipboardPersistEnabled);
    writeIfEdited(kClipboardIgnoredApps);
    if (persistWas && !settings_.get(kClipboardPersistEnabled)) target.clearClipboardPersistence();

    writeIfEdited(kPomodoroEnabled);
    writeIfEdited(kPomodoroHotkey);
    writeIfEdited(kPomodoroToggleDND);
    writeInt(kWorkDurationMinutes);
    writeInt(kBreakDurationMinutes);
    writeInt(kLongBreakDurationMinutes);
    writeIfEdited(kPasswordEnabled);
    writeIfEdited(kPasswordHotkey);
    writeIfEdited(kPasswordMode);
    writeInt(kPasswordLength);
    writeIfEdited(kPasswordIncludeUppercase);
    writeIfEdited(kPasswordIncludeLowercase);
    writeIfEdited(kPasswordIncludeDigits);
    writeIfEdited(kPasswordIncludeSymbols);
    writeInt(kPasswordClipboardClearSeconds);
    writeIfEdited(kSnippetExpanderEnabled);
    writeIfEdited(kSnippetExpanderHotkey);
    if (edited_.count("snippetEntries") != 0) {
        std::vector<SnippetEntry> kept;
        for (const auto& entry : snippets_)
            if (!entry.shortcut.empty() && !entry.expansion.empty()) kept.push_back(entry);
        snippets_ = kept;
        snippetStore_.setEntries(kept);
    }

    writeIfEdited(kTextTransformerEnabled);
    writeIfEdited(kTextTransformerHotkey);
    writeIfEdited(kHotkeyOverlayHotkey);
    writeIfEdited(kKeyboardLockHotkey);
    writeInt(kKeyboardLockAutoUnlockMinutes);
    writeIfEdited(kReverseTrackpadScroll);
    writeIfEdited(kReverseMouseScroll);
    writeIfEdited(kReverseMagicMouseScroll);
    target.applyScrollReverser();

    writeIfEdited(kMenuBarHiderEnabled);
    writeIfEdited(kMenuBarHiderHotkey);
    writeInt(kMenuBarHiderAutoCollapseSeconds);
    target.updateMenuBarHiderHotkey(get(kMenuBarHiderHotkey));
    target.applyMenuBarHider();

    writeIfEdited(kCaffeineEnabled);
    writeIfEdited(kCaffeineHotkey);
    writeInt(kCaffeineDefaultDurationMinutes);
    writeIfEdited(kCaffeineActiveApps);
    const bool lidWas = settings_.get(kCaffeineLidClose), lidAlwaysWas = settings_.get(kCaffeineLidCloseAlways);
    if (get(kCaffeineLidClose) && !lidWas && get(kCaffeineActiveApps).empty()) {
        values_[std::string(kCaffeineLidClose.name)] = false;
        target.showLidCloseNeedsApp();
    }
    const bool lidNow = get(kCaffeineLidClose), lidAlwaysNow = get(kCaffeineLidCloseAlways);
    const auto restoreLid = [&] {
        values_[std::string(kCaffeineLidClose.name)] = lidWas;
        values_[std::string(kCaffeineLidCloseAlways.name)] = lidAlwaysWas;
    };
    if ((lidNow || lidAlwaysNow) && !lidWas && !lidAlwaysWas) {
        if (!target.provisionLidCloseInteractively()) restoreLid();
    } else if (!lidNow && !lidAlwaysNow && (lidWas || lidAlwaysWas)) {
        if (!target.deprovisionLidClose()) {
            restoreLid();
            target.showLidCloseRemovalCancelled();
        }
    }
    writeIfEdited(kCaffeineLidClose);
    writeIfEdited(kCaffeineLidCloseAlways);
    writeIfEdited(kKeyboardLockEnabled);
    writeIfEdited(kFinderCutEnabled);
    target.applyCaffeine();

    if (!settings_.get(kKeyboardLockEnabled) && target.keyboardLocked()) target.unlockKeyboard("disabled-in-settings");
    target.postMenuBarNeedsRebuild();
    // The layout switch hotkey first: its update starts the monitor when it is down.
    for (std::size_t i = 0; i < kHotkeyFieldCount; ++i) {
        const auto field = static_cast<HotkeyField>(i);
        target.updateMonitorHotkey(field, settings_.get(settingOf(field)));
    }
    target.setClipboardHistoryMaxSize(static_cast<int>(kClipboardHistorySize.clamp(get(kClipboardHistorySize))));

    const bool settingsSyncWas = settings_.get(kICloudSyncSettingsEnabled);
    writeIfEdited(kICloudSyncSettingsEnabled);
    writeIfEdited(kICloudSyncClipboardEnabled);
    if (settingsSyncWas != settings_.get(kICloudSyncSettingsEnabled)) target.settingsSyncToggled();
    if (clipboardSyncWas != settings_.get(kICloudSyncClipboardEnabled)) target.clipboardSyncToggled();
    target.closeWindow();
    return true;
}

}  // namespace orvantis
