#include "app/pomodoro_command.h"

#include <array>
#include <ostream>
#include <utility>

namespace orvantis::app {
namespace {

constexpr std::string_view kUsage = "usage: orvantis pomodoro start|stop|pause|resume|skip|reset|status\n";

constexpr std::array<std::pair<std::string_view, std::string_view>, 7> kMethods{{
    {"start", "Start"},
    {"stop", "Stop"},
    {"pause", "Pause"},
    {"resume", "Resume"},
    {"skip", "Skip"},
    {"reset", "Reset"},
    {"status", "Status"},
}};

}  // namespace

int runPomodoroCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                       const PomodoroBusCall& call) {
    if (args.size() != 2) {
        err << "orvantis: pomodoro takes one action\n" << kUsage;
        return 2;
    }
    std::string_view method;
    for (const auto& [verb, name] : kMethods)
        if (args[1] == verb) method = name;
    if (method.empty()) {
        err << "orvantis: unknown pomodoro action \"" << args[1] << "\"\n" << kUsage;
        return 2;
    }
    const freedesktop::PomodoroBusReply reply = call(method);
    switch (reply.status) {
        case freedesktop::PomodoroBusReply::Status::NotRunning:
            err << "orvantis: pomodoro: Orvantis is not running; start it first\n";
            return 1;
        case freedesktop::PomodoroBusReply::Status::Failed:
            err << "orvantis: pomodoro: " << reply.text << '\n';
            return 1;
        case freedesktop::PomodoroBusReply::Status::Answered:
            break;
    }
    if (method == "Status") out << reply.text << '\n';
    return 0;
}

}  // namespace orvantis::app
