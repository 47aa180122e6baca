#include "core/text/whitespace.h"

#include <optional>

#include <unicode/uchar.h>

#include "core/text/icu_support.h"
#include "core/text/utf.h"

namespace orvantis::text {
namespace {

bool isBlank(char32_t codePoint) {
    if (codePoint == U'\t') return true;
    if (codePoint > kMaxCodePoint) return false;
    return u_charType(static_cast<UChar32>(codePoint)) == U_SPACE_SEPARATOR;
}

bool isLineBreak(char32_t codePoint) {
    return (codePoint >= 0x0A && codePoint <= 0x0D) || codePoint == 0x85 || codePoint == 0x2028 ||
           codePoint == 0x2029;
}

/// Start of the last code point of `text`, when the bytes there form one well-formed
/// sequence that ends exactly at the end; nullopt otherwise. A member of any set is
/// well-formed, so anything else simply ends a trim from the back.
std::optional<CodePoint> lastCodePoint(std::string_view text) {
    if (text.empty()) return std::nullopt;
    std::size_t start = text.size() - 1;
    for (int stepped = 0; stepped < 3 && start > 0 &&
                          (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80;
         ++stepped) {
        --start;
    }
    const CodePoint c = decodeCodePoint(text, start);
    if (!c.valid || c.offset + c.length != text.size()) return std::nullopt;
    return c;
}

}  // namespace

bool isIn(WhitespaceSet set, char32_t codePoint) {
    switch (set) {
        case WhitespaceSet::whitespaces: return isBlank(codePoint);
        case WhitespaceSet::newlines: return isLineBreak(codePoint);
        case WhitespaceSet::whitespacesAndNewlines:
            return isBlank(codePoint) || isLineBreak(codePoint);
    }
    return false;
}

bool isUnicodeWhitespace(char32_t codePoint) {
    if (codePoint > kMaxCodePoint) return false;
    return u_hasBinaryProperty(static_cast<UChar32>(codePoint), UCHAR_WHITE_SPACE) != 0;
}

std::string_view trimmedStart(std::string_view text, WhitespaceSet set) {
    std::size_t start = 0;
    while (start < text.size()) {
        const CodePoint c = decodeCodePoint(text, start);
        if (!c.valid || !isIn(set, c.value)) break;
        start += c.length;
    }
    return text.substr(start);
}

std::string_view trimmedEnd(std::string_view text, WhitespaceSet set) {
    while (auto last = lastCodePoint(text)) {
        if (!isIn(set, last->value)) break;
        text = text.substr(0, last->offset);
    }
    return text;
}

std::string_view trimmed(std::string_view text, WhitespaceSet set) {
    return trimmedEnd(trimmedStart(text, set), set);
}

std::string collapsedWhitespace(std::string_view text, WhitespaceSet set) {
    const detail::ValidUtf8 valid(text);
    const std::string_view inner = trimmed(valid.view(), set);
    std::string result;
    result.reserve(inner.size());
    bool inRun = false;
    for (const CodePoint& c : codePoints(inner)) {
        if (isIn(set, c.value)) {
            inRun = true;
            continue;
        }
        if (inRun) result.push_back(' ');
        inRun = false;
        result.append(inner.substr(c.offset, c.length));
    }
    return result;
}

bool isWhitespaceOnly(std::string_view text, WhitespaceSet set) {
    for (const CodePoint& c : codePoints(text)) {
        if (!c.valid || !isIn(set, c.value)) return false;
    }
    return true;
}

}  // namespace orvantis::text
