#pragma once

#include <optional>
#include <string_view>

#include "platform/input_sources.h"

namespace orvantis::x11 {

/// What each physical key types without and with Shift in the XKB layout `layout` with
/// `variant` (empty for the basic one), compiled with libxkbcommon from the system's XKB data
/// (rules "evdev", model "pc105"), whatever the X server has loaded. Nullopt for a layout or
/// variant the data does not know. Compiled once per layout and kept; thread-safe.
std::optional<platform::KeyLayout> xkbKeyLayout(std::string_view layout, std::string_view variant);

}  // namespace orvantis::x11
