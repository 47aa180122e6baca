#include "app/caffeine_command.h"

#include <charconv>
#include <ostream>

namespace orvantis::app {
namespace {

using Status = freedesktop::SystemUtilitiesReply::Status;

constexpr std::string_view kCaffeineUsage =
    "usage: orvantis caffeine on [MINUTES]\n"
    "       orvantis caffeine off\n"
    "       orvantis caffeine status\n";

constexpr std::string_view kNotRunning = "Orvantis is not running (start it first)";

int answer(const freedesktop::SystemUtilitiesReply& reply, std::string_view command, std::ostream& out,
           std::ostream& err, bool printText) {
    switch (reply.status) {
        case Status::Answered:
            if (printText) out << reply.text << '\n';
            return 0;
        case Status::NotRunning:
            err << "orvantis: " << command << ": " << kNotRunning << '\n';
            return 1;
        case Status::Failed:
            err << "orvantis: " << command << ": " << reply.text << '\n';
            return 1;
    }
    return 1;
}

}  // namespace

SystemUtilitiesCall sessionBusSystemUtilitiesCall() {
    return [](std::string_view method, std::optional<int> minutes) {
        return freedesktop::callSystemUtilities(method, minutes, kSystemUtilitiesBusTimeout);
    };
}

int runCaffeineCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                       const SystemUtilitiesCall& call) {
    const auto usage = [&](std::string_view message) {
        err << "orvantis: " << message << '\n' << kCaffeineUsage;
        return 2;
    };
    if (args.size() < 2) return usage("caffeine needs a command: on, off or status");
    const std::string& command = args[1];
    if (command == "on") {
        if (args.size() > 3) return usage("caffeine on takes at most MINUTES");
        std::optional<int> minutes;
        if (args.size() == 3) {
            int value = -1;
            const std::string& text = args[2];
            const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
            if (ec != std::errc() || end != text.data() + text.size() || value < 0 || value > 1440)
                return usage("MINUTES is a whole number from 0 (no limit) to 1440, not \"" + text + "\"");
            minutes = value;
        }
        return answer(call("CaffeineOn", minutes), "caffeine on", out, err, false);
    }
    if (command == "off") {
        if (args.size() != 2) return usage("caffeine off takes no arguments");
        return answer(call("CaffeineOff", std::nullopt), "caffeine off", out, err, false);
    }
    if (command == "status") {
        if (args.size() != 2) return usage("caffeine status takes no arguments");
        return answer(call("CaffeineStatus", std::nullopt), "caffeine status", out, err, true);
    }
    return usage("unknown caffeine command \"" + command + "\"");
}

int runLockCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                   const SystemUtilitiesCall& call) {
    if (args.size() != 1) {
        err << "orvantis: lock takes no arguments\nusage: orvantis lock\n";
        return 2;
    }
    return answer(call("Lock", std::nullopt), "lock", out, err, false);
}

}  // namespace orvantis::app
