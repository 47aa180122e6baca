#include "platform/freedesktop/xdg_paths.h"

#include <gtest/gtest.h>

#include "testing/test_support.h"

namespace orvantis::freedesktop {
namespace {

TEST(XdgPathsTest, UsesTheVariablesWhenAbsolute) {
    const testing::ScopedEnv config("XDG_CONFIG_HOME", "/tmp/cfg");
    const testing::ScopedEnv state("XDG_STATE_HOME", "/tmp/state");
    EXPECT_EQ(XdgPaths::preferencesFile(), "/tmp/cfg/orvantis/preferences.plist");
    EXPECT_EQ(XdgPaths::logsDirectory(), "/tmp/state/orvantis/logs");
}

TEST(XdgPathsTest, FallsBackUnderHomeForUnsetOrRelativeValues) {
    const testing::ScopedEnv home("HOME", "/home/u");
    const testing::ScopedEnv data("XDG_DATA_HOME", "relative/data");
    const testing::ScopedEnv config("XDG_CONFIG_HOME", nullptr);
    const testing::ScopedEnv state("XDG_STATE_HOME", "");
    EXPECT_EQ(XdgPaths::dataDirectory(), "/home/u/.local/share/orvantis");
    EXPECT_EQ(XdgPaths::configHome(), "/home/u/.config");
    EXPECT_EQ(XdgPaths::stateHome(), "/home/u/.local/state");
    const testing::ScopedEnv runtime("XDG_RUNTIME_DIR", nullptr);
    EXPECT_FALSE(XdgPaths::runtimeDir().has_value());
}

}  // namespace
}  // namespace orvantis::freedesktop
