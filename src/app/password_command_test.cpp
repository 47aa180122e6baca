#include "app/password_command.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "core/passwords/password_generator.h"
#include "core/passwords/test_random_sources.h"

namespace orvantis::app {
namespace {

struct Result {
    int status;
    std::vector<std::string> lines;
    std::string err;
    int settingsAsked = 0;
};

Result run(std::vector<std::string> args, PasswordConfig stored = PasswordConfig{}) {
    std::ostringstream out;
    std::ostringstream err;
    orvantis::testing::SeededRandomSource random(8);
    Result result{};
    result.status = runPasswordCommand(
        args, out, err,
        [&] {
            ++result.settingsAsked;
            return stored;
        },
        random);
    std::istringstream lines(out.str());
    for (std::string line; std::getline(lines, line);) result.lines.push_back(line);
    result.err = err.str();
    return result;
}

bool allIn(const std::string& password, std::string_view pool) {
    return password.find_first_not_of(pool) == std::string::npos;
}

TEST(PasswordCommandTest, OnePasswordOfTheSettingsByDefault) {
    const Result r = run({"password"}, PasswordConfig{20, false, false, true, false});
    EXPECT_EQ(r.status, 0);
    ASSERT_EQ(r.lines.size(), 1u);
    EXPECT_EQ(r.lines[0].size(), 20u);
    EXPECT_TRUE(allIn(r.lines[0], PasswordGenerator::kDigits));
    EXPECT_EQ(r.settingsAsked, 1);
    EXPECT_EQ(r.err, "");
}

TEST(PasswordCommandTest, OptionsOverrideTheSettings) {
    const Result r = run({"password", "--length", "32", "--no-digits", "--no-uppercase", "--count", "5"},
                         PasswordConfig{16, true, true, true, false});
    EXPECT_EQ(r.status, 0);
    ASSERT_EQ(r.lines.size(), 5u);
    for (const std::string& line : r.lines) {
        EXPECT_EQ(line.size(), 32u);
        EXPECT_TRUE(allIn(line, PasswordGenerator::kLowercase)) << line;
    }
    const Result symbols = run({"password", "--symbols", "--no-lowercase"}, PasswordConfig{16, false, true, false, false});
    ASSERT_EQ(symbols.lines.size(), 1u);
    EXPECT_TRUE(allIn(symbols.lines[0], PasswordGenerator::kSymbols));
}

TEST(PasswordCommandTest, TheLengthIsHeldAsTheHotkeyHoldsIt) {
    EXPECT_EQ(run({"password", "--length", "2"}).lines.at(0).size(), 4u);
    EXPECT_EQ(run({"password", "--length", "500"}).lines.at(0).size(), 128u);
    EXPECT_EQ(run({"password", "--length", "-99999999999"}).lines.at(0).size(), 4u);
}

TEST(PasswordCommandTest, NoClassChosenIsAnErrorOnStandardError) {
    const Result r = run({"password", "--no-lowercase"}, PasswordConfig{16, false, true, false, false});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.lines.empty());
    EXPECT_NE(r.err.find("no character class"), std::string::npos) << r.err;
}

TEST(PasswordCommandTest, UsageErrors) {
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"password", "--length"},
             {"password", "--length", "ten"},
             {"password", "--count", "0"},
             {"password", "--count", "-1"},
             {"password", "--colour"},
             {"password", "extra"}}) {
        const Result r = run(args);
        EXPECT_EQ(r.status, 2) << args.back();
        EXPECT_TRUE(r.lines.empty());
        EXPECT_FALSE(r.err.empty());
    }
}

}  // namespace
}  // namespace orvantis::app
