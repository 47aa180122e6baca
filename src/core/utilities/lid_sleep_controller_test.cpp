#include "core/utilities/lid_sleep_controller.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/utilities_test_support.h"

namespace orvantis {
namespace {

using namespace utilities_testing;

/// Reads a double-quoted string of the script interpreter back: \\ is a backslash, \" a quote.
std::string readAppleScriptString(std::string_view source, std::string_view prefix, std::string_view suffix) {
    EXPECT_TRUE(source.starts_with(prefix));
    EXPECT_TRUE(source.ends_with(suffix));
    const std::string_view body = source.substr(prefix.size(), source.size() - prefix.size() - suffix.size());
    std::string out;
    for (std::size_t i = 0; i < body.size(); ++i) {
        if (body[i] == '\\' && i + 1 < body.size()) {
            out += body[++i];
            continue;
        }
        EXPECT_NE(body[i], '"') << "an unescaped quote would end the string";
        out += body[i];
    }
    return out;
}

class LidSleepControllerTest : public ::testing::Test, protected UtilitiesFixture {
protected:
    std::string login_ = "jane.doe";
    RecordingRunner runner_;
    LidSleepController controller_{runner_, [this] { return login_; }, logger.log().app};
};

TEST_F(LidSleepControllerTest, SetDisableSleepRunsSudoWithoutAPrompt) {
    EXPECT_TRUE(controller_.setDisableSleep(true));
    EXPECT_TRUE(controller_.setDisableSleep(false));
    EXPECT_EQ(runner_.lines[0],
              (std::vector<std::string>{"/usr/bin/sudo", "-n", "/usr/bin/pmset", "-a", "disablesleep", "1"}));
    EXPECT_EQ(runner_.lines[1].back(), "0");
}

TEST_F(LidSleepControllerTest, AMissingRuleAndALaunchFailureAreLogged) {
    runner_.status = 1;
    EXPECT_FALSE(controller_.setDisableSleep(true));
    EXPECT_TRUE(logged("error lid-sleep: `sudo -n pmset disablesleep 1` failed (rule missing?)"));
    runner_.cannotLaunch = true;
    EXPECT_FALSE(controller_.setDisableSleep(false));
    EXPECT_TRUE(logged("error lid-sleep: failed to launch sudo: No such file or directory"));
}

TEST_F(LidSleepControllerTest, SafeLoginNamesPassAndOthersAreRefused) {
    EXPECT_EQ(LidSleepController::safeLoginName("Jane_Doe-2.x"), "Jane_Doe-2.x");
    EXPECT_FALSE(LidSleepController::safeLoginName("jane doe"));
    EXPECT_FALSE(LidSleepController::safeLoginName("o'brien"));
    EXPECT_FALSE(LidSleepController::safeLoginName(""));
    EXPECT_FALSE(LidSleepController::safeLoginName("jöran"));
}

TEST_F(LidSleepControllerTest, AnUnsafeNameRunsNoScript) {
    login_ = "o'brien";
    EXPECT_FALSE(controller_.provision());
    EXPECT_TRUE(runner_.lines.empty());
    EXPECT_TRUE(logged("error lid-sleep: refusing to provision — unsafe login name"));
    login_ = "";
    EXPECT_FALSE(controller_.provision());
    EXPECT_TRUE(runner_.lines.empty());
}

TEST_F(LidSleepControllerTest, ProvisionRunsTheSixStepsThroughTheAdministratorPrompt) {
    EXPECT_TRUE(controller_.provision());
    ASSERT_EQ(runner_.lines.size(), 1u);
    const auto& line = runner_.lines[0];
    ASSERT_EQ(line.size(), 3u);
    EXPECT_EQ(line[0], "/usr/bin/osascript");
    EXPECT_EQ(line[1], "-e");
    const std::string expected =
        "tmp=$(mktemp) && "
        "printf '%s\\n' 'jane.doe ALL=(root) NOPASSWD: /usr/bin/pmset -a disablesleep 1, /usr/bin/pmset -a "
        "disablesleep 0' > \"$tmp\" && "
        "chmod 0440 \"$tmp\" && /usr/sbin/visudo -cf \"$tmp\" && "
        "/usr/bin/install -m 0440 -o root -g wheel \"$tmp\" '/etc/sudoers.d/orvantis-caffeine' && rm -f \"$tmp\"";
    EXPECT_EQ(LidSleepController::provisionScript("jane.doe"), expected);
    EXPECT_EQ(line[2], "do shell script \"tmp=$(mktemp) && printf '%s\\\\n' 'jane.doe ALL=(root) NOPASSWD: "
                       "/usr/bin/pmset -a disablesleep 1, /usr/bin/pmset -a disablesleep 0' > \\\"$tmp\\\" && "
                       "chmod 0440 \\\"$tmp\\\" && /usr/sbin/visudo -cf \\\"$tmp\\\" && /usr/bin/install -m 0440 -o "
                       "root -g wheel \\\"$tmp\\\" '/etc/sudoers.d/orvantis-caffeine' && rm -f \\\"$tmp\\\"\" with "
                       "administrator privileges");
    EXPECT_TRUE(logged("info lid-sleep: provision succeeded"));
}

TEST_F(LidSleepControllerTest, ABackslashOrAQuoteArrivesUnchangedAfterBothLayers) {
    for (const std::string& script : {std::string("printf '%s\\n' \"a\" && echo \\\"x\\\""), std::string("\\\\\""),
                                     LidSleepController::provisionScript("a.b")}) {
        const std::string source = LidSleepController::adminScriptSource(script);
        EXPECT_EQ(readAppleScriptString(source, "do shell script \"", "\" with administrator privileges"), script);
    }
    // The order matters: quotes first would double the backslash that escapes them.
    EXPECT_EQ(LidSleepController::escapeForAppleScript("\\\""), "\\\\\\\"");
}

TEST_F(LidSleepControllerTest, ACancelledPromptIsAFailure) {
    runner_.status = 1;
    EXPECT_FALSE(controller_.provision());
    EXPECT_TRUE(logged("info lid-sleep: provision failed/cancelled"));
    EXPECT_FALSE(controller_.deprovision());
    EXPECT_TRUE(logged("info lid-sleep: deprovision failed/cancelled"));
    runner_.status = 0;
    EXPECT_TRUE(controller_.deprovision());
    EXPECT_EQ(runner_.lines.back()[2], "do shell script \"/usr/bin/pmset -a disablesleep 0; rm -f "
                                       "'/etc/sudoers.d/orvantis-caffeine'\" with administrator privileges");
    runner_.cannotLaunch = true;
    EXPECT_FALSE(controller_.deprovision());
    EXPECT_TRUE(logged("error lid-sleep: failed to launch osascript: No such file or directory"));
}

}  // namespace
}  // namespace orvantis
