#include "core/events/global_event_monitor.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"
#include "platform/key_output.h"

namespace orvantis {

namespace {

using platform::EventDisposition;
using platform::KeyEvent;
using Hotkey = GlobalEventMonitor::Hotkey;
using Slot = GlobalEventMonitor::Slot;

/// The hotkey table in matching order, with the closure of each row. The overlay hotkey, a
/// hold-type hotkey, stands last on purpose, out of declaration order.
struct HotkeyRow {
    Hotkey hotkey;
    Slot slot;
};
constexpr std::array<HotkeyRow, GlobalEventMonitor::kHotkeyCount> kMatchOrder{{
    {Hotkey::layoutSwitch, Slot::hotkey},
    {Hotkey::translation, Slot::translationHotkey},
    {Hotkey::directTranslation, Slot::directTranslationHotkey},
    {Hotkey::clipboardHistory, Slot::clipboardHistoryHotkey},
    {Hotkey::pomodoro, Slot::pomodoroHotkey},
    {Hotkey::password, Slot::passwordHotkey},
    {Hotkey::snippetExpander, Slot::snippetExpanderHotkey},
    {Hotkey::textTransformer, Slot::textTransformerHotkey},
    {Hotkey::keyboardLock, Slot::keyboardLockHotkey},
    {Hotkey::menuBarHider, Slot::menuBarHiderHotkey},
    {Hotkey::caffeine, Slot::caffeineHotkey},
    {Hotkey::hotkeyOverlay, Slot::hotkeyOverlayPressed},
}};

constexpr std::uint16_t kEscapeKeyCode = platform::key_code::kEscape;
constexpr std::uint16_t kDeleteKeyCode = platform::key_code::kDelete;

/// Arrows, Home, End, Page Up, Page Down.
constexpr bool isCursorKey(std::uint16_t keyCode) {
    switch (keyCode) {
        case 123: case 124: case 125: case 126:  // arrows
        case 115:                                // Home
        case 119:                                // End
        case 116:                                // Page Up
        case 121:                                // Page Down
            return true;
        default:
            return false;
    }
}

/// The first UTF-16 unit of the key's text: its first code point when that lies in the Basic
/// Multilingual Plane; nullopt for no text, ill-formed text, or a character that needs a
/// surrogate pair (an emoji), which reports nothing.
std::optional<char32_t> firstUnit(std::string_view characters) {
    if (characters.empty()) return std::nullopt;
    const text::CodePoint first = text::decodeCodePoint(characters, 0);
    if (!first.valid || first.value > 0xFFFF) return std::nullopt;
    return first.value;
}

}  // namespace

/// The closure slots, shared with the posted tasks and the subscriptions. Each slot keeps a
/// generation so that a subscription only ever empties the closure it registered.
struct GlobalEventMonitor::Slots {
    std::array<Closure, kSlotCount> closures;
    CharacterClosure characterTyped;
    FinderCutHandler finderCut;
    std::array<std::uint64_t, kSlotCount + 1> generations{};  ///< the last one is the Finder-cut handler

    void run(Slot slot, char32_t character) {
        if (slot == Slot::characterTyped) {
            if (!characterTyped) return;
            std::string utf8;
            text::appendUtf8(utf8, character);
            auto closure = characterTyped;  // may replace or end its own registration
            closure(utf8);
            return;
        }
        auto closure = closures[index(slot)];
        if (closure) closure();
    }
};

GlobalEventMonitor::GlobalEventMonitor(const AppSettings& settings, platform::EventTap& tap,
                                       platform::MainLoop& loop, const AppLog& log)
    : tap_(tap), loop_(loop), log_(log), slots_(std::make_shared<Slots>()) {
    hotkeys_[index(Hotkey::layoutSwitch)] = settings.hotkey();
    hotkeys_[index(Hotkey::translation)] = settings.translationHotkey();
    hotkeys_[index(Hotkey::directTranslation)] = settings.directTranslationHotkey();
    hotkeys_[index(Hotkey::clipboardHistory)] = settings.clipboardHistoryHotkey();
    hotkeys_[index(Hotkey::pomodoro)] = settings.pomodoroHotkey();
    hotkeys_[index(Hotkey::password)] = settings.passwordHotkey();
    hotkeys_[index(Hotkey::snippetExpander)] = settings.snippetExpanderHotkey();
    hotkeys_[index(Hotkey::textTransformer)] = settings.textTransformerHotkey();
    hotkeys_[index(Hotkey::hotkeyOverlay)] = settings.hotkeyOverlayHotkey();
    hotkeys_[index(Hotkey::keyboardLock)] = settings.keyboardLockHotkey();
    hotkeys_[index(Hotkey::menuBarHider)] = settings.menuBarHiderHotkey();
    hotkeys_[index(Hotkey::caffeine)] = settings.caffeineHotkey();
    pushGrabs();
}

GlobalEventMonitor::~GlobalEventMonitor() { stop(); }

// --- Closures -------------------------------------------------------------------------------

Subscription GlobalEventMonitor::assign(Slot slot, Closure closure) {
    const std::size_t i = index(slot);
    slots_->closures[i] = std::move(closure);
    const std::uint64_t generation = ++slots_->generations[i];
    return Subscription([weak = std::weak_ptr<Slots>(slots_), i, generation] {
        if (auto slots = weak.lock(); slots && slots->generations[i] == generation) slots->closures[i] = nullptr;
    });
}

Subscription GlobalEventMonitor::onCharacterTyped(CharacterClosure closure) {
    const std::size_t i = index(Slot::characterTyped);
    slots_->characterTyped = std::move(closure);
    const std::uint64_t generation = ++slots_->generations[i];
    return Subscription([weak = std::weak_ptr<Slots>(slots_), i, generation] {
        if (auto slots = weak.lock(); slots && slots->generations[i] == generation) slots->characterTyped = nullptr;
    });
}

Subscription GlobalEventMonitor::setFinderCutHandler(FinderCutHandler handler) {
    constexpr std::size_t i = kSlotCount;
    slots_->finderCut = std::move(handler);
    const std::uint64_t generation = ++slots_->generations[i];
    return Subscription([weak = std::weak_ptr<Slots>(slots_), generation] {
        if (auto slots = weak.lock(); slots && slots->generations[i] == generation) slots->finderCut = nullptr;
    });
}

Subscription GlobalEventMonitor::onBackspace(Closure c) { return assign(Slot::backspace, std::move(c)); }
Subscription GlobalEventMonitor::onWhitespace(Closure c) { return assign(Slot::whitespace, std::move(c)); }
Subscription GlobalEventMonitor::onCursorMoved(Closure c) { return assign(Slot::cursorMoved, std::move(c)); }
Subscription GlobalEventMonitor::onMouseDown(Closure c) { return assign(Slot::mouseDown, std::move(c)); }
Subscription GlobalEventMonitor::onHotkey(Closure c) { return assign(Slot::hotkey, std::move(c)); }
Subscription GlobalEventMonitor::onTranslationHotkey(Closure c) {
    return assign(Slot::translationHotkey, std::move(c));
}
Subscription GlobalEventMonitor::onDirectTranslationHotkey(Closure c) {
    return assign(Slot::directTranslationHotkey, std::move(c));
}
Subscription GlobalEventMonitor::onClipboardHistoryHotkey(Closure c) {
    return assign(Slot::clipboardHistoryHotkey, std::move(c));
}
Subscription GlobalEventMonitor::onPomodoroHotkey(Closure c) { return assign(Slot::pomodoroHotkey, std::move(c)); }
Subscription GlobalEventMonitor::onPasswordHotkey(Closure c) { return assign(Slot::passwordHotkey, std::move(c)); }
Subscription GlobalEventMonitor::onSnippetExpanderHotkey(Closure c) {
    return assign(Slot::snippetExpanderHotkey, std::move(c));
}
Subscription GlobalEventMonitor::onTextTransformerHotkey(Closure c) {
    return assign(Slot::textTransformerHotkey, std::move(c));
}
Subscription GlobalEventMonitor::onHotkeyOverlayPressed(Closure c) {
    return assign(Slot::hotkeyOverlayPressed, std::move(c));
}
Subscription GlobalEventMonitor::onHotkeyOverlayReleased(Closure c) {
    return assign(Slot::hotkeyOverlayReleased, std::move(c));
}
Subscription GlobalEventMonitor::onKeyboardLockHotkey(Closure c) {
    return assign(Slot::keyboardLockHotkey, std::move(c));
}
Subscription GlobalEventMonitor::onKeyboardLockEscPressed(Closure c) {
    return assign(Slot::keyboardLockEscPressed, std::move(c));
}
Subscription GlobalEventMonitor::onKeyboardLockEscReleased(Closure c) {
    return assign(Slot::keyboardLockEscReleased, std::move(c));
}
Subscription GlobalEventMonitor::onMenuBarHiderHotkey(Closure c) {
    return assign(Slot::menuBarHiderHotkey, std::move(c));
}
Subscription GlobalEventMonitor::onCaffeineHotkey(Closure c) { return assign(Slot::caffeineHotkey, std::move(c)); }

void GlobalEventMonitor::schedule(Slot slot, char32_t character) {
    if (slot == Slot::none) return;
    loop_.post([weak = std::weak_ptr<Slots>(slots_), slot, character] {
        if (auto slots = weak.lock()) slots->run(slot, character);
    });
}

// --- Running --------------------------------------------------------------------------------

void GlobalEventMonitor::start() {
    if (tap_.start([this](const KeyEvent& event) { return handle(event); })) running_ = true;
}

void GlobalEventMonitor::stop() {
    if (!running_) return;
    tap_.stop();
    running_ = false;
}

// --- Hotkeys --------------------------------------------------------------------------------

void GlobalEventMonitor::pushGrabs() {
    std::vector<platform::GrabbedKey> keys;
    keys.reserve(kHotkeyCount);
    for (const HotkeyRow& row : kMatchOrder) {
        const HotkeyDescriptor& h = hotkeys_[index(row.hotkey)];
        const platform::GrabbedKey key{h.keyCode, h.modifiers & HotkeyDescriptor::kModifierMask};
        if (std::find(keys.begin(), keys.end(), key) == keys.end()) keys.push_back(key);
    }
    tap_.setGrabbedHotkeys(std::move(keys));
}

void GlobalEventMonitor::store(Hotkey which, const HotkeyDescriptor& hotkey) {
    hotkeys_[index(which)] = hotkey;
    pushGrabs();
}

void GlobalEventMonitor::updateHotkey(const HotkeyDescriptor& hotkey) {
    store(Hotkey::layoutSwitch, hotkey);
    // A save after the user granted the permission revives the monitor without waiting for
    // the permission poll.
    if (!running_ && tap_.isPermitted()) start();
}

void GlobalEventMonitor::updateTranslationHotkey(const HotkeyDescriptor& h) { store(Hotkey::translation, h); }
void GlobalEventMonitor::updateDirectTranslationHotkey(const HotkeyDescriptor& h) {
    store(Hotkey::directTranslation, h);
}
void GlobalEventMonitor::updateClipboardHistoryHotkey(const HotkeyDescriptor& h) {
    store(Hotkey::clipboardHistory, h);
}
void GlobalEventMonitor::updatePomodoroHotkey(const HotkeyDescriptor& h) { store(Hotkey::pomodoro, h); }
void GlobalEventMonitor::updatePasswordHotkey(const HotkeyDescriptor& h) { store(Hotkey::password, h); }
void GlobalEventMonitor::updateSnippetExpanderHotkey(const HotkeyDescriptor& h) {
    store(Hotkey::snippetExpander, h);
}
void GlobalEventMonitor::updateTextTransformerHotkey(const HotkeyDescriptor& h) {
    store(Hotkey::textTransformer, h);
}
void GlobalEventMonitor::updateHotkeyOverlayHotkey(const HotkeyDescriptor& h) { store(Hotkey::hotkeyOverlay, h); }
void GlobalEventMonitor::updateKeyboardLockHotkey(const HotkeyDescriptor& h) { store(Hotkey::keyboardLock, h); }
void GlobalEventMonitor::updateMenuBarHiderHotkey(const HotkeyDescriptor& h) { store(Hotkey::menuBarHider, h); }
void GlobalEventMonitor::updateCaffeineHotkey(const HotkeyDescriptor& h) { store(Hotkey::caffeine, h); }

void GlobalEventMonitor::setKeyboardLockActive(bool active) {
    keyboardLockActive_ = active;
    if (!active) keyboardLockEscDown_ = false;
    tap_.setWholeKeyboardGrabbed(active);
}

// --- Events ---------------------------------------------------------------------------------

EventDisposition GlobalEventMonitor::handle(const KeyEvent& event) {
    if (event.type == KeyEvent::Type::tapDisabledByTimeout || event.type == KeyEvent::Type::tapDisabledByUserInput) {
        log_.app.warning("globalEventMonitor: tap disabled (" +
                         std::to_string(static_cast<std::uint32_t>(event.type)) + "), re-enabling");
        if (running_) tap_.reenable();
        return EventDisposition::pass;
    }
    if (keyboardLockActive_) return handleLocked(event);
    switch (event.type) {
        case KeyEvent::Type::leftMouseDown:
        case KeyEvent::Type::rightMouseDown:
            schedule(Slot::mouseDown);
            return EventDisposition::pass;
        case KeyEvent::Type::keyDown:
            return handleKeyDown(event);
        case KeyEvent::Type::keyUp:
            handleKeyUp(event);
            return EventDisposition::pass;
        case KeyEvent::Type::flagsChanged:
            handleFlagsChanged(event);
            return EventDisposition::pass;
        default:
            return EventDisposition::pass;
    }
}

EventDisposition GlobalEventMonitor::handleLocked(const KeyEvent& event) {
    // No hotkey matching and no typed text while locked; only a held Escape is reported. The
    // mouse stays usable.
    switch (event.type) {
        case KeyEvent::Type::keyDown:
            if (event.keyCode != kEscapeKeyCode || event.autorepeat || keyboardLockEscDown_) {
                return EventDisposition::swallow;
            }
            keyboardLockEscDown_ = true;
            schedule(Slot::keyboardLockEscPressed);
            return EventDisposition::swallow;
        case KeyEvent::Type::keyUp:
            if (event.keyCode != kEscapeKeyCode || !keyboardLockEscDown_) return EventDisposition::swallow;
            keyboardLockEscDown_ = false;
            schedule(Slot::keyboardLockEscReleased);
            return EventDisposition::swallow;
        case KeyEvent::Type::flagsChanged:
            return EventDisposition::swallow;
        case KeyEvent::Type::systemDefined:
            return event.subtype == KeyEvent::kMediaKeySubtype ? EventDisposition::swallow : EventDisposition::pass;
        default:
            return EventDisposition::pass;
    }
}

GlobalEventMonitor::KeyDownDecision GlobalEventMonitor::decideKeyDown(const KeyEvent& event) const {
    const std::uint16_t keyCode = event.keyCode;
    const std::uint64_t flags = event.flags;

    for (const HotkeyRow& row : kMatchOrder) {
        if (!matches(hotkeys_[index(row.hotkey)], keyCode, flags)) continue;
        // The overlay is a hold: its autorepeat is swallowed without a second press.
        if (row.hotkey == Hotkey::hotkeyOverlay && hotkeyOverlayActive_) return {EventDisposition::swallow};
        return {EventDisposition::swallow, row.slot};
    }

    if ((flags & HotkeyDescriptor::kCommand) != 0 && slots_->finderCut && slots_->finderCut(keyCode, flags)) {
        return {EventDisposition::swallow};
    }
    // From here on the modifiers do not matter, and nothing is swallowed: the focused
    // application always sees what was typed.
    if (isCursorKey(keyCode)) return {EventDisposition::pass, Slot::cursorMoved};
    if (keyCode == kDeleteKeyCode) return {EventDisposition::pass, Slot::backspace};

    const std::optional<char32_t> unit = firstUnit(event.characters);
    if (!unit) return {};
    if (text::isUnicodeWhitespace(*unit) || *unit == U'\n' || *unit == U'\t') {
        return {EventDisposition::pass, Slot::whitespace};
    }
    return {EventDisposition::pass, Slot::characterTyped, *unit};
}

EventDisposition GlobalEventMonitor::handleKeyDown(const KeyEvent& event) {
    const KeyDownDecision decision = decideKeyDown(event);
    if (decision.slot == Slot::hotkeyOverlayPressed) hotkeyOverlayActive_ = true;
    schedule(decision.slot, decision.character);
    return decision.disposition;
}

void GlobalEventMonitor::handleKeyUp(const KeyEvent& event) {
    if (hotkeyOverlayActive_ && event.keyCode == hotkeys_[index(Hotkey::hotkeyOverlay)].keyCode) {
        hotkeyOverlayActive_ = false;
        schedule(Slot::hotkeyOverlayReleased);
    }
}

void GlobalEventMonitor::handleFlagsChanged(const KeyEvent& event) {
    if (!hotkeyOverlayActive_) return;
    const std::uint64_t missing =
        hotkeys_[index(Hotkey::hotkeyOverlay)].modifiers & ~event.flags & HotkeyDescriptor::kModifierMask;
    if (missing == 0) return;
    hotkeyOverlayActive_ = false;
    schedule(Slot::hotkeyOverlayReleased);
}

}  // namespace orvantis
