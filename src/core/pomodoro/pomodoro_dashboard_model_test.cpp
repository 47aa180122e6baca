#include "core/pomodoro/pomodoro_dashboard_model.h"

#include <gtest/gtest.h>

#include <chrono>

#include "core/pomodoro/pomodoro_history.h"
#include "testing/pomodoro_test_environment.h"

namespace orvantis::pomodoro_dashboard {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::system_clock;
using State = PomodoroTimerState;
using P = PomodoroPhase;

const PomodoroCalendar& utc() {
    static const PomodoroCalendar calendar("UTC", "en_US");
    return calendar;
}
Clock::time_point day(int y, int m, int d) {
    return Clock::time_point(std::chrono::sys_days(std::chrono::year(y) / m / d));
}

TEST(PomodoroDashboardModelTest, OnAMondayTheMondayIsTodayAndOnASundaySixDaysBack) {
    EXPECT_EQ(heatmapMonday(day(2026, 11, 16), utc()), day(2026, 11, 16));  // Monday
    EXPECT_EQ(heatmapMonday(day(2026, 11, 15), utc()), day(2026, 11, 9));   // Sunday
    EXPECT_EQ(heatmapMonday(day(2026, 11, 18), utc()), day(2026, 11, 16));  // Wednesday
    // On a Sunday the last column's last row is today.
    const auto sunday = day(2026, 11, 15);
    EXPECT_EQ(heatmapCellDate(25, 6, heatmapMonday(sunday, utc()), sunday, utc()), sunday);
}

TEST(PomodoroDashboardModelTest, CellsAfterTodayAreEmpty) {
    const auto wednesday = day(2026, 11, 18);
    const auto monday = heatmapMonday(wednesday, utc());
    EXPECT_EQ(heatmapCellDate(25, 2, monday, wednesday, utc()), wednesday);
    EXPECT_FALSE(heatmapCellDate(25, 3, monday, wednesday, utc()));
    EXPECT_FALSE(heatmapCellDate(25, 6, monday, wednesday, utc()));
    EXPECT_EQ(heatmapCellDate(0, 0, monday, wednesday, utc()), day(2026, 5, 25));  // 25 weeks back
    EXPECT_EQ(heatmapCellDate(24, 6, monday, wednesday, utc()), day(2026, 11, 15));
}

TEST(PomodoroDashboardModelTest, CellSizeFollowsTheWidthAndIsAtLeastFour) {
    EXPECT_DOUBLE_EQ(heatmapCellSize(100), 4);
    EXPECT_DOUBLE_EQ(heatmapCellSize(0), 4);
    EXPECT_DOUBLE_EQ(heatmapCellSize(336), 11);  // (336 - 50) / 26
    EXPECT_DOUBLE_EQ(heatmapIntrinsicHeight(11), 89);
    // At a width of 100 the grid overruns the view: that is accepted.
    EXPECT_GT(heatmapCellRect(25, 0, heatmapCellSize(100)).x + 4, 100);
}

TEST(PomodoroDashboardModelTest, CellRectanglesAndTheCellUnderThePointer) {
    EXPECT_EQ(heatmapCellRect(0, 0, 10), (Rect{0, 0, 10, 10}));
    EXPECT_EQ(heatmapCellRect(2, 3, 10), (Rect{24, 36, 10, 10}));
    EXPECT_EQ(heatmapCellAt({25, 37}, 10), (std::pair{2, 3}));
    EXPECT_EQ(heatmapCellAt({0, 0}, 10), (std::pair{0, 0}));
    EXPECT_FALSE(heatmapCellAt({-1, 5}, 10));
    EXPECT_FALSE(heatmapCellAt({5, 7 * 12 + 1}, 10));
    EXPECT_FALSE(heatmapCellAt({26 * 12 + 1, 5}, 10));
}

TEST(PomodoroDashboardModelTest, HeatColours) {
    using B = HeatColour::Base;
    EXPECT_EQ(heatColour(0), (HeatColour{B::separator, 0.35}));
    EXPECT_EQ(heatColour(1), (HeatColour{B::green, 0.28}));
    EXPECT_EQ(heatColour(2), (HeatColour{B::green, 0.28}));
    EXPECT_EQ(heatColour(3), (HeatColour{B::green, 0.5}));
    EXPECT_EQ(heatColour(4), (HeatColour{B::green, 0.5}));
    EXPECT_EQ(heatColour(5), (HeatColour{B::green, 0.75}));
    EXPECT_EQ(heatColour(7), (HeatColour{B::green, 0.75}));
    EXPECT_EQ(heatColour(8), (HeatColour{B::green, 1.0}));
    EXPECT_EQ(heatColour(200), (HeatColour{B::green, 1.0}));
}

TEST(PomodoroDashboardModelTest, SessionsCountText) {
    using L = SettingsLanguage;
    EXPECT_EQ(sessionsCountText(0, L::en), "0 sessions");
    EXPECT_EQ(sessionsCountText(1, L::en), "1 session");
    EXPECT_EQ(sessionsCountText(3, L::en), "3 sessions");
    EXPECT_EQ(sessionsCountText(21, L::en), "21 sessions");
    EXPECT_EQ(sessionsCountText(1, L::ru), "1 сессия");
    EXPECT_EQ(sessionsCountText(21, L::ru), "21 сессия");
    EXPECT_EQ(sessionsCountText(11, L::ru), "11 сессий");
    EXPECT_EQ(sessionsCountText(12, L::ru), "12 сессий");
    EXPECT_EQ(sessionsCountText(14, L::ru), "14 сессий");
    EXPECT_EQ(sessionsCountText(111, L::ru), "111 сессий");
    EXPECT_EQ(sessionsCountText(3, L::ru), "3 сессии");
    EXPECT_EQ(sessionsCountText(22, L::ru), "22 сессии");
    EXPECT_EQ(sessionsCountText(5, L::ru), "5 сессий");
    EXPECT_EQ(sessionsCountText(0, L::ru), "0 сессий");
}

TEST(PomodoroDashboardModelTest, TooltipTextInBothLanguages) {
    EXPECT_EQ(tooltipText(day(2026, 11, 16), 3, SettingsLanguage::en, utc()), "Monday, November 16 — 3 sessions");
    EXPECT_EQ(tooltipText(day(2026, 11, 16), 21, SettingsLanguage::ru, utc()), "понедельник, 16 ноября — 21 сессия");
    // The date is read in the calendar's zone: UTC midnight is still the 15th in New York.
    const PomodoroCalendar newYork("America/New_York", "en_US");
    EXPECT_EQ(tooltipText(day(2026, 11, 16), 1, SettingsLanguage::en, newYork), "Sunday, November 15 — 1 session");
}

TEST(PomodoroDashboardModelTest, Dots) {
    EXPECT_EQ(dotFill(1, 3), DotFill::finished);
    EXPECT_EQ(dotFill(3, 3), DotFill::current);
    EXPECT_EQ(dotFill(4, 3), DotFill::upcoming);
    EXPECT_EQ(dotRect(1, 14), (Rect{0, 2, 10, 10}));
    EXPECT_EQ(dotRect(3, 14), (Rect{32, 2, 10, 10}));
    EXPECT_EQ(currentDotRing(3, 14), (Rect{30, 0, 14, 14}));
    EXPECT_DOUBLE_EQ(dotsIntrinsicWidth(4), 58);
    EXPECT_DOUBLE_EQ(dotsIntrinsicWidth(1), 10);
}

TEST(PomodoroDashboardModelTest, TheTooltipNearTheTopOfTheScreenFlipsBelowThePointer) {
    const Rect screen{0, 0, 1280, 800};
    const Rect above = tooltipFrame(100.2, 14, {400, 300}, screen);
    EXPECT_EQ(above, (Rect{400 - 58.5, 300 - 18 - 22, 117, 22}));
    const Rect below = tooltipFrame(100, 14, {400, 20}, screen);
    EXPECT_DOUBLE_EQ(below.y, 38);
    const Rect left = tooltipFrame(100, 14, {2, 300}, screen);
    EXPECT_DOUBLE_EQ(left.x, 4);
    const Rect right = tooltipFrame(100, 14, {1279, 300}, screen);
    EXPECT_DOUBLE_EQ(right.x + right.width, 1276);
    const Rect bottom = tooltipFrame(100, 14, {400, 30}, Rect{0, 0, 1280, 60});
    EXPECT_DOUBLE_EQ(bottom.y + bottom.height, 56);
}

class PomodoroDashboardViewTest : public ::testing::Test {
protected:
    pomodoro_testing::Environment env_;
    PomodoroHistory history_{env_.dir.path() / "h.json", *env_.historyQueue, env_.loop(), nullptr};
};

TEST_F(PomodoroDashboardViewTest, ProgressStaysBetweenZeroAndOneWhenTheSettingsChange) {
    EXPECT_DOUBLE_EQ(ringProgress(State::running(P::work, 1500), env_.settings), 0.0);
    EXPECT_DOUBLE_EQ(ringProgress(State::running(P::work, 750), env_.settings), 0.5);
    EXPECT_DOUBLE_EQ(ringProgress(State::idle(), env_.settings), 0.0);
    env_.settings.set(settings::kWorkDurationMinutes, 5);  // lowered during a phase of 25
    EXPECT_DOUBLE_EQ(ringProgress(State::running(P::work, 1400), env_.settings), 0.0);
    env_.settings.set(settings::kWorkDurationMinutes, 90);  // raised
    EXPECT_NEAR(ringProgress(State::running(P::work, 1400), env_.settings), 1 - 1400.0 / 5400, 1e-12);
    EXPECT_DOUBLE_EQ(ringProgress(State::paused(P::work, 1), env_.settings), 1 - 1.0 / 5400);
    env_.settings.set(settings::kWorkDurationMinutes, 5);
    EXPECT_GE(ringProgress(State::running(P::work, 5400), env_.settings), 0.0);
    EXPECT_LE(ringProgress(State::running(P::work, -3), env_.settings), 1.0);
}

TEST_F(PomodoroDashboardViewTest, IdleShowsTheWorkLengthAndStart) {
    env_.settings.set(settings::kWorkDurationMinutes, 30);
    const View view = makeView(State::idle(), 1, 4, env_.settings, history_, utc());
    EXPECT_EQ(view.timeText, "30:00");
    EXPECT_EQ(view.phaseText, "FOCUS");
    EXPECT_EQ(view.primary, PrimaryAction::start);
    EXPECT_FALSE(view.transportEnabled);
    EXPECT_FALSE(view.ringActive);
    EXPECT_EQ(view.sessionText, "Session 1 of 4");
    EXPECT_EQ(view.todayText, "0");
    EXPECT_EQ(view.focusedText, "0m");
    EXPECT_EQ(view.weekText, "0");
}

TEST_F(PomodoroDashboardViewTest, RunningAndPausedInRussian) {
    env_.settings.set(settings::kSettingsLanguage, SettingsLanguage::ru);
    env_.settings.set(settings::kPomodoroToggleDND, true);
    history_.record(25, env_.loop().wallNow());
    history_.record(25, env_.loop().wallNow());
    history_.record(25, env_.loop().wallNow());
    View view = makeView(State::running(P::breakTime, 61), 3, 4, env_.settings, history_, utc());
    EXPECT_EQ(view.timeText, "01:01");
    EXPECT_EQ(view.phaseText, "ПЕРЕРЫВ");
    EXPECT_EQ(view.primary, PrimaryAction::pause);
    EXPECT_TRUE(view.transportEnabled);
    EXPECT_TRUE(view.ringActive);
    EXPECT_EQ(view.sessionText, "Сессия 3 из 4");
    EXPECT_EQ(view.todayText, "3");
    EXPECT_EQ(view.focusedText, "1ч 15м");
    EXPECT_TRUE(view.focusChecked);
    EXPECT_EQ(view.counts.size(), 1u);
    view = makeView(State::paused(P::longBreak, 61), 4, 4, env_.settings, history_, utc());
    EXPECT_EQ(view.primary, PrimaryAction::resume);
    EXPECT_TRUE(view.ringActive);  // active also when paused
    EXPECT_EQ(view.phaseText, "ДЛИННЫЙ ПЕРЕРЫВ");
}

}  // namespace
}  // namespace orvantis::pomodoro_dashboard
