#pragma once

#include <bitset>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/key_events.h"

namespace orvantis {
struct AppLog;
}

namespace orvantis::x11 {

/// The session's keyboard and mouse tap on X11. Every key comes in as an XInput2 raw event on
/// the root window, with its text from an xkb_state kept in step with the server's XKB state
/// events, so that typing is watched without being taken from anyone. Hotkeys are passive key
/// grabs (with every combination of Caps Lock and Num Lock), held synchronously: the handler
/// decides, and a passed hotkey is replayed to the focused window. A grab that another program
/// already holds is logged as a warning naming the keys. The whole-keyboard switch grabs the
/// keyboard (retried on every dispatch while another grab holds it).
///
/// Events are read when the owner calls dispatchPending(), whenever fileDescriptor() is
/// readable. Holds a display connection of its own. Main thread only.
class X11EventTap final : public platform::EventTap {
public:
    /// The key code reported for a key outside the table of physical positions.
    static constexpr std::uint16_t kUnknownKeyCode = 0xFFFF;

    /// Connects to `displayName` ($DISPLAY when null). Null without a display, XKB or XInput 2.
    /// `log` may be null.
    static std::unique_ptr<X11EventTap> open(const char* displayName, const AppLog* log);
    ~X11EventTap() override;
    X11EventTap(const X11EventTap&) = delete;
    X11EventTap& operator=(const X11EventTap&) = delete;

    bool start(Handler handler) override;
    void stop() override;
    bool isRunning() const override { return running_; }
    void reenable() override {}
    /// True when the permission check passes (always, without one).
    bool isPermitted() const override { return !permissionCheck_ || permissionCheck_(); }
    /// What start() asks first: the desktop grants watching the keyboard. The program asks for
    /// the accessibility bus, as the text path needs it; a refused check makes start() fail,
    /// so the tray asks the user and retries.
    void setPermissionCheck(std::function<bool()> check) { permissionCheck_ = std::move(check); }
    void setGrabbedHotkeys(std::vector<platform::GrabbedKey> keys) override;
    void setWholeKeyboardGrabbed(bool grabbed) override;

    /// The connection's descriptor, to watch for input.
    int fileDescriptor() const;
    /// Reads and handles every event that has arrived. Never blocks.
    void dispatchPending();
    /// True once the X server has gone away: the descriptor then stays readable with nothing
    /// to read, so the owner stops watching it.
    bool connectionLost() const;

    /// The grabs that took effect, for tests and diagnostics.
    const std::vector<platform::GrabbedKey>& activeGrabs() const { return activeGrabs_; }

    struct Connection;  ///< the display connection; opaque outside the backend

private:
    X11EventTap(std::unique_ptr<Connection> connection, const AppLog* log);
    void applyGrabs();
    void releaseGrabs();
    void applyKeyboardGrab();
    void deliverPending();
    std::function<bool()> permissionCheck_;

    /// A key press that waits for the grab event that may follow it.
    struct PendingPress {
        platform::KeyEvent event;
        unsigned int xKeycode;
        unsigned long time;
    };

    std::unique_ptr<Connection> connection_;
    const AppLog* log_;
    Handler handler_;
    bool running_ = false;
    std::vector<platform::GrabbedKey> wanted_;
    std::vector<platform::GrabbedKey> activeGrabs_;
    bool wholeKeyboard_ = false;
    bool keyboardGrabbed_ = false;
    bool keyboardGrabFailureLogged_ = false;
    /// The X key codes that are down while the whole keyboard is held, to tell autorepeat.
    std::bitset<256> heldKeys_;
    std::optional<PendingPress> pendingPress_;
};

}  // namespace orvantis::x11
