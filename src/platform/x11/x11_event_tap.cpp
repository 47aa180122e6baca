#include "platform/x11/x11_event_tap.h"

#include <string>
#include <utility>
#include <vector>

#include "core/log/app_logger.h"
#include "platform/key_output.h"
#include "platform/x11/key_positions.h"
#include "platform/x11/x11_display.h"

#include <X11/XKBlib.h>
#include <X11/Xlib-xcb.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/keysym.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

namespace orvantis::x11 {
namespace {

constexpr std::uint64_t kCapsLockFlag = 0x10000;

// Grab failures arrive as asynchronous protocol errors; this flag collects them between a
// batch of grabs and the XSync after it. Main thread only, like the tap.
bool grabFailed = false;
int recordGrabError(Display*, XErrorEvent* error) {
    if (error->error_code == BadAccess) grabFailed = true;
    return 0;
}

std::uint64_t flagsFromCoreState(unsigned int state) {
    std::uint64_t flags = 0;
    if (state & ShiftMask) flags |= platform::key_flags::kShift;
    if (state & ControlMask) flags |= platform::key_flags::kCommand;
    if (state & Mod1Mask) flags |= platform::key_flags::kOption;
    if (state & Mod4Mask) flags |= platform::key_flags::kControl;
    if (state & LockMask) flags |= kCapsLockFlag;
    return flags;
}

unsigned int coreStateFromFlags(std::uint64_t flags) {
    unsigned int state = 0;
    if (flags & platform::key_flags::kShift) state |= ShiftMask;
    if (flags & platform::key_flags::kCommand) state |= ControlMask;
    if (flags & platform::key_flags::kOption) state |= Mod1Mask;
    if (flags & platform::key_flags::kControl) state |= Mod4Mask;
    return state;
}

}  // namespace

struct X11EventTap::Connection {
    Display* display = nullptr;
    int xiOpcode = 0;
    int xkbEventBase = 0;
    unsigned int numLockMask = 0;
    xkb_context* context = nullptr;
    xkb_keymap* keymap = nullptr;
    xkb_state* state = nullptr;

    ~Connection() {
        if (state != nullptr) xkb_state_unref(state);
        if (keymap != nullptr) xkb_keymap_unref(keymap);
        if (context != nullptr) xkb_context_unref(context);
        closeDisplay(display);
    }

    /// The server's keymap and state, fetched anew (at start and after a keymap change).
    bool loadKeymap() {
        xcb_connection_t* xcb = XGetXCBConnection(display);
        const std::int32_t device = xkb_x11_get_core_keyboard_device_id(xcb);
        if (device < 0) return false;
        xkb_keymap* newKeymap = xkb_x11_keymap_new_from_device(context, xcb, device, XKB_KEYMAP_COMPILE_NO_FLAGS);
        if (newKeymap == nullptr) return false;
        xkb_state* newState = xkb_x11_state_new_from_device(newKeymap, xcb, device);
        if (newState == nullptr) {
            xkb_keymap_unref(newKeymap);
            return false;
        }
        if (state != nullptr) xkb_state_unref(state);
        if (keymap != nullptr) xkb_keymap_unref(keymap);
        keymap = newKeymap;
        state = newState;
        indexModifiers();
        return true;
    }

    /// The flag bit of each modifier of the keymap, looked up once per keymap so that a key
    /// event costs no name look-ups.
    std::vector<std::pair<xkb_mod_index_t, std::uint64_t>> modifierFlags;

    void indexModifiers() {
        modifierFlags.clear();
        const std::pair<const char*, std::uint64_t> names[] = {
            {XKB_MOD_NAME_SHIFT, platform::key_flags::kShift}, {XKB_MOD_NAME_CTRL, platform::key_flags::kCommand},
            {XKB_MOD_NAME_ALT, platform::key_flags::kOption},  {XKB_MOD_NAME_LOGO, platform::key_flags::kControl},
            {XKB_MOD_NAME_CAPS, kCapsLockFlag},
        };
        for (const auto& [name, flag] : names) {
            const xkb_mod_index_t index = xkb_keymap_mod_get_index(keymap, name);
            if (index != XKB_MOD_INVALID) modifierFlags.emplace_back(index, flag);
        }
    }

    std::uint64_t currentFlags() const {
        std::uint64_t flags = 0;
        for (const auto& [index, flag] : modifierFlags)
            if (xkb_state_mod_index_is_active(state, index, XKB_STATE_MODS_EFFECTIVE) > 0) flags |= flag;
        return flags;
    }

    std::string text(unsigned int keycode) const {
        char buffer[64];
        const int size = xkb_state_key_get_utf8(state, keycode, buffer, sizeof buffer);
        if (size <= 0 || static_cast<std::size_t>(size) >= sizeof buffer) return {};
        return std::string(buffer, static_cast<std::size_t>(size));
    }

    /// "Super+Shift+X" for a grab, as Linux users name keys.
    std::string describe(const platform::GrabbedKey& key) const {
        std::string text;
        if (key.modifiers & platform::key_flags::kCommand) text += "Ctrl+";
        if (key.modifiers & platform::key_flags::kControl) text += "Super+";
        if (key.modifiers & platform::key_flags::kOption) text += "Alt+";
        if (key.modifiers & platform::key_flags::kShift) text += "Shift+";
        std::string name = "key " + std::to_string(key.keyCode);
        if (auto keycode = xKeycodeForVirtualKey(key.keyCode)) {
            const KeySym keysym = XkbKeycodeToKeysym(display, static_cast<KeyCode>(*keycode), 0, 0);
            if (const char* keysymName = keysym != NoSymbol ? XKeysymToString(keysym) : nullptr) {
                name = keysymName;
                if (name.size() == 1 && name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - 'a' + 'A');
            }
        }
        return text + name;
    }
};

std::unique_ptr<X11EventTap> X11EventTap::open(const char* displayName, const AppLog* log) {
    int major = XkbMajorVersion, minor = XkbMinorVersion, reason = 0;
    auto connection = std::make_unique<Connection>();
    int xkbError = 0, xkbOpcode = 0;
    connection->display = XkbOpenDisplay(displayName, &connection->xkbEventBase, &xkbError, &major, &minor, &reason);
    if (connection->display == nullptr) return nullptr;
    Display* display = connection->display;
    keepQuietWhenLost(display);
    (void)xkbOpcode;
    int event = 0, error = 0;
    if (!XQueryExtension(display, "XInputExtension", &connection->xiOpcode, &event, &error)) return nullptr;
    int xiMajor = 2, xiMinor = 0;
    if (XIQueryVersion(display, &xiMajor, &xiMinor) != Success) return nullptr;
    connection->context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    if (connection->context == nullptr) return nullptr;
    if (!xkb_x11_setup_xkb_extension(XGetXCBConnection(display), XKB_X11_MIN_MAJOR_XKB_VERSION,
                                     XKB_X11_MIN_MINOR_XKB_VERSION, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr,
                                     nullptr, nullptr, nullptr))
        return nullptr;
    if (!connection->loadKeymap()) return nullptr;
    connection->numLockMask = XkbKeysymToModifiers(display, XK_Num_Lock);
    return std::unique_ptr<X11EventTap>(new X11EventTap(std::move(connection), log));
}

X11EventTap::X11EventTap(std::unique_ptr<Connection> connection, const AppLog* log)
    : connection_(std::move(connection)), log_(log) {}

X11EventTap::~X11EventTap() { stop(); }

int X11EventTap::fileDescriptor() const { return ConnectionNumber(connection_->display); }

bool X11EventTap::connectionLost() const { return x11::connectionLost(connection_->display); }

bool X11EventTap::start(Handler handler) {
    if (!running_ && !isPermitted()) return false;
    handler_ = std::move(handler);
    if (running_) return true;
    Display* display = connection_->display;
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(bits, XI_RawKeyPress);
    XISetMask(bits, XI_RawKeyRelease);
    XISetMask(bits, XI_RawButtonPress);
    XIEventMask mask{XIAllMasterDevices, sizeof bits, bits};
    if (XISelectEvents(display, DefaultRootWindow(display), &mask, 1) != Success) {
        handler_ = nullptr;
        return false;
    }
    XkbSelectEvents(display, XkbUseCoreKbd, XkbStateNotifyMask | XkbNewKeyboardNotifyMask | XkbMapNotifyMask,
                    XkbStateNotifyMask | XkbNewKeyboardNotifyMask | XkbMapNotifyMask);
    connection_->loadKeymap();
    // A held key repeats as presses without releases on this connection, so a repeat is told
    // from a new press while the whole keyboard is held.
    XkbSetDetectableAutoRepeat(display, True, nullptr);
    running_ = true;
    applyGrabs();
    applyKeyboardGrab();
    XFlush(display);
    return true;
}

void X11EventTap::stop() {
    if (!running_) return;
    Display* display = connection_->display;
    releaseGrabs();
    if (keyboardGrabbed_) {
        XUngrabKeyboard(display, CurrentTime);
        keyboardGrabbed_ = false;
    }
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XIEventMask mask{XIAllMasterDevices, sizeof bits, bits};
    XISelectEvents(display, DefaultRootWindow(display), &mask, 1);
    XkbSelectEvents(display, XkbUseCoreKbd, XkbAllEventsMask, 0);
    XSync(display, False);
    running_ = false;
    handler_ = nullptr;
}

void X11EventTap::setGrabbedHotkeys(std::vector<platform::GrabbedKey> keys) {
    wanted_ = std::move(keys);
    if (running_) applyGrabs();
}

void X11EventTap::setWholeKeyboardGrabbed(bool grabbed) {
    wholeKeyboard_ = grabbed;
    if (running_) applyKeyboardGrab();
}

void X11EventTap::releaseGrabs() {
    Display* display = connection_->display;
    const unsigned int locks[] = {0, LockMask, connection_->numLockMask, LockMask | connection_->numLockMask};
    for (const auto& key : activeGrabs_) {
        const auto keycode = xKeycodeForVirtualKey(key.keyCode);
        if (!keycode) continue;
        for (unsigned int lock : locks)
            XUngrabKey(display, static_cast<int>(*keycode), coreStateFromFlags(key.modifiers) | lock,
                       DefaultRootWindow(display));
    }
    activeGrabs_.clear();
    XSync(display, False);
}

void X11EventTap::applyGrabs() {
    releaseGrabs();
    Display* display = connection_->display;
    const unsigned int locks[] = {0, LockMask, connection_->numLockMask, LockMask | connection_->numLockMask};
    for (const auto& key : wanted_) {
        const auto keycode = xKeycodeForVirtualKey(key.keyCode);
        if (!keycode) {
            if (log_ != nullptr) log_->app.warning("keyboard: no key for the hotkey " + connection_->describe(key));
            continue;
        }
        bool duplicate = false;
        for (const auto& active : activeGrabs_) duplicate |= active == key;
        if (duplicate) continue;
        const unsigned int modifiers = coreStateFromFlags(key.modifiers);
        grabFailed = false;
        XSync(display, False);
        auto* previous = XSetErrorHandler(recordGrabError);
        for (unsigned int lock : locks)
            XGrabKey(display, static_cast<int>(*keycode), modifiers | lock, DefaultRootWindow(display), True,
                     GrabModeAsync, GrabModeSync);
        XSync(display, False);
        XSetErrorHandler(previous);
        if (grabFailed) {
            for (unsigned int lock : locks)
                XUngrabKey(display, static_cast<int>(*keycode), modifiers | lock, DefaultRootWindow(display));
            if (log_ != nullptr)
                log_->app.warning("keyboard: " + connection_->describe(key) +
                                  " is held by another program; that hotkey does not work until it lets go");
            continue;
        }
        activeGrabs_.push_back(key);
    }
    XSync(display, False);
}

void X11EventTap::applyKeyboardGrab() {
    Display* display = connection_->display;
    if (wholeKeyboard_ && !keyboardGrabbed_) {
        const int status = XGrabKeyboard(display, DefaultRootWindow(display), True, GrabModeAsync, GrabModeAsync,
                                         CurrentTime);
        keyboardGrabbed_ = status == GrabSuccess;
        heldKeys_.reset();
        // Another client's grab (an open menu, a screen locker): tried again at every event
        // that arrives, so at the latest at the next key; said once per lock.
        if (!keyboardGrabbed_ && !keyboardGrabFailureLogged_ && log_ != nullptr) {
            keyboardGrabFailureLogged_ = true;
            log_->app.warning(std::string("keyboardLock: the keyboard cannot be held (") +
                              (status == AlreadyGrabbed ? "another program holds it" : "the X server refused") +
                              "); keys reach the focused window until it can, retrying");
        }
        if (keyboardGrabbed_ && keyboardGrabFailureLogged_ && log_ != nullptr)
            log_->app.info("keyboardLock: the keyboard is held now");
    } else if (!wholeKeyboard_ && keyboardGrabbed_) {
        XUngrabKeyboard(display, CurrentTime);
        keyboardGrabbed_ = false;
        // Done by the time the unlock returns, so whatever opens next can take the keyboard.
        XSync(display, False);
    }
    if (!wholeKeyboard_) keyboardGrabFailureLogged_ = false;
    XFlush(display);
}

void X11EventTap::dispatchPending() {
    Display* display = connection_->display;
    while (XPending(display) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        if (!running_) continue;
        if (event.type == connection_->xkbEventBase) {
            const auto* xkb = reinterpret_cast<const XkbEvent*>(&event);
            if (xkb->any.xkb_type == XkbStateNotify) {
                const std::uint64_t before = connection_->currentFlags();
                const XkbStateNotifyEvent& s = xkb->state;
                xkb_state_update_mask(connection_->state, static_cast<xkb_mod_mask_t>(s.base_mods),
                                      static_cast<xkb_mod_mask_t>(s.latched_mods),
                                      static_cast<xkb_mod_mask_t>(s.locked_mods),
                                      static_cast<xkb_layout_index_t>(s.base_group),
                                      static_cast<xkb_layout_index_t>(s.latched_group),
                                      static_cast<xkb_layout_index_t>(s.locked_group));
                const std::uint64_t after = connection_->currentFlags();
                if (after != before && handler_) {
                    platform::KeyEvent changed;
                    changed.type = platform::KeyEvent::Type::flagsChanged;
                    changed.flags = after;
                    handler_(changed);
                }
            } else if (xkb->any.xkb_type == XkbNewKeyboardNotify || xkb->any.xkb_type == XkbMapNotify) {
                connection_->loadKeymap();
            }
            continue;
        }
        if (event.type == GenericEvent && event.xcookie.extension == connection_->xiOpcode &&
            XGetEventData(display, &event.xcookie)) {
            const auto* raw = static_cast<const XIRawEvent*>(event.xcookie.data);
            platform::KeyEvent key;
            bool deliver = true;
            const unsigned int keycode = static_cast<unsigned int>(raw->detail);
            switch (event.xcookie.evtype) {
                case XI_RawKeyPress:
                case XI_RawKeyRelease: {
                    // While the whole keyboard is held its keys come as the grab's own events
                    // (below); the server may or may not send raw events then as well.
                    if (keyboardGrabbed_) {
                        deliver = false;
                        break;
                    }
                    const bool down = event.xcookie.evtype == XI_RawKeyPress;
                    key.type = down ? platform::KeyEvent::Type::keyDown : platform::KeyEvent::Type::keyUp;
                    key.keyCode = virtualKeyForXKeycode(keycode).value_or(kUnknownKeyCode);
                    key.flags = connection_->currentFlags();
                    key.autorepeat = (raw->flags & XIKeyRepeat) != 0;
                    if (down) key.characters = connection_->text(keycode);
                    // The press of a key that has a grab waits for the grab's own event, which
                    // the server sends before anything else that happens later (the key's own
                    // release at the latest) when the grab took the press: then the handler is
                    // asked through that one. Modifier state is not to be trusted for this, as
                    // the server's state events may come late.
                    if (down && !keyboardGrabbed_) {
                        for (const auto& grab : activeGrabs_)
                            if (grab.keyCode == key.keyCode) deliver = false;
                        if (!deliver) {
                            deliverPending();
                            pendingPress_ = PendingPress{std::move(key), keycode, static_cast<unsigned long>(raw->time)};
                        }
                    }
                    break;
                }
                case XI_RawButtonPress:
                    if (raw->detail == 1) key.type = platform::KeyEvent::Type::leftMouseDown;
                    else if (raw->detail == 3) key.type = platform::KeyEvent::Type::rightMouseDown;
                    else deliver = false;
                    key.flags = connection_->currentFlags();
                    break;
                default:
                    deliver = false;
            }
            XFreeEventData(display, &event.xcookie);
            if (deliver) {
                deliverPending();
                if (handler_) handler_(key);
            }
            continue;
        }
        if ((event.type == KeyPress || event.type == KeyRelease) && keyboardGrabbed_) {
            // The whole keyboard is held: every key comes to this connection, and nowhere
            // else. A press of a key that is already down is the keyboard's autorepeat (the
            // connection asked for detectable autorepeat, so repeats come without releases).
            const unsigned int keycode = event.xkey.keycode;
            const bool down = event.type == KeyPress;
            platform::KeyEvent key;
            key.type = down ? platform::KeyEvent::Type::keyDown : platform::KeyEvent::Type::keyUp;
            key.keyCode = virtualKeyForXKeycode(keycode).value_or(kUnknownKeyCode);
            key.flags = flagsFromCoreState(event.xkey.state);
            if (keycode < heldKeys_.size()) {
                key.autorepeat = down && heldKeys_[keycode];
                heldKeys_[keycode] = down;
            }
            if (handler_) handler_(key);
            continue;
        }
        if (event.type == KeyPress && !keyboardGrabbed_) {
            // The grab took the press that waited: it is answered here, once.
            if (pendingPress_ && pendingPress_->xKeycode == event.xkey.keycode && pendingPress_->time == event.xkey.time)
                pendingPress_.reset();
            deliverPending();
            // A hotkey's passive grab: the handler decides whether the focused window gets it.
            platform::KeyEvent key;
            key.type = platform::KeyEvent::Type::keyDown;
            key.keyCode = virtualKeyForXKeycode(event.xkey.keycode).value_or(kUnknownKeyCode);
            key.flags = flagsFromCoreState(event.xkey.state);
            key.characters = connection_->text(event.xkey.keycode);
            const auto disposition = handler_ ? handler_(key) : platform::EventDisposition::pass;
            if (disposition == platform::EventDisposition::swallow) {
                // Swallowed, and the grab let go at once: until the hotkey's key comes up it
                // would hold every key, also those the program itself sends next.
                XAllowEvents(display, AsyncKeyboard, event.xkey.time);
                XUngrabKeyboard(display, event.xkey.time);
            } else {
                XAllowEvents(display, ReplayKeyboard, event.xkey.time);
            }
            XFlush(display);
        }
    }
    // A press still waiting stays: its grab event, or else its own release, comes next.
    if (running_ && wholeKeyboard_ && !keyboardGrabbed_) applyKeyboardGrab();
}

void X11EventTap::deliverPending() {
    if (!pendingPress_) return;
    platform::KeyEvent key = std::move(pendingPress_->event);
    pendingPress_.reset();
    // No grab took this press, so the server's modifier state was no grabbed combination, even
    // if the state tracked here (which may lag behind) says so: the press must not pass for a
    // hotkey. This also keeps the program's own key presses from starting hotkeys.
    for (const auto& grab : activeGrabs_)
        if (grab.keyCode == key.keyCode && (key.flags & platform::key_flags::kModifierMask) == grab.modifiers)
            key.flags &= ~platform::key_flags::kModifierMask;
    if (handler_) handler_(key);
}

}  // namespace orvantis::x11
