#include "platform/x11/xtest_key_output.h"

#include <chrono>
#include <thread>
#include <utility>
#include <vector>

#include "core/text/utf.h"
#include "platform/x11/key_positions.h"
#include "platform/x11/x11_display.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <xkbcommon/xkbcommon.h>

namespace orvantis::x11 {
namespace {

// How long a temporarily bound spare keycode stays bound: clients fetch the new mapping before
// they read the key; with less, some of them see the old, empty binding.
constexpr std::chrono::milliseconds kSpareKeySettle{5};

// How long an injection waits for the user to let go of the keys still down (mostly the
// hotkey's own), and how often it looks. Releasing them on the user's behalf and pressing the
// modifiers again afterwards races with the real release: a release that lands between the two
// leaves the modifier stuck down. So the keys are released for the user only after this wait.
constexpr std::chrono::milliseconds kHeldKeysWait{400};
constexpr std::chrono::milliseconds kHeldKeysPoll{3};

}  // namespace

struct XTestKeyOutput::Connection {
    Display* display = nullptr;
    ~Connection() {
        closeDisplay(display);
    }

    void key(unsigned int keycode, bool down) const { XTestFakeKeyEvent(display, keycode, down ? True : False, 0); }

    unsigned int keycodeOf(KeySym keysym) const { return XKeysymToKeycode(display, keysym); }

    /// Keys that are down right now, and which of them are modifiers.
    struct HeldKeys {
        std::vector<unsigned int> modifiers;
        std::vector<unsigned int> others;
    };
    HeldKeys heldKeys() const {
        HeldKeys held;
        char keys[32] = {};
        XQueryKeymap(display, keys);
        XModifierKeymap* map = XGetModifierMapping(display);
        auto isModifier = [map](unsigned int keycode) {
            if (map == nullptr) return false;
            for (int i = 0; i < 8 * map->max_keypermod; ++i)
                if (map->modifiermap[i] == keycode) return true;
            return false;
        };
        for (unsigned int keycode = 8; keycode < 256; ++keycode) {
            if ((keys[keycode / 8] & (1 << (keycode % 8))) == 0) continue;
            (isModifier(keycode) ? held.modifiers : held.others).push_back(keycode);
        }
        if (map != nullptr) XFreeModifiermap(map);
        return held;
    }

    bool anyKeyHeld() const {
        char keys[32] = {};
        XQueryKeymap(display, keys);
        for (unsigned int keycode = 8; keycode < 256; ++keycode)
            if ((keys[keycode / 8] & (1 << (keycode % 8))) != 0) return true;
        return false;
    }

    /// Returns once no key is down, or after `limit`.
    void waitForKeysUp(std::chrono::milliseconds limit) const {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (anyKeyHeld() && std::chrono::steady_clock::now() < deadline) std::this_thread::sleep_for(kHeldKeysPoll);
    }

    unsigned int lockedGroup() const {
        XkbStateRec state{};
        XkbGetState(display, XkbUseCoreKbd, &state);
        return state.locked_group;
    }
    unsigned int lockedModifiers() const {
        XkbStateRec state{};
        XkbGetState(display, XkbUseCoreKbd, &state);
        return state.locked_mods;
    }
};

namespace {

/// Releases every key the user holds for its lifetime, and CapsLock if it is locked; the
/// modifiers go down again at the end, other keys stay up (pressed again they would type).
/// A key still down, like the key of the hotkey that started the injection, would otherwise
/// swallow the program's own press of the same key.
class HeldKeysRelease {
public:
    explicit HeldKeysRelease(const XTestKeyOutput::Connection& connection)
        : connection_(connection), held_(connection.heldKeys()),
          capsLocked_((connection.lockedModifiers() & LockMask) != 0) {
        for (unsigned int keycode : held_.others) connection_.key(keycode, false);
        for (unsigned int keycode : held_.modifiers) connection_.key(keycode, false);
        if (capsLocked_) XkbLockModifiers(connection_.display, XkbUseCoreKbd, LockMask, 0);
    }
    ~HeldKeysRelease() {
        if (capsLocked_) XkbLockModifiers(connection_.display, XkbUseCoreKbd, LockMask, LockMask);
        for (unsigned int keycode : held_.modifiers) connection_.key(keycode, true);
        XFlush(connection_.display);
    }
    HeldKeysRelease(const HeldKeysRelease&) = delete;
    HeldKeysRelease& operator=(const HeldKeysRelease&) = delete;

private:
    const XTestKeyOutput::Connection& connection_;
    XTestKeyOutput::Connection::HeldKeys held_;
    bool capsLocked_;
};

}  // namespace

std::unique_ptr<XTestKeyOutput> XTestKeyOutput::open(const char* displayName) {
    int major = XkbMajorVersion, minor = XkbMinorVersion, reason = 0;
    Display* display = XkbOpenDisplay(displayName, nullptr, nullptr, &major, &minor, &reason);
    if (display == nullptr) return nullptr;
    keepQuietWhenLost(display);
    auto connection = std::make_unique<Connection>();
    connection->display = display;
    int event = 0, error = 0;
    if (!XTestQueryExtension(display, &event, &error, &major, &minor)) return nullptr;
    return std::unique_ptr<XTestKeyOutput>(new XTestKeyOutput(std::move(connection)));
}

XTestKeyOutput::XTestKeyOutput(std::unique_ptr<Connection> connection) : connection_(std::move(connection)) {}

XTestKeyOutput::~XTestKeyOutput() = default;

void XTestKeyOutput::postKey(std::uint16_t virtualKey, std::uint64_t flags) {
    const auto keycode = xKeycodeForVirtualKey(virtualKey);
    if (!keycode) return;  // no such key here: nothing may be half-sent
    injecting_ = true;
    connection_->waitForKeysUp(kHeldKeysWait);
    {
        HeldKeysRelease release(*connection_);
        std::vector<unsigned int> modifiers;
        auto add = [&](std::uint64_t bit, KeySym keysym) {
            if ((flags & bit) == 0) return;
            if (const unsigned int code = connection_->keycodeOf(keysym)) modifiers.push_back(code);
        };
        add(platform::key_flags::kCommand, XK_Control_L);
        add(platform::key_flags::kControl, XK_Super_L);
        add(platform::key_flags::kOption, XK_Alt_L);
        add(platform::key_flags::kShift, XK_Shift_L);
        for (unsigned int code : modifiers) connection_->key(code, true);
        connection_->key(*keycode, true);
        connection_->key(*keycode, false);
        for (auto it = modifiers.rbegin(); it != modifiers.rend(); ++it) connection_->key(*it, false);
    }
    XSync(connection_->display, False);
    injecting_ = false;
}

void XTestKeyOutput::typeText(std::string_view utf8) {
    injecting_ = true;
    connection_->waitForKeysUp(kHeldKeysWait);
    {
        HeldKeysRelease release(*connection_);
        for (const auto& codePoint : text::codePoints(utf8)) typeCodePoint(codePoint.valid ? codePoint.value : U'\uFFFD');
    }
    XSync(connection_->display, False);
    injecting_ = false;
}

void XTestKeyOutput::typeCodePoint(char32_t codePoint) {
    Display* display = connection_->display;
    if (codePoint == U'\n' || codePoint == U'\r') {
        const unsigned int code = connection_->keycodeOf(XK_Return);
        connection_->key(code, true);
        connection_->key(code, false);
        return;
    }
    if (codePoint == U'\t') {
        const unsigned int code = connection_->keycodeOf(XK_Tab);
        connection_->key(code, true);
        connection_->key(code, false);
        return;
    }
    const unsigned int shift = connection_->keycodeOf(XK_Shift_L);
    const unsigned int current = connection_->lockedGroup();
    int minKeycode = 8, maxKeycode = 255;
    XDisplayKeycodes(display, &minKeycode, &maxKeycode);

    // A key of the keymap that types it: the current group first, then the others.
    struct Found {
        unsigned int keycode = 0, group = 0, level = 0;
    };
    std::optional<Found> found;
    for (unsigned int pass = 0; pass < XkbNumKbdGroups && !found; ++pass) {
        for (int keycode = minKeycode; keycode <= maxKeycode && !found; ++keycode) {
            for (unsigned int level = 0; level < 2 && !found; ++level) {
                const unsigned int group = pass == 0 ? current : pass - 1;
                if (pass > 0 && group == current) continue;
                const KeySym keysym = XkbKeycodeToKeysym(display, static_cast<KeyCode>(keycode), static_cast<int>(group),
                                                         static_cast<int>(level));
                if (keysym == NoSymbol) continue;
                if (xkb_keysym_to_utf32(static_cast<xkb_keysym_t>(keysym)) == static_cast<std::uint32_t>(codePoint))
                    found = Found{static_cast<unsigned int>(keycode), group, level};
            }
        }
    }
    if (found) {
        // A key whose groups are merged types the same in every group: no switch needed.
        const bool switchGroup = found->group != current &&
                                 XkbKeycodeToKeysym(display, static_cast<KeyCode>(found->keycode),
                                                    static_cast<int>(current), static_cast<int>(found->level)) !=
                                     XkbKeycodeToKeysym(display, static_cast<KeyCode>(found->keycode),
                                                        static_cast<int>(found->group), static_cast<int>(found->level));
        if (switchGroup) XkbLockGroup(display, XkbUseCoreKbd, found->group);
        if (found->level == 1) connection_->key(shift, true);
        connection_->key(found->keycode, true);
        connection_->key(found->keycode, false);
        if (found->level == 1) connection_->key(shift, false);
        if (switchGroup) XkbLockGroup(display, XkbUseCoreKbd, current);
        return;
    }

    // Not in the keymap: bind it to a spare keycode for one press.
    const xkb_keysym_t keysym = xkb_utf32_to_keysym(static_cast<std::uint32_t>(codePoint));
    if (keysym == XKB_KEY_NoSymbol) return;
    int perKeycode = 0;
    KeySym* mapping = XGetKeyboardMapping(display, static_cast<KeyCode>(minKeycode), maxKeycode - minKeycode + 1,
                                          &perKeycode);
    if (mapping == nullptr || perKeycode < 1) {
        if (mapping != nullptr) XFree(mapping);
        return;
    }
    int spare = 0;
    for (int keycode = maxKeycode; keycode >= minKeycode && spare == 0; --keycode) {
        bool empty = true;
        for (int i = 0; i < perKeycode; ++i) empty &= mapping[(keycode - minKeycode) * perKeycode + i] == NoSymbol;
        if (empty) spare = keycode;
    }
    XFree(mapping);
    if (spare == 0) return;
    std::vector<KeySym> bound(static_cast<std::size_t>(perKeycode), static_cast<KeySym>(keysym));
    XChangeKeyboardMapping(display, spare, perKeycode, bound.data(), 1);
    XSync(display, False);
    std::this_thread::sleep_for(kSpareKeySettle);
    connection_->key(static_cast<unsigned int>(spare), true);
    connection_->key(static_cast<unsigned int>(spare), false);
    XSync(display, False);
    std::this_thread::sleep_for(kSpareKeySettle);
    std::vector<KeySym> cleared(static_cast<std::size_t>(perKeycode), NoSymbol);
    XChangeKeyboardMapping(display, spare, perKeycode, cleared.data(), 1);
    XSync(display, False);
}

}  // namespace orvantis::x11
