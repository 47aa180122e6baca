#include "platform/sim/virtual_main_loop.h"

#include <gtest/gtest.h>

#include <vector>

#include <unistd.h>

namespace orvantis::sim {
namespace {

using namespace std::chrono_literals;

TEST(VirtualMainLoopTest, TimersFireAtTheirDueTimeOnly) {
    VirtualMainLoop loop;
    int fired = 0;
    auto timer = loop.postAfter(250ms, [&] { ++fired; });
    loop.runFor(249ms);
    EXPECT_EQ(fired, 0);
    EXPECT_TRUE(timer.isActive());
    loop.runFor(1ms);
    EXPECT_EQ(fired, 1);
    EXPECT_FALSE(timer.isActive());
}

TEST(VirtualMainLoopTest, DestroyingTheHandleCancels) {
    VirtualMainLoop loop;
    int fired = 0;
    { auto timer = loop.postAfter(10ms, [&] { ++fired; }); }
    loop.runFor(1s);
    EXPECT_EQ(fired, 0);
}

TEST(VirtualMainLoopTest, RepeatingTimerSeesItsOwnTimeAndCanCancelItself) {
    VirtualMainLoop loop;
    std::vector<std::chrono::steady_clock::time_point> ticks;
    platform::TimerHandle timer;
    timer = loop.every(2s, [&] {
        ticks.push_back(loop.monotonicNow());
        if (ticks.size() == 3) timer.cancel();
    });
    const auto start = loop.monotonicNow();
    loop.runFor(60s);
    ASSERT_EQ(ticks.size(), 3u);
    EXPECT_EQ(ticks[0] - start, 2s);
    EXPECT_EQ(ticks[2] - start, 6s);
}

TEST(VirtualMainLoopTest, PostedTasksRunInOrderBeforeTimers) {
    VirtualMainLoop loop;
    std::vector<int> order;
    auto timer = loop.postAfter(0ms, [&] { order.push_back(3); });
    loop.post([&] {
        order.push_back(1);
        loop.post([&] { order.push_back(2); });
    });
    EXPECT_EQ(loop.runUntilIdle(), 3u);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(VirtualMainLoopTest, SerialQueueWorkRunsInLoopTurnsAndSyncDrainsFirst) {
    VirtualMainLoop loop;
    auto queue = loop.makeSerialQueue("q");
    std::vector<int> order;
    queue->async([&] { order.push_back(1); });
    queue->async([&] { order.push_back(2); });
    EXPECT_TRUE(order.empty());
    queue->sync([&] { order.push_back(3); });
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
    queue->async([&] { order.push_back(4); });
    loop.runUntilIdle();
    EXPECT_EQ(order.back(), 4);
}

TEST(VirtualMainLoopTest, WallClockMovesWithTimeAndCanJump) {
    VirtualMainLoop loop;
    const auto start = loop.wallNow();
    loop.runFor(90min);
    EXPECT_EQ(loop.wallNow() - start, 90min);
    loop.setWallTime(start + 24h);
    EXPECT_EQ(loop.wallNow() - start, 24h);
    loop.runFor(1s);
    EXPECT_EQ(loop.wallNow() - start, 24h + 1s);
}

/// A pipe whose two ends close with the test.
struct Pipe {
    Pipe() { EXPECT_EQ(::pipe(fds), 0); }
    ~Pipe() {
        ::close(fds[0]);
        ::close(fds[1]);
    }
    int fds[2] = {-1, -1};
};

TEST(VirtualMainLoopTest, AReadableDescriptorIsServedWithoutTimeMoving) {
    VirtualMainLoop loop;
    Pipe pipe;
    std::string received;
    auto watch = loop.watchReadable(pipe.fds[0], [&] {
        char buffer[16];
        const auto n = ::read(pipe.fds[0], buffer, sizeof buffer);
        if (n > 0) received.append(buffer, static_cast<std::size_t>(n));
    });
    EXPECT_TRUE(watch);
    EXPECT_EQ(loop.runUntilIdle(), 0u) << "nothing to read yet";
    ASSERT_EQ(::write(pipe.fds[1], "ab", 2), 2);
    EXPECT_EQ(loop.runUntilIdle(), 1u);
    EXPECT_EQ(received, "ab");
    EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST(VirtualMainLoopTest, AnEndedWatchIsNotCalledAgain) {
    VirtualMainLoop loop;
    Pipe pipe;
    int calls = 0;
    Subscription watch = loop.watchReadable(pipe.fds[0], [&] {
        ++calls;
        char c;
        (void)::read(pipe.fds[0], &c, 1);
        watch.reset();  // the callback may end its own watch
    });
    EXPECT_EQ(loop.watchedDescriptors(), 1u);
    ASSERT_EQ(::write(pipe.fds[1], "xy", 2), 2);
    loop.runUntilIdle();
    EXPECT_EQ(calls, 1) << "one byte is still there, but the watch has ended";
    EXPECT_EQ(loop.watchedDescriptors(), 0u);
}

TEST(VirtualMainLoopTest, ACallbackThatNeverReadsIsReportedInsteadOfHanging) {
    VirtualMainLoop loop;
    Pipe pipe;
    auto watch = loop.watchReadable(pipe.fds[0], [] {});
    ASSERT_EQ(::write(pipe.fds[1], "z", 1), 1);
    EXPECT_THROW(loop.runUntilIdle(), std::logic_error);
}

}  // namespace
}  // namespace orvantis::sim
