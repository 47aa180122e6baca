#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/key_output.h"

namespace orvantis {

/// A global hotkey: a virtual key code (a physical key position, whatever the layout) and the
/// modifier flag bits Shift 0x20000, Control 0x40000, Option 0x80000, Command 0x100000. These are
/// the codes and bits of the stored form, the same on every platform; the Linux backends map
/// them to their own keys (Command is Ctrl, Control is Super, Option is Alt).
struct HotkeyDescriptor {
    static constexpr std::uint64_t kShift = platform::key_flags::kShift;
    static constexpr std::uint64_t kControl = platform::key_flags::kControl;
    static constexpr std::uint64_t kOption = platform::key_flags::kOption;
    static constexpr std::uint64_t kCommand = platform::key_flags::kCommand;
    /// Every comparison of hotkeys looks at these bits only.
    static constexpr std::uint64_t kModifierMask = platform::key_flags::kModifierMask;

    std::uint16_t keyCode = 0;
    std::uint64_t modifiers = 0;

    bool operator==(const HotkeyDescriptor&) const = default;

    /// The same bits as event flags.
    std::uint64_t cgModifiers() const { return modifiers; }
    /// At least one of the four modifier bits is set.
    bool hasModifier() const { return (modifiers & kModifierMask) != 0; }
    /// "⌃⌥⇧⌘" in that order for the bits set, then the key's name: ↩, Space, ⌫, ⎋, the arrows,
    /// the US-layout character of the key in upper case, or the decimal code in parentheses.
    std::string displayString() const;
    /// The key's name alone, as displayString() ends.
    static std::string keyName(std::uint16_t keyCode);

    /// Compact JSON with exactly the keys `keyCode` and `modifiers`:
    /// {"keyCode":51,"modifiers":131072}.
    std::string toJson() const;
    /// Decodes the stored form. Nullopt for anything that is not a JSON object with an integer
    /// `keyCode` in 0...65535 and an integer `modifiers` in 0...2^64-1; other keys are ignored.
    static std::optional<HotkeyDescriptor> fromJson(std::string_view json);
};

}  // namespace orvantis
