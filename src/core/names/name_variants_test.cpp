#include "core/names/name_variants.h"

#include <gtest/gtest.h>

namespace orvantis {
namespace {

std::vector<std::string> values(const std::vector<NameVariant>& variants) {
    std::vector<std::string> out;
    for (const auto& v : variants) out.push_back(v.value);
    return out;
}

TEST(NameVariantGeneratorTest, ElevenStylesInOrderForAPlainPhrase) {
    const auto variants = NameVariantGenerator::generate("get user name");
    ASSERT_EQ(variants.size(), 11u);
    for (std::size_t i = 0; i < variants.size(); ++i) EXPECT_EQ(variants[i].style, kAllNameStyles[i]);
    EXPECT_EQ(values(variants), (std::vector<std::string>{"getUserName", "GetUserName", "get_user_name",
                                                          "GET_USER_NAME", "get-user-name", "GET-USER-NAME",
                                                          "get user name", "GET USER NAME", "Get User Name",
                                                          "Get user name", "get.user.name"}));
}

TEST(NameVariantGeneratorTest, StyleNamesAreTheCaseNames) {
    EXPECT_EQ(nameStyleName(NameStyle::lowerCamelCase), "lowerCamelCase");
    EXPECT_EQ(nameStyleName(NameStyle::screamingKebabCase), "screamingKebabCase");
    EXPECT_EQ(nameStyleName(NameStyle::dotCase), "dotCase");
}

TEST(NameVariantGeneratorTest, EmptyOrPunctuationGivesElevenEmptyValues) {
    for (std::string_view phrase : {"", "  ", "!?…—", "-_-"}) {
        const auto variants = NameVariantGenerator::generate(phrase);
        ASSERT_EQ(variants.size(), 11u) << phrase;
        for (const auto& v : variants) EXPECT_EQ(v.value, "") << phrase;
    }
}

TEST(NameVariantGeneratorTest, AStopWordAloneStands) {
    const auto variants = NameVariantGenerator::generate("the");
    ASSERT_EQ(variants.size(), 11u);
    EXPECT_EQ(variants[0].value, "the");
    EXPECT_EQ(variants[1].value, "The");
    EXPECT_EQ(variants[3].value, "THE");
}

TEST(NameVariantGeneratorTest, StopWordsGoWhateverTheirCase) {
    const auto variants = NameVariantGenerator::generate("The Name Of The User");
    EXPECT_EQ(variants[0].value, "nameUser");
    EXPECT_EQ(variants[2].value, "name_user");
    EXPECT_EQ(NameVariantGenerator::tokens("the name of the user"), (std::vector<std::string>{"name", "user"}));
}

TEST(NameVariantGeneratorTest, DigitsStayInTheirToken) {
    const auto variants = NameVariantGenerator::generate("user2 name");
    EXPECT_EQ(variants[0].value, "user2Name");
    EXPECT_EQ(variants[2].value, "user2_name");
}

TEST(NameVariantGeneratorTest, TheScriptDoesNotMatter) {
    const auto variants = NameVariantGenerator::generate("привет мир");
    EXPECT_EQ(variants[0].value, "приветМир");
    EXPECT_EQ(variants[3].value, "ПРИВЕТ_МИР");
    EXPECT_EQ(variants[9].value, "Привет мир");
}

TEST(NameVariantGeneratorTest, CaseInThePhraseIsForgotten) {
    const auto variants = NameVariantGenerator::generate("getUserName");
    EXPECT_EQ(variants[0].value, "getusername");
    EXPECT_EQ(variants[1].value, "Getusername");
}

TEST(NameVariantGeneratorTest, OneTokenFillsAllElevenRowsWithRepeats) {
    const auto variants = NameVariantGenerator::generate("user");
    ASSERT_EQ(variants.size(), 11u);
    for (NameStyle style : {NameStyle::lowerCamelCase, NameStyle::snakeCase, NameStyle::kebabCase,
                            NameStyle::lowercaseSpaces, NameStyle::dotCase}) {
        EXPECT_EQ(variants[static_cast<std::size_t>(style)].value, "user");
    }
    EXPECT_EQ(variants[1].value, "User");
    EXPECT_EQ(variants[7].value, "USER");
}

TEST(NameVariantGeneratorTest, AnApostropheAndMarksCutOrStay) {
    // The apostrophe is no letter: three pieces.
    EXPECT_EQ(NameVariantGenerator::tokens("user's-name"), (std::vector<std::string>{"user", "s", "name"}));
    // A combining mark belongs to its word.
    EXPECT_EQ(NameVariantGenerator::tokens("cafe\u0301 menu"), (std::vector<std::string>{"cafe\u0301", "menu"}));
}

TEST(StopWordFilterTest, HoldsTheSixteenWords) {
    EXPECT_EQ(StopWordFilter::stopWords.size(), 16u);
    for (std::string_view w : {"the", "a", "an", "of", "in", "for", "with", "to", "by", "at", "and", "or", "is",
                               "are", "was", "were"}) {
        EXPECT_TRUE(StopWordFilter::isStopWord(w)) << w;
    }
    EXPECT_FALSE(StopWordFilter::isStopWord("user"));
    EXPECT_FALSE(StopWordFilter::isStopWord(""));
}

TEST(StopWordFilterTest, IgnoresCaseAndKeepsTheFormOfWhatStays) {
    EXPECT_EQ(StopWordFilter::filter({"The", "Big", "OF", "Users"}), (std::vector<std::string>{"Big", "Users"}));
}

TEST(StopWordFilterTest, NothingLeftGivesTheInputBack) {
    EXPECT_EQ(StopWordFilter::filter({"Of", "the"}), (std::vector<std::string>{"Of", "the"}));
    EXPECT_EQ(StopWordFilter::filter({}), std::vector<std::string>{});
}

TEST(NameVariantGeneratorTest, LettersBeyondAsciiFollowFullCaseMapping) {
    const auto variants = NameVariantGenerator::generate("Große ÉCOLE");
    EXPECT_EQ(variants[0].value, "großeÉcole");
    EXPECT_EQ(variants[3].value, "GROSSE_ÉCOLE");
    EXPECT_EQ(variants[10].value, "große.école");
}

TEST(NameVariantGeneratorTest, MakeVariantOfNoTokensIsEmpty) {
    for (NameStyle style : kAllNameStyles) EXPECT_EQ(NameVariantGenerator::makeVariant({}, style), "");
}

}  // namespace
}  // namespace orvantis
