#include "core/names/name_variants.h"

#include <algorithm>

#include "core/text/case_mapping.h"
#include "core/text/character_class.h"
#include "core/text/split.h"

namespace orvantis {
namespace {

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char asciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
char asciiUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// ASCII, by far the common case, is mapped by hand; everything else through ICU.
std::string lower(std::string_view text) {
    if (!isAscii(text)) return text::lowercased(text);
    std::string out(text);
    for (char& c : out) c = asciiLower(c);
    return out;
}

std::string upper(std::string_view text) {
    if (!isAscii(text)) return text::uppercased(text);
    std::string out(text);
    for (char& c : out) c = asciiUpper(c);
    return out;
}

std::string upperFirst(std::string_view text) {
    if (!isAscii(text)) return text::uppercasedFirst(text);
    std::string out(text);
    if (!out.empty()) out[0] = asciiUpper(out[0]);
    return out;
}

enum class Form { asIs, capitalised, upper };

/// A token in its three forms, each made once for all eleven styles.
struct TokenForms {
    const std::string* asIs;
    std::string capitalised;
    std::string upper;
    const std::string& get(Form f) const {
        switch (f) {
            case Form::asIs: return *asIs;
            case Form::capitalised: return capitalised;
            case Form::upper: return upper;
        }
        return *asIs;
    }
};

std::vector<TokenForms> formsOf(const std::vector<std::string>& tokens) {
    std::vector<TokenForms> forms;
    forms.reserve(tokens.size());
    for (const std::string& token : tokens) forms.push_back({&token, upperFirst(token), upper(token)});
    return forms;
}

std::string join(const std::vector<TokenForms>& tokens, Form first, Form others, std::string_view separator) {
    std::string out;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (i > 0) out += separator;
        out += tokens[i].get(i == 0 ? first : others);
    }
    return out;
}

std::string variantOf(const std::vector<TokenForms>& tokens, NameStyle style) {
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

}  // namespace

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
    // Every stop word is short: a long word can't be one, whatever its case.
    if (word.size() > 8) return false;
    const std::string folded = lower(word);
    return std::find(stopWords.begin(), stopWords.end(), folded) != stopWords.end();
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
    for (std::string& piece : pieces) piece = lower(piece);
    return pieces;
}

std::vector<NameVariant> NameVariantGenerator::generate(std::string_view phrase) {
    const std::vector<std::string> words = tokens(phrase);
    const std::vector<TokenForms> forms = formsOf(words);
    std::vector<NameVariant> variants;
    variants.reserve(kAllNameStyles.size());
    for (NameStyle style : kAllNameStyles) variants.push_back({style, variantOf(forms, style)});
    return variants;
}

std::string NameVariantGenerator::makeVariant(const std::vector<std::string>& tokens, NameStyle style) {
    return variantOf(formsOf(tokens), style);
}

}  // namespace orvantis
