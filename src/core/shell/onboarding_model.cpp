#include "core/shell/onboarding_model.h"

#include <utility>

#include "core/settings/app_settings.h"
#include "platform/permissions.h"
#include "platform/user_notifications.h"

namespace orvantis {

OnboardingModel::OnboardingModel(AppSettings& settings, platform::Permissions* permissions,
                                 platform::UserNotifications* notifications, platform::MainLoop& loop,
                                 std::function<void()> onClosed)
    : settings_(settings), permissions_(permissions), userNotifications_(notifications), loop_(loop),
      onClosed_(std::move(onClosed)) {
    updatePermissionStatuses();
    pollTimer_ = loop_.every(kPollInterval, [this] { updatePermissionStatuses(); });
}

OnboardingModel::~OnboardingModel() { *alive_ = false; }

void OnboardingModel::setStatus(PermissionStatus& field, PermissionStatus value) {
    if (field == value) return;
    field = value;
    if (changed_) changed_();
}

void OnboardingModel::updatePermissionStatuses() {
    const auto status = [](bool granted) { return granted ? PermissionStatus::granted : PermissionStatus::missing; };
    setStatus(accessibility_, status(permissions_ != nullptr && permissions_->hasAccessibility()));
    setStatus(inputMonitoring_, status(permissions_ != nullptr && permissions_->hasInputMonitoring()));
    if (userNotifications_ == nullptr) {
        setStatus(notifications_, PermissionStatus::missing);
        return;
    }
    if (notificationCheckPending_) return;
    notificationCheckPending_ = true;
    userNotifications_->checkAuthorization([this, alive = std::weak_ptr<bool>(alive_)](bool found) {
        if (alive.expired()) return;
        notificationCheckPending_ = false;
        if (!closed_) setStatus(notifications_, found ? PermissionStatus::granted : PermissionStatus::missing);
    });
}

void OnboardingModel::openAccessibilitySettings() {
    if (permissions_ == nullptr) return;
    // The request first, so that the desktop switches the bus on where it can; then the page.
    permissions_->requestAccessibility();
    permissions_->openAccessibilitySettings();
    updatePermissionStatuses();
}

void OnboardingModel::openInputMonitoringSettings() {
    if (permissions_ == nullptr) return;
    permissions_->requestInputMonitoring();
    permissions_->openInputMonitoringSettings();
    updatePermissionStatuses();
}

bool OnboardingModel::hasInputMonitoringSettings() const {
    return permissions_ != nullptr && permissions_->hasInputMonitoringSettings();
}

void OnboardingModel::finish() { settings_.setHasCompletedOnboarding(true); }

void OnboardingModel::windowClosed() {
    if (closed_) return;
    closed_ = true;
    // Closing by the close box counts as seen too.
    settings_.setHasCompletedOnboarding(true);
    pollTimer_.cancel();
    if (onClosed_) onClosed_();
}

}  // namespace orvantis
