#include "core/text/graphemes.h"

#include <algorithm>

#include "core/text/icu_support.h"

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
