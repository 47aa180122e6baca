#include "core/settings/hotkey_descriptor.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include <nlohmann/json.hpp>

namespace orvantis {
namespace {

// The US layout's character for each physical key that has one.
constexpr std::array<std::pair<std::uint16_t, char>, 47> kKeyCharacters{{
    {0, 'a'},  {1, 's'},  {2, 'd'},  {3, 'f'},  {4, 'h'},  {5, 'g'},  {6, 'z'},  {7, 'x'},
    {8, 'c'},  {9, 'v'},  {11, 'b'}, {12, 'q'}, {13, 'w'}, {14, 'e'}, {15, 'r'}, {16, 'y'},
    {17, 't'}, {18, '1'}, {19, '2'}, {20, '3'}, {21, '4'}, {22, '6'}, {23, '5'}, {24, '='},
    {25, '9'}, {26, '7'}, {27, '-'}, {28, '8'}, {29, '0'}, {30, ']'}, {31, 'o'}, {32, 'u'},
    {33, '['}, {34, 'i'}, {35, 'p'}, {37, 'l'}, {38, 'j'}, {39, '\''}, {40, 'k'}, {41, ';'},
    {42, '\\'}, {43, ','}, {44, '/'}, {45, 'n'}, {46, 'm'}, {47, '.'}, {50, '`'},
}};

std::optional<std::uint64_t> unsignedInteger(const nlohmann::json& value, std::uint64_t maximum) {
    if (value.is_number_unsigned()) {
        const auto v = value.get<std::uint64_t>();
        return v <= maximum ? std::optional(v) : std::nullopt;
    }
    if (value.is_number_integer()) {
        const auto v = value.get<std::int64_t>();
        return v >= 0 && static_cast<std::uint64_t>(v) <= maximum ? std::optional(static_cast<std::uint64_t>(v))
                                                                   : std::nullopt;
    }
    if (value.is_number_float()) {
        // JSON writers may put 51.0 for 51: a whole number in range is the same number.
        const double v = value.get<double>();
        if (std::isfinite(v) && v >= 0 && v == std::floor(v) && v < 18446744073709551616.0 &&
            v <= static_cast<double>(maximum))
            return static_cast<std::uint64_t>(v);
    }
    return std::nullopt;
}

// Reads the canonical stored form {"keyCode":N,"modifiers":M} without a JSON parser: hotkeys
// are read often and nearly always in exactly this form. Anything else takes the full parser.
std::optional<HotkeyDescriptor> fromCanonicalJson(std::string_view json) {
    constexpr std::string_view kHead = "{\"keyCode\":";
    constexpr std::string_view kMiddle = ",\"modifiers\":";
    if (json.substr(0, kHead.size()) != kHead || json.empty() || json.back() != '}') return std::nullopt;
    json.remove_prefix(kHead.size());
    json.remove_suffix(1);
    const auto middle = json.find(kMiddle);
    if (middle == std::string_view::npos) return std::nullopt;
    const std::string_view code = json.substr(0, middle);
    const std::string_view flags = json.substr(middle + kMiddle.size());
    auto digitsOnly = [](std::string_view text) {
        return !text.empty() && text.size() <= 20 && (text.size() == 1 || text.front() != '0') &&
               std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    };
    if (!digitsOnly(code) || !digitsOnly(flags)) return std::nullopt;
    std::uint64_t keyCode = 0, modifiers = 0;
    if (std::from_chars(code.data(), code.data() + code.size(), keyCode).ec != std::errc() || keyCode > 0xFFFF)
        return std::nullopt;
    if (std::from_chars(flags.data(), flags.data() + flags.size(), modifiers).ec != std::errc()) return std::nullopt;
    return HotkeyDescriptor{static_cast<std::uint16_t>(keyCode), modifiers};
}

}  // namespace

std::string HotkeyDescriptor::keyName(std::uint16_t keyCode) {
    switch (keyCode) {
        case 36: return "↩";
        case 49: return "Space";
        case 51: return "⌫";
        case 53: return "⎋";
        case 123: return "←";
        case 124: return "→";
        case 125: return "↓";
        case 126: return "↑";
        default: break;
    }
    for (const auto& [code, character] : kKeyCharacters) {
        if (code == keyCode) {
            const char upper = character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
            return std::string(1, upper);
        }
    }
    return "(" + std::to_string(keyCode) + ")";
}

std::string HotkeyDescriptor::displayString() const {
    std::string text;
    if (modifiers & kControl) text += "⌃";
    if (modifiers & kOption) text += "⌥";
    if (modifiers & kShift) text += "⇧";
    if (modifiers & kCommand) text += "⌘";
    return text + keyName(keyCode);
}

std::string HotkeyDescriptor::toJson() const {
    return "{\"keyCode\":" + std::to_string(keyCode) + ",\"modifiers\":" + std::to_string(modifiers) + "}";
}

std::optional<HotkeyDescriptor> HotkeyDescriptor::fromJson(std::string_view json) {
    if (auto canonical = fromCanonicalJson(json)) return canonical;
    const auto value = nlohmann::json::parse(json, nullptr, /*allow_exceptions=*/false);
    if (!value.is_object()) return std::nullopt;
    const auto keyCode = value.find("keyCode");
    const auto modifiers = value.find("modifiers");
    if (keyCode == value.end() || modifiers == value.end()) return std::nullopt;
    const auto code = unsignedInteger(*keyCode, 0xFFFF);
    const auto flags = unsignedInteger(*modifiers, UINT64_MAX);
    if (!code || !flags) return std::nullopt;
    return HotkeyDescriptor{static_cast<std::uint16_t>(*code), *flags};
}

}  // namespace orvantis
