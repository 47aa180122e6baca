#include "app/system_utilities_assembly.h"

#include <cerrno>
#include <chrono>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "app/app_services.h"
#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "core/utilities/caffeine_coordinator.h"
#include "core/utilities/finder_cut_coordinator.h"
#include "core/utilities/keyboard_lock_coordinator.h"
#include "core/utilities/menu_bar_hider_coordinator.h"
#include "core/utilities/scroll_reverser.h"
#include "platform/clock.h"
#include "platform/system_utilities.h"
#include "ui/menu_bar_controller.h"

namespace orvantis::app {
namespace {

/// Keep-awake on a desktop without any way to hold the display on: every arm fails, and says
/// why.
class UnavailablePower final : public platform::PowerAssertions {
public:
    explicit UnavailablePower(const LogCategory& log) : log_(log) {}
    int create(std::string_view, std::uint32_t&) override {
        log_.error("caffeine: this desktop offers no way to keep the computer awake");
        return ENOTSUP;
    }
    int release(std::uint32_t) override { return 0; }

private:
    const LogCategory& log_;
};

/// The file managers of this desktop that lack a cut of their own: none. Nautilus, Dolphin,
/// Thunar, Nemo, Caja and PCManFM all cut with Ctrl+X and move with Ctrl+V.
const std::set<std::string> kFileManagersWithoutCut{};

}  // namespace

std::string caffeineStatusLine(bool active, std::optional<long long> secondsLeft, bool held) {
    return std::string(active ? "active" : "inactive") + "\t" +
           (secondsLeft ? std::to_string(*secondsLeft) : std::string("-")) + "\t" + (held ? "held" : "released");
}

struct SystemUtilitiesAssembly::Fallbacks {
    explicit Fallbacks(const LogCategory& log) : power(log) {}
    UnavailablePower power;
};

struct SystemUtilitiesAssembly::Wiring {
    Subscription finderCut;
    Subscription lockSetting;
};

SystemUtilitiesAssembly::SystemUtilitiesAssembly(AppServices& services)
    : fallbacks_(std::make_unique<Fallbacks>(services.logger.log().app)), wiring_(std::make_unique<Wiring>()) {}

SystemUtilitiesAssembly::~SystemUtilitiesAssembly() = default;

std::unique_ptr<SystemUtilitiesAssembly> SystemUtilitiesAssembly::create(AppServices& services,
                                                                         GlobalEventMonitor* monitor,
                                                                         ui::MenuBarController* menu) {
    std::unique_ptr<SystemUtilitiesAssembly> a(new SystemUtilitiesAssembly(services));
    const LogCategory& log = services.logger.log().app;
    const DesktopServices& desktop = services.desktop;

    // The keyboard lock, on the monitor's locked mode.
    if (monitor != nullptr) {
        a->keyboardLock_ = std::make_unique<KeyboardLockCoordinator>(services.settings, *monitor, services.loop,
                                                                     services.clock, log,
                                                                     desktop.makeKeyboardLockOverlay);
        // The lock ends when its switch goes off, whoever wrote the setting.
        a->wiring_->lockSetting = services.settings.store().onChange(
            [lock = a->keyboardLock_.get()](const std::vector<std::string>&) { lock->applyState(); });
    } else {
        log.info("keyboardLock: no keyboard monitor, so the keyboard cannot be locked");
    }
    // Scroll direction per class of device.
    a->scrollReverser_ = std::make_unique<ScrollReverserCoordinator>(services.settings, desktop.pointerDevices, log);
    a->scrollReverser_->applyState();
    // The tray icon hider: no Linux tray host lets one hide other icons.
    a->menuBarHider_ = std::make_unique<MenuBarHiderCoordinator>(services.settings, nullptr, monitor, services.loop, log);
    a->menuBarHider_->applyState();
    // Keep-awake, with the lid-close modes.
    a->caffeine_ = std::make_unique<CaffeineCoordinator>(
        services.settings,
        CaffeineCoordinator::Services{
            desktop.powerAssertions != nullptr ? *desktop.powerAssertions : a->fallbacks_->power,
            desktop.applications, desktop.applicationWatch, desktop.lidSleep},
        monitor, services.loop, services.clock, log);
    // The file cut, for the file managers that lack one (none here).
    if (monitor != nullptr && desktop.applications != nullptr && desktop.pasteboard != nullptr &&
        desktop.keyOutput != nullptr) {
        a->finderCut_ = std::make_unique<FinderCutCoordinator>(services.settings, *desktop.applications,
                                                               *desktop.pasteboard, *desktop.keyOutput, services.loop,
                                                               log, kFileManagersWithoutCut, [] { return false; });
        a->wiring_->finderCut = monitor->setFinderCutHandler(
            [cut = a->finderCut_.get()](std::uint16_t keyCode, std::uint64_t flags) {
                return cut->handleKeyDown(keyCode, flags) == FinderCutCoordinator::Decision::swallow;
            });
    }

    if (menu != nullptr) {
        AppSettings& settings = services.settings;
        CaffeineCoordinator* caffeine = a->caffeine_.get();
        KeyboardLockCoordinator* lock = a->keyboardLock_.get();
        ui::MenuBarController::SystemUtilityRows rows;
        rows.caffeineEnabled = [&settings] { return settings.caffeineEnabled(); };
        rows.caffeineActive = [caffeine] { return caffeine->isActive(); };
        rows.lidAlwaysShown = [&settings] { return settings.caffeineLidCloseAlways(); };
        rows.lidAlwaysActive = [caffeine] { return caffeine->lidAlwaysActive(); };
        rows.keyboardLockEnabled = [&settings, lock] { return lock != nullptr && settings.keyboardLockEnabled(); };
        rows.keyboardLocked = [lock] { return lock != nullptr && lock->isLocked(); };
        rows.assertionHeld = [caffeine] { return caffeine->assertionHeld(); };
        rows.toggleCaffeine = [&settings, caffeine] {
            if (!settings.caffeineEnabled()) return;
            if (caffeine->isActive()) caffeine->stop("menu");
            else caffeine->start(std::nullopt, "menu");
        };
        rows.toggleCaffeineLidAlways = [caffeine] { caffeine->toggleLidAlwaysFromMenu(); };
        rows.toggleKeyboardLock = [lock] {
            if (lock != nullptr) lock->toggleFromMenu();
        };
        menu->setSystemUtilityRows(std::move(rows));
        caffeine->setOnStateChanged([menu] {
            menu->buildMenu();
            menu->renderStatusItem();
        });
    }
    return a;
}

void SystemUtilitiesAssembly::stopForTermination() {
    caffeine_->prepareForTermination();
    scrollReverser_->restoreDefaults();
}

}  // namespace orvantis::app
