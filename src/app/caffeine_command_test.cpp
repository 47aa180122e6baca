#include "app/caffeine_command.h"

#include <gtest/gtest.h>

#include <sstream>

namespace orvantis::app {
namespace {

using Reply = freedesktop::SystemUtilitiesReply;

class CaffeineCommandTest : public ::testing::Test {
protected:
    int run(std::vector<std::string> args) {
        out_.str("");
        err_.str("");
        const SystemUtilitiesCall call = [this](std::string_view method, std::optional<int> minutes) {
            calls_.push_back(std::string(method) + (minutes ? " " + std::to_string(*minutes) : ""));
            return reply_;
        };
        if (args[0] == "lock") return runLockCommand(args, out_, err_, call);
        return runCaffeineCommand(args, out_, err_, call);
    }
    Reply reply_{Reply::Status::Answered, "active\t1800\theld", {}};
    std::vector<std::string> calls_;
    std::ostringstream out_, err_;
};

TEST_F(CaffeineCommandTest, OnOffAndStatusCallTheRunningProgram) {
    EXPECT_EQ(run({"caffeine", "on"}), 0);
    EXPECT_EQ(run({"caffeine", "on", "30"}), 0);
    EXPECT_EQ(run({"caffeine", "off"}), 0);
    EXPECT_EQ(out_.str(), "");
    EXPECT_EQ(run({"caffeine", "status"}), 0);
    EXPECT_EQ(out_.str(), "active\t1800\theld\n");
    EXPECT_EQ(calls_, (std::vector<std::string>{"CaffeineOn", "CaffeineOn 30", "CaffeineOff", "CaffeineStatus"}));
}

TEST_F(CaffeineCommandTest, BadMinutesAreAUsageError) {
    for (const char* bad : {"-1", "1441", "ten", "5m", ""}) {
        EXPECT_EQ(run({"caffeine", "on", bad}), 2) << bad;
    }
    EXPECT_EQ(run({"caffeine"}), 2);
    EXPECT_EQ(run({"caffeine", "pause"}), 2);
    EXPECT_EQ(run({"lock", "now"}), 2);
    EXPECT_TRUE(calls_.empty());
}

TEST_F(CaffeineCommandTest, NoRunningProgramExits1WithAMessage) {
    reply_ = Reply{Reply::Status::NotRunning, {}, {}};
    EXPECT_EQ(run({"caffeine", "status"}), 1);
    EXPECT_EQ(err_.str(), "orvantis: caffeine status: Orvantis is not running (start it first)\n");
    EXPECT_EQ(run({"lock"}), 1);
}

TEST_F(CaffeineCommandTest, TheMasterSwitchOffIsSaidAndExits1) {
    reply_ = Reply{Reply::Status::Failed, "keep-awake is switched off in the settings",
                   std::string(freedesktop::kFeatureDisabledError)};
    EXPECT_EQ(run({"caffeine", "on"}), 1);
    EXPECT_EQ(err_.str(), "orvantis: caffeine on: keep-awake is switched off in the settings\n");
}

TEST_F(CaffeineCommandTest, LockCallsLock) {
    reply_ = Reply{Reply::Status::Answered, {}, {}};
    EXPECT_EQ(run({"lock"}), 0);
    EXPECT_EQ(calls_, std::vector<std::string>{"Lock"});
}

}  // namespace
}  // namespace orvantis::app
