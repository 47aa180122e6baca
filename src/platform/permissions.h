#pragma once

namespace orvantis::platform {

/// The two desktop permissions Orvantis depends on, asked of the desktop every time: nothing
/// is cached, so a permission granted or withdrawn while the program runs shows at the next
/// question.
///
/// "Accessibility" is the right to read and write the text of other applications and to send
/// them keys. On Linux it means the desktop's accessibility bus is reachable and switched on;
/// asking for it switches the bus on and the desktop's accessibility settings are the pane
/// that can change it. "Input monitoring" is the right to watch every key of the session. On
/// X11 it means the X server offers the input extension; nobody can grant it, so asking only
/// reports it and there is no pane to open. A desktop without either concept answers granted.
///
/// Owned by the composition root. Main thread in practice; no call blocks for long.
class Permissions {
public:
    virtual ~Permissions() = default;

    /// True when the accessibility right is granted now. Any failure to find out answers false.
    virtual bool hasAccessibility() const = 0;
    /// Asks the desktop to grant the accessibility right, showing its own prompt or switching
    /// the accessibility bus on, and answers whether it is granted afterwards. A grant that
    /// takes the user a while is not waited for: the answer is then false. A failed request
    /// answers false, silently.
    virtual bool requestAccessibility() = 0;
    /// Shows the desktop's accessibility settings. Does nothing, silently, when the desktop has
    /// no such page or it cannot be opened.
    virtual void openAccessibilitySettings() = 0;

    /// True when the program may watch the keys of the whole session now. Any failure to find
    /// out answers false.
    virtual bool hasInputMonitoring() const = 0;
    /// Asks the desktop for the right to watch the keys and answers whether it is granted. A
    /// desktop that cannot grant it shows nothing and answers the current state.
    virtual bool requestInputMonitoring() = 0;
    /// True when the desktop has a settings page for watching keys that
    /// openInputMonitoringSettings() can show; false on X11, where the right comes with the server.
    virtual bool hasInputMonitoringSettings() const = 0;
    /// Shows the desktop's settings page for watching keys. Does nothing, silently, when the
    /// desktop has none (X11) or it cannot be opened: ask hasInputMonitoringSettings() first.
    virtual void openInputMonitoringSettings() = 0;
};

}  // namespace orvantis::platform
