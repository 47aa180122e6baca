#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sim/accessibility.h"
#include "platform/sim/key_output.h"
#include "platform/sim/pasteboard.h"
#include "platform/sim/text_field.h"
#include "platform/sim/virtual_main_loop.h"

#include "platform/main_loop.h"

namespace orvantis::sim {

/// The simulated desktop that whole-system tests run against. It owns the virtual main loop
/// and clock, the pasteboard, the accessibility layer, the synthetic key output, and the
/// text fields of the simulated applications, one of which may have the focus. Tests act as
/// the user through type() and press(); the program acts through the platform services.
/// Main thread only.
class Desktop final : private KeySink {
public:
    static constexpr std::string_view kDefaultApplication = "org.example.editor";
    static constexpr std::string_view kDefaultFieldName = "text";

    Desktop();
    ~Desktop() override;
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    VirtualMainLoop& loop() { return loop_; }
    Pasteboard& pasteboard() { return pasteboard_; }
    Accessibility& accessibility() { return accessibility_; }
    KeyOutput& keyOutput() { return keyOutput_; }

    // Fields and focus.
    /// Adds a field, or replaces the field of that name (the old one and its elements are
    /// gone; if it had the focus, the new one has it). The caret stands at the end.
    TextField& addTextField(std::string name, std::string_view text = {},
                            std::string application = std::string(kDefaultApplication));
    /// The field of that name, or nullptr.
    TextField* textField(std::string_view name);
    /// Removes the field of that name; the focus goes with it.
    void removeTextField(std::string_view name);
    /// Puts a fresh default field holding `initialText`, caret at the end, in the focus.
    TextField& focusTextField(std::string_view initialText = {});
    /// Gives the focus to `field`, which must belong to this desktop.
    void focus(TextField& field);
    /// Gives the focus to something that is not a text field (a button, a list) in `application`.
    void focusNonTextElement(std::string application = std::string(kDefaultApplication));
    /// Nothing has the focus.
    void clearFocus();
    /// The focused text field, or nullptr.
    TextField* focusedField() const { return focusedField_; }
    /// The application that has the focus; empty when nothing has it.
    const std::string& focusedApplication() const { return focusedApplication_; }
    /// The text of the focused field; empty when no text field has the focus.
    std::string focusedText() const;

    // The user.
    /// The user types `utf8`, one grapheme cluster after the other, into the focused field.
    void type(std::string_view utf8);
    /// The user presses a key with `flags`, plus the modifiers held with holdModifiers().
    void press(std::uint16_t code, std::uint64_t flags = 0);
    /// Modifiers the user physically holds from now on. They add to the user's own presses;
    /// the program's synthetic keys carry exactly their own flags.
    void holdModifiers(std::uint64_t flags) { heldModifiers_ = flags & platform::key_flags::kModifierMask; }
    std::uint64_t heldModifiers() const { return heldModifiers_; }

    /// Time an application takes to receive the program's synthetic keys and text. Zero (the
    /// default) delivers them at once; otherwise they arrive in order on the virtual loop,
    /// `latency` after they were sent. A latency set while keys are in flight may reorder them.
    void setSyntheticKeyLatency(platform::Duration latency) { latency_ = latency; }

private:
    // KeySink: the program's synthetic keys.
    void deliverKey(std::uint16_t virtualKey, std::uint64_t flags) override;
    void deliverText(std::string_view utf8) override;

    // Every key and every text, the user's and the program's, reaches the focus here.
    void routeKey(std::uint16_t virtualKey, std::uint64_t flags);
    void routeText(std::string_view utf8);
    void later(platform::Task task);

    VirtualMainLoop loop_;
    Pasteboard pasteboard_;
    std::vector<std::unique_ptr<TextField>> fields_;
    TextField* focusedField_ = nullptr;
    std::string focusedApplication_;
    Accessibility accessibility_;
    KeyOutput keyOutput_;
    std::uint64_t heldModifiers_ = 0;
    platform::Duration latency_{};
    std::vector<platform::TimerHandle> inFlight_;
};

}  // namespace orvantis::sim
