#pragma once

namespace orvantis::language_libraries {

/// Whether the compact language detector's library is in this process's memory: it is loaded
/// at the first detection, never at launch. For tests and diagnostics.
bool detectorLoaded();
/// Whether GNU Aspell's library is in this process's memory: it is loaded when the first word
/// list is opened. For tests and diagnostics.
bool spellingLoaded();

}  // namespace orvantis::language_libraries
