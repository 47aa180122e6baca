#pragma once

#include <memory>
#include <optional>
#include <string>

namespace orvantis {
class CaffeineCoordinator;
class FinderCutCoordinator;
class GlobalEventMonitor;
class KeyboardLockCoordinator;
class MenuBarHiderCoordinator;
class ScrollReverserCoordinator;
}  // namespace orvantis
namespace orvantis::ui {
class MenuBarController;
}

namespace orvantis::app {

struct AppServices;

/// The system utilities and their wiring: keep-awake with its lid-close modes, the keyboard
/// lock with its overlay, scroll reversal per device, the file cut (for no application on
/// this desktop) and the tray icon hider (which no Linux tray host allows), the menu's rows
/// and the red keep-awake icon. Made in the launch order after the text tools; main thread
/// only.
class SystemUtilitiesAssembly {
public:
    /// Never null: a feature whose desktop service is missing stays off and says so in the log.
    /// `monitor` may be null (no keyboard): the hotkeys and the lock are then unavailable.
    static std::unique_ptr<SystemUtilitiesAssembly> create(AppServices& services, GlobalEventMonitor* monitor,
                                                           ui::MenuBarController* menu);
    ~SystemUtilitiesAssembly();
    SystemUtilitiesAssembly(const SystemUtilitiesAssembly&) = delete;
    SystemUtilitiesAssembly& operator=(const SystemUtilitiesAssembly&) = delete;

    /// The end sequence's step: lid-close sleep back on if it was turned off, every pointing
    /// device back to its own scroll direction.
    void stopForTermination();

    CaffeineCoordinator& caffeine() { return *caffeine_; }
    /// Null without the keyboard monitor.
    KeyboardLockCoordinator* keyboardLock() { return keyboardLock_.get(); }

private:
    explicit SystemUtilitiesAssembly(AppServices& services);
    struct Fallbacks;

    std::unique_ptr<Fallbacks> fallbacks_;
    std::unique_ptr<KeyboardLockCoordinator> keyboardLock_;
    std::unique_ptr<ScrollReverserCoordinator> scrollReverser_;
    std::unique_ptr<MenuBarHiderCoordinator> menuBarHider_;
    std::unique_ptr<CaffeineCoordinator> caffeine_;
    std::unique_ptr<FinderCutCoordinator> finderCut_;
    struct Wiring;
    std::unique_ptr<Wiring> wiring_;
};

/// What `orvantis caffeine status` prints: `active` or `inactive`, a tab, the whole seconds
/// left of a limited arm or `-`, a tab, `held` or `released`.
std::string caffeineStatusLine(bool active, std::optional<long long> secondsLeft, bool held);

}  // namespace orvantis::app
