#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace orvantis::freedesktop {

/// One installed application as its desktop file describes it.
struct DesktopEntry {
    std::string id;              ///< file name without ".desktop", sub-folders joined by "-"
    std::string name;            ///< the untranslated Name
    std::string startupWMClass;  ///< StartupWMClass, empty when absent
    std::string icon;            ///< Icon: an icon-theme name or a file path, empty when absent
    bool noDisplay = false;      ///< NoDisplay=true: installed, but kept out of lists the user picks from
    bool hidden = false;         ///< Hidden=true: the entry counts as deleted (parse() only; never listed)
};

/// A file of an applications folder that looked like a desktop file but is not a usable one.
struct SkippedDesktopFile {
    std::filesystem::path path;
    std::string reason;  ///< short and plain, for a log line: "no Name", "larger than 1 MiB"...
};

/// The desktop files of the applications folders, read once at construction: the user's
/// ($XDG_DATA_HOME/applications) before the system's ($XDG_DATA_DIRS, by default
/// /usr/local/share and /usr/share); for an id that appears twice the first wins, and a first
/// one with Hidden=true deletes the id. Unreadable, oversized, dangling, binary or malformed
/// files are skipped and each is listed once in skipped(); folders that cannot be entered are
/// passed over. Never throws.
class DesktopEntries {
public:
    /// Real desktop files are a few kilobytes; anything larger is not read.
    static constexpr std::uintmax_t kMaxFileSize = 1 << 20;

    /// Reads the folders of the environment.
    DesktopEntries();
    /// Reads `applicationFolders`, in order (for tests).
    explicit DesktopEntries(const std::vector<std::filesystem::path>& applicationFolders);

    /// The applications, hidden ones left out, NoDisplay ones included (they still name windows).
    const std::vector<DesktopEntry>& entries() const { return entries_; }
    /// The files passed over, one each, in reading order.
    const std::vector<SkippedDesktopFile>& skipped() const { return skipped_; }
    const DesktopEntry* byID(std::string_view id) const;

    /// The entry of a window with the WM_CLASS instance `instanceName` and class `className`:
    /// the entry whose StartupWMClass is the class (or the instance), else the entry whose id is
    /// the class or the instance, compared without case. Null when none fits.
    const DesktopEntry* forWindowClass(std::string_view instanceName, std::string_view className) const;

    /// Parses one desktop file's text; nullopt when it has no [Desktop Entry] group or no Name,
    /// or a Name that is not UTF-8. A Hidden=true entry comes back with `hidden` set.
    static std::optional<DesktopEntry> parse(std::string_view id, std::string_view text);

private:
    struct Parsed;
    static Parsed parseWithReason(std::string_view id, std::string_view text);
    void readFolder(const std::filesystem::path& folder);
    void readFile(const std::filesystem::path& path, std::string id);
    std::vector<DesktopEntry> entries_;
    std::vector<SkippedDesktopFile> skipped_;
    /// Every id met so far, hidden ones included: a later folder's file of the same id is masked.
    std::unordered_set<std::string> ids_;
};

}  // namespace orvantis::freedesktop
