#pragma once

#include <memory>
#include <optional>

#include "platform/applications.h"
#include "platform/freedesktop/desktop_entries.h"

namespace orvantis::x11 {

/// The applications of an X session. The frontmost one is the application of the active window
/// (`_NET_ACTIVE_WINDOW` of the window manager), or, without a window manager, of the window
/// that has the input focus. It is identified by its desktop file (through `_GTK_APPLICATION_ID`,
/// the desktop file's StartupWMClass, or a desktop file named like the window class), else by
/// its WM_CLASS class. The desktop files are read at the first question, not at construction.
/// Holds a display connection of its own. Main thread only.
class X11Applications final : public platform::Applications {
public:
    /// Connects to `displayName` ($DISPLAY when null); null without a display.
    static std::unique_ptr<X11Applications> open(const char* displayName = nullptr);
    ~X11Applications() override;
    X11Applications(const X11Applications&) = delete;
    X11Applications& operator=(const X11Applications&) = delete;

    std::optional<platform::ApplicationInfo> frontmostApplication() const override;

    struct Connection;  ///< the display connection; opaque outside the backend

private:
    explicit X11Applications(std::unique_ptr<Connection> connection);
    const freedesktop::DesktopEntries& desktopEntries() const;

    std::unique_ptr<Connection> connection_;
    mutable std::unique_ptr<freedesktop::DesktopEntries> desktopEntries_;  ///< read at first use
};

}  // namespace orvantis::x11
