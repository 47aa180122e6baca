#include "core/text/case_mapping.h"

#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <unicode/uloc.h>

#include "core/text/icu_support.h"

namespace orvantis::text {
namespace {

TEST(CaseMappingTest, CyrillicRoundTrips) {
    EXPECT_EQ(uppercased("привет"), "ПРИВЕТ");
    EXPECT_EQ(lowercased("ПРИВЕТ"), "привет");
    EXPECT_EQ(uppercased("ёлка"), "ЁЛКА");
    EXPECT_EQ(lowercased("ЁЖ"), "ёж");
    EXPECT_EQ(uppercased("Съешь же ещё этих мягких французских булок"),
              "СЪЕШЬ ЖЕ ЕЩЁ ЭТИХ МЯГКИХ ФРАНЦУЗСКИХ БУЛОК");
}

TEST(CaseMappingTest, FullMappingsChangeLength) {
    EXPECT_EQ(uppercased("straße"), "STRASSE");
    EXPECT_EQ(uppercased("\u0149"), "\u02BCN");  // ŉ
    EXPECT_EQ(uppercased("\uFB01"), "FI");       // the fi ligature
    EXPECT_EQ(lowercased("\u0130"), "i\u0307");  // İ outside Turkish
}

TEST(CaseMappingTest, FinalSigmaFollowsItsContext) {
    EXPECT_EQ(lowercased("ΟΔΟΣ"), "οδος");
    EXPECT_EQ(lowercased("ΣΑΣ ΣΟΣ."), "σας σος.");
    EXPECT_EQ(lowercased("Σ"), "σ");
}

TEST(CaseMappingTest, IgnoresTheLocaleOfTheProcess) {
    const std::string before = uloc_getDefault();
    UErrorCode status = U_ZERO_ERROR;
    uloc_setDefault("tr_TR", &status);
    ASSERT_TRUE(U_SUCCESS(status));
    // A new thread builds its case mappers afresh, under the Turkish default.
    std::string upper;
    std::string lower;
    std::thread([&] {
        upper = uppercased("istanbul");
        lower = lowercased("DIYARBAKIR");
    }).join();
    uloc_setDefault(before.c_str(), &status);
    EXPECT_EQ(upper, "ISTANBUL");
    EXPECT_EQ(lower, "diyarbakir");
}

TEST(CaseMappingTest, LeavesUncasedTextAlone) {
    EXPECT_EQ(uppercased(""), "");
    EXPECT_EQ(uppercased("123 👍🏽 中文"), "123 👍🏽 中文");
    EXPECT_EQ(lowercased("e\u0301"), "e\u0301");
    EXPECT_EQ(uppercased("e\u0301"), "E\u0301");
}

TEST(CaseMappingTest, CapitalizesEveryWhitespaceDelimitedWord) {
    EXPECT_EQ(capitalized("hello wORLD"), "Hello World");
    EXPECT_EQ(capitalized("привет МИР"), "Привет Мир");
    EXPECT_EQ(capitalized("  two\twords\nhere\u00A0now"), "  Two\tWords\nHere\u00A0Now");
    EXPECT_EQ(capitalized("hello-world o'neil"), "Hello-world O'neil");
    EXPECT_EQ(capitalized("(hello) 123abc"), "(hello) 123abc");
    EXPECT_EQ(capitalized(""), "");
}

TEST(CaseMappingTest, CapitalizeUsesTitleCase) {
    EXPECT_EQ(capitalized("\u01C6emal"), "\u01C5emal");  // ǆ becomes ǅ, not Ǆ
    EXPECT_EQ(capitalized("ßa"), "Ssa");
    EXPECT_EQ(capitalized("ΟΔΟΣ ΣΟΣ"), "Οδος Σος");
    EXPECT_EQ(capitalized("e\u0301COLE"), "E\u0301cole");
}

TEST(CaseMappingTest, UppercasesTheFirstCharacterOnly) {
    EXPECT_EQ(uppercasedFirst("ghbdtn"), "Ghbdtn");
    EXPECT_EQ(uppercasedFirst("привет"), "Привет");
    EXPECT_EQ(uppercasedFirst("ёЖ"), "ЁЖ");
    EXPECT_EQ(uppercasedFirst("ßa"), "SSa");
    EXPECT_EQ(uppercasedFirst("e\u0301x"), "E\u0301x");
    EXPECT_EQ(uppercasedFirst("👍🏽a"), "👍🏽a");
    EXPECT_EQ(uppercasedFirst("aBC"), "ABC");
    EXPECT_EQ(uppercasedFirst(""), "");
}

TEST(CaseMappingTest, IllFormedInputComesBackRepaired) {
    EXPECT_EQ(uppercased("a\xFF" "b"), "A\xEF\xBF\xBD" "B");
    EXPECT_EQ(lowercased("\xC0\x80Z"), "\xEF\xBF\xBD\xEF\xBF\xBDz");
    EXPECT_EQ(capitalized("\xFF" "ab cd"), "\xEF\xBF\xBD" "ab Cd");
    EXPECT_EQ(uppercasedFirst("\xE2\x82" "ab"), "\xEF\xBF\xBD" "ab");
}

TEST(CaseMappingTest, LongTextIsMappedInChunksWithTheSameResult) {
    const std::string text = "hello world, привет мир, straße ΟΔΟΣ";
    for (std::size_t chunk : {1u, 4u, 6u, 9u, 13u}) {
        EXPECT_EQ(detail::mapCase(detail::CaseOperation::upper, text, chunk),
                  "HELLO WORLD, ПРИВЕТ МИР, STRASSE ΟΔΟΣ")
            << chunk;
    }
    // Chunks end after a blank when the word fits.
    for (std::size_t chunk : {6u, 9u, 13u}) {
        EXPECT_EQ(detail::mapCase(detail::CaseOperation::title, "one two three four five", chunk),
                  "One Two Three Four Five")
            << chunk;
    }
    EXPECT_EQ(detail::mapCase(detail::CaseOperation::lower, "ΟΔΟΣ ΟΔΟΣ", 12), "οδος οδος");
}

}  // namespace
}  // namespace orvantis::text
