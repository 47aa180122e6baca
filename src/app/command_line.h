#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/input_sources.h"

namespace orvantis::app {

/// True when `args` (without the program name) asks for the command line rather than the
/// tray application.
bool isCommandLineInvocation(const std::vector<std::string>& args);

/// What the commands need from the desktop, passed in by the caller so the command line
/// itself stays free of any display.
struct CommandLineEnvironment {
    /// The input sources of the session, or nullptr when there is no desktop to ask.
    std::function<std::unique_ptr<platform::InputSources>()> sessionInputSources;
};

/// Runs one command of the command line (`--version`, `--help`, `settings ...`, `convert`)
/// and answers the process exit status: 0 on success, 2 for a usage error, 1 for a failure.
int runCommandLine(const std::vector<std::string>& args, const CommandLineEnvironment& environment = {});

}  // namespace orvantis::app
