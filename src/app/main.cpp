// The process entry: a command when arguments are given, else the tray application.

#include <memory>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "app/tray_app.h"
#include "platform/x11/xkb_input_sources.h"

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (orvantis::app::isCommandLineInvocation(args)) {
        orvantis::app::CommandLineEnvironment environment;
        environment.sessionInputSources = []() -> std::unique_ptr<orvantis::platform::InputSources> {
            return orvantis::x11::XkbInputSources::open();
        };
        return orvantis::app::runCommandLine(args, environment);
    }
    return orvantis::app::runTrayApp(argc, argv);
}
