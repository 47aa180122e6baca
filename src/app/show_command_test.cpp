#include "app/show_command.h"

#include <gtest/gtest.h>

#include <sstream>

#include "testing/test_support.h"

namespace orvantis::app {
namespace {

using Status = freedesktop::ShellBusReply::Status;

TEST(ShowCommandTest, AsksTheRunningProgramForTheWindow) {
    std::ostringstream err;
    std::string asked;
    EXPECT_EQ(runShowCommand({"show", "help"}, err,
                             [&](std::string_view window) {
                                 asked = window;
                                 return freedesktop::ShellBusReply{Status::Answered, {}};
                             }),
              0);
    EXPECT_EQ(asked, "help");
    EXPECT_TRUE(err.str().empty());
}

TEST(ShowCommandTest, TheFeedbackWindowIsOneOfThem) {
    std::ostringstream err;
    std::string asked;
    EXPECT_EQ(runShowCommand({"show", "feedback"}, err,
                             [&](std::string_view window) {
                                 asked = window;
                                 return freedesktop::ShellBusReply{Status::Answered, {}};
                             }),
              0);
    EXPECT_EQ(asked, "feedback");
    EXPECT_TRUE(err.str().empty());
}

TEST(ShowCommandTest, NoInstanceExitsOneWithAMessage) {
    std::ostringstream err;
    EXPECT_EQ(runShowCommand({"show", "settings"}, err,
                             [](std::string_view) { return freedesktop::ShellBusReply{Status::NotRunning, {}}; }),
              1);
    EXPECT_EQ(err.str(), "orvantis: show: Orvantis is not running; start it first\n");
}

TEST(ShowCommandTest, AFailureIsReported) {
    std::ostringstream err;
    EXPECT_EQ(runShowCommand({"show", "overlay"}, err,
                             [](std::string_view) {
                                 return freedesktop::ShellBusReply{Status::Failed, "no display"};
                             }),
              1);
    EXPECT_EQ(err.str(), "orvantis: show: no display\n");
}

TEST(ShowCommandTest, UnknownOrMissingWindowsAreUsageErrorsWithoutACall) {
    int calls = 0;
    const ShellBusCall call = [&](std::string_view) {
        ++calls;
        return freedesktop::ShellBusReply{Status::Answered, {}};
    };
    std::ostringstream err;
    EXPECT_EQ(runShowCommand({"show"}, err, call), 2);
    EXPECT_EQ(runShowCommand({"show", "dashboard"}, err, call), 2);
    EXPECT_EQ(runShowCommand({"show", "help", "now"}, err, call), 2);
    EXPECT_EQ(calls, 0);
    EXPECT_NE(err.str().find("unknown window \"dashboard\""), std::string::npos);
}

TEST(ShowCommandTest, WithoutABusNoInstanceIsFound) {
    testing::ScopedEnv bus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/orvantis-test-bus");
    std::ostringstream err;
    EXPECT_EQ(runShowCommand({"show", "help"}, err), 1);
    EXPECT_EQ(err.str(), "orvantis: show: Orvantis is not running; start it first\n");
}

}  // namespace
}  // namespace orvantis::app
