#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orvantis::platform {

/// One keyboard or mouse event of the whole session, as the event tap reports it. Key codes and
/// flag bits are those of `key_code` and `key_flags` in key_output.h, whatever the backend.
struct KeyEvent {
    /// The kinds of event the tap reports. The numeric values are the raw type numbers that the
    /// log shows ("tap disabled (4294967294)").
    enum class Type : std::uint32_t {
        leftMouseDown = 1,
        rightMouseDown = 3,
        keyDown = 10,
        keyUp = 11,
        flagsChanged = 12,   ///< a modifier went down or up; `flags` holds the new state
        systemDefined = 14,  ///< media, brightness and similar keys; see `subtype`
        tapDisabledByTimeout = 0xFFFFFFFE,    ///< the desktop turned the tap off: too slow
        tapDisabledByUserInput = 0xFFFFFFFF,  ///< the desktop turned the tap off: user action
    };

    /// `subtype` of a system-defined event from a media or brightness key.
    static constexpr std::int32_t kMediaKeySubtype = 8;
    /// `subtype` of a system-defined event that the backend could not classify.
    static constexpr std::int32_t kUnknownSubtype = -1;

    Type type = Type::keyDown;
    /// The physical key position; 0 for events without a key.
    std::uint16_t keyCode = 0;
    /// Modifier state at the time of the event, `key_flags` bits plus any bits of the backend's
    /// own (Caps Lock and the like), which hotkey matching ignores.
    std::uint64_t flags = 0;
    /// True for a key down that the keyboard's autorepeat produced.
    bool autorepeat = false;
    /// UTF-8 text the key typed in the active layout, modifiers applied; empty for keys without
    /// text (function keys, arrows, Escape) and for other event types.
    std::string characters;
    /// System-defined events only: `kMediaKeySubtype` or another backend subtype, or
    /// `kUnknownSubtype`.
    std::int32_t subtype = kUnknownSubtype;
};

/// What the tap's handler decides for one event.
enum class EventDisposition {
    pass,     ///< the focused application receives the event
    swallow,  ///< nobody else receives the event
};

/// A key with modifiers that the tap must be able to hold back. `modifiers` holds only the four
/// `key_flags::kModifierMask` bits; the backend grabs the combination whatever the state of
/// Caps Lock, Num Lock and the other lock keys.
struct GrabbedKey {
    std::uint16_t keyCode = 0;
    std::uint64_t modifiers = 0;
    bool operator==(const GrabbedKey&) const = default;
};

/// The session-wide keyboard and mouse tap: every key down, key up, modifier change, left and
/// right mouse down and system-defined key event of the session, delivered on the main thread,
/// each answered synchronously with pass or swallow.
///
/// A desktop may only be able to hold back events it was told about beforehand (on X11 a key
/// can be swallowed only when it was grabbed). The tap therefore keeps a list of grabbed keys
/// and a whole-keyboard switch; for any other event the handler's answer is ignored and the
/// event reaches the focused application anyway. A grabbed key that the handler passes is
/// replayed to the focused application.
///
/// Owned by the composition root; main thread only.
class EventTap {
public:
    using Handler = std::function<EventDisposition(const KeyEvent&)>;

    virtual ~EventTap() = default;

    /// Installs the tap and starts delivering events to `handler`. Answers false, changing
    /// nothing, when the desktop refuses (no permission to watch the keyboard, no connection to
    /// the display). Called while running, it replaces the handler and answers true.
    virtual bool start(Handler handler) = 0;
    /// Removes the tap and forgets the handler; releases every grab. Does nothing when not
    /// running.
    virtual void stop() = 0;
    /// True from a successful start() to stop(), also while the desktop has the tap disabled.
    virtual bool isRunning() const = 0;
    /// Turns delivery back on after the desktop disabled the tap (the handler has received a
    /// `tapDisabledBy...` event). Does nothing when not running or not disabled.
    virtual void reenable() = 0;
    /// Whether the desktop currently lets this process watch the keyboard: a cheap check that
    /// never prompts the user. Answers true where no such permission exists.
    virtual bool isPermitted() const = 0;

    /// Replaces the list of key combinations that must be swallowable. Kept while not running
    /// and applied at the next start(). A combination the desktop will not grab (another
    /// program holds it) is left out silently: its events arrive but cannot be swallowed.
    virtual void setGrabbedHotkeys(std::vector<GrabbedKey> keys) = 0;
    /// While true every key and modifier event is swallowable (the whole keyboard is held);
    /// the mouse stays untouched. Kept while not running and applied at the next start().
    virtual void setWholeKeyboardGrabbed(bool grabbed) = 0;
};

}  // namespace orvantis::platform
