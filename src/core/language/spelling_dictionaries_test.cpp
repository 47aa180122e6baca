#include "core/language/spelling_dictionaries.h"

#include <gtest/gtest.h>

#include "testing/test_support.h"

namespace orvantis {
namespace {

// The dictionaries of English, German, French, Spanish, Russian and Ukrainian are installed
// with the program's dependencies.

TEST(SpellingDictionariesTest, KnowsTheWordsOfItsLanguageOnly) {
    SpellingDictionaries dictionaries;
    EXPECT_TRUE(dictionaries.knows("en", "hello"));
    EXPECT_FALSE(dictionaries.knows("de", "hello"));
    EXPECT_TRUE(dictionaries.knows("ru", "пользователя")) << "inflected forms are words";
    EXPECT_FALSE(dictionaries.knows("uk", "пользователя"));
    EXPECT_TRUE(dictionaries.knows("uk", "говорити"));
    EXPECT_TRUE(dictionaries.knows("es", "contraseña"));
    EXPECT_FALSE(dictionaries.knows("en", ""));
}

TEST(SpellingDictionariesTest, OneLetterIsAWordOnlyWhereTheListHasIt) {
    SpellingDictionaries dictionaries;
    EXPECT_FALSE(dictionaries.knows("de", "ж"));
    EXPECT_FALSE(dictionaries.knows("fr", "w"));
    EXPECT_TRUE(dictionaries.knows("ru", "я"));
}

TEST(SpellingDictionariesTest, CaseAndApostrophesAsPeopleTypeThem) {
    SpellingDictionaries dictionaries;
    EXPECT_TRUE(dictionaries.knows("de", "haus")) << "a noun typed in lower case";
    EXPECT_TRUE(dictionaries.knows("de", "HAUS"));
    EXPECT_TRUE(dictionaries.knows("en", "Hello"));
    // Outside German a capital makes a name: the mouse is no Misha.
    EXPECT_FALSE(dictionaries.knows("ru", "миша"));
    EXPECT_TRUE(dictionaries.knows("ru", "Миша"));
    EXPECT_TRUE(dictionaries.knows("uk", "миша"));
    EXPECT_TRUE(dictionaries.knows("uk", "ім'я"));
    EXPECT_TRUE(dictionaries.knows("uk", "ім\u2019я"));
    EXPECT_TRUE(dictionaries.knows("fr", "aujourd\u2019hui"));
}

TEST(SpellingDictionariesTest, AMissingDictionaryKnowsNothing) {
    SpellingDictionaries dictionaries;
    EXPECT_FALSE(dictionaries.has("xx"));
    EXPECT_FALSE(dictionaries.knows("xx", "hello"));
    testing::TemporaryDirectory empty;
    SpellingDictionaries none(empty.path().string());
    EXPECT_FALSE(none.has("en"));
    EXPECT_FALSE(none.knows("en", "hello"));
    EXPECT_TRUE(dictionaries.has("en"));
}

}  // namespace
}  // namespace orvantis
