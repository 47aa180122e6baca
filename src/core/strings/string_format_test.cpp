#include "core/strings/string_format.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace orvantis {
namespace {

using enum FormatPlaceholder;

TEST(StringFormatTest, FillsWholeNumbersInOrder) {
    EXPECT_EQ(formatString("%d of %d", {3, 20}), "3 of 20");
    EXPECT_EQ(formatString("%d items", {0}), "0 items");
    EXPECT_EQ(formatString("%d%d", {1, 2}), "12");
}

TEST(StringFormatTest, WritesNegativeAndLargeNumbers) {
    EXPECT_EQ(formatString("%d", {-7}), "-7");
    EXPECT_EQ(formatString("%d", {std::numeric_limits<std::int64_t>::min()}), "-9223372036854775808");
    EXPECT_EQ(formatString("%d", {std::numeric_limits<std::int64_t>::max()}), "9223372036854775807");
    EXPECT_EQ(formatString("%d s", {std::size_t{600}}), "600 s");
    EXPECT_EQ(formatString("%d", {static_cast<short>(-3)}), "-3");
}

TEST(StringFormatTest, InsertsTextsUnchanged) {
    EXPECT_EQ(formatString("Auto-unlock in %@", {"9:59"}), "Auto-unlock in 9:59");
    EXPECT_EQ(formatString("[%@]", {std::string("привет")}), "[привет]");
    EXPECT_EQ(formatString("[%@]", {std::string_view("a%db")}), "[a%db]");
    EXPECT_EQ(formatString("[%@]", {""}), "[]");
}

TEST(StringFormatTest, MixesNumbersAndTexts) {
    EXPECT_EQ(formatString("%@ — %d sessions", {"Monday", 3}), "Monday — 3 sessions");
}

TEST(StringFormatTest, DoublePercentIsOneLiteralPercent) {
    EXPECT_EQ(formatString("100%%"), "100%");
    EXPECT_EQ(formatString("%d%% done", {42}), "42% done");
    EXPECT_EQ(formatString("%%d", {5}), "%d");
    EXPECT_EQ(formatString("%%%d", {5}), "%5");
}

TEST(StringFormatTest, UnknownDirectivesStayLiteral) {
    EXPECT_EQ(formatString("50% off", {1}), "50% off");
    EXPECT_EQ(formatString("%02d", {1}), "%02d");
    EXPECT_EQ(formatString("%1$d", {1}), "%1$d");
    EXPECT_EQ(formatString("%s", {"x"}), "%s");
    EXPECT_EQ(formatString("ends with %", {1}), "ends with %");
    EXPECT_EQ(formatString("%"), "%");
    EXPECT_EQ(formatString(""), "");
}

TEST(StringFormatTest, MissingArgumentsLeaveTheirPlaceholders) {
    EXPECT_EQ(formatString("Session %d of %d", {2}), "Session 2 of %d");
    EXPECT_EQ(formatString("Session %d of %d"), "Session %d of %d");
    EXPECT_EQ(formatString("Auto-unlock in %@"), "Auto-unlock in %@");
}

TEST(StringFormatTest, MistypedArgumentsLeaveTheirPlaceholdersAndAreUsedUp) {
    EXPECT_EQ(formatString("%d items", {"twelve"}), "%d items");
    EXPECT_EQ(formatString("in %@", {12}), "in %@");
    EXPECT_EQ(formatString("%d of %d", {"x", 5}), "%d of 5");
    EXPECT_EQ(formatString("%@ and %d", {1, 2}), "%@ and 2");
}

TEST(StringFormatTest, ExtraArgumentsAreIgnored) {
    EXPECT_EQ(formatString("%d chars", {16, 60, "x"}), "16 chars");
    EXPECT_EQ(formatString("no placeholder", {1, 2}), "no placeholder");
}

TEST(StringFormatTest, NullTextReadsAsEmpty) {
    const char* nothing = nullptr;
    EXPECT_EQ(formatString("[%@]", {nothing}), "[]");
}

TEST(StringFormatTest, TakesArgumentsFromASpan) {
    const std::vector<FormatArgument> arguments{7, "min"};
    EXPECT_EQ(formatString("%d %@", arguments), "7 min");
}

TEST(StringFormatTest, ArgumentsKnowTheirKind) {
    const FormatArgument number = 5;
    const FormatArgument text = "five";
    EXPECT_EQ(number.integer(), 5);
    EXPECT_FALSE(number.text().has_value());
    EXPECT_EQ(text.text(), "five");
    EXPECT_FALSE(text.integer().has_value());
}

TEST(StringFormatTest, KeepsMultiByteTextIntact) {
    EXPECT_EQ(formatString("%d символов · очистится через %d с", {16, 60}),
              "16 символов · очистится через 60 с");
    EXPECT_EQ(formatString("⚠ %@ ⚠", {"—"}), "⚠ — ⚠");
}

TEST(StringFormatTest, ListsPlaceholdersInOrder) {
    EXPECT_EQ(formatPlaceholders("Session %d of %d"), (std::vector<FormatPlaceholder>{integer, integer}));
    EXPECT_EQ(formatPlaceholders("Auto-unlock in %@"), (std::vector<FormatPlaceholder>{text}));
    EXPECT_EQ(formatPlaceholders("%@ — %d"), (std::vector<FormatPlaceholder>{text, integer}));
    EXPECT_EQ(formatPlaceholders("%d%@%d"), (std::vector<FormatPlaceholder>{integer, text, integer}));
}

TEST(StringFormatTest, EscapesAndUnknownDirectivesAreNoPlaceholders) {
    EXPECT_TRUE(formatPlaceholders("").empty());
    EXPECT_TRUE(formatPlaceholders("plain text").empty());
    EXPECT_TRUE(formatPlaceholders("100%% and %%d and %%@").empty());
    EXPECT_TRUE(formatPlaceholders("50% off, %s, %02d, trailing %").empty());
    EXPECT_EQ(formatPlaceholders("%%%d"), (std::vector<FormatPlaceholder>{integer}));
}

}  // namespace
}  // namespace orvantis
