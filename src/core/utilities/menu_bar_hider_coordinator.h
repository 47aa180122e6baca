#pragma once

#include <functional>
#include <string_view>

#include "core/events/global_event_monitor_protocol.h"
#include "core/settings/app_settings.h"
#include "platform/main_loop.h"
#include "platform/subscription.h"

namespace orvantis {

class LogCategory;

/// The two tray items of the icon hider: a chevron and a separator dot, whose width pushes the
/// icons left of it out of sight. Main thread only.
class MenuBarHiderItems {
public:
    virtual ~MenuBarHiderItems() = default;
    /// Adds both items; `onChevron` and `onSeparator` are their clicks.
    virtual void install(std::function<void()> onChevron, std::function<void()> onSeparator) = 0;
    virtual void remove() = 0;
    virtual void setSeparatorLength(double points) = 0;
    /// Points left when collapsed, right when expanded.
    virtual void setChevronCollapsed(bool collapsed) = 0;
};

/// Hides other applications' tray icons behind a separator whose width is 10,000 points when
/// collapsed and 22 when expanded; the collapsed state is the stored setting and survives a
/// restart, and an expanded bar may collapse again by itself after a set time. Where the tray
/// host gives no way to do this (every Linux tray host), there are no items: applyState() says
/// so in the log and the hotkey does nothing. Borrows its collaborators; main thread only.
class MenuBarHiderCoordinator {
public:
    static constexpr double kExpandedSeparatorWidth = 22;
    static constexpr double kCollapsedSeparatorWidth = 10000;
    static constexpr int kMaximumAutoCollapseSeconds = 300;

    /// `items` null: the tray host cannot hide other icons.
    MenuBarHiderCoordinator(AppSettings& settings, MenuBarHiderItems* items, GlobalEventMonitorProtocol* monitor,
                            platform::MainLoop& loop, const LogCategory& log);

    void applyState();
    void toggle(std::string_view reason);
    bool hasItems() const { return installed_; }
    bool autoCollapsePending() const { return autoCollapseWork_.isActive(); }

private:
    void installItems();
    void removeItems();
    void applyCollapsedVisuals();
    void applyExpandedVisuals();
    void scheduleAutoCollapse();

    AppSettings& settings_;
    MenuBarHiderItems* items_;
    platform::MainLoop& loop_;
    const LogCategory& log_;
    bool installed_ = false;
    platform::TimerHandle autoCollapseWork_;
    Subscription hotkey_;
};

}  // namespace orvantis
