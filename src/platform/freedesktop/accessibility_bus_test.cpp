#include "platform/freedesktop/accessibility_bus.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "platform/freedesktop/sd_bus_handles.h"
#include "testing/test_support.h"

#include <unistd.h>

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

/// A stand-in for the accessibility bus launcher: it owns `name` on the session bus and answers
/// GetAddress and IsEnabled (true) at the launcher's path, served on a thread of its own, from
/// construction to destruction, when the name is let go.
class StandInLauncher {
public:
    explicit StandInLauncher(std::string name) : name_(std::move(name)), thread_([this] { serve(); }) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (state_ == State::starting && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ~StandInLauncher() {
        stop_ = true;
        thread_.join();
    }
    StandInLauncher(const StandInLauncher&) = delete;
    StandInLauncher& operator=(const StandInLauncher&) = delete;

    /// True once the name is owned.
    bool owns() const { return state_ == State::serving; }

private:
    enum class State { starting, serving, failed };

    static int getAddress(sd_bus_message* call, void*, sd_bus_error*) {
        return sd_bus_reply_method_return(call, "s", "unix:path=/nonexistent/orvantis-stand-in-a11y-bus");
    }
    static int isEnabled(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                         sd_bus_error*) {
        return sd_bus_message_append(reply, "b", 1);
    }

    void serve() {
        static const sd_bus_vtable kLauncher[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("GetAddress", "", "s", getAddress, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_VTABLE_END,
        };
        static const sd_bus_vtable kStatus[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_PROPERTY("IsEnabled", "b", isEnabled, 0, 0),
            SD_BUS_VTABLE_END,
        };
        SdBusPtr bus = openSessionBus(std::chrono::microseconds(1000000));
        sd_bus_slot* launcher = nullptr;
        sd_bus_slot* status = nullptr;
        if (!bus || sd_bus_add_object_vtable(bus.get(), &launcher, "/org/a11y/bus", "org.a11y.Bus", kLauncher,
                                             nullptr) < 0 ||
            sd_bus_add_object_vtable(bus.get(), &status, "/org/a11y/bus", "org.a11y.Status", kStatus, nullptr) < 0 ||
            sd_bus_request_name(bus.get(), name_.c_str(), 0) < 0) {
            state_ = State::failed;
        } else {
            state_ = State::serving;
            while (!stop_) {
                const int processed = sd_bus_process(bus.get(), nullptr);
                if (processed < 0) break;
                if (processed == 0) sd_bus_wait(bus.get(), 20000);
            }
            sd_bus_release_name(bus.get(), name_.c_str());
        }
        sd_bus_slot_unref(status);
        sd_bus_slot_unref(launcher);
    }

    std::string name_;
    std::atomic<State> state_{State::starting};
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

/// Asks `question` until it answers true, for at most two seconds.
bool eventually(const std::function<bool()>& question) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (std::chrono::steady_clock::now() < deadline) {
        if (question()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

// While no launcher owns its name (a desktop whose accessibility bus is off, where the keyboard
// retries every two seconds), a question costs no call: the bus daemon's owner changes say
// that nothing is there. A launcher that comes is asked, and one that goes is not asked again.
TEST(AccessibilityBusCheckTest, LiveNoLauncherIsAnsweredWithoutACallAndOneThatComesIsAsked) {
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address == nullptr || *address == '\0') GTEST_SKIP() << "no session bus";
    const std::string name = "org.orvantis.Test.StandInA11yBus.p" + std::to_string(::getpid());
    AccessibilityBusCheck check(name);
    for (int i = 0; i < 10; ++i) EXPECT_FALSE(check.enabled(300ms));
    EXPECT_EQ(check.launcherCalls(), 0u) << "a launcher that is not there was asked";

    {
        StandInLauncher launcher(name);
        ASSERT_TRUE(launcher.owns());
        EXPECT_TRUE(eventually([&] { return check.enabled(300ms); })) << "the launcher that came was not seen";
        EXPECT_GT(check.launcherCalls(), 0u);
    }
    EXPECT_TRUE(eventually([&] { return !check.enabled(300ms); })) << "the launcher that went is still counted";
    const std::size_t calls = check.launcherCalls();
    for (int i = 0; i < 10; ++i) EXPECT_FALSE(check.enabled(300ms));
    EXPECT_EQ(check.launcherCalls(), calls) << "a launcher that went away was asked again";
}

}  // namespace
}  // namespace orvantis::freedesktop
