#include "app/settings_window_assembly.h"

#include <gtest/gtest.h>

#include "platform/freedesktop/desktop_entries.h"
#include "testing/utilities_test_support.h"
#include "ui/settings_window_controller.h"

namespace orvantis::app {
namespace {

class ListableApplicationsTest : public ::testing::Test, protected utilities_testing::UtilitiesFixture {};

TEST_F(ListableApplicationsTest, LeavesOutNoDisplayEntriesAndLogsEachBrokenFileOncePerRun) {
    const auto apps = dir.path() / "applications";
    testing::writeFile(apps / "good.desktop", "[Desktop Entry]\nName=Good\nIcon=good-icon\n");
    testing::writeFile(apps / "helper.desktop", "[Desktop Entry]\nName=Helper\nNoDisplay=true\n");
    testing::writeFile(apps / "noname.desktop", "[Desktop Entry]\nExec=x\n");
    testing::writeFile(apps / "binary.desktop", std::string("\x7f" "ELF\0\0\xff", 7));
    std::set<std::filesystem::path> reported;

    const freedesktop::DesktopEntries entries({apps});
    const auto listed = listableApplications(entries, logger.log().app, reported);
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_EQ(listed[0].id, "good");
    EXPECT_EQ(listed[0].name, "Good");
    EXPECT_EQ(listed[0].icon, "good-icon");
    EXPECT_EQ(logCount("error settings: the desktop file "), 2u);
    EXPECT_TRUE(logged("error settings: the desktop file " + (apps / "noname.desktop").string() +
                       " is left out of the app lists: no Name"));

    // The next window reads the folders again: the same broken files are not logged again.
    const freedesktop::DesktopEntries again({apps});
    listableApplications(again, logger.log().app, reported);
    EXPECT_EQ(logCount("error settings: the desktop file "), 2u);
}

}  // namespace
}  // namespace orvantis::app
