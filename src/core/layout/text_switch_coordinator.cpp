#include "core/layout/text_switch_coordinator.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

#include "core/events/global_event_monitor_protocol.h"
#include "core/events/notification_center.h"
#include "core/layout/layout_switcher.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/text/case_mapping.h"
#include "core/text/character_class.h"
#include "core/text/graphemes.h"
#include "core/text/utf.h"

#include "platform/key_output.h"

namespace orvantis {
namespace {

using platform::InputSourceDescriptor;
using platform::TextElement;
using platform::TextRange;
using Direction = TransliterationMap::Direction;

/// The first code point of a character; 0 for the empty string.
char32_t firstCodePoint(std::string_view character) {
    if (character.empty()) return 0;
    return text::decodeCodePoint(character, 0).value;
}

bool isCyrillicBlock(char32_t codePoint) { return codePoint >= 0x0400 && codePoint <= 0x04FF; }

/// One code point, A to Z or a to z.
bool isAsciiLetterCharacter(std::string_view character) {
    return character.size() == 1 && text::isAsciiLetter(static_cast<char32_t>(character[0]));
}

/// A letter whose first code point lies in the Cyrillic block.
bool isCyrillicLetter(std::string_view character) {
    return text::isLetter(character) && isCyrillicBlock(firstCodePoint(character));
}

std::string joined(const std::vector<std::string>& characters) {
    std::string result;
    for (const auto& c : characters) result += c;
    return result;
}

}  // namespace

TextSwitchCoordinator::TextSwitchCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor,
                                             LayoutSwitcherProtocol& layoutSwitcher, const TransliterationMap& map,
                                             platform::Accessibility& accessibility, platform::KeyOutput& keyOutput,
                                             platform::MainLoop& loop, NotificationCenter& notifications,
                                             const LogCategory& log, AccessibilityWritePolicy writePolicy)
    : settings_(settings), layoutSwitcher_(layoutSwitcher), map_(map), accessibility_(accessibility),
      keyOutput_(keyOutput), loop_(loop), notifications_(notifications), log_(log),
      writePolicy_(std::move(writePolicy)) {
    wireMonitor(monitor);
}

void TextSwitchCoordinator::wireMonitor(GlobalEventMonitorProtocol& monitor) {
    // The subscriptions are members: once the coordinator is gone the slots are empty.
    subscriptions_.push_back(monitor.onCharacterTyped([this](std::string_view c) { handleCharacter(c); }));
    subscriptions_.push_back(monitor.onBackspace([this] { handleBackspace(); }));
    subscriptions_.push_back(monitor.onWhitespace([this] { handleReset(); }));
    subscriptions_.push_back(monitor.onCursorMoved([this] { handleReset(); }));
    subscriptions_.push_back(monitor.onMouseDown([this] { handleReset(); }));
    subscriptions_.push_back(monitor.onHotkey([this] { handleHotkey(); }));
}

// --- Events ---------------------------------------------------------------------------------

void TextSwitchCoordinator::handleCharacter(std::string_view character) {
    if (isSwitching_) return;
    pendingHotkey_ = false;
    dropLastOperation();
    buffer_.append(character);
}

void TextSwitchCoordinator::handleBackspace() {
    if (isSwitching_) return;
    dropLastOperation();
    buffer_.removeLastCharacter();
}

void TextSwitchCoordinator::handleReset() {
    if (isSwitching_) return;
    dropLastOperation();
    buffer_.reset();
    lastSwitchedToLayout_.reset();
    pendingHotkey_ = false;
}

void TextSwitchCoordinator::handleHotkey() {
    if (!settings_.layoutSwitchEnabled()) return;
    if (isSwitching_) {
        pendingHotkey_ = true;
        return;
    }
    executeHotkey();
}

void TextSwitchCoordinator::dropLastOperation() {
    if (!lastOperation_) return;
    lastOperation_->isToggleable = false;
    lastOperation_.reset();
}

void TextSwitchCoordinator::executeHotkey() {
    if (tryWordSwitch()) return;
    performBufferSwitch();
}

// --- The three paths ------------------------------------------------------------------------

bool TextSwitchCoordinator::tryWordSwitch() {
    std::unique_ptr<TextElement> element = accessibility_.focusedTextElement();
    if (!element) return false;
    // A password field is never touched, nor handed to the buffer path.
    if (element->isSecure()) return true;
    const std::optional<TextRange> range = element->selectedRange();
    if (!range) return false;
    if (range->length >= 1) {
        (void)trySelectionSwitch(std::move(element), *range);
        return true;
    }
    // The caret at the start of the text: nothing to convert.
    if (range->location < 1) return true;
    const std::optional<std::string> value = element->value();
    if (!value) return false;
    // The location counts UTF-16 units and is used as a character index as it stands: with
    // characters outside the Basic Multilingual Plane before the caret the two differ, and the
    // word found is shifted or the press falls to the buffer path. This is deliberate.
    const std::vector<std::string> text = text::graphemes(*value);
    const std::size_t location = range->location;
    if (text.size() < location) return false;
    const std::optional<WordFragment> fragment = extractWordFragment(text, location);
    // Only whitespace before the caret.
    if (!fragment) return true;
    const std::optional<InputSourceDescriptor> current = currentSource();
    if (!current) return false;
    const std::optional<InputSourceDescriptor> opposite = layoutSwitcher_.oppositeSource(*current);
    if (!opposite) return false;
    std::vector<std::string> finalChars = convert(fragment->chars);
    if (finalChars == fragment->chars) return false;
    const std::vector<std::string> trailing(text.begin() + static_cast<std::ptrdiff_t>(fragment->wordEnd),
                                            text.begin() + static_cast<std::ptrdiff_t>(location));
    performSwitch(fragment->chars, finalChars, *current, *opposite, trailing, std::move(element),
                  TextRange{fragment->wordStart, fragment->chars.size()});
    return true;
}

bool TextSwitchCoordinator::trySelectionSwitch(std::unique_ptr<TextElement> element, TextRange range) {
    const std::optional<std::string> selected = element->selectedText();
    if (!selected) return false;
    const std::vector<std::string> chars = text::graphemes(*selected);
    if (!isConvertibleSelection(chars)) return false;
    const std::optional<InputSourceDescriptor> current = currentSource();
    if (!current) return false;
    const std::optional<InputSourceDescriptor> opposite = layoutSwitcher_.oppositeSource(*current);
    if (!opposite) return false;
    std::vector<std::string> finalChars = convert(chars);
    if (finalChars == chars) return false;
    performSwitch(chars, finalChars, *current, *opposite, {}, std::move(element), range);
    return true;
}

void TextSwitchCoordinator::performBufferSwitch() {
    const std::optional<InputSourceDescriptor> current = currentSource();
    if (!current) {
        log_.debug("layoutSwitch: no current input source");
        notifications_.post(orvantisNoOppositeSource);
        return;
    }
    const std::optional<InputSourceDescriptor> opposite = layoutSwitcher_.oppositeSource(*current);
    if (!opposite) {
        log_.debug("layoutSwitch: no second input source");
        notifications_.post(orvantisNoOppositeSource);
        return;
    }
    if (buffer_.isEmpty()) {
        // A plain layout change: no interval, and the desktop's answer stays the current source.
        layoutSwitcher_.select(*opposite);
        notifications_.post(orvantisClearedWarning);
        return;
    }
    const std::vector<std::string> chars = buffer_.characters();
    std::vector<std::string> finalChars = convert(chars);
    if (finalChars == chars) return;
    performSwitch(chars, finalChars, *current, *opposite, {}, nullptr, {});
}

void TextSwitchCoordinator::performSwitch(const std::vector<std::string>& wordChars,
                                          const std::vector<std::string>& finalChars,
                                          const InputSourceDescriptor& from, const InputSourceDescriptor& to,
                                          const std::vector<std::string>& trailingChars,
                                          std::unique_ptr<TextElement> element, TextRange wordRange) {
    isSwitching_ = true;
    lastSwitchedToLayout_ = to;

    if (element && shouldUseAXWrite(*element)) {
        if (axReplaceRange(*element, wordRange, joined(finalChars))) {
            // The trailing characters stay in the text untouched on this path.
            layoutSwitcher_.select(to);
            finishSwitch(wordChars, finalChars, from, to);
            return;
        }
        log_.debug("layoutSwitch: accessibility write had no effect, typing instead");
    }

    // Erase, wait, change the layout, type: the source changes before the new text arrives.
    eraseCharacters(wordChars.size() + trailingChars.size());
    std::vector<std::string> typed = finalChars;
    typed.insert(typed.end(), trailingChars.begin(), trailingChars.end());
    applyDelay([this, wordChars, finalChars, from, to, typed = std::move(typed)] {
        layoutSwitcher_.select(to);
        postCharacters(typed);
        finishSwitch(wordChars, finalChars, from, to);
    });
}

void TextSwitchCoordinator::finishSwitch(const std::vector<std::string>& wordChars,
                                         const std::vector<std::string>& finalChars,
                                         const InputSourceDescriptor& from, const InputSourceDescriptor& to) {
    buffer_.replaceAll(finalChars);
    // The interval is counted from after the new text was sent.
    intervalTimer_ = loop_.postAfter(kSwitchInterval, [this] { endInterval(); });
    lastOperation_ = SwitchOperation{wordChars, finalChars, from, to, true};
    notifications_.post(orvantisClearedWarning);
}

void TextSwitchCoordinator::endInterval() {
    isSwitching_ = false;
    if (!pendingHotkey_) return;
    pendingHotkey_ = false;
    executeHotkey();
}

// --- Conversion -----------------------------------------------------------------------------

bool TextSwitchCoordinator::isConvertibleSelection(const std::vector<std::string>& chars) {
    std::vector<std::string> letters;
    std::copy_if(chars.begin(), chars.end(), std::back_inserter(letters),
                 [](const std::string& c) { return text::isLetter(c); });
    if (letters.empty()) return false;
    const bool allAscii = std::all_of(letters.begin(), letters.end(),
                                      [](const std::string& c) { return isAsciiLetterCharacter(c); });
    const bool allCyrillic = std::all_of(letters.begin(), letters.end(),
                                         [](const std::string& c) { return isCyrillicBlock(firstCodePoint(c)); });
    // Letters of both kinds, or of a third script: not ours to guess.
    return allAscii || allCyrillic;
}

std::optional<TextSwitchCoordinator::WordFragment> TextSwitchCoordinator::extractWordFragment(
    const std::vector<std::string>& chars, std::size_t cursorPos) {
    std::size_t end = std::min(cursorPos, chars.size());
    while (end > 0 && text::isWhitespace(chars[end - 1])) --end;
    std::size_t start = end;
    while (start > 0 && !text::isWhitespace(chars[start - 1])) --start;
    if (start == end) return std::nullopt;
    return WordFragment{std::vector<std::string>(chars.begin() + static_cast<std::ptrdiff_t>(start),
                                                 chars.begin() + static_cast<std::ptrdiff_t>(end)),
                        start, end};
}

Direction TextSwitchCoordinator::dominantDirection(const std::vector<std::string>& chars) {
    std::size_t cyrillic = 0;
    std::size_t latin = 0;
    for (const auto& c : chars) {
        if (isCyrillicLetter(c)) ++cyrillic;
        if (isAsciiLetterCharacter(c)) ++latin;
    }
    return latin >= cyrillic ? Direction::enToRu : Direction::ruToEn;
}

std::vector<std::string> TextSwitchCoordinator::convert(const std::vector<std::string>& chars) const {
    return converted(map_, chars);
}

std::vector<std::string> TextSwitchCoordinator::converted(const TransliterationMap& map,
                                                          const std::vector<std::string>& chars) {
    // The direction comes from the letters alone, never from the current source.
    return preserveCapitalisation(chars, map.transliterate(chars, dominantDirection(chars)));
}

std::vector<std::string> TextSwitchCoordinator::preserveCapitalisation(const std::vector<std::string>& original,
                                                                       std::vector<std::string> transliterated) {
    if (original.empty() || transliterated.empty() || !text::isUppercase(original.front())) return transliterated;
    transliterated.front() = text::uppercased(transliterated.front());
    return transliterated;
}

std::optional<InputSourceDescriptor> TextSwitchCoordinator::currentSource() const {
    if (lastSwitchedToLayout_) return lastSwitchedToLayout_;
    return layoutSwitcher_.currentSource();
}

// --- Output ---------------------------------------------------------------------------------

bool TextSwitchCoordinator::shouldUseAXWrite(const TextElement& element) const {
    return writePolicy_ && writePolicy_(element);
}

bool TextSwitchCoordinator::axReplaceRange(TextElement& element, TextRange range, std::string_view text) {
    const std::optional<std::string> before = element.value();
    if (!element.setSelectedRange(range)) return false;
    if (!element.replaceSelectedText(text)) return false;
    const std::optional<std::string> after = element.value();
    // Some elements report success and change nothing; the caller then types instead.
    if (before && after) return *before != *after;
    return true;
}

void TextSwitchCoordinator::eraseCharacters(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) keyOutput_.postKey(platform::key_code::kDelete, 0);
}

void TextSwitchCoordinator::postCharacters(const std::vector<std::string>& chars) {
    // One Unicode key event per character, whatever the active layout.
    for (const auto& c : chars) keyOutput_.typeText(c);
}

void TextSwitchCoordinator::applyDelay(platform::Task then) {
    // The retype delay lets slow text engines take in the deletions before the replacement
    // arrives. It waits on the main loop instead of blocking the thread; the steps after it
    // keep their order, and every input event meanwhile meets the switching interval.
    const int ms = std::min(settings_.switchDelayMs(), kMaxSwitchDelayMs);
    if (ms < 1) {
        then();
        return;
    }
    delayTimer_ = loop_.postAfter(std::chrono::milliseconds(ms), std::move(then));
}

}  // namespace orvantis
