#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/input_sources.h"

namespace orvantis {

/// One character (a grapheme cluster in UTF-8) to another.
using CharacterMap = std::unordered_map<std::string, std::string>;

/// Builds, key by key, the pair of character maps between the English-language keyboard
/// source and the other one from the desktop's own key tables, so that whatever variant of the
/// other layout the user has enabled gives its own punctuation. Keeps no state and no cache: a
/// pair is built anew for every conversion, so a change of enabled layouts takes effect at the
/// next one without any notification. Does not own the input sources. Main thread only.
class LayoutTranslator {
public:
    /// The two maps. `enToRu` goes from what a key types in the English-language source to
    /// what the same key types in the other source; `ruToEn` goes back. The names hold for
    /// any second language: beside German, `ruToEn` is German to English.
    struct Pair {
        CharacterMap enToRu;
        CharacterMap ruToEn;
    };

    /// Highest physical key position read, inclusive.
    static constexpr std::uint16_t kLastKeyCode = 127;

    explicit LayoutTranslator(const platform::InputSources& sources) : sources_(sources) {}

    /// The pair between the current source and the first enabled source of another primary
    /// language, or nullopt when there is none: no current source, no source of another
    /// language, neither of the two with a language beginning with "en", a source without a
    /// key table, or no key that types differently in the two. Two variants of one language
    /// never pair with each other.
    std::optional<Pair> buildPair() const;

    /// The first language of the source's list, or nullopt when the list is empty.
    static std::optional<std::string> primaryLanguage(const platform::InputSourceDescriptor& source);

    /// What the key at `keyCode` types in `layout`, unshifted or with Shift; nullopt when it
    /// types nothing. Output of several characters is cut to the first.
    static std::optional<std::string> translateKey(std::uint16_t keyCode, bool shift,
                                                   const platform::KeyLayout& layout);

private:
    /// The first enabled source with a key table whose primary language differs from
    /// `currentLanguage`; a missing language counts as a value of its own.
    std::optional<platform::InputSourceDescriptor> findOtherSource(
        const std::optional<std::string>& currentLanguage) const;

    const platform::InputSources& sources_;
};

}  // namespace orvantis
