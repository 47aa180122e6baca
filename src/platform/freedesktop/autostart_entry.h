#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/login_item.h"

namespace orvantis::freedesktop {

/// The login item as an XDG autostart entry: the desktop file `orvantis.desktop` in
/// $XDG_CONFIG_HOME/autostart, which the session manager reads at login. The item is enabled
/// while the file is there and neither hides itself (`Hidden=true`) nor is switched off by the
/// desktop's startup settings (`X-GNOME-Autostart-enabled=false`). Registering writes the file
/// atomically; unregistering removes it. Holds no open handle. Main thread only.
class AutostartEntry final : public platform::LoginItem {
public:
    /// The entry at `file`, starting `executable`.
    AutostartEntry(std::filesystem::path file, std::filesystem::path executable);

    /// $XDG_CONFIG_HOME/autostart/orvantis.desktop, read from the environment now.
    static std::filesystem::path defaultFile();
    /// The program the entry starts: `installedBinary` when `runningExecutable` is that file
    /// (the installed program runs), else `runningExecutable` itself (a build tree's binary).
    static std::filesystem::path launchTarget(const std::filesystem::path& runningExecutable,
                                              const std::filesystem::path& installedBinary);
    /// The executable of this process (/proc/self/exe, resolved), or empty when unknown.
    static std::filesystem::path runningExecutable();

    /// The text of the entry for `executable`; nullopt when its path cannot be written in a
    /// desktop file (a control character in it).
    static std::optional<std::string> entryText(const std::filesystem::path& executable);
    /// The Exec value for `executable`: the path as is when it has no reserved character, else
    /// in double quotes with `"`, `` ` ``, `$` and `\` escaped; then backslashes doubled as a
    /// desktop file string needs and `%` written as `%%`.
    static std::string execValue(std::string_view executable);
    /// True when the text of a desktop file, read as an autostart entry, starts the program:
    /// a [Desktop Entry] group without `Hidden=true` or `X-GNOME-Autostart-enabled=false`.
    static bool textIsEnabled(std::string_view text);

    bool isEnabled() const override;
    std::optional<std::string> registerItem() override;
    std::optional<std::string> unregisterItem() override;

    const std::filesystem::path& file() const { return file_; }
    const std::filesystem::path& executable() const { return executable_; }

private:
    std::filesystem::path file_;
    std::filesystem::path executable_;
};

}  // namespace orvantis::freedesktop
