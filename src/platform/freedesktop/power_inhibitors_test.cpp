#include "platform/freedesktop/power_inhibitors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "core/log/app_logger.h"
#include "platform/sim/virtual_main_loop.h"
#include "testing/test_support.h"

namespace orvantis::freedesktop {
namespace {

class RecordingSink final : public SystemLogSink {
public:
    explicit RecordingSink(std::vector<std::string>& lines) : lines_(lines) {}
    void log(Type, std::string_view, std::string_view message) override { lines_.emplace_back(message); }

private:
    std::vector<std::string>& lines_;
};

/// Buses that are not there: every address points at a socket that does not exist.
class PowerInhibitorsWithoutBusesTest : public ::testing::Test {
protected:
    bool logged(std::string_view prefix) const {
        return std::any_of(lines_.begin(), lines_.end(), [&](const std::string& l) { return l.starts_with(prefix); });
    }

    testing::TemporaryDirectory dir_;
    std::string nowhere_ = "unix:path=" + (dir_.path() / "no-bus").string();
    testing::ScopedEnv session_{"DBUS_SESSION_BUS_ADDRESS", nowhere_.c_str()};
    testing::ScopedEnv system_{"DBUS_SYSTEM_BUS_ADDRESS", nowhere_.c_str()};
    testing::ScopedEnv runtime_{"XDG_RUNTIME_DIR", dir_.path().c_str()};
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> queue_ = loop_.makeSerialQueue("log");
    std::vector<std::string> lines_;
    AppLogger logger_{dir_.path() / "logs", *queue_, loop_, std::make_unique<RecordingSink>(lines_)};
};

TEST_F(PowerInhibitorsWithoutBusesTest, KeepAwakeFailsAndSaysWhy) {
    ScreenSaverInhibitor inhibitor(logger_.log().app, std::chrono::milliseconds(300));
    std::uint32_t id = 0;
    EXPECT_NE(inhibitor.create("Orvantis Caffeine", id), 0);
    EXPECT_TRUE(logged("caffeine: ")) << (lines_.empty() ? "" : lines_.back());
    EXPECT_NE(inhibitor.release(id), 0);  // nothing was held
}

TEST_F(PowerInhibitorsWithoutBusesTest, LidCloseFailsAndSaysWhy) {
    LogindLidInhibitor lid(logger_.log().app, std::chrono::milliseconds(300));
    EXPECT_FALSE(lid.setDisableSleep(true));
    EXPECT_FALSE(lid.holding());
    EXPECT_TRUE(logged("lid-sleep: the login manager gave no lid-switch inhibitor: "));
    EXPECT_FALSE(lid.provision());
    EXPECT_TRUE(logged("lid-sleep: provision failed/cancelled"));
    EXPECT_TRUE(lid.setDisableSleep(false));
}

}  // namespace
}  // namespace orvantis::freedesktop
