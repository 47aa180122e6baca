#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/settings/hotkey_descriptor.h"
#include "core/settings/settings_language.h"
#include "platform/main_loop.h"
#include "platform/subscription.h"

namespace orvantis {
class AppSettings;
class GlobalEventMonitorProtocol;

/// The content of the hotkey overlay, gathered from the settings at each display.
namespace HotkeyOverlayEntries {

struct Entry {
    std::string icon;    ///< a freedesktop icon name
    std::string name;
    std::string hotkey;  ///< linuxHotkeyName() of the stored hotkey
    bool enabled = true;
    bool operator==(const Entry&) const = default;
};

struct Section {
    std::optional<std::string> title;
    std::vector<Entry> entries;
    bool operator==(const Section&) const = default;
};

/// Two sections: the main features (no title), then the small utilities titled with the
/// "Bonus" text. Features that are off are listed too, with `enabled` false.
std::vector<Section> gather(const AppSettings& settings, SettingsLanguage language);

}  // namespace HotkeyOverlayEntries

/// The panel as the coordinator sees it.
class HotkeyOverlayView {
public:
    virtual ~HotkeyOverlayView() = default;
    /// Rebuilds the panel from `sections` and shows it centred without taking the focus.
    virtual void show(const std::string& title, const std::vector<HotkeyOverlayEntries::Section>& sections) = 0;
    virtual void hide() = 0;
};

/// Shows the overlay while its hotkey is held: at the press it gathers the rows in the current
/// language and shows the panel; when the key or a modifier goes up it hides it. The panel is
/// made at the first press and kept. Borrows the monitor, the settings and the loop, which must
/// outlive it. Main thread only.
class HotkeyOverlayCoordinator {
public:
    /// How long the overlay stays when it is asked for from the command line, where there is no
    /// key to let go.
    static constexpr platform::Duration kCommandDisplayTime = std::chrono::seconds(4);

    HotkeyOverlayCoordinator(GlobalEventMonitorProtocol* monitor, const AppSettings& settings, platform::MainLoop& loop,
                             std::function<std::unique_ptr<HotkeyOverlayView>()> makeView);

    void pressed();
    void released();
    /// Shows the overlay for kCommandDisplayTime (again from now when it is showing already);
    /// a release of the hotkey ends it earlier.
    void showForCommand();

    bool isVisible() const { return visible_; }
    HotkeyOverlayView* view() const { return view_.get(); }

private:
    const AppSettings& settings_;
    platform::MainLoop& loop_;
    std::function<std::unique_ptr<HotkeyOverlayView>()> makeView_;
    std::unique_ptr<HotkeyOverlayView> view_;
    bool visible_ = false;
    platform::TimerHandle commandTimer_;
    Subscription pressed_;
    Subscription released_;
};

}  // namespace orvantis
