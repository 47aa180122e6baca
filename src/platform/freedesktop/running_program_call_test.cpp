#include "platform/freedesktop/running_program_call.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace orvantis::freedesktop {
namespace {

using Kind = RunningProgramCallFailure::Kind;

sd_bus_error named(const char* name, const char* message) { return SD_BUS_ERROR_MAKE_CONST(name, message); }

TEST(RunningProgramCallTest, NobodyOwningTheNameIsNotRunning) {
    const sd_bus_error unknown = named(SD_BUS_ERROR_SERVICE_UNKNOWN, "no such name");
    const sd_bus_error noOwner = named(SD_BUS_ERROR_NAME_HAS_NO_OWNER, "no owner");
    EXPECT_EQ(classifyRunningProgramCallFailure(-EHOSTUNREACH, &unknown).kind, Kind::notRunning);
    EXPECT_EQ(classifyRunningProgramCallFailure(-EHOSTUNREACH, &noOwner).kind, Kind::notRunning);
}

TEST(RunningProgramCallTest, NoUsableBusIsNotRunningAndOtherBusErrorsSayWhy) {
    const sd_bus_error none = SD_BUS_ERROR_NULL;
    for (const int result : {-ECONNREFUSED, -ENOENT, -ECONNRESET, -EACCES})
        EXPECT_EQ(classifyRunningProgramCallFailure(result, &none).kind, Kind::notRunning) << result;
    const auto late = classifyRunningProgramCallFailure(-ETIMEDOUT, &none);
    EXPECT_EQ(late.kind, Kind::busFailed);
    EXPECT_EQ(late.text, "the running Orvantis did not answer in time");
    const auto other = classifyRunningProgramCallFailure(-EPIPE, &none);
    EXPECT_EQ(other.kind, Kind::busFailed);
    EXPECT_EQ(other.text, "the session bus failed: Broken pipe");
}

TEST(RunningProgramCallTest, AMissingInterfaceTakesTheGivenTextElseTheProgramsMessage) {
    const sd_bus_error missing = named(SD_BUS_ERROR_UNKNOWN_INTERFACE, "Unknown interface");
    const auto told = classifyRunningProgramCallFailure(-EBADR, &missing, "the running Orvantis has no Pomodoro");
    EXPECT_EQ(told.kind, Kind::programFailed);
    EXPECT_EQ(told.text, "the running Orvantis has no Pomodoro");
    EXPECT_EQ(classifyRunningProgramCallFailure(-EBADR, &missing).text, "Unknown interface");
    const sd_bus_error own = named("org.orvantis.Orvantis.Error.Off", "the Pomodoro is turned off");
    const auto refused = classifyRunningProgramCallFailure(-EBADR, &own, "unused");
    EXPECT_EQ(refused.kind, Kind::programFailed);
    EXPECT_EQ(refused.text, "the Pomodoro is turned off");
    const sd_bus_error bare = named("org.orvantis.Orvantis.Error.Off", nullptr);
    EXPECT_EQ(classifyRunningProgramCallFailure(-EBADR, &bare).text, "org.orvantis.Orvantis.Error.Off");
}

}  // namespace
}  // namespace orvantis::freedesktop
