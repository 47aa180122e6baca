#include "core/utilities/caffeine_coordinator.h"

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

constexpr std::uint16_t kKeyK = 40;  // the keep-awake hotkey: K with Control and Shift

class CaffeineCoordinatorTest : public ::testing::Test, protected UtilitiesFixture {
protected:
    CaffeineCoordinator& coordinator() {
        if (!coordinator_) {
            coordinator_ = std::make_unique<CaffeineCoordinator>(
                settings, CaffeineCoordinator::Services{power_, &apps_, &apps_, &lid_}, &monitor, desktop.loop(),
                desktop.loop(), logger.log().app);
            coordinator_->setOnStateChanged([this] { ++redraws_; });
        }
        return *coordinator_;
    }
    void hotkey() {
        desktop.press(kKeyK, key_flags::kControl | key_flags::kShift);
        settle();
    }

    FakePower power_;
    FakeApplications apps_;
    FakeLidSleep lid_;
    int redraws_ = 0;
    std::unique_ptr<CaffeineCoordinator> coordinator_;
};

TEST_F(CaffeineCoordinatorTest, TheHotkeyArmsAndDisarmsWithTheLogLines) {
    coordinator();
    hotkey();
    EXPECT_TRUE(coordinator().isActive());
    EXPECT_TRUE(coordinator().assertionHeld());
    EXPECT_EQ(power_.lastName, "Orvantis Caffeine");
    EXPECT_TRUE(logged("info caffeine: lock acquired (automation)"));
    EXPECT_TRUE(logged("info caffeine: armed globally via hotkey, duration=indefinite"));
    hotkey();
    EXPECT_FALSE(coordinator().isActive());
    EXPECT_FALSE(coordinator().assertionHeld());
    EXPECT_EQ(power_.releasedId, 101u);
    EXPECT_TRUE(logged("info caffeine: lock released (automation)"));
    EXPECT_TRUE(logged("info caffeine: global arm off via hotkey"));
}

TEST_F(CaffeineCoordinatorTest, ArmingWithTheMasterSwitchOffThroughToggleDoesNothing) {
    settings.setCaffeineEnabled(false);
    coordinator().toggle("hotkey");
    coordinator().toggleFromMenu();
    hotkey();
    EXPECT_FALSE(coordinator().isActive());
    EXPECT_EQ(power_.creates, 0);
    EXPECT_EQ(logCount("error caffeine:"), 0u);  // not even an attempt that had to be undone
}

TEST_F(CaffeineCoordinatorTest, ThirtyMinutesWithAListedAppInFrontEndsByTimerAndKeepsTheLock) {
    settings.setCaffeineActiveApps({"org.example.player"});
    apps_.frontmost = platform::ApplicationInfo{"org.example.player", "Player", 1};
    coordinator().start(30, "hotkey");
    EXPECT_TRUE(coordinator().assertionHeld());
    EXPECT_TRUE(logged("info caffeine: armed globally via hotkey, duration=30 min"));
    logLines.clear();
    desktop.loop().runFor(30min);
    EXPECT_FALSE(coordinator().isActive());
    EXPECT_TRUE(coordinator().assertionHeld());
    EXPECT_TRUE(logged("info caffeine: global arm off via auto-timer"));
    EXPECT_EQ(logCount("info caffeine: lock"), 0u);
}

TEST_F(CaffeineCoordinatorTest, TheMasterSwitchGoingOffEndsAnArmAtOnceWithoutAnOffLine) {
    coordinator().start(30, "menu");
    ASSERT_TRUE(coordinator().autoStopPending());
    settings.setCaffeineEnabled(false);
    settle();
    EXPECT_FALSE(coordinator().isActive());
    EXPECT_FALSE(coordinator().assertionHeld());
    EXPECT_FALSE(coordinator().autoStopPending());
    EXPECT_FALSE(coordinator().deadline().has_value());
    EXPECT_EQ(logCount("info caffeine: global arm off"), 0u);
    desktop.loop().runFor(31min);
    EXPECT_EQ(logCount("info caffeine: global arm off"), 0u);
}

TEST_F(CaffeineCoordinatorTest, ASettingsChangeThatTouchesNoneOfTheFourValuesCausesNoWork) {
    coordinator();
    const int before = coordinator().applyCount();
    settings.setCaffeineDefaultDurationMinutes(60);
    settings.setSwitchDelayMs(30);
    settle();
    EXPECT_EQ(coordinator().applyCount(), before);
    settings.setCaffeineActiveApps({"org.example.player"});
    settle();
    EXPECT_EQ(coordinator().applyCount(), before + 1);
}

TEST_F(CaffeineCoordinatorTest, TurningLidAlwaysOnSetsItsMenuSwitchWithoutTheMenu) {
    coordinator();
    ASSERT_FALSE(coordinator().lidAlwaysActive());
    settings.setCaffeineLidCloseAlways(true);
    settle();
    EXPECT_TRUE(coordinator().lidAlwaysActive());
    EXPECT_TRUE(coordinator().lidSleepApplied());
    EXPECT_TRUE(logged("info caffeine: lid-close disablesleep=1 (automation)"));
}

TEST_F(CaffeineCoordinatorTest, StartWhenArmedChangesNeitherDeadlineNorTimer) {
    coordinator().start(30, "menu");
    const auto deadline = coordinator().deadline();
    desktop.loop().runFor(10min);
    coordinator().start(60, "menu");
    EXPECT_EQ(coordinator().deadline(), deadline);
    desktop.loop().runFor(20min);
    EXPECT_FALSE(coordinator().isActive());
}

TEST_F(CaffeineCoordinatorTest, ADefaultOf2000MinutesIsTreatedAs1440) {
    settings.store().set("MOLVEX.Orvantis.caffeineDefaultDurationMin", PreferenceValue(std::int64_t{2000}));
    coordinator().start(std::nullopt, "hotkey");
    EXPECT_TRUE(logged("info caffeine: armed globally via hotkey, duration=1440 min"));
    EXPECT_EQ(*coordinator().deadline(), desktop.loop().wallNow() + 1440min);
}

TEST_F(CaffeineCoordinatorTest, AnAssertionThatCannotBeMadeRollsTheArmBack) {
    power_.refuse = 5;
    coordinator().start(30, "hotkey");
    EXPECT_FALSE(coordinator().isActive());
    EXPECT_FALSE(coordinator().assertionHeld());
    EXPECT_FALSE(coordinator().autoStopPending());
    EXPECT_TRUE(logged("error caffeine: power assertion create failed (5)"));
    EXPECT_TRUE(logged("error caffeine: arming aborted — power assertion could not be acquired"));
}

TEST_F(CaffeineCoordinatorTest, TheAppListFollowsActivationAndAMomentWithoutFrontmostChangesNothing) {
    settings.setCaffeineActiveApps({"org.example.player"});
    coordinator();
    EXPECT_TRUE(coordinator().appActivationObserved());
    apps_.activate("org.example.player");
    EXPECT_TRUE(coordinator().assertionHeld());
    EXPECT_TRUE(logged("info caffeine: lock acquired (app-switch)"));
    apps_.frontmost.reset();
    apps_.activated.notify();
    EXPECT_TRUE(coordinator().assertionHeld());
    apps_.activate("org.example.editor");
    EXPECT_FALSE(coordinator().assertionHeld());
    apps_.frontmost.reset();
    apps_.activated.notify();
    EXPECT_FALSE(coordinator().assertionHeld());
}

TEST_F(CaffeineCoordinatorTest, AReleaseErrorIsLoggedAndTheLockCountsAsGone) {
    coordinator().start(std::nullopt, "menu");
    power_.releaseResult = 3;
    coordinator().stop("menu");
    EXPECT_FALSE(coordinator().assertionHeld());
    EXPECT_TRUE(logged("error caffeine: power assertion release returned 3"));
}

// Lid-close sleep.

TEST_F(CaffeineCoordinatorTest, AppGatedLidCloseFollowsTheRunningApplications) {
    settings.setCaffeineActiveApps({"org.example.player"});
    settings.setCaffeineLidClose(true);
    coordinator();
    EXPECT_TRUE(coordinator().appRunningObserved());
    EXPECT_FALSE(coordinator().lidSleepApplied());
    apps_.launch("org.example.player");
    EXPECT_TRUE(coordinator().lidSleepApplied());
    EXPECT_TRUE(logged("info caffeine: lid-close disablesleep=1 (app-launch)"));
    apps_.terminate("org.example.player");
    EXPECT_FALSE(coordinator().lidSleepApplied());
    EXPECT_TRUE(logged("info caffeine: lid-close disablesleep=0 (app-terminate)"));
}

TEST_F(CaffeineCoordinatorTest, LidCloseWithAnEmptyListIsNotArmedButTheUnconditionalModeWorks) {
    settings.setCaffeineLidClose(true);
    settings.setCaffeineLidCloseAlways(true);
    coordinator();
    EXPECT_FALSE(coordinator().appRunningObserved());
    EXPECT_TRUE(coordinator().lidSleepApplied());
}

TEST_F(CaffeineCoordinatorTest, WithTheMasterSwitchOffNeitherModeHolds) {
    settings.setCaffeineLidCloseAlways(true);
    coordinator();
    ASSERT_TRUE(coordinator().lidSleepApplied());
    settings.setCaffeineEnabled(false);
    settle();
    EXPECT_FALSE(coordinator().lidSleepApplied());
    EXPECT_EQ(lid_.calls.back(), "disable 0");
}

TEST_F(CaffeineCoordinatorTest, FlippingTheMenuSwitchWithTheSettingOffDoesNothing) {
    coordinator().toggleLidAlwaysFromMenu();
    EXPECT_FALSE(coordinator().lidAlwaysActive());
    EXPECT_TRUE(lid_.calls.empty());
}

TEST_F(CaffeineCoordinatorTest, TheMenuSwitchComesBackOnWhenTheSettingGoesFromOffToOn) {
    settings.setCaffeineLidCloseAlways(true);
    coordinator().toggleLidAlwaysFromMenu();
    EXPECT_FALSE(coordinator().lidAlwaysActive());
    EXPECT_FALSE(coordinator().lidSleepApplied());
    EXPECT_TRUE(logged("info caffeine: unconditional lid-close disarmed via menu"));
    settings.setCaffeineLidCloseAlways(false);
    settle();
    settings.setCaffeineLidCloseAlways(true);
    settle();
    EXPECT_TRUE(coordinator().lidAlwaysActive());
    EXPECT_TRUE(coordinator().lidSleepApplied());
}

TEST_F(CaffeineCoordinatorTest, AFailedDisableLeavesTheFlagAndWritesNoLine) {
    lid_.fail = true;
    settings.setCaffeineLidCloseAlways(true);
    coordinator();
    EXPECT_FALSE(coordinator().lidSleepApplied());
    EXPECT_EQ(logCount("info caffeine: lid-close disablesleep"), 0u);
    lid_.fail = false;
    coordinator().applyState();  // the next evaluation tries again
    EXPECT_TRUE(coordinator().lidSleepApplied());
}

TEST_F(CaffeineCoordinatorTest, TerminationTurnsLidSleepBackOnOnlyWhenApplied) {
    coordinator().prepareForTermination();
    EXPECT_TRUE(lid_.calls.empty());
    settings.setCaffeineLidCloseAlways(true);
    settle();
    coordinator().prepareForTermination();
    EXPECT_FALSE(coordinator().lidSleepApplied());
    EXPECT_EQ(lid_.calls.back(), "disable 0");
}

TEST_F(CaffeineCoordinatorTest, ProvisioningAsksConsentAndDeprovisioningNotifies) {
    bool agree = false;
    coordinator().setLidConsent([&] { return agree; });
    EXPECT_FALSE(coordinator().provisionLidCloseInteractively());
    EXPECT_TRUE(logged("info caffeine: lid-close explanation declined"));
    agree = true;
    EXPECT_TRUE(coordinator().provisionLidCloseInteractively());
    std::string title;
    coordinator().setLidNotification([&](std::string_view t, std::string_view) { title = std::string(t); });
    EXPECT_TRUE(coordinator().deprovisionLidClose());
    EXPECT_EQ(title, "Administrator access removed");
    EXPECT_EQ(lid_.calls, (std::vector<std::string>{"provision", "disable 0", "deprovision"}));
    lid_.deprovisionResult = false;
    EXPECT_FALSE(coordinator().deprovisionLidClose());
    EXPECT_TRUE(logged("info caffeine: lid-close removal cancelled — rule left in place"));
}

}  // namespace
}  // namespace orvantis
