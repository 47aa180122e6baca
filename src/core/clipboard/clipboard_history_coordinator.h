#pragma once

#include <vector>

#include "core/clipboard/clipboard_history_popup.h"
#include "core/clipboard/clipboard_monitor.h"
#include "core/clipboard/uuid.h"
#include "core/events/global_event_monitor_protocol.h"
#include "core/settings/app_settings.h"

#include "platform/key_output.h"
#include "platform/pasteboard.h"
#include "platform/pointer.h"
#include "platform/subscription.h"

namespace orvantis {

/// Brings the clipboard history back: its hotkey opens the popup at the pointer with the
/// pinned entries and then the others; the chosen entry goes onto the pasteboard (its own
/// write acknowledged, so the monitor never captures it) and is pasted into the application
/// that kept the focus. Ctrl+P and Ctrl+Backspace in the popup pin and delete, and the open
/// popup follows.
///
/// Borrows every collaborator, which must outlive it; keeps its closures in the monitor and
/// sets the popup's, so nothing calls it after destruction. Main thread only.
class ClipboardHistoryCoordinator {
public:
    ClipboardHistoryCoordinator(AppSettings& settings, GlobalEventMonitorProtocol& monitor,
                                ClipboardHistoryPopup& popup, ClipboardMonitor& clipboard,
                                platform::Pasteboard& pasteboard, platform::KeyOutput& keyOutput,
                                platform::Pointer& pointer);
    ~ClipboardHistoryCoordinator();
    ClipboardHistoryCoordinator(const ClipboardHistoryCoordinator&) = delete;
    ClipboardHistoryCoordinator& operator=(const ClipboardHistoryCoordinator&) = delete;

    /// The hotkey's work: nothing while the history is switched off; otherwise the popup
    /// opens afresh, an open one included. Public for tests and callers without a monitor.
    void handleHotkey();
    /// Writes the entry to the pasteboard and pastes it. An id no longer in the history
    /// does nothing.
    void paste(const Uuid& id);
    /// Removes the entry and refreshes the open popup.
    void deleteItem(const Uuid& id);
    /// Moves the entry between the pinned and the other entries and refreshes the open popup.
    void togglePin(const Uuid& id);

    /// The texts of the popup in `language`.
    static ClipboardPopupTexts textsFor(SettingsLanguage language);

private:
    void refreshPopup();

    AppSettings& settings_;
    ClipboardHistoryPopup& popup_;
    ClipboardMonitor& clipboard_;
    platform::Pasteboard& pasteboard_;
    platform::KeyOutput& keyOutput_;
    platform::Pointer& pointer_;
    Subscription hotkey_;
};

}  // namespace orvantis
