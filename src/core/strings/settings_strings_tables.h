#pragma once

#include "core/strings/settings_strings.h"

// The two language tables behind SettingsStrings::make(). Each lives in a file of its own so
// that a translator works on one file; nothing outside this folder calls them directly.

namespace orvantis {

/// The English texts.
SettingsStrings englishSettingsStrings();

/// The Russian texts.
SettingsStrings russianSettingsStrings();

}  // namespace orvantis
