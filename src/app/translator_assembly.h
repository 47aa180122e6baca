#pragma once

#include <memory>

namespace orvantis {
class GlobalEventMonitor;
class TranslationCoordinator;
class TranslationPopup;
class TranslationService;
}  // namespace orvantis

namespace orvantis::app {

struct AppServices;

/// The translator: the translation service over the desktop's HTTP client, its popup, and the
/// coordinator that the translation hotkeys reach through the keyboard monitor.
class TranslatorAssembly {
public:
    /// Null when the desktop lacks what the translator reads and writes with (the frontmost
    /// application, the pasteboard, the pointer, the network, a popup).
    static std::unique_ptr<TranslatorAssembly> create(AppServices& services, GlobalEventMonitor& monitor);
    ~TranslatorAssembly();
    TranslatorAssembly(const TranslatorAssembly&) = delete;
    TranslatorAssembly& operator=(const TranslatorAssembly&) = delete;

private:
    TranslatorAssembly(AppServices& services, GlobalEventMonitor& monitor);

    std::unique_ptr<TranslationService> service_;
    std::unique_ptr<TranslationPopup> popup_;
    std::unique_ptr<TranslationCoordinator> coordinator_;
};

}  // namespace orvantis::app
