#include "app/show_command.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace orvantis::app {
namespace {

constexpr std::string_view kUsage = "usage: orvantis show settings|onboarding|help|overlay|feedback\n";
constexpr std::array<std::string_view, 5> kWindows{"settings", "onboarding", "help", "overlay", "feedback"};

}  // namespace

int runShowCommand(const std::vector<std::string>& args, std::ostream& err, const ShellBusCall& call) {
    if (args.size() != 2) {
        err << "orvantis: show takes one window\n" << kUsage;
        return 2;
    }
    if (std::find(kWindows.begin(), kWindows.end(), args[1]) == kWindows.end()) {
        err << "orvantis: unknown window \"" << args[1] << "\"\n" << kUsage;
        return 2;
    }
    const freedesktop::ShellBusReply reply = call(args[1]);
    switch (reply.status) {
        case freedesktop::ShellBusReply::Status::NotRunning:
            err << "orvantis: show: Orvantis is not running; start it first\n";
            return 1;
        case freedesktop::ShellBusReply::Status::Failed:
            err << "orvantis: show: " << reply.text << '\n';
            return 1;
        case freedesktop::ShellBusReply::Status::Answered:
            break;
    }
    return 0;
}

}  // namespace orvantis::app
