#include "platform/freedesktop/desktop_entries.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "platform/freedesktop/xdg_paths.h"

namespace orvantis::freedesktop {
namespace {

std::string lowered(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return out;
}

std::vector<std::filesystem::path> applicationFoldersOfTheEnvironment() {
    std::vector<std::filesystem::path> folders{XdgPaths::dataHome() / "applications"};
    const char* dirs = std::getenv("XDG_DATA_DIRS");
    std::string_view list = dirs != nullptr && *dirs != '\0' ? dirs : "/usr/local/share:/usr/share";
    while (!list.empty()) {
        const std::size_t colon = list.find(':');
        const std::string_view dir = list.substr(0, colon);
        if (!dir.empty() && dir.front() == '/') folders.push_back(std::filesystem::path(dir) / "applications");
        if (colon == std::string_view::npos) break;
        list.remove_prefix(colon + 1);
    }
    return folders;
}

}  // namespace

DesktopEntries::DesktopEntries() : DesktopEntries(applicationFoldersOfTheEnvironment()) {}

DesktopEntries::DesktopEntries(const std::vector<std::filesystem::path>& applicationFolders) {
    for (const auto& folder : applicationFolders) readFolder(folder);
}

void DesktopEntries::readFolder(const std::filesystem::path& folder) {
    std::error_code ec;
    std::filesystem::recursive_directory_iterator it(folder, ec), end;
    for (; !ec && it != end; it.increment(ec)) {
        const auto& path = it->path();
        if (path.extension() != ".desktop" || !it->is_regular_file(ec)) continue;
        std::string id = std::filesystem::relative(path, folder, ec).replace_extension().string();
        if (ec) continue;
        for (char& c : id)
            if (c == '/') c = '-';
        if (byID(id) != nullptr) continue;
        std::ifstream in(path, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        if (auto entry = parse(id, text.str())) entries_.push_back(std::move(*entry));
    }
}

std::optional<DesktopEntry> DesktopEntries::parse(std::string_view id, std::string_view text) {
    DesktopEntry entry{std::string(id), {}, {}, {}};
    bool inMainGroup = false, sawMainGroup = false;
    while (!text.empty()) {
        const std::size_t newline = text.find('\n');
        std::string_view line = text.substr(0, newline);
        text.remove_prefix(newline == std::string_view::npos ? text.size() : newline + 1);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (line.empty() || line.front() == '#') continue;
        if (line.front() == '[') {
            inMainGroup = line == "[Desktop Entry]";
            sawMainGroup |= inMainGroup;
            continue;
        }
        if (!inMainGroup) continue;
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        std::string_view key = line.substr(0, equals);
        while (!key.empty() && key.back() == ' ') key.remove_suffix(1);
        std::string_view value = line.substr(equals + 1);
        while (!value.empty() && value.front() == ' ') value.remove_prefix(1);
        if (key == "Name") entry.name = value;
        else if (key == "StartupWMClass") entry.startupWMClass = value;
        else if (key == "Icon") entry.icon = value;
    }
    if (!sawMainGroup || entry.name.empty()) return std::nullopt;
    return entry;
}

const DesktopEntry* DesktopEntries::byID(std::string_view id) const {
    for (const auto& entry : entries_)
        if (entry.id == id) return &entry;
    return nullptr;
}

const DesktopEntry* DesktopEntries::forWindowClass(std::string_view instanceName, std::string_view className) const {
    for (std::string_view wanted : {className, instanceName}) {
        if (wanted.empty()) continue;
        for (const auto& entry : entries_)
            if (entry.startupWMClass == wanted) return &entry;
    }
    for (std::string_view wanted : {className, instanceName}) {
        if (wanted.empty()) continue;
        const std::string key = lowered(wanted);
        for (const auto& entry : entries_)
            if (lowered(entry.id) == key) return &entry;
    }
    return nullptr;
}

}  // namespace orvantis::freedesktop
