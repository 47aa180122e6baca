#include "app/clipboard_bus_export.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "core/clipboard/clipboard_filter.h"
#include "core/clipboard/clipboard_listing.h"
#include "core/clipboard/clipboard_monitor.h"
#include "core/log/app_logger.h"
#include "platform/freedesktop/clipboard_bus.h"
#include "platform/freedesktop/single_instance_guard.h"

namespace orvantis::app {

std::unique_ptr<freedesktop::ClipboardBusService> exportClipboardOnBus(freedesktop::SingleInstanceGuard& guard,
                                                                       std::function<ClipboardMonitor*()> monitor,
                                                                       const LogCategory& log) {
    freedesktop::ClipboardBusHandlers handlers;
    handlers.list = [monitor](std::string_view search) -> std::optional<std::string> {
        ClipboardMonitor* current = monitor();
        if (current == nullptr) return std::nullopt;
        // An empty search keeps every entry, in the history's order.
        return encodeClipboardListing(clipboardListing(filterClipboardItems(current->history().items(), search)));
    };
    handlers.clear = [monitor, &log] {
        ClipboardMonitor* current = monitor();
        if (current == nullptr) return false;
        current->history().clear();
        current->deletePersistedHistory();
        log.info("clipboard: history cleared from the command line");
        return true;
    };
    auto service = freedesktop::ClipboardBusService::exportOn(guard, std::move(handlers));
    if (service) log.info("clipboard: the history answers on the session bus");
    return service;
}

}  // namespace orvantis::app
