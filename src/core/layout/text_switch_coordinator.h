#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/layout/keystroke_buffer.h"
#include "core/layout/switch_operation.h"
#include "core/layout/transliteration_map.h"

#include "platform/input_sources.h"
#include "platform/main_loop.h"
#include "platform/subscription.h"
#include "platform/text_element.h"

namespace orvantis {

class AppSettings;
class GlobalEventMonitorProtocol;
class LayoutSwitcherProtocol;
class LogCategory;
class NotificationCenter;

namespace platform {
class KeyOutput;
}  // namespace platform

/// The four events that drive the layout switcher.
class TextSwitchCoordinatorProtocol {
public:
    virtual ~TextSwitchCoordinatorProtocol() = default;
    /// One typed character (a grapheme cluster); ignored while a retyping is in flight.
    virtual void handleCharacter(std::string_view character) = 0;
    /// Backspace; ignored while a retyping is in flight.
    virtual void handleBackspace() = 0;
    /// Whitespace, a caret movement or a mouse press: the word being typed is over.
    virtual void handleReset() = 0;
    /// The layout switch hotkey; stored for later when a retyping is in flight.
    virtual void handleHotkey() = 0;
};

/// The brain of the layout switcher. It follows what the user types, and on the layout hotkey
/// retypes the last word before the caret (or the selected text) in the other keyboard layout
/// and selects the other input source: "ghbdtn" becomes "привет", and a second press turns it
/// back. The word comes from the focused element through the accessibility layer when it
/// offers one, else from the keystroke buffer; the new text goes out as synthetic keys, or as
/// an accessibility write where the write policy asks for one.
///
/// A retyping opens the switching interval: all input events are ignored until it ends, the
/// program's own synthetic keys included, and a hotkey press in it is kept and acts at its
/// end. The interval ends 0.25 s after the new text was sent.
///
/// Borrows every collaborator, which must outlive it; keeps its closures in the monitor and its
/// timers as members, so nothing calls it after destruction. Main thread only.
class TextSwitchCoordinator final : public TextSwitchCoordinatorProtocol {
public:
    /// Whether the new text goes into `element` through an accessibility write rather than as
    /// keystrokes: true while another program holds the keyboard for secure input, or for an
    /// application known to drop synthetic keys. A failed write falls back to keystrokes.
    using AccessibilityWritePolicy = std::function<bool(const platform::TextElement& element)>;

    /// A word before the caret: its characters and where it stands in the text, in characters.
    struct WordFragment {
        std::vector<std::string> chars;
        std::size_t wordStart = 0;
        std::size_t wordEnd = 0;
        bool operator==(const WordFragment&) const = default;
    };

    /// The length of the switching interval.
    static constexpr platform::Duration kSwitchInterval = std::chrono::milliseconds(250);
    /// The longest retype delay, whatever the setting says.
    static constexpr int kMaxSwitchDelayMs = 500;

    /// Registers the six closures in `monitor`. Without a write policy every retyping goes out
    /// as keystrokes.
    TextSwitchCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor,
                          LayoutSwitcherProtocol& layoutSwitcher, const TransliterationMap& map,
                          platform::Accessibility& accessibility, platform::KeyOutput& keyOutput,
                          platform::MainLoop& loop, NotificationCenter& notifications, const LogCategory& log,
                          AccessibilityWritePolicy writePolicy = {});
    TextSwitchCoordinator(const TextSwitchCoordinator&) = delete;
    TextSwitchCoordinator& operator=(const TextSwitchCoordinator&) = delete;

    // TextSwitchCoordinatorProtocol
    void handleCharacter(std::string_view character) override;
    void handleBackspace() override;
    void handleReset() override;
    void handleHotkey() override;

    /// The word that ends at or before `cursorPos` (skipping whitespace between it and the
    /// position), running from whitespace to whitespace, punctuation included; nullopt when
    /// only whitespace stands before the position. `cursorPos` must not exceed the count.
    static std::optional<WordFragment> extractWordFragment(const std::vector<std::string>& chars,
                                                           std::size_t cursorPos);
    /// The direction the letters vote for: `ruToEn` only when there are more Cyrillic letters
    /// than ASCII letters, so a tie and a word without letters go `enToRu`.
    static TransliterationMap::Direction dominantDirection(const std::vector<std::string>& chars);
    /// What the hotkey puts in place of `chars` (a word, or a whole selection): every character
    /// through `map` in the direction the letters vote for, the first one uppercased when it was
    /// an uppercase letter. Characters the map lacks stay as they are.
    static std::vector<std::string> converted(const TransliterationMap& map, const std::vector<std::string>& chars);
    /// Whether a selection of `chars` is converted at all: it has letters, and they are all
    /// ASCII or all Cyrillic. Letters of both kinds, or of a third script, are left alone.
    static bool isConvertibleSelection(const std::vector<std::string>& chars);

    /// The characters the switcher has seen of the word being typed.
    const KeystrokeBuffer& buffer() const { return buffer_; }
    /// The record of the last retyping, until typing, backspace or a reset drops it.
    const std::optional<SwitchOperation>& lastOperation() const { return lastOperation_; }
    /// The source the last retyping selected; it counts as current until a reset.
    const std::optional<platform::InputSourceDescriptor>& lastSwitchedToLayout() const {
        return lastSwitchedToLayout_;
    }
    /// A retyping is in flight.
    bool isSwitching() const { return isSwitching_; }
    /// A hotkey press is waiting for the end of the interval.
    bool pendingHotkey() const { return pendingHotkey_; }

private:
    void wireMonitor(GlobalEventMonitorProtocol& monitor);
    void executeHotkey();
    bool tryWordSwitch();
    void performBufferSwitch();
    bool trySelectionSwitch(std::unique_ptr<platform::TextElement> element, platform::TextRange range);
    void performSwitch(const std::vector<std::string>& wordChars, const std::vector<std::string>& finalChars,
                       const platform::InputSourceDescriptor& from, const platform::InputSourceDescriptor& to,
                       const std::vector<std::string>& trailingChars,
                       std::unique_ptr<platform::TextElement> element, platform::TextRange wordRange);
    void finishSwitch(const std::vector<std::string>& wordChars, const std::vector<std::string>& finalChars,
                      const platform::InputSourceDescriptor& from, const platform::InputSourceDescriptor& to);
    void endInterval();
    std::optional<platform::InputSourceDescriptor> currentSource() const;
    std::vector<std::string> convert(const std::vector<std::string>& chars) const;
    bool shouldUseAXWrite(const platform::TextElement& element) const;
    static bool axReplaceRange(platform::TextElement& element, platform::TextRange range, std::string_view text);
    static std::vector<std::string> preserveCapitalisation(const std::vector<std::string>& original,
                                                           std::vector<std::string> transliterated);
    void eraseCharacters(std::size_t count);
    void postCharacters(const std::vector<std::string>& chars);
    void applyDelay(platform::Task then);
    void dropLastOperation();

    AppSettings& settings_;
    LayoutSwitcherProtocol& layoutSwitcher_;
    const TransliterationMap& map_;
    platform::Accessibility& accessibility_;
    platform::KeyOutput& keyOutput_;
    platform::MainLoop& loop_;
    NotificationCenter& notifications_;
    const LogCategory& log_;
    AccessibilityWritePolicy writePolicy_;

    KeystrokeBuffer buffer_;
    std::optional<SwitchOperation> lastOperation_;
    std::optional<platform::InputSourceDescriptor> lastSwitchedToLayout_;
    bool isSwitching_ = false;
    bool pendingHotkey_ = false;

    platform::TimerHandle delayTimer_;
    platform::TimerHandle intervalTimer_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace orvantis
