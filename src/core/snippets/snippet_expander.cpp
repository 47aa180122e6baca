#include "core/snippets/snippet_expander.h"

#include <nlohmann/json.hpp>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include "core/settings/preference_store.h"

namespace orvantis {

namespace {

/// Equal up to Unicode canonical equivalence ("é" precomposed equals "e" with a combining acute).
bool canonicallyEqual(std::string_view a, std::string_view b) {
    if (a == b) return true;
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* nfd = icu::Normalizer2::getNFDInstance(status);
    if (U_FAILURE(status) || nfd == nullptr) return false;
    const icu::UnicodeString left =
        nfd->normalize(icu::UnicodeString::fromUTF8(icu::StringPiece(a.data(), static_cast<int32_t>(a.size()))), status);
    const icu::UnicodeString right =
        nfd->normalize(icu::UnicodeString::fromUTF8(icu::StringPiece(b.data(), static_cast<int32_t>(b.size()))), status);
    return U_SUCCESS(status) && left == right;
}

}  // namespace

std::vector<SnippetEntry> SnippetExpander::entries() const {
    const auto data = store_.dataForKey(kKey);
    if (!data) return {};
    return decode(*data).value_or(std::vector<SnippetEntry>{});
}

void SnippetExpander::setEntries(const std::vector<SnippetEntry>& entries) {
    store_.set(kKey, PreferenceData{encode(entries)});
}

std::optional<SnippetEntry> SnippetExpander::match(std::string_view token) const {
    if (token.empty()) return std::nullopt;
    for (SnippetEntry& entry : entries())
        if (canonicallyEqual(entry.shortcut, token)) return std::move(entry);
    return std::nullopt;
}

std::string SnippetExpander::encode(const std::vector<SnippetEntry>& entries) {
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    for (const SnippetEntry& entry : entries) {
        nlohmann::ordered_json object;
        object["id"] = entry.id.toString();
        object["shortcut"] = entry.shortcut;
        object["expansion"] = entry.expansion;
        array.push_back(std::move(object));
    }
    // Invalid UTF-8 is written as U+FFFD rather than refused.
    const std::string compact = array.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    // Slashes escaped, as the files of other platforms have them.
    std::string out;
    out.reserve(compact.size());
    for (char c : compact) {
        if (c == '/') out += '\\';
        out += c;
    }
    return out;
}

std::optional<std::vector<SnippetEntry>> SnippetExpander::decode(std::string_view json) {
    const nlohmann::json parsed = nlohmann::json::parse(json.begin(), json.end(), nullptr, false);
    if (parsed.is_discarded() || !parsed.is_array()) return std::nullopt;
    std::vector<SnippetEntry> entries;
    entries.reserve(parsed.size());
    for (const nlohmann::json& object : parsed) {
        if (!object.is_object()) return std::nullopt;
        const auto id = object.find("id");
        const auto shortcut = object.find("shortcut");
        const auto expansion = object.find("expansion");
        if (id == object.end() || shortcut == object.end() || expansion == object.end()) return std::nullopt;
        if (!id->is_string() || !shortcut->is_string() || !expansion->is_string()) return std::nullopt;
        auto uuid = Uuid::parse(id->get_ref<const std::string&>());
        if (!uuid) return std::nullopt;
        entries.push_back(SnippetEntry{*uuid, shortcut->get<std::string>(), expansion->get<std::string>()});
    }
    return entries;
}

}  // namespace orvantis
