#include "core/outreach/version_display.h"

#include <gtest/gtest.h>

namespace orvantis {
namespace {

TEST(VersionDisplayTest, ABuildUnlikeTheVersionFollowsInParentheses) {
    EXPECT_EQ(versionDisplayString("1.2", "7"), "v1.2 (7)");
}

TEST(VersionDisplayTest, ABuildEqualToTheVersionIsNotRepeated) { EXPECT_EQ(versionDisplayString("1.2", "1.2"), "v1.2"); }

TEST(VersionDisplayTest, AnEmptyBuildShowsTheVersionAlone) { EXPECT_EQ(versionDisplayString("0.1.0", ""), "v0.1.0"); }

TEST(VersionDisplayTest, NoVersionShowsNothingWhateverTheBuild) { EXPECT_EQ(versionDisplayString("", "7"), ""); }

}  // namespace
}  // namespace orvantis
