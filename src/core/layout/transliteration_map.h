#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/layout/layout_translator.h"

namespace orvantis {

/// Maps characters key for key between the English layout and the other one, for the layout
/// switcher: "ghbdtn" to "привет" and back. Despite the name it does no phonetic
/// transliteration. Uses the pair that `LayoutTranslator` builds from the desktop's layouts
/// when there is one, else a fixed table of the ordinary Russian PC layout against the US
/// layout, so a conversion always works, at worst with that layout's punctuation. Does not own
/// the translator. Main thread only: the inverse table is built on first use without a lock.
class TransliterationMap {
public:
    enum class Direction { enToRu, ruToEn };

    /// Number of entries of the fixed table.
    static constexpr std::size_t kFallbackSize = 73;
    /// The fixed table, English key first, in its order: the letters row by row unshifted,
    /// then shifted, then the shifted digits and the slash and question mark.
    static const std::array<std::pair<std::string_view, std::string_view>, kFallbackSize>&
    fallbackTable();

    /// With no desktop layouts in reach: the fixed table gives the whole behaviour.
    TransliterationMap() = default;
    /// Asks `translator` for a pair at every conversion.
    explicit TransliterationMap(const LayoutTranslator& translator) : translator_(&translator) {}

    /// The fixed table as a map, English to Russian.
    const CharacterMap& fallbackEnToRu() const { return fallbackEnToRu_; }
    /// The fixed table swapped, Russian to English; built on first use and then kept.
    const CharacterMap& fallbackRuToEn() const;

    /// Each character replaced by its entry in the map of `direction`, or kept when it has
    /// none; length and order are kept. There is no case handling: case comes from the Shift
    /// level in the maps. A character written in decomposed form ("й" as и + U+0306) finds
    /// the entry of its composed form.
    std::vector<std::string> transliterate(const std::vector<std::string>& characters,
                                           Direction direction) const;
    /// The same over the grapheme clusters of `text`.
    std::string transliterate(std::string_view text, Direction direction) const;

    /// `characters` through `map`, as above.
    static std::vector<std::string> apply(const CharacterMap& map,
                                          const std::vector<std::string>& characters);
    /// Keys and values swapped. Where a value occurs twice, which key wins is unspecified;
    /// the fixed table has no such value.
    static CharacterMap inverted(const CharacterMap& map);

private:
    static CharacterMap makeFallback();

    const LayoutTranslator* translator_ = nullptr;
    CharacterMap fallbackEnToRu_ = makeFallback();
    mutable std::optional<CharacterMap> fallbackRuToEn_;
};

}  // namespace orvantis
