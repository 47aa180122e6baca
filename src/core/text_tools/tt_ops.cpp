#include "core/text_tools/tt_ops.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <vector>

#include <unicode/uchar.h>

#include "core/crypto/digest.h"
#include "core/text/character_class.h"
#include "core/text/graphemes.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"
#include "core/text_tools/text_transform.h"

#include <locale.h>
#include <sys/mman.h>

namespace orvantis::TTOps {
namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

/// A string of `size` copies of `fill`, for a large result. Its memory is asked for in huge
/// pages: a hundred-megabyte result otherwise spends more time in page faults than in the
/// transform.
std::string largeString(std::size_t size, char fill) {
    constexpr std::uintptr_t kHugePage = 2u << 20;
    std::string s;
    s.reserve(size);
    if (size >= 4 * kHugePage) {
        const auto address = reinterpret_cast<std::uintptr_t>(s.data());
        const std::uintptr_t begin = (address + kHugePage - 1) & ~(kHugePage - 1);
        const std::uintptr_t end = (address + size) & ~(kHugePage - 1);
        if (end > begin) ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);  // advice only
    }
    s.resize(size, fill);
    return s;
}

/// Two lower-case hex digits for every byte value, so that encoding is one table read a byte.
struct HexTable {
    std::array<std::uint16_t, 256> pairs{};
    constexpr HexTable() {
        for (unsigned i = 0; i < 256; ++i) {
            const auto high = static_cast<std::uint8_t>(kHexDigits[i >> 4]);
            const auto low = static_cast<std::uint8_t>(kHexDigits[i & 15]);
            // In memory order on a little-endian machine: the high digit first.
            pairs[i] = static_cast<std::uint16_t>(high | (low << 8));
        }
    }
};
constexpr HexTable kHexTable;

/// Writes two lower-case hex digits for each of the `n` bytes at `src` to `dst`.
void writeHex(const unsigned char* src, std::size_t n, char* dst) {
    std::size_t i = 0;
    if constexpr (std::endian::native == std::endian::little) {
        // Eight bytes at a time: sixteen digits in two stores.
        for (; i + 8 <= n; i += 8) {
            std::uint64_t low = 0;
            std::uint64_t high = 0;
            for (unsigned k = 0; k < 4; ++k) {
                low |= std::uint64_t{kHexTable.pairs[src[i + k]]} << (16 * k);
                high |= std::uint64_t{kHexTable.pairs[src[i + 4 + k]]} << (16 * k);
            }
            std::memcpy(dst + 2 * i, &low, 8);
            std::memcpy(dst + 2 * i + 8, &high, 8);
        }
    }
    for (; i < n; ++i) {
        dst[2 * i] = kHexDigits[src[i] >> 4];
        dst[2 * i + 1] = kHexDigits[src[i] & 15];
    }
}

void appendHex(std::string& out, std::string_view bytes) {
    const std::size_t start = out.size();
    if (start == 0) out = largeString(bytes.size() * 2, '0');
    else out.resize(start + bytes.size() * 2);
    writeHex(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), out.data() + start);
}

/// The decoded bytes as text, or "(non-UTF8) " and their hex when they are not UTF-8.
std::string textOrHex(std::string bytes) {
    if (text::isValidUtf8(bytes)) return bytes;
    std::string out = "(non-UTF8) ";
    appendHex(out, bytes);
    return out;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

/// An unsigned number in base 16 as the platform's integer parser reads it: an optional sign,
/// then at least one digit of either case. A minus sign is accepted only for zero. Every
/// character must be ASCII; nullopt when it doesn't parse or exceeds `max`.
std::optional<std::uint32_t> parseUnsignedHex(std::string_view digits, std::uint32_t max) {
    bool negative = false;
    if (!digits.empty() && (digits.front() == '+' || digits.front() == '-')) {
        negative = digits.front() == '-';
        digits.remove_prefix(1);
    }
    if (digits.empty()) return std::nullopt;
    std::uint64_t value = 0;
    for (char c : digits) {
        const int v = hexValue(c);
        if (v < 0) return std::nullopt;
        value = value * 16 + static_cast<unsigned>(v);
        if (value > max) return std::nullopt;
    }
    if (negative && value != 0) return std::nullopt;
    return static_cast<std::uint32_t>(value);
}

bool isAscii(std::string_view text) {
    std::size_t i = 0;
    const std::size_t n = text.size();
    for (; i + 8 <= n; i += 8) {
        std::uint64_t word;
        std::memcpy(&word, text.data() + i, 8);
        if (word & 0x8080808080808080ULL) return false;
    }
    for (; i < n; ++i) {
        if (static_cast<unsigned char>(text[i]) >= 0x80) return false;
    }
    return true;
}

/// True when the code point at `offset` of `text` joins the character before it, so that the
/// two form one user-perceived character (a combining mark, a joiner, a spacing mark).
bool extendsPreviousCharacter(std::string_view text, std::size_t offset) {
    if (offset >= text.size() || static_cast<unsigned char>(text[offset]) < 0x80) return false;
    const text::CodePoint c = text::decodeCodePoint(text, offset);
    if (!c.valid) return false;
    const auto kind = u_getIntPropertyValue(static_cast<UChar32>(c.value), UCHAR_GRAPHEME_CLUSTER_BREAK);
    return kind == U_GCB_EXTEND || kind == U_GCB_ZWJ || kind == U_GCB_SPACING_MARK;
}

constexpr char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Two Base64 characters for every 12-bit value, in memory order, so that three bytes become
/// four characters through two table reads. libcrypto's encoder goes a character at a time
/// and runs at a third of the speed of the coreutils tool; this one keeps up with it.
struct Base64EncodeTable {
    std::array<std::uint16_t, 4096> pairs{};
    constexpr Base64EncodeTable() {
        for (unsigned i = 0; i < 4096; ++i) {
            const auto first = static_cast<std::uint8_t>(kBase64Alphabet[i >> 6]);
            const auto second = static_cast<std::uint8_t>(kBase64Alphabet[i & 63]);
            pairs[i] = std::endian::native == std::endian::little ? static_cast<std::uint16_t>(first | (second << 8))
                                                                  : static_cast<std::uint16_t>((first << 8) | second);
        }
    }
};
constexpr Base64EncodeTable kBase64Encode;

/// Decoding tables: for each character, its six bits already shifted into place for each of
/// the four positions of a group, or kBad. The URL-safe '-' and '_' read as '+' and '/'.
constexpr std::uint32_t kBad = 0x01000000;
struct Base64DecodeTable {
    std::array<std::array<std::uint32_t, 256>, 4> shifted{};
    constexpr Base64DecodeTable() {
        for (auto& table : shifted) {
            for (auto& v : table) v = kBad;
        }
        auto set = [this](unsigned char c, std::uint32_t value) {
            shifted[0][c] = value << 18;
            shifted[1][c] = value << 12;
            shifted[2][c] = value << 6;
            shifted[3][c] = value;
        };
        for (unsigned i = 0; i < 64; ++i) set(static_cast<unsigned char>(kBase64Alphabet[i]), i);
        set('-', 62);
        set('_', 63);
    }
};
constexpr Base64DecodeTable kBase64Decode;

/// Decodes `n` characters (a multiple of 4, no padding) into `out`; false at the first
/// character outside the alphabet.
bool decodeBase64Groups(const unsigned char* in, std::size_t n, char* out) {
    const auto& t = kBase64Decode.shifted;
    std::uint32_t bad = 0;
    std::size_t i = 0;
    if constexpr (std::endian::native == std::endian::little) {
        // Two groups at a time, their six bytes in one store of eight: the two extra bytes are
        // written over by the next group, so at least one more must follow.
        for (; i + 12 <= n; i += 8) {
            const std::uint32_t first = t[0][in[i]] | t[1][in[i + 1]] | t[2][in[i + 2]] | t[3][in[i + 3]];
            const std::uint32_t second = t[0][in[i + 4]] | t[1][in[i + 5]] | t[2][in[i + 6]] | t[3][in[i + 7]];
            bad |= first | second;
            const std::uint64_t word = __builtin_bswap64((std::uint64_t{first} << 40) | (std::uint64_t{second} << 16));
            std::memcpy(out, &word, 8);
            out += 6;
            if ((i & 1023) == 1016 && (bad & kBad) != 0) return false;
        }
    }
    for (; i < n; i += 4) {
        const std::uint32_t v = t[0][in[i]] | t[1][in[i + 1]] | t[2][in[i + 2]] | t[3][in[i + 3]];
        bad |= v;
        out[0] = static_cast<char>(v >> 16);
        out[1] = static_cast<char>(v >> 8);
        out[2] = static_cast<char>(v);
        out += 3;
        // Checked once a kilobyte, so that the loop stays free of branches.
        if ((i & 1023) == 1020 && (bad & kBad) != 0) return false;
    }
    return (bad & kBad) == 0;
}

/// The C locale, for number parsing that ignores the process locale.
locale_t cLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    return locale;
}

/// Days since 1970-01-01 of a proleptic Gregorian date (Howard Hinnant's algorithm).
std::int64_t daysFromCivil(std::int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const auto yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

struct CivilDate {
    std::int64_t year;
    unsigned month;
    unsigned day;
};

CivilDate civilFromDays(std::int64_t z) {
    z += 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const auto doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t y = static_cast<std::int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    const unsigned d = doy - (153 * mp + 2) / 5 + 1;
    const unsigned m = mp < 10 ? mp + 3 : mp - 9;
    return {y + (m <= 2), m, d};
}

bool isLeapYear(std::int64_t y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

unsigned daysInMonth(std::int64_t year, unsigned month) {
    static constexpr unsigned kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : kDays[month - 1];
}

/// Reads exactly `count` ASCII digits at `pos`, advancing it.
std::optional<unsigned> readDigits(std::string_view s, std::size_t& pos, std::size_t count) {
    if (pos + count > s.size()) return std::nullopt;
    unsigned value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const char c = s[pos + i];
        if (c < '0' || c > '9') return std::nullopt;
        value = value * 10 + static_cast<unsigned>(c - '0');
    }
    pos += count;
    return value;
}

bool expect(std::string_view s, std::size_t& pos, char c) {
    if (pos < s.size() && s[pos] == c) {
        ++pos;
        return true;
    }
    return false;
}

/// Seconds since 1970 of an internet date-time, "2023-11-14T22:13:20Z" or with
/// "+01:00"/"+0100"; with `withFraction`, a point and exactly three digits after the seconds.
std::optional<double> parseInternetDateTime(std::string_view s, bool withFraction) {
    std::size_t pos = 0;
    const auto year = readDigits(s, pos, 4);
    if (!year || !expect(s, pos, '-')) return std::nullopt;
    const auto month = readDigits(s, pos, 2);
    if (!month || !expect(s, pos, '-')) return std::nullopt;
    const auto day = readDigits(s, pos, 2);
    if (!day || !expect(s, pos, 'T')) return std::nullopt;
    const auto hour = readDigits(s, pos, 2);
    if (!hour || !expect(s, pos, ':')) return std::nullopt;
    const auto minute = readDigits(s, pos, 2);
    if (!minute || !expect(s, pos, ':')) return std::nullopt;
    const auto second = readDigits(s, pos, 2);
    if (!second) return std::nullopt;
    unsigned millis = 0;
    if (withFraction) {
        if (!expect(s, pos, '.')) return std::nullopt;
        const auto fraction = readDigits(s, pos, 3);
        if (!fraction) return std::nullopt;
        millis = *fraction;
    }
    int offsetMinutes = 0;
    if (expect(s, pos, 'Z')) {
    } else if (pos < s.size() && (s[pos] == '+' || s[pos] == '-')) {
        const int sign = s[pos] == '-' ? -1 : 1;
        ++pos;
        const auto oh = readDigits(s, pos, 2);
        if (!oh) return std::nullopt;
        std::optional<unsigned> om = 0u;
        if (expect(s, pos, ':')) om = readDigits(s, pos, 2);
        else if (pos < s.size()) om = readDigits(s, pos, 2);
        if (!om || *oh > 23 || *om > 59) return std::nullopt;
        offsetMinutes = sign * static_cast<int>(*oh * 60 + *om);
    } else {
        return std::nullopt;
    }
    if (pos != s.size()) return std::nullopt;
    if (*month < 1 || *month > 12 || *day < 1 || *day > daysInMonth(*year, *month) || *hour > 23 || *minute > 59 ||
        *second > 59) {
        return std::nullopt;
    }
    const std::int64_t days = daysFromCivil(*year, *month, *day);
    const std::int64_t seconds = days * 86400 + *hour * 3600 + *minute * 60 + *second - offsetMinutes * 60;
    return static_cast<double>(seconds) + millis / 1000.0;
}

}  // namespace

std::string runHash(std::string_view text, HashAlgorithm algorithm) {
    // Empty where libcrypto is missing: nothing sensible to show.
    return crypto::hexDigest(algorithm, text);
}

namespace {

/// Writes the Base64 of the `n` bytes at `in`, with its padding, to `dst`: (n + 2) / 3 * 4
/// characters.
void encodeBase64(const unsigned char* in, std::size_t n, char* dst) {
    const auto& pairs = kBase64Encode.pairs;
    std::size_t i = 0;
    if constexpr (std::endian::native == std::endian::little) {
        // Twelve bytes at a time, read as two big-endian words: sixteen characters in two stores.
        auto eight = [&pairs](const unsigned char* p) {
            std::uint64_t word;
            std::memcpy(&word, p, 8);
            word = __builtin_bswap64(word);
            const auto a = static_cast<std::uint32_t>(word >> 40);
            const auto b = static_cast<std::uint32_t>(word >> 16) & 0xFFFFFF;
            return std::uint64_t{pairs[a >> 12]} | (std::uint64_t{pairs[a & 0xFFF]} << 16) |
                   (std::uint64_t{pairs[b >> 12]} << 32) | (std::uint64_t{pairs[b & 0xFFF]} << 48);
        };
        for (; i + 14 <= n; i += 12) {
            const std::uint64_t first = eight(in + i);
            const std::uint64_t second = eight(in + i + 6);
            std::memcpy(dst, &first, 8);
            std::memcpy(dst + 8, &second, 8);
            dst += 16;
        }
    }
    for (; i + 3 <= n; i += 3) {
        const std::uint32_t a = (std::uint32_t{in[i]} << 16) | (std::uint32_t{in[i + 1]} << 8) | in[i + 2];
        std::uint16_t chars[2] = {pairs[a >> 12], pairs[a & 0xFFF]};
        std::memcpy(dst, chars, 4);
        dst += 4;
    }
    if (i < n) {  // one or two bytes left: two or three characters and the padding
        const std::uint32_t a = (std::uint32_t{in[i]} << 16) | (i + 1 < n ? std::uint32_t{in[i + 1]} << 8 : 0);
        dst[0] = kBase64Alphabet[a >> 18];
        dst[1] = kBase64Alphabet[(a >> 12) & 63];
        dst[2] = i + 1 < n ? kBase64Alphabet[(a >> 6) & 63] : '=';
        dst[3] = '=';
    }
}

}  // namespace

std::string runBase64Encode(std::string_view text) {
    std::string out = largeString((text.size() + 2) / 3 * 4, '=');
    encodeBase64(reinterpret_cast<const unsigned char*>(text.data()), text.size(), out.data());
    return out;
}

Base64PieceEncoder::Base64PieceEncoder(PieceSink sink) : sink_(std::move(sink)) {}

void Base64PieceEncoder::add(std::string_view bytes) {
    // Whole groups of three only, so that no padding falls inside; the rest waits.
    const std::size_t fromCarried = carried_.empty() ? 0 : std::min(3 - carried_.size(), bytes.size());
    carried_.append(bytes.substr(0, fromCarried));
    bytes.remove_prefix(fromCarried);
    const std::size_t whole = (carried_.size() == 3 ? 3 : 0) + bytes.size() / 3 * 3;
    if (whole == 0) {
        carried_.append(bytes);  // fewer than three bytes in all
        return;
    }
    if (buffer_.size() < whole / 3 * 4) buffer_.resize(whole / 3 * 4);
    char* out = buffer_.data();
    if (carried_.size() == 3) {
        encodeBase64(reinterpret_cast<const unsigned char*>(carried_.data()), 3, out);
        out += 4;
        carried_.clear();
    }
    const std::size_t groups = bytes.size() / 3 * 3;
    encodeBase64(reinterpret_cast<const unsigned char*>(bytes.data()), groups, out);
    sink_(std::string_view(buffer_.data(), whole / 3 * 4));
    carried_.assign(bytes.substr(groups));
}

void Base64PieceEncoder::finish() {
    if (carried_.empty()) return;
    char last[4];
    encodeBase64(reinterpret_cast<const unsigned char*>(carried_.data()), carried_.size(), last);
    carried_.clear();
    sink_(std::string_view(last, 4));
}

void runBase64EncodeInPieces(std::string_view text, const PieceSink& sink, std::size_t pieceSize) {
    Base64PieceEncoder encoder(sink);
    const std::size_t step = std::max<std::size_t>(pieceSize / 4 * 3, 1);
    for (std::size_t offset = 0; offset < text.size(); offset += step) encoder.add(text.substr(offset, step));
    encoder.finish();
}

namespace {

/// Strict decoding of `s` after the padding rule; nullopt when a character is outside the
/// alphabet (blanks and line breaks included) or '=' stands anywhere but at the end.
std::optional<std::string> decodeBase64Strict(std::string_view s) {
    // Missing padding is added; an input with its padding gets none. '=' may stand only as the
    // last one or two characters of the padded text.
    const std::size_t n = s.size();
    const auto* in = reinterpret_cast<const unsigned char*>(s.data());
    std::size_t trailing = 0;
    while (trailing < n && trailing <= 2 && in[n - 1 - trailing] == '=') ++trailing;
    const std::size_t padding = (4 - n % 4) % 4 + trailing;
    if (padding > 2) return std::nullopt;
    // What is left carries the bits: whole groups, then two or three characters when padded.
    const std::size_t dataChars = n - trailing;
    const std::size_t fullGroups = dataChars / 4;
    const std::size_t rest = dataChars % 4;
    std::string bytes = largeString(fullGroups * 3 + (rest == 0 ? 0 : rest - 1), '\0');
    if (!decodeBase64Groups(in, fullGroups * 4, bytes.data())) return std::nullopt;
    if (rest != 0) {
        const auto& t = kBase64Decode.shifted;
        const unsigned char* last = in + fullGroups * 4;
        const std::uint32_t v = t[0][last[0]] | t[1][last[1]] | (rest == 3 ? t[2][last[2]] : 0);
        if ((v & kBad) != 0) return std::nullopt;
        char* dst = bytes.data() + fullGroups * 3;
        dst[0] = static_cast<char>(v >> 16);
        if (rest == 3) dst[1] = static_cast<char>(v >> 8);
    }
    return bytes;
}

bool isBreakOrBlank(char c) { return c == '\n' || c == '\r' || c == ' '; }

}  // namespace

std::string runBase64Decode(std::string_view text) {
    // The URL-safe '-' and '_' are read as '+' and '/' by the decoding table itself. Text
    // without line breaks or blanks decodes as it stands; the decoder stops at the first one,
    // and only then is a copy without them made (tabs stay, and fail).
    std::optional<std::string> bytes;
    if (text.empty() || !isBreakOrBlank(text.back())) bytes = decodeBase64Strict(text);
    if (!bytes) {
        std::string compacted = largeString(text.size(), '\0');
        std::size_t kept = 0;
        for (char c : text) {
            compacted[kept] = c;
            kept += isBreakOrBlank(c) ? 0 : 1;
        }
        if (kept == text.size()) throw TransformError("Base64");  // nothing to take away: it is bad
        compacted.resize(kept);
        bytes = decodeBase64Strict(compacted);
        if (!bytes) throw TransformError("Base64");
    }
    return textOrHex(std::move(*bytes));
}

namespace {

/// True when one of the eight bytes of `word` is a line feed, a carriage return or a blank.
bool hasBreakOrBlank(std::uint64_t word) {
    constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
    constexpr std::uint64_t kHighs = 0x8080808080808080ULL;
    auto hasZeroByte = [](std::uint64_t v) { return ((v - kOnes) & ~v & kHighs) != 0; };
    return hasZeroByte(word ^ (kOnes * '\n')) || hasZeroByte(word ^ (kOnes * '\r')) || hasZeroByte(word ^ (kOnes * ' '));
}

/// True when `text` holds a line feed, a carriage return, a blank or an '='; one fast byte
/// search for each.
bool containsBreakBlankOrPad(std::string_view text) {
    for (char c : {'\n', '\r', ' ', '='}) {
        if (std::memchr(text.data(), c, text.size()) != nullptr) return true;
    }
    return false;
}

/// Copies `text` to `out` without its line feeds, carriage returns and blanks; answers how many
/// characters it wrote. Eight characters at a time where none of them is one.
std::size_t compactBreaksAndBlanks(std::string_view text, char* out) {
    std::size_t kept = 0;
    std::size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        std::uint64_t word;
        std::memcpy(&word, text.data() + i, 8);
        if (!hasBreakOrBlank(word)) {
            std::memcpy(out + kept, &word, 8);
            kept += 8;
            continue;
        }
        for (std::size_t k = i; k < i + 8; ++k) {
            out[kept] = text[k];
            kept += isBreakOrBlank(text[k]) ? 0 : 1;
        }
    }
    for (; i < text.size(); ++i) {
        out[kept] = text[i];
        kept += isBreakOrBlank(text[i]) ? 0 : 1;
    }
    return kept;
}

}  // namespace

Base64PieceDecoder::Base64PieceDecoder(PieceSink sink) : sink_(std::move(sink)) {}

bool Base64PieceDecoder::add(std::string_view piece) {
    if (failed_) return false;
    if (compacted_.size() < carried_ + piece.size()) {
        compacted_.resize(carried_ + piece.size());
        decoded_.resize(compacted_.size() / 4 * 3);
    }
    if (carried_ == 0 && padding_.empty() && piece.size() >= 4 && !containsBreakBlankOrPad(piece)) {
        // Nothing to take out: the groups are decoded where they stand.
        const std::size_t groups = piece.size() / 4 * 4;
        if (!decodeBase64Groups(reinterpret_cast<const unsigned char*>(piece.data()), groups, decoded_.data())) {
            failed_ = true;
            return false;
        }
        sink_(std::string_view(decoded_.data(), groups / 4 * 3));
        carried_ = piece.size() - groups;
        std::memcpy(compacted_.data(), piece.data() + groups, carried_);
        return true;
    }
    std::size_t kept = carried_ + compactBreaksAndBlanks(piece, compacted_.data() + carried_);
    // From the first '=' on, only '=' may follow, to the end of the text.
    const std::size_t firstPad = padding_.empty() ? std::string_view(compacted_.data(), kept).find('=', carried_)
                                                  : carried_;  // after an '=', all of it is padding
    if (firstPad < kept) {
        const std::string_view pads(compacted_.data() + firstPad, kept - firstPad);
        if (pads.find_first_not_of('=') != std::string_view::npos) {
            failed_ = true;
            return false;
        }
        padding_.append(pads);
        kept = firstPad;
    }
    const std::size_t groups = kept / 4 * 4;
    // A character outside the alphabet fails in the decoding table.
    if (!decodeBase64Groups(reinterpret_cast<const unsigned char*>(compacted_.data()), groups, decoded_.data())) {
        failed_ = true;
        return false;
    }
    if (groups > 0) sink_(std::string_view(decoded_.data(), groups / 4 * 3));
    carried_ = kept - groups;
    std::memmove(compacted_.data(), compacted_.data() + groups, carried_);
    return true;
}

bool Base64PieceDecoder::finish() {
    if (failed_) return false;
    failed_ = true;  // nothing more after the end
    const std::optional<std::string> bytes = decodeBase64Strict(std::string(compacted_.data(), carried_) + padding_);
    if (!bytes) return false;
    if (!bytes->empty()) sink_(*bytes);
    return true;
}

namespace {

/// Decodes `text` in pieces of `pieceSize` through a Base64PieceDecoder; false where it fails.
bool decodeInPieces(std::string_view text, std::size_t pieceSize, PieceSink sink) {
    Base64PieceDecoder decoder(std::move(sink));
    const std::size_t step = std::max<std::size_t>(pieceSize, 1);
    for (std::size_t offset = 0; offset < text.size(); offset += step) {
        if (!decoder.add(text.substr(offset, step))) return false;
    }
    return decoder.finish();
}

}  // namespace

bool runBase64DecodeInPieces(std::string_view text, const PieceSink& sink, std::size_t pieceSize) {
    // First only checked: the bytes must all be UTF-8 before any is given, since bytes that are
    // not come back whole in hex.
    text::Utf8Stream utf8;
    bool valid = true;
    const bool plain = decodeInPieces(text, pieceSize, [&](std::string_view piece) { valid = valid && utf8.add(piece); });
    if (!plain || !valid || !utf8.finish()) return false;
    decodeInPieces(text, pieceSize, sink);
    return true;
}

std::string runUrlEncode(std::string_view text) {
    static constexpr char kUpperHex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size() + text.size() / 4);
    std::size_t offset = 0;
    while (offset < text.size()) {
        const auto byte = static_cast<unsigned char>(text[offset]);
        if (byte < 0x80) {
            const char c = static_cast<char>(byte);
            if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
                c == '_' || c == '~') {
                out.push_back(c);
            } else {
                out.push_back('%');
                out.push_back(kUpperHex[byte >> 4]);
                out.push_back(kUpperHex[byte & 15]);
            }
            ++offset;
            continue;
        }
        const text::CodePoint c = text::decodeCodePoint(text, offset);
        const std::string_view bytes = text.substr(offset, c.length);
        if (c.valid && text::isAlphanumeric(c.value)) {
            out.append(bytes);
        } else {
            for (char b : bytes) {
                const auto u = static_cast<unsigned char>(b);
                out.push_back('%');
                out.push_back(kUpperHex[u >> 4]);
                out.push_back(kUpperHex[u & 15]);
            }
        }
        offset += c.length;
    }
    if (out.empty()) return std::string(text);
    return out;
}

std::string runUrlDecode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out.push_back(text[i]);
            continue;
        }
        if (i + 2 >= text.size()) return std::string(text);
        const int high = hexValue(text[i + 1]);
        const int low = hexValue(text[i + 2]);
        if (high < 0 || low < 0) return std::string(text);
        out.push_back(static_cast<char>(high * 16 + low));
        i += 2;
    }
    if (!text::isValidUtf8(out)) return std::string(text);
    return out;
}

std::string runHexEncode(std::string_view text) {
    std::string out;
    appendHex(out, text);
    return out;
}

std::string_view runHexEncodeInto(std::string_view bytes, std::string& buffer) {
    if (buffer.size() < bytes.size() * 2) buffer.resize(bytes.size() * 2);
    writeHex(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), buffer.data());
    return std::string_view(buffer.data(), bytes.size() * 2);
}

std::string runHexDecode(std::string_view text) {
    // The separators go in this order, each everywhere in the text: a "0x" may appear only
    // once the blanks around it are gone, and a colon may join the halves of one.
    std::string s;
    s.reserve(text.size());
    for (char c : text) {
        if (c != ' ' && c != '\n' && c != '\r' && c != '\t') s.push_back(c);
    }
    std::string without0x;
    without0x.reserve(s.size());
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '0' && i + 1 < s.size() && s[i + 1] == 'x') {
            ++i;
            continue;
        }
        without0x.push_back(s[i]);
    }
    s.clear();
    for (char c : without0x) {
        if (c != ':') s.push_back(c);
    }

    std::string bytes;
    if (isAscii(s)) {
        if (s.empty() || s.size() % 2 != 0) throw TransformError("Hex (odd length)");
        bytes.resize(s.size() / 2);
        for (std::size_t i = 0; i < s.size(); i += 2) {
            const int high = hexValue(s[i]);
            const int low = hexValue(s[i + 1]);
            if (high >= 0 && low >= 0) {
                bytes[i / 2] = static_cast<char>(high * 16 + low);
                continue;
            }
            const auto value = parseUnsignedHex(std::string_view(s).substr(i, 2), 0xFF);
            if (!value) throw TransformError("Hex");
            bytes[i / 2] = static_cast<char>(*value);
        }
    } else {
        // Characters, not bytes, make the pairs: a letter with a mark is one character. A
        // character outside ASCII is no hex digit, so with an even count some pair fails.
        const std::size_t count = text::graphemeCount(s);
        if (count == 0 || count % 2 != 0) throw TransformError("Hex (odd length)");
        throw TransformError("Hex");
    }
    return textOrHex(std::move(bytes));
}

std::string runHtmlEscape(std::string_view text) {
    std::string out;
    out.reserve(text.size() + text.size() / 8);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const char* entity = nullptr;
        switch (c) {
        case '&': entity = "&amp;"; break;
        case '<': entity = "&lt;"; break;
        case '>': entity = "&gt;"; break;
        case '"': entity = "&quot;"; break;
        case '\'': entity = "&#39;"; break;
        default: break;
        }
        // A mark on the sign makes it another character, which stays as it is.
        if (entity != nullptr && !extendsPreviousCharacter(text, i + 1)) {
            out.append(entity);
        } else {
            out.push_back(c);
        }
    }
    return out;
}

std::string runUnicodeEscape(std::string_view text) {
    std::string out;
    out.reserve(text.size() * 2);
    auto group = [&out](unsigned value) {
        out.append("\\u");
        out.push_back(kHexDigits[(value >> 12) & 15]);
        out.push_back(kHexDigits[(value >> 8) & 15]);
        out.push_back(kHexDigits[(value >> 4) & 15]);
        out.push_back(kHexDigits[value & 15]);
    };
    std::size_t offset = 0;
    while (offset < text.size()) {
        const auto byte = static_cast<unsigned char>(text[offset]);
        if (byte >= 0x20 && byte < 0x80 && byte != '\\') {
            out.push_back(static_cast<char>(byte));
            ++offset;
            continue;
        }
        const text::CodePoint c = text::decodeCodePoint(text, offset);
        const char32_t value = c.valid ? c.value : text::kReplacementCharacter;
        if (value > 0xFFFF) {
            const unsigned v = static_cast<unsigned>(value) - 0x10000;
            group(0xD800 + (v >> 10));
            group(0xDC00 + (v & 0x3FF));
        } else {
            group(static_cast<unsigned>(value));
        }
        offset += c.length;
    }
    return out;
}

std::string runUnicodeUnescape(std::string_view text) {
    if (text.find("\\u") == std::string_view::npos) return std::string(text);
    // Positions count characters. In ASCII without carriage returns every byte is one; else
    // the boundaries of every cluster are found once.
    std::vector<std::size_t> bounds;
    const bool bytesAreCharacters = isAscii(text) && text.find('\r') == std::string_view::npos;
    if (!bytesAreCharacters) bounds = text::graphemeBoundaries(text);
    const std::size_t count = bytesAreCharacters ? text.size() : bounds.size() - 1;
    auto start = [&](std::size_t index) { return bytesAreCharacters ? index : bounds[index]; };
    auto character = [&](std::size_t index) { return text.substr(start(index), start(index + 1) - start(index)); };
    std::string out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < count) {
        if (character(i) == "\\" && i + 5 < count && character(i + 1) == "u") {
            const std::string_view digits = text.substr(start(i + 2), start(i + 6) - start(i + 2));
            const auto value = parseUnsignedHex(digits, 0xFFFFFFFFu);
            if (value && *value <= 0x10FFFF && (*value < 0xD800 || *value > 0xDFFF)) {
                text::appendUtf8(out, static_cast<char32_t>(*value));
                i += 6;
                continue;
            }
        }
        out.append(character(i));
        ++i;
    }
    return out;
}

std::string runRot13(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>('a' + (c - 'a' + 13) % 26);
        else if (c >= 'A' && c <= 'Z') c = static_cast<char>('A' + (c - 'A' + 13) % 26);
    }
    return out;
}

std::string runUnixToISO(std::string_view text) {
    const std::string trimmed(text::trimmed(text));
    if (trimmed.empty()) throw TransformError("Unix timestamp");
    char* end = nullptr;
    const double value = strtod_l(trimmed.c_str(), &end, cLocale());
    if (end != trimmed.c_str() + trimmed.size()) throw TransformError("Unix timestamp");
    // Above 1e10 the number is taken for milliseconds; 1e10 itself is seconds (the year 2286).
    const double millis = value > 10000000000.0 ? value : value * 1000.0;
    // A moment that no calendar date can show (infinity, not a number, or beyond the year
    // 100000 either way) is no timestamp.
    constexpr double kLimit = 3.0e15;  // milliseconds, about 95,000 years
    if (!std::isfinite(millis) || std::fabs(millis) > kLimit) throw TransformError("Unix timestamp");
    const auto totalMillis = static_cast<std::int64_t>(std::floor(millis + 0.5));
    std::int64_t days = totalMillis / 86400000;
    std::int64_t rest = totalMillis % 86400000;
    if (rest < 0) {
        rest += 86400000;
        --days;
    }
    const CivilDate date = civilFromDays(days);
    const auto hours = rest / 3600000;
    const auto minutes = rest / 60000 % 60;
    const auto seconds = rest / 1000 % 60;
    const auto ms = rest % 1000;
    char buffer[64];
    const char* sign = date.year < 0 ? "-" : "";
    std::snprintf(buffer, sizeof buffer, "%s%04lld-%02u-%02uT%02lld:%02lld:%02lld.%03lldZ", sign,
                  static_cast<long long>(date.year < 0 ? -date.year : date.year), date.month, date.day,
                  static_cast<long long>(hours), static_cast<long long>(minutes), static_cast<long long>(seconds),
                  static_cast<long long>(ms));
    return buffer;
}

std::string runIsoToUnix(std::string_view text) {
    const std::string_view trimmed = text::trimmed(text);
    if (trimmed.empty()) throw TransformError("ISO 8601");
    std::optional<double> seconds = parseInternetDateTime(trimmed, true);
    if (!seconds) seconds = parseInternetDateTime(trimmed, false);
    if (!seconds) throw TransformError("ISO 8601");
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, *seconds, std::chars_format::fixed);
    std::string out(buffer, result.ptr);
    if (out.find('.') == std::string::npos) out.append(".0");
    return out;
}

std::string runCountStats(std::string_view text, SettingsLanguage lang) {
    // One walk over the characters: words are runs of characters that are not white space,
    // lines are one more than the line-break characters (CR LF is one).
    std::size_t characters = 0;
    std::size_t words = 0;
    std::size_t lines = 1;
    bool inWord = false;
    auto visit = [&](std::string_view character) {
        ++characters;
        const bool space = text::isWhitespace(character);
        if (!space && !inWord) ++words;
        inWord = !space;
        if (space && text::isNewline(character)) ++lines;
    };
    if (isAscii(text)) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            const std::size_t length = (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ? 2 : 1;
            visit(text.substr(i, length));
            i += length - 1;
        }
    } else {
        const std::vector<std::size_t> bounds = text::graphemeBoundaries(text);
        for (std::size_t i = 0; i + 1 < bounds.size(); ++i) visit(text.substr(bounds[i], bounds[i + 1] - bounds[i]));
    }
    const bool ru = lang == SettingsLanguage::ru;
    std::string out;
    out.append(ru ? "Символов:    " : "Characters:  ").append(std::to_string(characters)).append("\n");
    out.append(ru ? "Слов:        " : "Words:       ").append(std::to_string(words)).append("\n");
    out.append(ru ? "Строк:       " : "Lines:       ").append(std::to_string(lines)).append("\n");
    out.append(ru ? "Байт (UTF-8): " : "UTF-8 bytes: ").append(std::to_string(text.size()));
    return out;
}

}  // namespace orvantis::TTOps
