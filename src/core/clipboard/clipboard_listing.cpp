#include "core/clipboard/clipboard_listing.h"

#include <cstdint>

#include <nlohmann/json.hpp>

namespace orvantis {
namespace {

/// The preview with every character that would break the line or the columns as a blank:
/// C0 controls (tab, line feed, carriage return…), DEL, C1 controls (NEL among them), and the
/// line and paragraph separators.
std::string oneLine(std::string_view preview) {
    std::string out;
    out.reserve(preview.size());
    for (std::size_t i = 0; i < preview.size();) {
        const auto byte = static_cast<unsigned char>(preview[i]);
        if (byte < 0x20 || byte == 0x7F) {
            out.push_back(' ');
            ++i;
        } else if (byte == 0xC2 && i + 1 < preview.size() && static_cast<unsigned char>(preview[i + 1]) >= 0x80 &&
                   static_cast<unsigned char>(preview[i + 1]) <= 0x9F) {
            out.push_back(' ');
            i += 2;
        } else if (preview.substr(i, 3) == "\u2028" || preview.substr(i, 3) == "\u2029") {
            out.push_back(' ');
            i += 3;
        } else {
            out.push_back(preview[i]);
            ++i;
        }
    }
    return out;
}

bool fail(std::string* error, std::string message) {
    if (error != nullptr) *error = std::move(message);
    return false;
}

bool readEntry(const nlohmann::json& value, std::size_t index, ClipboardListingEntry& entry, std::string* error) {
    const std::string where = "entry " + std::to_string(index);
    if (!value.is_object()) return fail(error, where + " is no object");
    auto string = [&](const char* key, std::string& out) {
        const auto found = value.find(key);
        if (found == value.end() || !found->is_string()) return fail(error, where + ": \"" + key + "\" is no string");
        out = found->get<std::string>();
        return true;
    };
    auto boolean = [&](const char* key, bool& out) {
        const auto found = value.find(key);
        if (found == value.end() || !found->is_boolean()) return fail(error, where + ": \"" + key + "\" is no boolean");
        out = found->get<bool>();
        return true;
    };
    auto optionalString = [&](const char* key, std::optional<std::string>& out) {
        const auto found = value.find(key);
        if (found == value.end() || found->is_null()) return true;
        if (!found->is_string()) return fail(error, where + ": \"" + key + "\" is no string");
        out = found->get<std::string>();
        return true;
    };
    return string("id", entry.id) && string("preview", entry.preview) && boolean("isPinned", entry.isPinned) &&
           boolean("isText", entry.isText) && optionalString("text", entry.text) &&
           optionalString("sourceBundleID", entry.sourceBundleID);
}

}  // namespace

std::vector<ClipboardListingEntry> clipboardListing(const std::vector<ClipboardItem>& items) {
    std::vector<ClipboardListingEntry> entries;
    entries.reserve(items.size());
    for (const ClipboardItem& item : items) {
        ClipboardListingEntry entry;
        entry.id = item.id().toString();
        entry.preview = item.previewText();
        entry.isPinned = item.isPinned();
        entry.isText = item.isText();
        if (const std::string* text = item.text()) entry.text = *text;
        entry.sourceBundleID = item.sourceBundleID();
        entries.push_back(std::move(entry));
    }
    return entries;
}

std::string encodeClipboardListing(const std::vector<ClipboardListingEntry>& entries) {
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    for (const ClipboardListingEntry& entry : entries) {
        nlohmann::ordered_json object;
        object["id"] = entry.id;
        object["preview"] = entry.preview;
        object["isPinned"] = entry.isPinned;
        object["isText"] = entry.isText;
        if (entry.text) object["text"] = *entry.text;
        if (entry.sourceBundleID) object["sourceBundleID"] = *entry.sourceBundleID;
        array.push_back(std::move(object));
    }
    return array.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::optional<std::vector<ClipboardListingEntry>> decodeClipboardListing(std::string_view json, std::string* error) {
    const auto value = nlohmann::json::parse(json, nullptr, /*allow_exceptions=*/false);
    if (value.is_discarded()) {
        fail(error, "the listing is no JSON");
        return std::nullopt;
    }
    if (!value.is_array()) {
        fail(error, "the listing is no array");
        return std::nullopt;
    }
    std::vector<ClipboardListingEntry> entries(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (!readEntry(value[i], i, entries[i], error)) return std::nullopt;
    }
    return entries;
}

std::string formatClipboardListing(const std::vector<ClipboardListingEntry>& entries) {
    std::string out;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        out += std::to_string(i + 1);
        out += '\t';
        out += entries[i].isPinned ? '*' : '-';
        out += '\t';
        out += oneLine(entries[i].preview);
        out += '\n';
    }
    return out;
}

}  // namespace orvantis
