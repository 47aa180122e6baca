#pragma once

#include <cstddef>

namespace orvantis {

/// The highlighted row of a popup list: an index that arrows move one step at a time with no
/// wrap-around. The index starts at 0 and may stand at 0 while the list is empty; whoever
/// confirms it checks it against the list. Plain value, any thread.
class ListSelection {
public:
    /// A new list of `count` rows: the first row is selected.
    void reset(std::size_t count) {
        count_ = count;
        index_ = 0;
    }
    std::size_t index() const { return index_; }
    std::size_t count() const { return count_; }

    /// Selects `index` when it names a row. Answers whether it did.
    bool select(std::size_t index) {
        if (index >= count_) return false;
        index_ = index;
        return true;
    }
    /// One row down, staying on the last one. Answers whether the selection moved.
    bool moveDown() { return index_ + 1 < count_ ? (++index_, true) : false; }
    /// One row up, staying on the first one. Answers whether the selection moved.
    bool moveUp() { return index_ > 0 && count_ > 0 ? (--index_, true) : false; }

private:
    std::size_t count_ = 0;
    std::size_t index_ = 0;
};

}  // namespace orvantis
