#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "core/passwords/password_config.h"

namespace orvantis {
class RandomSource;
}

namespace orvantis::app {

/// `orvantis password [--length N] [--[no-]uppercase] [--[no-]lowercase] [--[no-]digits]
/// [--[no-]symbols] [--count K]`: K passwords (1 by default), one a line on `out`, made as the
/// password hotkey makes them (the length held within 4 through 128). What no option gives comes
/// from `settings`, asked once. `args` starts with "password". Answers the exit status: 0 on
/// success; 1, with a message on `err`, when no character class is chosen; 2 for a usage error.
int runPasswordCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                       const std::function<PasswordConfig()>& settings, RandomSource& random);

}  // namespace orvantis::app
