#include "platform/freedesktop/xdg_paths.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace orvantis::freedesktop {
namespace {

TEST(XdgPathsTest, UsesTheVariablesWhenAbsolute) {
    setenv("XDG_CONFIG_HOME", "/tmp/cfg", 1);
    setenv("XDG_STATE_HOME", "/tmp/state", 1);
    EXPECT_EQ(XdgPaths::preferencesFile(), "/tmp/cfg/orvantis/preferences.plist");
    EXPECT_EQ(XdgPaths::logsDirectory(), "/tmp/state/orvantis/logs");
}

TEST(XdgPathsTest, FallsBackUnderHomeForUnsetOrRelativeValues) {
    setenv("HOME", "/home/u", 1);
    setenv("XDG_DATA_HOME", "relative/data", 1);
    unsetenv("XDG_CONFIG_HOME");
    setenv("XDG_STATE_HOME", "", 1);
    EXPECT_EQ(XdgPaths::dataDirectory(), "/home/u/.local/share/orvantis");
    EXPECT_EQ(XdgPaths::configHome(), "/home/u/.config");
    EXPECT_EQ(XdgPaths::stateHome(), "/home/u/.local/state");
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_FALSE(XdgPaths::runtimeDir().has_value());
}

}  // namespace
}  // namespace orvantis::freedesktop
