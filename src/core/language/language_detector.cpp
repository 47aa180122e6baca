#include "core/language/language_detector.h"

#include <cld2/public/compact_lang_det.h>

#include "core/text/split.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"
#include "core/text/words.h"

namespace orvantis {
namespace {

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
    CLD2::Language languages[3] = {CLD2::UNKNOWN_LANGUAGE, CLD2::UNKNOWN_LANGUAGE, CLD2::UNKNOWN_LANGUAGE};
    int percents[3] = {0, 0, 0};
    int letterBytes = 0;
    bool reliable = false;
    CLD2::DetectLanguageSummary(valid.data(), static_cast<int>(std::min<std::size_t>(valid.size(), 1u << 30)),
                                /*is_plain_text=*/true, languages, percents, &letterBytes, &reliable);
    // With nothing to score (digits, punctuation) the detector still names its default
    // language; that is no answer.
    const CLD2::Language language = languages[0];
    if (letterBytes == 0 || percents[0] == 0) return std::nullopt;
    if (language == CLD2::UNKNOWN_LANGUAGE || language == CLD2::TG_UNKNOWN_LANGUAGE) return std::nullopt;
    const char* code = CLD2::LanguageCode(language);
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
