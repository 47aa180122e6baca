#pragma once

#include <filesystem>
#include <memory>
#include <set>
#include <vector>

#include <QObject>

#include "app/app_services.h"

namespace orvantis {
class ClipboardMonitor;
class GlobalEventMonitor;
class SyncManager;
}  // namespace orvantis
namespace orvantis {
class LogCategory;
}
namespace orvantis::freedesktop {
class DesktopEntries;
}
namespace orvantis::ui {
class SettingsWindowController;
struct InstalledApp;
}

namespace orvantis::app {

class FeedbackAssembly;
class PomodoroAssembly;
class SystemUtilitiesAssembly;

/// The features a save reaches beyond the settings store; each may be null when its feature is
/// not running, and the save then skips what it would have done there.
struct SettingsWindowCollaborators {
    GlobalEventMonitor* monitor = nullptr;
    ClipboardMonitor* clipboard = nullptr;
    SystemUtilitiesAssembly* systemUtilities = nullptr;
    /// Its Focus switch is asked again by the Pomodoro page's Recheck button.
    PomodoroAssembly* pomodoro = nullptr;
    /// Told when a save changed one of the two sync switches.
    SyncManager* sync = nullptr;
};

/// The applications the app lists offer: every desktop entry but the NoDisplay ones. Each file
/// the entries passed over gets one warning in `log`, unless `reported` already holds it.
std::vector<ui::InstalledApp> listableApplications(const freedesktop::DesktopEntries& entries, const LogCategory& log,
                                                   std::set<std::filesystem::path>& reported);

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
    /// Windows closed in this turn, dropped in the next.
    std::vector<std::unique_ptr<ui::SettingsWindowController>> closing_;
    bool monitorWasRunning_ = false;
    /// The broken desktop files already in the log: each is reported once per run.
    std::set<std::filesystem::path> reportedDesktopFiles_;
    /// The context of the turn-later drop of a closed window: ends first, which cancels a drop
    /// still waiting when the assembly goes.
    QObject dropContext_;
};

}  // namespace orvantis::app
