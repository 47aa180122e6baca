#include "app/tray_app.h"

#include <gtest/gtest.h>

namespace orvantis::app {
namespace {

TEST(LaunchBannerTest, AllGranted) {
    EXPECT_EQ(launchBanner("0.1.0", "42", "Debian GNU/Linux 12 (bookworm)", true, true),
              "launch: Orvantis 0.1.0 (build 42) on Debian GNU/Linux 12 (bookworm); "
              "accessibility=granted, inputMonitoring=granted");
}

TEST(LaunchBannerTest, MissingPermissions) {
    EXPECT_EQ(launchBanner("1.2", "7", "Linux", false, false),
              "launch: Orvantis 1.2 (build 7) on Linux; accessibility=missing, inputMonitoring=missing");
    EXPECT_EQ(launchBanner("1.2", "7", "Linux", true, false),
              "launch: Orvantis 1.2 (build 7) on Linux; accessibility=granted, inputMonitoring=missing");
}

TEST(LaunchBannerTest, AbsentVersionAndBuildShowAsQuestionMarks) {
    EXPECT_EQ(launchBanner("", "", "Linux", true, true),
              "launch: Orvantis ? (build ?) on Linux; accessibility=granted, inputMonitoring=granted");
}

}  // namespace
}  // namespace orvantis::app
