#include "core/text/utf.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace orvantis::text {
namespace {

bool isScalarValue(char32_t codePoint) {
    return codePoint <= kMaxCodePoint && (codePoint < 0xD800 || codePoint > 0xDFFF);
}

std::size_t utf16Units(const CodePoint& c) { return c.valid && c.value > 0xFFFF ? 2 : 1; }

}  // namespace

CodePoint decodeCodePoint(std::string_view text, std::size_t offset) {
    if (offset >= text.size()) return CodePoint{0, text.size(), 0, false};
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t available = text.size() - offset;
    const unsigned char lead = bytes[offset];
    if (lead < 0x80) return CodePoint{lead, offset, 1, true};

    // The bounds of the second byte depend on the lead: they exclude overlong forms,
    // surrogates and values above U+10FFFF, so that a sequence is rejected at the first byte
    // that cannot belong to it.
    std::size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    char32_t value = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        value = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        value = lead & 0x0F;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        value = lead & 0x07;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        return CodePoint{kReplacementCharacter, offset, 1, false};
    }

    for (std::size_t i = 1; i < length; ++i) {
        if (i >= available) return CodePoint{kReplacementCharacter, offset, i, false};
        const unsigned char byte = bytes[offset + i];
        const unsigned char min = i == 1 ? low : 0x80;
        const unsigned char max = i == 1 ? high : 0xBF;
        if (byte < min || byte > max) return CodePoint{kReplacementCharacter, offset, i, false};
        value = (value << 6) | (byte & 0x3F);
    }
    return CodePoint{value, offset, length, true};
}

bool isValidUtf8(std::string_view text) {
    std::size_t offset = 0;
    while (offset < text.size()) {
        // Runs of ASCII, the bulk of most texts, eight bytes at a time.
        while (offset + 8 <= text.size()) {
            std::uint64_t word;
            std::memcpy(&word, text.data() + offset, sizeof word);
            if ((word & 0x8080808080808080ULL) != 0) break;
            offset += 8;
        }
        if (offset >= text.size()) break;
        if (static_cast<unsigned char>(text[offset]) < 0x80) {
            ++offset;
            continue;
        }
        const CodePoint c = decodeCodePoint(text, offset);
        if (!c.valid) return false;
        offset += c.length;
    }
    return true;
}

bool Utf8Stream::add(std::string_view piece) {
    std::string_view rest = piece;
    if (!pending_.empty()) {
        // Complete the cut sequence with the first bytes of this piece.
        const std::size_t take = std::min<std::size_t>(4 - pending_.size(), rest.size());
        pending_.append(rest.substr(0, take));
        const text::CodePoint c = text::decodeCodePoint(pending_, 0);
        if (c.valid) {
            rest.remove_prefix(c.length - (pending_.size() - take));
            pending_.clear();
        } else if (pending_.size() < 4 && take == rest.size()) {
            return true;  // still too short to judge
        } else {
            return false;
        }
    }
    // Keep back a lead byte whose sequence this piece does not finish.
    std::size_t cut = rest.size();
    for (std::size_t back = 1; back <= 3 && back <= rest.size(); ++back) {
        const auto byte = static_cast<unsigned char>(rest[rest.size() - back]);
        if ((byte & 0xC0) == 0x80) continue;
        const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        if (length > back) cut = rest.size() - back;
        break;
    }
    pending_.assign(rest.substr(cut));
    return text::isValidUtf8(rest.substr(0, cut));
}

std::string repairUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const CodePoint& c : codePoints(text)) {
        if (c.valid) {
            out.append(text.substr(c.offset, c.length));
        } else {
            appendUtf8(out, kReplacementCharacter);
        }
    }
    return out;
}

std::size_t codePointCount(std::string_view text) {
    std::size_t count = 0;
    for (auto it = codePoints(text).begin(), end = codePoints(text).end(); it != end; ++it) ++count;
    return count;
}

void appendUtf8(std::string& out, char32_t codePoint) {
    if (!isScalarValue(codePoint)) codePoint = kReplacementCharacter;
    if (codePoint < 0x80) {
        out.push_back(static_cast<char>(codePoint));
    } else if (codePoint < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (codePoint >> 6)));
        out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    } else if (codePoint < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (codePoint >> 12)));
        out.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (codePoint >> 18)));
        out.push_back(static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    }
}

std::string encodeUtf8(char32_t codePoint) {
    std::string out;
    appendUtf8(out, codePoint);
    return out;
}

std::u32string toCodePoints(std::string_view text) {
    std::u32string out;
    out.reserve(text.size());
    for (const CodePoint& c : codePoints(text)) out.push_back(c.value);
    return out;
}

std::string fromCodePoints(std::u32string_view codePoints) {
    std::string out;
    out.reserve(codePoints.size());
    for (char32_t c : codePoints) appendUtf8(out, c);
    return out;
}

std::u16string toUtf16(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    for (const CodePoint& c : codePoints(text)) {
        if (c.value > 0xFFFF) {
            const char32_t v = c.value - 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (v >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (v & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(c.value));
        }
    }
    return out;
}

std::string fromUtf16(std::u16string_view utf16) {
    std::string out;
    out.reserve(utf16.size());
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        const char16_t unit = utf16[i];
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < utf16.size() && utf16[i + 1] >= 0xDC00 &&
            utf16[i + 1] <= 0xDFFF) {
            const char32_t value =
                0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) + (utf16[i + 1] - 0xDC00);
            appendUtf8(out, value);
            ++i;
        } else {
            // A lone surrogate is not a scalar value; appendUtf8 writes U+FFFD for it.
            appendUtf8(out, unit);
        }
    }
    return out;
}

std::size_t utf16Length(std::string_view text) {
    std::size_t units = 0;
    for (const CodePoint& c : codePoints(text)) units += utf16Units(c);
    return units;
}

std::size_t utf16OffsetFromByteOffset(std::string_view text, std::size_t byteOffset) {
    std::size_t units = 0;
    for (const CodePoint& c : codePoints(text)) {
        if (c.offset + c.length > byteOffset) break;
        units += utf16Units(c);
    }
    return units;
}

std::size_t byteOffsetFromUtf16Offset(std::string_view text, std::size_t utf16Offset) {
    std::size_t units = 0;
    for (const CodePoint& c : codePoints(text)) {
        const std::size_t next = units + utf16Units(c);
        if (next > utf16Offset) return c.offset;
        units = next;
    }
    return text.size();
}

Utf16Range utf16RangeFromByteRange(std::string_view text, ByteRange range) {
    const std::size_t begin = utf16OffsetFromByteOffset(text, range.begin);
    const std::size_t end = utf16OffsetFromByteOffset(text, std::max(range.begin, range.end));
    return Utf16Range{begin, end - begin};
}

ByteRange byteRangeFromUtf16Range(std::string_view text, Utf16Range range) {
    const std::size_t begin = byteOffsetFromUtf16Offset(text, range.location);
    constexpr std::size_t kMax = std::numeric_limits<std::size_t>::max();
    const std::size_t endUnits =
        range.length > kMax - range.location ? kMax : range.location + range.length;
    const std::size_t end = byteOffsetFromUtf16Offset(text, endUnits);
    return ByteRange{begin, std::max(begin, end)};
}

}  // namespace orvantis::text
