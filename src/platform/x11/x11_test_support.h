#pragma once

// Test-only helpers for tests that run against a live X display.

#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "core/text/utf.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/keysym.h>
#include <xkbcommon/xkbcommon.h>

namespace orvantis::x11::testing {

/// A focused window of our own that records the text of the key presses it receives.
class RecordingWindow {
public:
    explicit RecordingWindow(Display* display) : display_(display) {
        window_ = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 200, 100, 0, 0, 0);
        XSelectInput(display, window_, KeyPressMask | StructureNotifyMask);
        XMapRaised(display, window_);
        XEvent event;
        do XNextEvent(display, &event);
        while (event.type != MapNotify);
        XSetInputFocus(display, window_, RevertToParent, CurrentTime);
        XSync(display, False);
    }
    ~RecordingWindow() { XDestroyWindow(display_, window_); }

    /// The text typed so far, read until `expectedBytes` arrived or a second has passed.
    std::string text(std::size_t expectedBytes, const std::function<void()>& meanwhile = {}) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        while (typed_.size() < expectedBytes && std::chrono::steady_clock::now() < deadline) {
            while (XPending(display_) > 0) {
                XEvent event;
                XNextEvent(display_, &event);
                if (event.type != KeyPress) continue;
                const unsigned int state = event.xkey.state;
                const KeySym keysym = XkbKeycodeToKeysym(display_, static_cast<KeyCode>(event.xkey.keycode),
                                                         XkbGroupForCoreState(state), (state & ShiftMask) ? 1 : 0);
                const auto codePoint = xkb_keysym_to_utf32(static_cast<xkb_keysym_t>(keysym));
                // A key bound only for the press is unbound again by now: it reads as no symbol.
                if (keysym == NoSymbol) typed_ += "<spare>";
                else if (keysym == XK_BackSpace) typed_ += "<BS>";
                else if (codePoint != 0) typed_ += text::encodeUtf8(static_cast<char32_t>(codePoint));
            }
            if (meanwhile) meanwhile();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return typed_;
    }

private:
    Display* display_;
    Window window_;
    std::string typed_;
};

}  // namespace orvantis::x11::testing
