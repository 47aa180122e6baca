#include "core/snippets/snippet_expander_coordinator.h"

#include <utility>

#include "core/text/graphemes.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"

namespace orvantis {

namespace {

bool isWhitespaceCluster(std::string_view cluster) {
    for (const text::CodePoint& c : text::codePoints(cluster)) return text::isUnicodeWhitespace(c.value);
    return false;
}

}  // namespace

SnippetExpanderCoordinator::SnippetExpanderCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor,
                                                       platform::MainLoop& loop, SnippetExpander& expander,
                                                       platform::Accessibility& accessibility,
                                                       platform::Pasteboard& pasteboard,
                                                       platform::KeyOutput& keyOutput,
                                                       std::function<void()> acknowledge)
    : settings_(settings), loop_(loop), expander_(expander), accessibility_(accessibility), pasteboard_(pasteboard),
      keyOutput_(keyOutput), acknowledge_(std::move(acknowledge)),
      hotkey_(monitor.onSnippetExpanderHotkey([this] { handleHotkey(); })) {}

SnippetExpanderCoordinator::~SnippetExpanderCoordinator() = default;

std::optional<SnippetExpanderCoordinator::Token> SnippetExpanderCoordinator::tokenBeforeCaret(std::string_view value,
                                                                                             std::size_t caret) {
    if (caret < 1) return std::nullopt;
    if (caret > text::utf16Length(value)) return std::nullopt;
    const std::size_t caretByte = text::byteOffsetFromUtf16Offset(value, caret);
    // The clusters up to the caret; a caret inside a cluster counts from the cluster's start.
    const std::vector<text::ByteRange> clusters = text::graphemeRanges(value.substr(0, caretByte));
    std::size_t first = clusters.size();
    while (first > 0) {
        const text::ByteRange& r = clusters[first - 1];
        if (isWhitespaceCluster(value.substr(r.begin, r.end - r.begin))) break;
        --first;
    }
    if (first == clusters.size()) return std::nullopt;  // white space (or nothing) left of the caret
    const std::size_t startByte = clusters[first].begin;
    const std::size_t endByte = clusters.back().end;
    Token token;
    token.text = std::string(value.substr(startByte, endByte - startByte));
    token.start = text::utf16OffsetFromByteOffset(value, startByte);
    token.end = text::utf16OffsetFromByteOffset(value, endByte);
    token.characters = clusters.size() - first;
    return token;
}

void SnippetExpanderCoordinator::handleHotkey() {
    if (!settings_.snippetExpanderEnabled()) return;
    if (expander_.entries().empty()) return;
    const std::unique_ptr<platform::TextElement> element = accessibility_.focusedTextElement();
    if (!element) return;
    // Nothing is ever expanded into a password field.
    if (element->isSecure()) return;
    const std::optional<platform::TextRange> range = element->selectedRange();
    if (!range) return;
    // With a selection, its start counts as the caret.
    const std::size_t caret = range->location;
    if (caret < 1) return;
    const std::optional<std::string> value = element->value();
    if (!value) return;
    const std::optional<Token> token = tokenBeforeCaret(*value, caret);
    if (!token) return;
    const std::optional<SnippetEntry> entry = expander_.match(token->text);
    if (!entry) return;
    pasteExpansion(*element, *token, entry->expansion);
}

void SnippetExpanderCoordinator::pasteExpansion(platform::TextElement& element, const Token& token,
                                                const std::string& expansion) {
    namespace type = platform::pasteboard_type;
    if (expansion.empty()) {
        // Nothing to paste (toolkits ignore a paste of no text): the token is only deleted, and
        // the clipboard is never touched.
        if (element.setSelectedRange(platform::TextRange{token.start, token.end - token.start}))
            keyOutput_.postKey(platform::key_code::kDelete, 0);
        else
            for (std::size_t i = 0; i < token.characters; ++i) keyOutput_.postKey(platform::key_code::kDelete, 0);
        return;
    }
    // The user's clipboard, every type with its bytes; types whose data can't be read are left out.
    std::optional<platform::PasteboardItem> snapshot;
    for (const std::string& t : pasteboard_.types()) {
        if (auto bytes = pasteboard_.data(t)) {
            if (!snapshot) snapshot.emplace();
            snapshot->representations.emplace_back(t, std::move(*bytes));
        }
    }

    platform::PasteboardItem item = platform::PasteboardItem::text(expansion);
    item.representations.emplace_back(std::string(type::kConcealed), std::string(1, '\x01'));
    item.representations.emplace_back(std::string(type::kPasswordManagerHint),
                                      std::string(type::kPasswordManagerHintSecret));
    pasteboard_.write(item);
    if (acknowledge_) acknowledge_();

    if (!element.setSelectedRange(platform::TextRange{token.start, token.end - token.start})) {
        for (std::size_t i = 0; i < token.characters; ++i) keyOutput_.postKey(platform::key_code::kDelete, 0);
    }

    std::erase_if(pending_, [](const platform::TimerHandle& t) { return !t.isActive(); });
    pending_.push_back(loop_.postAfter(kPasteDelay, [this, snapshot = std::move(snapshot)]() mutable {
        keyOutput_.paste();
        pending_.push_back(loop_.postAfter(kRestoreDelay, [this, snapshot = std::move(snapshot)] {
            restorePasteboard(snapshot);
        }));
    }));
}

void SnippetExpanderCoordinator::restorePasteboard(const std::optional<platform::PasteboardItem>& snapshot) {
    // An empty snapshot leaves the pasteboard empty.
    pasteboard_.write(snapshot.value_or(platform::PasteboardItem{}));
    if (acknowledge_) acknowledge_();
}

}  // namespace orvantis
