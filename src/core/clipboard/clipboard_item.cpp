#include "core/clipboard/clipboard_item.h"

#include <optional>

#include "core/crypto/digest.h"
#include "core/text/graphemes.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"

namespace orvantis {
namespace {

std::string wellFormed(std::string text) {
    if (text::isValidUtf8(text)) return text;
    return text::repairUtf8(text);
}

}  // namespace

ClipboardItem::ClipboardItem(Uuid id, double timestamp, ClipboardItemKind kind, std::string previewText,
                             std::optional<std::string> sourceBundleID,
                             std::optional<std::string> nonTextContentHash)
    : id_(id), timestamp_(timestamp), kind_(std::move(kind)), previewText_(std::move(previewText)),
      sourceBundleID_(std::move(sourceBundleID)), nonTextContentHash_(std::move(nonTextContentHash)) {
    if (const auto* content = std::get_if<NonTextContent>(&kind_)) {
        nonTextDedupKey_ = content->typeEmoji + content->displayName + "#" + nonTextContentHash_.value_or("");
    } else {
        const std::string& whole = std::get<TextContent>(kind_).text;
        const std::string_view key = text::trimmed(whole, text::WhitespaceSet::whitespacesAndNewlines);
        textKeyOffset_ = key.empty() ? 0 : static_cast<std::size_t>(key.data() - whole.data());
        textKeyLength_ = key.size();
    }
}

ClipboardItem ClipboardItem::makeText(std::string text, std::optional<std::string> sourceBundleID, Uuid id,
                                      double timestamp) {
    text = wellFormed(std::move(text));
    std::string previewText = preview(text);
    return ClipboardItem(id, timestamp, TextContent{std::move(text)}, std::move(previewText),
                         std::move(sourceBundleID), std::nullopt);
}

ClipboardItem ClipboardItem::makeNonText(std::string typeEmoji, std::string displayName, PasteboardTypeData types,
                                         std::optional<std::string> sourceBundleID, Uuid id, double timestamp) {
    std::string previewText = typeEmoji + " " + displayName;
    std::string contentHash = hash(types);
    NonTextContent content{std::move(typeEmoji), std::move(displayName),
                           std::make_shared<const PasteboardTypeData>(std::move(types))};
    return ClipboardItem(id, timestamp, std::move(content), std::move(previewText), std::move(sourceBundleID),
                         std::move(contentHash));
}

ClipboardItem::ClipboardItem(PersistedClipboardItem persisted)
    : ClipboardItem(makeText(std::move(persisted.text), std::move(persisted.sourceBundleID), persisted.id,
                             persisted.timestamp)) {
    isPinned_ = persisted.isPinned;
}

std::optional<PersistedClipboardItem> ClipboardItem::toPersisted() const {
    const std::string* content = text();
    if (content == nullptr) return std::nullopt;
    return PersistedClipboardItem{id_, timestamp_, *content, isPinned_, sourceBundleID_};
}

const std::string* ClipboardItem::text() const {
    if (const auto* content = std::get_if<TextContent>(&kind_)) return &content->text;
    return nullptr;
}

std::string_view ClipboardItem::dedupKey() const {
    if (const std::string* content = text()) return std::string_view(*content).substr(textKeyOffset_, textKeyLength_);
    return nonTextDedupKey_;
}

std::string ClipboardItem::preview(std::string_view text) {
    // The first line that holds more than blanks; found without cutting the whole text into
    // lines, since a copied text can be megabytes long.
    std::string_view chosen = text;
    std::size_t lineStart = 0;
    auto hasContent = [](std::string_view line) {
        return !text::trimmed(line, text::WhitespaceSet::whitespaces).empty();
    };
    bool found = false;
    for (const text::CodePoint& c : text::codePoints(text)) {
        if (!text::isIn(text::WhitespaceSet::newlines, c.value)) continue;
        const std::string_view line = text.substr(lineStart, c.offset - lineStart);
        if (hasContent(line)) {
            chosen = line;
            found = true;
            break;
        }
        lineStart = c.offset + c.length;
    }
    if (!found && hasContent(text.substr(lineStart))) chosen = text.substr(lineStart);
    return text::truncatedGraphemes(chosen, kPreviewLength, kEllipsis);
}

std::string ClipboardItem::hash(const PasteboardTypeData& types) {
    // Empty only where libcrypto is missing: an entry without a hash still has an identity.
    crypto::Digest digest(crypto::DigestAlgorithm::sha256);
    for (const auto& [type, bytes] : types) {  // the map keeps the names in ascending order
        digest.update(type);
        digest.update(bytes);
    }
    return digest.hex();
}

}  // namespace orvantis
