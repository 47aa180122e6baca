#pragma once

#include <array>
#include <string_view>

namespace orvantis {

/// The language of the interface, chosen in the settings and never taken from the system.
enum class SettingsLanguage { en, ru };

inline constexpr std::array<SettingsLanguage, 2> kAllSettingsLanguages{SettingsLanguage::en, SettingsLanguage::ru};

/// "en" or "ru".
constexpr std::string_view rawValue(SettingsLanguage language) {
    return language == SettingsLanguage::ru ? "ru" : "en";
}

/// An unknown raw value reads as the first case, English.
constexpr SettingsLanguage settingsLanguageFromRaw(std::string_view raw) {
    return raw == "ru" ? SettingsLanguage::ru : SettingsLanguage::en;
}

/// Each language's name in its own language, for the language picker.
constexpr std::string_view displayName(SettingsLanguage language) {
    return language == SettingsLanguage::ru ? "Русский" : "English";
}

}  // namespace orvantis
