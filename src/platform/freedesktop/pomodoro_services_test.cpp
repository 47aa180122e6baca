// The Pomodoro's desktop services against stand-ins on private buses: a notification service
// on a private session bus, a login manager on a private bus given as the system bus, and
// Focus commands in a temporary folder.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <signal.h>
#include <sys/stat.h>

#include "core/log/app_logger.h"
#include "platform/freedesktop/desktop_notifications.h"
#include "platform/freedesktop/focus_command_directory.h"
#include "platform/freedesktop/logind_sleep_events.h"
#include "platform/freedesktop/sd_bus_handles.h"
#include "platform/sim/virtual_main_loop.h"
#include "testing/test_support.h"

namespace orvantis::freedesktop {
namespace {

using namespace std::chrono_literals;

/// A dbus-daemon of its own, ended with the test.
class PrivateBus {
public:
    PrivateBus() {
        FILE* out = ::popen("dbus-daemon --session --fork --print-address=1 --print-pid=1 2>/dev/null", "r");
        if (out == nullptr) return;
        char line[512];
        if (std::fgets(line, sizeof line, out)) address_ = line;
        if (std::fgets(line, sizeof line, out)) pid_ = std::atoi(line);
        ::pclose(out);
        while (!address_.empty() && (address_.back() == '\n' || address_.back() == '\r')) address_.pop_back();
    }
    ~PrivateBus() {
        if (pid_ > 0) ::kill(pid_, SIGTERM);
    }
    const std::string& address() const { return address_; }
    bool ok() const { return !address_.empty() && pid_ > 0; }

private:
    std::string address_;
    int pid_ = 0;
};

/// A service on its own connection and thread: owns `name` and serves `vtable` at `path`.
class StandIn {
public:
    StandIn(const std::string& address, const char* name) {
        sd_bus* raw = nullptr;
        sd_bus_new(&raw);
        bus_.reset(raw);
        sd_bus_set_address(raw, address.c_str());
        sd_bus_set_bus_client(raw, 1);
        started_ = sd_bus_start(raw) >= 0 && sd_bus_request_name(raw, name, 0) >= 0;
    }
    ~StandIn() { stop(); }
    bool started() const { return started_; }
    sd_bus* bus() { return bus_.get(); }
    void serve() {
        thread_ = std::thread([this] {
            while (!stop_) {
                while (sd_bus_process(bus_.get(), nullptr) > 0) {
                }
                sd_bus_wait(bus_.get(), 20'000);
            }
        });
    }
    void stop() {
        stop_ = true;
        if (thread_.joinable()) thread_.join();
    }

private:
    SdBusPtr bus_;
    bool started_ = false;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

struct NotificationRecord {
    std::mutex mutex;
    std::vector<std::string> summaries, bodies, apps;
};

int getServerInformation(sd_bus_message* call, void*, sd_bus_error*) {
    return sd_bus_reply_method_return(call, "ssss", "stand-in", "orvantis-tests", "1", "1.2");
}
int notify(sd_bus_message* call, void* userdata, sd_bus_error*) {
    auto* record = static_cast<NotificationRecord*>(userdata);
    const char *app = nullptr, *icon = nullptr, *summary = nullptr, *body = nullptr;
    std::uint32_t replaces = 0;
    if (sd_bus_message_read(call, "susss", &app, &replaces, &icon, &summary, &body) < 0) return -EINVAL;
    {
        std::lock_guard lock(record->mutex);
        record->apps.emplace_back(app);
        record->summaries.emplace_back(summary);
        record->bodies.emplace_back(body);
    }
    return sd_bus_reply_method_return(call, "u", 7u);
}
const sd_bus_vtable kNotificationsVtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("GetServerInformation", "", "ssss", getServerInformation, 0),
    SD_BUS_METHOD("Notify", "susssasa{sv}i", "u", notify, 0),
    SD_BUS_VTABLE_END,
};

class PomodoroDesktopServicesTest : public ::testing::Test {
protected:
    /// Turns the loop until `done` or two seconds of real time pass; the loop answers real
    /// descriptors, so this waits on the bus, not on a clock.
    template <typename Done>
    bool turnUntil(Done done) {
        const auto deadline = std::chrono::steady_clock::now() + 5s;
        while (!done()) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            loop_.runUntilIdle();
            loop_.runFor(10ms);
            std::this_thread::yield();
        }
        return true;
    }
    std::string logText() {
        loop_.runUntilIdle();
        logger_.flush();
        std::string text;
        for (const auto& entry : std::filesystem::directory_iterator(dir_.path() / "logs"))
            text += testing::readFile(entry.path());
        return text;
    }

    testing::TemporaryDirectory dir_;
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> logQueue_ = loop_.makeSerialQueue("log");
    AppLogger logger_{dir_.path() / "logs", *logQueue_, loop_};
    AppLog log_{logger_};
};

TEST_F(PomodoroDesktopServicesTest, ANotificationReachesTheServiceOnTheSessionBus) {
    PrivateBus bus;
    if (!bus.ok()) GTEST_SKIP() << "dbus-daemon is not available";
    testing::ScopedEnv session("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str());
    NotificationRecord record;
    StandIn service(bus.address(), "org.freedesktop.Notifications");
    ASSERT_TRUE(service.started());
    sd_bus_slot* slot = nullptr;
    ASSERT_GE(sd_bus_add_object_vtable(service.bus(), &slot, "/org/freedesktop/Notifications",
                                       "org.freedesktop.Notifications", kNotificationsVtable, &record),
              0);
    service.serve();
    int beeps = 0;
    DesktopNotifications notifications(loop_, log_, [&] { ++beeps; });
    std::optional<bool> authorized;
    notifications.checkAuthorization([&](bool a) { authorized = a; });
    EXPECT_FALSE(authorized.has_value());  // never answered synchronously
    ASSERT_TRUE(turnUntil([&] { return authorized.has_value(); }));
    EXPECT_TRUE(*authorized);
    notifications.post("Break time!", "Great work! Time for a short break.");
    ASSERT_TRUE(turnUntil([&] {
        std::lock_guard lock(record.mutex);
        return !record.summaries.empty();
    }));
    service.stop();
    sd_bus_slot_unref(slot);
    EXPECT_EQ(record.summaries, std::vector<std::string>{"Break time!"});
    EXPECT_EQ(record.bodies, std::vector<std::string>{"Great work! Time for a short break."});
    EXPECT_EQ(record.apps, std::vector<std::string>{"Orvantis"});
    EXPECT_EQ(beeps, 0);
}

TEST_F(PomodoroDesktopServicesTest, WithoutANotificationServiceItIsNotAuthorised) {
    PrivateBus bus;
    if (!bus.ok()) GTEST_SKIP() << "dbus-daemon is not available";
    testing::ScopedEnv session("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str());
    int beeps = 0;
    DesktopNotifications notifications(loop_, log_, [&] { ++beeps; });
    std::optional<bool> authorized;
    notifications.checkAuthorization([&](bool a) { authorized = a; });
    ASSERT_TRUE(turnUntil([&] { return authorized.has_value(); }));
    EXPECT_FALSE(*authorized);
    notifications.beep();
    EXPECT_EQ(beeps, 1);
}

TEST_F(PomodoroDesktopServicesTest, WithoutASessionBusItIsNotAuthorisedAndSaysSoOnce) {
    testing::ScopedEnv session("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    testing::ScopedEnv runtime("XDG_RUNTIME_DIR", dir_.path().c_str());
    DesktopNotifications notifications(loop_, log_, [] {});
    int answers = 0, yes = 0;
    for (int i = 0; i < 2; ++i)
        notifications.checkAuthorization([&](bool a) {
            ++answers;
            yes += a;
        });
    loop_.runUntilIdle();
    EXPECT_EQ(answers, 2);
    EXPECT_EQ(yes, 0);
    const std::string log = logText();
    const auto first = log.find("pomodoro: no session bus");
    ASSERT_NE(first, std::string::npos);
    EXPECT_EQ(log.find("pomodoro: no session bus", first + 1), std::string::npos);
}

TEST_F(PomodoroDesktopServicesTest, PrepareForSleepFromTheLoginManagerIsSleepAndWake) {
    PrivateBus system;
    if (!system.ok()) GTEST_SKIP() << "dbus-daemon is not available";
    testing::ScopedEnv systemBus("DBUS_SYSTEM_BUS_ADDRESS", system.address().c_str());
    StandIn logind(system.address(), "org.freedesktop.login1");
    ASSERT_TRUE(logind.started());
    LogindSleepEvents events(loop_, log_);
    ASSERT_TRUE(events.isFollowing());
    std::vector<std::string> seen;
    auto sleepSub = events.onWillSleep([&] { seen.push_back("sleep"); });
    auto wakeSub = events.onDidWake([&] { seen.push_back("wake"); });
    auto emit = [&](int start) {
        ASSERT_GE(sd_bus_emit_signal(logind.bus(), "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                                     "PrepareForSleep", "b", start),
                  0);
        sd_bus_flush(logind.bus());
    };
    emit(1);
    ASSERT_TRUE(turnUntil([&] { return seen.size() == 1; }));
    emit(0);
    ASSERT_TRUE(turnUntil([&] { return seen.size() == 2; }));
    EXPECT_EQ(seen, (std::vector<std::string>{"sleep", "wake"}));
}

TEST_F(PomodoroDesktopServicesTest, ASignalFromAnotherSenderIsIgnored) {
    PrivateBus system;
    if (!system.ok()) GTEST_SKIP() << "dbus-daemon is not available";
    testing::ScopedEnv systemBus("DBUS_SYSTEM_BUS_ADDRESS", system.address().c_str());
    StandIn logind(system.address(), "org.freedesktop.login1");
    StandIn impostor(system.address(), "org.example.Impostor");
    LogindSleepEvents events(loop_, log_);
    int seen = 0;
    auto sleepSub = events.onWillSleep([&] { ++seen; });
    sd_bus_emit_signal(impostor.bus(), "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
                       "b", 1);
    sd_bus_flush(impostor.bus());
    sd_bus_emit_signal(logind.bus(), "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
                       "b", 1);
    sd_bus_flush(logind.bus());
    ASSERT_TRUE(turnUntil([&] { return seen >= 1; }));
    loop_.runFor(50ms);
    EXPECT_EQ(seen, 1);
}

TEST_F(PomodoroDesktopServicesTest, WithoutALoginManagerSleepIsNotFollowedAndTheLogSaysSo) {
    PrivateBus system;
    if (!system.ok()) GTEST_SKIP() << "dbus-daemon is not available";
    testing::ScopedEnv systemBus("DBUS_SYSTEM_BUS_ADDRESS", system.address().c_str());
    LogindSleepEvents events(loop_, log_);
    EXPECT_FALSE(events.isFollowing());
    EXPECT_NE(logText().find("pomodoro: no login manager on the system bus"), std::string::npos);
}

class FocusCommandDirectoryTest : public PomodoroDesktopServicesTest {
protected:
    void makeCommand(const std::string& name, const std::string& script, bool executable = true) {
        const auto path = dir_.path() / "focus" / name;
        std::filesystem::create_directories(path.parent_path());
        testing::writeFile(path, "#!/bin/sh\n" + script + "\n");
        ::chmod(path.c_str(), executable ? 0755 : 0644);
    }
    std::filesystem::path marker(const std::string& name) { return dir_.path() / name; }
};

TEST_F(FocusCommandDirectoryTest, TheListingIsTheFoldersExecutables) {
    FocusCommandDirectory missing(dir_.path() / "focus", log_);
    EXPECT_FALSE(missing.list().has_value());
    makeCommand("Orvantis Focus On", "true");
    makeCommand("Orvantis Focus Off", "true");
    makeCommand("notes.txt", "", false);
    std::filesystem::create_directories(dir_.path() / "focus" / "a folder");
    FocusCommandDirectory commands(dir_.path() / "focus", log_);
    EXPECT_EQ(commands.list(), "Orvantis Focus Off\nOrvantis Focus On\n");
}

TEST_F(FocusCommandDirectoryTest, RunExecutesTheCommandOffTheMainThread) {
    makeCommand("Orvantis Focus On", "echo on > '" + marker("on").string() + "'");
    {
        FocusCommandDirectory commands(dir_.path() / "focus", log_);
        commands.run("Orvantis Focus On");
    }  // destruction waits for the run
    EXPECT_EQ(testing::readFile(marker("on")), "on\n");
    EXPECT_NE(logText().find("pomodoro: \"Orvantis Focus On\" ran"), std::string::npos);
}

TEST_F(FocusCommandDirectoryTest, AHangingCommandNeverBlocksTheCallerAndIsEndedAfterTheTimeOut) {
    makeCommand("Orvantis Focus On", "sleep 30; echo late > '" + marker("late").string() + "'");
    makeCommand("Orvantis Focus Off", "exit 3");
    const auto start = std::chrono::steady_clock::now();
    {
        FocusCommandDirectory commands(dir_.path() / "focus", log_, 300ms);
        commands.run("Orvantis Focus On");
        commands.run("Orvantis Focus Off");
        EXPECT_LT(std::chrono::steady_clock::now() - start, 100ms);  // run() only queues
        commands.run("../escape");                                   // never leaves the folder
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    EXPECT_FALSE(std::filesystem::exists(marker("late")));
    const std::string log = logText();
    EXPECT_NE(log.find("pomodoro: \"Orvantis Focus On\" was still running after 300 ms and was ended"),
              std::string::npos);
    EXPECT_NE(log.find("pomodoro: \"Orvantis Focus Off\" ended with status 3"), std::string::npos);
}

}  // namespace
}  // namespace orvantis::freedesktop
