#include "core/text/words.h"

#include <cstdint>
#include <functional>
#include <optional>

#include "core/text/icu_support.h"

namespace orvantis::text {
namespace {

/// The kind of a segment after its rule status, or nothing when it is no word (blanks,
/// punctuation, symbols).
std::optional<WordKind> kindOf(std::int32_t status) {
    if (status >= UBRK_WORD_NONE && status < UBRK_WORD_NONE_LIMIT) return std::nullopt;
    if (status >= UBRK_WORD_NUMBER && status < UBRK_WORD_NUMBER_LIMIT) return WordKind::number;
    if (status >= UBRK_WORD_KANA && status < UBRK_WORD_KANA_LIMIT) return WordKind::kana;
    if (status >= UBRK_WORD_IDEO && status < UBRK_WORD_IDEO_LIMIT) return WordKind::ideographic;
    return WordKind::letter;
}

/// Calls `visit(begin, end, kind)` for each word, offsets in the repaired text.
void forEachWord(std::string_view valid,
                 const std::function<void(std::size_t, std::size_t, WordKind)>& visit) {
    detail::Segmenter segmenter(UBRK_WORD, valid);
    std::size_t start = 0;
    while (auto boundary = segmenter.next()) {
        if (const auto kind = kindOf(segmenter.ruleStatus())) visit(start, *boundary, *kind);
        start = *boundary;
    }
}

}  // namespace

std::vector<WordToken> wordTokens(std::string_view text) {
    const detail::ValidUtf8 valid(text);
    std::vector<WordToken> tokens;
    forEachWord(valid.view(), [&](std::size_t begin, std::size_t end, WordKind kind) {
        tokens.push_back(WordToken{ByteRange{valid.toOriginal(begin), valid.toOriginal(end)},
                                   std::string(valid.view().substr(begin, end - begin)), kind});
    });
    return tokens;
}

std::vector<std::string> words(std::string_view text) {
    const detail::ValidUtf8 valid(text);
    std::vector<std::string> result;
    forEachWord(valid.view(), [&](std::size_t begin, std::size_t end, WordKind) {
        result.emplace_back(valid.view().substr(begin, end - begin));
    });
    return result;
}

std::size_t wordCount(std::string_view text) {
    const detail::ValidUtf8 valid(text);
    std::size_t count = 0;
    forEachWord(valid.view(), [&](std::size_t, std::size_t, WordKind) { ++count; });
    return count;
}

}  // namespace orvantis::text
