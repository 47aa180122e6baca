#include "app/snippets_assembly.h"

#include "app/app_services.h"
#include "core/clipboard/clipboard_monitor.h"
#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/snippets/snippet_expander.h"
#include "core/snippets/snippet_expander_coordinator.h"

namespace orvantis::app {

std::unique_ptr<SnippetsAssembly> SnippetsAssembly::create(AppServices& services, GlobalEventMonitor* monitor,
                                                           ClipboardMonitor* clipboard) {
    const DesktopServices& desktop = services.desktop;
    if (!monitor || !desktop.accessibility || !desktop.keyOutput || !desktop.pasteboard) {
        services.logger.log().app.warning("snippets: no keyboard monitor, accessibility, key output or clipboard; the "
                                          "snippet hotkey is off");
        return nullptr;
    }
    return std::unique_ptr<SnippetsAssembly>(new SnippetsAssembly(services, *monitor, clipboard));
}

SnippetsAssembly::SnippetsAssembly(AppServices& services, GlobalEventMonitor& monitor, ClipboardMonitor* clipboard) {
    const DesktopServices& desktop = services.desktop;
    expander_ = std::make_unique<SnippetExpander>(services.settings.store());
    coordinator_ = std::make_unique<SnippetExpanderCoordinator>(
        services.settings, monitor, services.loop, *expander_, *desktop.accessibility, *desktop.pasteboard,
        *desktop.keyOutput, [clipboard] {
            if (clipboard) clipboard->acknowledgeCurrentChangeCount();
        });
}

SnippetsAssembly::~SnippetsAssembly() = default;

}  // namespace orvantis::app
