#include "core/permissions/permission_polling.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "core/permissions/permissions_manager.h"

#include "platform/sim/permissions.h"
#include "platform/sim/virtual_main_loop.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using Kind = sim::Permissions::Kind;

/// A monitor whose tap installs only once the test allows it, the way the desktop refuses the
/// tap until the permission is granted. Records every start and stop.
class FakeMonitor final : public GlobalEventMonitorProtocol {
public:
    /// Whether the desktop would accept a tap now.
    std::function<bool()> tapAllowed = [] { return false; };
    /// Runs inside stop(), before the monitor stops.
    std::function<void()> onStop;

    std::size_t startCount = 0;
    std::size_t stopCount = 0;
    std::size_t startsWhileRunning = 0;
    bool running = false;

    bool isRunning() const override { return running; }
    void start() override {
        ++startCount;
        if (running) ++startsWhileRunning;
        if (tapAllowed()) running = true;
    }
    void stop() override {
        ++stopCount;
        if (onStop) onStop();
        running = false;
    }

    Subscription onCharacterTyped(CharacterClosure) override { return {}; }
    Subscription onBackspace(Closure) override { return {}; }
    Subscription onWhitespace(Closure) override { return {}; }
    Subscription onCursorMoved(Closure) override { return {}; }
    Subscription onMouseDown(Closure) override { return {}; }
    Subscription onHotkey(Closure) override { return {}; }
    Subscription onTranslationHotkey(Closure) override { return {}; }
    Subscription onDirectTranslationHotkey(Closure) override { return {}; }
    Subscription onClipboardHistoryHotkey(Closure) override { return {}; }
    Subscription onPomodoroHotkey(Closure) override { return {}; }
    Subscription onPasswordHotkey(Closure) override { return {}; }
    Subscription onSnippetExpanderHotkey(Closure) override { return {}; }
    Subscription onTextTransformerHotkey(Closure) override { return {}; }
    Subscription onHotkeyOverlayPressed(Closure) override { return {}; }
    Subscription onHotkeyOverlayReleased(Closure) override { return {}; }
    Subscription onKeyboardLockHotkey(Closure) override { return {}; }
    Subscription onKeyboardLockEscPressed(Closure) override { return {}; }
    Subscription onKeyboardLockEscReleased(Closure) override { return {}; }
    Subscription onMenuBarHiderHotkey(Closure) override { return {}; }
    Subscription onCaffeineHotkey(Closure) override { return {}; }

    void updateHotkey(const HotkeyDescriptor&) override {}
    void updateTranslationHotkey(const HotkeyDescriptor&) override {}
    void updateDirectTranslationHotkey(const HotkeyDescriptor&) override {}
    void updateClipboardHistoryHotkey(const HotkeyDescriptor&) override {}
    void updatePomodoroHotkey(const HotkeyDescriptor&) override {}
    void updatePasswordHotkey(const HotkeyDescriptor&) override {}
    void updateSnippetExpanderHotkey(const HotkeyDescriptor&) override {}
    void updateTextTransformerHotkey(const HotkeyDescriptor&) override {}
    void updateHotkeyOverlayHotkey(const HotkeyDescriptor&) override {}
    void updateKeyboardLockHotkey(const HotkeyDescriptor&) override {}
    void setKeyboardLockActive(bool) override {}
    void updateMenuBarHiderHotkey(const HotkeyDescriptor&) override {}
    void updateCaffeineHotkey(const HotkeyDescriptor&) override {}
};

/// Counts the timers asked of the virtual loop, so a test can tell that none was ever made.
class CountingLoop final : public platform::MainLoop {
public:
    explicit CountingLoop(sim::VirtualMainLoop& loop) : loop_(loop) {}

    void post(platform::Task task) override { loop_.post(std::move(task)); }
    platform::TimerHandle postAfter(platform::Duration delay, platform::Task task) override {
        ++timersMade;
        return loop_.postAfter(delay, std::move(task));
    }
    platform::TimerHandle every(platform::Duration interval, platform::Task task) override {
        ++timersMade;
        return loop_.every(interval, std::move(task));
    }
    Subscription watchReadable(int fd, platform::Task onReadable) override {
        return loop_.watchReadable(fd, std::move(onReadable));
    }
    std::unique_ptr<platform::SerialQueue> makeSerialQueue(std::string label) override {
        return loop_.makeSerialQueue(std::move(label));
    }

    std::size_t timersMade = 0;

private:
    sim::VirtualMainLoop& loop_;
};

class PermissionPollingTest : public ::testing::Test {
protected:
    PermissionPollingTest() {
        // On X11 the tap stands on the input extension.
        monitor_.tapAllowed = [this] { return desktop_.hasInputMonitoring(); };
    }

    std::unique_ptr<PermissionPolling> make() {
        return std::make_unique<PermissionPolling>(
            monitor_, manager_, counting_,
            PermissionPolling::Banner{[this] { events_.push_back("show"); },
                                      [this] { events_.push_back("clear"); }});
    }
    std::size_t requests() const {
        return desktop_.requestCount(Kind::accessibility) + desktop_.requestCount(Kind::inputMonitoring);
    }
    void grantAll() {
        desktop_.set(Kind::accessibility, true);
        desktop_.set(Kind::inputMonitoring, true);
    }

    sim::VirtualMainLoop loop_;
    CountingLoop counting_{loop_};
    sim::Permissions desktop_;
    PermissionsManager manager_{desktop_};
    FakeMonitor monitor_;
    std::vector<std::string> events_;
};

TEST_F(PermissionPollingTest, AlreadyGrantedStartsTheMonitorAndMakesNoTimer) {
    grantAll();
    auto polling = make();
    polling->launch();
    loop_.runFor(60s);
    EXPECT_TRUE(monitor_.isRunning());
    EXPECT_EQ(monitor_.startCount, 1u);
    EXPECT_EQ(counting_.timersMade, 0u);
    EXPECT_EQ(loop_.pendingTimers(), 0u);
    EXPECT_TRUE(events_.empty()) << "no banner";
    EXPECT_EQ(requests(), 0u);
    EXPECT_FALSE(polling->isPolling());
}

TEST_F(PermissionPollingTest, MissingPermissionShowsTheBannerAtOnce) {
    auto polling = make();
    polling->launch();
    EXPECT_FALSE(monitor_.isRunning());
    EXPECT_EQ(events_, std::vector<std::string>{"show"});
    EXPECT_TRUE(polling->isPolling());
    EXPECT_TRUE(polling->isRequestPending());
}

TEST_F(PermissionPollingTest, LaterRunWithoutPermissionAsksOneSecondAfterLaunchNotBefore) {
    auto polling = make();
    polling->launch([] { return false; });
    loop_.runUntilIdle();
    EXPECT_EQ(requests(), 0u);
    loop_.runFor(999ms);
    EXPECT_EQ(requests(), 0u) << "asked before one second";
    loop_.runFor(1ms);
    EXPECT_EQ(desktop_.requestCount(Kind::accessibility), 1u);
    EXPECT_EQ(desktop_.requestCount(Kind::inputMonitoring), 1u);
    EXPECT_FALSE(polling->isRequestPending());
    loop_.runFor(30s);
    EXPECT_EQ(requests(), 2u) << "asked once, never again";
}

TEST_F(PermissionPollingTest, OnboardingShowingMakesNoRequestButPollingRuns) {
    auto polling = make();
    polling->launch([] { return true; });
    EXPECT_EQ(events_, std::vector<std::string>{"show"});
    EXPECT_FALSE(polling->isRequestPending());
    loop_.runFor(10s);
    EXPECT_EQ(requests(), 0u);
    EXPECT_EQ(monitor_.startCount, 1u + 5u) << "launch, then one retry every two seconds";
    EXPECT_TRUE(polling->isPolling());
}

TEST_F(PermissionPollingTest, OnboardingIsAskedAfterTheMonitorStartedAndBeforeTheBanner) {
    auto polling = make();
    std::size_t startsSeenByOnboarding = 0;
    polling->launch([&] {
        startsSeenByOnboarding = monitor_.startCount;
        events_.push_back("onboarding");
        return false;
    });
    EXPECT_EQ(startsSeenByOnboarding, 1u);
    EXPECT_EQ(events_, (std::vector<std::string>{"onboarding", "show"}));
}

TEST_F(PermissionPollingTest, GrantingLaterEndsTheBannerWithinTwoSecondsWithoutRestart) {
    auto polling = make();
    polling->launch();
    loop_.runFor(7300ms);
    ASSERT_EQ(events_, std::vector<std::string>{"show"});
    desktop_.set(Kind::inputMonitoring, true);  // the user grants it in the desktop's settings
    loop_.runFor(700ms);                         // the tick at 8 s
    EXPECT_TRUE(monitor_.isRunning());
    EXPECT_EQ(events_, (std::vector<std::string>{"show", "clear"}));
    EXPECT_FALSE(polling->isPolling());
}

TEST_F(PermissionPollingTest, GrantArrivingJustAfterATickIsSeenByTheNextOne) {
    auto polling = make();
    polling->launch();
    desktop_.grantLater(Kind::inputMonitoring, loop_, 4001ms);
    loop_.runFor(5999ms);
    EXPECT_EQ(events_, std::vector<std::string>{"show"});
    loop_.runFor(1ms);
    EXPECT_EQ(events_, (std::vector<std::string>{"show", "clear"}));
}

TEST_F(PermissionPollingTest, SuccessEndsThePollingForGood) {
    auto polling = make();
    polling->launch();
    desktop_.grantLater(Kind::inputMonitoring, loop_, 3s);
    loop_.runFor(4s);
    const std::size_t starts = monitor_.startCount;
    loop_.runFor(60s);
    EXPECT_EQ(monitor_.startCount, starts);
    EXPECT_EQ(loop_.pendingTimers(), 0u);
    EXPECT_EQ(events_, (std::vector<std::string>{"show", "clear"}));
}

TEST_F(PermissionPollingTest, PollingNeverEndsOnItsOwnWhilePermissionStaysMissing) {
    auto polling = make();
    polling->launch();
    loop_.runFor(std::chrono::hours(2));
    EXPECT_TRUE(polling->isPolling());
    EXPECT_EQ(monitor_.startCount, 1u + 3600u);
    EXPECT_EQ(events_, std::vector<std::string>{"show"});
}

TEST_F(PermissionPollingTest, PollingLooksAtTheTapNotAtThePermissions) {
    // Both permissions granted, yet the desktop still refuses the tap: the polling goes on.
    auto polling = make();
    polling->launch();
    monitor_.tapAllowed = [] { return false; };
    grantAll();
    loop_.runFor(20s);
    EXPECT_TRUE(polling->isPolling());
    EXPECT_EQ(events_, std::vector<std::string>{"show"});
}

TEST_F(PermissionPollingTest, ATapInstalledElsewhereEndsThePollingAtTheNextTick) {
    // A settings save installs the tap between two ticks; the tick must not install another.
    auto polling = make();
    polling->launch();
    loop_.runFor(2500ms);
    const std::size_t starts = monitor_.startCount;
    monitor_.running = true;
    loop_.runFor(1500ms);
    EXPECT_EQ(monitor_.startCount, starts);
    EXPECT_EQ(monitor_.startsWhileRunning, 0u);
    EXPECT_EQ(events_, (std::vector<std::string>{"show", "clear"}));
    EXPECT_FALSE(polling->isPolling());
}

TEST_F(PermissionPollingTest, StartPollingAgainReplacesTheRunningPoll) {
    auto polling = make();
    polling->launch();
    loop_.runFor(1s);
    polling->startPolling();
    loop_.runFor(2s);
    EXPECT_EQ(monitor_.startCount, 1u + 1u) << "one retry, at three seconds only";
    EXPECT_EQ(loop_.pendingTimers(), 1u);
}

TEST_F(PermissionPollingTest, TerminationWhileAPollIsPendingInvalidatesTheTimerBeforeTheMonitorStops) {
    auto polling = make();
    polling->launch();
    loop_.runFor(3s);
    ASSERT_TRUE(polling->isPolling());
    bool pollingAtStop = true;
    monitor_.onStop = [&] { pollingAtStop = polling->isPolling(); };
    polling->stop();
    EXPECT_EQ(monitor_.stopCount, 1u);
    EXPECT_FALSE(pollingAtStop);
    const std::size_t starts = monitor_.startCount;
    grantAll();
    loop_.runFor(60s);
    EXPECT_EQ(monitor_.startCount, starts) << "no retry after the end";
    EXPECT_EQ(events_, std::vector<std::string>{"show"});
}

TEST_F(PermissionPollingTest, TerminationBeforeTheRequestDropsIt) {
    auto polling = make();
    polling->launch();
    loop_.runFor(500ms);
    polling->cancelPolling();
    loop_.runFor(10s);
    EXPECT_EQ(requests(), 0u);
    EXPECT_EQ(monitor_.stopCount, 0u) << "cancelPolling leaves the monitor to its owner";
    EXPECT_EQ(loop_.pendingTimers(), 0u);
}

TEST_F(PermissionPollingTest, StopWithTheMonitorRunningStopsIt) {
    grantAll();
    auto polling = make();
    polling->launch();
    polling->stop();
    EXPECT_EQ(monitor_.stopCount, 1u);
    EXPECT_FALSE(monitor_.isRunning());
}

TEST_F(PermissionPollingTest, DestroyingItEndsEveryTimer) {
    auto polling = make();
    polling->launch();
    polling.reset();
    loop_.runFor(30s);
    EXPECT_EQ(monitor_.startCount, 1u);
    EXPECT_EQ(requests(), 0u);
    EXPECT_EQ(loop_.pendingTimers(), 0u);
}

TEST_F(PermissionPollingTest, TheRequestAndAGrantOnRequestLeadToTheTapAtTheNextTick) {
    // Switching the accessibility bus on at the request does not install the tap; the tick does,
    // once the desktop accepts it.
    monitor_.tapAllowed = [this] { return desktop_.hasAccessibility(); };
    desktop_.setGrantOnRequest(Kind::accessibility, true);
    auto polling = make();
    polling->launch();
    loop_.runFor(1s);
    EXPECT_TRUE(desktop_.hasAccessibility());
    EXPECT_FALSE(monitor_.isRunning());
    loop_.runFor(1s);
    EXPECT_TRUE(monitor_.isRunning());
    EXPECT_EQ(events_, (std::vector<std::string>{"show", "clear"}));
}

}  // namespace
}  // namespace orvantis
