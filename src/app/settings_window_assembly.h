#pragma once

#include <memory>

#include "app/app_services.h"

namespace orvantis {
class ClipboardMonitor;
class GlobalEventMonitor;
}  // namespace orvantis
namespace orvantis::ui {
class SettingsWindowController;
}

namespace orvantis::app {

class FeedbackAssembly;
class SystemUtilitiesAssembly;

/// The features a save reaches beyond the settings store; each may be null when its feature is
/// not running, and the save then skips what it would have done there.
struct SettingsWindowCollaborators {
    GlobalEventMonitor* monitor = nullptr;
    ClipboardMonitor* clipboard = nullptr;
    SystemUtilitiesAssembly* systemUtilities = nullptr;
};

/// The settings window: made at openSettings(), one at a time, and dropped when it closes. The
/// menu's Settings row and the command line open it through openSettings(). Main thread only.
class SettingsWindowAssembly {
public:
    SettingsWindowAssembly(AppServices& services, SettingsWindowCollaborators collaborators);
    ~SettingsWindowAssembly();
    SettingsWindowAssembly(const SettingsWindowAssembly&) = delete;
    SettingsWindowAssembly& operator=(const SettingsWindowAssembly&) = delete;

    /// Shows the window, or raises the one that is open.
    void openSettings();
    /// The open window, or null.
    ui::SettingsWindowController* window() const { return window_.get(); }
    /// The feedback window's opener, made with this and kept as long.
    FeedbackAssembly& feedback() { return *feedback_; }

private:
    class SaveTarget;
    void suspendGrabs(bool capturing);

    AppServices services_;
    SettingsWindowCollaborators collaborators_;
    std::unique_ptr<FeedbackAssembly> feedback_;
    std::unique_ptr<ui::SettingsWindowController> window_;
    bool monitorWasRunning_ = false;
};

}  // namespace orvantis::app
