#include "core/text/character_class.h"

#include <gtest/gtest.h>

namespace orvantis::text {
namespace {

TEST(CharacterClassTest, LettersOfAnyScript) {
    EXPECT_TRUE(isLetter(U'a'));
    EXPECT_TRUE(isLetter(U'Ж'));
    EXPECT_TRUE(isLetter(U'中'));
    EXPECT_TRUE(isLetter(U'ʼ'));  // a modifier letter
    EXPECT_FALSE(isLetter(U'1'));
    EXPECT_FALSE(isLetter(U'\u0301'));
    EXPECT_FALSE(isLetter(U' '));
}

TEST(CharacterClassTest, CaseOfCodePoints) {
    EXPECT_TRUE(isUppercase(U'Ж'));
    EXPECT_TRUE(isUppercase(U'Ё'));
    EXPECT_FALSE(isUppercase(U'ж'));
    EXPECT_TRUE(isLowercase(U'ё'));
    EXPECT_TRUE(isLowercase(U'ß'));
    EXPECT_FALSE(isLowercase(U'1'));
    EXPECT_TRUE(isCased(U'\u01C5'));  // ǅ, title case: cased, neither upper nor lower
    EXPECT_FALSE(isUppercase(U'\u01C5'));
    EXPECT_FALSE(isLowercase(U'\u01C5'));
    EXPECT_FALSE(isCased(U'中'));
}

TEST(CharacterClassTest, DigitsAndNumbers) {
    EXPECT_TRUE(isDigit(U'7'));
    EXPECT_TRUE(isDigit(U'\u0663'));  // Arabic-Indic three
    EXPECT_FALSE(isDigit(U'½'));
    EXPECT_TRUE(isNumber(U'½'));
    EXPECT_TRUE(isNumber(U'Ⅻ'));
    EXPECT_FALSE(isNumber(U'x'));
}

TEST(CharacterClassTest, PunctuationAndSymbols) {
    for (char32_t c : {U',', U'.', U'!', U'«', U'»', U'—', U'_', U'(', U'"'}) {
        EXPECT_TRUE(isPunctuation(c)) << static_cast<unsigned>(c);
    }
    for (char32_t c : {U'+', U'$', U'€', U'^', U'👍'}) {
        EXPECT_FALSE(isPunctuation(c)) << static_cast<unsigned>(c);
        EXPECT_TRUE(isSymbol(c)) << static_cast<unsigned>(c);
    }
}

TEST(CharacterClassTest, AlphanumericsIncludeMarks) {
    EXPECT_TRUE(isAlphanumeric(U'a'));
    EXPECT_TRUE(isAlphanumeric(U'ы'));
    EXPECT_TRUE(isAlphanumeric(U'5'));
    EXPECT_TRUE(isAlphanumeric(U'\u0301'));
    EXPECT_TRUE(isMark(U'\u0306'));
    EXPECT_FALSE(isAlphanumeric(U'\''));
    EXPECT_FALSE(isAlphanumeric(U'-'));
    EXPECT_FALSE(isAlphanumeric(U' '));
}

TEST(CharacterClassTest, AsciiLetters) {
    EXPECT_TRUE(isAsciiLetter(U'q'));
    EXPECT_TRUE(isAsciiLetter(U'Z'));
    EXPECT_FALSE(isAsciiLetter(U'ж'));
    EXPECT_FALSE(isAsciiLetter(U'é'));
    EXPECT_FALSE(isAsciiLetter(U'['));
}

TEST(CharacterClassTest, Scripts) {
    EXPECT_EQ(scriptOf(U'a'), Script::latin);
    EXPECT_EQ(scriptOf(U'é'), Script::latin);
    EXPECT_EQ(scriptOf(U'ж'), Script::cyrillic);
    EXPECT_EQ(scriptOf(U'Ё'), Script::cyrillic);
    EXPECT_EQ(scriptOf(U'1'), Script::common);
    EXPECT_EQ(scriptOf(U','), Script::common);
    EXPECT_EQ(scriptOf(U'\u0301'), Script::inherited);
    EXPECT_EQ(scriptOf(U'α'), Script::other);
    EXPECT_EQ(scriptOf(U'中'), Script::other);
}

TEST(CharacterClassTest, NonCodePointsAreNothing) {
    constexpr char32_t kBad = 0x110000;
    EXPECT_FALSE(isLetter(kBad));
    EXPECT_FALSE(isUppercase(kBad));
    EXPECT_FALSE(isDigit(kBad));
    EXPECT_FALSE(isPunctuation(kBad));
    EXPECT_FALSE(isAlphanumeric(kBad));
    EXPECT_EQ(scriptOf(kBad), Script::other);
}

TEST(CharacterClassTest, CharactersAreJudgedByTheirFirstCodePoint) {
    EXPECT_TRUE(isLetter("и\u0306"));
    EXPECT_EQ(scriptOf("и\u0306"), Script::cyrillic);
    EXPECT_TRUE(isDigit("1\uFE0F\u20E3"));  // keycap one
    EXPECT_TRUE(isSymbol("👍🏽"));
    EXPECT_TRUE(isPunctuation("!"));
    EXPECT_TRUE(isAlphanumeric("ё"));
    EXPECT_TRUE(isNumber("½"));
}

TEST(CharacterClassTest, CaseOfCharactersLooksAtTheWhole) {
    EXPECT_TRUE(isUppercase("E\u0301"));
    EXPECT_FALSE(isLowercase("E\u0301"));
    EXPECT_TRUE(isLowercase("e\u0301"));
    EXPECT_TRUE(isUppercase("Ё"));
    EXPECT_TRUE(isLowercase("ё"));
    EXPECT_FALSE(isUppercase("1"));
    EXPECT_FALSE(isLowercase("1"));
    EXPECT_FALSE(isUppercase("👍"));
    EXPECT_FALSE(isCased("👍🏽"));
    EXPECT_TRUE(isCased("e\u0301"));
}

TEST(CharacterClassTest, WhitespaceAndNewlineCharacters) {
    EXPECT_TRUE(isWhitespace(" "));
    EXPECT_TRUE(isWhitespace("\u00A0"));
    EXPECT_TRUE(isWhitespace("\r\n"));
    EXPECT_TRUE(isNewline("\r\n"));
    EXPECT_TRUE(isNewline("\u2028"));
    EXPECT_FALSE(isNewline(" "));
    EXPECT_FALSE(isWhitespace("\u200B"));
}

TEST(CharacterClassTest, EmptyAndIllFormedCharacters) {
    EXPECT_FALSE(isLetter(""));
    EXPECT_FALSE(isUppercase(""));
    EXPECT_FALSE(isLowercase(""));
    EXPECT_FALSE(isCased(""));
    EXPECT_FALSE(isWhitespace(""));
    EXPECT_EQ(scriptOf(""), Script::other);
    EXPECT_FALSE(isLetter("\xFF"));
    EXPECT_FALSE(isUppercase("\xD0"));  // the first half of a Cyrillic letter
    EXPECT_TRUE(isSymbol("\xFF"));      // read as U+FFFD
    EXPECT_EQ(scriptOf("\xFF"), Script::common);
}

}  // namespace
}  // namespace orvantis::text
