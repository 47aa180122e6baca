#include "platform/x11/x11_permissions.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "testing/test_support.h"

namespace orvantis::x11 {
namespace {

using orvantis::testing::ScopedEnv;

TEST(X11PermissionsTest, WithoutBusOrDisplayBothAreMissingAndRequestsDoNotGrantThem) {
    ScopedEnv bus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    ScopedEnv runtime("XDG_RUNTIME_DIR", "/nonexistent");
    X11Permissions permissions(std::string(":9999"));
    EXPECT_FALSE(permissions.hasAccessibility());
    EXPECT_FALSE(permissions.requestAccessibility());
    EXPECT_FALSE(permissions.hasInputMonitoring());
    EXPECT_FALSE(permissions.requestInputMonitoring());
    permissions.openInputMonitoringSettings();  // nothing to open, nothing happens
}

// Needs the virtual desktop's session (display, session bus, accessibility bus); runs in the
// end-to-end desktop probes and skips elsewhere.
TEST(X11PermissionsTest, LiveSessionGrantsBothAndASwitchedOffBusIsSwitchedOnByTheRequest) {
    X11Permissions permissions;
    if (!permissions.hasInputMonitoring() || !permissions.hasAccessibility()) GTEST_SKIP() << "no live session";
    ASSERT_EQ(std::system("dbus-send --session --dest=org.a11y.Bus --print-reply /org/a11y/bus "
                          "org.freedesktop.DBus.Properties.Set string:org.a11y.Status string:IsEnabled "
                          "variant:boolean:false >/dev/null"),
              0);
    EXPECT_FALSE(permissions.hasAccessibility());
    EXPECT_TRUE(permissions.requestAccessibility());
    EXPECT_TRUE(permissions.hasAccessibility());
}

}  // namespace
}  // namespace orvantis::x11
