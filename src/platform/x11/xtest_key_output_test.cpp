#include "platform/x11/xtest_key_output.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "platform/x11/key_positions.h"
#include "platform/x11/x11_test_support.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <xkbcommon/xkbcommon.h>

namespace orvantis::x11 {
namespace {

TEST(XTestKeyOutputTest, VirtualKeysMapToPhysicalXKeycodes) {
    EXPECT_EQ(xKeycodeForVirtualKey(0), 38);    // A
    EXPECT_EQ(xKeycodeForVirtualKey(51), 22);   // Backspace
    EXPECT_EQ(xKeycodeForVirtualKey(123), 113); // Left
    EXPECT_EQ(xKeycodeForVirtualKey(117), 119); // Forward Delete
    EXPECT_FALSE(xKeycodeForVirtualKey(122).has_value());
}

TEST(XTestKeyOutputTest, NoDisplayGivesNoOutput) { EXPECT_EQ(XTestKeyOutput::open(":9999"), nullptr); }

// Needs the virtual desktop's X session with the layouts us,ru; runs in the end-to-end desktop
// probes and skips elsewhere.
TEST(XTestKeyOutputTest, LiveSessionTypesTextInEveryGroupAndThroughASpareKey) {
    auto output = XTestKeyOutput::open();
    Display* display = XOpenDisplay(nullptr);
    if (!output || display == nullptr) GTEST_SKIP() << "no X display";
    {
        testing::RecordingWindow window(display);
        XkbLockGroup(display, XkbUseCoreKbd, 0);
        XSync(display, False);
        output->typeText("aZ1п€");
        output->postKey(51, 0);
        // € is on no key of us or ru: it goes through a spare keycode bound for the press.
        const std::string expected = "aZ1п<spare><BS>";
        EXPECT_EQ(window.text(expected.size()), expected);
        XkbStateRec state{};
        XkbGetState(display, XkbUseCoreKbd, &state);
        EXPECT_EQ(state.locked_group, 0) << "the group is restored after a character of another group";
    }
    XCloseDisplay(display);
}

bool keyDown(Display* display, unsigned int keycode) {
    char keys[32] = {};
    XQueryKeymap(display, keys);
    return (keys[keycode / 8] & (1 << (keycode % 8))) != 0;
}

// The user lets go of Shift (the hotkey's modifier) a moment after the injection began: the
// text comes out unshifted, and Shift is not pressed again on the user's behalf.
TEST(XTestKeyOutputTest, LiveSessionWaitsForAReleasedModifierAndLeavesItUp) {
    auto output = XTestKeyOutput::open();
    Display* display = XOpenDisplay(nullptr);
    if (!output || display == nullptr) GTEST_SKIP() << "no X display";
    const unsigned int shift = XKeysymToKeycode(display, XK_Shift_L);
    {
        testing::RecordingWindow window(display);
        XkbLockGroup(display, XkbUseCoreKbd, 0);
        XTestFakeKeyEvent(display, shift, True, 0);
        XSync(display, False);
        std::thread user([] {
            Display* own = XOpenDisplay(nullptr);
            std::this_thread::sleep_for(std::chrono::milliseconds(60));
            XTestFakeKeyEvent(own, XKeysymToKeycode(own, XK_Shift_L), False, 0);
            XCloseDisplay(own);
        });
        output->typeText("ab");
        user.join();
        EXPECT_EQ(window.text(2), "ab");
        EXPECT_FALSE(keyDown(display, shift)) << "Shift was pressed again after the user let go of it";
    }
    XCloseDisplay(display);
}

// A modifier held past the wait is released around the injection and pressed again after it.
TEST(XTestKeyOutputTest, LiveSessionReleasesAModifierHeldThroughoutAndPressesItAgain) {
    auto output = XTestKeyOutput::open();
    Display* display = XOpenDisplay(nullptr);
    if (!output || display == nullptr) GTEST_SKIP() << "no X display";
    const unsigned int shift = XKeysymToKeycode(display, XK_Shift_L);
    {
        testing::RecordingWindow window(display);
        XkbLockGroup(display, XkbUseCoreKbd, 0);
        XTestFakeKeyEvent(display, shift, True, 0);
        XSync(display, False);
        output->typeText("ab");
        EXPECT_EQ(window.text(2), "ab");
        EXPECT_TRUE(keyDown(display, shift));
        XTestFakeKeyEvent(display, shift, False, 0);
        XSync(display, False);
    }
    XCloseDisplay(display);
}

}  // namespace
}  // namespace orvantis::x11
