#pragma once

#include <array>
#include <string>
#include <string_view>

namespace orvantis {

/// The languages offered for the translator's pair, and their names.
struct LanguageCatalog {
    /// The 28 two-letter codes, in the order the settings list them.
    static const std::array<std::string_view, 28> supported;
    /// The name of the language `code` in the interface language `interfaceLanguage` ("en",
    /// "ru"), as the locale data has it ("German", "немецкий"); the code itself when the data
    /// has no name for it.
    static std::string displayName(std::string_view code, std::string_view interfaceLanguage);
};

}  // namespace orvantis
