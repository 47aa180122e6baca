#include "platform/freedesktop/os_release.h"

#include <fstream>
#include <optional>
#include <system_error>

namespace orvantis::freedesktop {
namespace {

// Files beyond this size are not os-release files; only their beginning is read.
constexpr std::size_t kMaxFileSize = 64 * 1024;

bool isSpace(char c) { return c == ' ' || c == '\t'; }

std::string_view trim(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && (isSpace(text.back()) || text.back() == '\r')) text.remove_suffix(1);
    return text;
}

bool isValidKey(std::string_view key) {
    if (key.empty()) return false;
    for (std::size_t i = 0; i < key.size(); ++i) {
        const char c = key[i];
        const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
        const bool digit = c >= '0' && c <= '9';
        if (!letter && !(digit && i > 0)) return false;
    }
    return true;
}

/// The value of one assignment with quotes and escapes resolved, or nullopt when malformed.
std::optional<std::string> unquote(std::string_view raw) {
    if (raw.empty()) return std::string();
    const char quote = raw.front();
    if (quote != '"' && quote != '\'') {
        // Unquoted: shell would split on blanks; os-release values that need them are quoted.
        std::string value;
        for (std::size_t i = 0; i < raw.size(); ++i) {
            if (raw[i] == '\\' && i + 1 < raw.size()) ++i;
            value += raw[i];
        }
        return value;
    }
    std::string value;
    std::size_t i = 1;
    for (; i < raw.size(); ++i) {
        const char c = raw[i];
        if (c == quote) break;
        if (quote == '"' && c == '\\' && i + 1 < raw.size()) {
            const char next = raw[i + 1];
            if (next == '"' || next == '\\' || next == '$' || next == '`') {
                value += next;
                ++i;
                continue;
            }
        }
        value += c;
    }
    if (i >= raw.size()) return std::nullopt;  // unterminated
    if (!trim(raw.substr(i + 1)).empty()) return std::nullopt;  // text after the closing quote
    return value;
}

std::string withoutControlCharacters(std::string value) {
    for (char& c : value) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = ' ';
    }
    return std::string(trim(value));
}

}  // namespace

OsRelease OsRelease::parse(std::string_view text) {
    OsRelease release;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = trim(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);

        if (line.empty() || line.front() == '#') continue;
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        const std::string_view key = line.substr(0, equals);
        if (!isValidKey(key)) continue;
        std::optional<std::string> value = unquote(line.substr(equals + 1));
        if (!value) continue;

        if (key == "PRETTY_NAME") {
            release.prettyName = withoutControlCharacters(std::move(*value));
        } else if (key == "NAME") {
            release.name = withoutControlCharacters(std::move(*value));
        } else if (key == "VERSION") {
            release.version = withoutControlCharacters(std::move(*value));
        }
    }
    return release;
}

OsRelease OsRelease::readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return {};
    std::string content(kMaxFileSize, '\0');
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(file.gcount()));
    return parse(content);
}

OsRelease OsRelease::readSystem() {
    std::error_code error;
    if (std::filesystem::exists("/etc/os-release", error)) return readFile("/etc/os-release");
    return readFile("/usr/lib/os-release");
}

std::string OsRelease::systemVersion() const {
    if (!prettyName.empty()) return prettyName;
    std::string result = name.empty() ? "Linux" : name;
    if (!version.empty()) result += " " + version;
    return result;
}

}  // namespace orvantis::freedesktop
