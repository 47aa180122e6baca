#include "platform/freedesktop/xdg_paths.h"

#include <cstdlib>

#include <pwd.h>
#include <unistd.h>

namespace orvantis::freedesktop {
namespace {

std::optional<std::filesystem::path> absoluteFromEnv(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') return std::nullopt;
    std::filesystem::path path(value);
    if (!path.is_absolute()) return std::nullopt;
    return path;
}

std::filesystem::path fromEnvOr(const char* name, const std::filesystem::path& relativeToHome) {
    if (auto path = absoluteFromEnv(name)) return *path;
    return XdgPaths::home() / relativeToHome;
}

}  // namespace

std::filesystem::path XdgPaths::home() {
    if (auto path = absoluteFromEnv("HOME")) return *path;
    if (const passwd* pw = getpwuid(getuid()); pw != nullptr && pw->pw_dir != nullptr) return pw->pw_dir;
    return std::filesystem::temp_directory_path();
}

std::filesystem::path XdgPaths::configHome() { return fromEnvOr("XDG_CONFIG_HOME", ".config"); }
std::filesystem::path XdgPaths::dataHome() { return fromEnvOr("XDG_DATA_HOME", ".local/share"); }
std::filesystem::path XdgPaths::stateHome() { return fromEnvOr("XDG_STATE_HOME", ".local/state"); }
std::filesystem::path XdgPaths::cacheHome() { return fromEnvOr("XDG_CACHE_HOME", ".cache"); }
std::optional<std::filesystem::path> XdgPaths::runtimeDir() { return absoluteFromEnv("XDG_RUNTIME_DIR"); }

}  // namespace orvantis::freedesktop
