#include "platform/subscription.h"

#include <gtest/gtest.h>

namespace orvantis {
namespace {

TEST(SubscriptionTest, DestroyingTheHandleUnregisters) {
    CallbackList<int> list;
    int sum = 0;
    {
        auto sub = list.add([&](int v) { sum += v; });
        list.notify(2);
    }
    list.notify(5);
    EXPECT_EQ(sum, 2);
    EXPECT_TRUE(list.empty());
}

TEST(SubscriptionTest, MoveTransfersTheRegistration) {
    CallbackList<> list;
    int calls = 0;
    Subscription outer;
    {
        auto inner = list.add([&] { ++calls; });
        outer = std::move(inner);
    }
    list.notify();
    EXPECT_EQ(calls, 1);
    outer.reset();
    list.notify();
    EXPECT_EQ(calls, 1);
}

TEST(SubscriptionTest, ACallbackRemovedDuringNotificationIsNotCalled) {
    CallbackList<> list;
    Subscription second;
    int secondCalls = 0;
    auto first = list.add([&] { second.reset(); });
    second = list.add([&] { ++secondCalls; });
    list.notify();
    EXPECT_EQ(secondCalls, 0);
}

TEST(SubscriptionTest, ASubscriptionMayOutliveItsList) {
    Subscription sub;
    {
        CallbackList<> list;
        sub = list.add([] {});
    }
    sub.reset();  // must not touch the destroyed list
    EXPECT_FALSE(sub);
}

}  // namespace
}  // namespace orvantis
