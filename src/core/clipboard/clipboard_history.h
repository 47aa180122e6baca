#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "core/clipboard/clipboard_item.h"
#include "core/clipboard/uuid.h"

#include "platform/subscription.h"

namespace orvantis {

/// The clipboard history in memory: pinned entries and the others, each list newest first.
/// Pinned entries are unbounded and never evicted; the unpinned list holds at most `maxSize`
/// (1 to 200) after every operation. Position alone carries recency: nothing is sorted by time.
///
/// Every operation but `restore` tells the observers synchronously once its lists are final.
/// Owned by ClipboardMonitor. Main thread only.
class ClipboardHistory {
public:
    static constexpr std::int64_t kMinSize = 1;
    static constexpr std::int64_t kMaxSize = 200;

    /// Empty lists; `maxSize` is clamped to 1...200.
    explicit ClipboardHistory(std::int64_t maxSize);

    const std::vector<ClipboardItem>& pinned() const { return pinned_; }
    const std::vector<ClipboardItem>& unpinned() const { return unpinned_; }
    /// The pinned entries followed by the unpinned ones: the order the popup shows.
    std::vector<ClipboardItem> items() const;
    std::size_t count() const { return pinned_.size() + unpinned_.size(); }
    bool isEmpty() const { return pinned_.empty() && unpinned_.empty(); }
    std::int64_t maxSize() const { return maxSize_; }

    /// Called after every change made by add, clear, remove, resize and togglePin.
    [[nodiscard]] Subscription onChange(std::function<void()> callback) { return changed_.add(std::move(callback)); }

    /// Puts a new capture on top. A content equal (by dedupKey) to the first entry of `items`
    /// changes nothing and tells nobody. Otherwise every entry with the same key goes, and the
    /// new record takes the front of the pinned list if the first such pinned entry was
    /// pinned, else the front of the unpinned list (evicting the oldest).
    void add(ClipboardItem item);
    /// Empties both lists, pinned entries too.
    void clear();
    /// Drops every entry with this id; tells the observers even if none matched.
    void remove(const Uuid& id);
    /// Sets the limit (clamped to 1...200) and evicts down to it.
    void resize(std::int64_t maxSize);
    /// Moves the entry between the lists, to the front of the other one; unpinning evicts.
    /// Tells the observers even if the id is unknown.
    void togglePin(const Uuid& id);
    /// Replaces both lists as given (the flags are kept as they are) and evicts. Tells nobody.
    void restore(std::vector<ClipboardItem> pinned, std::vector<ClipboardItem> unpinned);

private:
    void evictIfNeeded();
    static std::int64_t clamp(std::int64_t n);

    std::vector<ClipboardItem> pinned_;
    std::vector<ClipboardItem> unpinned_;
    std::int64_t maxSize_;
    CallbackList<> changed_;
};

}  // namespace orvantis
