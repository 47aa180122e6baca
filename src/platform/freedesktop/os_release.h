#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace orvantis::freedesktop {

/// The name and version of the operating system from os-release(5), for the launch banner.
/// A plain value; reading and parsing never fail: what cannot be read is left empty.
struct OsRelease {
    std::string prettyName;  ///< PRETTY_NAME
    std::string name;        ///< NAME
    std::string version;     ///< VERSION

    /// Parses the shell-like assignments of an os-release file. Comments, blank lines, lines
    /// without `=`, invalid keys and values with an unterminated quote are skipped; a later
    /// assignment of a key replaces an earlier one. Control characters in values become spaces.
    static OsRelease parse(std::string_view text);
    /// Parses the file at `path`; a missing or unreadable file gives an empty record.
    static OsRelease readFile(const std::filesystem::path& path);
    /// /etc/os-release, else /usr/lib/os-release.
    static OsRelease readSystem();

    /// PRETTY_NAME; else NAME (or "Linux") followed by VERSION when there is one; else "Linux".
    std::string systemVersion() const;
};

}  // namespace orvantis::freedesktop
