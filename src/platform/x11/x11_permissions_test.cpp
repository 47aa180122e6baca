#include "platform/x11/x11_permissions.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

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
    EXPECT_FALSE(permissions.hasInputMonitoringSettings());
}

TEST(X11PermissionsTest, TheAccessibilitySettingsStartWithTheirArgumentAndNoSignalIgnored) {
    orvantis::testing::TemporaryDirectory dir;
    const auto settings = dir.path() / "gnome-control-center";
    const auto report = dir.path() / "report";
    {
        std::ofstream script(settings);
        script << "#!/bin/sh\n"
               << "{ echo \"$1\"; grep '^SigIgn:' /proc/self/status; } > \"$REPORT.part\" && mv \"$REPORT.part\" \"$REPORT\"\n";
    }
    std::filesystem::permissions(settings, std::filesystem::perms::owner_all);
    const std::string path = dir.path().string() + ":/usr/bin:/bin";
    ScopedEnv searchPath("PATH", path.c_str());
    ScopedEnv reportPath("REPORT", report.c_str());
    // The program ignores broken pipes; what it starts must not inherit that.
    const auto previous = std::signal(SIGPIPE, SIG_IGN);
    X11Permissions(std::string(":9999")).openAccessibilitySettings();
    std::signal(SIGPIPE, previous);

    for (int i = 0; i < 500 && !std::filesystem::exists(report); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_TRUE(std::filesystem::exists(report)) << "the settings program did not start";
    const std::string lines = orvantis::testing::readFile(report);
    const std::string prefix = "universal-access\nSigIgn:\t";
    ASSERT_EQ(lines.substr(0, prefix.size()), prefix) << lines;
    const unsigned long long ignored = std::stoull(lines.substr(prefix.size()), nullptr, 16);
    EXPECT_EQ(ignored & (1ULL << (SIGPIPE - 1)), 0U) << lines;
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
