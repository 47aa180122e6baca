#pragma once

#include <memory>

namespace orvantis {
class GlobalEventMonitor;
class LayoutSwitcher;
class LayoutTranslator;
class TextSwitchCoordinator;
class TransliterationMap;
}  // namespace orvantis

namespace orvantis::app {

struct AppServices;

/// The layout switcher and the keyboard monitor it brings to life: the key tables of the
/// session's layouts, the switcher of input sources, the monitor over the desktop's tap (its
/// hotkeys read from the settings here), and the coordinator that retypes words. The monitor is
/// not started: that is a later launch step, once every feature has wired its closures.
class LayoutSwitchingAssembly {
public:
    /// Null, with a warning in the log, when the desktop cannot watch and send keys: every
    /// hotkey is off then.
    static std::unique_ptr<LayoutSwitchingAssembly> create(AppServices& services);
    ~LayoutSwitchingAssembly();
    LayoutSwitchingAssembly(const LayoutSwitchingAssembly&) = delete;
    LayoutSwitchingAssembly& operator=(const LayoutSwitchingAssembly&) = delete;

    GlobalEventMonitor& monitor() { return *monitor_; }

private:
    explicit LayoutSwitchingAssembly(AppServices& services);

    std::unique_ptr<LayoutTranslator> layoutTranslator_;
    std::unique_ptr<TransliterationMap> transliterationMap_;
    std::unique_ptr<LayoutSwitcher> layoutSwitcher_;
    std::unique_ptr<GlobalEventMonitor> monitor_;
    std::unique_ptr<TextSwitchCoordinator> coordinator_;
};

}  // namespace orvantis::app
