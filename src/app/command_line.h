#pragma once

#include <string>
#include <vector>

namespace orvantis::app {

/// True when `args` (without the program name) asks for the command line rather than the
/// tray application.
bool isCommandLineInvocation(const std::vector<std::string>& args);

/// Runs one command of the command line (`--version`, `--help`, `settings ...`) and answers
/// the process exit status: 0 on success, 2 for a usage error, 1 for a failure.
int runCommandLine(const std::vector<std::string>& args);

}  // namespace orvantis::app
