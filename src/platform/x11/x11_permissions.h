#pragma once

#include <optional>
#include <string>

#include "platform/freedesktop/accessibility_bus.h"
#include "platform/permissions.h"

namespace orvantis::x11 {

/// The two permissions on an X11 desktop. "Accessibility" is the desktop accessibility bus
/// (AT-SPI), reachable and switched on: asking for it switches it on, and its settings are the
/// desktop's accessibility settings where a known settings program is installed. "Input
/// monitoring" is the X input extension of the display: nothing can grant it, so asking only
/// reports it, and there is no settings page for it. Every answer is read at the time of the
/// call. Main thread only.
class X11Permissions final : public platform::Permissions {
public:
    /// `displayName` is the display whose input extension counts ($DISPLAY when nullopt).
    explicit X11Permissions(std::optional<std::string> displayName = std::nullopt);

    bool hasAccessibility() const override;
    bool requestAccessibility() override;
    void openAccessibilitySettings() override;
    bool hasInputMonitoring() const override;
    bool requestInputMonitoring() override;
    /// The input extension is part of the X server: there is no page that could switch it on.
    bool hasInputMonitoringSettings() const override { return false; }
    void openInputMonitoringSettings() override;

private:
    std::optional<std::string> displayName_;
    /// Asked on every retry while the keyboard waits for the permission: one kept connection.
    mutable freedesktop::AccessibilityBusCheck accessibilityCheck_;
};

}  // namespace orvantis::x11
