#include "app/system_utilities_assembly.h"

#include <gtest/gtest.h>

namespace orvantis::app {
namespace {

TEST(CaffeineStatusLineTest, StateSecondsAndAssertionAreTabSeparated) {
    EXPECT_EQ(caffeineStatusLine(true, 1800, true), "active\t1800\theld");
    EXPECT_EQ(caffeineStatusLine(true, std::nullopt, true), "active\t-\theld");
    EXPECT_EQ(caffeineStatusLine(false, std::nullopt, true), "inactive\t-\theld");  // an application in front
    EXPECT_EQ(caffeineStatusLine(false, std::nullopt, false), "inactive\t-\treleased");
}

}  // namespace
}  // namespace orvantis::app
