#include "app/passwords_assembly.h"

#include "app/app_services.h"
#include "core/clipboard/clipboard_monitor.h"
#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/passwords/password_coordinator.h"
#include "core/passwords/password_generator.h"
#include "core/shell/toast.h"

namespace orvantis::app {

namespace {

/// Where the desktop shows no toast: the notice is dropped.
class NoToast final : public Toast {
public:
    void show(const ToastContent&) override {}
};

}  // namespace

std::unique_ptr<PasswordsAssembly> PasswordsAssembly::create(AppServices& services, GlobalEventMonitor* monitor,
                                                             ClipboardMonitor* clipboard) {
    const DesktopServices& desktop = services.desktop;
    if (!monitor || !desktop.keyOutput || !desktop.pasteboard) {
        services.logger.log().app.warning("password: no keyboard monitor, key output or clipboard; the password "
                                          "hotkey is off");
        return nullptr;
    }
    return std::unique_ptr<PasswordsAssembly>(new PasswordsAssembly(services, *monitor, clipboard));
}

PasswordsAssembly::PasswordsAssembly(AppServices& services, GlobalEventMonitor& monitor, ClipboardMonitor* clipboard) {
    const DesktopServices& desktop = services.desktop;
    generator_ = std::make_unique<PasswordGenerator>(random_, PasswordGenerator::systemRandomIndex,
                                                     &services.logger.log().app);
    if (desktop.makeToast) toast_ = desktop.makeToast();
    if (!toast_) toast_ = std::make_unique<NoToast>();
    coordinator_ = std::make_unique<PasswordCoordinator>(
        services.settings, monitor, services.loop, *desktop.pasteboard, *desktop.keyOutput, *generator_, *toast_,
        [clipboard] {
            if (clipboard) clipboard->acknowledgeCurrentChangeCount();
        },
        desktop.makePasswordPopup);
}

PasswordsAssembly::~PasswordsAssembly() = default;

}  // namespace orvantis::app
