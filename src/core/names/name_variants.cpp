#include "core/names/name_variants.h"

#include <algorithm>

#include "core/text/case_mapping.h"
#include "core/text/character_class.h"
#include "core/text/split.h"

namespace orvantis {

const std::array<std::string_view, 16> StopWordFilter::stopWords = {
    "the", "a", "an", "of", "in", "for", "with", "to", "by", "at", "and", "or", "is", "are", "was", "were",
};

std::string_view nameStyleName(NameStyle style) {
    switch (style) {
        case NameStyle::lowerCamelCase: return "lowerCamelCase";
        case NameStyle::pascalCase: return "pascalCase";
        case NameStyle::snakeCase: return "snakeCase";
        case NameStyle::screamingSnakeCase: return "screamingSnakeCase";
        case NameStyle::kebabCase: return "kebabCase";
        case NameStyle::screamingKebabCase: return "screamingKebabCase";
        case NameStyle::lowercaseSpaces: return "lowercaseSpaces";
        case NameStyle::uppercaseSpaces: return "uppercaseSpaces";
        case NameStyle::titleCase: return "titleCase";
        case NameStyle::sentenceCase: return "sentenceCase";
        case NameStyle::dotCase: return "dotCase";
    }
    return "lowerCamelCase";
}

bool StopWordFilter::isStopWord(std::string_view word) {
    // Every stop word is short and ASCII: a long word can't be one, whatever its case.
    if (word.size() > 8) return false;
    const std::string lower = text::lowercased(word);
    return std::find(stopWords.begin(), stopWords.end(), lower) != stopWords.end();
}

std::vector<std::string> StopWordFilter::filter(const std::vector<std::string>& words) {
    std::vector<std::string> kept;
    std::copy_if(words.begin(), words.end(), std::back_inserter(kept),
                 [](const std::string& word) { return !isStopWord(word); });
    return kept.empty() ? words : kept;
}

std::vector<std::string> NameVariantGenerator::tokens(std::string_view phrase) {
    std::vector<std::string> pieces;
    for (std::string_view piece :
         text::splitWhere(phrase, [](char32_t c) { return !text::isAlphanumeric(c); }, text::EmptyPieces::omit)) {
        pieces.emplace_back(piece);
    }
    pieces = StopWordFilter::filter(pieces);
    for (std::string& piece : pieces) piece = text::lowercased(piece);
    return pieces;
}

std::vector<NameVariant> NameVariantGenerator::generate(std::string_view phrase) {
    const std::vector<std::string> words = tokens(phrase);
    std::vector<NameVariant> variants;
    variants.reserve(kAllNameStyles.size());
    for (NameStyle style : kAllNameStyles) variants.push_back({style, makeVariant(words, style)});
    return variants;
}

namespace {

enum class Form { asIs, capitalised, upper };

std::string form(const std::string& token, Form f) {
    switch (f) {
        case Form::asIs: return token;
        case Form::capitalised: return text::uppercasedFirst(token);
        case Form::upper: return text::uppercased(token);
    }
    return token;
}

std::string join(const std::vector<std::string>& tokens, Form first, Form others, std::string_view separator) {
    std::string out;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (i > 0) out += separator;
        out += form(tokens[i], i == 0 ? first : others);
    }
    return out;
}

}  // namespace

std::string NameVariantGenerator::makeVariant(const std::vector<std::string>& tokens, NameStyle style) {
    if (tokens.empty()) return {};
    switch (style) {
        case NameStyle::lowerCamelCase: return join(tokens, Form::asIs, Form::capitalised, "");
        case NameStyle::pascalCase: return join(tokens, Form::capitalised, Form::capitalised, "");
        case NameStyle::snakeCase: return join(tokens, Form::asIs, Form::asIs, "_");
        case NameStyle::screamingSnakeCase: return join(tokens, Form::upper, Form::upper, "_");
        case NameStyle::kebabCase: return join(tokens, Form::asIs, Form::asIs, "-");
        case NameStyle::screamingKebabCase: return join(tokens, Form::upper, Form::upper, "-");
        case NameStyle::lowercaseSpaces: return join(tokens, Form::asIs, Form::asIs, " ");
        case NameStyle::uppercaseSpaces: return join(tokens, Form::upper, Form::upper, " ");
        case NameStyle::titleCase: return join(tokens, Form::capitalised, Form::capitalised, " ");
        case NameStyle::sentenceCase: return join(tokens, Form::capitalised, Form::asIs, " ");
        case NameStyle::dotCase: return join(tokens, Form::asIs, Form::asIs, ".");
    }
    return {};
}

}  // namespace orvantis
