#include "app/clipboard_command.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include "core/clipboard/clipboard_filter.h"
#include "core/clipboard/clipboard_item.h"
#include "core/clipboard/clipboard_listing.h"
#include "core/clipboard/clipboard_snapshot.h"
#include "core/text/utf.h"
#include "platform/freedesktop/clipboard_bus.h"
#include "platform/freedesktop/xdg_paths.h"

namespace orvantis::app {
namespace {

constexpr std::string_view kClipboardUsage =
    "usage: orvantis clipboard list [--json]\n"
    "       orvantis clipboard search [--json] TEXT\n"
    "       orvantis clipboard clear\n";

int usageError(std::string_view message) {
    std::cerr << "orvantis: " << message << '\n' << kClipboardUsage;
    return 2;
}

int failure(std::string_view message) {
    std::cerr << "orvantis: clipboard: " << message << '\n';
    return 1;
}

std::filesystem::path snapshotFile() { return freedesktop::XdgPaths::dataDirectory() / "clipboard.json"; }

/// The entries of the snapshot file in the history's order (pinned first), or nullopt with
/// the reason in `error`. No file is an empty history. The file is only read.
std::optional<std::vector<ClipboardItem>> readSnapshotItems(const std::filesystem::path& file, std::string& error) {
    std::error_code ec;
    const auto status = std::filesystem::status(file, ec);
    if (status.type() == std::filesystem::file_type::not_found) return std::vector<ClipboardItem>{};
    if (ec) {
        error = ec.message();
        return std::nullopt;
    }
    if (status.type() != std::filesystem::file_type::regular) {
        error = "not a regular file";
        return std::nullopt;
    }
    std::ifstream in(file, std::ios::binary);
    if (!in.is_open()) {
        error = "could not be opened";
        return std::nullopt;
    }
    // An empty file copies nothing (and sets the stream's fail bit); it is then damaged like
    // any other file that is no JSON.
    std::ostringstream bytes;
    bytes << in.rdbuf();
    std::optional<ClipboardSnapshot> snapshot = decodeSnapshot(bytes.str(), &error);
    if (!snapshot) return std::nullopt;
    std::vector<ClipboardItem> items;
    items.reserve(snapshot->pinned.size() + snapshot->unpinned.size());
    for (auto& record : snapshot->pinned) items.emplace_back(std::move(record));
    for (auto& record : snapshot->unpinned) items.emplace_back(std::move(record));
    return items;
}

void printListing(const std::vector<ClipboardListingEntry>& entries, bool json) {
    if (json) std::cout << encodeClipboardListing(entries) << '\n';
    else std::cout << formatClipboardListing(entries);
}

int runList(const ClipboardBusClient& bus, const std::optional<std::string>& search, bool json) {
    const freedesktop::ClipboardBusReply reply =
        bus.list(search ? std::optional<std::string_view>(*search) : std::nullopt);
    const std::filesystem::path file = snapshotFile();
    switch (reply.status) {
        case freedesktop::ClipboardBusReply::Status::Answered: {
            std::string problem;
            const auto entries = decodeClipboardListing(reply.text, &problem);
            if (!entries) return failure("the running Orvantis sent a listing that does not read: " + problem);
            printListing(*entries, json);
            return 0;
        }
        case freedesktop::ClipboardBusReply::Status::Failed:
            return failure(reply.text);
        case freedesktop::ClipboardBusReply::Status::TooLarge:
            // The file holds the text entries as of the last save; the entries that are not text
            // live only in the running program.
            std::cerr << "orvantis: the history is too large for the session bus; "
                      << (search ? "searched" : "listed from") << " the snapshot file " << file.string() << '\n';
            break;
        case freedesktop::ClipboardBusReply::Status::NotRunning:
            break;
    }
    std::string problem;
    std::optional<std::vector<ClipboardItem>> items = readSnapshotItems(file, problem);
    if (!items) return failure("the saved history " + file.string() + " is damaged or unreadable (" + problem + ")");
    printListing(clipboardListing(search ? filterClipboardItems(*items, *search) : *items), json);
    return 0;
}

int runClear(const ClipboardBusClient& bus) {
    const freedesktop::ClipboardBusReply reply = bus.clear();
    switch (reply.status) {
        case freedesktop::ClipboardBusReply::Status::Answered:
            return 0;
        case freedesktop::ClipboardBusReply::Status::Failed:
        case freedesktop::ClipboardBusReply::Status::TooLarge:
            return failure(reply.text);
        case freedesktop::ClipboardBusReply::Status::NotRunning:
            break;
    }
    // The program is not running: its whole history is the file, pinned entries included.
    const std::filesystem::path file = snapshotFile();
    std::error_code ec;
    std::filesystem::remove(file, ec);
    if (ec) return failure("could not remove " + file.string() + " (" + ec.message() + ")");
    return 0;
}

}  // namespace

ClipboardBusClient sessionBusClipboardClient() {
    ClipboardBusClient client;
    client.list = [](std::optional<std::string_view> search) {
        return freedesktop::listRunningClipboard(search, kClipboardBusTimeout);
    };
    client.clear = [] { return freedesktop::clearRunningClipboard(kClipboardBusTimeout); };
    return client;
}

int runClipboardCommand(const std::vector<std::string>& args, const ClipboardBusClient& bus) {
    if (args.size() < 2) return usageError("clipboard needs a command: list, search or clear");
    const std::string& command = args[1];
    if (command != "list" && command != "search" && command != "clear") {
        return usageError("unknown clipboard command \"" + command + "\"");
    }
    bool json = false;
    bool optionsEnded = false;
    std::vector<std::string> operands;
    for (std::size_t i = 2; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (!optionsEnded && arg == "--") optionsEnded = true;
        else if (!optionsEnded && arg == "--json" && command != "clear") json = true;
        else if (!optionsEnded && arg.starts_with("--")) return usageError("unknown option \"" + arg + "\" for clipboard " + command);
        else operands.push_back(arg);
    }
    if (command == "clear") {
        if (!operands.empty()) return usageError("clipboard clear takes no arguments");
        return runClear(bus);
    }
    if (command == "list") {
        if (!operands.empty()) return usageError("clipboard list takes no arguments but --json");
        return runList(bus, std::nullopt, json);
    }
    if (operands.size() != 1) return usageError("clipboard search takes one TEXT (quote one with spaces)");
    if (!text::isValidUtf8(operands[0])) {
        std::cerr << "orvantis: clipboard search: TEXT is not valid UTF-8\n";
        return 2;
    }
    return runList(bus, operands[0], json);
}

}  // namespace orvantis::app
