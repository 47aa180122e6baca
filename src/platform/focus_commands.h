#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orvantis::platform {

/// The user-made commands that switch the desktop's do-not-disturb mode, run by name
/// ("Orvantis Focus On", "Orvantis Focus Off"). The program only lists and runs them.
class FocusCommands {
public:
    virtual ~FocusCommands() = default;
    /// One name a line, as the tool that lists them prints them; nullopt when the listing
    /// fails. Fast enough for the main thread.
    virtual std::optional<std::string> list() = 0;
    /// Starts the command `name` and returns at once; it runs off the main thread, and one
    /// that fails or hangs is logged (a hanging one is ended after a time-out).
    virtual void run(const std::string& name) = 0;
};

}  // namespace orvantis::platform
