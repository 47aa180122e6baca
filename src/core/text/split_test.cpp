#include "core/text/split.h"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "core/text/character_class.h"

namespace orvantis::text {
namespace {

using Views = std::vector<std::string_view>;

TEST(SplitTest, LinesSplitAtEveryBreakCodePoint) {
    EXPECT_EQ(splitLines("a\nb\rc"), (Views{"a", "b", "c"}));
    EXPECT_EQ(splitLines("a\r\nb"), (Views{"a", "", "b"}));
    EXPECT_EQ(splitLines("a\u2028b\u2029c\u0085d\ve\ff"), (Views{"a", "b", "c", "d", "e", "f"}));
}

TEST(SplitTest, LinesKeepEmptyPieces) {
    EXPECT_EQ(splitLines(""), (Views{""}));
    EXPECT_EQ(splitLines("a\n"), (Views{"a", ""}));
    EXPECT_EQ(splitLines("\n\nx"), (Views{"", "", "x"}));
    EXPECT_EQ(splitLines("a b\n", CrLf::oneBreak).size(), 2u);
}

TEST(SplitTest, CrLfCanCountAsOneBreak) {
    EXPECT_EQ(splitLines("a\r\nb\r\n", CrLf::oneBreak), (Views{"a", "b", ""}));
    EXPECT_EQ(splitLines("a\n\rb", CrLf::oneBreak), (Views{"a", "", "b"}));
    EXPECT_EQ(splitLines("a\r", CrLf::oneBreak), (Views{"a", ""}));
    EXPECT_EQ(splitLines("\r\r\n", CrLf::oneBreak), (Views{"", "", ""}));
}

TEST(SplitTest, SplitsAtASetKeepingOrOmittingEmptyPieces) {
    EXPECT_EQ(splitAt(" a  b ", WhitespaceSet::whitespaces),
              (Views{"", "a", "", "b", ""}));
    EXPECT_EQ(splitAt(" a  b ", WhitespaceSet::whitespaces, EmptyPieces::omit),
              (Views{"a", "b"}));
    EXPECT_EQ(splitAt("one\u00A0two\nthree", WhitespaceSet::whitespaces, EmptyPieces::omit),
              (Views{"one", "two\nthree"}));
    EXPECT_TRUE(splitAt("   ", WhitespaceSet::whitespaces, EmptyPieces::omit).empty());
    EXPECT_TRUE(splitAt("", WhitespaceSet::whitespaces, EmptyPieces::omit).empty());
}

TEST(SplitTest, SplitsByAnyCodePointTest) {
    auto notAlphanumeric = [](char32_t c) { return !isAlphanumeric(c); };
    EXPECT_EQ(splitWhere("user's-name", notAlphanumeric, EmptyPieces::omit),
              (Views{"user", "s", "name"}));
    EXPECT_EQ(splitWhere("привет, мир!", notAlphanumeric, EmptyPieces::omit),
              (Views{"привет", "мир"}));
    EXPECT_EQ(splitWhere("user2 name", notAlphanumeric, EmptyPieces::omit),
              (Views{"user2", "name"}));
    EXPECT_EQ(splitWhere("e\u0301t\u00E9", notAlphanumeric, EmptyPieces::omit),
              (Views{"e\u0301t\u00E9"}));
}

TEST(SplitTest, IllFormedBytesReachThePredicateAsReplacementCharacter) {
    const std::string text = "a\xFF" "b";
    EXPECT_EQ(splitWhere(text, [](char32_t c) { return c == kReplacementCharacter; }),
              (Views{"a", "b"}));
    // Pieces view the original bytes.
    EXPECT_EQ(splitLines("x\xFF\ny"), (Views{"x\xFF", "y"}));
}

TEST(SplitTest, SplitsAtWholeCharacters) {
    // A blank carrying a combining mark is one character, and a whitespace one.
    auto whitespace = [](std::string_view c) { return isWhitespace(c); };
    EXPECT_EQ(splitAtCharacters("a \u0301b  c", whitespace, EmptyPieces::omit),
              (Views{"a", "b", "c"}));
    EXPECT_EQ(splitAtCharacters("a\r\nb\n", [](std::string_view c) { return isNewline(c); }),
              (Views{"a", "b", ""}));
    EXPECT_EQ(splitAtCharacters("", whitespace), (Views{""}));
    EXPECT_EQ(splitAtCharacters("ab", nullptr), (Views{"ab"}));
}

TEST(SplitTest, CharacterSplitOffsetsPointIntoTheInput) {
    const std::string text = "\xFF x\xE2\x82 y";
    const Views pieces =
        splitAtCharacters(text, [](std::string_view c) { return c == " "; }, EmptyPieces::omit);
    ASSERT_EQ(pieces.size(), 3u);
    EXPECT_EQ(pieces[0], "\xFF");
    EXPECT_EQ(pieces[1], "x\xE2\x82");
    EXPECT_EQ(pieces[2], "y");
    EXPECT_EQ(pieces[2].data(), text.data() + text.size() - 1);
}

}  // namespace
}  // namespace orvantis::text
