#include "core/permissions/permission_polling.h"

#include <utility>

namespace orvantis {

PermissionPolling::PermissionPolling(GlobalEventMonitorProtocol& monitor, PermissionsManager& permissions,
                                     platform::MainLoop& loop, Banner banner)
    : monitor_(monitor), permissions_(permissions), loop_(loop), banner_(std::move(banner)) {}

void PermissionPolling::launch(const std::function<bool()>& showOnboardingIfNeeded) {
    startMonitor();
    const bool onboardingShowing = showOnboardingIfNeeded ? showOnboardingIfNeeded() : false;
    waitForPermissionIfNeeded(onboardingShowing);
}

void PermissionPolling::startMonitor() { monitor_.start(); }

void PermissionPolling::waitForPermissionIfNeeded(bool onboardingShowing) {
    if (monitor_.isRunning()) return;
    if (banner_.show) banner_.show();
    // The onboarding window walks the user to the desktop's prompts itself; a second prompt
    // on top of it would only confuse.
    if (!onboardingShowing) {
        requestTimer_ = loop_.postAfter(kRequestDelay, [this] { permissions_.requestMissing(); });
    }
    startPolling();
}

void PermissionPolling::startPolling() {
    pollTimer_.cancel();
    pollTimer_ = loop_.every(kPollInterval, [this] { poll(); });
}

void PermissionPolling::poll() {
    // Starting a running monitor would install a second tap; one installed since the last
    // tick (a settings save does that) counts as success all the same.
    if (!monitor_.isRunning()) monitor_.start();
    if (!monitor_.isRunning()) return;
    pollTimer_.cancel();
    if (banner_.clear) banner_.clear();
}

void PermissionPolling::cancelPolling() {
    pollTimer_.cancel();
    requestTimer_.cancel();
}

void PermissionPolling::stop() {
    cancelPolling();
    monitor_.stop();
}

}  // namespace orvantis
