#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "core/events/global_event_monitor_protocol.h"
#include "core/settings/app_settings.h"
#include "core/strings/settings_strings.h"
#include "platform/clock.h"
#include "platform/main_loop.h"
#include "platform/subscription.h"

namespace orvantis {

class LogCategory;

/// The full-screen overlay of the keyboard lock, as its coordinator sees it. Main thread only.
class KeyboardLockOverlay {
public:
    virtual ~KeyboardLockOverlay() = default;
    /// Called when the overlay's Unlock button is pressed.
    virtual void setOnUnlockClicked(std::function<void()> callback) = 0;
    /// Fills every text from `strings`, shows the full time (`autoUnlockMinutes` minutes) at
    /// once and puts the overlay in front of everything without taking the focus.
    virtual void show(const SettingsStrings& strings, int autoUnlockMinutes) = 0;
    /// The countdown line for `secondsRemaining` (negative counts as 0).
    virtual void updateCountdown(int secondsRemaining) = 0;
    /// Hides the overlay; it may be shown again.
    virtual void dismiss() = 0;
};

/// "%d:%02d" of the minutes and seconds of `seconds`, without hours (600 gives "10:00"); a
/// negative value counts as 0.
std::string formatLockCountdown(int seconds);
/// `countdownTemplate` with its `%@` replaced by the countdown text of `seconds`.
std::string lockCountdownText(std::string_view countdownTemplate, int seconds);

/// The keyboard lock for cleaning: while locked every key is swallowed by the event monitor and
/// a full-screen overlay says so. It ends by the overlay's button, a three-second hold of
/// Escape, the automatic time limit or the menu. Owns the timers; the overlay is made at the
/// first lock and kept. Borrows its collaborators, which outlive it. Main thread only.
class KeyboardLockCoordinator {
public:
    using OverlayFactory = std::function<std::unique_ptr<KeyboardLockOverlay>()>;
    static constexpr std::chrono::milliseconds kEscHoldDuration{3000};

    /// Sets the monitor's hotkey and Escape closures.
    KeyboardLockCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor, platform::MainLoop& loop,
                            const platform::Clock& clock, const LogCategory& log, OverlayFactory makeOverlay);
    ~KeyboardLockCoordinator();
    KeyboardLockCoordinator(const KeyboardLockCoordinator&) = delete;
    KeyboardLockCoordinator& operator=(const KeyboardLockCoordinator&) = delete;

    /// Nothing when the feature is off; otherwise unlock when locked, lock when not ("menu").
    void toggleFromMenu() { toggle("menu"); }
    /// Unlocks ("disabled-in-settings") when the feature went off while locked.
    void applyState();
    void lock(std::string_view reason);
    void unlock(std::string_view reason);

    bool isLocked() const { return isLocked_; }
    std::optional<std::chrono::system_clock::time_point> deadline() const { return deadline_; }
    bool countdownRunning() const { return countdownTimer_.isActive(); }
    bool escHoldPending() const { return escHoldWork_.isActive(); }
    /// Called whenever the lock state changes (the menu's check mark).
    void setOnStateChanged(std::function<void()> callback) { onStateChanged_ = std::move(callback); }

private:
    void toggle(std::string_view reason);
    void startCountdown();
    void tick();
    void escDown();
    void escUp();

    AppSettings& settings_;
    GlobalEventMonitorProtocol& monitor_;
    platform::MainLoop& loop_;
    const platform::Clock& clock_;
    const LogCategory& log_;
    OverlayFactory makeOverlay_;
    std::function<void()> onStateChanged_;

    bool isLocked_ = false;
    std::unique_ptr<KeyboardLockOverlay> overlay_;
    platform::TimerHandle countdownTimer_;
    std::optional<std::chrono::system_clock::time_point> deadline_;
    platform::TimerHandle escHoldWork_;
    Subscription hotkey_;
    Subscription escPressed_;
    Subscription escReleased_;
};

}  // namespace orvantis
