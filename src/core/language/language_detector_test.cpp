#include "core/language/language_detector.h"

#include <gtest/gtest.h>

#include "core/language/language_libraries.h"
#include "core/language/spelling_dictionaries.h"
#include "testing/test_support.h"

#include <cstdlib>

namespace orvantis {
namespace {

// The detector's library and the word lists' library cost memory from the moment they are
// mapped, so a program that has detected nothing has neither: the detector comes with the first
// text, the word lists with the first short one. Run in a fresh process (a death test), where
// no other test has detected anything yet.
TEST(LanguageLibrariesDeathTest, TheDetectorAndTheWordListsLoadAtTheirFirstUseNotBefore) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            using namespace language_libraries;
            if (detectorLoaded() || spellingLoaded()) std::_Exit(1);
            SpellingDictionaries dictionaries;
            if (spellingLoaded()) std::_Exit(2);
            if (LanguageDetector::detect("The quick brown fox jumps over the lazy dog", dictionaries) != "en") {
                std::_Exit(3);
            }
            if (!detectorLoaded()) std::_Exit(4);
            if (spellingLoaded()) std::_Exit(5);  // a sentence is the detector's alone
            if (LanguageDetector::detect("hello", dictionaries) != "en") std::_Exit(6);
            std::_Exit(spellingLoaded() ? 0 : 7);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(LanguageDetectorTest, BlankTextHasNoLanguageAndNoWords) {
    for (std::string_view blank : {"", "   ", "\n\t \u00a0"}) {
        EXPECT_EQ(LanguageDetector::detect(blank), std::nullopt);
        EXPECT_EQ(LanguageDetector::wordCount(blank), 0u);
    }
}

TEST(LanguageDetectorTest, FindsTheLanguageOfASentence) {
    EXPECT_EQ(LanguageDetector::detect("The quick brown fox jumps over the lazy dog"), "en");
    EXPECT_EQ(LanguageDetector::detect("Съешь же ещё этих мягких французских булок, да выпей чаю"), "ru");
    EXPECT_EQ(LanguageDetector::detect("Der schnelle braune Fuchs springt über den faulen Hund"), "de");
    EXPECT_EQ(LanguageDetector::detect("Жовтий пес біжить через широке поле, а кіт спить на ґанку"), "uk");
}

TEST(LanguageDetectorTest, NothingToJudgeIsNoLanguage) {
    EXPECT_EQ(LanguageDetector::detect("?! ..."), std::nullopt);
    EXPECT_EQ(LanguageDetector::detect("12345 678"), std::nullopt);
}

TEST(LanguageDetectorTest, AnswersTodaysTwoLetterCodes) {
    // The detector's own code for Hebrew is an old one.
    EXPECT_EQ(LanguageDetector::detect("שלום לכולם, מה שלומכם היום? אני שמח לראות אתכם כאן"), "he");
    EXPECT_EQ(LanguageDetector::detect("今天天气很好，我们一起去公园散步吧。我很喜欢这个城市。"), "zh");
}

TEST(LanguageDetectorTest, WithoutWordListsTheDetectorsBestGuessStillAnswersShortText) {
    testing::TemporaryDirectory empty;
    SpellingDictionaries none(empty.path().string());
    EXPECT_EQ(LanguageDetector::detect("hello", none), "en");
    EXPECT_EQ(LanguageDetector::detect("gracias", none), "es");
    EXPECT_EQ(LanguageDetector::detect("Привет", none), "ru");
    EXPECT_EQ(LanguageDetector::detect("привіт", none), "uk");
    EXPECT_EQ(LanguageDetector::detect("12345 678", none), std::nullopt);
}

TEST(LanguageDetectorTest, TheWordListsSettleWhatTheBestGuessGetsWrong) {
    testing::TemporaryDirectory empty;
    SpellingDictionaries none(empty.path().string());
    SpellingDictionaries installed;
    // The detector alone takes these for Danish, Hmong and Bulgarian.
    EXPECT_EQ(LanguageDetector::detect("folder", installed), "en");
    EXPECT_EQ(LanguageDetector::detect("Haus", installed), "de");
    EXPECT_EQ(LanguageDetector::detect("работа", installed), "ru");
    EXPECT_NE(LanguageDetector::detect("folder", none), "en");
    EXPECT_NE(LanguageDetector::detect("Haus", none), "de");
}

TEST(LanguageDetectorTest, AScriptOfOneLanguageNamesIt) {
    EXPECT_EQ(LanguageDetector::detect("γεια"), "el");
    EXPECT_EQ(LanguageDetector::detect("שלום"), "he");
    EXPECT_EQ(LanguageDetector::detect("사용자"), "ko");
    EXPECT_EQ(LanguageDetector::detect("ファイル"), "ja");
    EXPECT_EQ(LanguageDetector::detect("早上好"), "zh");
    EXPECT_EQ(LanguageDetector::detect("謝謝"), "zh");
    EXPECT_EQ(LanguageDetector::detect("สวัสดี"), "th");
    EXPECT_EQ(LanguageDetector::detect("გამარჯობა"), "ka");
}

TEST(LanguageDetectorTest, CyrillicLettersOfOneLanguage) {
    EXPECT_EQ(LanguageDetector::detect("ёж"), "ru");
    EXPECT_EQ(LanguageDetector::detect("мы"), "ru");
    EXPECT_EQ(LanguageDetector::detect("ґанок"), "uk");
    EXPECT_EQ(LanguageDetector::detect("праўда"), "be");
    EXPECT_EQ(LanguageDetector::detect("ћао"), "sr");
}

TEST(LanguageDetectorTest, AGuessOfALanguageWithoutAWordListStandsWhereNoListKnowsEveryWord) {
    // Without an Italian list "come" would make this English and "sera" Spanish; with one
    // installed, it knows both words.
    EXPECT_EQ(LanguageDetector::detect("come stai"), "it");
    EXPECT_EQ(LanguageDetector::detect("buona sera"), "it");
    // Belarusian without its own letter "ў": the Ukrainian list knows "мова", not "беларуская".
    EXPECT_EQ(LanguageDetector::detect("беларуская мова"), "be");
}

TEST(LanguageDetectorTest, MixedScriptsGoByTheScriptOfMostLetters) {
    EXPECT_EQ(LanguageDetector::detect("Привет user"), "ru");
    EXPECT_EQ(LanguageDetector::detect("hello мир"), "en");
    EXPECT_EQ(LanguageDetector::detect("user42"), "en");
}

TEST(LanguageDetectorTest, SurvivesBrokenAndHugeText) {
    EXPECT_NO_THROW(LanguageDetector::detect(std::string("hello \xff\xfe world", 15)));
    const std::string big(2'000'000, 'a');
    EXPECT_NO_THROW(LanguageDetector::detect(big));
    EXPECT_EQ(LanguageDetector::wordCount(big), 1u);
}

TEST(LanguageDetectorTest, CountsWords) {
    EXPECT_EQ(LanguageDetector::wordCount("get user"), 2u);
    EXPECT_EQ(LanguageDetector::wordCount("  привет мир  "), 2u);
    EXPECT_EQ(LanguageDetector::wordCount("it's a user-name"), 4u);
    // Underscores join a word, as the word rules have it.
    EXPECT_EQ(LanguageDetector::wordCount("user_name"), 1u);
}

TEST(LanguageDetectorTest, PunctuationAloneCountsItsRuns) {
    EXPECT_EQ(LanguageDetector::wordCount("?!"), 1u);
    EXPECT_EQ(LanguageDetector::wordCount("?! ..."), 2u);
    EXPECT_EQ(LanguageDetector::wordCount(" -- \n ** "), 2u);
}

}  // namespace
}  // namespace orvantis
