#include "core/translation/translation_response.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvantis {
namespace {

using Strings = std::vector<std::string>;
using Kind = TranslationError::Kind;

std::string translation(std::string_view body) {
    const auto result = parseTranslationResponse(body);
    return result ? result.value() : "<error>";
}
Kind translationError(std::string_view body) {
    const auto result = parseTranslationResponse(body);
    EXPECT_FALSE(result.ok()) << body.substr(0, 80);
    return result ? Kind::network : result.error().kind();
}
Strings alternates(std::string_view body) {
    const auto result = parseAlternatesResponse(body);
    return result ? result.value() : Strings{"<error>"};
}
Kind alternatesError(std::string_view body) {
    const auto result = parseAlternatesResponse(body);
    EXPECT_FALSE(result.ok()) << body.substr(0, 80);
    return result ? Kind::network : result.error().kind();
}

std::string nested(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

// translate

TEST(TranslationResponseTest, TheFirstElementOfTheSegmentIsTheTranslation) {
    EXPECT_EQ(translation(R"([[["hello","привет",null,null]],null,"ru"])"), "hello");
}

TEST(TranslationResponseTest, SeveralSegmentsJoinWithNoBlank) {
    EXPECT_EQ(translation(R"([[["Good morning. ","Доброе утро. "],["How are you?","Как дела?"]],null,"ru"])"),
              "Good morning. How are you?");
    EXPECT_EQ(translation(R"([[["a"],["b"],["c"]]])"), "abc");
}

TEST(TranslationResponseTest, ASegmentWhoseFirstElementIsNullIsSkipped) {
    EXPECT_EQ(translation(R"([[["one"],[null,"x"],["two"]]])"), "onetwo");
}

TEST(TranslationResponseTest, EmptySegmentsAndSegmentsLedByOtherTypesAreSkipped) {
    EXPECT_EQ(translation(R"([[[],["a"],[1,"b"],[["c"]],[{"d":1}],[true],["e"]]])"), "ae");
}

TEST(TranslationResponseTest, TheTranslationComesUntrimmed) {
    EXPECT_EQ(translation(R"([[["  hi\n"]]])"), "  hi\n");
}

TEST(TranslationResponseTest, AnEmptyArrayIsAParseFailure) {
    EXPECT_EQ(translationError("[]"), Kind::parseFailure);
}

TEST(TranslationResponseTest, NoSegmentsIsAnEmptyResult) {
    EXPECT_EQ(translationError("[[]]"), Kind::emptyResult);
    EXPECT_EQ(translationError(R"([[[null],[""]]])"), Kind::emptyResult);
}

TEST(TranslationResponseTest, ARootThatIsNotAnArrayOfSegmentsIsAParseFailure) {
    for (const char* body : {R"({"a":1})", R"("hello")", "42", "null", "true", R"([null])", R"(["hello"])",
                             R"([{"0":["a"]}])", R"([["a"]])", R"([[["a"],"b"]])", R"([[["a"],null]])"}) {
        EXPECT_EQ(translationError(body), Kind::parseFailure) << body;
    }
}

TEST(TranslationResponseTest, ABodyThatIsNotJsonIsAParseFailure) {
    for (const char* body : {"", " ", "<html>Too many requests</html>", "[[[\"a\"]]]x", "[[[\"a\"]],]", "[[['a']]]",
                             "[[[\"a\"]]] // note", "\xEF\xBB"}) {
        EXPECT_EQ(translationError(body), Kind::parseFailure) << body;
    }
}

TEST(TranslationResponseTest, ATruncatedBodyIsAParseFailureAtEveryLength) {
    const std::string body = R"([[["hello","привет",null,null,3,null,null,[[]],[[["1","2"]]]]],null,"ru",null,null,null,0.9,[],[["ru"],null,[0.9],["ru"]]])";
    ASSERT_EQ(translation(body), "hello");
    for (std::size_t length = 0; length < body.size(); ++length)
        EXPECT_EQ(translationError(body.substr(0, length)), Kind::parseFailure) << length;
}

TEST(TranslationResponseTest, AHugeBodyIsReadWhole) {
    std::string body = "[[";
    std::string expected;
    while (body.size() < 10 * 1024 * 1024) {
        body += R"(["piece ",null],)";
        expected += "piece ";
    }
    body += R"(["end"]]])";
    expected += "end";
    EXPECT_EQ(translation(body), expected);
}

TEST(TranslationResponseTest, AHugeBodyOfTheWrongShapeIsAParseFailure) {
    EXPECT_EQ(translationError("[\"" + std::string(10 * 1024 * 1024, 'x') + "\"]"), Kind::parseFailure);
    EXPECT_EQ(translationError("[[" + std::string(10 * 1024 * 1024, ' ')), Kind::parseFailure);
}

TEST(TranslationResponseTest, DeepNestingIsRefusedWithoutExhaustingTheStack) {
    EXPECT_EQ(translationError(nested(100000)), Kind::parseFailure);
    EXPECT_EQ(alternatesError(nested(100000)), Kind::parseFailure);
    EXPECT_EQ(translationError(std::string(100000, '[')), Kind::parseFailure);
    std::string objects;
    for (int i = 0; i < 100000; ++i) objects += "{\"a\":";
    EXPECT_EQ(translationError("[" + objects), Kind::parseFailure);
    // Depth within the limit is only the wrong shape.
    EXPECT_EQ(translationError(nested(kMaxTranslationResponseDepth)), Kind::emptyResult);
    EXPECT_EQ(translationError(nested(kMaxTranslationResponseDepth + 1)), Kind::parseFailure);
}

TEST(TranslationResponseTest, DeepNestingInsideAnIgnoredElementIsStillRefused) {
    EXPECT_EQ(translationError(R"([[["a"]],)" + nested(20000) + "]"), Kind::parseFailure);
}

TEST(TranslationResponseTest, ABodyThatIsNotUtf8IsAParseFailure) {
    EXPECT_EQ(translationError("[[[\"caf\xE9\"]]]"), Kind::parseFailure);                  // Latin-1
    EXPECT_EQ(translationError("[[[\"\xED\xA0\x80\"]]]"), Kind::parseFailure);              // a surrogate
    EXPECT_EQ(translationError("[[[\"\xC0\xAF\"]]]"), Kind::parseFailure);                  // overlong
    EXPECT_EQ(alternatesError("[[[\"\xFF\"]]]"), Kind::parseFailure);
    // UTF-16 with a byte order mark is not read either.
    EXPECT_EQ(translationError(std::string("\xFF\xFE[\0[\0]\0]\0", 10)), Kind::parseFailure);
}

TEST(TranslationResponseTest, EscapesAreDecoded) {
    EXPECT_EQ(translation(R"([[["\u043f\u0440\u0438\u0432\u0435\u0442 \ud83d\ude00\n"]]])"), "привет 😀\n");
    EXPECT_EQ(translationError(R"([[["\ud83d"]]])"), Kind::parseFailure);  // a lone surrogate escape
}

TEST(TranslationResponseTest, AByteOrderMarkBeforeUtf8IsAccepted) {
    EXPECT_EQ(translation("\xEF\xBB\xBF[[[\"a\"]]]"), "a");
}

// translateWithAlternates

TEST(TranslationResponseTest, AlternatesTheDictionaryStandsAheadAndRepeatsGoByLowerCase) {
    const std::string body =
        R"([[["Home","Дом",null,null]],[["noun",["house","home","Home "],[]]],"ru"])";
    EXPECT_EQ(alternates(body), (Strings{"Home", "house"}));
}

TEST(TranslationResponseTest, AlternatesABlankPrimaryWithOneTermGivesTheTerm) {
    EXPECT_EQ(alternates(R"([[["  ","x"]],[["noun",["word"]]]])"), Strings{"word"});
    EXPECT_EQ(alternates(R"([[],[["noun",["word"]]]])"), Strings{"word"});
}

TEST(TranslationResponseTest, AlternatesAnEmptyArrayIsAnEmptyResult) {
    EXPECT_EQ(alternatesError("[]"), Kind::emptyResult);
    EXPECT_EQ(alternatesError("[[]]"), Kind::emptyResult);
}

TEST(TranslationResponseTest, AlternatesNotAnArrayOrNotJsonIsAParseFailure) {
    for (const char* body : {"", "{}", "\"a\"", "null", "<html/>", "[[[\"a\"]]", "[1,]"})
        EXPECT_EQ(alternatesError(body), Kind::parseFailure) << body;
}

TEST(TranslationResponseTest, AlternatesAWrongPrimaryShapeIsNoFailure) {
    EXPECT_EQ(alternates(R"(["x",[["noun",["term"]]]])"), Strings{"term"});
    EXPECT_EQ(alternates(R"([[["a"],"b"],[["noun",["term"]]]])"), Strings{"term"});
    EXPECT_EQ(alternatesError(R"(["x"])"), Kind::emptyResult);
}

TEST(TranslationResponseTest, AlternatesFromTheSixthElementFollowTheDictionary) {
    const std::string body = R"([[["cat"]],[["noun",["kitty"]]],"ru",null,null,)"
                             R"([["кошка",null,[["cat",1000],["pussy",0],[],[5],["Kitty"],["feline"]],[[0,5]],"кошка"]]])";
    EXPECT_EQ(alternates(body), (Strings{"cat", "kitty", "pussy", "feline"}));
}

TEST(TranslationResponseTest, AlternatesTermsAreTrimmedAndBlanksSkipped) {
    EXPECT_EQ(alternates(R"([[[" Haus\n"]],[["n",["  ","\tHeim ",""]]]])"), (Strings{"Haus", "Heim"}));
}

TEST(TranslationResponseTest, AlternatesTheCaseOfTheFirstOccurrenceIsKept) {
    EXPECT_EQ(alternates(R"([[],[["n",["Paris","PARIS","paris"]]]])"), Strings{"Paris"});
    EXPECT_EQ(alternates(R"([[["ДОМ"]],[["n",["дом","Дом","жильё"]]]])"), (Strings{"ДОМ", "жильё"}));
}

TEST(TranslationResponseTest, AlternatesEntriesOfTheWrongShapeAreSkipped) {
    // An entry too short, a term list with a non-string, a term list that is no array.
    EXPECT_EQ(alternates(R"([[["a"]],[["n"],["n",["b",1]],["n","c"],"x",["n",["d"]]]])"), (Strings{"a", "d"}));
    // root[1] that is not an array, root[5] entries too short or holding no arrays.
    EXPECT_EQ(alternates(R"([[["a"]],{"n":1},null,null,null,[["x",null],["x",null,["y"]],["x",null,[["z"]]]]])"),
              (Strings{"a", "z"}));
    // root[5] present only from six elements on.
    EXPECT_EQ(alternates(R"([[["a"]],null,null,null,[["x",null,[["z"]]]]])"), Strings{"a"});
}

TEST(TranslationResponseTest, AlternatesSegmentsJoinBeforeTheTrim) {
    EXPECT_EQ(alternates(R"([[[" big "],["house "]]])"), Strings{"big house"});
}

TEST(TranslationResponseTest, AlternatesSurviveTruncationAtEveryLength) {
    const std::string body = R"([[["Home","Дом"]],[["noun",["house","home"]]],"ru",null,null,[["Дом",null,[["Home"],["House"]]]]])";
    ASSERT_EQ(alternates(body), (Strings{"Home", "house"}));
    for (std::size_t length = 0; length < body.size(); ++length)
        EXPECT_EQ(alternatesError(body.substr(0, length)), Kind::parseFailure) << length;
}

TEST(TranslationResponseTest, AlternatesAHugeReplyIsRead) {
    std::string body = R"([[["x"]],[["n",[)";
    for (int i = 0; i < 400000; ++i) body += "\"t" + std::to_string(i) + "\",";
    body += R"("end"]]]])";
    const auto result = parseAlternatesResponse(body);
    ASSERT_TRUE(result.ok());
    EXPECT_EQ(result.value().size(), 400002u);
    EXPECT_EQ(result.value().back(), "end");
}

// The error's words

TEST(TranslationErrorTest, EachKindHasItsOwnWords) {
    EXPECT_EQ(TranslationError::httpError(429).message(), "HTTP 429");
    EXPECT_EQ(TranslationError::httpError(429).status(), 429);
    EXPECT_EQ(TranslationError::timeout().message(), "timeout after 5s");
    EXPECT_EQ(TranslationError::network("Connection refused").message(), "network error — Connection refused");
    EXPECT_EQ(TranslationError::network("Connection refused").description(), "Connection refused");
    EXPECT_FALSE(TranslationError::parseFailure().message().empty());
    EXPECT_FALSE(TranslationError::emptyResult().message().empty());
    EXPECT_EQ(TranslationError::parseFailure(), TranslationError::parseFailure());
    EXPECT_NE(TranslationError::httpError(500), TranslationError::httpError(429));
}

}  // namespace
}  // namespace orvantis
