#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "core/clipboard/uuid.h"

namespace orvantis {

/// The raw bytes of every pasteboard type of one pasteboard item, keyed by the type's name.
using PasteboardTypeData = std::map<std::string, std::string, std::less<>>;

/// A copied text, full and unaltered (no trimming, no length limit). Always well-formed UTF-8.
struct TextContent {
    std::string text;
};

/// A copied content that is not text (a file, an image, rich text without a plain form, data),
/// with a symbol and a name for display. The bytes are shared between copies of the record:
/// they can be large and never change.
struct NonTextContent {
    std::string typeEmoji;
    std::string displayName;
    std::shared_ptr<const PasteboardTypeData> types;
};

/// What a history entry holds.
using ClipboardItemKind = std::variant<TextContent, NonTextContent>;

/// The on-disk form of a text entry: one record of the clipboard snapshot and of the synced
/// clipboard file. `timestamp` is in seconds since 2001-01-01 00:00:00 UTC.
struct PersistedClipboardItem {
    Uuid id;
    double timestamp = 0;
    std::string text;
    bool isPinned = false;
    std::optional<std::string> sourceBundleID;
    bool operator==(const PersistedClipboardItem&) const = default;
};

/// One captured pasteboard content: a value record, cheap to copy. Everything but the pin flag
/// is fixed when the record is made; the one-line preview is computed then, never stored.
class ClipboardItem {
public:
    /// The mark appended to a preview that was cut.
    static constexpr std::string_view kEllipsis = "\u2026";
    /// Longest preview, in user-perceived characters, before the mark.
    static constexpr std::size_t kPreviewLength = 80;

    /// A text entry. Ill-formed UTF-8 in `text` is repaired (each bad sequence becomes U+FFFD).
    static ClipboardItem makeText(std::string text, std::optional<std::string> sourceBundleID, Uuid id,
                                  double timestamp);
    /// A non-text entry: previewed as `typeEmoji`, a blank, `displayName`; identified by the
    /// SHA-256 of its bytes (see `hash`).
    static ClipboardItem makeNonText(std::string typeEmoji, std::string displayName, PasteboardTypeData types,
                                     std::optional<std::string> sourceBundleID, Uuid id, double timestamp);
    /// A text entry from its stored record; the preview is recomputed.
    explicit ClipboardItem(PersistedClipboardItem persisted);

    /// The stored form, or nullopt for a non-text entry (the file has no place for it).
    std::optional<PersistedClipboardItem> toPersisted() const;

    const Uuid& id() const { return id_; }
    /// Seconds since 2001-01-01 00:00:00 UTC.
    double timestamp() const { return timestamp_; }
    const ClipboardItemKind& kind() const { return kind_; }
    const std::string& previewText() const { return previewText_; }
    /// True exactly for entries in the history's pinned list.
    bool isPinned() const { return isPinned_; }
    void setPinned(bool pinned) { isPinned_ = pinned; }
    /// The application that was frontmost at the capture, when it could be read.
    const std::optional<std::string>& sourceBundleID() const { return sourceBundleID_; }
    /// 64 lower-case hexadecimal digits for a non-text entry; nullopt for text.
    const std::optional<std::string>& nonTextContentHash() const { return nonTextContentHash_; }

    bool isText() const { return std::holds_alternative<TextContent>(kind_); }
    /// The full text of a text entry; nullptr for a non-text one.
    const std::string* text() const;
    /// Identity for duplicate detection: a text trimmed of blanks and line breaks at both ends;
    /// for non-text the emoji, the name, "#" and the content hash. Views this record.
    std::string_view dedupKey() const;

    /// The preview line of a text: its first line with content (kept untrimmed), or the whole
    /// text when no line has any; longer than 80 characters, cut to 80 and followed by "…".
    static std::string preview(std::string_view text);
    /// SHA-256 over every type name and then its bytes, types in ascending order of name, with
    /// nothing between them; 64 lower-case hexadecimal digits.
    static std::string hash(const PasteboardTypeData& types);

private:
    ClipboardItem(Uuid id, double timestamp, ClipboardItemKind kind, std::string previewText,
                  std::optional<std::string> sourceBundleID, std::optional<std::string> nonTextContentHash);

    Uuid id_;
    double timestamp_ = 0;
    ClipboardItemKind kind_;
    std::string previewText_;
    bool isPinned_ = false;
    std::optional<std::string> sourceBundleID_;
    std::optional<std::string> nonTextContentHash_;
    std::string nonTextDedupKey_;  ///< computed once: the non-text key is no view of anything
    // Where the trimmed text lies in a text entry, found once: add() compares every entry.
    std::size_t textKeyOffset_ = 0;
    std::size_t textKeyLength_ = 0;
};

}  // namespace orvantis
