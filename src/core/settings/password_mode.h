#pragma once

#include <array>
#include <string_view>

namespace orvantis {

/// What the password hotkey does with a new password: show the popup, type it into the focused
/// field, or only copy it.
enum class PasswordMode { popup, autoPaste, copyOnly };

inline constexpr std::array<PasswordMode, 3> kAllPasswordModes{PasswordMode::popup, PasswordMode::autoPaste,
                                                               PasswordMode::copyOnly};

constexpr std::string_view rawValue(PasswordMode mode) {
    switch (mode) {
        case PasswordMode::autoPaste: return "autoPaste";
        case PasswordMode::copyOnly: return "copyOnly";
        case PasswordMode::popup: break;
    }
    return "popup";
}

/// An unknown raw value reads as the first case, `popup`.
constexpr PasswordMode passwordModeFromRaw(std::string_view raw) {
    if (raw == "autoPaste") return PasswordMode::autoPaste;
    if (raw == "copyOnly") return PasswordMode::copyOnly;
    return PasswordMode::popup;
}

}  // namespace orvantis
