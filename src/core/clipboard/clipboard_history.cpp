#include "core/clipboard/clipboard_history.h"

#include <algorithm>

namespace orvantis {

ClipboardHistory::ClipboardHistory(std::int64_t maxSize) : maxSize_(clamp(maxSize)) {}

std::vector<ClipboardItem> ClipboardHistory::items() const {
    std::vector<ClipboardItem> all;
    all.reserve(count());
    all.insert(all.end(), pinned_.begin(), pinned_.end());
    all.insert(all.end(), unpinned_.begin(), unpinned_.end());
    return all;
}

void ClipboardHistory::add(ClipboardItem item) {
    const std::string_view key = item.dedupKey();
    const ClipboardItem* first = !pinned_.empty() ? &pinned_.front() : (!unpinned_.empty() ? &unpinned_.front() : nullptr);
    if (first != nullptr && first->dedupKey() == key) return;

    // Only the pinned list decides whether the content stays pinned.
    const auto previous = std::find_if(pinned_.begin(), pinned_.end(),
                                       [&](const ClipboardItem& e) { return e.dedupKey() == key; });
    const bool wasPinned = previous != pinned_.end() && previous->isPinned();

    auto sameKey = [&](const ClipboardItem& e) { return e.dedupKey() == key; };
    std::erase_if(pinned_, sameKey);
    std::erase_if(unpinned_, sameKey);

    // `key` views `item`: it is not used past this point.
    if (wasPinned) {
        item.setPinned(true);
        pinned_.insert(pinned_.begin(), std::move(item));
    } else {
        unpinned_.insert(unpinned_.begin(), std::move(item));
        evictIfNeeded();
    }
    changed_.notify();
}

void ClipboardHistory::clear() {
    pinned_.clear();
    unpinned_.clear();
    changed_.notify();
}

void ClipboardHistory::remove(const Uuid& id) {
    auto sameId = [&](const ClipboardItem& e) { return e.id() == id; };
    std::erase_if(pinned_, sameId);
    std::erase_if(unpinned_, sameId);
    changed_.notify();
}

void ClipboardHistory::resize(std::int64_t maxSize) {
    maxSize_ = clamp(maxSize);
    evictIfNeeded();
    changed_.notify();
}

void ClipboardHistory::togglePin(const Uuid& id) {
    auto sameId = [&](const ClipboardItem& e) { return e.id() == id; };
    if (auto it = std::find_if(pinned_.begin(), pinned_.end(), sameId); it != pinned_.end()) {
        ClipboardItem entry = std::move(*it);
        pinned_.erase(it);
        entry.setPinned(false);
        unpinned_.insert(unpinned_.begin(), std::move(entry));
        evictIfNeeded();
    } else if (auto jt = std::find_if(unpinned_.begin(), unpinned_.end(), sameId); jt != unpinned_.end()) {
        ClipboardItem entry = std::move(*jt);
        unpinned_.erase(jt);
        entry.setPinned(true);
        pinned_.insert(pinned_.begin(), std::move(entry));
    }
    changed_.notify();
}

void ClipboardHistory::restore(std::vector<ClipboardItem> pinned, std::vector<ClipboardItem> unpinned) {
    pinned_ = std::move(pinned);
    unpinned_ = std::move(unpinned);
    evictIfNeeded();
}

void ClipboardHistory::evictIfNeeded() {
    if (static_cast<std::int64_t>(unpinned_.size()) > maxSize_)
        unpinned_.erase(unpinned_.begin() + static_cast<std::ptrdiff_t>(maxSize_), unpinned_.end());
}

std::int64_t ClipboardHistory::clamp(std::int64_t n) { return std::min(std::max(n, kMinSize), kMaxSize); }

}  // namespace orvantis
