#include "core/pomodoro/pomodoro_coordinator.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "core/events/global_event_monitor.h"
#include "testing/pomodoro_test_environment.h"
#include "platform/key_output.h"
#include "platform/sim/pomodoro_services.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using State = PomodoroTimerState;
using P = PomodoroPhase;
namespace key_flags = platform::key_flags;
constexpr std::uint16_t kKeyM = 46;  // the Pomodoro hotkey: M with Control and Shift

constexpr const char* kBothCommands = "Orvantis Focus On\nOrvantis Focus Off\n";

class PomodoroCoordinatorTest : public ::testing::Test {
protected:
    PomodoroCoordinatorTest() {
        monitor_.start();
        coordinator_.showFocusShortcutsMissingAlert = [this] { ++alerts_; };
        coordinator_.onDashboardStateChange = [this] { ++dashboardRefreshes_; };
    }
    void seconds(int n) { env_.loop().runFor(std::chrono::seconds(n)); }
    void minutes(int n) { seconds(60 * n); }
    void hotkey() {
        env_.desktop.press(kKeyM, key_flags::kControl | key_flags::kShift);
        env_.loop().runUntilIdle();
    }
    std::vector<std::string> bannerTitles() const {
        std::vector<std::string> titles;
        for (const auto& b : notifications_.banners) titles.push_back(b.title);
        return titles;
    }

    pomodoro_testing::Environment env_;
    GlobalEventMonitor monitor_{env_.settings, env_.desktop.eventTap(), env_.loop(), env_.log};
    sim::UserNotifications notifications_{env_.loop()};
    sim::SystemSleepEvents sleep_;
    sim::FocusCommands focus_;
    PomodoroHistory history_{env_.dir.path() / "data" / "pomodoro-history.json", *env_.historyQueue, env_.loop(),
                             &env_.log, UuidGenerator(7)};
    PomodoroCoordinator coordinator_{env_.settings,    history_,
                                     &monitor_,        env_.loop(),
                                     {notifications_, sleep_, focus_}, env_.log};
    int alerts_ = 0;
    int dashboardRefreshes_ = 0;
};

TEST_F(PomodoroCoordinatorTest, AFullCycleOfFourSessionsEndsWithTheLongBreak) {
    std::vector<std::pair<int, P>> seen;  // session number and phase after each transition
    auto sub = coordinator_.onStateChanged([&](const State& s) {
        if (s.isActive() && (seen.empty() || seen.back().second != *s.phase()))
            seen.emplace_back(coordinator_.currentSessionInCycle(), *s.phase());
    });
    coordinator_.startSession();
    minutes(25 + 5 + 25 + 5 + 25 + 5 + 25 + 15 + 1);
    const std::vector<std::pair<int, P>> expected{
        {1, P::work}, {1, P::breakTime}, {2, P::work}, {2, P::breakTime}, {3, P::work},
        {3, P::breakTime}, {4, P::work}, {4, P::longBreak}, {1, P::work}};
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(coordinator_.currentState(), State::running(P::work, 25 * 60 - 60));
    EXPECT_EQ(history_.records().size(), 4u);
    for (const auto& r : history_.records()) EXPECT_EQ(r.durationMinutes, 25);
    EXPECT_EQ(bannerTitles(), (std::vector<std::string>{"Break time!", "Back to work!", "Break time!", "Back to work!",
                                                         "Break time!", "Back to work!", "Break time!", "Back to work!"}));
}

TEST_F(PomodoroCoordinatorTest, TheLongBreakUsesItsOwnClampedLength) {
    env_.storeRaw(settings::kLongBreakDurationMinutes, 60);
    coordinator_.startSession();
    for (int i = 0; i < 7; ++i) coordinator_.skipPhase();
    EXPECT_EQ(coordinator_.currentState(), State::running(P::longBreak, 45 * 60));
    EXPECT_EQ(coordinator_.currentSessionInCycle(), 4);
    coordinator_.skipPhase();
    EXPECT_EQ(coordinator_.currentSessionInCycle(), 1);
    EXPECT_EQ(coordinator_.currentState(), State::running(P::work, 25 * 60));
}

TEST_F(PomodoroCoordinatorTest, StartWithPomodoroOffDoesNothing) {
    focus_.listing = kBothCommands;
    env_.settings.set(settings::kPomodoroToggleDND, true);
    env_.settings.set(settings::kPomodoroEnabled, false);
    const int listings = focus_.listings;
    coordinator_.startSession();
    EXPECT_EQ(coordinator_.currentState(), State::idle());
    EXPECT_EQ(notifications_.authorizationRequests, 0);
    EXPECT_EQ(alerts_, 0);
    EXPECT_EQ(focus_.listings, listings);
    EXPECT_TRUE(focus_.runs.empty());
    EXPECT_EQ(dashboardRefreshes_, 0);
}

TEST_F(PomodoroCoordinatorTest, EveryStartAsksForPermission) {
    coordinator_.startSession();
    coordinator_.stopSession();
    coordinator_.startSession();
    EXPECT_EQ(notifications_.authorizationRequests, 2);
}

TEST_F(PomodoroCoordinatorTest, OnlyTheOnCommandMeansMissingAndTheAlertAppearsButTheSessionStarts) {
    focus_.listing = "Orvantis Focus On\n";
    env_.settings.set(settings::kPomodoroToggleDND, true);
    coordinator_.startSession();
    EXPECT_EQ(alerts_, 1);
    EXPECT_TRUE(focus_.runs.empty());
    EXPECT_EQ(coordinator_.currentState(), State::running(P::work, 1500));
    EXPECT_NE(env_.logText().find("pomodoro: the Focus commands are missing"), std::string::npos);
}

TEST_F(PomodoroCoordinatorTest, TheListingIsTrimmedAndComparedExactly) {
    env_.settings.set(settings::kPomodoroToggleDND, true);
    focus_.listing = "  Orvantis Focus On\t\n\n orvantis focus off\n";
    coordinator_.startSession();
    EXPECT_EQ(alerts_, 1);
    coordinator_.stopSession();
    focus_.listing = "  Orvantis Focus On\t\n\nOrvantis Focus Off \n";
    coordinator_.startSession();
    EXPECT_EQ(alerts_, 1);
    EXPECT_EQ(focus_.runs, std::vector<std::string>{"Orvantis Focus On"});
}

TEST_F(PomodoroCoordinatorTest, AFailedListingReadsAsMissing) {
    env_.settings.set(settings::kPomodoroToggleDND, true);
    focus_.listing = std::nullopt;
    coordinator_.startSession();
    EXPECT_EQ(alerts_, 1);
    EXPECT_FALSE(coordinator_.dnd().shortcutsAvailable());
}

TEST_F(PomodoroCoordinatorTest, FocusFollowsThePhases) {
    focus_.listing = kBothCommands;
    env_.settings.set(settings::kPomodoroToggleDND, true);
    coordinator_.startSession();
    EXPECT_EQ(focus_.runs, std::vector<std::string>{"Orvantis Focus On"});
    minutes(25);
    EXPECT_EQ(focus_.runs.back(), "Orvantis Focus Off");
    minutes(5);
    EXPECT_EQ(focus_.runs.back(), "Orvantis Focus On");
    coordinator_.stopSession();
    EXPECT_EQ(focus_.runs, (std::vector<std::string>{"Orvantis Focus On", "Orvantis Focus Off", "Orvantis Focus On",
                                                     "Orvantis Focus Off"}));
    EXPECT_FALSE(coordinator_.dnd().sessionEnabledFocus());
}

TEST_F(PomodoroCoordinatorTest, FocusTurnedOffInTheSettingsMidWorkStaysOnAtTheBreakButStopReleasesIt) {
    focus_.listing = kBothCommands;
    env_.settings.set(settings::kPomodoroToggleDND, true);
    coordinator_.startSession();
    env_.settings.set(settings::kPomodoroToggleDND, false);
    minutes(25);
    EXPECT_EQ(focus_.runs, std::vector<std::string>{"Orvantis Focus On"});
    coordinator_.stopSession();
    EXPECT_EQ(focus_.runs, (std::vector<std::string>{"Orvantis Focus On", "Orvantis Focus Off"}));
}

TEST_F(PomodoroCoordinatorTest, ABreakRunsFocusOffEvenWhenThisSessionNeverTurnedItOn) {
    focus_.listing = kBothCommands;
    ASSERT_TRUE(coordinator_.dnd().refreshAvailability());
    coordinator_.startSession();  // Focus not asked for at the start
    env_.settings.set(settings::kPomodoroToggleDND, true);
    coordinator_.skipPhase();
    EXPECT_EQ(focus_.runs, std::vector<std::string>{"Orvantis Focus Off"});
}

TEST_F(PomodoroCoordinatorTest, ASkippedWorkPhaseLogsTheFullConfiguredLength) {
    env_.settings.set(settings::kWorkDurationMinutes, 40);
    coordinator_.startSession();
    seconds(3);
    coordinator_.skipPhase();
    ASSERT_EQ(history_.records().size(), 1u);
    EXPECT_EQ(history_.records()[0].durationMinutes, 40);
    EXPECT_EQ(history_.records()[0].completedAt, env_.loop().wallNow());
}

TEST_F(PomodoroCoordinatorTest, ASkippedBreakAdvancesTheSessionAndLogsNothing) {
    coordinator_.startSession();
    coordinator_.skipPhase();
    coordinator_.skipPhase();
    EXPECT_EQ(coordinator_.currentSessionInCycle(), 2);
    EXPECT_EQ(history_.records().size(), 1u);
}

TEST_F(PomodoroCoordinatorTest, AWorkPhaseStoppedMidwayLeavesNoRecord) {
    coordinator_.startSession();
    minutes(20);
    coordinator_.stopSession();
    EXPECT_TRUE(history_.records().empty());
    EXPECT_EQ(coordinator_.currentState(), State::idle());
}

TEST_F(PomodoroCoordinatorTest, WithoutPermissionThePhaseEndBeeps) {
    notifications_.authorized = false;
    coordinator_.startSession();
    coordinator_.skipPhase();
    env_.loop().runUntilIdle();
    EXPECT_EQ(notifications_.beeps, 1);
    EXPECT_TRUE(notifications_.banners.empty());
}

TEST_F(PomodoroCoordinatorTest, NotificationsAreInTheInterfaceLanguage) {
    env_.settings.set(settings::kSettingsLanguage, SettingsLanguage::ru);
    coordinator_.startSession();
    coordinator_.skipPhase();
    coordinator_.skipPhase();
    env_.loop().runUntilIdle();
    ASSERT_EQ(notifications_.banners.size(), 2u);
    EXPECT_EQ(notifications_.banners[0].title, "Перерыв!");
    EXPECT_EQ(notifications_.banners[0].body, "Время отдохнуть.");
    EXPECT_EQ(notifications_.banners[1].title, "За работу!");
}

TEST_F(PomodoroCoordinatorTest, SleepPausesAndWakeResumesWithTheSameSeconds) {
    coordinator_.startSession();
    seconds(100);
    sleep_.sleep();
    EXPECT_EQ(coordinator_.currentState(), State::paused(P::work, 1400));
    EXPECT_TRUE(coordinator_.pausedBySleep());
    env_.loop().runFor(10h);
    sleep_.wake();
    EXPECT_EQ(coordinator_.currentState(), State::running(P::work, 1400));
    EXPECT_FALSE(coordinator_.pausedBySleep());
    seconds(1);
    EXPECT_EQ(coordinator_.currentState(), State::running(P::work, 1399));
}

TEST_F(PomodoroCoordinatorTest, SleepWhilePausedByHandDoesNotResumeAtWake) {
    coordinator_.startSession();
    coordinator_.pauseSession();
    sleep_.sleep();
    EXPECT_FALSE(coordinator_.pausedBySleep());
    sleep_.wake();
    EXPECT_EQ(coordinator_.currentState(), State::paused(P::work, 1500));
}

TEST_F(PomodoroCoordinatorTest, AWakeAfterTheUserStoppedOnlyClearsTheFlag) {
    coordinator_.startSession();
    sleep_.sleep();
    coordinator_.stopSession();
    sleep_.wake();
    EXPECT_FALSE(coordinator_.pausedBySleep());
    EXPECT_EQ(coordinator_.currentState(), State::idle());
}

TEST_F(PomodoroCoordinatorTest, TheHotkeyStartsAndStopsAlsoAPausedSession) {
    hotkey();
    EXPECT_TRUE(coordinator_.currentState().isRunning());
    coordinator_.pauseSession();
    hotkey();
    EXPECT_EQ(coordinator_.currentState(), State::idle());
}

TEST_F(PomodoroCoordinatorTest, StopAtQuitTurnsFocusOff) {
    focus_.listing = kBothCommands;
    env_.settings.set(settings::kPomodoroToggleDND, true);
    coordinator_.startSession();
    coordinator_.stopSession();
    EXPECT_EQ(focus_.runs.back(), "Orvantis Focus Off");
}

TEST_F(PomodoroCoordinatorTest, TogglePauseResumeTellsTheDashboardInEveryState) {
    coordinator_.togglePauseResume();
    EXPECT_EQ(dashboardRefreshes_, 1);
    coordinator_.startSession();
    dashboardRefreshes_ = 0;
    coordinator_.togglePauseResume();
    EXPECT_TRUE(coordinator_.currentState().isPaused());
    coordinator_.togglePauseResume();
    EXPECT_TRUE(coordinator_.currentState().isRunning());
    EXPECT_GE(dashboardRefreshes_, 2);
}

TEST_F(PomodoroCoordinatorTest, TheMenuIsToldBeforeTheDashboard) {
    std::vector<std::string> order;
    auto sub = coordinator_.onStateChanged([&](const State&) { order.push_back("menu"); });
    coordinator_.onDashboardStateChange = [&] { order.push_back("dashboard"); };
    coordinator_.pauseSession();
    coordinator_.startSession();
    ASSERT_GE(order.size(), 2u);
    EXPECT_EQ(order[0], "menu");
    EXPECT_EQ(order[1], "dashboard");
}

TEST_F(PomodoroCoordinatorTest, ANewStartBeginsAtSessionOne) {
    coordinator_.startSession();
    coordinator_.skipPhase();
    coordinator_.skipPhase();
    EXPECT_EQ(coordinator_.currentSessionInCycle(), 2);
    coordinator_.stopSession();
    EXPECT_EQ(coordinator_.currentSessionInCycle(), 2);
    coordinator_.startSession();
    EXPECT_EQ(coordinator_.currentSessionInCycle(), 1);
}

TEST_F(PomodoroCoordinatorTest, ANotificationAnsweredAfterTheCoordinatorIsGoneIsDropped) {
    auto coordinator = std::make_unique<PomodoroCoordinator>(
        env_.settings, history_, &monitor_, env_.loop(), PomodoroCoordinator::Services{notifications_, sleep_, focus_},
        env_.log);
    coordinator->startSession();
    coordinator->skipPhase();
    coordinator.reset();
    env_.loop().runUntilIdle();
    EXPECT_TRUE(notifications_.banners.empty());
    EXPECT_EQ(notifications_.beeps, 0);
}

}  // namespace
}  // namespace orvantis

namespace orvantis {
namespace {

TEST(DNDManagerTest, RestoreForgetsTheSessionsFocusEvenWhenTheCommandsAreGone) {
    sim::FocusCommands focus;
    focus.listing = "Orvantis Focus On\nOrvantis Focus Off";
    DNDManager dnd(focus);
    dnd.enable();
    EXPECT_TRUE(dnd.sessionEnabledFocus());
    focus.listing = "";
    EXPECT_FALSE(dnd.refreshAvailability());
    dnd.disable();
    EXPECT_TRUE(dnd.sessionEnabledFocus());  // nothing ran, so nothing is forgotten
    dnd.restore();
    EXPECT_FALSE(dnd.sessionEnabledFocus());
    EXPECT_EQ(focus.runs, std::vector<std::string>{"Orvantis Focus On"});
    EXPECT_FALSE(DNDManager::isSetupComplete(focus));
}

TEST(DNDManagerTest, EnableQueriesAgainWhenTheCommandsWereMissing) {
    sim::FocusCommands focus;
    DNDManager dnd(focus);
    EXPECT_FALSE(dnd.shortcutsAvailable());
    dnd.enable();
    EXPECT_TRUE(focus.runs.empty());
    focus.listing = "Orvantis Focus Off\nOrvantis Focus On\n";
    dnd.enable();
    EXPECT_EQ(focus.runs, std::vector<std::string>{"Orvantis Focus On"});
}

}  // namespace
}  // namespace orvantis
