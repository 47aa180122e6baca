#pragma once

#include <string>
#include <vector>

#include "platform/input_sources.h"

namespace orvantis {

/// The record of the last retyping: the word before and after, the source that counted as
/// current and the source that was selected. A plain value, written and dropped by the switch
/// coordinator; no decision reads it.
struct SwitchOperation {
    /// The word as it stood before the retyping, one grapheme cluster per element.
    std::vector<std::string> originalChars;
    /// The word as it was retyped.
    std::vector<std::string> switchedChars;
    platform::InputSourceDescriptor fromLayout;
    platform::InputSourceDescriptor toLayout;
    /// True when written; set false before the record is dropped.
    bool isToggleable = true;

    /// The original word joined.
    std::string originalString() const;
    /// The retyped word joined.
    std::string switchedString() const;
};

}  // namespace orvantis
