#include "platform/x11/x11_event_tap.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include "core/log/app_logger.h"
#include "platform/sim/virtual_main_loop.h"
#include "platform/x11/key_positions.h"
#include "platform/x11/x11_test_support.h"
#include "platform/x11/xtest_key_output.h"
#include "testing/test_support.h"

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

namespace orvantis::x11 {
namespace {

using platform::EventDisposition;
using platform::KeyEvent;

TEST(X11EventTapTest, NoDisplayGivesNoTap) { EXPECT_EQ(X11EventTap::open(":9999", nullptr), nullptr); }

/// A tap on the live display with a handler that records key downs and answers `answer` for
/// the grabbed Shift+Backspace. Skips the test without a display.
class LiveTapTest : public ::testing::Test {
protected:
    void SetUp() override {
        tap_ = X11EventTap::open(nullptr, &logger_.log());
        output_ = XTestKeyOutput::open();
        display_ = XOpenDisplay(nullptr);
        if (!tap_ || !output_ || display_ == nullptr) GTEST_SKIP() << "no X display";
        XkbLockGroup(display_, XkbUseCoreKbd, 0);
        XSync(display_, False);
        ASSERT_TRUE(tap_->start([this](const KeyEvent& event) {
            if (event.type == KeyEvent::Type::keyDown) downs_.push_back(event);
            const bool hotkey = event.keyCode == 51 && (event.flags & platform::key_flags::kModifierMask) ==
                                                           platform::key_flags::kShift;
            return hotkey ? answer_ : EventDisposition::pass;
        }));
    }
    void TearDown() override {
        tap_.reset();
        if (display_ != nullptr) XCloseDisplay(display_);
    }
    /// Dispatches until `count` key downs arrived or a second has passed.
    void waitForDowns(std::size_t count) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        while (downs_.size() < count && std::chrono::steady_clock::now() < deadline) {
            tap_->dispatchPending();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }

    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> logQueue_ = loop_.makeSerialQueue("log");
    orvantis::testing::TemporaryDirectory logs_;
    AppLogger logger_{logs_.path(), *logQueue_, loop_};
    std::unique_ptr<X11EventTap> tap_;
    std::unique_ptr<XTestKeyOutput> output_;
    Display* display_ = nullptr;
    std::vector<KeyEvent> downs_;
    EventDisposition answer_ = EventDisposition::swallow;
};

TEST_F(LiveTapTest, SeesTypedKeysWithTheirPositionsAndText) {
    output_->typeText("aB");
    waitForDowns(3);  // a, Shift, b
    std::vector<KeyEvent> letters;
    for (const auto& e : downs_)
        if (!e.characters.empty()) letters.push_back(e);
    ASSERT_EQ(letters.size(), 2u);
    EXPECT_EQ(letters[0].keyCode, 0);
    EXPECT_EQ(letters[0].characters, "a");
    EXPECT_EQ(letters[1].keyCode, 11);
    EXPECT_EQ(letters[1].characters, "B");
    EXPECT_EQ(letters[1].flags & platform::key_flags::kShift, platform::key_flags::kShift);
}

TEST_F(LiveTapTest, AGrabbedHotkeyIsSwallowedOrReplayedAsTheHandlerSays) {
    tap_->setGrabbedHotkeys({{51, platform::key_flags::kShift}});
    ASSERT_EQ(tap_->activeGrabs().size(), 1u);
    testing::RecordingWindow window(display_);
    auto dispatch = [this] { tap_->dispatchPending(); };

    // The keyboard stays frozen until the tap has answered the grabbed press, as it does in
    // the program, where the answer comes before any injection.
    output_->postKey(0, 0);
    output_->postKey(51, platform::key_flags::kShift);
    waitForDowns(3);  // a, Shift, Backspace
    output_->postKey(11, 0);
    EXPECT_EQ(window.text(2, dispatch), "ab") << "swallowed: the window never sees Shift+Backspace";

    answer_ = EventDisposition::pass;
    output_->postKey(51, platform::key_flags::kShift);
    waitForDowns(6);  // b, Shift, Backspace
    output_->postKey(0, 0);
    EXPECT_EQ(window.text(std::string("ab<BS>a").size(), dispatch), "ab<BS>a") << "passed: replayed to the window";
}

TEST_F(LiveTapTest, AHotkeyHeldByAnotherProgramIsLoggedByItsLinuxName) {
    const int x = static_cast<int>(*xKeycodeForVirtualKey(7));
    XGrabKey(display_, x, Mod4Mask | ShiftMask, DefaultRootWindow(display_), True, GrabModeAsync, GrabModeAsync);
    XSync(display_, False);
    tap_->setGrabbedHotkeys({{7, platform::key_flags::kControl | platform::key_flags::kShift},
                             {51, platform::key_flags::kShift}});
    ASSERT_EQ(tap_->activeGrabs().size(), 1u);
    EXPECT_EQ(tap_->activeGrabs()[0].keyCode, 51);
    const std::string log = logger_.recentLogs(1);
    EXPECT_NE(log.find("[WARN ] App: keyboard: Super+Shift+X is held by another program"), std::string::npos) << log;
    XUngrabKey(display_, x, Mod4Mask | ShiftMask, DefaultRootWindow(display_));
    XSync(display_, False);
}

TEST_F(LiveTapTest, TheWholeKeyboardHeldElsewhereIsLoggedAndTakenAtTheNextKeyOnceFree) {
    // Another client (an open menu, say) holds the keyboard.
    ASSERT_EQ(XGrabKeyboard(display_, DefaultRootWindow(display_), True, GrabModeAsync, GrabModeAsync, CurrentTime),
              GrabSuccess);
    XSync(display_, False);
    tap_->setWholeKeyboardGrabbed(true);
    std::string log = logger_.recentLogs(1);
    EXPECT_NE(log.find("[WARN ] App: keyboardLock: the keyboard cannot be held (another program holds it)"),
              std::string::npos)
        << log;
    XUngrabKeyboard(display_, CurrentTime);
    XSync(display_, False);
    // The next key tries again; from then on every key, Escape too, comes through the grab.
    output_->postKey(0, 0);  // A
    waitForDowns(1);
    output_->postKey(53, 0);  // Escape
    waitForDowns(2);
    log = logger_.recentLogs(1);
    EXPECT_NE(log.find("keyboardLock: the keyboard is held now"), std::string::npos) << log;
    ASSERT_EQ(downs_.size(), 2u) << (downs_.empty() ? -1 : downs_[0].keyCode);
    EXPECT_EQ(downs_[1].keyCode, 53);
    EXPECT_FALSE(downs_[1].autorepeat);
    // Another client cannot take it now.
    EXPECT_EQ(XGrabKeyboard(display_, DefaultRootWindow(display_), True, GrabModeAsync, GrabModeAsync, CurrentTime),
              AlreadyGrabbed);
    tap_->setWholeKeyboardGrabbed(false);
    XSync(display_, False);
    EXPECT_EQ(XGrabKeyboard(display_, DefaultRootWindow(display_), True, GrabModeAsync, GrabModeAsync, CurrentTime),
              GrabSuccess);
    XUngrabKeyboard(display_, CurrentTime);
    XSync(display_, False);
}

TEST_F(LiveTapTest, ARefusedPermissionCheckKeepsATapFromStarting) {
    auto other = X11EventTap::open(nullptr, nullptr);
    ASSERT_NE(other, nullptr);
    bool granted = false;
    other->setPermissionCheck([&granted] { return granted; });
    EXPECT_FALSE(other->isPermitted());
    EXPECT_FALSE(other->start([](const KeyEvent&) { return EventDisposition::pass; }));
    EXPECT_FALSE(other->isRunning());
    granted = true;
    EXPECT_TRUE(other->isPermitted());
    EXPECT_TRUE(other->start([](const KeyEvent&) { return EventDisposition::pass; }));
    EXPECT_TRUE(other->isRunning());
}

TEST_F(LiveTapTest, AKeycodeWithoutAPositionArrivesAsTheUnknownKeyCode) {
    // The first keycode of the server that stands for no key position we know.
    int minKeycode = 0;
    int maxKeycode = 0;
    XDisplayKeycodes(display_, &minKeycode, &maxKeycode);
    int unknown = 0;
    for (int keycode = minKeycode; keycode <= maxKeycode && unknown == 0; ++keycode) {
        if (!virtualKeyForXKeycode(static_cast<std::uint32_t>(keycode))) unknown = keycode;
    }
    ASSERT_NE(unknown, 0);
    XTestFakeKeyEvent(display_, static_cast<unsigned>(unknown), True, CurrentTime);
    XTestFakeKeyEvent(display_, static_cast<unsigned>(unknown), False, CurrentTime);
    XSync(display_, False);
    output_->typeText("a");
    waitForDowns(2);
    std::string seen;
    for (const auto& e : downs_) seen += std::to_string(e.keyCode) + "'" + e.characters + "' ";
    ASSERT_EQ(downs_.size(), 2u) << "keycode " << unknown << ": " << seen;
    EXPECT_EQ(downs_[0].keyCode, X11EventTap::kUnknownKeyCode);
    // Typing after it is read as before.
    EXPECT_EQ(downs_[1].keyCode, 0);
    EXPECT_EQ(downs_[1].characters, "a");
}

}  // namespace
}  // namespace orvantis::x11
