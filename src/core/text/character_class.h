#pragma once

#include <string_view>

// What kind of character a code point or a user-perceived character is, after the Unicode
// Character Database as ICU ships it.
//
// Each test comes twice. The code point form takes a char32_t; values that are no code point
// (above U+10FFFF) are nothing: every test is false and the script is `other`. The character
// form takes one grapheme cluster in UTF-8 and, as a rule, judges it by its first code point,
// so "é" written as e + U+0301 is a lowercase letter; the empty string is nothing, and an
// ill-formed first sequence is read as U+FFFD (a symbol of the common script). Upper and
// lower case of a character are the exception, described at their functions.

namespace orvantis::text {

/// The writing systems the product tells apart.
enum class Script {
    latin,
    cyrillic,
    /// Used by several scripts: digits, most punctuation, blanks, emoji.
    common,
    /// Takes the script of the character it joins: combining marks, joiners.
    inherited,
    /// Any other script, unassigned code points and non-code points.
    other,
};

/// General category L* (Lu, Ll, Lt, Lm, Lo).
bool isLetter(char32_t codePoint);
/// The Unicode Uppercase property (Lu and a few others, such as Ⓐ).
bool isUppercase(char32_t codePoint);
/// The Unicode Lowercase property (Ll and a few others, such as ª).
bool isLowercase(char32_t codePoint);
/// The Unicode Cased property: has or is an upper, lower or title case form.
bool isCased(char32_t codePoint);
/// General category Nd, decimal digits of any script.
bool isDigit(char32_t codePoint);
/// General category N* (Nd, Nl, No): digits, Roman numerals, fractions, superscripts.
bool isNumber(char32_t codePoint);
/// General category P* (Pc, Pd, Ps, Pe, Pi, Pf, Po).
bool isPunctuation(char32_t codePoint);
/// General category S* (Sm, Sc, Sk, So), emoji among them.
bool isSymbol(char32_t codePoint);
/// General category M* (Mn, Mc, Me), the combining marks.
bool isMark(char32_t codePoint);
/// General categories L*, M* and N*: the "alphanumerics" in the wide Unicode sense.
bool isAlphanumeric(char32_t codePoint);
/// A to Z and a to z only.
bool isAsciiLetter(char32_t codePoint);
/// The Script property (not Script_Extensions).
Script scriptOf(char32_t codePoint);

/// Whether the first code point is a letter.
bool isLetter(std::string_view character);
/// True when the character is a single code point with the Uppercase property, or when it
/// is cased and upper-casing leaves it unchanged: "É" as E + U+0301 is uppercase, "1" is not.
bool isUppercase(std::string_view character);
/// As `isUppercase`, with lower case.
bool isLowercase(std::string_view character);
/// True when the character is a single cased code point, or when upper- or lower-casing it
/// changes it.
bool isCased(std::string_view character);
/// Whether the first code point is a decimal digit.
bool isDigit(std::string_view character);
/// Whether the first code point is a number of any kind.
bool isNumber(std::string_view character);
/// Whether the first code point is punctuation.
bool isPunctuation(std::string_view character);
/// Whether the first code point is a symbol.
bool isSymbol(std::string_view character);
/// Whether the first code point is alphanumeric in the wide sense.
bool isAlphanumeric(std::string_view character);
/// Whether the first code point has the White_Space property; "\r\n" is whitespace.
bool isWhitespace(std::string_view character);
/// Whether the first code point is in `WhitespaceSet::newlines`; "\r\n" is a newline.
bool isNewline(std::string_view character);
/// The script of the first code point; `other` for the empty string.
Script scriptOf(std::string_view character);

}  // namespace orvantis::text
