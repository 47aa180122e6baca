#include "core/utilities/menu_bar_hider_coordinator.h"

#include <algorithm>
#include <string>

#include "core/log/app_logger.h"

namespace orvantis {

MenuBarHiderCoordinator::MenuBarHiderCoordinator(AppSettings& settings, MenuBarHiderItems* items,
                                                 GlobalEventMonitorProtocol* monitor, platform::MainLoop& loop,
                                                 const LogCategory& log)
    : settings_(settings), items_(items), loop_(loop), log_(log) {
    if (monitor != nullptr) hotkey_ = monitor->onMenuBarHiderHotkey([this] { toggle("hotkey"); });
}

void MenuBarHiderCoordinator::applyState() {
    if (!settings_.menuBarHiderEnabled()) {
        removeItems();
        log_.info("menuBarHider: disabled");
        return;
    }
    if (items_ == nullptr) {
        log_.info("menuBarHider: the tray host gives no way to hide other applications' icons; nothing to do");
        return;
    }
    installItems();
    const bool collapsed = settings_.menuBarHiderCollapsed();
    if (collapsed) applyCollapsedVisuals();
    else applyExpandedVisuals();
    log_.info("menuBarHider: enabled (collapsed=" + std::string(collapsed ? "true" : "false") + ", autoCollapseSec=" +
              std::to_string(std::clamp(settings_.menuBarHiderAutoCollapseSeconds(), 0, kMaximumAutoCollapseSeconds)) +
              ")");
}

void MenuBarHiderCoordinator::installItems() {
    if (installed_) return;
    items_->install([this] { toggle("click-chevron"); }, [this] { toggle("click-separator"); });
    installed_ = true;
    items_->setChevronCollapsed(settings_.menuBarHiderCollapsed());
}

void MenuBarHiderCoordinator::removeItems() {
    if (installed_ && items_ != nullptr) items_->remove();
    installed_ = false;
    autoCollapseWork_.cancel();
}

void MenuBarHiderCoordinator::applyCollapsedVisuals() {
    items_->setSeparatorLength(kCollapsedSeparatorWidth);
    items_->setChevronCollapsed(true);
    autoCollapseWork_.cancel();
}

void MenuBarHiderCoordinator::applyExpandedVisuals() {
    items_->setSeparatorLength(kExpandedSeparatorWidth);
    items_->setChevronCollapsed(false);
    scheduleAutoCollapse();
}

void MenuBarHiderCoordinator::toggle(std::string_view reason) {
    if (!settings_.menuBarHiderEnabled() || !installed_) return;
    const bool collapsed = !settings_.menuBarHiderCollapsed();
    settings_.setMenuBarHiderCollapsed(collapsed);
    if (collapsed) applyCollapsedVisuals();
    else applyExpandedVisuals();
    log_.info("menuBarHider: " + std::string(collapsed ? "collapsed" : "expanded") + " via " + std::string(reason));
}

void MenuBarHiderCoordinator::scheduleAutoCollapse() {
    autoCollapseWork_.cancel();
    int seconds = settings_.menuBarHiderAutoCollapseSeconds();
    if (seconds < 1) return;
    seconds = std::min(seconds, kMaximumAutoCollapseSeconds);
    autoCollapseWork_ = loop_.postAfter(std::chrono::seconds(seconds), [this, seconds] {
        if (!settings_.menuBarHiderEnabled() || settings_.menuBarHiderCollapsed() || !installed_) return;
        settings_.setMenuBarHiderCollapsed(true);
        applyCollapsedVisuals();
        log_.info("menuBarHider: auto-collapsed after " + std::to_string(seconds) + "s");
    });
}

}  // namespace orvantis
