#include "app/layout_switching_assembly.h"

#include "app/app_services.h"
#include "core/events/global_event_monitor.h"
#include "core/layout/layout_switcher.h"
#include "core/layout/layout_translator.h"
#include "core/layout/text_switch_coordinator.h"
#include "core/layout/transliteration_map.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"

namespace orvantis::app {

std::unique_ptr<LayoutSwitchingAssembly> LayoutSwitchingAssembly::create(AppServices& services) {
    if (!services.desktop.hasKeyboard()) {
        services.logger.log().app.warning("keyboard: no X display with XKB, XInput 2 and XTest; the hotkeys are off");
        return nullptr;
    }
    return std::unique_ptr<LayoutSwitchingAssembly>(new LayoutSwitchingAssembly(services));
}

LayoutSwitchingAssembly::LayoutSwitchingAssembly(AppServices& services) {
    const DesktopServices& desktop = services.desktop;
    layoutTranslator_ = std::make_unique<LayoutTranslator>(*desktop.inputSources);
    transliterationMap_ = std::make_unique<TransliterationMap>(*layoutTranslator_);
    layoutSwitcher_ = std::make_unique<LayoutSwitcher>(*desktop.inputSources);
    monitor_ = std::make_unique<GlobalEventMonitor>(services.settings, *desktop.eventTap, services.loop,
                                                    services.logger.log());
    coordinator_ = std::make_unique<TextSwitchCoordinator>(
        services.settings, *monitor_, *layoutSwitcher_, *transliterationMap_, *desktop.accessibility,
        *desktop.keyOutput, services.loop, services.notifications, services.logger.log().app);
}

LayoutSwitchingAssembly::~LayoutSwitchingAssembly() = default;

}  // namespace orvantis::app
