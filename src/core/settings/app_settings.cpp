#include "core/settings/app_settings.h"

#include <type_traits>

namespace orvantis {
namespace {

PreferenceData hotkeyData(const HotkeyDescriptor& hotkey) { return PreferenceData{hotkey.toJson()}; }

}  // namespace

AppSettings::AppSettings(PreferenceStore& store) : store_(store) {
    store_.registerDefaults(registeredDefaults());
    migrateIfNeeded();
}

std::string_view AppSettings::shortKey(std::string_view key) {
    if (key.substr(0, settings::kKeyPrefix.size()) == settings::kKeyPrefix) key.remove_prefix(settings::kKeyPrefix.size());
    return key;
}

std::map<std::string, PreferenceValue> AppSettings::registeredDefaults() {
    std::map<std::string, PreferenceValue> defaults;
    settings::forEach([&defaults](const auto& s) {
        using S = std::decay_t<decltype(s)>;
        if (!s.registered) return;
        const std::string_view key = s.key;
        if constexpr (std::is_same_v<S, BoolSetting>) {
            defaults.emplace(std::string(key), s.defaultValue);
        } else if constexpr (std::is_same_v<S, IntSetting>) {
            defaults.emplace(std::string(key), s.defaultValue);
        } else if constexpr (std::is_same_v<S, StringSetting>) {
            defaults.emplace(std::string(key), std::string(s.defaultValue));
        } else if constexpr (std::is_same_v<S, StringListSetting>) {
            defaults.emplace(std::string(key), std::vector<std::string>{});
        } else if constexpr (std::is_same_v<S, LanguageSetting> || std::is_same_v<S, PasswordModeSetting>) {
            defaults.emplace(std::string(key), std::string(rawValue(s.defaultValue)));
        } else {
            defaults.emplace(std::string(key), hotkeyData(s.defaultValue));
        }
    });
    return defaults;
}

void AppSettings::migrateIfNeeded() {
    const std::string flag = std::string(settings::kPomodoroHotkeyMigrationV1);
    if (store_.boolForKey(flag)) return;
    // ⌃⇧T was once the Pomodoro hotkey's default; it now belongs to the text tools.
    const std::string key = std::string(settings::kPomodoroHotkey.key);
    if (store_.hasStoredValue(key)) {
        if (auto data = store_.dataForKey(key)) {
            if (auto stored = HotkeyDescriptor::fromJson(*data);
                stored && *stored == HotkeyDescriptor{17, 0x60000}) {
                set(settings::kPomodoroHotkey, settings::kPomodoroHotkey.defaultValue);
            }
        }
    }
    store_.set(flag, true);
}

bool AppSettings::get(const BoolSetting& s) const { return store_.boolIfPresent(s.key).value_or(s.defaultValue); }

std::int64_t AppSettings::get(const IntSetting& s) const {
    const auto stored = store_.integerIfPresent(s.key);
    if (!stored) return s.clamp(s.defaultValue);
    if (*stored == 0 && s.zeroReadsAs) return *s.zeroReadsAs;
    return s.clamp(*stored);
}

std::string AppSettings::get(const StringSetting& s) const {
    return store_.stringForKey(s.key).value_or(std::string(s.defaultValue));
}

std::vector<std::string> AppSettings::get(const StringListSetting& s) const {
    return store_.stringArrayForKey(s.key).value_or(std::vector<std::string>{});
}

SettingsLanguage AppSettings::get(const LanguageSetting& s) const {
    const auto raw = store_.stringForKey(s.key);
    return raw ? settingsLanguageFromRaw(*raw) : s.defaultValue;
}

PasswordMode AppSettings::get(const PasswordModeSetting& s) const {
    const auto raw = store_.stringForKey(s.key);
    return raw ? passwordModeFromRaw(*raw) : s.defaultValue;
}

HotkeyDescriptor AppSettings::get(const HotkeySetting& s) const {
    if (auto data = store_.dataForKey(s.key))
        if (auto hotkey = HotkeyDescriptor::fromJson(*data)) return *hotkey;
    return s.defaultValue;
}

void AppSettings::set(const BoolSetting& s, bool value) { store_.set(s.key, value); }

void AppSettings::set(const IntSetting& s, std::int64_t value) { store_.set(s.key, s.clamp(value)); }

void AppSettings::set(const StringSetting& s, std::string_view value) {
    store_.set(s.key, std::string(value));
}

void AppSettings::set(const StringListSetting& s, const std::vector<std::string>& value) {
    store_.set(s.key, value);
}

void AppSettings::set(const LanguageSetting& s, SettingsLanguage value) {
    store_.set(s.key, std::string(rawValue(value)));
}

void AppSettings::set(const PasswordModeSetting& s, PasswordMode value) {
    store_.set(s.key, std::string(rawValue(value)));
}

void AppSettings::set(const HotkeySetting& s, const HotkeyDescriptor& value) {
    store_.set(s.key, hotkeyData(value));
}

}  // namespace orvantis
