#pragma once

#include <functional>
#include <string_view>

#include "core/settings/hotkey_descriptor.h"
#include "platform/subscription.h"

namespace orvantis {

/// What coordinators see of the global event monitor: the closures it calls, its running state
/// and the hotkeys pushed into it. Coordinators are built against this interface so that tests
/// can hand them a fake monitor. Main thread only.
///
/// Every `on...` registration fills the one slot of that name, replacing whatever closure was
/// there; the returned Subscription empties the slot when it is destroyed, unless a later
/// registration has replaced the closure in the meantime. An empty slot changes no event's
/// fate: a matched hotkey is swallowed all the same.
class GlobalEventMonitorProtocol {
public:
    using Closure = std::function<void()>;
    /// Receives one character as UTF-8 (a single code point).
    using CharacterClosure = std::function<void(std::string_view character)>;

    virtual ~GlobalEventMonitorProtocol() = default;

    /// A printable key went down.
    [[nodiscard]] virtual Subscription onCharacterTyped(CharacterClosure closure) = 0;
    /// Backspace (key code 51) went down.
    [[nodiscard]] virtual Subscription onBackspace(Closure closure) = 0;
    /// A key producing whitespace went down (Return, Tab, Space and the like).
    [[nodiscard]] virtual Subscription onWhitespace(Closure closure) = 0;
    /// An arrow, Home, End, Page Up or Page Down went down.
    [[nodiscard]] virtual Subscription onCursorMoved(Closure closure) = 0;
    /// The left or right mouse button went down.
    [[nodiscard]] virtual Subscription onMouseDown(Closure closure) = 0;
    /// The layout switch hotkey.
    [[nodiscard]] virtual Subscription onHotkey(Closure closure) = 0;
    /// The translator's hotkey for naming variants.
    [[nodiscard]] virtual Subscription onTranslationHotkey(Closure closure) = 0;
    /// The translator's hotkey for a direct translation.
    [[nodiscard]] virtual Subscription onDirectTranslationHotkey(Closure closure) = 0;
    /// The clipboard popup hotkey.
    [[nodiscard]] virtual Subscription onClipboardHistoryHotkey(Closure closure) = 0;
    /// The Pomodoro toggle hotkey.
    [[nodiscard]] virtual Subscription onPomodoroHotkey(Closure closure) = 0;
    /// The password generator hotkey.
    [[nodiscard]] virtual Subscription onPasswordHotkey(Closure closure) = 0;
    /// The snippet expansion hotkey.
    [[nodiscard]] virtual Subscription onSnippetExpanderHotkey(Closure closure) = 0;
    /// The text tools window hotkey.
    [[nodiscard]] virtual Subscription onTextTransformerHotkey(Closure closure) = 0;
    /// The hold-type overlay hotkey went down (once per hold, not for its autorepeat).
    [[nodiscard]] virtual Subscription onHotkeyOverlayPressed(Closure closure) = 0;
    /// The overlay hotkey ended: its key or one of its modifiers was let go.
    [[nodiscard]] virtual Subscription onHotkeyOverlayReleased(Closure closure) = 0;
    /// The keyboard lock toggle hotkey (never while locked).
    [[nodiscard]] virtual Subscription onKeyboardLockHotkey(Closure closure) = 0;
    /// Escape went down while the keyboard is locked (once per hold).
    [[nodiscard]] virtual Subscription onKeyboardLockEscPressed(Closure closure) = 0;
    /// Escape went up while the keyboard is locked, after a reported press.
    [[nodiscard]] virtual Subscription onKeyboardLockEscReleased(Closure closure) = 0;
    /// The menu bar hider toggle hotkey.
    [[nodiscard]] virtual Subscription onMenuBarHiderHotkey(Closure closure) = 0;
    /// The keep-awake toggle hotkey.
    [[nodiscard]] virtual Subscription onCaffeineHotkey(Closure closure) = 0;

    /// True while the tap is installed.
    virtual bool isRunning() const = 0;
    /// Installs the tap, even when one is installed already: callers test isRunning() first.
    /// A refusal of the desktop leaves the monitor not running, silently.
    virtual void start() = 0;
    /// Removes the tap; does nothing when not running.
    virtual void stop() = 0;

    /// Takes a new layout switch hotkey and, when not running but permitted, installs the tap.
    virtual void updateHotkey(const HotkeyDescriptor& hotkey) = 0;
    /// The other update operations only take the new hotkey.
    virtual void updateTranslationHotkey(const HotkeyDescriptor& hotkey) = 0;
    virtual void updateDirectTranslationHotkey(const HotkeyDescriptor& hotkey) = 0;
    virtual void updateClipboardHistoryHotkey(const HotkeyDescriptor& hotkey) = 0;
    virtual void updatePomodoroHotkey(const HotkeyDescriptor& hotkey) = 0;
    virtual void updatePasswordHotkey(const HotkeyDescriptor& hotkey) = 0;
    virtual void updateSnippetExpanderHotkey(const HotkeyDescriptor& hotkey) = 0;
    virtual void updateTextTransformerHotkey(const HotkeyDescriptor& hotkey) = 0;
    virtual void updateHotkeyOverlayHotkey(const HotkeyDescriptor& hotkey) = 0;
    virtual void updateKeyboardLockHotkey(const HotkeyDescriptor& hotkey) = 0;
    /// Locks or unlocks the keyboard. Locking keeps the Escape-held state as it is; unlocking
    /// clears it.
    virtual void setKeyboardLockActive(bool active) = 0;
    virtual void updateMenuBarHiderHotkey(const HotkeyDescriptor& hotkey) = 0;
    virtual void updateCaffeineHotkey(const HotkeyDescriptor& hotkey) = 0;
};

}  // namespace orvantis
