#pragma once

#include <functional>
#include <utility>

#include "core/pomodoro/pomodoro_phase.h"
#include "core/pomodoro/pomodoro_timer_state.h"
#include "core/settings/app_settings.h"
#include "platform/main_loop.h"

namespace orvantis {

/// The configured length of `phase` in seconds, read from the settings now and clamped
/// (work 5–90, break 1–30, long break 5–45 minutes).
int pomodoroDurationSeconds(const AppSettings& settings, PomodoroPhase phase);

/// The bare countdown: one phase after another, one tick a second on the main loop. It knows
/// nothing of cycles, Focus, notifications or history; its owner fills in the three callbacks.
/// The time left is counted in ticks, never from the wall clock, so a stalled loop loses no
/// countdown. Phases run on by themselves; only stop() ends them. Main thread only; borrows
/// the settings and the loop, which must outlive it.
class PomodoroTimer {
public:
    PomodoroTimer(const AppSettings& settings, platform::MainLoop& loop);

    const PomodoroTimerState& state() const { return state_; }

    /// After every change of state and every tick.
    std::function<void(const PomodoroTimerState&)> onTick;
    /// When a phase ends or is skipped, with the next phase, while `state()` still holds the
    /// old one.
    std::function<void(PomodoroPhase)> onPhaseTransition;
    /// Decides the phase after the given one, and its seconds. Unset: work and short breaks
    /// alternate for ever.
    std::function<std::pair<PomodoroPhase, int>(PomodoroPhase)> nextPhaseAfter;

    /// A first work phase from its full length. Meant for the idle state only: it neither
    /// looks at the old state nor stops a running timer.
    void start();
    /// Running only: keeps phase and seconds, stops ticking.
    void pause();
    /// Paused only: ticks again from the same seconds.
    void resume();
    /// From any state, also idle: idle, and onTick is told so.
    void stop();
    /// Running or paused: the next phase from its full length, running.
    void skip();
    /// Running or paused: the same phase from its full length, running; no transition.
    void reset();

    /// True while the one-second timer is scheduled.
    bool isTicking() const { return timer_.isActive(); }

private:
    std::pair<PomodoroPhase, int> decideNext(PomodoroPhase phase) const;
    void scheduleTimer();
    void tick();
    void setState(PomodoroTimerState state);

    const AppSettings& settings_;
    platform::MainLoop& loop_;
    PomodoroTimerState state_;
    platform::TimerHandle timer_;
};

}  // namespace orvantis
