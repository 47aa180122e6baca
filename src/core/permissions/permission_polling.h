#pragma once

#include <chrono>
#include <functional>

#include "core/events/global_event_monitor_protocol.h"
#include "core/permissions/permissions_manager.h"

#include "platform/main_loop.h"

namespace orvantis {

/// The part of launch that installs the keyboard tap and, when the desktop refuses it, waits
/// for the permission: it shows the permission banner, asks for the missing permissions a
/// second after launch (unless the onboarding window is there to lead the user to them), and
/// retries the tap every two seconds until it is installed. Only success ends the waiting, or
/// the end of the program; the permission state itself is never consulted, because an
/// installed tap is the proof.
///
/// Borrows the monitor, the permissions manager and the main loop, which must outlive it. Its
/// timers die with it, so no tick ever reaches a destroyed object. Main thread only.
class PermissionPolling {
public:
    /// Delay between launch and the request for the missing permissions.
    static constexpr platform::Duration kRequestDelay = std::chrono::seconds(1);
    /// Interval of the tap retries.
    static constexpr platform::Duration kPollInterval = std::chrono::seconds(2);

    /// The permission banner of the status item. Either closure may be empty.
    struct Banner {
        std::function<void()> show;   ///< the tap could not be installed
        std::function<void()> clear;  ///< a retry installed it
    };

    PermissionPolling(GlobalEventMonitorProtocol& monitor, PermissionsManager& permissions,
                      platform::MainLoop& loop, Banner banner);
    PermissionPolling(const PermissionPolling&) = delete;
    PermissionPolling& operator=(const PermissionPolling&) = delete;

    /// The launch steps in their order: startMonitor(), then `showOnboardingIfNeeded` (the
    /// onboarding window is showing when it answers true; an empty function means it is not),
    /// then waitForPermissionIfNeeded() with that answer.
    void launch(const std::function<bool()>& showOnboardingIfNeeded = {});
    /// Installs the keyboard tap. A refusal leaves the monitor not running, silently.
    void startMonitor();
    /// When the monitor is not running: shows the banner, schedules the request for the missing
    /// permissions kRequestDelay from now unless `onboardingShowing`, and starts polling.
    /// Otherwise does nothing and creates no timer.
    void waitForPermissionIfNeeded(bool onboardingShowing);
    /// Retries the tap every kPollInterval, first one interval from now, replacing any polling
    /// under way. A retry that finds the monitor running (installed by the retry or by anyone
    /// else since) ends the polling and clears the banner.
    void startPolling();

    /// Ends the polling and drops a request not yet made; the monitor keeps its state. For an
    /// end sequence that stops other things before the monitor.
    void cancelPolling();
    /// The end of the program: cancelPolling(), then stops the monitor.
    void stop();

    /// True while the tap is retried.
    bool isPolling() const { return pollTimer_.isActive(); }
    /// True while the request for the missing permissions is scheduled and not yet made.
    bool isRequestPending() const { return requestTimer_.isActive(); }

private:
    void poll();

    GlobalEventMonitorProtocol& monitor_;
    PermissionsManager& permissions_;
    platform::MainLoop& loop_;
    Banner banner_;
    platform::TimerHandle requestTimer_;
    platform::TimerHandle pollTimer_;
};

}  // namespace orvantis
