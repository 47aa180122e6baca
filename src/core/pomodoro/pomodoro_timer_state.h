#pragma once

#include <optional>
#include <string>

#include "core/pomodoro/pomodoro_phase.h"

namespace orvantis {

/// Where the countdown stands: idle, or running or paused in a phase with whole seconds left.
/// A plain value; equal when the case and, for the active cases, phase and seconds are equal.
class PomodoroTimerState {
public:
    enum class Kind { idle, running, paused };

    /// The idle state.
    PomodoroTimerState() = default;
    static PomodoroTimerState idle() { return {}; }
    static PomodoroTimerState running(PomodoroPhase phase, int remainingSeconds) {
        return {Kind::running, phase, remainingSeconds};
    }
    static PomodoroTimerState paused(PomodoroPhase phase, int remainingSeconds) {
        return {Kind::paused, phase, remainingSeconds};
    }

    Kind kind() const { return kind_; }
    bool isRunning() const { return kind_ == Kind::running; }
    bool isPaused() const { return kind_ == Kind::paused; }
    /// Running or paused.
    bool isActive() const { return kind_ != Kind::idle; }
    /// The phase of an active state; nullopt when idle.
    std::optional<PomodoroPhase> phase() const;
    /// The seconds left of an active state; nullopt when idle.
    std::optional<int> remainingSeconds() const;

    /// The text beside the tray icon: a symbol of the phase (or the pause symbol) and mm:ss,
    /// minutes running past 59 ("🍅 90:00"); the empty string when idle.
    std::string menuBarTitle() const;

    bool operator==(const PomodoroTimerState& other) const;

private:
    PomodoroTimerState(Kind kind, PomodoroPhase phase, int seconds)
        : kind_(kind), phase_(phase), seconds_(seconds) {}

    Kind kind_ = Kind::idle;
    PomodoroPhase phase_ = PomodoroPhase::work;
    int seconds_ = 0;
};

/// "%02d:%02d" of whole minutes and seconds; minutes are not wrapped into hours. Negative
/// input reads as 0.
std::string formatMinutesSeconds(int seconds);

}  // namespace orvantis
