#pragma once

#include <cstdint>
#include <string_view>

#include "platform/key_output.h"
#include "platform/pasteboard.h"

namespace orvantis::app {

/// Synthetic keys for an X11 desktop, where copy and paste work through the selections rather
/// than one shortcut: Ctrl+C interrupts a terminal and Ctrl+V types a control character there.
/// Copying takes what is selected in any application (the PRIMARY selection, which X
/// applications set as the user selects) onto the clipboard; pasting puts the clipboard's text
/// into the selection as well and presses Shift+Insert, which pastes in terminals and in
/// toolkit applications alike. Every other key goes to `keys` as it is. Borrows all three,
/// which must outlive it. Main thread only.
class SelectionKeyOutput final : public platform::KeyOutput {
public:
    SelectionKeyOutput(platform::KeyOutput& keys, platform::Pasteboard& clipboard, platform::TextSelection& selection)
        : keys_(keys), pasteboard_(clipboard), selection_(selection) {}

    void postKey(std::uint16_t virtualKey, std::uint64_t flags) override { keys_.postKey(virtualKey, flags); }
    void typeText(std::string_view utf8) override { keys_.typeText(utf8); }
    /// With nothing selected the clipboard keeps what it holds.
    void copy() override;
    void paste() override;

private:
    platform::KeyOutput& keys_;
    platform::Pasteboard& pasteboard_;
    platform::TextSelection& selection_;
};

}  // namespace orvantis::app
