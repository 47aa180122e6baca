#include "core/translator/translation_plan.h"

#include <algorithm>
#include <cstdint>

#include "core/text/character_class.h"
#include "core/text/split.h"
#include "core/text/whitespace.h"
#include "core/text/words.h"

namespace orvantis {

TranslationPlan translationPlan(const std::optional<std::string>& detected, std::size_t words, bool forceDirect,
                                std::string_view primary, std::string_view secondary) {
    if (!forceDirect && words >= 1 && words <= 10) {
        // Identifiers are in English whatever the pair.
        return {TranslationMode::namingVariants, detected.value_or("auto"), "en"};
    }
    if (detected == primary) return {TranslationMode::direct, std::string(primary), std::string(secondary)};
    if (detected == secondary) return {TranslationMode::direct, std::string(secondary), std::string(primary)};
    if (detected) return {TranslationMode::direct, *detected, std::string(primary)};
    return {TranslationMode::direct, std::string(primary), std::string(primary)};
}

std::vector<std::string> tokenizeForAlternates(std::string_view text) {
    const std::string_view trimmed = text::trimmed(text);
    std::vector<std::string> tokens;
    if (trimmed.empty()) return tokens;
    for (std::string& word : text::words(trimmed))
        if (!word.empty()) tokens.push_back(std::move(word));
    if (!tokens.empty()) return tokens;
    for (std::string_view piece :
         text::splitWhere(trimmed, [](char32_t c) { return !text::isAlphanumeric(c); }, text::EmptyPieces::omit)) {
        tokens.emplace_back(piece);
    }
    return tokens;
}

namespace {

/// The walk over `dims` from the last entry to the first, as the recursion of the snake
/// defines it: the first entry's index is the outer loop, the rest run forwards for its even
/// indices and backwards for its odd ones. Emits into `out` (combinations in reverse word
/// order) until `limit` combinations are there.
void snakeRecurse(const std::vector<int>& d, std::size_t first, bool backwards, std::vector<int>& prefix,
                  std::vector<std::vector<int>>& out, std::size_t limit) {
    if (out.size() >= limit) return;
    if (first == d.size()) {
        out.push_back(prefix);
        return;
    }
    const int count = d[first];
    for (int step = 0; step < count && out.size() < limit; ++step) {
        // Reversing the whole sub-walk is reversing the order of the outer loop and flipping
        // each inner walk.
        const int i = backwards ? count - 1 - step : step;
        const bool innerBackwards = (i % 2 == 1) != backwards;
        prefix.push_back(i);
        snakeRecurse(d, first + 1, innerBackwards, prefix, out, limit);
        prefix.pop_back();
    }
}

}  // namespace

std::vector<std::vector<int>> snakeSequence(const std::vector<int>& dims, std::size_t limit) {
    std::vector<std::vector<int>> out;
    if (dims.empty() || std::any_of(dims.begin(), dims.end(), [](int d) { return d <= 0; })) return out;
    const std::vector<int> reversedDims(dims.rbegin(), dims.rend());
    std::vector<int> prefix;
    prefix.reserve(dims.size());
    snakeRecurse(reversedDims, 0, false, prefix, out, limit);
    for (auto& combination : out) std::reverse(combination.begin(), combination.end());
    return out;
}

std::optional<std::string> cyclePhrase(const std::vector<std::vector<std::string>>& perWordAlternates,
                                       const std::vector<int>& indices) {
    if (indices.size() != perWordAlternates.size()) return std::nullopt;
    std::string phrase;
    for (std::size_t word = 0; word < indices.size(); ++word) {
        const int index = indices[word];
        if (index < 0 || static_cast<std::size_t>(index) >= perWordAlternates[word].size()) return std::nullopt;
        if (word > 0) phrase += ' ';
        phrase += perWordAlternates[word][static_cast<std::size_t>(index)];
    }
    return phrase;
}

}  // namespace orvantis
