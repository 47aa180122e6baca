#include "app/clipboard_assembly.h"

#include "app/app_services.h"
#include "core/clipboard/clipboard_history_coordinator.h"
#include "core/clipboard/clipboard_history_popup.h"
#include "core/clipboard/clipboard_monitor.h"
#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"

namespace orvantis::app {

std::unique_ptr<ClipboardAssembly> ClipboardAssembly::create(AppServices& services, GlobalEventMonitor* monitor) {
    const DesktopServices& desktop = services.desktop;
    if (!desktop.pasteboard || !desktop.applications || !desktop.accessibility) {
        services.logger.log().clipboard.warning("clipboard: no X display; the clipboard history is off");
        return nullptr;
    }
    return std::unique_ptr<ClipboardAssembly>(new ClipboardAssembly(services, monitor));
}

ClipboardAssembly::ClipboardAssembly(AppServices& services, GlobalEventMonitor* monitor) {
    const DesktopServices& desktop = services.desktop;
    clipboardMonitor_ = std::make_unique<ClipboardMonitor>(
        services.settings, *desktop.pasteboard, *desktop.applications, *desktop.accessibility, services.loop,
        services.clock, ids_, services.dataDirectory / "clipboard.json", &services.logger.log().clipboard);
    // The popup opens on a hotkey: nothing to open it without the keyboard monitor.
    if (!monitor || !desktop.makeClipboardPopup || !desktop.selectionKeys || !desktop.pointer) return;
    popup_ = desktop.makeClipboardPopup();
    coordinator_ = std::make_unique<ClipboardHistoryCoordinator>(services.settings, *monitor, *popup_,
                                                                 *clipboardMonitor_, *desktop.pasteboard,
                                                                 *desktop.selectionKeys, *desktop.pointer);
}

ClipboardAssembly::~ClipboardAssembly() = default;

void ClipboardAssembly::startWatching() { clipboardMonitor_->start(); }

void ClipboardAssembly::stopForTermination() {
    clipboardMonitor_->stop();
    clipboardMonitor_->flushPersistence();
}

}  // namespace orvantis::app
