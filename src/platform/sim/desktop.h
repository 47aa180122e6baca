#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sim/accessibility.h"
#include "platform/sim/event_tap.h"
#include "platform/sim/input_sources.h"
#include "platform/sim/key_output.h"
#include "platform/sim/pasteboard.h"
#include "platform/sim/text_field.h"
#include "platform/sim/virtual_main_loop.h"

#include "platform/main_loop.h"

namespace orvantis::sim {

/// The simulated desktop that whole-system tests run against. It owns the virtual main loop
/// and clock, the pasteboard, the accessibility layer, the synthetic key output, the
/// session-wide event tap, the keyboard input sources, and the text fields of the simulated
/// applications, one of which may have the focus. Tests act as the user through type() and
/// press(); the program acts through the platform services.
///
/// Every key, the user's and the program's, passes the event tap first, as the desktop's input
/// stack does: the tap's handler sees it, and a key that the handler swallows and that was
/// grabbed never reaches the field. What a physical key types is decided by the current input
/// source's key table; without a current source or table a US keyboard is assumed. The
/// program's synthetic keys are seen by the tap as well, so whoever listens there has to keep
/// them apart from the user's typing itself. Main thread only.
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
    /// The tap every key passes before it reaches the focus. Not running at first: keys then
    /// go straight through.
    EventTap& eventTap() { return eventTap_; }
    /// The keyboard input sources; the current one decides what the user's key presses type.
    /// Empty at first.
    InputSources& inputSources() { return inputSources_; }

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
    /// Each cluster is one key down whose text is the cluster itself, on the key (and Shift
    /// level) that types it in the current source, else on a US keyboard, else on key 0.
    void type(std::string_view utf8);
    /// The user presses a key with `flags`, plus the modifiers held with holdModifiers(). The
    /// key types what the current input source puts on it.
    void press(std::uint16_t code, std::uint64_t flags = 0);
    /// The user presses, one after the other, the keys that type `usKeys` on a US keyboard,
    /// with Shift where needed: in the current source they may type something else entirely
    /// ("ghbdtn" on a Russian layout types "привет").
    void pressKeysOf(std::string_view usKeys);
    /// What a press of `code` with `flags` types in the current input source; empty for a key
    /// without text or with Command, Control or Option held.
    std::string charactersFor(std::uint16_t code, std::uint64_t flags) const;
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

    // Every key, the user's and the program's, passes the tap on its way to the focus here.
    void routeKey(std::uint16_t virtualKey, std::uint64_t flags);
    // Text that has passed the tap goes into the focused field here.
    void routeText(std::string_view utf8);
    // One key down and up through the tap; answers whether the key down reaches the focus.
    bool throughTap(const platform::KeyEvent& keyDown);
    void later(platform::Task task);

    VirtualMainLoop loop_;
    Pasteboard pasteboard_;
    std::vector<std::unique_ptr<TextField>> fields_;
    TextField* focusedField_ = nullptr;
    std::string focusedApplication_;
    Accessibility accessibility_;
    KeyOutput keyOutput_;
    EventTap eventTap_;
    InputSources inputSources_;
    std::uint64_t heldModifiers_ = 0;
    platform::Duration latency_{};
    std::vector<platform::TimerHandle> inFlight_;
};

}  // namespace orvantis::sim
