#pragma once

#include <chrono>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/freedesktop/system_utilities_bus.h"

namespace orvantis::app {

/// How the commands reach the running program: the session bus by default, tests hand in
/// their own answers. Arguments: the method and, for CaffeineOn, the minutes.
using SystemUtilitiesCall =
    std::function<freedesktop::SystemUtilitiesReply(std::string_view method, std::optional<int> minutes)>;

/// The call over the session bus.
SystemUtilitiesCall sessionBusSystemUtilitiesCall();

/// `orvantis caffeine on [MINUTES]`, `orvantis caffeine off`, `orvantis caffeine status`.
/// `on` arms as the hotkey does (MINUTES, 0 to 1440, overrides the default duration; when the
/// keep-awake switch is off it says so and answers 1); `status` prints `active` or `inactive`,
/// a tab, the whole seconds left of a limited arm or `-`, a tab, `held` or `released`. Answers
/// 0, 2 for a usage error, 1 when no Orvantis runs or it could not do it.
int runCaffeineCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                       const SystemUtilitiesCall& call = sessionBusSystemUtilitiesCall());

/// `orvantis lock`: locks the keyboard for cleaning in the running program.
int runLockCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                   const SystemUtilitiesCall& call = sessionBusSystemUtilitiesCall());

inline constexpr std::chrono::milliseconds kSystemUtilitiesBusTimeout{2000};

}  // namespace orvantis::app
