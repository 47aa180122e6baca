#include "core/language/language_catalog.h"

#include <gtest/gtest.h>

#include <set>

namespace orvantis {
namespace {

TEST(LanguageCatalogTest, TwentyEightCodesInOrder) {
    EXPECT_EQ(LanguageCatalog::supported.size(), 28u);
    EXPECT_EQ(LanguageCatalog::supported.front(), "ar");
    EXPECT_EQ(LanguageCatalog::supported[6], "en");
    EXPECT_EQ(LanguageCatalog::supported[22], "ru");
    EXPECT_EQ(LanguageCatalog::supported.back(), "zh");
    EXPECT_EQ(std::set<std::string_view>(LanguageCatalog::supported.begin(), LanguageCatalog::supported.end()).size(),
              28u);
}

TEST(LanguageCatalogTest, NamesInEnglishAndRussian) {
    EXPECT_EQ(LanguageCatalog::displayName("de", "en"), "German");
    EXPECT_EQ(LanguageCatalog::displayName("ru", "en"), "Russian");
    EXPECT_EQ(LanguageCatalog::displayName("de", "ru"), "немецкий");
    EXPECT_EQ(LanguageCatalog::displayName("en", "ru"), "английский");
}

TEST(LanguageCatalogTest, EveryOfferedLanguageHasANameInBothLanguages) {
    for (std::string_view code : LanguageCatalog::supported) {
        EXPECT_NE(LanguageCatalog::displayName(code, "en"), code);
        EXPECT_NE(LanguageCatalog::displayName(code, "ru"), code);
    }
}

TEST(LanguageCatalogTest, ACodeWithoutANameIsItsOwnName) {
    EXPECT_EQ(LanguageCatalog::displayName("qq", "en"), "qq");
    EXPECT_EQ(LanguageCatalog::displayName("", "en"), "");
    EXPECT_EQ(LanguageCatalog::displayName("%%%", "ru"), "%%%");
}

}  // namespace
}  // namespace orvantis
