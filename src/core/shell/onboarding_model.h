#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/main_loop.h"

namespace orvantis {
class AppSettings;
}
namespace orvantis::platform {
class Permissions;
class UserNotifications;
}  // namespace orvantis::platform

namespace orvantis {

/// The state of one permission row of the onboarding window.
enum class PermissionStatus { unknown, granted, missing };

/// The logic of the first-run window: the live state of the three things Orvantis needs of the
/// desktop (the accessibility bus, the X input extension, a notification service), the actions
/// of its buttons, and the record that onboarding has been seen. The window only draws what this
/// answers and reports its buttons and its closing here.
///
/// The permissions are asked once at construction and then every second while the window is
/// open; the notification service is asked the same way, its answer arriving later. Borrows the
/// settings, the services and the loop, which must outlive it. Main thread only.
class OnboardingModel {
public:
    static constexpr platform::Duration kPollInterval = std::chrono::seconds(1);

    /// `permissions` and `notifications` may be null (a desktop without them): their rows then
    /// show as missing. `onClosed` runs once, when the window has closed.
    OnboardingModel(AppSettings& settings, platform::Permissions* permissions,
                    platform::UserNotifications* notifications, platform::MainLoop& loop,
                    std::function<void()> onClosed);
    ~OnboardingModel();
    OnboardingModel(const OnboardingModel&) = delete;
    OnboardingModel& operator=(const OnboardingModel&) = delete;

    PermissionStatus accessibility() const { return accessibility_; }
    PermissionStatus inputMonitoring() const { return inputMonitoring_; }
    PermissionStatus notificationService() const { return notifications_; }

    /// Called after every change of a status; the window redraws its rows. One at a time.
    void setOnChanged(std::function<void()> changed) { changed_ = std::move(changed); }

    /// The accessibility row's button: asks for the right (switching the bus on where the
    /// desktop allows it), then opens the desktop's accessibility settings.
    void openAccessibilitySettings();
    /// The keyboard row's button: asks for the right, then opens the keyboard settings page
    /// where the desktop has one.
    void openInputMonitoringSettings();
    /// Whether the keyboard row has a button: only where the desktop has a page to open (never
    /// on X11, where the input extension comes with the server and nobody can switch it on).
    bool hasInputMonitoringSettings() const;
    /// Skip and Get Started: onboarding counts as seen. The window closes itself afterwards
    /// and then reports windowClosed().
    void finish();
    /// The window has closed, by a button or its close box: onboarding counts as seen, the
    /// polling ends and `onClosed` runs. Later calls do nothing.
    void windowClosed();

    bool isPolling() const { return pollTimer_.isActive(); }
    bool isClosed() const { return closed_; }

    /// Asks every status now; the window's first drawing and each poll tick do this.
    void updatePermissionStatuses();

private:
    void setStatus(PermissionStatus& field, PermissionStatus value);

    AppSettings& settings_;
    platform::Permissions* permissions_;
    platform::UserNotifications* userNotifications_;
    platform::MainLoop& loop_;
    std::function<void()> onClosed_;
    std::function<void()> changed_;
    PermissionStatus accessibility_ = PermissionStatus::unknown;
    PermissionStatus inputMonitoring_ = PermissionStatus::unknown;
    PermissionStatus notifications_ = PermissionStatus::unknown;
    bool notificationCheckPending_ = false;
    bool closed_ = false;
    /// Dropped with the model, so a late answer of the notification service is ignored.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    platform::TimerHandle pollTimer_;
};

/// The onboarding window as the composition root sees it.
class OnboardingWindow {
public:
    virtual ~OnboardingWindow() = default;
    /// Shows the window, or raises it when it is already open, and gives it the focus.
    virtual void showAndActivate() = 0;
};

}  // namespace orvantis
