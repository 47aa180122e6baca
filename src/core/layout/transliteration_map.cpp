#include "core/layout/transliteration_map.h"

#include <unicode/unorm2.h>

#include "core/text/graphemes.h"
#include "core/text/utf.h"

namespace orvantis {

namespace {

using Entry = std::pair<std::string_view, std::string_view>;

constexpr std::array<Entry, TransliterationMap::kFallbackSize> kFallback{{
    {"q", "й"}, {"w", "ц"}, {"e", "у"}, {"r", "к"}, {"t", "е"}, {"y", "н"},
    {"u", "г"}, {"i", "ш"}, {"o", "щ"}, {"p", "з"}, {"[", "х"}, {"]", "ъ"},
    {"a", "ф"}, {"s", "ы"}, {"d", "в"}, {"f", "а"}, {"g", "п"}, {"h", "р"},
    {"j", "о"}, {"k", "л"}, {"l", "д"}, {";", "ж"}, {"'", "э"},
    {"z", "я"}, {"x", "ч"}, {"c", "с"}, {"v", "м"}, {"b", "и"}, {"n", "т"},
    {"m", "ь"}, {",", "б"}, {".", "ю"},
    {"`", "ё"},
    {"Q", "Й"}, {"W", "Ц"}, {"E", "У"}, {"R", "К"}, {"T", "Е"}, {"Y", "Н"},
    {"U", "Г"}, {"I", "Ш"}, {"O", "Щ"}, {"P", "З"}, {"{", "Х"}, {"}", "Ъ"},
    {"A", "Ф"}, {"S", "Ы"}, {"D", "В"}, {"F", "А"}, {"G", "П"}, {"H", "Р"},
    {"J", "О"}, {"K", "Л"}, {"L", "Д"}, {":", "Ж"}, {"\"", "Э"},
    {"Z", "Я"}, {"X", "Ч"}, {"C", "С"}, {"V", "М"}, {"B", "И"}, {"N", "Т"},
    {"M", "Ь"}, {"<", "Б"}, {">", "Ю"},
    {"~", "Ё"},
    {"@", "\""}, {"#", "№"}, {"$", ";"}, {"^", ":"}, {"&", "?"}, {"/", "."}, {"?", ","},
}};

/// The canonical composition of a cluster of several code points, or nullopt when it has
/// one code point only, is already composed, or ICU fails.
std::optional<std::string> composed(const std::string& cluster) {
    if (text::codePointCount(cluster) < 2) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* nfc = unorm2_getNFCInstance(&status);
    if (U_FAILURE(status)) return std::nullopt;
    const std::u16string source = text::toUtf16(cluster);
    std::u16string result(source.size() + 4, u'\0');
    const int32_t length =
        unorm2_normalize(nfc, source.data(), static_cast<int32_t>(source.size()), result.data(),
                         static_cast<int32_t>(result.size()), &status);
    if (U_FAILURE(status)) return std::nullopt;
    result.resize(static_cast<std::size_t>(length));
    if (result == source) return std::nullopt;
    return text::fromUtf16(result);
}

const std::string* lookUp(const CharacterMap& map, const std::string& character) {
    if (const auto it = map.find(character); it != map.end()) return &it->second;
    if (const auto normal = composed(character)) {
        if (const auto it = map.find(*normal); it != map.end()) return &it->second;
    }
    return nullptr;
}

}  // namespace

const std::array<std::pair<std::string_view, std::string_view>, TransliterationMap::kFallbackSize>&
TransliterationMap::fallbackTable() {
    return kFallback;
}

CharacterMap TransliterationMap::makeFallback() {
    CharacterMap map;
    for (const auto& [en, ru] : kFallback) map.emplace(en, ru);
    return map;
}

const CharacterMap& TransliterationMap::fallbackRuToEn() const {
    if (!fallbackRuToEn_) fallbackRuToEn_ = inverted(fallbackEnToRu_);
    return *fallbackRuToEn_;
}

CharacterMap TransliterationMap::inverted(const CharacterMap& map) {
    CharacterMap result;
    for (const auto& [key, value] : map) result.try_emplace(value, key);
    return result;
}

std::vector<std::string> TransliterationMap::apply(const CharacterMap& map,
                                                   const std::vector<std::string>& characters) {
    std::vector<std::string> result;
    result.reserve(characters.size());
    for (const auto& c : characters) {
        const std::string* mapped = lookUp(map, c);
        result.push_back(mapped ? *mapped : c);
    }
    return result;
}

std::vector<std::string> TransliterationMap::transliterate(const std::vector<std::string>& characters,
                                                           Direction direction) const {
    if (translator_) {
        if (auto pair = translator_->buildPair()) {
            return apply(direction == Direction::enToRu ? pair->enToRu : pair->ruToEn, characters);
        }
    }
    return apply(direction == Direction::enToRu ? fallbackEnToRu_ : fallbackRuToEn(), characters);
}

std::string TransliterationMap::transliterate(std::string_view text, Direction direction) const {
    std::string result;
    for (const auto& c : transliterate(text::graphemes(text), direction)) result += c;
    return result;
}

}  // namespace orvantis
