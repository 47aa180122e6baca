#pragma once

#include <chrono>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "platform/freedesktop/pomodoro_bus.h"

namespace orvantis::app {

/// Calls one method of the running program's Pomodoro; the default goes over the session bus,
/// tests hand in their own answers.
using PomodoroBusCall = std::function<freedesktop::PomodoroBusReply(std::string_view method)>;

/// How long the command waits for the session bus and the running program.
inline constexpr std::chrono::milliseconds kPomodoroBusTimeout{1000};

/// `orvantis pomodoro start|stop|pause|resume|skip|reset|status`, through the running program.
/// status prints one line, tab-separated: `idle`, or `running`/`paused` with the phase
/// (work, breakTime, longBreak) and the seconds left; then the session number of the cycle and
/// the sessions finished today. `args` starts with "pomodoro". Answers 0 on success, 2 for a
/// usage error, 1 when no instance runs or the program refuses (the reason on standard error).
int runPomodoroCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                       const PomodoroBusCall& call = [](std::string_view method) {
                           return freedesktop::callRunningPomodoro(method, kPomodoroBusTimeout);
                       });

}  // namespace orvantis::app
