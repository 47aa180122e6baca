#include "platform/freedesktop/desktop_entries.h"

#include <cstdlib>
#include <fstream>

#include "core/text/utf.h"
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

/// parse()'s answer with the reason of a refusal.
struct DesktopEntries::Parsed {
    std::optional<DesktopEntry> entry;
    const char* problem = nullptr;
};

DesktopEntries::DesktopEntries() : DesktopEntries(applicationFoldersOfTheEnvironment()) {}

DesktopEntries::DesktopEntries(const std::vector<std::filesystem::path>& applicationFolders) {
    for (const auto& folder : applicationFolders) readFolder(folder);
}

void DesktopEntries::readFolder(const std::filesystem::path& folder) {
    namespace fs = std::filesystem;
    std::error_code ec;
    // A sub-folder that cannot be entered is passed over; without the option it would end the walk.
    fs::recursive_directory_iterator it(folder, fs::directory_options::skip_permission_denied, ec), end;
    for (; !ec && it != end; it.increment(ec)) {
        const fs::path& path = it->path();
        if (path.extension() != ".desktop") continue;
        std::error_code entryError;
        const fs::file_status target = it->status(entryError);  // follows a link
        if (!fs::exists(target)) {
            if (it->is_symlink(entryError)) skipped_.push_back({path, "a link to nothing"});
            continue;
        }
        if (!fs::is_regular_file(target)) continue;  // a folder or a pipe named *.desktop: not a file to read
        std::string id = fs::relative(path, folder, entryError).replace_extension().string();
        if (entryError || id.empty()) continue;
        for (char& c : id)
            if (c == '/') c = '-';
        if (ids_.count(id) != 0) continue;
        readFile(path, std::move(id));
    }
}

void DesktopEntries::readFile(const std::filesystem::path& path, std::string id) {
    std::error_code ec;
    const std::uintmax_t size = std::filesystem::file_size(path, ec);
    if (ec) {
        skipped_.push_back({path, "its size cannot be read"});
        return;
    }
    if (size > kMaxFileSize) {
        skipped_.push_back({path, "larger than 1 MiB"});
        return;
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        skipped_.push_back({path, "cannot be read"});
        return;
    }
    std::string text(static_cast<std::size_t>(size), '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (in.bad()) {
        skipped_.push_back({path, "cannot be read"});
        return;
    }
    text.resize(static_cast<std::size_t>(in.gcount()));
    Parsed parsed = parseWithReason(id, text);
    if (!parsed.entry) {
        skipped_.push_back({path, parsed.problem});
        return;
    }
    ids_.insert(id);
    if (!parsed.entry->hidden) entries_.push_back(std::move(*parsed.entry));
}

std::optional<DesktopEntry> DesktopEntries::parse(std::string_view id, std::string_view text) {
    return parseWithReason(id, text).entry;
}

DesktopEntries::Parsed DesktopEntries::parseWithReason(std::string_view id, std::string_view text) {
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
        else if (key == "NoDisplay") entry.noDisplay = value == "true";
        else if (key == "Hidden") entry.hidden = value == "true";
    }
    if (!sawMainGroup) return {std::nullopt, "no [Desktop Entry] group"};
    if (entry.name.empty()) return {std::nullopt, "no Name"};
    if (!text::isValidUtf8(entry.name) || !text::isValidUtf8(entry.icon) || !text::isValidUtf8(entry.startupWMClass))
        return {std::nullopt, "not UTF-8"};
    return {std::move(entry), nullptr};
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
