#include "core/language/language_detector.h"

#include <optional>

#include <cld2/public/compact_lang_det.h>

#include "core/text/split.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"
#include "core/text/words.h"

#include <dlfcn.h>

namespace orvantis {
namespace {

/// The two functions of the compact language detector, looked up the first time a text is
/// detected: linked at start, its tables are loaded and relocated by every launch, and only a
/// translation needs them. The library stays loaded to the end of the process.
struct Cld2 {
    using Detect = CLD2::Language (*)(const char* buffer, int bufferLength, bool isPlainText,
                                      CLD2::Language* language3, int* percent3, int* textBytes, bool* isReliable);
    Detect detectLanguageSummary;
    decltype(&CLD2::LanguageCode) languageCode;
};

/// Null when the library or one of the two functions is missing: then no language is known.
const Cld2* cld2() {
    static const std::optional<Cld2> loaded = []() -> std::optional<Cld2> {
        void* library = ::dlopen("libcld2.so.0", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        if (library == nullptr) return std::nullopt;
        // C++ functions, so by their mangled names (stable with the library's soname).
        auto* detect = ::dlsym(library, "_ZN4CLD221DetectLanguageSummaryEPKcibPNS_8LanguageEPiS4_Pb");
        auto* code = ::dlsym(library, "_ZN4CLD212LanguageCodeENS_8LanguageE");
        if (detect == nullptr || code == nullptr) return std::nullopt;
        return Cld2{reinterpret_cast<Cld2::Detect>(detect), reinterpret_cast<decltype(&CLD2::LanguageCode)>(code)};
    }();
    return loaded ? &*loaded : nullptr;
}

/// The detector's code for a language, in the form the rest of the program compares: the
/// two-letter codes of today where the detector keeps an older one, Chinese as "zh" whatever
/// its script.
std::string commonCode(std::string code) {
    if (code == "iw") return "he";
    if (code == "jw") return "jv";
    if (code == "zh-Hant") return "zh";
    return code;
}

}  // namespace

std::optional<std::string> LanguageDetector::detect(std::string_view text) {
    const std::string_view trimmed = text::trimmed(text);
    if (trimmed.empty()) return std::nullopt;
    // The detector reads well-formed UTF-8 only.
    const std::string valid = text::repairUtf8(trimmed);
    const Cld2* detector = cld2();
    if (detector == nullptr) return std::nullopt;
    CLD2::Language languages[3] = {CLD2::UNKNOWN_LANGUAGE, CLD2::UNKNOWN_LANGUAGE, CLD2::UNKNOWN_LANGUAGE};
    int percents[3] = {0, 0, 0};
    int letterBytes = 0;
    bool reliable = false;
    detector->detectLanguageSummary(valid.data(),
                                    static_cast<int>(std::min<std::size_t>(valid.size(), 1u << 30)),
                                    /*isPlainText=*/true, languages, percents, &letterBytes, &reliable);
    // With nothing to score (digits, punctuation) the detector still names its default
    // language; that is no answer.
    const CLD2::Language language = languages[0];
    if (letterBytes == 0 || percents[0] == 0) return std::nullopt;
    if (language == CLD2::UNKNOWN_LANGUAGE || language == CLD2::TG_UNKNOWN_LANGUAGE) return std::nullopt;
    const char* code = detector->languageCode(language);
    if (code == nullptr || *code == '\0') return std::nullopt;
    return commonCode(code);
}

std::size_t LanguageDetector::wordCount(std::string_view text) {
    const std::string_view trimmed = text::trimmed(text);
    if (trimmed.empty()) return 0;
    const std::size_t words = text::wordCount(trimmed);
    if (words >= 1) return words;
    return text::splitAt(trimmed, text::WhitespaceSet::whitespacesAndNewlines, text::EmptyPieces::omit).size();
}

}  // namespace orvantis
