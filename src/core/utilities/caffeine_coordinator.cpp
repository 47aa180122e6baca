#include "core/utilities/caffeine_coordinator.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "core/log/app_logger.h"
#include "core/strings/settings_strings.h"

namespace orvantis {
namespace {

constexpr std::string_view kAssertionName = "Orvantis Caffeine";
constexpr int kMaximumMinutes = 1440;

}  // namespace

CaffeineCoordinator::CaffeineCoordinator(AppSettings& settings, Services services, GlobalEventMonitorProtocol* monitor,
                                         platform::MainLoop& loop, const platform::Clock& clock,
                                         const LogCategory& log)
    : settings_(settings), services_(services), loop_(loop), clock_(clock), log_(log),
      lastLidClose_(settings.caffeineLidClose()), lidAlwaysActive_(settings.caffeineLidCloseAlways()),
      lastLidAlways_(lidAlwaysActive_), lastGatingApps_(settings.caffeineActiveApps()),
      lastEnabled_(settings.caffeineEnabled()) {
    if (monitor != nullptr) hotkey_ = monitor->onCaffeineHotkey([this] { toggle("hotkey"); });
    defaultsObserver_ = settings_.store().onChange([this](const std::vector<std::string>&) {
        // The store tells on any thread that wrote; the work belongs to the main loop.
        loop_.post([alive = std::weak_ptr<bool>(alive_), this] {
            if (alive.lock()) defaultsChanged();
        });
    });
    applyState();
}

CaffeineCoordinator::~CaffeineCoordinator() = default;

bool CaffeineCoordinator::shouldHoldAssertion() const {
    if (!settings_.caffeineEnabled()) return false;
    if (isActive_) return true;
    const std::vector<std::string> apps = settings_.caffeineActiveApps();
    if (apps.empty()) return false;
    const std::optional<platform::ApplicationInfo> front =
        services_.applications != nullptr ? services_.applications->frontmostApplication() : std::nullopt;
    if (front && !front->bundleID.empty()) return std::find(apps.begin(), apps.end(), front->bundleID) != apps.end();
    // No frontmost application for a moment: neither grab nor drop.
    return assertionHeld_;
}

void CaffeineCoordinator::evaluateAssertion(std::string_view reason) {
    if (shouldHoldAssertion()) acquireAssertion(reason);
    else releaseAssertion(reason);
}

void CaffeineCoordinator::acquireAssertion(std::string_view reason) {
    if (assertionHeld_) return;
    const int result = services_.power.create(kAssertionName, assertionID_);
    if (result != 0) {
        log_.error("caffeine: power assertion create failed (" + std::to_string(result) + ")");
        return;
    }
    assertionHeld_ = true;
    stateChanged();
    log_.info("caffeine: lock acquired (" + std::string(reason) + ")");
}

void CaffeineCoordinator::releaseAssertion(std::string_view reason) {
    if (!assertionHeld_) return;
    const int result = services_.power.release(assertionID_);
    assertionID_ = 0;
    assertionHeld_ = false;
    stateChanged();
    if (result != 0) log_.warning("caffeine: power assertion release returned " + std::to_string(result));
    else log_.info("caffeine: lock released (" + std::string(reason) + ")");
}

void CaffeineCoordinator::updateAutomation() {
    if (settings_.caffeineEnabled() && !settings_.caffeineActiveApps().empty()) startAppActivationObserver();
    else stopAppActivationObserver();
    evaluateAssertion("automation");
}

void CaffeineCoordinator::startAppActivationObserver() {
    if (appActivationObserver_ || services_.watch == nullptr) return;
    appActivationObserver_ = services_.watch->onActivated([this] { evaluateAssertion("app-switch"); });
}

void CaffeineCoordinator::stopAppActivationObserver() { appActivationObserver_.reset(); }

void CaffeineCoordinator::start(std::optional<int> durationMinutesOverride, std::string_view reason) {
    if (isActive_) return;
    isActive_ = true;
    const int minutes = durationMinutesOverride
                            ? *durationMinutesOverride
                            : std::clamp(settings_.caffeineDefaultDurationMinutes(), 0, kMaximumMinutes);
    if (minutes < 1) deadline_.reset();
    else scheduleAutoStop(minutes);
    updateAutomation();
    if (assertionHeld_) {
        stateChanged();
        log_.info("caffeine: armed globally via " + std::string(reason) + ", duration=" +
                  (minutes > 0 ? std::to_string(minutes) + " min" : std::string("indefinite")));
        return;
    }
    // The assertion could not be had: no arm is left behind.
    isActive_ = false;
    deadline_.reset();
    cancelAutoStop();
    updateAutomation();
    log_.error("caffeine: arming aborted — power assertion could not be acquired");
}

void CaffeineCoordinator::scheduleAutoStop(int minutes) {
    cancelAutoStop();
    deadline_ = clock_.wallNow() + std::chrono::minutes(minutes);
    autoStopWork_ = loop_.postAfter(std::chrono::minutes(minutes), [this] { stop("auto-timer"); });
}

void CaffeineCoordinator::cancelAutoStop() { autoStopWork_.cancel(); }

void CaffeineCoordinator::stop(std::string_view reason) {
    if (!isActive_) return;
    isActive_ = false;
    deadline_.reset();
    cancelAutoStop();
    // A listed application in front keeps the assertion.
    updateAutomation();
    stateChanged();
    log_.info("caffeine: global arm off via " + std::string(reason));
}

void CaffeineCoordinator::toggle(std::string_view reason) {
    if (!settings_.caffeineEnabled()) return;
    if (isActive_) stop(reason);
    else start(std::nullopt, reason);
}

void CaffeineCoordinator::applyState() {
    ++applyCount_;
    if (!settings_.caffeineEnabled()) {
        isActive_ = false;
        deadline_.reset();
        cancelAutoStop();
    }
    updateAutomation();
    updateLidSleepAutomation();
    stateChanged();
}

void CaffeineCoordinator::defaultsChanged() {
    std::vector<std::string> apps = settings_.caffeineActiveApps();
    const bool enabled = settings_.caffeineEnabled();
    const bool lidClose = settings_.caffeineLidClose();
    const bool lidAlways = settings_.caffeineLidCloseAlways();
    if (apps == lastGatingApps_ && enabled == lastEnabled_ && lidClose == lastLidClose_ && lidAlways == lastLidAlways_)
        return;
    lastGatingApps_ = std::move(apps);
    lastEnabled_ = enabled;
    lastLidClose_ = lidClose;
    if (lidAlways != lastLidAlways_) {
        lastLidAlways_ = lidAlways;
        lidAlwaysActive_ = lidAlways;
    }
    applyState();
}

void CaffeineCoordinator::stateChanged() {
    if (onStateChanged_) onStateChanged_();
}

// Lid-close sleep.

bool CaffeineCoordinator::lidCloseArmed() const {
    return settings_.caffeineEnabled() && settings_.caffeineLidClose() && !settings_.caffeineActiveApps().empty();
}

bool CaffeineCoordinator::lidAlwaysHolding() const {
    return settings_.caffeineEnabled() && settings_.caffeineLidCloseAlways() && lidAlwaysActive_;
}

bool CaffeineCoordinator::anyGatingAppRunning() const {
    const std::vector<std::string> list = settings_.caffeineActiveApps();
    const std::unordered_set<std::string> apps(list.begin(), list.end());
    if (apps.empty() || services_.watch == nullptr) return false;
    for (const auto& app : services_.watch->runningApplications()) {
        if (app.bundleID.empty()) continue;
        if (apps.contains(app.bundleID)) return true;
    }
    return false;
}

void CaffeineCoordinator::evaluateLidSleep(std::string_view reason) {
    const bool want = (lidCloseArmed() && anyGatingAppRunning()) || lidAlwaysHolding();
    if (want == lidSleepApplied_) return;
    if (services_.lidSleep == nullptr || !services_.lidSleep->setDisableSleep(want)) return;
    lidSleepApplied_ = want;
    log_.info("caffeine: lid-close disablesleep=" + std::string(want ? "1" : "0") + " (" + std::string(reason) + ")");
}

void CaffeineCoordinator::updateLidSleepAutomation() {
    if (lidCloseArmed()) startAppRunningObservers();
    else stopAppRunningObservers();
    evaluateLidSleep("automation");
}

void CaffeineCoordinator::startAppRunningObservers() {
    if (services_.watch == nullptr) return;
    if (!appLaunchObserver_) appLaunchObserver_ = services_.watch->onLaunched([this] { evaluateLidSleep("app-launch"); });
    if (!appTerminateObserver_)
        appTerminateObserver_ = services_.watch->onTerminated([this] { evaluateLidSleep("app-terminate"); });
}

void CaffeineCoordinator::stopAppRunningObservers() {
    appLaunchObserver_.reset();
    appTerminateObserver_.reset();
}

void CaffeineCoordinator::toggleLidAlwaysFromMenu() {
    if (!settings_.caffeineEnabled() || !settings_.caffeineLidCloseAlways()) return;
    lidAlwaysActive_ = !lidAlwaysActive_;
    evaluateLidSleep("menu-lid-always");
    stateChanged();
    log_.info("caffeine: unconditional lid-close " + std::string(lidAlwaysActive_ ? "armed" : "disarmed") +
              " via menu");
}

bool CaffeineCoordinator::provisionLidCloseInteractively() {
    if (lidConsent_ && !lidConsent_()) {
        log_.info("caffeine: lid-close explanation declined");
        return false;
    }
    return services_.lidSleep != nullptr && services_.lidSleep->provision();
}

bool CaffeineCoordinator::deprovisionLidClose() {
    if (services_.lidSleep == nullptr) return false;
    // While the permission still stands.
    (void)services_.lidSleep->setDisableSleep(false);
    lidSleepApplied_ = false;
    if (services_.lidSleep->deprovision()) {
        const SettingsStrings strings = SettingsStrings::make(settings_.settingsLanguage());
        if (postLidNotification_) postLidNotification_(strings.caffeineLidRevokedTitle, strings.caffeineLidRevokedBody);
        return true;
    }
    log_.info("caffeine: lid-close removal cancelled — rule left in place");
    return false;
}

void CaffeineCoordinator::prepareForTermination() {
    if (!lidSleepApplied_ || services_.lidSleep == nullptr) return;
    (void)services_.lidSleep->setDisableSleep(false);
    lidSleepApplied_ = false;
}

}  // namespace orvantis
