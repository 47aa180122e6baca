#pragma once

#include <cstddef>
#include <vector>

#include "platform/main_loop.h"
#include "platform/permissions.h"

namespace orvantis::sim {

/// The simulated desktop permissions: two switches that tests flip, and a record of every
/// request and every settings page the program opened. Both permissions start missing.
/// Main thread only.
class Permissions final : public platform::Permissions {
public:
    /// One of the two permissions, also naming its settings page.
    enum class Kind { accessibility, inputMonitoring };

    Permissions() = default;
    Permissions(const Permissions&) = delete;
    Permissions& operator=(const Permissions&) = delete;

    // platform::Permissions
    bool hasAccessibility() const override { return accessibility_; }
    bool requestAccessibility() override;
    void openAccessibilitySettings() override { openedPanes_.push_back(Kind::accessibility); }
    bool hasInputMonitoring() const override { return inputMonitoring_; }
    bool requestInputMonitoring() override;
    bool hasInputMonitoringSettings() const override { return inputMonitoringSettings_; }
    void openInputMonitoringSettings() override { openedPanes_.push_back(Kind::inputMonitoring); }
    /// Whether the desktop has a page for watching keys; it has one unless a test says not.
    void setHasInputMonitoringSettings(bool has) { inputMonitoringSettings_ = has; }

    /// Grants or withdraws `kind` at once, as the user would in the desktop's settings.
    void set(Kind kind, bool granted);
    bool has(Kind kind) const;
    /// Grants `kind` `delay` from now on `loop`, which must outlive this object or the grant.
    /// A later call for the same kind replaces the pending grant.
    void grantLater(Kind kind, platform::MainLoop& loop, platform::Duration delay);
    /// From now on a request for `kind` grants it before answering (the user accepts the
    /// prompt at once; on Linux, switching the accessibility bus on). Off by default: a
    /// request changes nothing.
    void setGrantOnRequest(Kind kind, bool grants);

    /// Number of requests for `kind` so far, whatever their answer.
    std::size_t requestCount(Kind kind) const;
    /// Settings pages opened, oldest first.
    const std::vector<Kind>& openedPanes() const { return openedPanes_; }

private:
    bool& flag(Kind kind) { return kind == Kind::accessibility ? accessibility_ : inputMonitoring_; }

    bool accessibility_ = false;
    bool inputMonitoring_ = false;
    bool inputMonitoringSettings_ = true;
    bool grantAccessibilityOnRequest_ = false;
    bool grantInputMonitoringOnRequest_ = false;
    std::size_t accessibilityRequests_ = 0;
    std::size_t inputMonitoringRequests_ = 0;
    std::vector<Kind> openedPanes_;
    platform::TimerHandle accessibilityGrant_;
    platform::TimerHandle inputMonitoringGrant_;
};

}  // namespace orvantis::sim
