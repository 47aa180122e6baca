#include "core/text/graphemes.h"

#include <algorithm>
#include <optional>

#include <unicode/uchar.h>

#include "core/text/icu_support.h"
#include "core/text/utf.h"

namespace orvantis::text {
namespace {

using detail::Segmenter;
using detail::ValidUtf8;

/// Boundary in `valid` after `count` clusters, or the end when there are fewer.
std::size_t endOfClusters(std::string_view valid, std::size_t count) {
    if (count == 0) return 0;
    Segmenter segmenter(UBRK_CHARACTER, valid);
    std::size_t seen = 0;
    while (auto boundary = segmenter.next()) {
        if (++seen == count) return *boundary;
    }
    return valid.size();
}

/// The start of the code point that ends just before `end` in valid UTF-8.
std::size_t previousCodePointStart(std::string_view text, std::size_t end) {
    std::size_t start = end - 1;
    while (start > 0 && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80) --start;
    return start;
}

/// The clusters of valid UTF-8 `text` in reverse order, by the rules that decide every text
/// without prepended marks, Hangul syllables, regional indicators and joiners: a character
/// that extends (a mark, a spacing mark) joins the one before it unless that one is a control
/// or a line end, and LF joins a CR before it. Nullopt at the first character of a class the
/// rules leave out (ICU then segments the text). An ASCII character is never an extender: a
/// cluster of ASCII is one byte, or CR LF.
std::optional<std::string> reversedSimpleGraphemes(std::string_view text) {
    std::string out(text.size(), '\0');
    std::size_t written = 0;
    auto classOf = [&text](std::size_t start, std::size_t end) {
        const CodePoint c = decodeCodePoint(text.substr(0, end), start);
        return u_getIntPropertyValue(static_cast<UChar32>(c.value), UCHAR_GRAPHEME_CLUSTER_BREAK);
    };
    auto leftOut = [](int kind) {
        return kind == U_GCB_PREPEND || kind == U_GCB_REGIONAL_INDICATOR || kind == U_GCB_ZWJ || kind == U_GCB_L ||
               kind == U_GCB_V || kind == U_GCB_T || kind == U_GCB_LV || kind == U_GCB_LVT;
    };
    std::size_t end = text.size();
    while (end > 0) {
        const auto last = static_cast<unsigned char>(text[end - 1]);
        std::size_t start = end - 1;
        if (last < 0x80) {
            if (last == '\n' && start > 0 && text[start - 1] == '\r') --start;
        } else {
            start = previousCodePointStart(text, end);
            int kind = classOf(start, end);
            if (leftOut(kind)) return std::nullopt;
            // Back over extenders to the character they extend, unless a control stands before.
            while ((kind == U_GCB_EXTEND || kind == U_GCB_SPACING_MARK) && start > 0) {
                const std::size_t before = previousCodePointStart(text, start);
                const int previous = static_cast<unsigned char>(text[before]) < 0x80
                                         ? (text[before] == '\r' ? U_GCB_CR
                                            : text[before] == '\n' ? U_GCB_LF
                                            : static_cast<unsigned char>(text[before]) < 0x20 ||
                                                      text[before] == 0x7F
                                                ? U_GCB_CONTROL
                                                : U_GCB_OTHER)
                                         : classOf(before, start);
                if (leftOut(previous)) return std::nullopt;
                if (previous == U_GCB_CONTROL || previous == U_GCB_CR || previous == U_GCB_LF) break;
                start = before;
                kind = previous;
            }
        }
        std::copy(text.begin() + static_cast<std::ptrdiff_t>(start), text.begin() + static_cast<std::ptrdiff_t>(end),
                  out.begin() + static_cast<std::ptrdiff_t>(written));
        written += end - start;
        end = start;
    }
    return out;
}

}  // namespace

std::vector<std::size_t> graphemeBoundaries(std::string_view text) {
    const ValidUtf8 valid(text);
    std::vector<std::size_t> result = detail::boundaries(UBRK_CHARACTER, valid.view());
    for (std::size_t& boundary : result) boundary = valid.toOriginal(boundary);
    return result;
}

std::vector<ByteRange> graphemeRanges(std::string_view text) {
    const std::vector<std::size_t> bounds = graphemeBoundaries(text);
    std::vector<ByteRange> result;
    result.reserve(bounds.size() - 1);
    for (std::size_t i = 1; i < bounds.size(); ++i) {
        result.push_back(ByteRange{bounds[i - 1], bounds[i]});
    }
    return result;
}

std::vector<std::string> graphemes(std::string_view text) {
    const ValidUtf8 valid(text);
    std::vector<std::string> result;
    Segmenter segmenter(UBRK_CHARACTER, valid.view());
    std::size_t start = 0;
    while (auto boundary = segmenter.next()) {
        result.emplace_back(valid.view().substr(start, *boundary - start));
        start = *boundary;
    }
    return result;
}

std::size_t graphemeCount(std::string_view text) {
    const ValidUtf8 valid(text);
    Segmenter segmenter(UBRK_CHARACTER, valid.view());
    std::size_t count = 0;
    while (segmenter.next()) ++count;
    return count;
}

bool isSingleGrapheme(std::string_view text) {
    if (text.empty()) return false;
    const ValidUtf8 valid(text);
    return endOfClusters(valid.view(), 1) == valid.view().size();
}

std::string graphemePrefix(std::string_view text, std::size_t count) {
    const ValidUtf8 valid(text);
    return std::string(valid.view().substr(0, endOfClusters(valid.view(), count)));
}

std::string graphemeSuffix(std::string_view text, std::size_t count) {
    const ValidUtf8 valid(text);
    const std::vector<std::size_t> bounds = detail::boundaries(UBRK_CHARACTER, valid.view());
    const std::size_t clusters = bounds.size() - 1;
    const std::size_t start = count >= clusters ? 0 : bounds[clusters - count];
    return std::string(valid.view().substr(start));
}

std::string graphemeSlice(std::string_view text, std::size_t start, std::size_t count) {
    const ValidUtf8 valid(text);
    const std::vector<std::size_t> bounds = detail::boundaries(UBRK_CHARACTER, valid.view());
    const std::size_t clusters = bounds.size() - 1;
    if (start >= clusters || count == 0) return {};
    const std::size_t end = count >= clusters - start ? clusters : start + count;
    return std::string(valid.view().substr(bounds[start], bounds[end] - bounds[start]));
}

std::string firstGrapheme(std::string_view text) { return graphemePrefix(text, 1); }

std::string lastGrapheme(std::string_view text) { return graphemeSuffix(text, 1); }

std::string reversedGraphemes(std::string_view text) {
    // Most text is decided by a few of the rules, without a break iterator: four times faster.
    if (isValidUtf8(text)) {
        if (std::optional<std::string> reversed = reversedSimpleGraphemes(text)) return std::move(*reversed);
    }
    const ValidUtf8 valid(text);
    const std::vector<std::size_t> bounds = detail::boundaries(UBRK_CHARACTER, valid.view());
    std::string result;
    result.reserve(valid.view().size());
    for (std::size_t i = bounds.size() - 1; i > 0; --i) {
        result.append(valid.view().substr(bounds[i - 1], bounds[i] - bounds[i - 1]));
    }
    return result;
}

std::string truncatedGraphemes(std::string_view text, std::size_t maxCount,
                               std::string_view marker) {
    const ValidUtf8 valid(text);
    Segmenter segmenter(UBRK_CHARACTER, valid.view());
    std::size_t seen = 0;
    std::size_t cut = 0;
    while (auto boundary = segmenter.next()) {
        if (seen == maxCount) {
            std::string result(valid.view().substr(0, cut));
            result.append(repairUtf8(marker));
            return result;
        }
        ++seen;
        cut = *boundary;
    }
    return std::string(valid.view());
}

std::size_t graphemeIndexFromByteOffset(std::string_view text, std::size_t byteOffset) {
    const std::vector<std::size_t> bounds = graphemeBoundaries(text);
    // Boundaries at or before the offset, less the leading 0.
    const auto upto = std::upper_bound(bounds.begin(), bounds.end(), byteOffset);
    return static_cast<std::size_t>(upto - bounds.begin()) - 1;
}

std::size_t byteOffsetFromGraphemeIndex(std::string_view text, std::size_t index) {
    const std::vector<std::size_t> bounds = graphemeBoundaries(text);
    return index < bounds.size() ? bounds[index] : text.size();
}

}  // namespace orvantis::text
