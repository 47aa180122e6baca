#pragma once

// Test-only helpers for tests that run against a live X display.

#include <chrono>
#include <csignal>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/text/utf.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <xkbcommon/xkbcommon.h>

namespace orvantis::x11::testing {

/// A key press as an X client receives it: the key and the modifier state at the press.
struct ReceivedKeyPress {
    unsigned int keycode = 0;
    unsigned int state = 0;  ///< the core state: modifier bits, and the group in bits 13 and 14
};

/// The eight core modifier bits of an event's state, without the group and the buttons.
inline unsigned int coreModifiers(unsigned int state) {
    return state & (ShiftMask | LockMask | ControlMask | Mod1Mask | Mod2Mask | Mod3Mask | Mod4Mask | Mod5Mask);
}

/// A focused window of our own that records the key presses it receives, and their text.
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
            readPending();
            if (meanwhile) meanwhile();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return typed_;
    }

    /// Every key press received so far, read until `expectedCount` arrived or a second has passed.
    const std::vector<ReceivedKeyPress>& presses(std::size_t expectedCount) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        while (presses_.size() < expectedCount && std::chrono::steady_clock::now() < deadline) {
            readPending();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return presses_;
    }

private:
    void readPending() {
        while (XPending(display_) > 0) {
            XEvent event;
            XNextEvent(display_, &event);
            if (event.type != KeyPress) continue;
            const unsigned int state = event.xkey.state;
            presses_.push_back({event.xkey.keycode, state});
            const KeySym keysym = XkbKeycodeToKeysym(display_, static_cast<KeyCode>(event.xkey.keycode),
                                                     XkbGroupForCoreState(state), (state & ShiftMask) ? 1 : 0);
            const auto codePoint = xkb_keysym_to_utf32(static_cast<xkb_keysym_t>(keysym));
            // A key bound only for the press is unbound again by now: it reads as no symbol.
            if (keysym == NoSymbol) typed_ += "<spare>";
            else if (keysym == XK_BackSpace) typed_ += "<BS>";
            else if (codePoint != 0) typed_ += text::encodeUtf8(static_cast<char32_t>(codePoint));
        }
    }

    Display* display_;
    Window window_;
    std::string typed_;
    std::vector<ReceivedKeyPress> presses_;
};

/// A key that the user holds down through XTest for one scope; let go at the end if it is
/// still down, so that a failing test leaves no key stuck for the next one.
class HeldKey {
public:
    HeldKey(Display* display, KeySym keysym) : display_(display), keycode_(XKeysymToKeycode(display, keysym)) {
        XTestFakeKeyEvent(display_, keycode_, True, 0);
        XSync(display_, False);
    }
    ~HeldKey() {
        if (isDown()) XTestFakeKeyEvent(display_, keycode_, False, 0);
        XSync(display_, False);
    }
    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;

    unsigned int keycode() const { return keycode_; }

    /// True while the server counts the key as physically down.
    bool isDown() const {
        char keys[32] = {};
        XQueryKeymap(display_, keys);
        return (keys[keycode_ / 8] & (1 << (keycode_ % 8))) != 0;
    }

private:
    Display* display_;
    unsigned int keycode_;
};

/// An X server of the test's own (Xvfb on a free display number), to be killed under the code
/// being tested. `name()` is empty when Xvfb is not installed or did not start.
class PrivateXServer {
public:
    PrivateXServer() {
        int pipeEnds[2];
        if (::pipe(pipeEnds) != 0) return;
        char program[] = "Xvfb";
        char displayFd[] = "-displayfd";
        char noTcp[] = "-nolisten";
        char tcp[] = "tcp";
        char noReset[] = "-noreset";
        std::string fdText = std::to_string(pipeEnds[1]);
        char* argv[] = {program, displayFd, fdText.data(), noTcp, tcp, noReset, nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        const bool started = ::posix_spawnp(&pid_, program, &actions, nullptr, argv, environ) == 0;
        posix_spawn_file_actions_destroy(&actions);
        ::close(pipeEnds[1]);
        if (!started) {
            pid_ = -1;
            ::close(pipeEnds[0]);
            return;
        }
        // Xvfb writes the display number once it accepts connections.
        std::string number;
        char c = 0;
        while (::read(pipeEnds[0], &c, 1) == 1 && c != '\n') number += c;
        ::close(pipeEnds[0]);
        if (!number.empty()) name_ = ":" + number;
    }
    ~PrivateXServer() { kill(); }
    PrivateXServer(const PrivateXServer&) = delete;
    PrivateXServer& operator=(const PrivateXServer&) = delete;

    const std::string& name() const { return name_; }

    /// Ends the server and waits until it has gone.
    void kill() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGTERM);
        int status = 0;
        ::waitpid(pid_, &status, 0);
        pid_ = -1;
    }

private:
    pid_t pid_ = -1;
    std::string name_;
};

/// Ignores SIGPIPE for one scope, as the program does, so that writes to a server that went
/// away fail instead of ending the test.
class BrokenPipesIgnored {
public:
    BrokenPipesIgnored() : previous_(std::signal(SIGPIPE, SIG_IGN)) {}
    ~BrokenPipesIgnored() { std::signal(SIGPIPE, previous_); }
    BrokenPipesIgnored(const BrokenPipesIgnored&) = delete;
    BrokenPipesIgnored& operator=(const BrokenPipesIgnored&) = delete;

private:
    void (*previous_)(int);
};

}  // namespace orvantis::x11::testing
