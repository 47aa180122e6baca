#pragma once

// How the command line tells apart the ways a call to the running program can fail. Internal to
// the freedesktop backend.

#include <string>
#include <string_view>

#include <systemd/sd-bus.h>

namespace orvantis::freedesktop {

/// Why sd_bus_call() to the running program returned an error.
struct RunningProgramCallFailure {
    enum class Kind {
        notRunning,     ///< no usable session bus, or nobody owns the program's name
        busFailed,      ///< the bus itself failed or the program did not answer in time; `text` says which
        programFailed,  ///< the program answered with an error; `text` is its message
    };
    Kind kind = Kind::notRunning;
    std::string text;
};

/// Classifies the failure of a call that returned `result` (below zero) and filled `error`.
/// When the program runs but has no such object, interface or method, `missingText` is the
/// text, if one is given; otherwise the error's own message is.
RunningProgramCallFailure classifyRunningProgramCallFailure(int result, const sd_bus_error* error,
                                                            std::string_view missingText = {});

}  // namespace orvantis::freedesktop
