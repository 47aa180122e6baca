#pragma once

#include <chrono>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "platform/freedesktop/shell_bus.h"

namespace orvantis::app {

/// Asks the running program to show a window; the default goes over the session bus, tests hand
/// in their own answers.
using ShellBusCall = std::function<freedesktop::ShellBusReply(std::string_view window)>;

inline constexpr std::chrono::milliseconds kShellBusTimeout{1000};

/// `orvantis show settings|onboarding|help|overlay|feedback`: the running program opens that window, or
/// raises it when it is open, so that desktop shortcuts can be bound to them. `args` starts with
/// "show". Answers 0 when shown, 2 for a usage error, 1 when no instance runs or the call fails
/// (the reason on standard error).
int runShowCommand(const std::vector<std::string>& args, std::ostream& err,
                   const ShellBusCall& call = [](std::string_view window) {
                       return freedesktop::callRunningShell(window, kShellBusTimeout);
                   });

}  // namespace orvantis::app
