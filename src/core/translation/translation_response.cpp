#include "core/translation/translation_response.h"

#include <optional>
#include <set>

#include <nlohmann/json.hpp>

#include "core/text/case_mapping.h"
#include "core/text/whitespace.h"

namespace orvantis {
namespace {

using Json = nlohmann::json;

/// Builds the tree as the library's own builder does, but refuses to go deeper than
/// kMaxTranslationResponseDepth, so that no later walk over the tree can run out of stack.
class DepthLimitedBuilder final : public nlohmann::json_sax<Json> {
public:
    explicit DepthLimitedBuilder(Json& root) : builder_(root, /*allow_exceptions=*/false) {}

    bool null() override { return builder_.null(); }
    bool boolean(bool value) override { return builder_.boolean(value); }
    bool number_integer(number_integer_t value) override { return builder_.number_integer(value); }
    bool number_unsigned(number_unsigned_t value) override { return builder_.number_unsigned(value); }
    bool number_float(number_float_t value, const string_t& text) override {
        return builder_.number_float(value, text);
    }
    bool string(string_t& value) override { return builder_.string(value); }
    bool binary(binary_t& value) override { return builder_.binary(value); }
    bool start_object(std::size_t elements) override { return enter() && builder_.start_object(elements); }
    bool key(string_t& value) override { return builder_.key(value); }
    bool end_object() override {
        --depth_;
        return builder_.end_object();
    }
    bool start_array(std::size_t elements) override { return enter() && builder_.start_array(elements); }
    bool end_array() override {
        --depth_;
        return builder_.end_array();
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
        failed_ = true;
        return false;
    }

    bool failed() const { return failed_; }

private:
    bool enter() {
        if (++depth_ > kMaxTranslationResponseDepth) {
            failed_ = true;
            return false;
        }
        return true;
    }

    nlohmann::detail::json_sax_dom_parser<Json> builder_;
    std::size_t depth_ = 0;
    bool failed_ = false;
};

/// The body as a JSON array, or nullopt when it is anything else or no JSON at all.
std::optional<Json> decodeArray(std::string_view body) {
    Json root;
    DepthLimitedBuilder builder(root);
    const bool parsed = Json::sax_parse(body.begin(), body.end(), &builder, nlohmann::json::input_format_t::json,
                                        /*strict=*/true, /*ignore_comments=*/false);
    if (!parsed || builder.failed() || !root.is_array()) return std::nullopt;
    return root;
}

bool isArrayOfArrays(const Json& value) {
    if (!value.is_array()) return false;
    for (const auto& element : value)
        if (!element.is_array()) return false;
    return true;
}

bool isArrayOfStrings(const Json& value) {
    if (!value.is_array()) return false;
    for (const auto& element : value)
        if (!element.is_string()) return false;
    return true;
}

/// The string first elements of the segments, joined; `segments` is an array of arrays.
std::string joinedSegments(const Json& segments) {
    std::string joined;
    for (const auto& segment : segments)
        if (!segment.empty() && segment[0].is_string()) joined += segment[0].get_ref<const std::string&>();
    return joined;
}

}  // namespace

TranslationResult<std::string> parseTranslationResponse(std::string_view body) {
    const auto root = decodeArray(body);
    if (!root || root->empty() || !isArrayOfArrays((*root)[0])) return TranslationError::parseFailure();
    std::string translation = joinedSegments((*root)[0]);
    if (translation.empty()) return TranslationError::emptyResult();
    return translation;
}

TranslationResult<std::vector<std::string>> parseAlternatesResponse(std::string_view body) {
    const auto decoded = decodeArray(body);
    if (!decoded) return TranslationError::parseFailure();
    const Json& root = *decoded;

    const std::string primary = !root.empty() && isArrayOfArrays(root[0]) ? joinedSegments(root[0]) : std::string();

    std::vector<std::string> candidates;
    if (root.size() >= 2 && root[1].is_array()) {
        for (const auto& entry : root[1]) {
            if (!entry.is_array() || entry.size() < 2 || !isArrayOfStrings(entry[1])) continue;
            for (const auto& term : entry[1]) candidates.push_back(term.get<std::string>());
        }
    }
    if (root.size() >= 6 && root[5].is_array()) {
        for (const auto& entry : root[5]) {
            if (!entry.is_array() || entry.size() < 3 || !isArrayOfArrays(entry[2])) continue;
            for (const auto& alternative : entry[2])
                if (!alternative.empty() && alternative[0].is_string())
                    candidates.push_back(alternative[0].get<std::string>());
        }
    }

    std::vector<std::string> results;
    std::set<std::string> seen;
    const std::string_view trimmedPrimary = text::trimmed(primary);
    if (!trimmedPrimary.empty()) {
        results.emplace_back(trimmedPrimary);
        seen.insert(text::lowercased(trimmedPrimary));
    }
    for (const auto& candidate : candidates) {
        const std::string_view trimmedCandidate = text::trimmed(candidate);
        if (trimmedCandidate.empty()) continue;
        if (!seen.insert(text::lowercased(trimmedCandidate)).second) continue;
        results.emplace_back(trimmedCandidate);
    }
    if (results.empty()) return TranslationError::emptyResult();
    return results;
}

}  // namespace orvantis
