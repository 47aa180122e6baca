#include "core/text/case_folding.h"

#include <cstdint>
#include <limits>
#include <unordered_map>

#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include "core/text/icu_support.h"

namespace orvantis::text {
namespace {

constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

/// Builds caseless keys code point by code point, remembering what it has computed: real
/// text repeats its letters, and ICU calls per code point are the slow part.
class CaselessKeys {
public:
    CaselessKeys() {
        UErrorCode status = U_ZERO_ERROR;
        nfd_ = unorm2_getNFDInstance(&status);
        if (U_FAILURE(status)) nfd_ = nullptr;
    }

    void append(char32_t codePoint, std::u32string& key) {
        if (codePoint < 0x80) {
            key.push_back(codePoint >= U'A' && codePoint <= U'Z' ? codePoint + 0x20 : codePoint);
            return;
        }
        auto found = cache_.find(codePoint);
        if (found == cache_.end()) found = cache_.emplace(codePoint, compute(codePoint)).first;
        key.append(found->second);
    }

    std::u32string keyOf(std::string_view valid) {
        std::u32string key;
        key.reserve(valid.size());
        for (const CodePoint& c : codePoints(valid)) append(c.value, key);
        return key;
    }

private:
    std::u16string normalize(const std::u16string& text) const {
        if (nfd_ == nullptr) return text;
        std::u16string out(text.size() * 4 + 8, u'\0');
        for (int attempt = 0; attempt < 2; ++attempt) {
            UErrorCode status = U_ZERO_ERROR;
            const std::int32_t length =
                unorm2_normalize(nfd_, text.data(), static_cast<std::int32_t>(text.size()),
                                 out.data(), static_cast<std::int32_t>(out.size()), &status);
            if (status == U_BUFFER_OVERFLOW_ERROR && length > 0) {
                out.resize(static_cast<std::size_t>(length));
                continue;
            }
            if (U_FAILURE(status) || length < 0) return text;
            out.resize(static_cast<std::size_t>(length));
            return out;
        }
        return text;
    }

    static std::u16string fold(const std::u16string& text) {
        std::u16string out(text.size() * 3 + 8, u'\0');
        for (int attempt = 0; attempt < 2; ++attempt) {
            UErrorCode status = U_ZERO_ERROR;
            const std::int32_t length =
                u_strFoldCase(out.data(), static_cast<std::int32_t>(out.size()), text.data(),
                              static_cast<std::int32_t>(text.size()), U_FOLD_CASE_DEFAULT,
                              &status);
            if (status == U_BUFFER_OVERFLOW_ERROR && length > 0) {
                out.resize(static_cast<std::size_t>(length));
                continue;
            }
            if (U_FAILURE(status) || length < 0) return text;
            out.resize(static_cast<std::size_t>(length));
            return out;
        }
        return text;
    }

    std::u32string compute(char32_t codePoint) const {
        const std::u16string decomposed = normalize(toUtf16(encodeUtf8(codePoint)));
        const std::u16string key = normalize(fold(decomposed));
        return toCodePoints(fromUtf16(key));
    }

    const UNormalizer2* nfd_ = nullptr;
    std::unordered_map<char32_t, std::u32string> cache_;
};

/// The haystack side of a search: its key, and for every offset of the key the index of the
/// code point whose key starts there (kNone inside a code point's key).
struct IndexedKey {
    std::u32string key;
    std::vector<std::size_t> codePointAt;  // size key.size() + 1
    std::vector<ByteRange> codePoints;     // in the repaired text
};

IndexedKey indexKey(std::string_view valid, CaselessKeys& keys) {
    IndexedKey indexed;
    indexed.key.reserve(valid.size());
    indexed.codePointAt.reserve(valid.size() + 1);
    for (const CodePoint& c : codePoints(valid)) {
        const std::size_t before = indexed.key.size();
        keys.append(c.value, indexed.key);
        // codePointAt has one entry per key offset so far; a code point with an empty key
        // (none exists today) adds none and can't start or end a match.
        if (indexed.key.size() > before) {
            indexed.codePointAt.push_back(indexed.codePoints.size());
            indexed.codePointAt.resize(indexed.key.size(), kNone);
        }
        indexed.codePoints.push_back(ByteRange{c.offset, c.offset + c.length});
    }
    indexed.codePointAt.push_back(indexed.codePoints.size());
    return indexed;
}

std::vector<ByteRange> find(std::string_view haystack, std::string_view needle,
                            std::size_t maxMatches) {
    std::vector<ByteRange> matches;
    if (needle.empty() || haystack.empty() || maxMatches == 0) return matches;
    const detail::ValidUtf8 validNeedle(needle);
    const detail::ValidUtf8 validHaystack(haystack);
    CaselessKeys keys;
    const std::u32string needleKey = keys.keyOf(validNeedle.view());
    if (needleKey.empty()) return matches;
    const IndexedKey indexed = indexKey(validHaystack.view(), keys);
    const std::string_view text = validHaystack.view();

    std::vector<bool> isClusterBoundary;  // made on the first candidate
    auto onBoundary = [&](std::size_t offset) {
        if (isClusterBoundary.empty()) {
            isClusterBoundary.assign(text.size() + 1, false);
            for (std::size_t b : detail::boundaries(UBRK_CHARACTER, text)) {
                isClusterBoundary[b] = true;
            }
        }
        return isClusterBoundary[offset];
    };

    const std::u32string_view key = indexed.key;
    std::size_t from = 0;
    while (matches.size() < maxMatches) {
        const std::size_t at = key.find(needleKey, from);
        if (at == std::u32string_view::npos) break;
        const std::size_t first = indexed.codePointAt[at];
        const std::size_t afterLast = indexed.codePointAt[at + needleKey.size()];
        if (first != kNone && afterLast != kNone) {
            const std::size_t begin = indexed.codePoints[first].begin;
            const std::size_t end = afterLast < indexed.codePoints.size()
                                        ? indexed.codePoints[afterLast].begin
                                        : text.size();
            if (onBoundary(begin) && onBoundary(end)) {
                matches.push_back(
                    ByteRange{validHaystack.toOriginal(begin), validHaystack.toOriginal(end)});
                from = at + needleKey.size();
                continue;
            }
        }
        from = at + 1;
    }
    return matches;
}

}  // namespace

std::string caseFolded(std::string_view text) {
    const detail::ValidUtf8 valid(text);
    return detail::mapCase(detail::CaseOperation::fold, valid.view());
}

bool caseInsensitiveEquals(std::string_view a, std::string_view b) {
    return caseInsensitiveCompare(a, b) == 0;
}

int caseInsensitiveCompare(std::string_view a, std::string_view b) {
    const detail::ValidUtf8 validA(a);
    const detail::ValidUtf8 validB(b);
    CaselessKeys keys;
    const int order = keys.keyOf(validA.view()).compare(keys.keyOf(validB.view()));
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

std::vector<ByteRange> caseInsensitiveFind(std::string_view haystack, std::string_view needle) {
    return find(haystack, needle, kNone);
}

bool caseInsensitiveContains(std::string_view haystack, std::string_view needle) {
    return !find(haystack, needle, 1).empty();
}

}  // namespace orvantis::text
