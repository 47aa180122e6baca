#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/key_events.h"

namespace orvantis::sim {

/// A key down of `keyCode` with `flags`, typing `characters`.
platform::KeyEvent keyDown(std::uint16_t keyCode, std::uint64_t flags = 0, std::string characters = {},
                           bool autorepeat = false);
/// A key up of `keyCode` with `flags`.
platform::KeyEvent keyUp(std::uint16_t keyCode, std::uint64_t flags = 0);
/// A modifier change to the state `flags`.
platform::KeyEvent flagsChanged(std::uint64_t flags);
/// A left (or right) mouse button press.
platform::KeyEvent mouseDown(bool right = false);
/// A media, brightness or other system-defined key event of `subtype`.
platform::KeyEvent systemDefined(std::int32_t subtype);

/// The simulated session-wide tap. Tests play the desktop: they deliver events and read the
/// handler's answers, refuse the permission so that start() fails, and disable the tap as a
/// slow handler would get it disabled. It also models the grab rule of X11: an event that the
/// handler swallows still reaches the application when it was not grabbed. Main thread only.
class EventTap final : public platform::EventTap {
public:
    // platform::EventTap
    bool start(Handler handler) override;
    void stop() override;
    bool isRunning() const override { return running_; }
    void reenable() override;
    bool isPermitted() const override { return permitted_; }
    void setGrabbedHotkeys(std::vector<platform::GrabbedKey> keys) override;
    void setWholeKeyboardGrabbed(bool grabbed) override;

    /// While false, start() fails and isPermitted() answers false. True at first.
    void setPermitted(bool permitted) { permitted_ = permitted; }

    /// Hands `event` to the handler and answers its decision. Pass, without asking the handler,
    /// when the tap is not running or is disabled. Events that reach the focused application
    /// (passed, or swallowed without a grab) are recorded in applicationEvents().
    platform::EventDisposition deliver(const platform::KeyEvent& event);
    /// Disables the tap as the desktop does, and tells the handler with an event of type
    /// `reason` (tapDisabledByTimeout or tapDisabledByUserInput). Does nothing when not running.
    void disable(platform::KeyEvent::Type reason = platform::KeyEvent::Type::tapDisabledByTimeout);
    /// False between disable() and reenable().
    bool isEnabled() const { return running_ && enabled_; }

    /// Whether the desktop could hold `event` back: a key or modifier event while the whole
    /// keyboard is grabbed, or a key down or up whose key code and four modifier bits are in
    /// the grab list.
    bool isGrabbed(const platform::KeyEvent& event) const;
    /// The grab list last set.
    const std::vector<platform::GrabbedKey>& grabbedHotkeys() const { return grabbed_; }
    bool wholeKeyboardGrabbed() const { return wholeKeyboard_; }
    /// Calls of setGrabbedHotkeys() so far.
    std::size_t grabUpdates() const { return grabUpdates_; }
    /// Successful start() calls so far.
    std::size_t startCount() const { return starts_; }
    /// Calls of reenable() that turned a disabled tap back on.
    std::size_t reenableCount() const { return reenables_; }
    /// The events the focused application received, in order.
    const std::vector<platform::KeyEvent>& applicationEvents() const { return applicationEvents_; }

private:
    Handler handler_;
    bool running_ = false;
    bool enabled_ = false;
    bool permitted_ = true;
    bool wholeKeyboard_ = false;
    std::vector<platform::GrabbedKey> grabbed_;
    std::size_t grabUpdates_ = 0;
    std::size_t starts_ = 0;
    std::size_t reenables_ = 0;
    std::vector<platform::KeyEvent> applicationEvents_;
};

}  // namespace orvantis::sim
