#include "core/text_tools/text_transform.h"

#include <utility>

#include "core/text/case_mapping.h"
#include "core/text/graphemes.h"
#include "core/text/whitespace.h"
#include "core/text_tools/tt_ops.h"

namespace orvantis {
namespace {

struct Entry {
    std::string_view id;
    std::string_view english;
    std::string_view russian;
};

constexpr Entry kEntries[] = {
    {"md5", "MD5", "MD5"},
    {"sha1", "SHA-1", "SHA-1"},
    {"sha256", "SHA-256", "SHA-256"},
    {"sha512", "SHA-512", "SHA-512"},
    {"base64Encode", "Base64 encode", "Base64 — закодировать"},
    {"base64Decode", "Base64 decode", "Base64 — декодировать"},
    {"urlEncode", "URL encode", "URL — закодировать"},
    {"urlDecode", "URL decode", "URL — декодировать"},
    {"hexEncode", "Hex (UTF-8) encode", "Hex (UTF-8) — закодировать"},
    {"hexDecode", "Hex decode", "Hex — декодировать"},
    {"htmlEscape", "HTML escape", "HTML — экранировать"},
    {"htmlUnescape", "HTML unescape", "HTML — расэкранировать"},
    {"unicodeEscape", "Unicode escape (\\u…)", "Unicode \\u — закодировать"},
    {"unicodeUnescape", "Unicode unescape", "Unicode \\u — раскодировать"},
    {"jsonPretty", "JSON pretty-print", "JSON — форматировать"},
    {"jsonMinify", "JSON minify", "JSON — минифицировать"},
    {"upper", "UPPERCASE", "UPPERCASE"},
    {"lower", "lowercase", "lowercase"},
    {"titleCase", "Title Case", "Title Case"},
    {"reverse", "Reverse text", "Перевернуть строку"},
    {"rot13", "ROT13", "ROT13"},
    {"trim", "Trim whitespace", "Убрать пробелы (trim)"},
    {"unixToISO", "Unix timestamp → ISO 8601", "Unix timestamp → ISO 8601"},
    {"isoToUnix", "ISO 8601 → Unix timestamp", "ISO 8601 → Unix timestamp"},
    {"count", "Count (lines / words / chars)", "Подсчёт (строки/слова/символы)"},
};
static_assert(std::size(kEntries) == kAllTextTransforms.size());

const Entry& entry(TextTransform transform) { return kEntries[static_cast<std::size_t>(transform)]; }

}  // namespace

std::string_view id(TextTransform transform) { return entry(transform).id; }

std::optional<TextTransform> textTransformFromId(std::string_view name) {
    for (TextTransform t : kAllTextTransforms) {
        if (id(t) == name) return t;
    }
    return std::nullopt;
}

std::string_view displayName(TextTransform transform, SettingsLanguage language) {
    return language == SettingsLanguage::ru ? entry(transform).russian : entry(transform).english;
}

TransformError::TransformError(std::string format)
    : std::runtime_error("Invalid input for " + format + "."), format_(std::move(format)) {}

std::string applyTransform(TextTransform transform, std::string_view text, SettingsLanguage language) {
    using TTOps::HashAlgorithm;
    switch (transform) {
    case TextTransform::md5: return TTOps::runHash(text, HashAlgorithm::md5);
    case TextTransform::sha1: return TTOps::runHash(text, HashAlgorithm::sha1);
    case TextTransform::sha256: return TTOps::runHash(text, HashAlgorithm::sha256);
    case TextTransform::sha512: return TTOps::runHash(text, HashAlgorithm::sha512);
    case TextTransform::base64Encode: return TTOps::runBase64Encode(text);
    case TextTransform::base64Decode: return TTOps::runBase64Decode(text);
    case TextTransform::urlEncode: return TTOps::runUrlEncode(text);
    case TextTransform::urlDecode: return TTOps::runUrlDecode(text);
    case TextTransform::hexEncode: return TTOps::runHexEncode(text);
    case TextTransform::hexDecode: return TTOps::runHexDecode(text);
    case TextTransform::htmlEscape: return TTOps::runHtmlEscape(text);
    case TextTransform::htmlUnescape: return TTOps::runHtmlUnescape(text);
    case TextTransform::unicodeEscape: return TTOps::runUnicodeEscape(text);
    case TextTransform::unicodeUnescape: return TTOps::runUnicodeUnescape(text);
    case TextTransform::jsonPretty: return TTOps::runJsonPretty(text);
    case TextTransform::jsonMinify: return TTOps::runJsonMinify(text);
    case TextTransform::upper: return text::uppercased(text);
    case TextTransform::lower: return text::lowercased(text);
    case TextTransform::titleCase: return text::capitalized(text);
    case TextTransform::reverse: return text::reversedGraphemes(text);
    case TextTransform::rot13: return TTOps::runRot13(text);
    case TextTransform::trim: return std::string(text::trimmed(text));
    case TextTransform::unixToISO: return TTOps::runUnixToISO(text);
    case TextTransform::isoToUnix: return TTOps::runIsoToUnix(text);
    case TextTransform::count: return TTOps::runCountStats(text, language);
    }
    return std::string(text);
}

}  // namespace orvantis
