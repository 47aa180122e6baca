#pragma once

#include <functional>
#include <memory>

namespace orvantis {
class ClipboardMonitor;
class LogCategory;
}  // namespace orvantis
namespace orvantis::freedesktop {
class ClipboardBusService;
class SingleInstanceGuard;
}  // namespace orvantis::freedesktop

namespace orvantis::app {

/// Puts the clipboard history on the session bus for `orvantis clipboard`: List and Search
/// answer the listing of the live history (pinned first, through the popup's search), Clear
/// does what the settings window's button does (every entry, pinned ones too, and the file).
/// `monitor` answers the watcher of the moment, or null when there is none: the calls then get
/// an error reply. Null when the guard has no bus. Keep the result no longer than the guard;
/// main thread only.
std::unique_ptr<freedesktop::ClipboardBusService> exportClipboardOnBus(freedesktop::SingleInstanceGuard& guard,
                                                                       std::function<ClipboardMonitor*()> monitor,
                                                                       const LogCategory& log);

}  // namespace orvantis::app
