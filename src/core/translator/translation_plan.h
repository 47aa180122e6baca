#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvantis {

/// What the translator shows for a selection.
enum class TranslationMode { namingVariants, direct };

/// The plan for one selection: what to show, and the language codes of the request.
struct TranslationPlan {
    TranslationMode mode = TranslationMode::namingVariants;
    std::string source;  ///< a code, or "auto"
    std::string target;
    bool operator==(const TranslationPlan&) const = default;
};

/// Chooses the plan from the selection's detected language and word count: up to ten words on
/// the variants hotkey give identifier names in English; otherwise a translation between the
/// user's pair, away from whichever side the text is on. Codes compare exactly; undetected
/// text on the direct road goes out with both codes `primary`, and nothing corrects that.
TranslationPlan translationPlan(const std::optional<std::string>& detected, std::size_t words, bool forceDirect,
                                std::string_view primary, std::string_view secondary);

/// The words of a selection whose alternatives the synonym cycle looks up, in order: the word
/// tokens of the trimmed text, else its pieces between characters that are not letters, marks
/// or numbers; empty for blank text.
std::vector<std::string> tokenizeForAlternates(std::string_view text);

/// Every combination of one alternative per word, each step changing exactly one word, the
/// first word fastest: for dims {2, 3}, [0,0] [1,0] [1,1] [0,1] [0,2] [1,2]. Empty when `dims`
/// is empty or holds a 0. `limit` cuts the walk short (the cycle keeps at most 60 steps), so
/// that 8 words of 8 alternatives never build their 16 million combinations.
std::vector<std::vector<int>> snakeSequence(const std::vector<int>& dims, std::size_t limit = SIZE_MAX);

/// The phrase of step `indices`: each word's alternative at its index, joined by one blank;
/// nullopt when the step does not fit the lists.
std::optional<std::string> cyclePhrase(const std::vector<std::vector<std::string>>& perWordAlternates,
                                       const std::vector<int>& indices);

}  // namespace orvantis
