#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvantis {

/// Which language a text is in, and how many words it has. Stateless; any thread.
struct LanguageDetector {
    /// The most likely language of `text` as a code such as "en" or "ru" (two letters where
    /// the language has such a code), or nullopt for blank text or when no language stands
    /// out. No threshold and no hint: short or mixed text may be judged wrong.
    static std::optional<std::string> detect(std::string_view text);
    /// The words of the trimmed text by the Unicode word rules; where they find none, the
    /// pieces between blanks ("?!" counts one, "?! ..." two); 0 for blank text.
    static std::size_t wordCount(std::string_view text);
};

}  // namespace orvantis
