#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/events/global_event_monitor_protocol.h"
#include "core/settings/app_settings.h"
#include "platform/applications.h"
#include "platform/clock.h"
#include "platform/main_loop.h"
#include "platform/subscription.h"
#include "platform/system_utilities.h"

namespace orvantis {

class LogCategory;

/// Keeps the computer and its display awake. Two sources ask for it: a manual arm (hotkey,
/// menu, command line) with an optional time limit, and the list of applications that hold
/// the computer awake while one of them is frontmost. Both collapse into shouldHoldAssertion(),
/// and exactly one power assertion is held or released accordingly. The same object drives
/// lid-close sleep: the app-gated mode (an application of the list runs) and the unconditional
/// mode switched from the menu.
///
/// Watches the settings store and reacts only when the app list, the master switch or one of
/// the two lid switches changed. Borrows every collaborator, all of which outlive it;
/// `applications`, `watch` and `lidSleep` may be null (the desktop lacks them: the app list
/// then never knows a frontmost application, and the lid modes do nothing). Main thread only.
class CaffeineCoordinator {
public:
    struct Services {
        platform::PowerAssertions& power;
        const platform::Applications* applications = nullptr;
        platform::ApplicationWatch* watch = nullptr;
        platform::LidSleepControl* lidSleep = nullptr;
    };

    /// Reads the remembered values, installs the settings observer and the hotkey closure, and
    /// brings everything in line with the settings (so the app list works at once; a manual
    /// arm never survives a restart).
    CaffeineCoordinator(AppSettings& settings, Services services, GlobalEventMonitorProtocol* monitor,
                        platform::MainLoop& loop, const platform::Clock& clock, const LogCategory& log);
    ~CaffeineCoordinator();
    CaffeineCoordinator(const CaffeineCoordinator&) = delete;
    CaffeineCoordinator& operator=(const CaffeineCoordinator&) = delete;

    /// Tells the menu bar to redraw.
    void setOnStateChanged(std::function<void()> callback) { onStateChanged_ = std::move(callback); }

    /// Arms by hand; the length is the override or else the default duration (0: no limit).
    void start(std::optional<int> durationMinutesOverride, std::string_view reason);
    /// Disarms.
    void stop(std::string_view reason);
    /// Nothing unless the master switch is on; then stop when armed, start when not.
    void toggle(std::string_view reason);
    void toggleFromMenu() { toggle("menu"); }
    /// Brings everything in line with the settings.
    void applyState();

    /// Lid-close: flips the menu's switch of the unconditional mode (only while its setting
    /// and the master switch are on).
    void toggleLidAlwaysFromMenu();
    /// The settings window's step when a lid mode is turned on: the desktop's consent (where it
    /// asks), then provision().
    bool provisionLidCloseInteractively();
    /// The settings window's step when both lid modes go off: sleep back on, then deprovision().
    bool deprovisionLidClose();
    /// The end sequence's step: lid-close sleep back on if this program turned it off.
    void prepareForTermination();
    /// Asked by provisionLidCloseInteractively(); answers whether the user agreed. Without one
    /// (the Linux desktop asks nothing) the answer is yes.
    void setLidConsent(std::function<bool()> askUser) { lidConsent_ = std::move(askUser); }
    /// Called after a successful deprovisionLidClose() with the revoked title and body.
    void setLidNotification(std::function<void(std::string_view title, std::string_view body)> post) {
        postLidNotification_ = std::move(post);
    }

    bool isActive() const { return isActive_; }
    bool assertionHeld() const { return assertionHeld_; }
    std::optional<std::chrono::system_clock::time_point> deadline() const { return deadline_; }
    bool autoStopPending() const { return autoStopWork_.isActive(); }
    bool lidSleepApplied() const { return lidSleepApplied_; }
    bool lidAlwaysActive() const { return lidAlwaysActive_; }
    bool appActivationObserved() const { return static_cast<bool>(appActivationObserver_); }
    bool appRunningObserved() const { return static_cast<bool>(appLaunchObserver_); }
    /// How often applyState() has run (the settings observer's work, for tests).
    int applyCount() const { return applyCount_; }

    /// The one rule by which all sources combine.
    bool shouldHoldAssertion() const;

private:
    void evaluateAssertion(std::string_view reason);
    void acquireAssertion(std::string_view reason);
    void releaseAssertion(std::string_view reason);
    void updateAutomation();
    void startAppActivationObserver();
    void stopAppActivationObserver();
    void scheduleAutoStop(int minutes);
    void cancelAutoStop();
    void defaultsChanged();
    void stateChanged();

    bool lidCloseArmed() const;
    bool lidAlwaysHolding() const;
    bool anyGatingAppRunning() const;
    void updateLidSleepAutomation();
    void evaluateLidSleep(std::string_view reason);
    void startAppRunningObservers();
    void stopAppRunningObservers();

    AppSettings& settings_;
    Services services_;
    platform::MainLoop& loop_;
    const platform::Clock& clock_;
    const LogCategory& log_;
    std::function<bool()> lidConsent_;
    std::function<void(std::string_view, std::string_view)> postLidNotification_;

    std::function<void()> onStateChanged_;
    bool isActive_ = false;
    std::optional<std::chrono::system_clock::time_point> deadline_;
    bool assertionHeld_ = false;
    std::uint32_t assertionID_ = 0;
    platform::TimerHandle autoStopWork_;
    Subscription appActivationObserver_;
    Subscription defaultsObserver_;
    bool lidSleepApplied_ = false;
    Subscription appLaunchObserver_;
    Subscription appTerminateObserver_;
    bool lastLidClose_;
    bool lidAlwaysActive_;
    bool lastLidAlways_;
    std::vector<std::string> lastGatingApps_;
    bool lastEnabled_;
    Subscription hotkey_;
    int applyCount_ = 0;
    /// Held while the coordinator lives; a settings notice posted earlier checks it first.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace orvantis
