#include "core/pomodoro/pomodoro_coordinator.h"

#include <string>
#include <utility>

#include "core/log/app_logger.h"
#include "core/strings/settings_strings.h"

namespace orvantis {

PomodoroCoordinator::PomodoroCoordinator(AppSettings& settings, PomodoroHistory& history,
                                         GlobalEventMonitorProtocol* monitor, platform::MainLoop& loop,
                                         Services services, const AppLog& log)
    : settings_(settings), history_(history), notifications_(services.notifications), log_(log),
      timer_(settings, loop), dnd_(services.focus) {
    timer_.onTick = [this](const PomodoroTimerState& state) {
        stateChanged_.notify(state);
        dashboardChanged();
    };
    timer_.onPhaseTransition = [this](PomodoroPhase phase) { handlePhaseTransition(phase); };
    timer_.nextPhaseAfter = [this](PomodoroPhase ended) { return nextPhaseAfter(ended); };
    if (monitor) hotkey_ = monitor->onPomodoroHotkey([this] { handleHotkey(); });
    willSleep_ = services.sleep.onWillSleep([this] { handleWillSleep(); });
    didWake_ = services.sleep.onDidWake([this] { handleDidWake(); });
}

PomodoroCoordinator::~PomodoroCoordinator() { *alive_ = false; }

void PomodoroCoordinator::handleHotkey() {
    if (!timer_.state().isActive())
        startSession();
    else
        stopSession();  // also when paused
}

std::pair<PomodoroPhase, int> PomodoroCoordinator::nextPhaseAfter(PomodoroPhase ended) const {
    if (isBreak(ended)) return {PomodoroPhase::work, pomodoroDurationSeconds(settings_, PomodoroPhase::work)};
    if (currentSessionInCycle_ >= kSessionsPerCycle)
        return {PomodoroPhase::longBreak, pomodoroDurationSeconds(settings_, PomodoroPhase::longBreak)};
    return {PomodoroPhase::breakTime, pomodoroDurationSeconds(settings_, PomodoroPhase::breakTime)};
}

void PomodoroCoordinator::startSession() {
    if (!settings_.get(settings::kPomodoroEnabled)) return;
    notifications_.requestAuthorization();
    if (settings_.get(settings::kPomodoroToggleDND)) {
        dnd_.snapshot();
        if (dnd_.refreshAvailability()) {
            dnd_.enable();
        } else {
            log_.app.warning("pomodoro: the Focus commands are missing; the session starts without Focus");
            if (showFocusShortcutsMissingAlert) showFocusShortcutsMissingAlert();
        }
    }
    currentSessionInCycle_ = 1;
    timer_.start();
    dashboardChanged();
}

void PomodoroCoordinator::stopSession() {
    timer_.stop();
    dnd_.restore();
    dashboardChanged();
}

void PomodoroCoordinator::togglePauseResume() {
    if (timer_.state().isRunning())
        timer_.pause();
    else if (timer_.state().isPaused())
        timer_.resume();
    dashboardChanged();
}

void PomodoroCoordinator::handlePhaseTransition(PomodoroPhase phase) {
    const bool toggleFocus = settings_.get(settings::kPomodoroToggleDND);
    const SettingsStrings strings = SettingsStrings::make(settings_.get(settings::kSettingsLanguage));
    if (phase == PomodoroPhase::work) {
        // A break ended: the number wraps only when a work phase begins.
        currentSessionInCycle_ = currentSessionInCycle_ < kSessionsPerCycle ? currentSessionInCycle_ + 1 : 1;
        if (toggleFocus) dnd_.enable();
        postNotification(std::string(strings.notifBreakEndTitle), std::string(strings.notifBreakEndBody));
    } else {
        // A work phase ended, or was skipped: both count as a finished session of the full length.
        history_.record(pomodoroDurationSeconds(settings_, PomodoroPhase::work) / 60, history_.clock().wallNow());
        if (toggleFocus) dnd_.disable();
        postNotification(std::string(strings.notifWorkEndTitle), std::string(strings.notifWorkEndBody));
    }
    dashboardChanged();
}

void PomodoroCoordinator::postNotification(std::string title, std::string body) {
    notifications_.checkAuthorization(
        [this, alive = std::weak_ptr<bool>(alive_), title = std::move(title), body = std::move(body)](bool authorized) {
            const auto stillAlive = alive.lock();
            if (!stillAlive || !*stillAlive) return;
            // A phase change never passes unmarked: without banners, the bell.
            if (authorized)
                notifications_.post(title, body);
            else
                notifications_.beep();
        });
}

void PomodoroCoordinator::handleWillSleep() {
    if (!timer_.state().isRunning()) return;  // one paused by hand stays the user's
    pausedBySleep_ = true;
    timer_.pause();
}

void PomodoroCoordinator::handleDidWake() {
    if (!pausedBySleep_) return;
    pausedBySleep_ = false;
    if (timer_.state().isPaused()) timer_.resume();
}

}  // namespace orvantis
