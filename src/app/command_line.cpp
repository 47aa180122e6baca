#include "app/command_line.h"

#include <iostream>

#include "build_info.h"

namespace orvantis::app {

bool isCommandLineInvocation(const std::vector<std::string>& args) { return !args.empty(); }

int runCommandLine(const std::vector<std::string>& args) {
    if (args.size() == 1 && args[0] == "--version") {
        std::cout << "Orvantis " << build::kVersion << " (build " << build::kBuild << ")\n";
        return 0;
    }
    std::cerr << "orvantis: unknown command\n";
    return 2;
}

}  // namespace orvantis::app
