#include "platform/freedesktop/autostart_entry.h"

#include <system_error>
#include <utility>

#include "core/files/file_io.h"
#include "platform/freedesktop/xdg_paths.h"

namespace orvantis::freedesktop {
namespace {

/// Larger than any autostart entry a person writes; a bigger file is read as not ours.
constexpr std::size_t kMaxEntrySize = 64 * 1024;

/// The characters that make an Exec argument need quotes.
constexpr std::string_view kReserved = " \t\n\"'\\><~|&;$*?#()`";

std::string_view trimmed(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
    return s;
}

}  // namespace

AutostartEntry::AutostartEntry(std::filesystem::path file, std::filesystem::path executable)
    : file_(std::move(file)), executable_(std::move(executable)) {}

std::filesystem::path AutostartEntry::defaultFile() { return XdgPaths::configHome() / "autostart" / "orvantis.desktop"; }

std::filesystem::path AutostartEntry::launchTarget(const std::filesystem::path& runningExecutable,
                                                   const std::filesystem::path& installedBinary) {
    std::error_code error;
    if (!installedBinary.empty() && std::filesystem::equivalent(runningExecutable, installedBinary, error))
        return installedBinary;
    return runningExecutable;
}

std::filesystem::path AutostartEntry::runningExecutable() {
    std::error_code error;
    auto path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : path;
}

std::string AutostartEntry::execValue(std::string_view executable) {
    std::string argument;
    if (executable.find_first_of(kReserved) == std::string_view::npos) {
        argument = executable;
    } else {
        argument = "\"";
        for (const char c : executable) {
            if (c == '"' || c == '`' || c == '$' || c == '\\') argument += '\\';
            argument += c;
        }
        argument += '"';
    }
    // The value is a desktop file string (backslash escapes) holding a command line (% codes).
    std::string value;
    for (const char c : argument) {
        if (c == '\\') value += "\\\\";
        else if (c == '%') value += "%%";
        else value += c;
    }
    return value;
}

std::optional<std::string> AutostartEntry::entryText(const std::filesystem::path& executable) {
    const std::string path = executable.string();
    if (path.empty()) return std::nullopt;
    for (const unsigned char c : path)
        if (c < 0x20 || c == 0x7f) return std::nullopt;
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Orvantis\n"
           "Comment=Retype words typed in the wrong layout, translate selections, keep a clipboard history\n"
           "Comment[ru]=Перепечатывает слова, набранные не в той раскладке, переводит выделенное, хранит историю "
           "буфера обмена\n"
           "Exec=" +
           execValue(path) +
           "\n"
           "Icon=org.orvantis.Orvantis\n"
           "Terminal=false\n"
           "NoDisplay=true\n"
           "X-GNOME-Autostart-enabled=true\n";
}

bool AutostartEntry::textIsEnabled(std::string_view text) {
    bool inMainGroup = false;
    bool sawMainGroup = false;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = trimmed(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (line.empty() || line.front() == '#') continue;
        if (line.front() == '[') {
            inMainGroup = line == "[Desktop Entry]";
            sawMainGroup = sawMainGroup || inMainGroup;
            continue;
        }
        if (!inMainGroup) continue;
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        const std::string_view key = trimmed(line.substr(0, equals));
        const std::string_view value = trimmed(line.substr(equals + 1));
        if (key == "Hidden" && value == "true") return false;
        if (key == "X-GNOME-Autostart-enabled" && value == "false") return false;
    }
    return sawMainGroup;
}

bool AutostartEntry::isEnabled() const {
    const files::FileRead read = files::readWholeFile(file_, kMaxEntrySize);
    return read.status == files::FileRead::Status::Read && textIsEnabled(read.bytes);
}

std::optional<std::string> AutostartEntry::registerItem() {
    const auto text = entryText(executable_);
    if (!text) return "the program's path \"" + executable_.string() + "\" cannot be written in an autostart entry";
    std::error_code error;
    std::filesystem::create_directories(file_.parent_path(), error);
    if (error) return "cannot create " + file_.parent_path().string() + ": " + error.message();
    if (const int failure = files::replaceFile(file_, *text); failure != 0)
        return "cannot write " + file_.string() + ": " + files::errnoText(failure);
    return std::nullopt;
}

std::optional<std::string> AutostartEntry::unregisterItem() {
    std::error_code error;
    std::filesystem::remove(file_, error);
    if (error) return "cannot remove " + file_.string() + ": " + error.message();
    return std::nullopt;
}

}  // namespace orvantis::freedesktop
