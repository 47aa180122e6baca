#include "core/pomodoro/dnd_manager.h"


namespace orvantis {
namespace {

std::string_view trimBlanks(std::string_view line) {
    constexpr std::string_view kBlanks = " \t\v\f\r";
    const auto first = line.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    const auto last = line.find_last_not_of(kBlanks);
    return line.substr(first, last - first + 1);
}

}  // namespace

DNDManager::DNDManager(platform::FocusCommands& commands)
    : commands_(commands), shortcutsAvailable_(queryAvailability(commands)) {}

bool DNDManager::queryAvailability(platform::FocusCommands& commands) {
    const auto listing = commands.list();
    if (!listing) return false;
    bool on = false, off = false;
    std::string_view rest = *listing;
    while (!rest.empty()) {
        const auto end = rest.find('\n');
        const std::string_view line = trimBlanks(rest.substr(0, end));
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
        if (line == kFocusOn) on = true;
        if (line == kFocusOff) off = true;
    }
    return on && off;
}

bool DNDManager::isSetupComplete(platform::FocusCommands& commands) { return queryAvailability(commands); }

bool DNDManager::refreshAvailability() {
    shortcutsAvailable_ = queryAvailability(commands_);
    return shortcutsAvailable_;
}

void DNDManager::enable() {
    if (!shortcutsAvailable_) {
        shortcutsAvailable_ = queryAvailability(commands_);
        if (!shortcutsAvailable_) return;
    }
    commands_.run(std::string(kFocusOn));
    sessionEnabledFocus_ = true;
}

void DNDManager::disable() {
    if (!shortcutsAvailable_) return;
    commands_.run(std::string(kFocusOff));
    sessionEnabledFocus_ = false;
}

void DNDManager::restore() {
    if (sessionEnabledFocus_) disable();
    sessionEnabledFocus_ = false;
}

}  // namespace orvantis
