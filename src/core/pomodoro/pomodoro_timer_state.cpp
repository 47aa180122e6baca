#include "core/pomodoro/pomodoro_timer_state.h"

#include <cstdio>

namespace orvantis {

std::optional<PomodoroPhase> PomodoroTimerState::phase() const {
    if (!isActive()) return std::nullopt;
    return phase_;
}

std::optional<int> PomodoroTimerState::remainingSeconds() const {
    if (!isActive()) return std::nullopt;
    return seconds_;
}

std::string formatMinutesSeconds(int seconds) {
    if (seconds < 0) seconds = 0;
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%02d:%02d", seconds / 60, seconds % 60);
    return buffer;
}

std::string PomodoroTimerState::menuBarTitle() const {
    const char* symbol = "";
    switch (kind_) {
        case Kind::idle: return {};
        case Kind::paused: symbol = "\u23F8"; break;
        case Kind::running:
            switch (phase_) {
                case PomodoroPhase::work: symbol = "\U0001F345"; break;
                case PomodoroPhase::breakTime: symbol = "\u2615"; break;
                case PomodoroPhase::longBreak: symbol = "\U0001F6CB"; break;
            }
            break;
    }
    return std::string(symbol) + " " + formatMinutesSeconds(seconds_);
}

bool PomodoroTimerState::operator==(const PomodoroTimerState& other) const {
    if (kind_ != other.kind_) return false;
    if (kind_ == Kind::idle) return true;
    return phase_ == other.phase_ && seconds_ == other.seconds_;
}

}  // namespace orvantis
