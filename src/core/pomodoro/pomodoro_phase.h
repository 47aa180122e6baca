#pragma once

#include <optional>
#include <string_view>

namespace orvantis {

/// The three phases of a Pomodoro cycle, in their declared order.
enum class PomodoroPhase { work, breakTime, longBreak };

/// False for work, true for both breaks.
constexpr bool isBreak(PomodoroPhase phase) { return phase != PomodoroPhase::work; }

/// The case name ("work", "breakTime", "longBreak"), as the command line prints it.
constexpr std::string_view caseName(PomodoroPhase phase) {
    switch (phase) {
        case PomodoroPhase::work: return "work";
        case PomodoroPhase::breakTime: return "breakTime";
        case PomodoroPhase::longBreak: return "longBreak";
    }
    return "work";
}

/// The phase of a case name, or nullopt for anything else.
constexpr std::optional<PomodoroPhase> phaseFromCaseName(std::string_view name) {
    if (name == "work") return PomodoroPhase::work;
    if (name == "breakTime") return PomodoroPhase::breakTime;
    if (name == "longBreak") return PomodoroPhase::longBreak;
    return std::nullopt;
}

}  // namespace orvantis
