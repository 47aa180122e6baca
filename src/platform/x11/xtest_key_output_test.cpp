#include "platform/x11/xtest_key_output.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "platform/key_output.h"
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

// The user still holds Shift when the program copies: the copy key arrives as Ctrl+C, not
// Ctrl+Shift+C (which a terminal reads as its own copy and an editor as something else), and the
// user's Shift is down again afterwards.
TEST(XTestKeyOutputTest, LiveSessionCopiesWithPlainCtrlWhileTheUserHoldsShift) {
    auto output = XTestKeyOutput::open();
    Display* display = XOpenDisplay(nullptr);
    if (!output || display == nullptr) GTEST_SKIP() << "no X display";
    const unsigned int c = XKeysymToKeycode(display, XK_c);
    {
        testing::RecordingWindow window(display);
        XkbLockGroup(display, XkbUseCoreKbd, 0);
        testing::HeldKey shift(display, XK_Shift_L);
        output->copy();
        // Shift (the user's), Ctrl, C, and Shift pressed again for the user.
        const auto presses = window.presses(4);
        std::vector<unsigned int> statesOfC;
        for (const auto& press : presses) {
            if (press.keycode == c) statesOfC.push_back(testing::coreModifiers(press.state));
        }
        EXPECT_EQ(statesOfC, std::vector<unsigned int>{ControlMask}) << "C arrives once, with Control alone";
        EXPECT_TRUE(shift.isDown()) << "the user's Shift is not down again after the copy";
        ASSERT_FALSE(presses.empty());
        EXPECT_EQ(presses.back().keycode, shift.keycode()) << "the last press is the user's Shift, pressed again";
    }
    XCloseDisplay(display);
}

// The user still holds Super when the program sends Return: Return arrives without Super (a
// window manager would otherwise take Super+Return for itself), and Super is down again after.
TEST(XTestKeyOutputTest, LiveSessionSendsAPlainKeyWithoutTheSuperTheUserHolds) {
    auto output = XTestKeyOutput::open();
    Display* display = XOpenDisplay(nullptr);
    if (!output || display == nullptr) GTEST_SKIP() << "no X display";
    const unsigned int returnKey = XKeysymToKeycode(display, XK_Return);
    {
        testing::RecordingWindow window(display);
        XkbLockGroup(display, XkbUseCoreKbd, 0);
        testing::HeldKey super(display, XK_Super_L);
        ASSERT_TRUE(super.isDown());
        output->postKey(platform::key_code::kReturn, 0);
        // Super (the user's), Return, and Super pressed again for the user.
        const auto presses = window.presses(3);
        std::vector<unsigned int> statesOfReturn;
        for (const auto& press : presses) {
            if (press.keycode == returnKey) statesOfReturn.push_back(testing::coreModifiers(press.state));
        }
        EXPECT_EQ(statesOfReturn, std::vector<unsigned int>{0u}) << "Return arrives once, with no modifier";
        EXPECT_TRUE(super.isDown()) << "the user's Super is not down again after the key";
    }
    XCloseDisplay(display);
}

}  // namespace
}  // namespace orvantis::x11
