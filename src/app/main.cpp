// The process entry: a command when arguments are given, else the tray application.

#include <string>
#include <vector>

#include "app/command_line.h"
#include "app/tray_app.h"

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (orvantis::app::isCommandLineInvocation(args)) return orvantis::app::runCommandLine(args);
    return orvantis::app::runTrayApp(argc, argv);
}
