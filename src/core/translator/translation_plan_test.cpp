#include "core/translator/translation_plan.h"

#include <gtest/gtest.h>

#include <set>

namespace orvantis {
namespace {

using Sequence = std::vector<std::vector<int>>;

TEST(TranslationPlanTest, UpToTenWordsGiveVariantsInEnglish) {
    EXPECT_EQ(translationPlan("ru", 2, false, "en", "ru"), (TranslationPlan{TranslationMode::namingVariants, "ru", "en"}));
    // An English selection: source and target agree, so no request will go out.
    EXPECT_EQ(translationPlan("en", 10, false, "en", "ru"), (TranslationPlan{TranslationMode::namingVariants, "en", "en"}));
    // The pair is not asked: identifiers are English whatever it is.
    EXPECT_EQ(translationPlan("de", 1, false, "fr", "es"), (TranslationPlan{TranslationMode::namingVariants, "de", "en"}));
    EXPECT_EQ(translationPlan(std::nullopt, 3, false, "en", "ru"),
              (TranslationPlan{TranslationMode::namingVariants, "auto", "en"}));
}

TEST(TranslationPlanTest, ElevenWordsGoDirectBetweenThePair) {
    EXPECT_EQ(translationPlan("ru", 11, false, "en", "ru"), (TranslationPlan{TranslationMode::direct, "ru", "en"}));
    EXPECT_EQ(translationPlan("en", 11, false, "en", "ru"), (TranslationPlan{TranslationMode::direct, "en", "ru"}));
}

TEST(TranslationPlanTest, TheDirectHotkeyOnOneWordIsDirect) {
    EXPECT_EQ(translationPlan("ru", 1, true, "en", "ru"), (TranslationPlan{TranslationMode::direct, "ru", "en"}));
}

TEST(TranslationPlanTest, AnotherLanguageGoesToThePrimary) {
    EXPECT_EQ(translationPlan("de", 12, false, "en", "ru"), (TranslationPlan{TranslationMode::direct, "de", "en"}));
}

TEST(TranslationPlanTest, UndetectedTextOnTheDirectRoadHasBothCodesPrimary) {
    EXPECT_EQ(translationPlan(std::nullopt, 1, true, "en", "ru"), (TranslationPlan{TranslationMode::direct, "en", "en"}));
}

TEST(TranslationPlanTest, NoWordsGoDirect) {
    EXPECT_EQ(translationPlan(std::nullopt, 0, false, "en", "ru"), (TranslationPlan{TranslationMode::direct, "en", "en"}));
}

TEST(TranslationPlanTest, CodesCompareExactly) {
    EXPECT_EQ(translationPlan("EN", 20, false, "en", "ru"), (TranslationPlan{TranslationMode::direct, "EN", "en"}));
}

TEST(TokenizeForAlternatesTest, WordsInOrderOrPiecesOrNothing) {
    EXPECT_EQ(tokenizeForAlternates("  имя пользователя  "), (std::vector<std::string>{"имя", "пользователя"}));
    EXPECT_EQ(tokenizeForAlternates("user's name!"), (std::vector<std::string>{"user's", "name"}));
    EXPECT_TRUE(tokenizeForAlternates(" \n ").empty());
    EXPECT_TRUE(tokenizeForAlternates("?! ...").empty());
}

TEST(SnakeSequenceTest, TwoByThree) {
    EXPECT_EQ(snakeSequence({2, 3}), (Sequence{{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 2}, {1, 2}}));
}

TEST(SnakeSequenceTest, EmptyOrAZeroGivesNothing) {
    EXPECT_TRUE(snakeSequence({}).empty());
    EXPECT_TRUE(snakeSequence({3, 0, 2}).empty());
}

TEST(SnakeSequenceTest, OneWordCountsUp) { EXPECT_EQ(snakeSequence({3}), (Sequence{{0}, {1}, {2}})); }

TEST(SnakeSequenceTest, EveryCombinationOnceAndOneWordPerStep) {
    const Sequence all = snakeSequence({3, 2, 4});
    ASSERT_EQ(all.size(), 24u);
    EXPECT_EQ(std::set<std::vector<int>>(all.begin(), all.end()).size(), 24u);
    for (std::size_t step = 1; step < all.size(); ++step) {
        int changed = 0;
        for (std::size_t word = 0; word < 3; ++word) {
            if (all[step][word] != all[step - 1][word]) {
                ++changed;
                EXPECT_EQ(std::abs(all[step][word] - all[step - 1][word]), 1);
            }
        }
        EXPECT_EQ(changed, 1) << "step " << step;
    }
}

TEST(SnakeSequenceTest, EightByEightByEightIsCutToSixtyAndStillOneWordPerStep) {
    const Sequence full = snakeSequence({8, 8, 8});
    ASSERT_EQ(full.size(), 512u);
    const Sequence cut = snakeSequence({8, 8, 8}, 60);
    ASSERT_EQ(cut.size(), 60u);
    EXPECT_EQ(cut, Sequence(full.begin(), full.begin() + 60));
    for (std::size_t step = 1; step < cut.size(); ++step) {
        int changed = 0;
        for (std::size_t word = 0; word < 3; ++word) changed += cut[step][word] != cut[step - 1][word];
        EXPECT_EQ(changed, 1);
    }
    EXPECT_EQ(cut.front(), (std::vector<int>{0, 0, 0}));
}

TEST(CyclePhraseTest, JoinsEachWordsAlternative) {
    const std::vector<std::vector<std::string>> alternates{{"user", "person"}, {"name", "title", "label"}};
    EXPECT_EQ(cyclePhrase(alternates, {1, 2}), "person label");
    EXPECT_EQ(cyclePhrase(alternates, {0}), std::nullopt);
    EXPECT_EQ(cyclePhrase(alternates, {2, 0}), std::nullopt);
}

}  // namespace
}  // namespace orvantis
