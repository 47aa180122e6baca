#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "core/settings/app_settings.h"

namespace orvantis {

/// One property of AppSettings seen as JSON, for the command line and for diagnostics: the value
/// its typed getter answers, a write through its typed setter (so clamped), and a reset.
struct SettingProperty {
    std::string_view name;  ///< the property name ("switchDelayMs")
    std::string_view key;   ///< the full store key
    std::string_view type;  ///< "boolean", "integer", "string", "string array", "language", "password mode", "hotkey"
    std::function<nlohmann::json(const AppSettings&)> get;
    /// Writes `value` when it has the property's type; otherwise writes nothing and answers why.
    std::function<std::optional<std::string>(AppSettings&, const nlohmann::json& value)> set;
    std::function<void(AppSettings&)> reset;
};

/// Every property, hotkeys first, then in the order of the settings table.
const std::vector<SettingProperty>& settingProperties();
/// The property of that name, or null.
const SettingProperty* findSettingProperty(std::string_view name);
/// Compact JSON text of a value, with characters that are not valid UTF-8 replaced.
std::string toJsonText(const nlohmann::json& value);

}  // namespace orvantis
