#pragma once

#include <string_view>
#include <vector>

#include "core/clipboard/clipboard_item.h"

namespace orvantis {

/// The clipboard popup's search: `searchText` trimmed of blanks and tabs and lower-cased is the
/// needle; an empty needle keeps every item. Otherwise an item stays when its lower-cased
/// preview contains the needle, or, for a text item, its lower-cased full text does, so the
/// search reaches beyond the preview line; other items match on their preview alone (its emoji
/// and name). The order stays.
std::vector<ClipboardItem> filterClipboardItems(const std::vector<ClipboardItem>& items, std::string_view searchText);

}  // namespace orvantis
