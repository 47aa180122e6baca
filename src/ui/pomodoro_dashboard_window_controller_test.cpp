#include "ui/pomodoro_dashboard_window_controller.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <gtest/gtest.h>

#include <chrono>

#include "core/events/global_event_monitor.h"
#include "platform/sim/pomodoro_services.h"
#include "testing/pomodoro_test_environment.h"

namespace orvantis::ui {
namespace {

using namespace std::chrono_literals;
using State = PomodoroTimerState;
using P = PomodoroPhase;

class PomodoroDashboardTest : public ::testing::Test {
protected:
    PomodoroCalendar calendar() const { return PomodoroCalendar("UTC", "en_GB"); }
    std::unique_ptr<PomodoroDashboardWindowController> open() {
        return std::make_unique<PomodoroDashboardWindowController>(coordinator_, [this] { return calendar(); },
                                                                   [this] { ++closed_; });
    }

    pomodoro_testing::Environment env_;
    sim::UserNotifications notifications_{env_.loop()};
    sim::SystemSleepEvents sleep_;
    sim::FocusCommands focus_;
    PomodoroHistory history_{env_.dir.path() / "h.json", *env_.historyQueue, env_.loop(), nullptr};
    PomodoroCoordinator coordinator_{env_.settings, history_, nullptr, env_.loop(),
                                     {notifications_, sleep_, focus_}, env_.log};
    int closed_ = 0;
};

TEST_F(PomodoroDashboardTest, IdleShowsTheWorkLengthAndAStartButton) {
    auto dashboard = open();
    EXPECT_EQ(dashboard->ring()->timeLabel()->text(), QStringLiteral("25:00"));
    EXPECT_EQ(dashboard->ring()->phaseLabel()->text(), QStringLiteral("FOCUS"));
    EXPECT_EQ(dashboard->primaryButton()->text(), QStringLiteral("Start"));
    EXPECT_FALSE(dashboard->skipButton()->isEnabled());
    EXPECT_FALSE(dashboard->resetButton()->isEnabled());
    EXPECT_EQ(dashboard->sessionLabel()->text(), QStringLiteral("Session 1 of 4"));
    EXPECT_EQ(dashboard->windowTitle(), QStringLiteral("Pomodoro Dashboard"));
}

TEST_F(PomodoroDashboardTest, TheButtonsDriveTheCoordinatorAndEachTickRefreshes) {
    auto dashboard = open();
    dashboard->primaryButton()->click();
    EXPECT_EQ(coordinator_.currentState(), State::running(P::work, 1500));
    EXPECT_EQ(dashboard->primaryButton()->text(), QStringLiteral("Pause"));
    env_.loop().runFor(3s);
    EXPECT_EQ(dashboard->ring()->timeLabel()->text(), QStringLiteral("24:57"));
    EXPECT_NEAR(dashboard->ring()->progress(), 3.0 / 1500, 1e-9);
    dashboard->primaryButton()->click();
    EXPECT_TRUE(coordinator_.currentState().isPaused());
    EXPECT_EQ(dashboard->primaryButton()->text(), QStringLiteral("Resume"));
    dashboard->skipButton()->click();
    EXPECT_EQ(coordinator_.currentState(), State::running(P::breakTime, 300));
    EXPECT_EQ(dashboard->todayValueLabel()->text(), QStringLiteral("1"));
    EXPECT_EQ(dashboard->focusedValueLabel()->text(), QStringLiteral("25m"));
    EXPECT_EQ(dashboard->weekValueLabel()->text(), QStringLiteral("1"));
    env_.loop().runFor(10s);
    dashboard->resetButton()->click();
    EXPECT_EQ(dashboard->ring()->timeLabel()->text(), QStringLiteral("05:00"));
}

TEST_F(PomodoroDashboardTest, TheFocusBoxWritesTheSettingAndThePinKeepsTheWindowOnTop) {
    auto dashboard = open();
    EXPECT_FALSE(dashboard->dndCheckbox()->isChecked());
    dashboard->dndCheckbox()->click();
    EXPECT_TRUE(env_.settings.get(settings::kPomodoroToggleDND));
    EXPECT_FALSE(dashboard->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    dashboard->pinButton()->click();
    EXPECT_TRUE(env_.settings.get(settings::kPomodoroDashboardPinned));
    EXPECT_TRUE(dashboard->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    dashboard->pinButton()->click();
    EXPECT_FALSE(dashboard->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
}

TEST_F(PomodoroDashboardTest, PinnedAtOpeningItOpensOnTop) {
    env_.settings.set(settings::kPomodoroDashboardPinned, true);
    auto dashboard = open();
    EXPECT_TRUE(dashboard->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
}

TEST_F(PomodoroDashboardTest, ClosingLetsGoOfTheCoordinator) {
    auto dashboard = open();
    EXPECT_TRUE(static_cast<bool>(coordinator_.onDashboardStateChange));
    dashboard->show();
    dashboard->close();
    EXPECT_EQ(closed_, 1);
    EXPECT_FALSE(static_cast<bool>(coordinator_.onDashboardStateChange));
    coordinator_.startSession();  // nothing reaches the closed window
}

TEST_F(PomodoroDashboardTest, RussianTexts) {
    env_.settings.set(settings::kSettingsLanguage, SettingsLanguage::ru);
    auto dashboard = open();
    EXPECT_EQ(dashboard->sessionLabel()->text(), QString::fromUtf8("Сессия 1 из 4"));
    EXPECT_EQ(dashboard->ring()->phaseLabel()->text(), QString::fromUtf8("ФОКУС"));
}

TEST_F(PomodoroDashboardTest, TheHeatmapTooltipShowsForPastDaysOnly) {
    coordinator_.startSession();
    coordinator_.skipPhase();  // one record, today (Sunday 15 November in UTC)
    auto dashboard = open();
    PomodoroHeatmapView* map = dashboard->heatmapView();
    map->resize(336, map->heightForWidth(336));  // cells of 11, 13 apart
    // Sunday is the last row of the last column.
    EXPECT_EQ(map->tooltipTextAt(QPoint(25 * 13 + 5, 6 * 13 + 5)), QString::fromUtf8("Sunday, November 15 — 1 session"));
    EXPECT_EQ(map->tooltipTextAt(QPoint(24 * 13 + 5, 0 * 13 + 5)), QString::fromUtf8("Monday, November 2 — 0 sessions"));
    EXPECT_FALSE(map->tooltipTextAt(QPoint(-3, 5)));
    EXPECT_FALSE(map->tooltipTextAt(QPoint(5, 8 * 13)));
}

TEST_F(PomodoroDashboardTest, ARefreshOverSixtyDaysOfTwentySessionsTakesUnderAMillisecond) {
    for (int day = 59; day >= 0; --day)
        for (int i = 0; i < 20; ++i) history_.record(25, env_.loop().wallNow() - day * 24h - i * 20min);
    auto dashboard = open();
    dashboard->refresh();
    QElapsedTimer timer;
    timer.start();
    constexpr int kRuns = 50;
    for (int i = 0; i < kRuns; ++i) dashboard->refresh();
    const double perRefreshMs = static_cast<double>(timer.nsecsElapsed()) / kRuns / 1e6;
    RecordProperty("refreshMicroseconds", static_cast<int>(perRefreshMs * 1000));
    std::printf("dashboard refresh: %.3f ms over %zu records\n", perRefreshMs, history_.records().size());
    EXPECT_LT(perRefreshMs, 1.0);
}

}  // namespace
}  // namespace orvantis::ui
