#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

#include "platform/main_loop.h"
#include "platform/subscription.h"

class QObject;
class QWindow;

namespace orvantis::ui {

/// Takes the whole desktop's keyboard and pointer for one of our own windows, without giving
/// that window the input focus: the application whose text is selected stays the focused one,
/// and every key and click goes to our window until release. On X11 these are active grabs
/// (XGrabKeyboard, and XGrabPointer or its XInput2 form) on the window; where the platform
/// offers no grab (Qt's offscreen platform in tests) the no-op form pretends success.
/// Main thread only.
class KeyboardGrab {
public:
    virtual ~KeyboardGrab() = default;
    /// One attempt. Answers false, holding nothing, when another client holds the keyboard
    /// (a hotkey grab that is still active, an open menu) or the window is not mapped yet.
    /// The pointer is taken too when it can be; failing to take it is not a failure.
    virtual bool tryGrab(QWindow& window) = 0;
    /// Gives back what tryGrab() took. Safe when nothing is held.
    virtual void release() = 0;
    /// Whether the pointer was taken as well: clicks anywhere on the desktop then arrive at
    /// the window, at positions outside its rectangle.
    virtual bool holdsPointer() const = 0;

    /// The real grab on X11, the no-op one on every other platform.
    static std::unique_ptr<KeyboardGrab> forPlatform();
    /// Grabs nothing and always succeeds.
    static std::unique_ptr<KeyboardGrab> none();
};

/// Keeps a KeyboardGrab for a window while the window is shown: tries at once, then again
/// every `kRetryInterval` for up to `kRetryLimit` while another client holds the keyboard.
/// Timers come from the main loop. Owned by the window's controller; main thread only.
class HeldKeyboard {
public:
    static constexpr std::chrono::milliseconds kRetryInterval{50};
    static constexpr std::chrono::milliseconds kRetryLimit{1000};

    HeldKeyboard(KeyboardGrab& grab, platform::MainLoop& loop) : grab_(grab), loop_(loop) {}
    ~HeldKeyboard() { release(); }
    HeldKeyboard(const HeldKeyboard&) = delete;
    HeldKeyboard& operator=(const HeldKeyboard&) = delete;

    /// Starts holding the keyboard for `window`; the window must outlive the hold. A hold
    /// already under way is released first. Gives up silently after the retry limit: the
    /// window then simply gets no keys.
    void hold(QWindow& window);
    /// Ends the hold and any retries.
    void release();
    bool isHeld() const { return held_; }
    bool holdsPointer() const { return held_ && grab_.holdsPointer(); }
    /// Attempts made for the present hold.
    std::size_t attempts() const { return attempts_; }

private:
    void attempt();

    KeyboardGrab& grab_;
    platform::MainLoop& loop_;
    QWindow* window_ = nullptr;
    bool held_ = false;
    std::size_t attempts_ = 0;
    platform::TimerHandle retry_;
};

/// Calls `changed` each time another window of the desktop becomes the active one (on X11 a
/// change of the root window's _NET_ACTIVE_WINDOW, which window managers keep; without a
/// window manager nothing changes it). Elsewhere, a change of the focus window that Qt sees.
/// The callback runs on the main thread until the subscription is dropped.
Subscription watchActiveWindowChanges(std::function<void()> changed);

/// What closes a popup from outside: another application becoming active, or a press that lands
/// outside the popup. Watching starts a number of main-loop turns after the popup shows, so that
/// the event that opened it does not close it. Main thread only.
class OutsideWatch {
public:
    /// Starts watching for another application's activation; the callback closes.
    using ActivationWatch = std::function<Subscription(std::function<void()>)>;

    /// `close` closes the popup; `watchActivation` defaults to watchActiveWindowChanges().
    OutsideWatch(platform::MainLoop& loop, std::function<void()> close, ActivationWatch watchActivation = {});

    /// The popup has shown: watching starts `turns` turns of the main loop from now, unless it
    /// runs already.
    void startAfter(int turns);
    /// The popup has closed: nothing more is watched, and a pending close is dropped.
    void stop();
    /// Drops a close that a press outside has scheduled.
    void cancelPendingClose() { pendingClose_.cancel(); }
    /// A press at a point that `inside` says is outside the popup closes it on the next turn,
    /// once watching has started.
    void press(bool inside);
    bool watching() const { return watching_; }

private:
    void later(int turns);

    platform::MainLoop& loop_;
    std::function<void()> close_;
    ActivationWatch watchActivation_;
    Subscription activation_;
    bool watching_ = false;
    platform::TimerHandle start_;
    platform::TimerHandle pendingClose_;
};

/// A popup's controller as the application-wide event filter while the popup is shown: the
/// keys that the grab brings to the popup's window pass it first. Removed at the latest when
/// this goes. Main thread only.
class ApplicationEventFilter {
public:
    explicit ApplicationEventFilter(QObject& filter) : filter_(filter) {}
    ~ApplicationEventFilter() { remove(); }
    ApplicationEventFilter(const ApplicationEventFilter&) = delete;
    ApplicationEventFilter& operator=(const ApplicationEventFilter&) = delete;

    /// Installs the filter, unless it is installed already.
    void install();
    void remove();
    bool installed() const { return installed_; }

private:
    QObject& filter_;
    bool installed_ = false;
};

}  // namespace orvantis::ui
