#include "core/clipboard/clipboard_popup_model.h"

#include <algorithm>
#include <cstring>

#include "core/strings/string_format.h"
#include "core/text/case_mapping.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"

#include "platform/key_output.h"

namespace orvantis {
namespace {

namespace key_code = platform::key_code;
namespace key_flags = platform::key_flags;

/// The modifiers that the popup's rules look at; Caps Lock and the like don't count.
bool onlyCommand(std::uint64_t flags) { return (flags & key_flags::kModifierMask) == key_flags::kCommand; }

/// Lower case of `text` as text::lowercased() gives it; a text of ASCII alone (most of what
/// is copied) is mapped here without the round trip through the Unicode library.
std::string lowercasedForSearch(std::string_view text) {
    std::string lowered(text);
    // Eight bytes at a time: a byte from 'A' to 'Z' gets the bit 0x20. Any byte with the high
    // bit set sends the whole text to the library.
    constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
    constexpr std::uint64_t kHigh = 0x8080808080808080ULL;
    std::uint64_t seen = 0;
    std::size_t at = 0;
    for (; at + 8 <= lowered.size(); at += 8) {
        std::uint64_t word;
        std::memcpy(&word, lowered.data() + at, 8);
        seen |= word;
        const std::uint64_t fromA = word + kOnes * (0x80 - 'A');     // high bit: byte >= 'A'
        const std::uint64_t pastZ = word + kOnes * (0x80 - 'Z' - 1);  // high bit: byte > 'Z'
        word |= ((fromA & ~pastZ) & kHigh) >> 2;
        std::memcpy(lowered.data() + at, &word, 8);
    }
    for (; at < lowered.size(); ++at) {
        const auto byte = static_cast<unsigned char>(lowered[at]);
        seen |= byte;
        if (byte >= 'A' && byte <= 'Z') lowered[at] = static_cast<char>(byte + ('a' - 'A'));
    }
    if (seen & kHigh) return text::lowercased(text);
    return lowered;
}

}  // namespace

ClipboardPopupModel::ClipboardPopupModel(std::function<std::optional<PopupRect>()> visibleFrame)
    : visibleFrame_(std::move(visibleFrame)) {}

double ClipboardPopupModel::heightFor(std::size_t rowCount) {
    const std::size_t rows = std::min(std::max<std::size_t>(rowCount, 1), kMaxVisibleRows);
    return kChromeHeight + kRowHeight * static_cast<double>(rows);
}

void ClipboardPopupModel::show(PopupPoint pointer, std::vector<ClipboardItem> items, ClipboardPopupTexts texts) {
    setItems(std::move(items));
    searchText_.clear();
    selectedIndex_ = -1;
    applyFilter();
    texts_ = std::move(texts);
    const PopupSize size{kPopupWidth, heightFor(filteredItems_.size())};
    frame_ = placeBelowPointer(pointer, size, kPointerGap, visibleFrame_ ? visibleFrame_() : std::nullopt);
    visible_ = true;
}

void ClipboardPopupModel::refresh(std::vector<ClipboardItem> items) {
    setItems(std::move(items));
    applyFilter();
    resizeKeepingTop();
}

void ClipboardPopupModel::setSearchText(std::string text) {
    searchText_ = std::move(text);
    applyFilter();
    resizeKeepingTop();
}

bool ClipboardPopupModel::dismiss() {
    if (!visible_) return false;
    visible_ = false;
    return true;
}

void ClipboardPopupModel::setItems(std::vector<ClipboardItem> items) {
    allItems_ = std::move(items);
    filteredIndices_.clear();
    filteredNeedle_.clear();
    // Made here, with the list, so that no keystroke pays for it: the first one would otherwise
    // lower-case every text of the history.
    searchKeys_.clear();
    searchKeys_.reserve(allItems_.size());
    for (const ClipboardItem& item : allItems_) {
        const std::string* full = item.text();
        searchKeys_.push_back({lowercasedForSearch(item.previewText()), full ? lowercasedForSearch(*full) : std::string()});
    }
}

// The rule of filterClipboardItems(), over lower-cased texts kept from one keystroke to the
// next; while typing lengthens the needle only the entries that matched before are looked at.
void ClipboardPopupModel::applyFilter() {
    needle_ = text::lowercased(text::trimmed(searchText_, text::WhitespaceSet::whitespaces));
    if (needle_.empty()) {
        filteredItems_ = allItems_;
        filteredIndices_.clear();
        filteredNeedle_.clear();
    } else {
        std::vector<std::size_t> candidates;
        const bool narrowing = !filteredNeedle_.empty() && needle_.find(filteredNeedle_) != std::string::npos;
        if (narrowing) {
            candidates = std::move(filteredIndices_);
        } else {
            candidates.resize(allItems_.size());
            for (std::size_t i = 0; i < candidates.size(); ++i) candidates[i] = i;
        }
        // The library's find beats a Boyer-Moore-Horspool searcher on the short needles typed here.
        const auto contains = [&](const std::string& haystack) { return haystack.find(needle_) != std::string::npos; };
        filteredIndices_.clear();
        filteredItems_.clear();
        for (const std::size_t i : candidates) {
            if (contains(searchKeys_[i].preview) || (allItems_[i].isText() && contains(searchKeys_[i].text))) {
                filteredIndices_.push_back(i);
                filteredItems_.push_back(allItems_[i]);
            }
        }
        filteredNeedle_ = needle_;
    }
    if (selectedIndex_ < 0 || static_cast<std::size_t>(selectedIndex_) >= filteredItems_.size())
        selectedIndex_ = filteredItems_.empty() ? -1 : 0;
}

void ClipboardPopupModel::resizeKeepingTop() { frame_.height = heightFor(filteredItems_.size()); }

std::string ClipboardPopupModel::countText() const {
    if (!searchText_.empty())
        return formatString(texts_.countFilteredFormat, {static_cast<std::int64_t>(filteredItems_.size()),
                                                         static_cast<std::int64_t>(allItems_.size())});
    return formatString(texts_.countFormat, {static_cast<std::int64_t>(allItems_.size())});
}

ClipboardPopupOutcome ClipboardPopupModel::confirm(std::size_t index) const {
    if (index >= filteredItems_.size()) return ClipboardPopupOutcome::take();
    return ClipboardPopupOutcome::take(ClipboardPopupAction::confirm, filteredItems_[index].id());
}

ClipboardPopupOutcome ClipboardPopupModel::selectedEntry(ClipboardPopupAction action) const {
    if (selectedIndex_ < 0 || static_cast<std::size_t>(selectedIndex_) >= filteredItems_.size())
        return ClipboardPopupOutcome::take();
    return ClipboardPopupOutcome::take(action, filteredItems_[static_cast<std::size_t>(selectedIndex_)].id());
}

ClipboardPopupOutcome ClipboardPopupModel::handleKey(const PopupKey& key) {
    if (!visible_) return ClipboardPopupOutcome::passed();
    if (onlyCommand(key.flags)) {
        const auto digit = std::find(kDigitKeyCodes.begin(), kDigitKeyCodes.end(), key.keyCode);
        if (digit != kDigitKeyCodes.end()) return confirm(static_cast<std::size_t>(digit - kDigitKeyCodes.begin()));
        if (key.keyCode == kPinKeyCode) return selectedEntry(ClipboardPopupAction::togglePin);
        if (key.keyCode == key_code::kDelete) return selectedEntry(ClipboardPopupAction::remove);
    }
    switch (key.keyCode) {
        case key_code::kReturn:
        case kKeypadEnterKeyCode:
            if (selectedIndex_ < 0) return ClipboardPopupOutcome::take();
            return confirm(static_cast<std::size_t>(selectedIndex_));
        case key_code::kEscape:
            if (searchText_.empty()) return ClipboardPopupOutcome::take(ClipboardPopupAction::dismiss);
            setSearchText({});
            return ClipboardPopupOutcome::take(ClipboardPopupAction::contentChanged);
        case key_code::kDownArrow:
            if (selectedIndex_ + 1 < static_cast<int>(filteredItems_.size())) {
                ++selectedIndex_;
                return ClipboardPopupOutcome::take(ClipboardPopupAction::selectionChanged);
            }
            return ClipboardPopupOutcome::take();
        case key_code::kUpArrow:
            if (selectedIndex_ > 0) {
                --selectedIndex_;
                return ClipboardPopupOutcome::take(ClipboardPopupAction::selectionChanged);
            }
            return ClipboardPopupOutcome::take();
        default: return ClipboardPopupOutcome::passed();
    }
}

ClipboardPopupOutcome ClipboardPopupModel::click(std::size_t index, int clickCount) {
    if (!visible_ || index >= filteredItems_.size()) return ClipboardPopupOutcome::take();
    if (clickCount == 2) return confirm(index);
    selectedIndex_ = static_cast<int>(index);
    return ClipboardPopupOutcome::take(ClipboardPopupAction::selectionChanged);
}

std::vector<TextMatch> ClipboardPopupModel::matchesIn(std::string_view preview) const {
    return findMatches(preview, needle_);
}

std::vector<TextMatch> ClipboardPopupModel::findMatches(std::string_view text, std::string_view needle) {
    std::vector<TextMatch> matches;
    if (needle.empty() || text.empty()) return matches;
    // Lower-case code point by code point, remembering where each lowered byte came from, so
    // that a match in the lowered text maps back even where lower-casing changes the length.
    std::string lowered;
    std::vector<std::size_t> origin;  // per byte of `lowered`: the offset of its code point in `text`
    lowered.reserve(text.size());
    origin.reserve(text.size() + 1);
    std::size_t offset = 0;
    while (offset < text.size()) {
        const auto byte = static_cast<unsigned char>(text[offset]);
        std::size_t length = 1;
        if (byte >= 0xF0) length = 4;
        else if (byte >= 0xE0) length = 3;
        else if (byte >= 0xC0) length = 2;
        length = std::min(length, text.size() - offset);
        if (byte < 0x80) {
            lowered.push_back(static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte));
            origin.push_back(offset);
        } else {
            const std::string part = text::lowercased(text.substr(offset, length));
            lowered += part;
            origin.insert(origin.end(), part.size(), offset);
        }
        offset += length;
    }
    origin.push_back(text.size());
    for (std::size_t at = lowered.find(needle); at != std::string::npos; at = lowered.find(needle, at)) {
        const std::size_t endInLowered = at + needle.size();
        // The end maps to the start of the code point after the last lowered byte of the match.
        std::size_t end = origin[endInLowered];
        if (end <= origin[at]) end = origin[at] + 1;
        matches.push_back({origin[at], std::min(end, text.size())});
        at = endInLowered;
    }
    return matches;
}

}  // namespace orvantis
