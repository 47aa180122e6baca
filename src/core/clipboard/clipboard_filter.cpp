#include "core/clipboard/clipboard_filter.h"

#include <string>

#include "core/text/case_mapping.h"
#include "core/text/whitespace.h"

namespace orvantis {

std::vector<ClipboardItem> filterClipboardItems(const std::vector<ClipboardItem>& items, std::string_view searchText) {
    const std::string needle = text::lowercased(text::trimmed(searchText, text::WhitespaceSet::whitespaces));
    if (needle.empty()) return items;
    std::vector<ClipboardItem> kept;
    for (const ClipboardItem& item : items) {
        bool match = text::lowercased(item.previewText()).find(needle) != std::string::npos;
        if (!match && item.isText()) {
            if (const std::string* full = item.text()) match = text::lowercased(*full).find(needle) != std::string::npos;
        }
        if (match) kept.push_back(item);
    }
    return kept;
}

}  // namespace orvantis
