#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/applications.h"
#include "platform/subscription.h"
#include "platform/system_utilities.h"
#include "platform/freedesktop/desktop_entries.h"

namespace orvantis::x11 {

/// The applications of an X session. The frontmost one is the application of the active window
/// (`_NET_ACTIVE_WINDOW` of the window manager), or, without a window manager, of the window
/// that has the input focus. It is identified by its desktop file (through `_GTK_APPLICATION_ID`,
/// the desktop file's StartupWMClass, or a desktop file named like the window class), else by
/// its WM_CLASS class. The desktop files are read at the first question, not at construction.
/// Holds a display connection of its own. Main thread only.
///
/// It also watches the session's applications: `_NET_ACTIVE_WINDOW` changes are activations,
/// and the applications of `_NET_CLIENT_LIST` are the running ones, whose comings and goings
/// are told as launches and terminations. Both properties are kept by the window manager;
/// without one nothing is told. The owner reads the events with dispatchPending() whenever
/// fileDescriptor() is readable.
class X11Applications final : public platform::Applications, public platform::ApplicationWatch {
public:
    /// Connects to `displayName` ($DISPLAY when null); null without a display.
    static std::unique_ptr<X11Applications> open(const char* displayName = nullptr);
    ~X11Applications() override;
    X11Applications(const X11Applications&) = delete;
    X11Applications& operator=(const X11Applications&) = delete;

    std::optional<platform::ApplicationInfo> frontmostApplication() const override;

    std::vector<platform::ApplicationInfo> runningApplications() const override;
    [[nodiscard]] Subscription onActivated(Callback callback) override { return activated_.add(std::move(callback)); }
    [[nodiscard]] Subscription onLaunched(Callback callback) override {
        watchClients();
        return launched_.add(std::move(callback));
    }
    [[nodiscard]] Subscription onTerminated(Callback callback) override {
        watchClients();
        return terminated_.add(std::move(callback));
    }
    /// The connection's descriptor, to watch for the window manager's property changes.
    int fileDescriptor() const;
    /// Reads every event that has arrived and tells of the changes. Never blocks.
    void dispatchPending();

    struct Connection;  ///< the display connection; opaque outside the backend

private:
    explicit X11Applications(std::unique_ptr<Connection> connection);
    const freedesktop::DesktopEntries& desktopEntries() const;

    std::optional<platform::ApplicationInfo> applicationOf(unsigned long window) const;
    std::vector<std::string> runningIDs() const;
    /// Reads the client list the first time someone wants its changes.
    void watchClients();

    std::unique_ptr<Connection> connection_;
    CallbackList<> activated_, launched_, terminated_;
    std::vector<std::string> lastRunning_;  ///< sorted ids of the last client list seen
    bool watchingClients_ = false;
    mutable std::unique_ptr<freedesktop::DesktopEntries> desktopEntries_;  ///< read at first use
};

}  // namespace orvantis::x11
