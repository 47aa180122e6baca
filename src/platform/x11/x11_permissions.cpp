#include "platform/x11/x11_permissions.h"

#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <utility>

#include "platform/freedesktop/accessibility_bus.h"
#include "platform/x11/input_extension.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace orvantis::x11 {
namespace {

/// The accessibility settings of the desktops that have one, by program and its argument.
struct SettingsProgram {
    const char* program;
    const char* argument;
};
constexpr SettingsProgram kAccessibilitySettings[] = {
    {"gnome-control-center", "universal-access"},
    {"systemsettings", "kcm_access"},
    {"xfce4-accessibility-settings", nullptr},
    {"mate-at-properties", nullptr},
};

std::optional<std::filesystem::path> findProgram(std::string_view name) {
    const char* path = std::getenv("PATH");
    std::string_view dirs = path != nullptr ? path : "/usr/bin:/bin";
    while (!dirs.empty()) {
        const std::size_t colon = dirs.find(':');
        const std::filesystem::path candidate = std::filesystem::path(dirs.substr(0, colon)) / name;
        if (::access(candidate.c_str(), X_OK) == 0) return candidate;
        if (colon == std::string_view::npos) break;
        dirs.remove_prefix(colon + 1);
    }
    return std::nullopt;
}

/// Starts `program` detached: a child that starts it and leaves at once, so that no zombie
/// is left to this process. The program starts with every signal at its default, whatever
/// this process ignores (a broken pipe, for one).
void launchDetached(const std::filesystem::path& program, const char* argument) {
    std::string programText = program.string();
    char* argv[] = {programText.data(), const_cast<char*>(argument), nullptr};
    posix_spawnattr_t attributes;
    if (::posix_spawnattr_init(&attributes) != 0) return;
    sigset_t all;
    sigset_t none;
    ::sigfillset(&all);
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigdefault(&attributes, &all);
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    const pid_t child = ::fork();
    if (child == 0) {
        ::setsid();
        pid_t grandchild = 0;
        ::posix_spawn(&grandchild, programText.c_str(), nullptr, &attributes, argv, environ);
        ::_exit(0);
    }
    ::posix_spawnattr_destroy(&attributes);
    if (child < 0) return;
    int status = 0;
    ::waitpid(child, &status, 0);
}

}  // namespace

X11Permissions::X11Permissions(std::optional<std::string> displayName) : displayName_(std::move(displayName)) {}

bool X11Permissions::hasAccessibility() const { return accessibilityCheck_.enabled(); }

bool X11Permissions::requestAccessibility() {
    if (hasAccessibility()) return true;
    freedesktop::enableAccessibilityBus();
    return hasAccessibility();
}

void X11Permissions::openAccessibilitySettings() {
    for (const auto& settings : kAccessibilitySettings) {
        if (auto program = findProgram(settings.program)) {
            launchDetached(*program, settings.argument);
            return;
        }
    }
}

bool X11Permissions::hasInputMonitoring() const { return hasInputExtension(displayName_.value_or(std::string())); }

bool X11Permissions::requestInputMonitoring() { return hasInputMonitoring(); }

void X11Permissions::openInputMonitoringSettings() {}

}  // namespace orvantis::x11
