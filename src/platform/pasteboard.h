#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvantis::platform {

/// Pasteboard type names. Backends map them to their own (MIME types on Linux).
namespace pasteboard_type {
inline constexpr std::string_view kText = "public.utf8-plain-text";
inline constexpr std::string_view kConcealed = "org.nspasteboard.ConcealedType";
}  // namespace pasteboard_type

/// One pasteboard item: its representations, in the item's own order of preference.
struct PasteboardItem {
    std::vector<std::pair<std::string, std::string>> representations;  ///< type, bytes

    static PasteboardItem text(std::string utf8) {
        return PasteboardItem{{{std::string(pasteboard_type::kText), std::move(utf8)}}};
    }
    /// Bytes of `type`, or nullopt.
    std::optional<std::string> data(std::string_view type) const {
        for (const auto& [t, bytes] : representations)
            if (t == type) return bytes;
        return std::nullopt;
    }
};

/// The system pasteboard. Main thread only. Backends hide every native handle.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;
    /// Rises by at least one on every write, ours or another application's.
    virtual std::int64_t changeCount() const = 0;
    /// Types of the first item, in the item's own order; empty when nothing is there.
    virtual std::vector<std::string> types() const = 0;
    /// Bytes for `type`, or nullopt when the item has none.
    virtual std::optional<std::string> data(std::string_view type) const = 0;
    /// Replaces the whole content with one item.
    virtual void write(const PasteboardItem& item) = 0;
    /// The text of the first item, or nullopt.
    std::optional<std::string> text() const { return data(pasteboard_type::kText); }
};

}  // namespace orvantis::platform
