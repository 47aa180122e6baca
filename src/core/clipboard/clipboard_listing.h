#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/clipboard/clipboard_item.h"

namespace orvantis {

/// One history entry as `orvantis clipboard list` shows it, and as the running program hands it
/// over the session bus. A value record, independent of the history's own types.
struct ClipboardListingEntry {
    std::string id;  ///< the entry's UUID, upper case
    std::string preview;
    bool isPinned = false;
    bool isText = false;
    std::optional<std::string> text;            ///< the full text; text entries only
    std::optional<std::string> sourceBundleID;  ///< when it was known at the capture
    bool operator==(const ClipboardListingEntry&) const = default;
};

/// The entries for `items`, in the same order (the history's `items()` order: pinned first).
std::vector<ClipboardListingEntry> clipboardListing(const std::vector<ClipboardItem>& items);

/// The listing as one compact JSON array of objects with the keys `id`, `preview`, `isPinned`,
/// `isText`, `text` (text entries only) and `sourceBundleID` (when known), in that order.
/// Bytes that are no UTF-8 (only a foreign bundle id could hold them) become U+FFFD.
std::string encodeClipboardListing(const std::vector<ClipboardListingEntry>& entries);

/// Reads what encodeClipboardListing wrote. Nullopt when the bytes are no such array; then
/// `error`, when given, says where the fault lies (never what the entries hold).
std::optional<std::vector<ClipboardListingEntry>> decodeClipboardListing(std::string_view json,
                                                                         std::string* error = nullptr);

/// One line per entry: its position from 1, a tab, `*` when pinned or `-`, a tab, the preview.
/// Line breaks, tabs and other control characters in a preview (a text of blanks is its own
/// preview, line breaks included) become one blank each, so every entry stays on one line.
std::string formatClipboardListing(const std::vector<ClipboardListingEntry>& entries);

}  // namespace orvantis
