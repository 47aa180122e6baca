#include "platform/x11/x11_display.h"

#include <gtest/gtest.h>

#include "platform/x11/x11_event_tap.h"
#include "platform/x11/x11_test_support.h"

#include <X11/Xlib.h>

namespace orvantis::x11 {
namespace {

using testing::BrokenPipesIgnored;
using testing::PrivateXServer;

// One test, because the first loss in a process is reported once and for good.
TEST(X11DisplayTest, AServerThatGoesAwayLeavesQuietDisplaysAndIsReportedOnce) {
    BrokenPipesIgnored brokenPipes;
    PrivateXServer server;
    if (server.name().empty()) GTEST_SKIP() << "no Xvfb";
    ASSERT_FALSE(anyConnectionLost());
    int losses = 0;
    setConnectionLossHandler([&losses] { ++losses; });

    DisplayPointer held = openDisplay(server.name().c_str());
    ASSERT_NE(held, nullptr);
    Display* first = held.release();
    Display* second = XOpenDisplay(server.name().c_str());
    ASSERT_NE(second, nullptr);
    keepQuietWhenLost(second);
    auto tap = X11EventTap::open(server.name().c_str(), nullptr);
    ASSERT_NE(tap, nullptr);
    EXPECT_FALSE(connectionLost(first));
    EXPECT_FALSE(tap->connectionLost());

    server.kill();
    // Requests to the gone server return instead of ending the process.
    XNoOp(first);
    XSync(first, False);
    XWindowAttributes attributes;
    EXPECT_EQ(XGetWindowAttributes(first, DefaultRootWindow(first), &attributes), 0);
    XSync(first, False);
    EXPECT_TRUE(connectionLost(first));
    EXPECT_TRUE(anyConnectionLost());
    EXPECT_EQ(losses, 1);
    // The same server's other displays: lost too, without a second report.
    XSync(second, False);
    EXPECT_TRUE(connectionLost(second));
    tap->dispatchPending();
    EXPECT_TRUE(tap->connectionLost());
    EXPECT_EQ(losses, 1);
    EXPECT_EQ(openDisplay(server.name().c_str()), nullptr);

    tap.reset();
    closeDisplay(first);
    closeDisplay(second);
    // A closed display is forgotten: the next one opened may reuse its address.
    EXPECT_FALSE(connectionLost(first));
    setConnectionLossHandler({});
}

}  // namespace
}  // namespace orvantis::x11
