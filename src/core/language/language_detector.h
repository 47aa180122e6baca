#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvantis {

class SpellingDictionaries;

/// Which language a text is in, and how many words it has. Any thread. The first short text
/// opens the system's spelling dictionaries of its script (a few milliseconds each), which
/// then stay for the life of the process.
struct LanguageDetector {
    /// The most likely language of `text` as a code such as "en" or "ru" (two letters where
    /// the language has such a code), single words included; nullopt for text without a
    /// letter. A sentence is judged by the compact language detector; a short text by its
    /// script where the script names the language (Greek, Hebrew, kana, Ukrainian "ї"), else
    /// by the word lists of the spelling dictionaries, with the detector's best guess settling
    /// ties. Nothing from the user's settings takes part: a short or mixed text may be wrong.
    static std::optional<std::string> detect(std::string_view text);
    /// The same with the given word lists (a folder without any gives the detector alone).
    static std::optional<std::string> detect(std::string_view text, SpellingDictionaries& dictionaries);
    /// The words of the trimmed text by the Unicode word rules; where they find none, the
    /// pieces between blanks ("?!" counts one, "?! ..." two); 0 for blank text.
    static std::size_t wordCount(std::string_view text);
};

}  // namespace orvantis
