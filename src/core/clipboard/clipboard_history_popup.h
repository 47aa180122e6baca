#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/clipboard/clipboard_item.h"
#include "core/clipboard/uuid.h"

#include "platform/pointer.h"

namespace orvantis {

/// The texts that the clipboard popup shows, in the interface language. The count formats
/// hold %d placeholders: one (all items) and two (filtered, all).
struct ClipboardPopupTexts {
    std::string emptyText;
    std::string searchPlaceholder;
    std::string shortcutsHint;
    std::string countFormat;
    std::string countFilteredFormat;
    bool operator==(const ClipboardPopupTexts&) const = default;
};

/// The searchable list of clipboard entries beside the pointer, as the clipboard history
/// coordinator drives it; the window itself lives in the interface layer. It takes the keyboard
/// while shown without taking the focus from the application that will receive the paste.
/// Main thread only.
class ClipboardHistoryPopup {
public:
    using ItemCallback = std::function<void(const Uuid& id)>;

    virtual ~ClipboardHistoryPopup() = default;
    /// The chosen entry, called after the popup has closed.
    virtual void setOnConfirm(ItemCallback callback) = 0;
    /// Ctrl+Delete on the selected entry; the popup stays open.
    virtual void setOnDelete(ItemCallback callback) = 0;
    /// Ctrl+P on the selected entry; the popup stays open.
    virtual void setOnTogglePin(ItemCallback callback) = 0;
    /// The popup is closing, whatever the reason, a confirm included.
    virtual void setOnDismiss(std::function<void()> callback) = 0;
    /// Shows `items` (a snapshot) below `near` with an empty search field, the first entry
    /// selected; an open popup starts afresh.
    virtual void show(platform::ScreenPoint near, std::vector<ClipboardItem> items, ClipboardPopupTexts texts) = 0;
    /// Replaces the entries, keeping the search and the selected index; the top edge stays.
    virtual void refresh(std::vector<ClipboardItem> items) = 0;
    /// Closes and calls the dismiss callback; nothing while hidden.
    virtual void dismiss() = 0;
    virtual bool isVisible() const = 0;
};

}  // namespace orvantis
