#pragma once

#include <filesystem>
#include <memory>

#include "core/sync/sync_files.h"
#include "platform/subscription.h"

class QObject;

namespace orvantis {
class ClipboardMonitor;
class SyncManager;
}  // namespace orvantis

namespace orvantis::app {

struct AppServices;

/// Settings and clipboard sync through the synced folder: the manager, fed by the clipboard
/// history's changes and by the activation of the program (Qt's application state turning
/// active, which happens when any of our windows takes the focus). The settings store's changes
/// reach the manager through its own subscription. Main thread only.
class SyncAssembly {
public:
    /// `clipboard` may be null (no pasteboard): then only settings travel. The synced folder is
    /// looked for under `home`; an empty `home` has none.
    SyncAssembly(AppServices& services, ClipboardMonitor* clipboard, const std::filesystem::path& home);
    ~SyncAssembly();
    SyncAssembly(const SyncAssembly&) = delete;
    SyncAssembly& operator=(const SyncAssembly&) = delete;

    /// The launch step: the first pull and the poll.
    void start();

    SyncManager& manager() { return *manager_; }

private:
    LocalSyncFiles files_;
    std::unique_ptr<SyncManager> manager_;
    Subscription historyChanges_;
    /// The context of the activation connection: its end disconnects.
    std::unique_ptr<QObject> activation_;
};

}  // namespace orvantis::app
