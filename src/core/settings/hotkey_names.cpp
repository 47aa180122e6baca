#include "core/settings/hotkey_names.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>
#include <vector>

namespace orvantis {
namespace {

using D = HotkeyDescriptor;

struct KeyName {
    std::uint16_t keyCode;
    std::string_view name;
};

// Virtual key codes and their names; the first name of a code is the one shown.
constexpr std::array<KeyName, 78> kKeyNames{{
    {0, "A"},  {11, "B"}, {8, "C"},  {2, "D"},  {14, "E"}, {3, "F"},  {5, "G"},  {4, "H"},
    {34, "I"}, {38, "J"}, {40, "K"}, {37, "L"}, {46, "M"}, {45, "N"}, {31, "O"}, {35, "P"},
    {12, "Q"}, {15, "R"}, {1, "S"},  {17, "T"}, {32, "U"}, {9, "V"},  {13, "W"}, {7, "X"},
    {16, "Y"}, {6, "Z"},
    {29, "0"}, {18, "1"}, {19, "2"}, {20, "3"}, {21, "4"}, {23, "5"}, {22, "6"}, {26, "7"},
    {28, "8"}, {25, "9"},
    {27, "-"}, {24, "="}, {33, "["}, {30, "]"}, {42, "\\"}, {41, ";"}, {39, "'"}, {43, ","},
    {47, "."}, {44, "/"}, {50, "`"},
    {49, "Space"}, {36, "Return"}, {48, "Tab"}, {51, "Backspace"}, {53, "Esc"},
    {123, "Left"}, {124, "Right"}, {125, "Down"}, {126, "Up"},
    {117, "Delete"}, {114, "Insert"}, {115, "Home"}, {119, "End"}, {116, "PageUp"}, {121, "PageDown"},
    {76, "KP_Enter"},
    {122, "F1"}, {120, "F2"}, {99, "F3"}, {118, "F4"}, {96, "F5"}, {97, "F6"}, {98, "F7"},
    {100, "F8"}, {101, "F9"}, {109, "F10"}, {103, "F11"}, {111, "F12"}, {105, "Print"},
}};

// Other spellings the parser accepts.
constexpr std::array<KeyName, 14> kKeyAliases{{
    {36, "Enter"}, {53, "Escape"}, {51, "BackSpace"}, {116, "PgUp"}, {121, "PgDown"}, {116, "Page_Up"},
    {121, "Page_Down"}, {117, "Del"}, {105, "PrintScreen"}, {105, "PrtSc"}, {27, "minus"}, {24, "equal"},
    {43, "comma"}, {47, "period"},
}};

struct ModifierName {
    std::uint64_t bit;
    std::string_view name;
};
constexpr std::array<ModifierName, 10> kModifierNames{{
    {D::kCommand, "Ctrl"}, {D::kCommand, "Control"}, {D::kControl, "Super"}, {D::kControl, "Win"},
    {D::kControl, "Meta"}, {D::kControl, "Logo"}, {D::kOption, "Alt"}, {D::kOption, "Option"},
    {D::kShift, "Shift"}, {D::kCommand, "Ctl"},
}};

constexpr std::uint64_t kCtrl = D::kCommand, kSuper = D::kControl, kAlt = D::kOption, kShift = D::kShift;

constexpr ReservedHotkey kReserved[] = {
    {{49, kCtrl}, "system"},                // Ctrl+Space
    {{48, kCtrl}, "system"},                // Ctrl+Tab
    {{49, kSuper | kAlt}, "system"},        // Super+Alt+Space
    {{48, kAlt}, "desktop"},                // Alt+Tab
    {{48, kAlt | kShift}, "desktop"},       // Alt+Shift+Tab
    {{50, kAlt}, "desktop"},                // Alt+` (windows of one application)
    {{118, kAlt}, "desktop"},               // Alt+F4
    {{120, kAlt}, "desktop"},               // Alt+F2 (run a command)
    {{103, kAlt}, "desktop"},               // Alt+F7 (move)
    {{98, kAlt}, "desktop"},                // Alt+F8 (resize)
    {{49, kAlt}, "desktop"},                // Alt+Space (window menu)
    {{37, kSuper}, "desktop"},              // Super+L (lock)
    {{37, kCtrl | kAlt}, "desktop"},        // Ctrl+Alt+L (lock)
    {{2, kSuper}, "desktop"},               // Super+D (show desktop)
    {{48, kSuper}, "desktop"},              // Super+Tab
    {{49, kSuper}, "desktop"},              // Super+Space (input source)
    {{17, kCtrl | kAlt}, "desktop"},        // Ctrl+Alt+T (terminal)
    {{117, kCtrl | kAlt}, "desktop"},       // Ctrl+Alt+Delete
    {{51, kCtrl | kAlt}, "desktop"},        // Ctrl+Alt+Backspace
    {{123, kCtrl | kAlt}, "desktop"},       // Ctrl+Alt+Left (workspace)
    {{124, kCtrl | kAlt}, "desktop"},       // Ctrl+Alt+Right (workspace)
    {{125, kCtrl | kAlt}, "desktop"},       // Ctrl+Alt+Down (workspace)
    {{126, kCtrl | kAlt}, "desktop"},       // Ctrl+Alt+Up (workspace)
    {{105, kShift}, "desktop"},             // Shift+Print (screenshot of an area)
    {{105, kAlt}, "desktop"},               // Alt+Print (screenshot of a window)
    {{105, kCtrl}, "desktop"},              // Ctrl+Print (screenshot to the clipboard)
};

bool equalNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

std::string_view trim(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
    return text;
}

std::optional<std::uint16_t> keyCodeFor(std::string_view word) {
    for (const auto& key : kKeyNames)
        if (equalNoCase(key.name, word)) return key.keyCode;
    for (const auto& key : kKeyAliases)
        if (equalNoCase(key.name, word)) return key.keyCode;
    return std::nullopt;
}

}  // namespace

std::string linuxHotkeyName(const HotkeyDescriptor& hotkey) {
    std::string text;
    if (hotkey.modifiers & kCtrl) text += "Ctrl+";
    if (hotkey.modifiers & kSuper) text += "Super+";
    if (hotkey.modifiers & kAlt) text += "Alt+";
    if (hotkey.modifiers & kShift) text += "Shift+";
    for (const auto& key : kKeyNames)
        if (key.keyCode == hotkey.keyCode) return text + std::string(key.name);
    return text + "(" + std::to_string(hotkey.keyCode) + ")";
}

std::variant<HotkeyDescriptor, HotkeyParseError> parseLinuxHotkeyName(std::string_view text) {
    text = trim(text);
    if (text.empty()) return HotkeyParseError{"empty hotkey name"};
    // Split on '+', but a trailing "++" names no key here: the plus key is Shift+=.
    std::vector<std::string_view> words;
    std::size_t start = 0;
    while (true) {
        const auto plus = text.find('+', start);
        words.push_back(trim(text.substr(start, plus == std::string_view::npos ? std::string_view::npos : plus - start)));
        if (plus == std::string_view::npos) break;
        start = plus + 1;
    }
    HotkeyDescriptor hotkey;
    std::optional<std::uint16_t> key;
    for (const auto word : words) {
        if (word.empty()) return HotkeyParseError{"empty part in \"" + std::string(text) + "\""};
        const auto modifier = std::find_if(kModifierNames.begin(), kModifierNames.end(),
                                           [&](const ModifierName& m) { return equalNoCase(m.name, word); });
        if (modifier != kModifierNames.end()) {
            hotkey.modifiers |= modifier->bit;
            continue;
        }
        const auto code = keyCodeFor(word);
        if (!code) return HotkeyParseError{"unknown key \"" + std::string(word) + "\""};
        if (key) return HotkeyParseError{"more than one key in \"" + std::string(text) + "\""};
        key = code;
    }
    if (!key) return HotkeyParseError{"no key in \"" + std::string(text) + "\", only modifiers"};
    hotkey.keyCode = *key;
    if (!hotkey.hasModifier())
        return HotkeyParseError{"\"" + std::string(text) + "\" has no modifier (Ctrl, Super, Alt or Shift)"};
    return hotkey;
}

std::span<const ReservedHotkey> reservedHotkeys() { return kReserved; }

bool isReservedHotkey(const HotkeyDescriptor& hotkey) {
    const auto bits = hotkey.modifiers & D::kModifierMask;
    return std::any_of(std::begin(kReserved), std::end(kReserved), [&](const ReservedHotkey& r) {
        return r.hotkey.keyCode == hotkey.keyCode && r.hotkey.modifiers == bits;
    });
}

}  // namespace orvantis
