#include "platform/sim/system_utilities.h"

#include <gtest/gtest.h>

namespace orvantis::sim {
namespace {

TEST(SimSystemUtilitiesTest, PowerAssertionsHoldUntilReleasedAndRefuseWhenTold) {
    PowerAssertions power;
    std::uint32_t id = 0;
    EXPECT_EQ(power.create("Orvantis Caffeine", id), 0);
    EXPECT_TRUE(power.held);
    EXPECT_EQ(power.release(id), 0);
    EXPECT_FALSE(power.held);
    EXPECT_EQ(power.releasedId, id);
    power.refuse = 7;
    EXPECT_EQ(power.create("x", id), 7);
    EXPECT_FALSE(power.held);
}

TEST(SimSystemUtilitiesTest, ApplicationsTellTheirChanges) {
    Applications apps;
    int activations = 0, launches = 0, ends = 0;
    auto a = apps.onActivated([&] { ++activations; });
    auto l = apps.onLaunched([&] { ++launches; });
    auto t = apps.onTerminated([&] { ++ends; });
    apps.launch("org.example.player");
    apps.activate("org.example.player");
    EXPECT_EQ(apps.frontmostApplication()->bundleID, "org.example.player");
    apps.terminate("org.example.player");
    EXPECT_TRUE(apps.runningApplications().empty());
    EXPECT_EQ(activations + launches + ends, 3);
}

TEST(SimSystemUtilitiesTest, APointerDeviceKeepsItsDefaultUntilWrittenAndAnAbsentOneRefuses) {
    PointerDevices devices;
    devices.list.push_back(platform::PointerDeviceInfo{4, 0, 0, "pad", 13, 5, true});
    EXPECT_TRUE(devices.natural(4));
    EXPECT_TRUE(devices.setNaturalScrolling(4, false));
    EXPECT_FALSE(devices.natural(4));
    EXPECT_FALSE(devices.setNaturalScrolling(5, true));
}

TEST(SimSystemUtilitiesTest, TheCommandRunnerRecordsLinesAndCanFailToLaunch) {
    CommandRunner runner;
    std::string error;
    EXPECT_EQ(runner.run("/bin/true", {"-x"}, error), 0);
    EXPECT_EQ(runner.lines.back(), (std::vector<std::string>{"/bin/true", "-x"}));
    runner.cannotLaunch = true;
    EXPECT_FALSE(runner.run("/bin/true", {}, error).has_value());
    EXPECT_FALSE(error.empty());
}

}  // namespace
}  // namespace orvantis::sim
