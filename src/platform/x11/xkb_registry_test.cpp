#include "platform/x11/xkb_registry.h"

#include <gtest/gtest.h>

namespace orvantis::x11 {
namespace {

TEST(XkbRegistryTest, NamesLayoutsAndVariantsWithTwoLetterLanguages) {
    const auto us = describeXkbLayout("us", "");
    ASSERT_TRUE(us.has_value());
    EXPECT_EQ(us->name, "English (US)");
    ASSERT_FALSE(us->languages.empty());
    EXPECT_EQ(us->languages.front(), "en");

    const auto ru = describeXkbLayout("ru", "");
    ASSERT_TRUE(ru.has_value());
    EXPECT_EQ(ru->name, "Russian");
    EXPECT_EQ(ru->languages.front(), "ru");

    const auto phonetic = describeXkbLayout("ru", "phonetic");
    ASSERT_TRUE(phonetic.has_value());
    EXPECT_EQ(phonetic->name, "Russian (phonetic)");
    EXPECT_EQ(phonetic->languages.front(), "ru");

    const auto ukrainian = describeXkbLayout("ua", "");
    ASSERT_TRUE(ukrainian.has_value());
    EXPECT_EQ(ukrainian->languages.front(), "uk");
}

TEST(XkbRegistryTest, UnknownLayoutsAreNotDescribed) {
    EXPECT_FALSE(describeXkbLayout("no-such-layout", "").has_value());
    EXPECT_FALSE(describeXkbLayout("us", "no-such-variant").has_value());
}

TEST(XkbRegistryTest, ThreeLetterCodesBecomeTwoLetterOnesWhereTheyExist) {
    EXPECT_EQ(twoLetterLanguage("eng"), "en");
    EXPECT_EQ(twoLetterLanguage("rus"), "ru");
    EXPECT_EQ(twoLetterLanguage("ukr"), "uk");
    EXPECT_EQ(twoLetterLanguage("deu"), "de");
    EXPECT_EQ(twoLetterLanguage("ru"), "ru");
    EXPECT_EQ(twoLetterLanguage("xyz"), "xyz");
}

}  // namespace
}  // namespace orvantis::x11
