#include "app/translator_assembly.h"

#include "app/app_services.h"
#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/translation/translation_service.h"
#include "core/translator/translation_coordinator.h"
#include "core/translator/translation_popup.h"

namespace orvantis::app {

std::unique_ptr<TranslatorAssembly> TranslatorAssembly::create(AppServices& services, GlobalEventMonitor& monitor) {
    const DesktopServices& desktop = services.desktop;
    if (!desktop.applications || !desktop.pasteboard || !desktop.pointer || !desktop.httpClient ||
        !desktop.selectionKeys || !desktop.accessibility || !desktop.makeTranslationPopup) {
        services.logger.log().translate.warning("translator: the desktop offers no pasteboard or pointer; it is off");
        return nullptr;
    }
    return std::unique_ptr<TranslatorAssembly>(new TranslatorAssembly(services, monitor));
}

TranslatorAssembly::TranslatorAssembly(AppServices& services, GlobalEventMonitor& monitor) {
    const DesktopServices& desktop = services.desktop;
    AppSettings& settings = services.settings;
    service_ = std::make_unique<TranslationService>(*desktop.httpClient, services.loop,
                                                    services.logger.log().translate,
                                                    [&settings] { return settings.translationEndpoint(); });
    popup_ = desktop.makeTranslationPopup();
    coordinator_ = std::make_unique<TranslationCoordinator>(settings, monitor, *popup_, *service_,
                                                            *desktop.applications, *desktop.accessibility,
                                                            *desktop.pasteboard, *desktop.selectionKeys,
                                                            *desktop.pointer, services.loop);
}

TranslatorAssembly::~TranslatorAssembly() = default;

}  // namespace orvantis::app
