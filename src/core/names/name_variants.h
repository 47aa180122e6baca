#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace orvantis {

/// The eleven ways of writing a phrase as an identifier, in the order the list shows them.
enum class NameStyle {
    lowerCamelCase,
    pascalCase,
    snakeCase,
    screamingSnakeCase,
    kebabCase,
    screamingKebabCase,
    lowercaseSpaces,
    uppercaseSpaces,
    titleCase,
    sentenceCase,
    dotCase,
};

/// Every style, in order.
inline constexpr std::array<NameStyle, 11> kAllNameStyles = {
    NameStyle::lowerCamelCase,  NameStyle::pascalCase,         NameStyle::snakeCase,
    NameStyle::screamingSnakeCase, NameStyle::kebabCase,       NameStyle::screamingKebabCase,
    NameStyle::lowercaseSpaces, NameStyle::uppercaseSpaces,    NameStyle::titleCase,
    NameStyle::sentenceCase,    NameStyle::dotCase,
};

/// The case name of a style, as written in code: "lowerCamelCase", "snakeCase", ...
std::string_view nameStyleName(NameStyle style);

/// One identifier of the list.
struct NameVariant {
    NameStyle style = NameStyle::lowerCamelCase;
    std::string value;
    bool operator==(const NameVariant&) const = default;
};

/// Drops the small words of a phrase, so that "the name of the user" names `nameUser`.
struct StopWordFilter {
    /// The sixteen small words, in lower case.
    static const std::array<std::string_view, 16> stopWords;
    /// True when the lower-case form of `word` is a stop word.
    static bool isStopWord(std::string_view word);
    /// The words that are not stop words, in order and as they came; all of `words` when
    /// nothing would be left, so a phrase of stop words alone still gives a name.
    static std::vector<std::string> filter(const std::vector<std::string>& words);
};

/// Turns a phrase into its eleven identifiers. Pure string logic, any thread.
struct NameVariantGenerator {
    /// Always eleven variants, in the order of `kAllNameStyles`. The phrase is cut at every
    /// character that is not a letter, mark or number, stop words go, and the pieces are
    /// lower-cased: case already in the phrase is forgotten ("getUserName" is one word).
    static std::vector<NameVariant> generate(std::string_view phrase);
    /// The pieces `generate` works on: cut, filtered and lower-cased.
    static std::vector<std::string> tokens(std::string_view phrase);
    /// `tokens`, already in lower case, written in `style`; empty for no tokens.
    static std::string makeVariant(const std::vector<std::string>& tokens, NameStyle style);
};

}  // namespace orvantis
