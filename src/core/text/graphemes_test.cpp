#include "core/text/graphemes.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orvantis::text {
namespace {

using Strings = std::vector<std::string>;

const std::string kReplacement = "\xEF\xBF\xBD";  // U+FFFD

TEST(GraphemesTest, EmojiWithModifiersAndJoinersAreOneCharacter) {
    EXPECT_EQ(graphemeCount("👍🏽"), 1u);
    EXPECT_EQ(graphemeCount("👨‍👩‍👧‍👦"), 1u);
    EXPECT_EQ(graphemeCount("🏳️‍🌈"), 1u);
    EXPECT_EQ(graphemes("a👍🏽b"), (Strings{"a", "👍🏽", "b"}));
}

TEST(GraphemesTest, RegionalIndicatorsPairIntoFlags) {
    EXPECT_EQ(graphemeCount("🇷🇺🇺🇸"), 2u);
    EXPECT_EQ(graphemes("🇷🇺🇺🇸"), (Strings{"🇷🇺", "🇺🇸"}));
    EXPECT_EQ(graphemes("🇷🇺🇺"), (Strings{"🇷🇺", "🇺"}));
}

TEST(GraphemesTest, CombiningMarksStayWithTheirLetter) {
    EXPECT_EQ(graphemeCount("e\u0301"), 1u);
    EXPECT_EQ(graphemeCount("и\u0306"), 1u);  // й written as и + breve
    EXPECT_EQ(graphemes("caf" "e\u0301s"), (Strings{"c", "a", "f", "e\u0301", "s"}));
    EXPECT_EQ(graphemeCount("Z\u0351\u036B\u0343\u036A"), 1u);
}

TEST(GraphemesTest, HangulJamoFormOneSyllable) {
    EXPECT_EQ(graphemeCount("\u1112\u1161\u11AB"), 1u);  // 한 from its jamo
    EXPECT_EQ(graphemeCount("한국어"), 3u);
}

TEST(GraphemesTest, CrLfIsOneCharacter) {
    EXPECT_EQ(graphemeCount("\r\n"), 1u);
    EXPECT_EQ(graphemes("a\r\nb"), (Strings{"a", "\r\n", "b"}));
    EXPECT_EQ(graphemeCount("\n\r"), 2u);
}

TEST(GraphemesTest, EmptyTextHasNoCharacters) {
    EXPECT_EQ(graphemeCount(""), 0u);
    EXPECT_TRUE(graphemes("").empty());
    EXPECT_EQ(graphemeBoundaries(""), (std::vector<std::size_t>{0}));
    EXPECT_TRUE(graphemeRanges("").empty());
    EXPECT_EQ(firstGrapheme(""), "");
    EXPECT_EQ(lastGrapheme(""), "");
    EXPECT_EQ(reversedGraphemes(""), "");
    EXPECT_FALSE(isSingleGrapheme(""));
}

TEST(GraphemesTest, BoundariesAndRangesAreByteOffsets) {
    const std::string text = "aж👍🏽";  // a 0, ж 1-2, 👍🏽 3-10
    EXPECT_EQ(graphemeBoundaries(text), (std::vector<std::size_t>{0, 1, 3, 11}));
    EXPECT_EQ(graphemeRanges(text), (std::vector<ByteRange>{{0, 1}, {1, 3}, {3, 11}}));
}

TEST(GraphemesTest, PrefixTakesWholeClusters) {
    const std::string text = "he\u0301llo👍🏽!";
    EXPECT_EQ(graphemePrefix(text, 0), "");
    EXPECT_EQ(graphemePrefix(text, 2), "he\u0301");
    EXPECT_EQ(graphemePrefix(text, 6), "he\u0301llo👍🏽");
    EXPECT_EQ(graphemePrefix(text, 7), text);
    EXPECT_EQ(graphemePrefix(text, 1000), text);
}

TEST(GraphemesTest, SuffixTakesWholeClusters) {
    const std::string text = "ab🇷🇺🇺🇸";
    EXPECT_EQ(graphemeSuffix(text, 1), "🇺🇸");
    EXPECT_EQ(graphemeSuffix(text, 2), "🇷🇺🇺🇸");
    EXPECT_EQ(graphemeSuffix(text, 4), text);
    EXPECT_EQ(graphemeSuffix(text, 99), text);
    EXPECT_EQ(graphemeSuffix(text, 0), "");
    EXPECT_EQ(lastGrapheme("x\r\n"), "\r\n");
    EXPECT_EQ(firstGrapheme("👨‍👩‍👧‍👦!"), "👨‍👩‍👧‍👦");
}

TEST(GraphemesTest, SliceIsClampedToTheText) {
    const std::string text = "пр👍🏽ивет";
    EXPECT_EQ(graphemeSlice(text, 1, 2), "р👍🏽");
    EXPECT_EQ(graphemeSlice(text, 5, 10), "ет");
    EXPECT_EQ(graphemeSlice(text, 7, 1), "");
    EXPECT_EQ(graphemeSlice(text, 100, 1), "");
    EXPECT_EQ(graphemeSlice(text, 0, 0), "");
    EXPECT_EQ(graphemeSlice(text, 0, static_cast<std::size_t>(-1)), text);
}

TEST(GraphemesTest, ReverseAgreesWithTheBreakIteratorOnRandomText) {
    // Marks, spacing marks, controls and line ends around letters of several scripts; the
    // classes that the break iterator alone decides (prepended marks, Hangul, flags, joiners)
    // in some of the texts.
    const std::vector<std::string> pieces = {
        "a", "Z", " ", "\n", "\r", "\t", "\x7f", "é", "е", "\u0301", "\u0308", "\u0903", "\u093f", "\u0085",
        "\u200b", "\u200c", "\u2028", "😀", "\U0001F3FB", "\uFE0F", "中", "\u0E33", "\u0E40", "\u1100", "\u1161",
        "\uAC00", "\U0001F1E9", "\U0001F1EA", "\u200d", "\u0600", "\u0D4E", "\U000E0061", "\u00ad"};
    std::mt19937 random(5);
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        const int length = static_cast<int>(random() % 12);
        // Most texts draw only from the first pieces, which the short way decides.
        const std::size_t range = round % 3 == 0 ? pieces.size() : 20;
        for (int i = 0; i < length; ++i) text += pieces[random() % range];
        const std::vector<std::size_t> bounds = graphemeBoundaries(text);
        std::string expected;
        for (std::size_t i = bounds.size() - 1; i > 0; --i) expected += text.substr(bounds[i - 1], bounds[i] - bounds[i - 1]);
        ASSERT_EQ(reversedGraphemes(text), expected) << "round " << round;
    }
}

TEST(GraphemesTest, ReverseKeepsClustersWhole) {
    EXPECT_EQ(reversedGraphemes("привет"), "тевирп");
    EXPECT_EQ(reversedGraphemes("ab🇷🇺e\u0301"), "e\u0301🇷🇺ba");
    EXPECT_EQ(reversedGraphemes("x👨‍👩‍👧‍👦\r\n"), "\r\n👨‍👩‍👧‍👦x");
}

TEST(GraphemesTest, TruncationCountsCharactersNotBytes) {
    const std::string eighty(80, 'a');
    EXPECT_EQ(truncatedGraphemes(eighty, 80, "…"), eighty);
    EXPECT_EQ(truncatedGraphemes(eighty + "b", 80, "…"), eighty + "…");
    std::string emoji;
    for (int i = 0; i < 81; ++i) emoji += "👍🏽";
    const std::string cut = truncatedGraphemes(emoji, 80, "…");
    EXPECT_EQ(graphemeCount(cut), 81u);
    EXPECT_EQ(cut.substr(cut.size() - 3), "…");
    EXPECT_EQ(truncatedGraphemes("abc", 0, "…"), "…");
    EXPECT_EQ(truncatedGraphemes("", 0, "…"), "");
}

TEST(GraphemesTest, IsSingleGrapheme) {
    EXPECT_TRUE(isSingleGrapheme("👍🏽"));
    EXPECT_TRUE(isSingleGrapheme("\r\n"));
    EXPECT_TRUE(isSingleGrapheme("и\u0306"));
    EXPECT_FALSE(isSingleGrapheme("ab"));
}

TEST(GraphemesTest, IndexAndOffsetConvert) {
    const std::string text = "a👍🏽b";  // a 0, 👍🏽 1-8, b 9
    EXPECT_EQ(graphemeIndexFromByteOffset(text, 0), 0u);
    EXPECT_EQ(graphemeIndexFromByteOffset(text, 1), 1u);
    EXPECT_EQ(graphemeIndexFromByteOffset(text, 5), 1u);  // inside the emoji
    EXPECT_EQ(graphemeIndexFromByteOffset(text, 9), 2u);
    EXPECT_EQ(graphemeIndexFromByteOffset(text, 10), 3u);
    EXPECT_EQ(graphemeIndexFromByteOffset(text, 400), 3u);
    EXPECT_EQ(byteOffsetFromGraphemeIndex(text, 0), 0u);
    EXPECT_EQ(byteOffsetFromGraphemeIndex(text, 2), 9u);
    EXPECT_EQ(byteOffsetFromGraphemeIndex(text, 3), 10u);
    EXPECT_EQ(byteOffsetFromGraphemeIndex(text, 30), 10u);
}

TEST(GraphemesTest, IllFormedBytesAreReplacementCharacters) {
    const std::string text = "a\xFF" "b\xE2\x82";
    EXPECT_EQ(graphemes(text), (Strings{"a", kReplacement, "b", kReplacement}));
    EXPECT_EQ(graphemeCount(text), 4u);
    // Offsets still point into the bytes that were given.
    EXPECT_EQ(graphemeBoundaries(text), (std::vector<std::size_t>{0, 1, 2, 3, 5}));
    EXPECT_EQ(reversedGraphemes(text), kReplacement + "b" + kReplacement + "a");
    EXPECT_EQ(graphemePrefix(text, 2), "a" + kReplacement);
    EXPECT_EQ(graphemeSuffix("\x80\x80", 1), kReplacement);
    EXPECT_EQ(graphemeCount("\xC0\x80\xED\xA0\x80"), 5u);
}

TEST(GraphemesTest, LongTextIsCountedWhole) {
    std::string text;
    for (int i = 0; i < 20000; ++i) text += "e\u0301";
    EXPECT_EQ(graphemeCount(text), 20000u);
}

}  // namespace
}  // namespace orvantis::text
