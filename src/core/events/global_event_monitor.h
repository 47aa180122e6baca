#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "core/events/global_event_monitor_protocol.h"
#include "core/settings/hotkey_descriptor.h"
#include "platform/key_events.h"
#include "platform/main_loop.h"
#include "platform/subscription.h"

namespace orvantis {

class AppSettings;
struct AppLog;

/// The one keyboard and mouse listener of the system. It owns the session-wide event tap,
/// decides for every event whether it is swallowed or reaches the focused application, and
/// turns events into closures: typed characters, backspace, whitespace, cursor movement, mouse
/// down and one closure per global hotkey. It knows nothing of what the closures do and tests
/// no feature switch: a hotkey whose feature is off is swallowed all the same.
///
/// The twelve hotkeys are read from the settings once, at construction; afterwards only the
/// update operations change them, and every change is handed to the tap as its grab list.
/// Hotkeys compare on the four modifier bits (mask 0x1E0000) only, so Caps Lock, Fn and other
/// flag bits never prevent a match, while an extra held modifier does.
///
/// No closure runs inside the tap's handler: each one is posted to the main loop and reads its
/// slot when it runs, not when the event came. The one synchronous call out of the handler is
/// the Finder-cut handler, whose answer decides whether a Command key press is swallowed.
///
/// Owned by the composition root; the tap, loop, settings and log outlive it. Main thread only.
class GlobalEventMonitor final : public GlobalEventMonitorProtocol {
public:
    /// Answers true when the Finder-cut feature has taken the Command key press and it must be
    /// swallowed. Called synchronously inside the tap's handler.
    using FinderCutHandler = std::function<bool(std::uint16_t keyCode, std::uint64_t flags)>;

    /// The twelve hotkeys in their declaration order.
    enum class Hotkey : std::uint8_t {
        layoutSwitch,
        translation,
        directTranslation,
        clipboardHistory,
        pomodoro,
        password,
        snippetExpander,
        textTransformer,
        hotkeyOverlay,
        keyboardLock,
        menuBarHider,
        caffeine,
    };
    static constexpr std::size_t kHotkeyCount = 12;

    /// The closure slots, in the order of the protocol.
    enum class Slot : std::uint8_t {
        characterTyped,
        backspace,
        whitespace,
        cursorMoved,
        mouseDown,
        hotkey,
        translationHotkey,
        directTranslationHotkey,
        clipboardHistoryHotkey,
        pomodoroHotkey,
        passwordHotkey,
        snippetExpanderHotkey,
        textTransformerHotkey,
        hotkeyOverlayPressed,
        hotkeyOverlayReleased,
        keyboardLockHotkey,
        keyboardLockEscPressed,
        keyboardLockEscReleased,
        menuBarHiderHotkey,
        caffeineHotkey,
        none,  ///< no closure
    };
    static constexpr std::size_t kSlotCount = static_cast<std::size_t>(Slot::none);

    /// What a key down means before anything is scheduled: the event's fate, the closure to
    /// schedule and, for `characterTyped`, the character.
    struct KeyDownDecision {
        platform::EventDisposition disposition = platform::EventDisposition::pass;
        Slot slot = Slot::none;
        char32_t character = 0;
        bool operator==(const KeyDownDecision&) const = default;
    };

    /// Reads the twelve hotkeys from `settings` and hands them to `tap` as its grab list. Does
    /// not install the tap.
    GlobalEventMonitor(const AppSettings& settings, platform::EventTap& tap, platform::MainLoop& loop,
                       const AppLog& log);
    /// Removes the tap if it is still installed; closures already posted then do nothing.
    ~GlobalEventMonitor() override;
    GlobalEventMonitor(const GlobalEventMonitor&) = delete;
    GlobalEventMonitor& operator=(const GlobalEventMonitor&) = delete;

    // GlobalEventMonitorProtocol
    [[nodiscard]] Subscription onCharacterTyped(CharacterClosure closure) override;
    [[nodiscard]] Subscription onBackspace(Closure closure) override;
    [[nodiscard]] Subscription onWhitespace(Closure closure) override;
    [[nodiscard]] Subscription onCursorMoved(Closure closure) override;
    [[nodiscard]] Subscription onMouseDown(Closure closure) override;
    [[nodiscard]] Subscription onHotkey(Closure closure) override;
    [[nodiscard]] Subscription onTranslationHotkey(Closure closure) override;
    [[nodiscard]] Subscription onDirectTranslationHotkey(Closure closure) override;
    [[nodiscard]] Subscription onClipboardHistoryHotkey(Closure closure) override;
    [[nodiscard]] Subscription onPomodoroHotkey(Closure closure) override;
    [[nodiscard]] Subscription onPasswordHotkey(Closure closure) override;
    [[nodiscard]] Subscription onSnippetExpanderHotkey(Closure closure) override;
    [[nodiscard]] Subscription onTextTransformerHotkey(Closure closure) override;
    [[nodiscard]] Subscription onHotkeyOverlayPressed(Closure closure) override;
    [[nodiscard]] Subscription onHotkeyOverlayReleased(Closure closure) override;
    [[nodiscard]] Subscription onKeyboardLockHotkey(Closure closure) override;
    [[nodiscard]] Subscription onKeyboardLockEscPressed(Closure closure) override;
    [[nodiscard]] Subscription onKeyboardLockEscReleased(Closure closure) override;
    [[nodiscard]] Subscription onMenuBarHiderHotkey(Closure closure) override;
    [[nodiscard]] Subscription onCaffeineHotkey(Closure closure) override;

    bool isRunning() const override { return running_; }
    void start() override;
    void stop() override;

    void updateHotkey(const HotkeyDescriptor& hotkey) override;
    void updateTranslationHotkey(const HotkeyDescriptor& hotkey) override;
    void updateDirectTranslationHotkey(const HotkeyDescriptor& hotkey) override;
    void updateClipboardHistoryHotkey(const HotkeyDescriptor& hotkey) override;
    void updatePomodoroHotkey(const HotkeyDescriptor& hotkey) override;
    void updatePasswordHotkey(const HotkeyDescriptor& hotkey) override;
    void updateSnippetExpanderHotkey(const HotkeyDescriptor& hotkey) override;
    void updateTextTransformerHotkey(const HotkeyDescriptor& hotkey) override;
    void updateHotkeyOverlayHotkey(const HotkeyDescriptor& hotkey) override;
    void updateKeyboardLockHotkey(const HotkeyDescriptor& hotkey) override;
    void setKeyboardLockActive(bool active) override;
    void updateMenuBarHiderHotkey(const HotkeyDescriptor& hotkey) override;
    void updateCaffeineHotkey(const HotkeyDescriptor& hotkey) override;

    /// Sets the handler asked about Command key presses that match no hotkey; an empty handler
    /// swallows nothing. Replaces any earlier handler; the Subscription removes it unless it
    /// has been replaced since.
    [[nodiscard]] Subscription setFinderCutHandler(FinderCutHandler handler);

    /// The tap's handler: the fate of one event of any type. Posts the closures it triggers.
    platform::EventDisposition handle(const platform::KeyEvent& event);
    /// The fate of a key down while unlocked: hotkey table, then the Finder-cut handler, then
    /// cursor keys, backspace and text. Posts the closure it triggers.
    platform::EventDisposition handleKeyDown(const platform::KeyEvent& event);
    /// Ends the overlay when its key goes up. Key ups always pass.
    void handleKeyUp(const platform::KeyEvent& event);
    /// Ends the overlay when one of its modifiers is let go. Modifier changes always pass.
    void handleFlagsChanged(const platform::KeyEvent& event);
    /// What handleKeyDown() would do, without posting anything or changing state; it does ask
    /// the Finder-cut handler. Allocates nothing.
    KeyDownDecision decideKeyDown(const platform::KeyEvent& event) const;

    /// The cached copy of one hotkey.
    const HotkeyDescriptor& current(Hotkey which) const { return hotkeys_[index(which)]; }
    /// The overlay hotkey is being held.
    bool hotkeyOverlayActive() const { return hotkeyOverlayActive_; }
    /// The keyboard is locked.
    bool keyboardLockActive() const { return keyboardLockActive_; }
    /// Escape is being held while locked.
    bool keyboardLockEscDown() const { return keyboardLockEscDown_; }

    /// True when a press of `keyCode` with `flags` matches `hotkey`: the same key code and the
    /// same four modifier bits, whatever the other flag bits.
    static bool matches(const HotkeyDescriptor& hotkey, std::uint16_t keyCode, std::uint64_t flags) {
        return hotkey.keyCode == keyCode &&
               ((hotkey.modifiers ^ flags) & HotkeyDescriptor::kModifierMask) == 0;
    }

private:
    struct Slots;

    static constexpr std::size_t index(Hotkey h) { return static_cast<std::size_t>(h); }
    static constexpr std::size_t index(Slot s) { return static_cast<std::size_t>(s); }

    platform::EventDisposition handleLocked(const platform::KeyEvent& event);
    void schedule(Slot slot, char32_t character = 0);
    Subscription assign(Slot slot, Closure closure);
    void store(Hotkey which, const HotkeyDescriptor& hotkey);
    void pushGrabs();

    platform::EventTap& tap_;
    platform::MainLoop& loop_;
    const AppLog& log_;
    // Shared with the posted closures and the subscriptions, which hold it weakly, so that
    // neither can reach a destroyed monitor.
    std::shared_ptr<Slots> slots_;
    std::array<HotkeyDescriptor, kHotkeyCount> hotkeys_{};
    bool running_ = false;
    bool hotkeyOverlayActive_ = false;
    bool keyboardLockActive_ = false;
    bool keyboardLockEscDown_ = false;
};

}  // namespace orvantis
