#pragma once

#include <memory>
#include <string>

namespace orvantis {
class AppLogger;
class AppSettings;
class GlobalEventMonitor;
class PomodoroCoordinator;
class PomodoroHistory;
}  // namespace orvantis
namespace orvantis::platform {
class SerialQueue;
}
namespace orvantis::freedesktop {
class PomodoroBusService;
class SingleInstanceGuard;
}  // namespace orvantis::freedesktop
namespace orvantis::ui {
class MenuBarController;
class PomodoroDashboardWindowController;
}  // namespace orvantis::ui

namespace orvantis::app {

struct AppServices;

/// Builds the Pomodoro and keeps it alive: the history in the data folder, the coordinator on
/// the hotkey, the tray menu's rows and the countdown on the icon, the dashboard while it is
/// open, and the missing-Focus alert. Destroyed in reverse order after the end sequence.
class PomodoroAssembly {
public:
    /// Null, with a line in the log, when the desktop has none of the Pomodoro's services.
    /// `monitor` may be null (no keyboard): there is then no hotkey.
    static std::unique_ptr<PomodoroAssembly> create(AppServices& services, ui::MenuBarController& menu,
                                                    GlobalEventMonitor* monitor);
    ~PomodoroAssembly();
    PomodoroAssembly(const PomodoroAssembly&) = delete;
    PomodoroAssembly& operator=(const PomodoroAssembly&) = delete;

    /// The end sequence's step: the session ends, so Focus is released.
    void stopForTermination();
    /// Opens the dashboard, or brings the open one forward.
    void openDashboard();

    PomodoroCoordinator& coordinator() { return *coordinator_; }
    PomodoroHistory& history() { return *history_; }
    ui::PomodoroDashboardWindowController* dashboard() const { return dashboard_.get(); }

    /// `orvantis pomodoro`'s status line: `idle` or `running`/`paused`, phase, seconds; then the
    /// session of the cycle and today's sessions, tab-separated.
    std::string statusLine() const;

private:
    PomodoroAssembly(AppServices& services, ui::MenuBarController& menu, GlobalEventMonitor* monitor);
    void showFocusMissingAlert();

    AppLogger& logger_;    ///< the services themselves are the delegate's, not kept
    AppSettings& settings_;
    ui::MenuBarController& menu_;
    std::unique_ptr<platform::SerialQueue> historyQueue_;
    std::unique_ptr<PomodoroHistory> history_;
    std::unique_ptr<PomodoroCoordinator> coordinator_;
    std::unique_ptr<ui::PomodoroDashboardWindowController> dashboard_;
    struct Subscriptions;
    std::unique_ptr<Subscriptions> subscriptions_;
};

/// Shows the Focus commands' folder in the file manager, making it first if missing; a failure
/// is logged. The missing-Focus alert and the settings window's Open button both use it.
void openFocusCommandFolder(AppLogger& logger);

/// Puts the Pomodoro on the session bus for `orvantis pomodoro`. Null when the guard has no
/// bus; keep the result no longer than the guard or the assembly. Main thread only.
std::unique_ptr<freedesktop::PomodoroBusService> exportPomodoroOnBus(freedesktop::SingleInstanceGuard& guard,
                                                                     PomodoroAssembly& pomodoro);

}  // namespace orvantis::app
