#include "ui/qt_main_loop.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <gtest/gtest.h>

#include <unistd.h>

namespace orvantis::ui {
namespace {

using namespace std::chrono_literals;

/// Runs Qt's event loop until `done` holds or `limit` has passed; answers `done()`.
template <typename Predicate>
bool spinUntil(Predicate done, std::chrono::milliseconds limit = 5000ms) {
    QElapsedTimer elapsed;
    elapsed.start();
    while (!done() && elapsed.elapsed() < limit.count()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 10);
    }
    return done();
}

/// Runs Qt's event loop for `duration`.
void spinFor(std::chrono::milliseconds duration) {
    QEventLoop loop;
    QTimer::singleShot(duration, &loop, &QEventLoop::quit);
    loop.exec();
}

TEST(QtMainLoopTest, PostedTasksRunInOrderOnTheLoop) {
    QtMainLoop loop;
    std::vector<int> order;
    loop.post([&] { order.push_back(1); });
    loop.post([&] { order.push_back(2); });
    EXPECT_TRUE(order.empty());
    ASSERT_TRUE(spinUntil([&] { return order.size() == 2; }));
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST(QtMainLoopTest, PostFromAnotherThreadRunsOnTheMainThread) {
    QtMainLoop loop;
    std::atomic<bool> ran = false;
    std::thread::id ranOn;
    std::thread poster([&] {
        loop.post([&] {
            ranOn = std::this_thread::get_id();
            ran = true;
        });
    });
    poster.join();
    ASSERT_TRUE(spinUntil([&] { return ran.load(); }));
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST(QtMainLoopTest, PostAfterRunsOnceAfterTheDelay) {
    QtMainLoop loop;
    int calls = 0;
    QElapsedTimer elapsed;
    elapsed.start();
    qint64 firedAt = -1;
    auto handle = loop.postAfter(30ms, [&] {
        ++calls;
        firedAt = elapsed.elapsed();
    });
    EXPECT_TRUE(handle.isActive());
    ASSERT_TRUE(spinUntil([&] { return calls == 1; }));
    EXPECT_GE(firedAt, 29);
    EXPECT_FALSE(handle.isActive());
    spinFor(60ms);
    EXPECT_EQ(calls, 1);
}

TEST(QtMainLoopTest, CancelledTimerNeverRuns) {
    QtMainLoop loop;
    int calls = 0;
    auto handle = loop.postAfter(10ms, [&] { ++calls; });
    handle.cancel();
    EXPECT_FALSE(handle.isActive());
    spinFor(50ms);
    EXPECT_EQ(calls, 0);
}

TEST(QtMainLoopTest, DestroyingTheHandleCancelsTheTimer) {
    QtMainLoop loop;
    int calls = 0;
    { auto handle = loop.postAfter(10ms, [&] { ++calls; }); }
    spinFor(50ms);
    EXPECT_EQ(calls, 0);
}

TEST(QtMainLoopTest, EveryRepeatsUntilCancelledFromItsOwnTask) {
    QtMainLoop loop;
    int calls = 0;
    platform::TimerHandle handle;
    handle = loop.every(5ms, [&] {
        if (++calls == 3) handle.cancel();
    });
    ASSERT_TRUE(spinUntil([&] { return calls == 3; }));
    spinFor(40ms);
    EXPECT_EQ(calls, 3);
    EXPECT_FALSE(handle.isActive());
}

TEST(QtMainLoopTest, CancelledAndFiredTimersAreFreed) {
    QtMainLoop loop;
    bool fired = false;
    auto oneShot = loop.postAfter(1ms, [&] { fired = true; });
    {
        auto repeating = loop.every(1h, [] {});
        auto delayed = loop.postAfter(1h, [] {});
        EXPECT_EQ(loop.timerCount(), 3u);
    }
    ASSERT_TRUE(spinUntil([&] { return fired; }));
    spinFor(10ms);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(loop.timerCount(), 0u);
}

TEST(QtMainLoopTest, HandleOutlivingTheLoopIsHarmless) {
    platform::TimerHandle handle;
    {
        QtMainLoop loop;
        handle = loop.postAfter(1h, [] {});
    }
    handle.cancel();
    EXPECT_FALSE(handle.isActive());
}

TEST(QtMainLoopTest, AWatchedDescriptorIsServedWhenReadableAndFreedWhenItEnds) {
    QtMainLoop loop;
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    std::string received;
    Subscription watch = loop.watchReadable(fds[0], [&] {
        char buffer[16];
        const auto n = ::read(fds[0], buffer, sizeof buffer);
        if (n > 0) received.append(buffer, static_cast<std::size_t>(n));
    });
    EXPECT_EQ(loop.watchCount(), 1u);
    ASSERT_EQ(::write(fds[1], "ok", 2), 2);
    EXPECT_TRUE(spinUntil([&] { return received == "ok"; }));
    watch.reset();
    ASSERT_EQ(::write(fds[1], "no", 2), 2);
    spinFor(20ms);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(received, "ok");
    EXPECT_EQ(loop.watchCount(), 0u);
    ::close(fds[0]);
    ::close(fds[1]);
}

TEST(QtMainLoopTest, SerialQueueRunsTasksOffTheMainThreadInOrder) {
    QtMainLoop loop;
    auto queue = loop.makeSerialQueue("MOLVEX.Orvantis.Test");
    EXPECT_EQ(queue->label(), "MOLVEX.Orvantis.Test");
    std::vector<int> order;
    std::thread::id ranOn;
    queue->async([&] { order.push_back(1); });
    queue->sync([&] {
        order.push_back(2);
        ranOn = std::this_thread::get_id();
    });
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    EXPECT_NE(ranOn, std::this_thread::get_id());
}

}  // namespace
}  // namespace orvantis::ui
