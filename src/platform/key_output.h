#pragma once

#include <cstdint>
#include <string_view>

namespace orvantis::platform {

/// Event flag bits of a key press, the same bits that stored hotkeys use.
namespace key_flags {
inline constexpr std::uint64_t kShift = 0x20000;
inline constexpr std::uint64_t kControl = 0x40000;
inline constexpr std::uint64_t kOption = 0x80000;
inline constexpr std::uint64_t kCommand = 0x100000;
inline constexpr std::uint64_t kModifierMask = 0x1E0000;
}  // namespace key_flags

/// Virtual key codes of the keys the system itself presses. They name physical key
/// positions, whatever the active layout.
namespace key_code {
inline constexpr std::uint16_t kA = 0;
inline constexpr std::uint16_t kC = 8;
inline constexpr std::uint16_t kV = 9;
inline constexpr std::uint16_t kX = 7;
inline constexpr std::uint16_t kZ = 6;
inline constexpr std::uint16_t kReturn = 36;
inline constexpr std::uint16_t kTab = 48;
inline constexpr std::uint16_t kSpace = 49;
inline constexpr std::uint16_t kDelete = 51;  ///< backspace
inline constexpr std::uint16_t kEscape = 53;
inline constexpr std::uint16_t kForwardDelete = 117;
inline constexpr std::uint16_t kHelp = 114;  ///< Insert on PC keyboards
inline constexpr std::uint16_t kLeftArrow = 123;
inline constexpr std::uint16_t kRightArrow = 124;
inline constexpr std::uint16_t kDownArrow = 125;
inline constexpr std::uint16_t kUpArrow = 126;
}  // namespace key_code

/// Synthetic keystrokes into the focused application. Main thread in practice; safe on any.
/// Failures are silent: the keys are simply not delivered.
class KeyOutput {
public:
    virtual ~KeyOutput() = default;
    /// One press and release of `virtualKey` with exactly `flags` as modifiers, whatever the
    /// user physically holds.
    virtual void postKey(std::uint16_t virtualKey, std::uint64_t flags) = 0;
    /// Types `utf8` as Unicode key events, whatever the active layout.
    virtual void typeText(std::string_view utf8) = 0;

    /// The copy and paste shortcuts of the platform.
    virtual void copy() { postKey(key_code::kC, key_flags::kCommand); }
    virtual void paste() { postKey(key_code::kV, key_flags::kCommand); }
};

}  // namespace orvantis::platform
