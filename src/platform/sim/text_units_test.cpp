#include "platform/sim/text_units.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvantis::sim::text_units {
namespace {

TEST(TextUnitsTest, GraphemesKeepEmojiFlagsAndCombiningMarksWhole) {
    const std::string text = "a\U0001F44D\U0001F3FD\U0001F1F7\U0001F1FA" "e\u0301" "й"
                             "\U0001F468\u200D\U0001F469\u200D\U0001F467";
    EXPECT_EQ(graphemes(text),
              (std::vector<std::string>{"a", "\U0001F44D\U0001F3FD", "\U0001F1F7\U0001F1FA", "e\u0301", "й",
                                        "\U0001F468\u200D\U0001F469\u200D\U0001F467"}));
}

TEST(TextUnitsTest, BoundariesRunFromZeroToTheSize) {
    EXPECT_EQ(graphemeBoundaries(""), (std::vector<std::size_t>{0}));
    EXPECT_EQ(graphemeBoundaries("пр"), (std::vector<std::size_t>{0, 2, 4}));
}

TEST(TextUnitsTest, Utf16LengthCountsSurrogatePairsTwice) {
    EXPECT_EQ(utf16Length("привет"), 6u);
    EXPECT_EQ(utf16Length("\U0001F600"), 2u);
    EXPECT_EQ(utf16Length("e\u0301"), 2u);
    EXPECT_EQ(utf16Length("\U0001F1F7\U0001F1FA"), 4u);
}

TEST(TextUnitsTest, AUtf16OffsetInsideASurrogatePairIsFlagged) {
    const std::string text = "a\U0001F600b";  // bytes: 1 + 4 + 1, units: 1 + 2 + 1
    EXPECT_EQ(byteOffsetOfUtf16(text, 1).byte, 1u);
    EXPECT_FALSE(byteOffsetOfUtf16(text, 1).insideCodePoint);
    EXPECT_EQ(byteOffsetOfUtf16(text, 2).byte, 1u);
    EXPECT_TRUE(byteOffsetOfUtf16(text, 2).insideCodePoint);
    EXPECT_EQ(byteOffsetOfUtf16(text, 3).byte, 5u);
    EXPECT_EQ(byteOffsetOfUtf16(text, 9).byte, 6u);
}

}  // namespace
}  // namespace orvantis::sim::text_units
