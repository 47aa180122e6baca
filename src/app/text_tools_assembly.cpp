#include "app/text_tools_assembly.h"

#include "app/app_services.h"
#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/text_tools/text_transformer_coordinator.h"

namespace orvantis::app {

std::unique_ptr<TextToolsAssembly> TextToolsAssembly::create(AppServices& services, GlobalEventMonitor* monitor) {
    if (!monitor || !services.desktop.makeTextTransformerWindow) {
        services.logger.log().app.warning("textTools: no keyboard monitor or no display; the text tools window is off");
        return nullptr;
    }
    return std::unique_ptr<TextToolsAssembly>(new TextToolsAssembly(services, *monitor));
}

TextToolsAssembly::TextToolsAssembly(AppServices& services, GlobalEventMonitor& monitor) {
    AppSettings& settings = services.settings;
    const DesktopServices& desktop = services.desktop;
    coordinator_ = std::make_unique<TextTransformerCoordinator>(
        settings, monitor, services.loop, [&settings, &desktop](std::function<void()> onClosed) {
            return desktop.makeTextTransformerWindow(settings, std::move(onClosed));
        });
}

TextToolsAssembly::~TextToolsAssembly() = default;

}  // namespace orvantis::app
