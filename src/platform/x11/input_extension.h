#pragma once

#include <string>

namespace orvantis::x11 {

/// True when the X server named `displayName` (empty: $DISPLAY) offers the X Input extension,
/// through which Orvantis watches raw key events. Opens and closes a connection of its own;
/// answers false, without crashing or waiting on a time-out, when no server can be reached.
/// Any thread.
bool hasInputExtension(const std::string& displayName = {});

}  // namespace orvantis::x11
