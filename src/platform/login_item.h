#pragma once

#include <optional>
#include <string>

namespace orvantis::platform {

/// The desktop's record that starts Orvantis when the user logs in. Main thread only; every
/// call touches the disk and returns at once.
class LoginItem {
public:
    virtual ~LoginItem() = default;
    /// True when the desktop will start Orvantis at the next login. Anything that cannot be
    /// read answers false.
    virtual bool isEnabled() const = 0;
    /// Makes the desktop start Orvantis at login. Nullopt on success, else a description of
    /// what failed, for the log; a failure leaves the earlier state as it was.
    virtual std::optional<std::string> registerItem() = 0;
    /// Stops the desktop from starting Orvantis at login; nothing to remove is a success.
    /// Nullopt on success, else a description of what failed.
    virtual std::optional<std::string> unregisterItem() = 0;
};

}  // namespace orvantis::platform
