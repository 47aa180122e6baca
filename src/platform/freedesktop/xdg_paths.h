#pragma once

#include <filesystem>
#include <optional>

namespace orvantis::freedesktop {

/// The folders of the XDG Base Directory Specification, read from the environment at the
/// moment of the call: a variable that is unset, empty or not an absolute path falls back to
/// the XDG Base Directory default under $HOME.
struct XdgPaths {
    static std::filesystem::path home();
    static std::filesystem::path configHome();   ///< $XDG_CONFIG_HOME or ~/.config
    static std::filesystem::path dataHome();     ///< $XDG_DATA_HOME or ~/.local/share
    static std::filesystem::path stateHome();    ///< $XDG_STATE_HOME or ~/.local/state
    static std::filesystem::path cacheHome();    ///< $XDG_CACHE_HOME or ~/.cache
    /// $XDG_RUNTIME_DIR when set to an absolute path, else nullopt.
    static std::optional<std::filesystem::path> runtimeDir();

    /// The files and folders of Orvantis.
    static std::filesystem::path preferencesFile() { return configHome() / "orvantis" / "preferences.plist"; }
    static std::filesystem::path logsDirectory() { return stateHome() / "orvantis" / "logs"; }
    /// Stands for the application support folder of other platforms.
    static std::filesystem::path dataDirectory() { return dataHome() / "orvantis"; }
};

}  // namespace orvantis::freedesktop
