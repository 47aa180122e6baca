#include "core/translation/translation_url.h"

#include <gtest/gtest.h>

namespace orvantis {
namespace {

constexpr std::string_view kEndpoint = "https://translate.googleapis.com";

std::string url(std::string_view text, std::string_view from = "auto", std::string_view to = "en",
                TranslationQuery query = TranslationQuery::translation, std::string_view endpoint = kEndpoint) {
    return translationUrl(endpoint, text, from, to, query).value_or("<none>");
}

TEST(TranslationUrlTest, TranslateAsksForTheSegmentsOnly) {
    EXPECT_EQ(url("hello", "auto", "ru"),
              "https://translate.googleapis.com/translate_a/single?client=gtx&sl=auto&tl=ru&dt=t&q=hello");
}

TEST(TranslationUrlTest, AlternatesAskForSegmentsAlternativesAndDictionary) {
    EXPECT_EQ(url("home", "en", "ru", TranslationQuery::alternates),
              "https://translate.googleapis.com/translate_a/single?client=gtx&sl=en&tl=ru&dt=t&dt=at&dt=bd&q=home");
}

TEST(TranslationUrlTest, AmpersandEqualsAndPlusPassUnencodedAsInAWholeQuery) {
    EXPECT_EQ(url("a&b=c+d"), std::string(kEndpoint) + "/translate_a/single?client=gtx&sl=auto&tl=en&dt=t&q=a&b=c+d");
}

TEST(TranslationUrlTest, SpacesAreEncodedAsPercentTwenty) {
    EXPECT_EQ(url("good morning"), std::string(kEndpoint) + "/translate_a/single?client=gtx&sl=auto&tl=en&dt=t&q=good%20morning");
}

TEST(TranslationUrlTest, CyrillicAndEmojiAreEncodedAsUpperCaseUtf8Bytes) {
    EXPECT_EQ(percentEncodedQuery("привет"), "%D0%BF%D1%80%D0%B8%D0%B2%D0%B5%D1%82");
    EXPECT_EQ(percentEncodedQuery("😀"), "%F0%9F%98%80");
    EXPECT_EQ(url("мир 🌍"),
              std::string(kEndpoint) + "/translate_a/single?client=gtx&sl=auto&tl=en&dt=t&q=%D0%BC%D0%B8%D1%80%20%F0%9F%8C%8D");
}

TEST(TranslationUrlTest, EveryQueryCharacterPassesAndEverythingElseIsEncoded) {
    const std::string allowed = "ABCXYZabcxyz0189-._~!$&'()*+,;=:@/?";
    EXPECT_EQ(percentEncodedQuery(allowed), allowed);
    EXPECT_EQ(percentEncodedQuery("#%[]{}<>\"\\^`| \t\n"), "%23%25%5B%5D%7B%7D%3C%3E%22%5C%5E%60%7C%20%09%0A");
    EXPECT_EQ(percentEncodedQuery(std::string("a\0b", 3)), "a%00b");
    EXPECT_EQ(percentEncodedQuery("\x7F"), "%7F");
    EXPECT_EQ(percentEncodedQuery(""), "");
}

TEST(TranslationUrlTest, TextThatIsNotWellFormedUtf8CannotBeEncoded) {
    EXPECT_EQ(percentEncodedQuery("abc\xFF"), std::nullopt);
    EXPECT_EQ(percentEncodedQuery("\xD0"), std::nullopt);
    EXPECT_EQ(translationUrl(kEndpoint, "\xC0\xAF", "auto", "en", TranslationQuery::translation), std::nullopt);
}

TEST(TranslationUrlTest, EmptyTextStillMakesARequest) {
    EXPECT_EQ(url(""), std::string(kEndpoint) + "/translate_a/single?client=gtx&sl=auto&tl=en&dt=t&q=");
}

TEST(TranslationUrlTest, LanguageCodesStandAsTheyAre) {
    EXPECT_EQ(url("x", "zh-CN", "pt_BR"),
              std::string(kEndpoint) + "/translate_a/single?client=gtx&sl=zh-CN&tl=pt_BR&dt=t&q=x");
    EXPECT_EQ(url("x", "", ""), std::string(kEndpoint) + "/translate_a/single?client=gtx&sl=&tl=&dt=t&q=x");
}

TEST(TranslationUrlTest, ALanguageCodeThatCannotStandInAQueryMakesNoUrl) {
    EXPECT_EQ(url("x", "en us", "ru"), "<none>");
    EXPECT_EQ(url("x", "en", "ru#"), "<none>");
    EXPECT_EQ(url("x", "en", "ру"), "<none>");
    EXPECT_EQ(url("x", "%41", "ru"), "<none>");
}

TEST(TranslationUrlTest, ATrailingSlashOnTheEndpointDoesNotDoubleTheSlash) {
    EXPECT_EQ(url("x", "auto", "en", TranslationQuery::translation, "https://translate.googleapis.com/"),
              "https://translate.googleapis.com/translate_a/single?client=gtx&sl=auto&tl=en&dt=t&q=x");
}

TEST(TranslationUrlTest, TheEndpointMayBePlainHttpWithAPortOrAnAddress) {
    EXPECT_EQ(translationEndpointOrigin("http://127.0.0.1:8080"), "http://127.0.0.1:8080");
    EXPECT_EQ(translationEndpointOrigin("http://127.0.0.1:8080/"), "http://127.0.0.1:8080");
    EXPECT_EQ(translationEndpointOrigin("HTTPS://Example.org"), "https://Example.org");
    EXPECT_EQ(translationEndpointOrigin("http://[::1]:9000"), "http://[::1]:9000");
    EXPECT_EQ(translationEndpointOrigin("http://localhost"), "http://localhost");
    EXPECT_EQ(translationEndpointOrigin("https://a.example:65535"), "https://a.example:65535");
}

TEST(TranslationUrlTest, AnEndpointThatIsNotSchemeAndHostMakesNoUrl) {
    for (const char* endpoint :
         {"", "translate.googleapis.com", "ftp://example.org", "file:///etc/passwd", "https://", "https:///",
          "https://example.org/path", "https://example.org//", "https://example.org?x=1", "https://example.org#f",
          "https://user@example.org", "https://user:pw@example.org", "https://exa mple.org", "https://example.org:",
          "https://example.org:0", "https://example.org:65536", "https://example.org:80a", "https://[::1",
          "https://[zz]", "https://пример.рф", " https://example.org", "https://example.org "}) {
        EXPECT_EQ(translationEndpointOrigin(endpoint), std::nullopt) << endpoint;
        EXPECT_EQ(url("x", "auto", "en", TranslationQuery::translation, endpoint), "<none>") << endpoint;
    }
}

}  // namespace
}  // namespace orvantis
