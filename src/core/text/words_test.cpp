#include "core/text/words.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orvantis::text {
namespace {

using Strings = std::vector<std::string>;

TEST(WordsTest, TokensOfAMixedSentence) {
    const std::vector<WordToken> tokens = wordTokens("Hello, world! Привет мир 42");
    const std::vector<WordToken> expected{
        {{0, 5}, "Hello", WordKind::letter},   {{7, 12}, "world", WordKind::letter},
        {{14, 26}, "Привет", WordKind::letter}, {{27, 33}, "мир", WordKind::letter},
        {{34, 36}, "42", WordKind::number},
    };
    EXPECT_EQ(tokens, expected);
    EXPECT_EQ(wordCount("Hello, world! Привет мир 42"), 5u);
}

TEST(WordsTest, TextWithoutWords) {
    EXPECT_EQ(wordCount(""), 0u);
    EXPECT_EQ(wordCount("   \n\t"), 0u);
    EXPECT_EQ(wordCount("...!! -- ?"), 0u);
    EXPECT_EQ(wordCount("👍🏽 🇷🇺"), 0u);
    EXPECT_TRUE(wordTokens("  ").empty());
}

TEST(WordsTest, WordsKeepTheirInnerPunctuation) {
    EXPECT_EQ(words("don't stop"), (Strings{"don't", "stop"}));
    EXPECT_EQ(words("user_name getUserName"), (Strings{"user_name", "getUserName"}));
    EXPECT_EQ(words("e\u0301cole и\u0306од"), (Strings{"e\u0301cole", "и\u0306од"}));
    EXPECT_EQ(words("3.14 1,000 v2"), (Strings{"3.14", "1,000", "v2"}));
}

TEST(WordsTest, KindsFollowTheRuleStatus) {
    const std::vector<WordToken> tokens = wordTokens("abc 123 Привет v2 中文");
    ASSERT_GE(tokens.size(), 5u);
    EXPECT_EQ(tokens[0].kind, WordKind::letter);
    EXPECT_EQ(tokens[1].kind, WordKind::number);
    EXPECT_EQ(tokens[2].kind, WordKind::letter);
    EXPECT_EQ(tokens[3].kind, WordKind::number);  // ICU's status for a word ending in digits
    EXPECT_EQ(tokens.back().kind, WordKind::ideographic);
}

TEST(WordsTest, TextWithoutSpacesIsCutByDictionary) {
    EXPECT_GE(wordCount("我喜欢学习中文"), 2u);
}

TEST(WordsTest, RangesPointIntoIllFormedInput) {
    const std::vector<WordToken> tokens = wordTokens("ab\xFF" "cd \xE2\x82xy");
    const std::vector<WordToken> expected{
        {{0, 2}, "ab", WordKind::letter},
        {{3, 5}, "cd", WordKind::letter},
        {{8, 10}, "xy", WordKind::letter},
    };
    EXPECT_EQ(tokens, expected);
}

TEST(WordsTest, LongTextCountsEveryWord) {
    std::string text;
    for (int i = 0; i < 5000; ++i) text += "слово word ";
    EXPECT_EQ(wordCount(text), 10000u);
}

}  // namespace
}  // namespace orvantis::text
