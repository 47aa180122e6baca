#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/clipboard/clipboard_history_popup.h"
#include "core/clipboard/clipboard_item.h"
#include "core/clipboard/uuid.h"
#include "core/popup/popup_geometry.h"
#include "core/popup/translation_popup_model.h"

namespace orvantis {

/// What the clipboard popup's window must do after a key, a click or a change of the search.
enum class ClipboardPopupAction {
    none,              ///< nothing to redraw
    selectionChanged,  ///< redraw the highlight and scroll the selected row into view
    contentChanged,    ///< the search was cleared: rebuild the rows, the count and the frame
    confirm,           ///< close, then hand `id` over
    togglePin,         ///< hand `id` over to be pinned or unpinned; stay open
    remove,            ///< hand `id` over to be deleted; stay open
    dismiss,           ///< close without a choice
};

struct ClipboardPopupOutcome {
    /// False when the key is not the popup's and goes on to the search field.
    bool taken = true;
    ClipboardPopupAction action = ClipboardPopupAction::none;
    /// The entry of `confirm`, `togglePin` and `remove`.
    std::optional<Uuid> id;

    static ClipboardPopupOutcome passed() { return {false, ClipboardPopupAction::none, std::nullopt}; }
    static ClipboardPopupOutcome take(ClipboardPopupAction action = ClipboardPopupAction::none,
                                      std::optional<Uuid> id = std::nullopt) {
        return {true, action, std::move(id)};
    }
    bool operator==(const ClipboardPopupOutcome&) const = default;
};

/// A marked stretch of a preview: byte offsets into its UTF-8.
struct TextMatch {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool operator==(const TextMatch&) const = default;
};

/// The clipboard popup without its window: the entries handed over, the filtered list and the
/// selection, the search text, the key and mouse rules and the frame of the window in screen
/// coordinates (downward y, see popup/popup_geometry.h). The window shows what this says and
/// asks it after each event. Owned by the popup's controller; main thread only.
class ClipboardPopupModel {
public:
    // The numbers of the design, in logical pixels.
    static constexpr double kPopupWidth = 440;
    static constexpr double kRowHeight = 36;
    static constexpr double kSearchHeight = 32;
    static constexpr double kFooterHeight = 24;
    static constexpr double kMargins = 10;  ///< around the search field, the rows and the footer
    static constexpr double kChromeHeight = kSearchHeight + kFooterHeight + kMargins;  // 66
    static constexpr std::size_t kMaxVisibleRows = 10;
    static constexpr double kPointerGap = 8;  ///< the top edge stands this far below the pointer

    /// Key codes of the digits 1 to 9, whose Ctrl form confirms the entry at that position.
    static constexpr std::array<std::uint16_t, 9> kDigitKeyCodes{18, 19, 20, 21, 23, 22, 26, 28, 25};
    static constexpr std::uint16_t kPinKeyCode = 35;  ///< P
    static constexpr std::uint16_t kKeypadEnterKeyCode = 76;

    /// `visibleFrame` is asked each time a frame is placed: the screen less panels, or nullopt
    /// when there is no screen (the frame then stays where the pointer puts it).
    explicit ClipboardPopupModel(std::function<std::optional<PopupRect>()> visibleFrame);

    /// Opens afresh: `items` become all and the filtered entries, the search is empty, the first
    /// entry is selected (-1 without entries); the frame hangs 8 below `pointer`, clamped.
    void show(PopupPoint pointer, std::vector<ClipboardItem> items, ClipboardPopupTexts texts);
    /// Replaces all entries (after a pin or a delete), filters them again and resizes with the
    /// top edge fixed. The selected index stays when it is still in range.
    void refresh(std::vector<ClipboardItem> items);
    /// The search field holds `text` now: filter by the rule of filterClipboardItems() and
    /// resize with the top edge fixed.
    void setSearchText(std::string text);
    /// Closes. Answers false, changing nothing, when the popup was not visible.
    bool dismiss();

    /// The key rules: Ctrl with 1-9 confirms that position (out of range: taken, nothing
    /// happens); Ctrl+P toggles the pin and Ctrl+Backspace deletes the selected entry; Return
    /// and keypad Enter confirm the selected entry; Esc clears a search, or dismisses with an
    /// empty one; Down and Up move without wrapping. Anything else passes on to the search
    /// field. Nothing is taken while hidden.
    ClipboardPopupOutcome handleKey(const PopupKey& key);
    /// A press on row `index`: a click count of 2 confirms it, any other count selects it.
    ClipboardPopupOutcome click(std::size_t index, int clickCount);
    /// Confirming row `index`: the entry's id, or nothing for an index out of range.
    ClipboardPopupOutcome confirm(std::size_t index) const;

    bool isVisible() const { return visible_; }
    const std::vector<ClipboardItem>& allItems() const { return allItems_; }
    const std::vector<ClipboardItem>& filteredItems() const { return filteredItems_; }
    /// Index into filteredItems(); -1 when there is nothing to select.
    int selectedIndex() const { return selectedIndex_; }
    const std::string& searchText() const { return searchText_; }
    const ClipboardPopupTexts& texts() const { return texts_; }
    /// "%d of %d" with a search (even one of blanks), else "%d items".
    std::string countText() const;
    /// Whether the empty label stands in place of the rows.
    bool showsEmptyLabel() const { return filteredItems_.empty(); }
    /// Whether there are more rows than fit, so the list scrolls.
    bool scrolls() const { return filteredItems_.size() > kMaxVisibleRows; }
    /// The window's frame; meaningful while visible.
    const PopupRect& frame() const { return frame_; }
    /// The stretches of `preview` to mark for the present search: every occurrence of the
    /// trimmed search term, compared in lower case. None without a term.
    std::vector<TextMatch> matchesIn(std::string_view preview) const;

    /// Height for `rowCount` filtered entries: room for one row at least, ten at most.
    static double heightFor(std::size_t rowCount);
    /// Every occurrence of `needle` (already lower-cased) in `text`, compared in lower case,
    /// as byte ranges of `text`; occurrences do not overlap.
    static std::vector<TextMatch> findMatches(std::string_view text, std::string_view needle);

private:
    /// An entry's preview and full text in lower case, made when the list is handed over: the
    /// search runs on every keystroke over texts of any length.
    struct SearchKey {
        std::string preview;
        std::string text;
    };

    void setItems(std::vector<ClipboardItem> items);
    void applyFilter();
    void resizeKeepingTop();
    ClipboardPopupOutcome selectedEntry(ClipboardPopupAction action) const;

    std::function<std::optional<PopupRect>()> visibleFrame_;
    bool visible_ = false;
    std::vector<ClipboardItem> allItems_;
    std::vector<ClipboardItem> filteredItems_;
    std::vector<SearchKey> searchKeys_;          ///< for allItems_, in its order
    std::vector<std::size_t> filteredIndices_;  ///< into allItems_
    std::string filteredNeedle_;                ///< the needle that filteredIndices_ answer
    int selectedIndex_ = -1;
    std::string searchText_;
    std::string needle_;  ///< the trimmed, lower-cased search term
    ClipboardPopupTexts texts_;
    PopupRect frame_{};
};

}  // namespace orvantis
