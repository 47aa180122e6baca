#include "core/text/character_class.h"

#include <cstdint>
#include <optional>
#include <string>

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include "core/text/case_mapping.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"

namespace orvantis::text {
namespace {

bool isCodePoint(char32_t codePoint) { return codePoint <= kMaxCodePoint; }

bool inCategories(char32_t codePoint, std::uint32_t mask) {
    if (!isCodePoint(codePoint)) return false;
    return (U_GET_GC_MASK(static_cast<UChar32>(codePoint)) & mask) != 0;
}

bool hasProperty(char32_t codePoint, UProperty property) {
    if (!isCodePoint(codePoint)) return false;
    return u_hasBinaryProperty(static_cast<UChar32>(codePoint), property) != 0;
}

/// The first code point of a character, U+FFFD for an ill-formed start; nothing when empty.
std::optional<CodePoint> first(std::string_view character) {
    if (character.empty()) return std::nullopt;
    return decodeCodePoint(character, 0);
}

bool isSingleCodePoint(std::string_view character) {
    return !character.empty() && decodeCodePoint(character, 0).length == character.size();
}

template <typename Test>
bool firstIs(std::string_view character, Test test) {
    const std::optional<CodePoint> c = first(character);
    return c.has_value() && test(c->value);
}

}  // namespace

bool isLetter(char32_t codePoint) { return inCategories(codePoint, U_GC_L_MASK); }
bool isUppercase(char32_t codePoint) { return hasProperty(codePoint, UCHAR_UPPERCASE); }
bool isLowercase(char32_t codePoint) { return hasProperty(codePoint, UCHAR_LOWERCASE); }
bool isCased(char32_t codePoint) { return hasProperty(codePoint, UCHAR_CASED); }
bool isDigit(char32_t codePoint) { return inCategories(codePoint, U_GC_ND_MASK); }
bool isNumber(char32_t codePoint) { return inCategories(codePoint, U_GC_N_MASK); }
bool isPunctuation(char32_t codePoint) { return inCategories(codePoint, U_GC_P_MASK); }
bool isSymbol(char32_t codePoint) { return inCategories(codePoint, U_GC_S_MASK); }
bool isMark(char32_t codePoint) { return inCategories(codePoint, U_GC_M_MASK); }

bool isAlphanumeric(char32_t codePoint) {
    return inCategories(codePoint, U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK);
}

bool isAsciiLetter(char32_t codePoint) {
    return (codePoint >= U'A' && codePoint <= U'Z') || (codePoint >= U'a' && codePoint <= U'z');
}

Script scriptOf(char32_t codePoint) {
    if (!isCodePoint(codePoint)) return Script::other;
    UErrorCode status = U_ZERO_ERROR;
    const UScriptCode script = uscript_getScript(static_cast<UChar32>(codePoint), &status);
    if (U_FAILURE(status)) return Script::other;
    switch (script) {
        case USCRIPT_LATIN: return Script::latin;
        case USCRIPT_CYRILLIC: return Script::cyrillic;
        case USCRIPT_COMMON: return Script::common;
        case USCRIPT_INHERITED: return Script::inherited;
        default: return Script::other;
    }
}

bool isLetter(std::string_view character) {
    return firstIs(character, [](char32_t c) { return isLetter(c); });
}

bool isUppercase(std::string_view character) {
    if (isSingleCodePoint(character) && isUppercase(decodeCodePoint(character, 0).value)) {
        return true;
    }
    return isCased(character) && uppercased(character) == repairUtf8(character);
}

bool isLowercase(std::string_view character) {
    if (isSingleCodePoint(character) && isLowercase(decodeCodePoint(character, 0).value)) {
        return true;
    }
    return isCased(character) && lowercased(character) == repairUtf8(character);
}

bool isCased(std::string_view character) {
    if (character.empty()) return false;
    if (isSingleCodePoint(character) && isCased(decodeCodePoint(character, 0).value)) return true;
    const std::string same = repairUtf8(character);
    return uppercased(character) != same || lowercased(character) != same;
}

bool isDigit(std::string_view character) {
    return firstIs(character, [](char32_t c) { return isDigit(c); });
}

bool isNumber(std::string_view character) {
    return firstIs(character, [](char32_t c) { return isNumber(c); });
}

bool isPunctuation(std::string_view character) {
    return firstIs(character, [](char32_t c) { return isPunctuation(c); });
}

bool isSymbol(std::string_view character) {
    return firstIs(character, [](char32_t c) { return isSymbol(c); });
}

bool isAlphanumeric(std::string_view character) {
    return firstIs(character, [](char32_t c) { return isAlphanumeric(c); });
}

bool isWhitespace(std::string_view character) {
    return firstIs(character, [](char32_t c) { return isUnicodeWhitespace(c); });
}

bool isNewline(std::string_view character) {
    return firstIs(character, [](char32_t c) { return isIn(WhitespaceSet::newlines, c); });
}

Script scriptOf(std::string_view character) {
    const std::optional<CodePoint> c = first(character);
    return c.has_value() ? scriptOf(c->value) : Script::other;
}

}  // namespace orvantis::text
