#include "app/pomodoro_command.h"

#include <gtest/gtest.h>

#include <sstream>

namespace orvantis::app {
namespace {

using Reply = freedesktop::PomodoroBusReply;

struct CommandRun {
    int status;
    std::string out, err;
    std::vector<std::string> calls;
};

CommandRun run(std::vector<std::string> args, Reply reply) {
    CommandRun result;
    std::ostringstream out, err;
    result.status = runPomodoroCommand(args, out, err, [&](std::string_view method) {
        result.calls.emplace_back(method);
        return reply;
    });
    result.out = out.str();
    result.err = err.str();
    return result;
}

TEST(PomodoroCommandTest, StatusPrintsTheProgramsLine) {
    const CommandRun r = run({"pomodoro", "status"}, {Reply::Status::Answered, "running\twork\t1499\t1\t0"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "running\twork\t1499\t1\t0\n");
    EXPECT_EQ(r.calls, std::vector<std::string>{"Status"});
}

TEST(PomodoroCommandTest, EachActionCallsItsMethod) {
    const std::vector<std::pair<std::string, std::string>> actions{
        {"start", "Start"}, {"stop", "Stop"}, {"pause", "Pause"}, {"resume", "Resume"}, {"skip", "Skip"}, {"reset", "Reset"}};
    for (const auto& [verb, method] : actions) {
        const CommandRun r = run({"pomodoro", verb}, {Reply::Status::Answered, ""});
        EXPECT_EQ(r.status, 0) << verb;
        EXPECT_EQ(r.out, "") << verb;
        EXPECT_EQ(r.calls, std::vector<std::string>{method});
    }
}

TEST(PomodoroCommandTest, WithoutARunningInstanceItExitsOneAndSaysSo) {
    const CommandRun r = run({"pomodoro", "start"}, {Reply::Status::NotRunning, ""});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "orvantis: pomodoro: Orvantis is not running; start it first\n");
}

TEST(PomodoroCommandTest, ARefusalIsShown) {
    const CommandRun r = run({"pomodoro", "start"}, {Reply::Status::Failed, "the Pomodoro is turned off in the settings"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "orvantis: pomodoro: the Pomodoro is turned off in the settings\n");
}

TEST(PomodoroCommandTest, BadUsageCallsNothing) {
    for (const auto& args : std::vector<std::vector<std::string>>{
             {"pomodoro"}, {"pomodoro", "begin"}, {"pomodoro", "start", "now"}, {"pomodoro", "Start"}}) {
        const CommandRun r = run(args, {Reply::Status::Answered, ""});
        EXPECT_EQ(r.status, 2);
        EXPECT_TRUE(r.calls.empty());
        EXPECT_NE(r.err.find("usage: orvantis pomodoro"), std::string::npos);
    }
}

}  // namespace
}  // namespace orvantis::app
