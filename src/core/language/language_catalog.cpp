#include "core/language/language_catalog.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>

namespace orvantis {

const std::array<std::string_view, 28> LanguageCatalog::supported = {
    "ar", "bg", "cs", "da", "de", "el", "en", "es", "fi", "fr", "he", "hi", "hu", "id",
    "it", "ja", "ko", "nl", "no", "pl", "pt", "ro", "ru", "sv", "tr", "uk", "vi", "zh",
};

std::string LanguageCatalog::displayName(std::string_view code, std::string_view interfaceLanguage) {
    const std::string codeText(code);
    if (codeText.empty()) return codeText;
    const icu::Locale language = icu::Locale::createFromName(codeText.c_str());
    const icu::Locale display = icu::Locale::createFromName(std::string(interfaceLanguage).c_str());
    if (language.isBogus() || display.isBogus()) return codeText;
    icu::UnicodeString name;
    language.getDisplayLanguage(display, name);
    std::string utf8;
    name.toUTF8String(utf8);
    // Without a name in the data the locale answers with the code it was given.
    if (utf8.empty() || utf8 == codeText || utf8 == language.getLanguage()) return codeText;
    return utf8;
}

}  // namespace orvantis
