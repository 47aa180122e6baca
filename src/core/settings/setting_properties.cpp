#include "core/settings/setting_properties.h"

#include <limits>
#include <type_traits>

namespace orvantis {
namespace {

template <typename S>
std::string_view typeName() {
    if constexpr (std::is_same_v<S, BoolSetting>) return "boolean";
    if constexpr (std::is_same_v<S, IntSetting>) return "integer";
    if constexpr (std::is_same_v<S, StringSetting>) return "string";
    if constexpr (std::is_same_v<S, StringListSetting>) return "string array";
    if constexpr (std::is_same_v<S, LanguageSetting>) return "language";
    if constexpr (std::is_same_v<S, PasswordModeSetting>) return "password mode";
    if constexpr (std::is_same_v<S, HotkeySetting>) return "hotkey";
}

template <typename S>
nlohmann::json toJson(const AppSettings& settings, const S& setting) {
    const auto value = settings.get(setting);
    if constexpr (std::is_same_v<S, LanguageSetting> || std::is_same_v<S, PasswordModeSetting>) {
        return std::string(rawValue(value));
    } else if constexpr (std::is_same_v<S, HotkeySetting>) {
        return nlohmann::json{{"keyCode", value.keyCode}, {"modifiers", value.modifiers}};
    } else {
        return value;
    }
}

template <typename E, std::size_t N>
std::string allowedValues(const std::array<E, N>& all) {
    std::string text;
    for (const auto& v : all) text += (text.empty() ? "" : ", ") + std::string("\"") + std::string(rawValue(v)) + "\"";
    return text;
}

template <typename S>
std::optional<std::string> fromJson(AppSettings& settings, const S& setting, const nlohmann::json& value) {
    if constexpr (std::is_same_v<S, BoolSetting>) {
        if (!value.is_boolean()) return "expects true or false";
        settings.set(setting, value.get<bool>());
    } else if constexpr (std::is_same_v<S, IntSetting>) {
        if (value.is_number_unsigned()) {
            const auto v = value.get<std::uint64_t>();
            settings.set(setting, v > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())
                                      ? std::numeric_limits<std::int64_t>::max()
                                      : static_cast<std::int64_t>(v));
        } else if (value.is_number_integer()) {
            settings.set(setting, value.get<std::int64_t>());
        } else {
            return "expects a whole number (" + std::to_string(setting.minimum) + "..." +
                   std::to_string(setting.maximum) + ")";
        }
    } else if constexpr (std::is_same_v<S, StringSetting>) {
        if (!value.is_string()) return "expects a string";
        settings.set(setting, value.get<std::string>());
    } else if constexpr (std::is_same_v<S, StringListSetting>) {
        if (!value.is_array()) return "expects an array of strings";
        std::vector<std::string> items;
        for (const auto& item : value) {
            if (!item.is_string()) return "expects an array of strings";
            items.push_back(item.get<std::string>());
        }
        settings.set(setting, items);
    } else if constexpr (std::is_same_v<S, LanguageSetting>) {
        if (!value.is_string()) return "expects one of " + allowedValues(kAllSettingsLanguages);
        const auto raw = value.get<std::string>();
        const auto language = settingsLanguageFromRaw(raw);
        if (rawValue(language) != raw) return "expects one of " + allowedValues(kAllSettingsLanguages);
        settings.set(setting, language);
    } else if constexpr (std::is_same_v<S, PasswordModeSetting>) {
        if (!value.is_string()) return "expects one of " + allowedValues(kAllPasswordModes);
        const auto raw = value.get<std::string>();
        const auto mode = passwordModeFromRaw(raw);
        if (rawValue(mode) != raw) return "expects one of " + allowedValues(kAllPasswordModes);
        settings.set(setting, mode);
    } else {
        const auto hotkey = value.is_object() ? HotkeyDescriptor::fromJson(toJsonText(value)) : std::nullopt;
        if (!hotkey) return R"(expects {"keyCode":<0...65535>,"modifiers":<flag bits>})";
        settings.set(setting, *hotkey);
    }
    return std::nullopt;
}

std::vector<SettingProperty> makeProperties() {
    std::vector<SettingProperty> properties;
    settings::forEach([&properties](const auto& setting) {
        using S = std::decay_t<decltype(setting)>;
        properties.push_back(SettingProperty{
            setting.name, setting.key, typeName<S>(),
            [setting](const AppSettings& s) { return toJson(s, setting); },
            [setting](AppSettings& s, const nlohmann::json& v) { return fromJson(s, setting, v); },
            [setting](AppSettings& s) { s.reset(setting); }});
    });
    return properties;
}

}  // namespace

const std::vector<SettingProperty>& settingProperties() {
    static const std::vector<SettingProperty> properties = makeProperties();
    return properties;
}

const SettingProperty* findSettingProperty(std::string_view name) {
    for (const auto& property : settingProperties())
        if (property.name == name) return &property;
    return nullptr;
}

std::string toJsonText(const nlohmann::json& value) {
    return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace orvantis
