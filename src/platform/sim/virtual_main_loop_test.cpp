#include "platform/sim/virtual_main_loop.h"

#include <gtest/gtest.h>

#include <vector>

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

}  // namespace
}  // namespace orvantis::sim
