#include "core/pomodoro/pomodoro_timer.h"

#include <chrono>

namespace orvantis {

int pomodoroDurationSeconds(const AppSettings& settings, PomodoroPhase phase) {
    // AppSettings clamps integers to the setting's range whenever it reads one.
    switch (phase) {
        case PomodoroPhase::work: return static_cast<int>(settings.get(settings::kWorkDurationMinutes)) * 60;
        case PomodoroPhase::breakTime: return static_cast<int>(settings.get(settings::kBreakDurationMinutes)) * 60;
        case PomodoroPhase::longBreak:
            return static_cast<int>(settings.get(settings::kLongBreakDurationMinutes)) * 60;
    }
    return 25 * 60;
}

PomodoroTimer::PomodoroTimer(const AppSettings& settings, platform::MainLoop& loop)
    : settings_(settings), loop_(loop) {}

void PomodoroTimer::setState(PomodoroTimerState state) {
    state_ = state;
    if (onTick) onTick(state_);
}

void PomodoroTimer::start() {
    setState(PomodoroTimerState::running(PomodoroPhase::work, pomodoroDurationSeconds(settings_, PomodoroPhase::work)));
    scheduleTimer();
}

void PomodoroTimer::pause() {
    if (!state_.isRunning()) return;
    timer_.cancel();
    setState(PomodoroTimerState::paused(*state_.phase(), *state_.remainingSeconds()));
}

void PomodoroTimer::resume() {
    if (!state_.isPaused()) return;
    setState(PomodoroTimerState::running(*state_.phase(), *state_.remainingSeconds()));
    scheduleTimer();
}

void PomodoroTimer::stop() {
    timer_.cancel();
    setState(PomodoroTimerState::idle());
}

void PomodoroTimer::skip() {
    if (!state_.isActive()) return;
    timer_.cancel();
    const auto [next, seconds] = decideNext(*state_.phase());
    if (onPhaseTransition) onPhaseTransition(next);
    setState(PomodoroTimerState::running(next, seconds));
    scheduleTimer();
}

void PomodoroTimer::reset() {
    if (!state_.isActive()) return;
    timer_.cancel();
    const PomodoroPhase phase = *state_.phase();
    setState(PomodoroTimerState::running(phase, pomodoroDurationSeconds(settings_, phase)));
    scheduleTimer();
}

std::pair<PomodoroPhase, int> PomodoroTimer::decideNext(PomodoroPhase phase) const {
    if (nextPhaseAfter) return nextPhaseAfter(phase);
    const PomodoroPhase next = phase == PomodoroPhase::work ? PomodoroPhase::breakTime : PomodoroPhase::work;
    return {next, pomodoroDurationSeconds(settings_, next)};
}

void PomodoroTimer::scheduleTimer() {
    // The handle is a member: destroying the timer cancels the task, so it never outlives us.
    timer_ = loop_.every(std::chrono::seconds(1), [this] { tick(); });
}

void PomodoroTimer::tick() {
    if (!state_.isRunning()) return;
    const PomodoroPhase phase = *state_.phase();
    const int left = *state_.remainingSeconds() - 1;
    if (left > 0) {
        setState(PomodoroTimerState::running(phase, left));
        return;
    }
    // The tick that would show 00:00 goes straight on to the next phase.
    timer_.cancel();
    const auto [next, seconds] = decideNext(phase);
    if (onPhaseTransition) onPhaseTransition(next);
    setState(PomodoroTimerState::running(next, seconds));
    scheduleTimer();  // a fresh timer, so the new phase's first second is a whole one
}

}  // namespace orvantis
