#include "platform/freedesktop/accessibility_bus.h"

#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "platform/freedesktop/sd_bus_handles.h"
#include "testing/test_support.h"

namespace orvantis::freedesktop {
namespace {

using namespace std::chrono_literals;

using orvantis::testing::ScopedEnv;

TEST(AccessibilityBusTest, NoSessionBusAtAllIsFalse) {
    ScopedEnv address("DBUS_SESSION_BUS_ADDRESS", nullptr);
    ScopedEnv runtime("XDG_RUNTIME_DIR", "/nonexistent/orvantis-runtime");
    EXPECT_FALSE(accessibilityBusEnabled());
}

TEST(AccessibilityBusTest, UnreachableSessionBusIsFalseAndQuick) {
    ScopedEnv address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/orvantis-test-bus");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(accessibilityBusEnabled(200ms));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
}

TEST(AccessibilityBusTest, GarbageAddressIsFalse) {
    ScopedEnv address("DBUS_SESSION_BUS_ADDRESS", "this is not an address");
    EXPECT_FALSE(accessibilityBusEnabled(200ms));
}

// The answer on a live bus depends on the desktop; the end-to-end suite checks it in the
// launch banner. Here: it answers within its time-outs.
TEST(AccessibilityBusTest, LiveBusAnswersWithinTheTimeOuts) {
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address == nullptr || *address == '\0') GTEST_SKIP() << "no session bus";
    const auto start = std::chrono::steady_clock::now();
    (void)accessibilityBusEnabled(300ms);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
}

TEST(AccessibilityBusCheckTest, NoSessionBusIsFalse) {
    ScopedEnv address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/orvantis-test-bus");
    AccessibilityBusCheck check;
    EXPECT_FALSE(check.enabled(200ms));
    EXPECT_FALSE(check.enabled(200ms));
}

/// The number in the unique name (":1.N") that the bus gives a new connection.
std::optional<long> nextConnectionNumber() {
    SdBusPtr bus = openSessionBus(std::chrono::microseconds(500000));
    const char* name = nullptr;
    if (!bus || sd_bus_get_unique_name(bus.get(), &name) < 0 || name == nullptr) return std::nullopt;
    const std::string unique(name);
    const std::size_t dot = unique.rfind('.');
    if (dot == std::string::npos) return std::nullopt;
    return std::strtol(unique.c_str() + dot + 1, nullptr, 10);
}

// Asked again and again (every retry while the keyboard waits), the check keeps one connection
// instead of connecting anew each time: the bus numbers its connections, so ten questions may
// add one connection at most.
TEST(AccessibilityBusCheckTest, LiveQuestionsShareOneConnection) {
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address == nullptr || *address == '\0') GTEST_SKIP() << "no session bus";
    const std::optional<long> before = nextConnectionNumber();
    ASSERT_TRUE(before.has_value());
    AccessibilityBusCheck check;
    bool first = check.enabled(300ms);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(check.enabled(300ms), first);
    const std::optional<long> after = nextConnectionNumber();
    ASSERT_TRUE(after.has_value());
    EXPECT_LE(*after - *before, 2) << "a connection for every question";
}

}  // namespace
}  // namespace orvantis::freedesktop
