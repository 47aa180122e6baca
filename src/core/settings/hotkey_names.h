#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "core/settings/hotkey_descriptor.h"

namespace orvantis {

/// Hotkeys as Linux users write them: "Super+Shift+X", "Ctrl+Alt+Backspace". Modifiers come in
/// the order Ctrl, Super, Alt, Shift (Command is Ctrl, Control is Super, Option is Alt), then
/// the key: a letter or digit in upper case, the US character of a punctuation key, or a name
/// (Space, Return, Tab, Backspace, Esc, Left, Right, Up, Down, Delete, Insert, Home, End,
/// PageUp, PageDown, F1...F12, Print). A key without a name shows as its code in parentheses.
std::string linuxHotkeyName(const HotkeyDescriptor& hotkey);

/// Why a text is no hotkey.
struct HotkeyParseError {
    std::string message;
};

/// Reads a name in the form linuxHotkeyName() writes, case-insensitively, with the common
/// aliases (Control, Win, Meta, Option, Escape, Enter, BackSpace, PgUp...). Nullopt-like error
/// for an unknown word, a missing key, two keys, or a combination without a modifier.
std::variant<HotkeyDescriptor, HotkeyParseError> parseLinuxHotkeyName(std::string_view text);

/// A combination that the system itself or the Linux desktop keeps for itself, with the name
/// under which a warning mentions it.
struct ReservedHotkey {
    HotkeyDescriptor hotkey;
    std::string_view owner;  ///< "system" for the three of the product, else "desktop"
};

/// The reserved combinations: Ctrl+Space, Ctrl+Tab and Super+Alt+Space, then the Linux
/// desktop's own (window switching and closing, the screen lock, the terminal, logging out and
/// killing the X server, the window menu, screenshots, workspaces).
std::span<const ReservedHotkey> reservedHotkeys();
/// True when `hotkey` equals a reserved combination exactly (all four modifier bits).
bool isReservedHotkey(const HotkeyDescriptor& hotkey);

}  // namespace orvantis
