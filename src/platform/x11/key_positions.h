#pragma once

#include <array>
#include <cstdint>
#include <optional>

// Physical key positions between the X server's keycodes (evdev scan code + 8, as in
// /usr/share/X11/xkb/keycodes/evdev) and the virtual key codes by which the rest of the program
// names keys: the codes of the classic desktop keyboard, A = 0, S = 1, ..., Space = 49. A key is
// named by where it sits, not by what it types, so "the key that types q on a US keyboard" is
// 12 in every layout. Covers the typing block of an ANSI keyboard plus Return, Tab, Backspace
// and Escape; the extra key of ISO keyboards (<LSGT>), the function keys and the keypad are
// left out. Header only and free of X headers, so tests and simulations can use it.

namespace orvantis::x11 {

/// One key: its X keycode and its virtual key code.
struct KeyPosition {
    std::uint8_t xKeycode;
    std::uint16_t virtualKey;
};

inline constexpr std::array<KeyPosition, 52> kKeyPositions{{
    // Letters, home row, bottom row, top row.
    {38, 0},  {39, 1},  {40, 2},  {41, 3},  {43, 4},  {42, 5},           // A S D F H G
    {52, 6},  {53, 7},  {54, 8},  {55, 9},  {56, 11},                    // Z X C V B
    {24, 12}, {25, 13}, {26, 14}, {27, 15}, {29, 16}, {28, 17},          // Q W E R Y T
    {30, 32}, {31, 34}, {32, 31}, {33, 35},                              // U I O P
    {44, 38}, {45, 40}, {46, 37},                                        // J K L
    {57, 45}, {58, 46},                                                  // N M
    // Digits and the keys beside them.
    {10, 18}, {11, 19}, {12, 20}, {13, 21}, {15, 22}, {14, 23},          // 1 2 3 4 6 5
    {21, 24}, {18, 25}, {16, 26}, {20, 27}, {17, 28}, {19, 29},          // = 9 7 - 8 0
    // Punctuation.
    {35, 30}, {34, 33}, {48, 39}, {47, 41}, {51, 42},                    // ] [ ' ; backslash
    {59, 43}, {61, 44}, {60, 47}, {49, 50},                              // , / . `
    // Whitespace and editing.
    {65, 49}, {36, 36}, {23, 48}, {22, 51}, {9, 53},                     // Space Return Tab Backspace Escape
}};

/// Keys outside the typing block that the program presses or watches: the arrows, Forward
/// Delete, Insert (where the original's Help key stands), Home, End, Page Up and Down, keypad
/// Enter.
inline constexpr std::array<KeyPosition, 11> kNavigationKeyPositions{{
    {113, 123}, {114, 124}, {116, 125}, {111, 126},  // left, right, down, up
    {119, 117}, {118, 114},                          // forward delete, insert
    {110, 115}, {115, 119}, {112, 116}, {117, 121},  // home, end, page up, page down
    {104, 76},                                       // keypad enter
}};

/// The virtual key code of the key with that X keycode, or nullopt for a key outside the tables.
constexpr std::optional<std::uint16_t> virtualKeyForXKeycode(std::uint32_t xKeycode) {
    for (const auto& key : kKeyPositions)
        if (key.xKeycode == xKeycode) return key.virtualKey;
    for (const auto& key : kNavigationKeyPositions)
        if (key.xKeycode == xKeycode) return key.virtualKey;
    return std::nullopt;
}

/// The X keycode of the key with that virtual key code, or nullopt for a key outside the tables.
constexpr std::optional<std::uint32_t> xKeycodeForVirtualKey(std::uint16_t virtualKey) {
    for (const auto& key : kKeyPositions)
        if (key.virtualKey == virtualKey) return key.xKeycode;
    for (const auto& key : kNavigationKeyPositions)
        if (key.virtualKey == virtualKey) return key.xKeycode;
    return std::nullopt;
}

}  // namespace orvantis::x11
