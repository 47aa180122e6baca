#pragma once

#include "platform/permissions.h"

namespace orvantis {

/// Answers whether the two desktop permissions are granted, asks for the missing ones and opens
/// the settings page of the first one missing. Keeps no state: every question goes to the
/// desktop when it is asked. Borrows the permissions service, which must outlive it.
/// Main thread only.
class PermissionsManager {
public:
    explicit PermissionsManager(platform::Permissions& permissions) : permissions_(permissions) {}

    bool hasAccessibility() const { return permissions_.hasAccessibility(); }
    /// Prompts when missing; answers whether it is granted afterwards.
    bool requestAccessibility() { return permissions_.requestAccessibility(); }
    void openAccessibilitySettings() { permissions_.openAccessibilitySettings(); }
    bool hasInputMonitoring() const { return permissions_.hasInputMonitoring(); }
    /// Asks when missing; answers whether it is granted afterwards.
    bool requestInputMonitoring() { return permissions_.requestInputMonitoring(); }
    void openInputMonitoringSettings() { permissions_.openInputMonitoringSettings(); }

    /// Both permissions. False when either is missing, even though the keyboard tap may work
    /// without the accessibility right.
    bool hasAllRequired() const { return hasAccessibility() && hasInputMonitoring(); }
    /// Asks for each missing permission, accessibility first, and does not look at the
    /// answers: the desktop shows its own prompt, and the outcome is noticed only when the
    /// keyboard tap can be installed. With both granted nothing is asked.
    void requestMissing();
    /// Opens the accessibility page when that right is missing, otherwise the input monitoring
    /// page when that one is, otherwise nothing: one call opens at most one page.
    void openSettingsForMissing();

private:
    platform::Permissions& permissions_;
};

}  // namespace orvantis
