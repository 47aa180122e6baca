#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvantis::platform {

/// A running application as the features that care about applications see it.
struct ApplicationInfo {
    /// The application's identifier: on Linux its desktop file id ("org.gnome.Terminal",
    /// "debian-xterm"), else its window class ("XTerm").
    std::string bundleID;
    /// The name shown to users; the identifier when nothing better is known.
    std::string localizedName;
    /// The process, or 0 when the desktop does not tell.
    std::int64_t processID = 0;
    bool operator==(const ApplicationInfo&) const = default;
};

/// The applications of the desktop. Main thread only.
class Applications {
public:
    virtual ~Applications() = default;
    /// The application of the window that has the focus, or nullopt when no window has it or
    /// the desktop cannot tell.
    virtual std::optional<ApplicationInfo> frontmostApplication() const = 0;
};

}  // namespace orvantis::platform
