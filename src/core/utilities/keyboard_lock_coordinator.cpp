#include "core/utilities/keyboard_lock_coordinator.h"

#include <cmath>
#include <cstdio>
#include <utility>

#include "core/log/app_logger.h"

namespace orvantis {

std::string formatLockCountdown(int seconds) {
    if (seconds < 0) seconds = 0;
    char text[32];
    std::snprintf(text, sizeof text, "%d:%02d", seconds / 60, seconds % 60);
    return text;
}

std::string lockCountdownText(std::string_view countdownTemplate, int seconds) {
    std::string result(countdownTemplate);
    const auto at = result.find("%@");
    if (at != std::string::npos) result.replace(at, 2, formatLockCountdown(seconds));
    return result;
}

KeyboardLockCoordinator::KeyboardLockCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor,
                                                 platform::MainLoop& loop, const platform::Clock& clock,
                                                 const LogCategory& log, OverlayFactory makeOverlay)
    : settings_(settings), monitor_(monitor), loop_(loop), clock_(clock), log_(log),
      makeOverlay_(std::move(makeOverlay)) {
    hotkey_ = monitor_.onKeyboardLockHotkey([this] { toggle("hotkey"); });
    escPressed_ = monitor_.onKeyboardLockEscPressed([this] { escDown(); });
    escReleased_ = monitor_.onKeyboardLockEscReleased([this] { escUp(); });
}

KeyboardLockCoordinator::~KeyboardLockCoordinator() {
    if (isLocked_) monitor_.setKeyboardLockActive(false);
}

void KeyboardLockCoordinator::toggle(std::string_view reason) {
    if (!settings_.keyboardLockEnabled()) return;
    if (isLocked_) unlock(reason);
    else lock(reason);
}

void KeyboardLockCoordinator::applyState() {
    if (!settings_.keyboardLockEnabled() && isLocked_) unlock("disabled-in-settings");
}

void KeyboardLockCoordinator::lock(std::string_view reason) {
    if (isLocked_) return;
    isLocked_ = true;
    // A stored 0 reads as 10; the rest is clamped to 1…60 where read.
    const int minutes = settings_.keyboardLockAutoUnlockMinutes();
    deadline_ = clock_.wallNow() + std::chrono::minutes(minutes);
    monitor_.setKeyboardLockActive(true);
    const SettingsStrings strings = SettingsStrings::make(settings_.settingsLanguage());
    if (!overlay_ && makeOverlay_) overlay_ = makeOverlay_();
    if (overlay_) {
        overlay_->setOnUnlockClicked([this] { unlock("button"); });
        overlay_->show(strings, minutes);
    }
    startCountdown();
    log_.info("keyboardLock: engaged via " + std::string(reason) + ", auto-unlock in " + std::to_string(minutes) +
              " min");
    if (onStateChanged_) onStateChanged_();
}

void KeyboardLockCoordinator::unlock(std::string_view reason) {
    if (!isLocked_) return;
    isLocked_ = false;
    monitor_.setKeyboardLockActive(false);
    if (overlay_) overlay_->dismiss();
    countdownTimer_.cancel();
    deadline_.reset();
    escHoldWork_.cancel();
    log_.info("keyboardLock: released via " + std::string(reason));
    if (onStateChanged_) onStateChanged_();
}

void KeyboardLockCoordinator::startCountdown() {
    countdownTimer_.cancel();
    countdownTimer_ = loop_.every(std::chrono::seconds(1), [this] { tick(); });
}

void KeyboardLockCoordinator::tick() {
    if (!isLocked_ || !deadline_) return;
    // From the wall clock, so a missed tick never makes the lock late.
    const std::chrono::duration<double> rest = *deadline_ - clock_.wallNow();
    const double left = std::ceil(rest.count());
    if (left < 1) {
        unlock("auto");
        return;
    }
    if (overlay_) overlay_->updateCountdown(static_cast<int>(left));
}

void KeyboardLockCoordinator::escDown() {
    if (!isLocked_) return;
    escHoldWork_.cancel();
    escHoldWork_ = loop_.postAfter(kEscHoldDuration, [this] { unlock("esc-hold"); });
}

void KeyboardLockCoordinator::escUp() { escHoldWork_.cancel(); }

}  // namespace orvantis
