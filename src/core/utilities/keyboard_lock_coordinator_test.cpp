#include "core/utilities/keyboard_lock_coordinator.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "testing/utilities_test_support.h"
#include "platform/key_output.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using namespace utilities_testing;
namespace key_flags = platform::key_flags;

constexpr std::uint16_t kKeyL = 37;       // the lock hotkey: L with Control and Shift
constexpr std::uint16_t kEscape = 53;

struct OverlayRecord {
    int made = 0, shows = 0, dismissals = 0;
    int shownMinutes = -1;
    std::string title;
    std::vector<int> countdowns;
    std::function<void()> unlockClicked;
};

class FakeOverlay final : public KeyboardLockOverlay {
public:
    explicit FakeOverlay(OverlayRecord& r) : r_(r) {}
    void setOnUnlockClicked(std::function<void()> c) override { r_.unlockClicked = std::move(c); }
    void show(const SettingsStrings& strings, int minutes) override {
        ++r_.shows;
        r_.shownMinutes = minutes;
        r_.title = std::string(strings.keyboardLockOverlayTitle);
        updateCountdown(minutes * 60);
    }
    void updateCountdown(int seconds) override { r_.countdowns.push_back(seconds); }
    void dismiss() override { ++r_.dismissals; }

private:
    OverlayRecord& r_;
};

class KeyboardLockCoordinatorTest : public ::testing::Test, protected UtilitiesFixture {
protected:
    void escDown() {
        desktop.eventTap().deliver(keyEvent(platform::KeyEvent::Type::keyDown));
        settle();
    }
    void escUp() {
        desktop.eventTap().deliver(keyEvent(platform::KeyEvent::Type::keyUp));
        settle();
    }
    static platform::KeyEvent keyEvent(platform::KeyEvent::Type type) {
        platform::KeyEvent e;
        e.type = type;
        e.keyCode = kEscape;
        return e;
    }

    OverlayRecord overlay_;
    KeyboardLockCoordinator coordinator_{settings, monitor, desktop.loop(), desktop.loop(), logger.log().app, [this] {
                                             ++overlay_.made;
                                             return std::make_unique<FakeOverlay>(overlay_);
                                         }};
};

TEST_F(KeyboardLockCoordinatorTest, TheHotkeyLocksAndKeysAreSwallowed) {
    desktop.press(kKeyL, key_flags::kControl | key_flags::kShift);
    settle();
    ASSERT_TRUE(coordinator_.isLocked());
    EXPECT_TRUE(monitor.keyboardLockActive());
    EXPECT_TRUE(desktop.eventTap().wholeKeyboardGrabbed());
    EXPECT_TRUE(logged("info keyboardLock: engaged via hotkey, auto-unlock in 10 min"));
    EXPECT_EQ(overlay_.title, "Keyboard locked for cleaning");
    auto& field = desktop.focusTextField("");
    desktop.type("abc");
    EXPECT_EQ(field.text(), "");
}

TEST_F(KeyboardLockCoordinatorTest, StoredMinutesAreRead0As10And90As60AndMinus5As1) {
    for (auto [stored, minutes] : {std::pair{0, 10}, std::pair{90, 60}, std::pair{-5, 1}}) {
        settings.store().set("MOLVEX.Orvantis.keyboardLockAutoUnlockMin", PreferenceValue(std::int64_t{stored}));
        coordinator_.lock("menu");
        EXPECT_EQ(overlay_.shownMinutes, minutes) << stored;
        EXPECT_EQ(*coordinator_.deadline(), desktop.loop().wallNow() + std::chrono::minutes(minutes));
        coordinator_.unlock("menu");
    }
    EXPECT_EQ(overlay_.made, 1);  // kept between locks
}

TEST_F(KeyboardLockCoordinatorTest, EscLetGoAt2_9SecondsKeepsTheLockAndThePressStartsAgain) {
    coordinator_.lock("menu");
    escDown();
    desktop.loop().runFor(2900ms);
    escUp();
    desktop.loop().runFor(1s);
    EXPECT_TRUE(coordinator_.isLocked());
    escDown();
    desktop.loop().runFor(2999ms);
    EXPECT_TRUE(coordinator_.isLocked());
    desktop.loop().runFor(1ms);
    EXPECT_FALSE(coordinator_.isLocked());
    EXPECT_TRUE(logged("info keyboardLock: released via esc-hold"));
}

TEST_F(KeyboardLockCoordinatorTest, EscHeldThroughTheDeadlineEndsByTheDeadline) {
    settings.setKeyboardLockAutoUnlockMinutes(1);
    coordinator_.lock("menu");
    desktop.loop().runFor(58s);
    escDown();
    desktop.loop().runFor(2s);
    EXPECT_FALSE(coordinator_.isLocked());
    EXPECT_FALSE(coordinator_.escHoldPending());
    EXPECT_TRUE(logged("info keyboardLock: released via auto"));
    desktop.loop().runFor(5s);
    EXPECT_EQ(logCount("info keyboardLock: released"), 1u);
}

TEST_F(KeyboardLockCoordinatorTest, AnUnlockByHoldLeavesNoStuckEscUp) {
    coordinator_.lock("menu");
    escDown();
    desktop.loop().runFor(3s);
    ASSERT_FALSE(coordinator_.isLocked());
    EXPECT_FALSE(monitor.keyboardLockEscDown());
    EXPECT_FALSE(desktop.eventTap().wholeKeyboardGrabbed());
    EXPECT_EQ(monitor.handle(keyEvent(platform::KeyEvent::Type::keyUp)), platform::EventDisposition::pass);
}

TEST_F(KeyboardLockCoordinatorTest, ASecondLockChangesNeitherDeadlineNorTimer) {
    coordinator_.lock("menu");
    const auto deadline = coordinator_.deadline();
    desktop.loop().runFor(1500ms);
    coordinator_.lock("hotkey");
    EXPECT_EQ(coordinator_.deadline(), deadline);
    EXPECT_EQ(overlay_.shows, 1);
    desktop.loop().runFor(500ms);
    // The ticks stay on whole seconds from the first lock: 1 s and 2 s.
    EXPECT_EQ(overlay_.countdowns, (std::vector<int>{600, 599, 598}));
}

TEST_F(KeyboardLockCoordinatorTest, TheOverlayShowsTheExactTimeBeforeTheFirstTick) {
    coordinator_.lock("menu");
    ASSERT_EQ(overlay_.countdowns, std::vector<int>{600});
    EXPECT_EQ(lockCountdownText("Auto-unlock in %@", overlay_.countdowns[0]), "Auto-unlock in 10:00");
    EXPECT_EQ(formatLockCountdown(65), "1:05");
    EXPECT_EQ(formatLockCountdown(-3), "0:00");
}

TEST_F(KeyboardLockCoordinatorTest, ButtonMenuAndSettingsEndTheLockWithTheirReasons) {
    coordinator_.lock("menu");
    overlay_.unlockClicked();
    EXPECT_TRUE(logged("info keyboardLock: released via button"));
    EXPECT_EQ(overlay_.dismissals, 1);
    coordinator_.toggleFromMenu();
    EXPECT_TRUE(coordinator_.isLocked());
    coordinator_.toggleFromMenu();
    EXPECT_TRUE(logged("info keyboardLock: released via menu"));
    coordinator_.lock("menu");
    settings.setKeyboardLockEnabled(false);
    coordinator_.applyState();
    EXPECT_TRUE(logged("info keyboardLock: released via disabled-in-settings"));
    coordinator_.toggleFromMenu();
    EXPECT_FALSE(coordinator_.isLocked());
    EXPECT_FALSE(coordinator_.countdownRunning());
}

}  // namespace
}  // namespace orvantis
