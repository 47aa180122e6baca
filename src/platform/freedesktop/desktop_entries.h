#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvantis::freedesktop {

/// One installed application as its desktop file describes it.
struct DesktopEntry {
    std::string id;              ///< file name without ".desktop", sub-folders joined by "-"
    std::string name;            ///< the untranslated Name
    std::string startupWMClass;  ///< StartupWMClass, empty when absent
    std::string icon;            ///< Icon: an icon-theme name or a file path, empty when absent
};

/// The desktop files of the applications folders, read once at construction: the user's
/// ($XDG_DATA_HOME/applications) before the system's ($XDG_DATA_DIRS, by default
/// /usr/local/share and /usr/share); for an id that appears twice the first wins. Unreadable
/// or malformed files are skipped.
class DesktopEntries {
public:
    /// Reads the folders of the environment.
    DesktopEntries();
    /// Reads `applicationFolders`, in order (for tests).
    explicit DesktopEntries(const std::vector<std::filesystem::path>& applicationFolders);

    const std::vector<DesktopEntry>& entries() const { return entries_; }
    const DesktopEntry* byID(std::string_view id) const;

    /// The entry of a window with the WM_CLASS instance `instanceName` and class `className`:
    /// the entry whose StartupWMClass is the class (or the instance), else the entry whose id is
    /// the class or the instance, compared without case. Null when none fits.
    const DesktopEntry* forWindowClass(std::string_view instanceName, std::string_view className) const;

    /// Parses one desktop file's text; nullopt when it has no [Desktop Entry] group or no Name.
    static std::optional<DesktopEntry> parse(std::string_view id, std::string_view text);

private:
    void readFolder(const std::filesystem::path& folder);
    std::vector<DesktopEntry> entries_;
};

}  // namespace orvantis::freedesktop
