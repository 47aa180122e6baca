#pragma once

#include <cstdint>

#include "platform/key_output.h"

namespace orvantis {

/// Presses keys in the focused application: how Orvantis copies a selection, pastes a result
/// and deletes what was typed. Each press carries exactly the flags given, whatever modifiers
/// the user physically holds. Keys are not marked: a caller that must not react to its own
/// keys guards itself. Failures are silent (without the accessibility right the desktop drops
/// the keys). Borrows the key output, which must outlive it. Main thread in practice.
class SyntheticKeystrokes {
public:
    explicit SyntheticKeystrokes(platform::KeyOutput& output) : output_(output) {}

    /// One press and release of `virtualKey` with exactly `flags`.
    void postKey(std::uint16_t virtualKey, std::uint64_t flags) { output_.postKey(virtualKey, flags); }
    /// `virtualKey` with Command alone (Ctrl on Linux: the backend maps the bit).
    void postCmdKey(std::uint16_t virtualKey) { postKey(virtualKey, platform::key_flags::kCommand); }
    /// Command-C.
    void copy() { postCmdKey(platform::key_code::kC); }
    /// Command-V.
    void paste() { postCmdKey(platform::key_code::kV); }

private:
    platform::KeyOutput& output_;
};

}  // namespace orvantis
