#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/login_item.h"

namespace orvantis::sim {

/// The simulated login item: a switch that tests flip as the user would in the desktop's
/// settings, a record of every call the program made ("status", "register", "unregister"),
/// and an optional failure for the changes. Starts disabled. Main thread only.
class LoginItem final : public platform::LoginItem {
public:
    bool isEnabled() const override;
    std::optional<std::string> registerItem() override;
    std::optional<std::string> unregisterItem() override;

    /// Sets the state behind the program's back (the user in the desktop's settings).
    void setEnabled(bool enabled) { enabled_ = enabled; }
    bool enabled() const { return enabled_; }
    /// From now on register and unregister fail with `description` and change nothing;
    /// nullopt lets them succeed again.
    void failWith(std::optional<std::string> description) { failure_ = std::move(description); }
    /// The calls made so far, in order.
    const std::vector<std::string>& calls() const { return calls_; }
    void clearCalls() { calls_.clear(); }

private:
    bool enabled_ = false;
    std::optional<std::string> failure_;
    mutable std::vector<std::string> calls_;
};

}  // namespace orvantis::sim
