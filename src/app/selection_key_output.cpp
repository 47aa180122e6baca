#include "app/selection_key_output.h"

namespace orvantis::app {

void SelectionKeyOutput::copy() {
    const std::optional<std::string> selected = selection_.selectionText();
    if (!selected || selected->empty()) return;
    pasteboard_.write(platform::PasteboardItem::text(*selected));
}

void SelectionKeyOutput::paste() {
    if (const std::optional<std::string> text = pasteboard_.text()) selection_.setSelectionText(*text);
    keys_.postKey(platform::key_code::kHelp, platform::key_flags::kShift);
}

}  // namespace orvantis::app
