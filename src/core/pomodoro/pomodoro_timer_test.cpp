#include "core/pomodoro/pomodoro_timer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "testing/pomodoro_test_environment.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using State = PomodoroTimerState;
using P = PomodoroPhase;

class PomodoroTimerTest : public ::testing::Test {
protected:
    PomodoroTimerTest() {
        timer_.onTick = [this](const State& s) { ticks_.push_back(s); };
        timer_.onPhaseTransition = [this](P p) {
            transitions_.push_back(p);
            stateAtTransition_.push_back(timer_.state());
        };
    }
    void seconds(int n) { env_.loop().runFor(std::chrono::seconds(n)); }

    pomodoro_testing::Environment env_;
    PomodoroTimer timer_{env_.settings, env_.loop()};
    std::vector<State> ticks_;
    std::vector<P> transitions_;
    std::vector<State> stateAtTransition_;
};

TEST(PomodoroTimerStateTest, MenuBarTitles) {
    EXPECT_EQ(State::running(P::work, 1499).menuBarTitle(), "\U0001F345 24:59");
    EXPECT_EQ(State::running(P::breakTime, 61).menuBarTitle(), "\u2615 01:01");
    EXPECT_EQ(State::running(P::longBreak, 900).menuBarTitle(), "\U0001F6CB 15:00");
    EXPECT_EQ(State::paused(P::longBreak, 5).menuBarTitle(), "\u23F8 00:05");
    EXPECT_EQ(State::paused(P::work, 5).menuBarTitle(), "\u23F8 00:05");
    EXPECT_EQ(State::idle().menuBarTitle(), "");
    EXPECT_EQ(State::running(P::work, 5400).menuBarTitle(), "\U0001F345 90:00");  // no hours field
    EXPECT_EQ(State::running(P::work, 5400).menuBarTitle().find("\uFE0F"), std::string::npos);
}

TEST(PomodoroTimerStateTest, DerivedPropertiesAndEquality) {
    EXPECT_FALSE(State::idle().isActive());
    EXPECT_FALSE(State::idle().phase().has_value());
    EXPECT_FALSE(State::idle().remainingSeconds().has_value());
    EXPECT_TRUE(State::paused(P::work, 3).isActive());
    EXPECT_EQ(State::paused(P::work, 3).remainingSeconds(), 3);
    EXPECT_EQ(State::running(P::breakTime, 3).phase(), P::breakTime);
    EXPECT_EQ(State::running(P::work, 3), State::running(P::work, 3));
    EXPECT_NE(State::running(P::work, 3), State::paused(P::work, 3));
    EXPECT_NE(State::running(P::work, 3), State::running(P::work, 4));
    EXPECT_NE(State::running(P::work, 3), State::running(P::breakTime, 3));
    EXPECT_FALSE(isBreak(P::work));
    EXPECT_TRUE(isBreak(P::breakTime));
    EXPECT_TRUE(isBreak(P::longBreak));
}

TEST_F(PomodoroTimerTest, StoredLengthsAreClampedBeforeTheMultiplication) {
    env_.storeRaw(settings::kWorkDurationMinutes, 3);
    env_.storeRaw(settings::kBreakDurationMinutes, 0);
    env_.storeRaw(settings::kLongBreakDurationMinutes, 60);
    EXPECT_EQ(pomodoroDurationSeconds(env_.settings, P::work), 300);
    EXPECT_EQ(pomodoroDurationSeconds(env_.settings, P::breakTime), 60);
    EXPECT_EQ(pomodoroDurationSeconds(env_.settings, P::longBreak), 2700);
    env_.storeRaw(settings::kWorkDurationMinutes, 120);
    EXPECT_EQ(pomodoroDurationSeconds(env_.settings, P::work), 5400);
    timer_.start();
    EXPECT_EQ(timer_.state(), State::running(P::work, 5400));
}

TEST_F(PomodoroTimerTest, DefaultsAreTwentyFiveFiveAndFifteen) {
    EXPECT_EQ(pomodoroDurationSeconds(env_.settings, P::work), 1500);
    EXPECT_EQ(pomodoroDurationSeconds(env_.settings, P::breakTime), 300);
    EXPECT_EQ(pomodoroDurationSeconds(env_.settings, P::longBreak), 900);
}

TEST_F(PomodoroTimerTest, StartCountsDownOneSecondPerTick) {
    timer_.start();
    ASSERT_EQ(ticks_.size(), 1u);
    EXPECT_EQ(ticks_[0], State::running(P::work, 1500));
    seconds(1);
    EXPECT_EQ(timer_.state(), State::running(P::work, 1499));
    seconds(59);
    EXPECT_EQ(timer_.state(), State::running(P::work, 1440));
    EXPECT_EQ(ticks_.size(), 61u);
}

TEST_F(PomodoroTimerTest, PauseTwiceKeepsTheFirstPausedStateAndTicksOnce) {
    timer_.start();
    seconds(10);
    ticks_.clear();
    timer_.pause();
    timer_.pause();
    EXPECT_EQ(ticks_.size(), 1u);
    EXPECT_EQ(timer_.state(), State::paused(P::work, 1490));
    EXPECT_FALSE(timer_.isTicking());
    seconds(100);
    EXPECT_EQ(timer_.state(), State::paused(P::work, 1490));
    EXPECT_EQ(ticks_.size(), 1u);
}

TEST_F(PomodoroTimerTest, ResumeActsOnlyWhenPaused) {
    timer_.resume();
    EXPECT_TRUE(ticks_.empty());
    timer_.start();
    timer_.resume();
    EXPECT_EQ(ticks_.size(), 1u);
    timer_.pause();
    timer_.resume();
    EXPECT_EQ(timer_.state(), State::running(P::work, 1500));
    seconds(1);
    EXPECT_EQ(timer_.state(), State::running(P::work, 1499));
}

TEST_F(PomodoroTimerTest, StopWhenIdleStillTellsIdle) {
    timer_.stop();
    ASSERT_EQ(ticks_.size(), 1u);
    EXPECT_EQ(ticks_[0], State::idle());
}

TEST_F(PomodoroTimerTest, SkipAndResetWhenIdleCallNothing) {
    timer_.skip();
    timer_.reset();
    EXPECT_TRUE(ticks_.empty());
    EXPECT_TRUE(transitions_.empty());
    EXPECT_EQ(timer_.state(), State::idle());
    EXPECT_EQ(env_.loop().pendingTimers(), 0u);
}

TEST_F(PomodoroTimerTest, TheLastSecondGoesStraightToTheNextPhase) {
    env_.storeRaw(settings::kWorkDurationMinutes, 5);
    timer_.start();
    seconds(298);
    EXPECT_EQ(timer_.state(), State::running(P::work, 2));
    seconds(1);
    EXPECT_EQ(timer_.state(), State::running(P::work, 1));
    EXPECT_TRUE(transitions_.empty());
    seconds(1);
    ASSERT_EQ(transitions_.size(), 1u);
    EXPECT_EQ(transitions_[0], P::breakTime);
    EXPECT_EQ(timer_.state(), State::running(P::breakTime, 300));
    for (const auto& s : ticks_) EXPECT_NE(s.menuBarTitle(), "\U0001F345 00:00");
    for (const auto& s : ticks_) EXPECT_NE(s.remainingSeconds(), 0);
}

TEST_F(PomodoroTimerTest, TheTransitionSeesTheOldState) {
    timer_.start();
    seconds(1500);
    ASSERT_EQ(stateAtTransition_.size(), 1u);
    EXPECT_EQ(stateAtTransition_[0], State::running(P::work, 1));
    timer_.skip();
    ASSERT_EQ(stateAtTransition_.size(), 2u);
    EXPECT_EQ(stateAtTransition_[1], State::running(P::breakTime, 300));
}

TEST_F(PomodoroTimerTest, TheNewPhasesFirstSecondIsWhole) {
    env_.storeRaw(settings::kWorkDurationMinutes, 5);
    timer_.start();
    env_.loop().runFor(299'500ms);
    EXPECT_EQ(timer_.state(), State::running(P::work, 1));
    env_.loop().runFor(500ms);  // the phase ends here
    EXPECT_EQ(timer_.state(), State::running(P::breakTime, 300));
    env_.loop().runFor(999ms);
    EXPECT_EQ(timer_.state(), State::running(P::breakTime, 300));
    env_.loop().runFor(1ms);
    EXPECT_EQ(timer_.state(), State::running(P::breakTime, 299));
    EXPECT_EQ(env_.loop().pendingTimers(), 1u);
}

TEST_F(PomodoroTimerTest, WithoutTheDeciderWorkAndBreakAlternateForEver) {
    timer_.start();
    for (int i = 0; i < 12; ++i) timer_.skip();
    ASSERT_EQ(transitions_.size(), 12u);
    for (std::size_t i = 0; i < transitions_.size(); ++i)
        EXPECT_EQ(transitions_[i], i % 2 == 0 ? P::breakTime : P::work) << i;
    seconds(20 * 3600);
    for (P p : transitions_) EXPECT_NE(p, P::longBreak);
    EXPECT_GT(transitions_.size(), 12u);
}

TEST_F(PomodoroTimerTest, ASkippedPausedPhaseRuns) {
    timer_.start();
    timer_.pause();
    timer_.skip();
    EXPECT_EQ(timer_.state(), State::running(P::breakTime, 300));
    EXPECT_TRUE(timer_.isTicking());
}

TEST_F(PomodoroTimerTest, ResetRestartsThePhaseFromItsLengthWithoutATransition) {
    timer_.start();
    timer_.skip();
    seconds(100);
    timer_.pause();
    env_.storeRaw(settings::kBreakDurationMinutes, 7);
    timer_.reset();
    EXPECT_EQ(timer_.state(), State::running(P::breakTime, 420));
    EXPECT_EQ(transitions_.size(), 1u);
    EXPECT_EQ(env_.loop().pendingTimers(), 1u);
}

TEST_F(PomodoroTimerTest, TheDeciderChoosesTheNextPhase) {
    timer_.nextPhaseAfter = [](P) { return std::pair{P::longBreak, 42}; };
    timer_.start();
    timer_.skip();
    EXPECT_EQ(timer_.state(), State::running(P::longBreak, 42));
}

TEST_F(PomodoroTimerTest, AtMostOneTimerAndNoneWhenNotRunning) {
    timer_.start();
    EXPECT_EQ(env_.loop().pendingTimers(), 1u);
    seconds(1500);
    EXPECT_EQ(env_.loop().pendingTimers(), 1u);
    timer_.pause();
    EXPECT_EQ(env_.loop().pendingTimers(), 0u);
    timer_.resume();
    EXPECT_EQ(env_.loop().pendingTimers(), 1u);
    timer_.stop();
    EXPECT_EQ(env_.loop().pendingTimers(), 0u);
}

TEST_F(PomodoroTimerTest, ADestroyedTimerIsNeverCalledBack) {
    auto timer = std::make_unique<PomodoroTimer>(env_.settings, env_.loop());
    int ticks = 0;
    timer->onTick = [&](const State&) { ++ticks; };
    timer->start();
    timer.reset();
    seconds(5);
    EXPECT_EQ(ticks, 1);
}

}  // namespace
}  // namespace orvantis
