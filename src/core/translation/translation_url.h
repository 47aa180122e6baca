#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvantis {

/// The endpoint used when the preference holds nothing else.
inline constexpr std::string_view kDefaultTranslationEndpoint = "https://translate.googleapis.com";

/// Which parts of the reply a request asks for.
enum class TranslationQuery {
    translation,  ///< the translation segments only ("dt=t")
    alternates,   ///< segments, alternative translations and dictionary ("dt=t&dt=at&dt=bd")
};

/// True for the bytes that may stand unencoded in a URL query: letters, digits, "-._~",
/// "!$&'()*+,;=", ":@/?".
bool isUrlQueryCharacter(char c);

/// `text` as it may stand in a URL query: every byte outside the query characters as "%XX"
/// (upper-case hex) of its UTF-8, the query characters themselves as they are, so "&", "="
/// and "+" pass unencoded. Nullopt when `text` is not well-formed UTF-8.
std::optional<std::string> percentEncodedQuery(std::string_view text);

/// "scheme://host[:port]" of an endpoint written as "http(s)://host[:port]", with or without
/// one slash at the end; the scheme comes back in lower case. Nullopt for anything else: a
/// path, a query, user information, an empty host, a port outside 1...65535.
std::optional<std::string> translationEndpointOrigin(std::string_view endpoint);

/// The whole request URL: the endpoint's origin, "/translate_a/single?client=gtx&sl=", the
/// source code as it stands, "&tl=", the target code as it stands, the tail of `query` and the
/// encoded text. Nullopt when the endpoint is unusable, a code holds a character that has no
/// place in a URL query, or the text is not well-formed UTF-8.
std::optional<std::string> translationUrl(std::string_view endpoint, std::string_view text, std::string_view from,
                                          std::string_view to, TranslationQuery query);

}  // namespace orvantis
