#include "core/translation/translation_url.h"

#include <algorithm>

#include "core/text/utf.h"

namespace orvantis {
namespace {

bool isAsciiAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isAsciiDigit(char c) { return c >= '0' && c <= '9'; }
bool isHexDigit(char c) { return isAsciiDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

std::string asciiLowercased(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return out;
}

// A host name or an IPv4 address: the unreserved characters of a URL, nothing encoded.
bool isRegisteredName(std::string_view host) {
    return !host.empty() && std::all_of(host.begin(), host.end(), [](char c) {
        return isAsciiAlpha(c) || isAsciiDigit(c) || c == '-' || c == '.' || c == '_' || c == '~';
    });
}

// "[...]" holding an IPv6 address (hex digits, colons, and dots of an embedded IPv4 address).
bool isBracketedIpv6(std::string_view host) {
    if (host.size() < 4 || host.front() != '[' || host.back() != ']') return false;
    const std::string_view inner = host.substr(1, host.size() - 2);
    return inner.find(':') != std::string_view::npos &&
           std::all_of(inner.begin(), inner.end(), [](char c) { return isHexDigit(c) || c == ':' || c == '.'; });
}

bool isPort(std::string_view port) {
    if (port.empty() || port.size() > 5 || !std::all_of(port.begin(), port.end(), isAsciiDigit)) return false;
    const int value = std::stoi(std::string(port));
    return value >= 1 && value <= 65535;
}

bool isQueryText(std::string_view code) { return std::all_of(code.begin(), code.end(), isUrlQueryCharacter); }

}  // namespace

bool isUrlQueryCharacter(char c) {
    if (isAsciiAlpha(c) || isAsciiDigit(c)) return true;
    switch (c) {
        case '-': case '.': case '_': case '~':                                   // unreserved
        case '!': case '$': case '&': case '\'': case '(': case ')':              // sub-delims
        case '*': case '+': case ',': case ';': case '=':
        case ':': case '@': case '/': case '?':                                   // pchar and query
            return true;
        default:
            return false;
    }
}

std::optional<std::string> percentEncodedQuery(std::string_view text) {
    if (!text::isValidUtf8(text)) return std::nullopt;
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (isUrlQueryCharacter(c)) {
            out += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            out += '%';
            out += kHex[byte >> 4];
            out += kHex[byte & 0x0F];
        }
    }
    return out;
}

std::optional<std::string> translationEndpointOrigin(std::string_view endpoint) {
    const auto separator = endpoint.find("://");
    if (separator == std::string_view::npos) return std::nullopt;
    const std::string scheme = asciiLowercased(endpoint.substr(0, separator));
    if (scheme != "http" && scheme != "https") return std::nullopt;
    std::string_view authority = endpoint.substr(separator + 3);
    if (authority.ends_with('/')) authority.remove_suffix(1);

    std::string_view host = authority;
    std::string_view port;
    bool hasPort = false;
    if (authority.starts_with('[')) {
        const auto close = authority.find(']');
        if (close == std::string_view::npos) return std::nullopt;
        host = authority.substr(0, close + 1);
        const std::string_view rest = authority.substr(close + 1);
        if (!rest.empty()) {
            if (rest.front() != ':') return std::nullopt;
            hasPort = true;
            port = rest.substr(1);
        }
        if (!isBracketedIpv6(host)) return std::nullopt;
    } else {
        const auto colon = authority.find(':');
        if (colon != std::string_view::npos) {
            host = authority.substr(0, colon);
            hasPort = true;
            port = authority.substr(colon + 1);
        }
        if (!isRegisteredName(host)) return std::nullopt;
    }
    if (hasPort && !isPort(port)) return std::nullopt;
    return scheme + "://" + std::string(host) + (hasPort ? ":" + std::string(port) : std::string());
}

std::optional<std::string> translationUrl(std::string_view endpoint, std::string_view text, std::string_view from,
                                          std::string_view to, TranslationQuery query) {
    const auto origin = translationEndpointOrigin(endpoint);
    if (!origin || !isQueryText(from) || !isQueryText(to)) return std::nullopt;
    const auto encoded = percentEncodedQuery(text);
    if (!encoded) return std::nullopt;
    std::string url = *origin;
    url += "/translate_a/single?client=gtx&sl=";
    url += from;
    url += "&tl=";
    url += to;
    url += query == TranslationQuery::alternates ? "&dt=t&dt=at&dt=bd&q=" : "&dt=t&q=";
    url += *encoded;
    return url;
}

}  // namespace orvantis
