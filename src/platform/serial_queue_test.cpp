#include "platform/serial_queue.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace orvantis::platform {
namespace {

TEST(ThreadSerialQueueTest, RunsTasksInOrderOffTheCallingThread) {
    ThreadSerialQueue queue("test");
    std::vector<int> order;
    std::thread::id worker;
    for (int i = 0; i < 100; ++i) queue.async([&order, i] { order.push_back(i); });
    queue.sync([&] { worker = std::this_thread::get_id(); });
    ASSERT_EQ(order.size(), 100u);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
    EXPECT_NE(worker, std::this_thread::get_id());
}

TEST(ThreadSerialQueueTest, DestructionRunsWhatIsStillQueued) {
    int ran = 0;
    {
        ThreadSerialQueue queue("test");
        for (int i = 0; i < 10; ++i) queue.async([&ran] { ++ran; });
    }
    EXPECT_EQ(ran, 10);
}

}  // namespace
}  // namespace orvantis::platform
