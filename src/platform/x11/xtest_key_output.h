#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/key_output.h"

namespace orvantis::x11 {

/// Synthetic keystrokes through the XTest extension, into whatever window has the focus.
///
/// Modifier bits map to keys the cross-platform way: Command presses Ctrl, Control presses
/// Super, Option presses Alt, Shift presses Shift. An injection first waits, briefly, until the
/// user has let go of every key (the hotkey's keys are usually still down); keys held beyond
/// that are released around the injection and the modifiers among them pressed again after
/// it, so they never change what is typed. Text goes through keys of the keymap: in the current group where the character is
/// there, else in the group that has it (locked for the key press and restored after), else
/// through a spare keycode bound to the character for the press. Holds a display connection of
/// its own. Failures are silent: the keys are simply not delivered. Main thread only; an
/// injection blocks for as long as keys are held, at most 0.4 s.
class XTestKeyOutput final : public platform::KeyOutput {
public:
    /// Connects to `displayName` ($DISPLAY when null). Null without a display or without XTest.
    static std::unique_ptr<XTestKeyOutput> open(const char* displayName = nullptr);
    ~XTestKeyOutput() override;
    XTestKeyOutput(const XTestKeyOutput&) = delete;
    XTestKeyOutput& operator=(const XTestKeyOutput&) = delete;

    void postKey(std::uint16_t virtualKey, std::uint64_t flags) override;
    void typeText(std::string_view utf8) override;

    /// True while this object is injecting, so that a key listener on the same display can
    /// tell its own events from the user's.
    bool injecting() const { return injecting_; }

    struct Connection;  ///< the display connection; opaque outside the backend

private:
    explicit XTestKeyOutput(std::unique_ptr<Connection> connection);
    void typeCodePoint(char32_t codePoint);

    std::unique_ptr<Connection> connection_;
    bool injecting_ = false;
};

}  // namespace orvantis::x11
