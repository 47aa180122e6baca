#include "core/text/case_folding.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orvantis::text {
namespace {

using Ranges = std::vector<ByteRange>;

TEST(CaseFoldingTest, FoldsFully) {
    EXPECT_EQ(caseFolded("Straße"), "strasse");
    EXPECT_EQ(caseFolded("ПРИВЕТ Ёж"), "привет ёж");
    EXPECT_EQ(caseFolded("ΣΑΣ"), "σασ");  // folding knows no final form
    EXPECT_EQ(caseFolded("\u212A"), "k");  // Kelvin sign
    EXPECT_EQ(caseFolded("a\xFF"), "a\xEF\xBF\xBD");
}

TEST(CaseFoldingTest, EqualityIgnoresCaseOnly) {
    EXPECT_TRUE(caseInsensitiveEquals("ПРИВЕТ", "привет"));
    EXPECT_TRUE(caseInsensitiveEquals("Straße", "STRASSE"));
    EXPECT_TRUE(caseInsensitiveEquals("\u00C9cole", "e\u0301COLE"));  // É precomposed
    EXPECT_TRUE(caseInsensitiveEquals("", ""));
    EXPECT_FALSE(caseInsensitiveEquals("école", "ecole"));
    EXPECT_FALSE(caseInsensitiveEquals("привет", "привeт"));  // Latin e in the second
}

TEST(CaseFoldingTest, CompareOrdersByCaselessKey) {
    EXPECT_EQ(caseInsensitiveCompare("apple", "BANANA"), -1);
    EXPECT_EQ(caseInsensitiveCompare("Banana", "apple"), 1);
    EXPECT_EQ(caseInsensitiveCompare("ЁЖ", "ёж"), 0);
    EXPECT_EQ(caseInsensitiveCompare("ab", "ABC"), -1);
}

TEST(CaseFoldingTest, FindsEveryOccurrenceInBytes) {
    EXPECT_EQ(caseInsensitiveFind("Hello hello HELLO", "hello"),
              (Ranges{{0, 5}, {6, 11}, {12, 17}}));
    EXPECT_EQ(caseInsensitiveFind("Привет, ПРИВЕТ", "привет"), (Ranges{{0, 12}, {14, 26}}));
    EXPECT_EQ(caseInsensitiveFind("abc", "x"), Ranges{});
}

TEST(CaseFoldingTest, MatchesDoNotOverlap) {
    EXPECT_EQ(caseInsensitiveFind("aaaa", "AA"), (Ranges{{0, 2}, {2, 4}}));
    EXPECT_EQ(caseInsensitiveFind("aaa", "aa"), (Ranges{{0, 2}}));
}

TEST(CaseFoldingTest, FullFoldingMatchesSharpS) {
    EXPECT_EQ(caseInsensitiveFind("Straße", "SS"), (Ranges{{4, 6}}));
    EXPECT_EQ(caseInsensitiveFind("STRASSE", "ß"), (Ranges{{4, 6}}));
    EXPECT_EQ(caseInsensitiveFind("ß", "s"), Ranges{});  // half of ß is no match
    EXPECT_EQ(caseInsensitiveFind("\uFB01le", "FILE"), (Ranges{{0, 5}}));
}

TEST(CaseFoldingTest, MatchesCoverWholeCharacters) {
    // Decomposed é: "e" would end inside the character.
    EXPECT_EQ(caseInsensitiveFind("cafe\u0301", "cafe"), Ranges{});
    EXPECT_EQ(caseInsensitiveFind("caf\u00E9", "cafe"), Ranges{});
    EXPECT_EQ(caseInsensitiveFind("cafe\u0301!", "CAF\u00C9"), (Ranges{{0, 6}}));
    EXPECT_EQ(caseInsensitiveFind("caf\u00E9!", "CAFE\u0301"), (Ranges{{0, 5}}));
    EXPECT_EQ(caseInsensitiveFind("a👍🏽b", "👍"), Ranges{});
    EXPECT_EQ(caseInsensitiveFind("a👍🏽b", "👍🏽"), (Ranges{{1, 9}}));
    EXPECT_EQ(caseInsensitiveFind("🇷🇺🇺🇸", "🇺🇺"), Ranges{});
    EXPECT_EQ(caseInsensitiveFind("🇷🇺🇺🇸", "🇺🇸"), (Ranges{{8, 16}}));
}

TEST(CaseFoldingTest, MatchesAfterARejectedCandidateAreFound) {
    EXPECT_EQ(caseInsensitiveFind("e\u0301 E", "e"), (Ranges{{4, 5}}));
}

TEST(CaseFoldingTest, EmptyNeedleFindsNothing) {
    EXPECT_EQ(caseInsensitiveFind("abc", ""), Ranges{});
    EXPECT_EQ(caseInsensitiveFind("", ""), Ranges{});
    EXPECT_FALSE(caseInsensitiveContains("abc", ""));
    EXPECT_FALSE(caseInsensitiveContains("", "a"));
}

TEST(CaseFoldingTest, ContainsIgnoresCase) {
    EXPECT_TRUE(caseInsensitiveContains("Первая строка\nВторая СТРОКА", "вторая строка"));
    EXPECT_TRUE(caseInsensitiveContains("Temperature 300\u212A", "300k"));
    EXPECT_FALSE(caseInsensitiveContains("Hello", "help"));
}

TEST(CaseFoldingTest, RangesPointIntoIllFormedInput) {
    const std::string haystack = "x\xFFHELLO\xE2\x82hello";
    EXPECT_EQ(caseInsensitiveFind(haystack, "hello"), (Ranges{{2, 7}, {9, 14}}));
    EXPECT_EQ(caseInsensitiveFind("a\xFF" "b", "\xFE"), (Ranges{{1, 2}}));
}

}  // namespace
}  // namespace orvantis::text
