#include "platform/freedesktop/running_program_call.h"

#include <cerrno>
#include <cstring>

namespace orvantis::freedesktop {

RunningProgramCallFailure classifyRunningProgramCallFailure(int result, const sd_bus_error* error,
                                                            std::string_view missingText) {
    using Kind = RunningProgramCallFailure::Kind;
    // Nobody owning the name means the program is not running.
    if (sd_bus_error_has_names(error, SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER))
        return {Kind::notRunning, {}};
    if (!sd_bus_error_is_set(error)) {
        // No usable bus at all (no daemon behind the address): nobody can own the name there.
        if (result == -ECONNREFUSED || result == -ENOENT || result == -ECONNRESET || result == -EACCES)
            return {Kind::notRunning, {}};
        if (result == -ETIMEDOUT) return {Kind::busFailed, "the running Orvantis did not answer in time"};
        return {Kind::busFailed, std::string("the session bus failed: ") + std::strerror(-result)};
    }
    if (!missingText.empty() &&
        sd_bus_error_has_names(error, SD_BUS_ERROR_UNKNOWN_INTERFACE, SD_BUS_ERROR_UNKNOWN_OBJECT,
                               SD_BUS_ERROR_UNKNOWN_METHOD))
        return {Kind::programFailed, std::string(missingText)};
    return {Kind::programFailed, error->message != nullptr ? error->message : error->name};
}

}  // namespace orvantis::freedesktop
