#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "core/text/utf.h"

// Words after ICU's word break rules in the root locale (Unicode's default word boundaries
// with ICU's refinements). Letters with their marks, apostrophes and periods inside words
// ("don't", "e.g"), digits with separators ("3.14", "1,000"), and runs joined by underscores
// ("user_name") each stay one word; blanks, punctuation and emoji are not words. Scripts
// written without spaces (Chinese, Japanese, Thai) are cut with ICU's dictionaries.
//
// Ill-formed sequences are read as U+FFFD, which is no word; ranges point into the text as it
// was given, texts come back well-formed.

namespace orvantis::text {

/// The kind of a word token, from ICU's rule status.
enum class WordKind {
    /// Digits, possibly with separators: "42", "3.14"; ICU gives this kind also to a word
    /// that ends in digits, such as "v2".
    number,
    /// Letters, possibly with digits inside: "Привет", "mp3s".
    letter,
    /// Japanese kana, where ICU's rules rather than its dictionary delimit them.
    kana,
    /// Ideographs.
    ideographic,
};

/// One word of a text.
struct WordToken {
    /// Where the word stands in the text that was given.
    ByteRange range;
    /// The word itself, well-formed.
    std::string text;
    WordKind kind = WordKind::letter;
    bool operator==(const WordToken&) const = default;
};

/// The words of `text` in order; empty when there is none.
std::vector<WordToken> wordTokens(std::string_view text);

/// The words of `text` as strings, in order.
std::vector<std::string> words(std::string_view text);

/// Number of words in `text`; 0 for text without words.
std::size_t wordCount(std::string_view text);

}  // namespace orvantis::text
