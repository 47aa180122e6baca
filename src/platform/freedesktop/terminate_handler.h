#pragma once

#include "core/log/app_logger.h"

namespace orvantis::freedesktop {

/// Makes std::terminate leave a `Crash` line in the log before the process ends: the type of
/// the exception in flight (demangled; "std::terminate" when there is none), its what() for a
/// std::exception, and the call stack at the point of termination. The line is on disk before
/// std::abort() ends the process. `logger` must live to the end of the process; a second
/// call replaces the logger. Signals are not handled.
void installTerminateHandler(AppLogger& logger);

}  // namespace orvantis::freedesktop
