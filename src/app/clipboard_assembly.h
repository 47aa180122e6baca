#pragma once

#include <memory>

#include "core/clipboard/uuid.h"

namespace orvantis {
class ClipboardHistoryCoordinator;
class ClipboardHistoryPopup;
class ClipboardMonitor;
class GlobalEventMonitor;
}  // namespace orvantis

namespace orvantis::app {

struct AppServices;

/// The clipboard history: the monitor that watches the pasteboard and owns the history with
/// its snapshot file, and, where the keyboard is watched, the popup and its coordinator on the
/// history hotkey.
class ClipboardAssembly {
public:
    /// Null, with a warning in the log, when the desktop has no pasteboard to watch. Without a
    /// keyboard `monitor` is null: the history is kept, the popup is not made.
    static std::unique_ptr<ClipboardAssembly> create(AppServices& services, GlobalEventMonitor* monitor);
    ~ClipboardAssembly();
    ClipboardAssembly(const ClipboardAssembly&) = delete;
    ClipboardAssembly& operator=(const ClipboardAssembly&) = delete;

    /// The launch step: the pasteboard is watched from now on; what lies on it now is not taken.
    void startWatching();
    /// The end sequence's step: the pasteboard is no longer watched, and a change of the history
    /// still waiting out its save delay is written now.
    void stopForTermination();

    ClipboardMonitor& clipboardMonitor() { return *clipboardMonitor_; }

private:
    ClipboardAssembly(AppServices& services, GlobalEventMonitor* monitor);

    UuidGenerator ids_;
    std::unique_ptr<ClipboardMonitor> clipboardMonitor_;
    std::unique_ptr<ClipboardHistoryPopup> popup_;
    std::unique_ptr<ClipboardHistoryCoordinator> coordinator_;
};

}  // namespace orvantis::app
