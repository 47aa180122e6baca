#include "core/text/whitespace.h"

#include <string>

#include <gtest/gtest.h>

namespace orvantis::text {
namespace {

constexpr auto kBlanks = WhitespaceSet::whitespaces;
constexpr auto kLines = WhitespaceSet::newlines;
constexpr auto kBoth = WhitespaceSet::whitespacesAndNewlines;

TEST(WhitespaceTest, WhitespacesAreSpaceSeparatorsAndTab) {
    for (char32_t c : {U' ', U'\t', U'\u00A0', U'\u1680', U'\u2000', U'\u2003', U'\u200A',
                       U'\u202F', U'\u205F', U'\u3000'}) {
        EXPECT_TRUE(isIn(kBlanks, c)) << static_cast<unsigned>(c);
    }
    for (char32_t c : {U'\n', U'\r', U'\v', U'\f', U'\u0085', U'\u2028', U'\u2029', U'\u200B',
                       U'\uFEFF', U'a', U'_', U'\0'}) {
        EXPECT_FALSE(isIn(kBlanks, c)) << static_cast<unsigned>(c);
    }
}

TEST(WhitespaceTest, NewlinesAreTheLineAndParagraphBreaks) {
    for (char32_t c : {U'\n', U'\v', U'\f', U'\r', U'\u0085', U'\u2028', U'\u2029'}) {
        EXPECT_TRUE(isIn(kLines, c)) << static_cast<unsigned>(c);
    }
    for (char32_t c : {U' ', U'\t', U'\u00A0', U'\u0009', U'\u0008', U'\u000E'}) {
        EXPECT_FALSE(isIn(kLines, c)) << static_cast<unsigned>(c);
    }
}

TEST(WhitespaceTest, TheUnionHoldsBoth) {
    for (char32_t c : {U' ', U'\t', U'\u00A0', U'\u3000', U'\n', U'\r', U'\u2028', U'\u2029',
                       U'\u0085'}) {
        EXPECT_TRUE(isIn(kBoth, c)) << static_cast<unsigned>(c);
    }
    EXPECT_FALSE(isIn(kBoth, U'\u200B'));
    EXPECT_FALSE(isIn(kBoth, U'x'));
}

TEST(WhitespaceTest, NonCodePointsBelongToNoSet) {
    EXPECT_FALSE(isIn(kBlanks, 0x110000));
    EXPECT_FALSE(isIn(kBoth, 0xFFFFFFFF));
    EXPECT_FALSE(isUnicodeWhitespace(0x110020));
}

TEST(WhitespaceTest, UnicodeWhitespacePropertyCoversBlanksAndBreaks) {
    EXPECT_TRUE(isUnicodeWhitespace(U' '));
    EXPECT_TRUE(isUnicodeWhitespace(U'\n'));
    EXPECT_TRUE(isUnicodeWhitespace(U'\u00A0'));
    EXPECT_TRUE(isUnicodeWhitespace(U'\u2028'));
    EXPECT_FALSE(isUnicodeWhitespace(U'\u200B'));
    EXPECT_FALSE(isUnicodeWhitespace(U'a'));
}

TEST(WhitespaceTest, TrimsEachSetFromBothEnds) {
    EXPECT_EQ(trimmed("  \t hello world \n\r\n"), "hello world");
    EXPECT_EQ(trimmed("  hi \n", kBlanks), "hi \n");
    EXPECT_EQ(trimmed("\n hi \n", kLines), " hi ");
    EXPECT_EQ(trimmed("\u00A0x\u2028", kBlanks), "x\u2028");
    EXPECT_EQ(trimmed("\u2029\u3000x y\u0085", kBoth), "x y");
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(trimmed(" \n\t"), "");
    EXPECT_EQ(trimmed("привет"), "привет");
}

TEST(WhitespaceTest, TrimsOneEnd) {
    EXPECT_EQ(trimmedStart("  a b  "), "a b  ");
    EXPECT_EQ(trimmedEnd("  a b  "), "  a b");
    EXPECT_EQ(trimmedEnd("a\u3000\u2028", kBlanks), "a\u3000\u2028");
    EXPECT_EQ(trimmedEnd("a\u2028\u3000", kBlanks), "a\u2028");
}

TEST(WhitespaceTest, TrimResultViewsTheInput) {
    const std::string text = "  abc  ";
    const std::string_view result = trimmed(text);
    EXPECT_EQ(result.data(), text.data() + 2);
    EXPECT_EQ(result.size(), 3u);
}

TEST(WhitespaceTest, TrimmingStopsAtIllFormedBytes) {
    EXPECT_EQ(trimmed("  \xFF  "), "\xFF");
    EXPECT_EQ(trimmedEnd(" \x80"), " \x80");
    EXPECT_EQ(trimmedEnd("a \xE2\x80"), "a \xE2\x80");  // a line separator cut short
    EXPECT_EQ(trimmedEnd("\x80\x80\x80\x80 "), "\x80\x80\x80\x80");
    EXPECT_EQ(trimmedStart("\xE2\x80 x"), "\xE2\x80 x");
}

TEST(WhitespaceTest, CollapsesRunsToOneBlank) {
    EXPECT_EQ(collapsedWhitespace("  a \t\n b  c "), "a b c");
    EXPECT_EQ(collapsedWhitespace("a\u00A0\u00A0b"), "a b");
    EXPECT_EQ(collapsedWhitespace("a\n\r\u2028b\n", kLines), "a b");
    EXPECT_EQ(collapsedWhitespace("a \n\n b", kLines), "a   b");  // blanks are not in the set
    EXPECT_EQ(collapsedWhitespace(""), "");
    EXPECT_EQ(collapsedWhitespace(" \n "), "");
    EXPECT_EQ(collapsedWhitespace("a  \xFF"), "a \xEF\xBF\xBD");
}

TEST(WhitespaceTest, WhitespaceOnly) {
    EXPECT_TRUE(isWhitespaceOnly(""));
    EXPECT_TRUE(isWhitespaceOnly(" \n\u00A0\t\u2029"));
    EXPECT_FALSE(isWhitespaceOnly(" \u2028 ", kBlanks));
    EXPECT_TRUE(isWhitespaceOnly("\r\n", kLines));
    EXPECT_FALSE(isWhitespaceOnly(" . "));
    EXPECT_FALSE(isWhitespaceOnly(" \xFF"));
    EXPECT_FALSE(isWhitespaceOnly("\u200B"));
}

}  // namespace
}  // namespace orvantis::text
