#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "core/events/global_event_monitor_protocol.h"
#include "core/settings/app_settings.h"
#include "core/snippets/snippet_expander.h"

#include "platform/key_output.h"
#include "platform/main_loop.h"
#include "platform/pasteboard.h"
#include "platform/subscription.h"
#include "platform/text_element.h"

namespace orvantis {

/// The snippet hotkey: the token left of the caret in the focused text field (everything back
/// to the previous white space) is replaced by its expansion. Nothing is done in a password
/// field, nor when no entry matches; nothing is logged. The expansion travels through the
/// pasteboard, marked as secret and acknowledged so that no clipboard history keeps it: the
/// token is selected (or, where the selection can't be set, deleted with Backspace), Ctrl+V
/// pastes, and 0.35 s later the user's clipboard is put back as it was, every type of it, again
/// acknowledged.
///
/// Borrows every collaborator, which must outlive it; keeps its hotkey subscription and its
/// timers as members, so nothing calls it after destruction. Main thread only.
class SnippetExpanderCoordinator {
public:
    /// Time for the target application to apply the selection or the deletions before the paste.
    static constexpr std::chrono::milliseconds kPasteDelay{30};
    /// Time for the target application to read the pasteboard before the user's content is back.
    static constexpr std::chrono::milliseconds kRestoreDelay{350};

    SnippetExpanderCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor, platform::MainLoop& loop,
                               SnippetExpander& expander, platform::Accessibility& accessibility,
                               platform::Pasteboard& pasteboard, platform::KeyOutput& keyOutput,
                               std::function<void()> acknowledge);
    ~SnippetExpanderCoordinator();
    SnippetExpanderCoordinator(const SnippetExpanderCoordinator&) = delete;
    SnippetExpanderCoordinator& operator=(const SnippetExpanderCoordinator&) = delete;

    /// The hotkey's work; public for tests and callers without a monitor.
    void handleHotkey();

    /// The token that ends at the caret in `value`: the characters back to the previous white
    /// space or the start. `caret` counts UTF-16 units, as the accessibility layer does. Nullopt
    /// when the caret is at the start, past the end, or right after white space. On success
    /// `start` is the token's first UTF-16 unit and `characters` its number of characters.
    struct Token {
        std::string text;
        std::size_t start = 0;       ///< UTF-16 units
        std::size_t end = 0;         ///< UTF-16 units: the caret
        std::size_t characters = 0;  ///< grapheme clusters
    };
    static std::optional<Token> tokenBeforeCaret(std::string_view value, std::size_t caret);

private:
    void pasteExpansion(platform::TextElement& element, const Token& token, const std::string& expansion);
    void restorePasteboard(const std::optional<platform::PasteboardItem>& snapshot);

    AppSettings& settings_;
    platform::MainLoop& loop_;
    SnippetExpander& expander_;
    platform::Accessibility& accessibility_;
    platform::Pasteboard& pasteboard_;
    platform::KeyOutput& keyOutput_;
    std::function<void()> acknowledge_;
    std::vector<platform::TimerHandle> pending_;
    Subscription hotkey_;
};

}  // namespace orvantis
