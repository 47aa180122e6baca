#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/app_services.h"
#include "app/clipboard_assembly.h"
#include "app/desktop_services.h"
#include "app/layout_switching_assembly.h"
#include "app/passwords_assembly.h"
#include "app/settings_window_assembly.h"
#include "app/pomodoro_assembly.h"
#include "app/snippets_assembly.h"
#include "app/sync_assembly.h"
#include "app/system_utilities_assembly.h"
#include "app/text_tools_assembly.h"
#include "app/translator_assembly.h"
#include "core/events/notification_center.h"
#include "platform/clock.h"
#include "platform/main_loop.h"

namespace orvantis {
class AppLogger;
class AppSettings;
class HotkeyOverlayCoordinator;
class LaunchAtLoginManager;
class OnboardingModel;
class OnboardingWindow;
class ClipboardMonitor;
class PermissionPolling;
class PermissionsManager;
class PreferenceStore;
}  // namespace orvantis
namespace orvantis::platform {
class MainLoop;
class SerialQueue;
}  // namespace orvantis::platform
namespace orvantis::ui {
class MenuBarController;
}

namespace orvantis::app {

/// Where the program keeps its files.
struct AppPaths {
    std::filesystem::path preferencesFile;
    std::filesystem::path dataDirectory;  ///< the clipboard snapshot and the other data files
    /// The user's home, where the synced folder is looked for; empty: no synced folder.
    std::filesystem::path home{};
};

/// The application delegate: brings the parts of Orvantis to life in the launch order and
/// takes them down in the end order. Each feature is built by its own assembly; this class only
/// keeps their order. Holds the only reference to the tray icon's controller. Created by
/// runTrayApp() once Qt, the logger and the desktop exist; main thread only.
class AppDelegate {
public:
    /// Everything given outlives the delegate; `desktop`'s services too. `preferencesWriter` is
    /// the queue that writes the preference file. `quit` leaves the event loop; runTrayApp()
    /// then runs applicationWillTerminate().
    AppDelegate(AppLogger& logger, platform::MainLoop& loop, const platform::Clock& clock,
                platform::SerialQueue& preferencesWriter, AppPaths paths, const DesktopServices& desktop,
                std::function<void()> quit);
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    /// The launch sequence. Never fails: a part that cannot start logs why and launch goes on.
    void applicationDidFinishLaunching();
    /// The end sequence: logs "terminating", ends the permission polling, stops watching the
    /// clipboard (writing a change still waiting to be saved), stops the keyboard monitor, and
    /// waits until the settings and the log are on disk.
    void applicationWillTerminate();
    /// The end sequence when a library ends the process with exit() instead of a quit (Qt
    /// does when the X display goes away): `reason` as a warning, then the end sequence, so
    /// the settings and the log still reach the disk.
    void applicationEndsWithoutQuit(std::string_view reason);

    /// The tray icon's controller, from launch step 3 on; null before.
    ui::MenuBarController* menuBarController() const { return menuBarController_.get(); }
    /// The typed settings, from launch step 2 on; null before.
    AppSettings* settings() const { return settings_.get(); }
    /// The clipboard watcher and its history, from launch on; null without a pasteboard.
    ClipboardMonitor* clipboardMonitor() const;
    /// The Pomodoro, from launch on; null when the desktop lacks its services.
    PomodoroAssembly* pomodoro() const { return pomodoro_.get(); }
    NotificationCenter& notifications() { return notifications_; }
    /// Opens the settings window, or raises it when it is open: the menu's first row and
    /// `orvantis show settings`. Logs what is missing while no window has been given.
    void openSettings();
    /// Replaces what opens the settings window (launch gives the settings window's assembly).
    void setSettingsOpener(std::function<void()> opener) { settingsOpener_ = std::move(opener); }

    /// Shows the onboarding window, or raises it when it is open, whether or not onboarding
    /// was completed before: the first run and `orvantis show onboarding`.
    void showOnboarding();
    /// `orvantis show WINDOW`: opens or raises "settings", "onboarding", "help", "overlay" or
    /// "feedback";
    /// answers why not for any other name.
    std::optional<std::string> showWindow(std::string_view window);
    /// The onboarding window while it is open, else null.
    OnboardingWindow* onboardingWindow() const { return onboardingWindow_.get(); }
    /// The hotkey overlay, from launch on.
    HotkeyOverlayCoordinator* hotkeyOverlay() const { return hotkeyOverlay_.get(); }

    /// Keep-awake, the keyboard lock and the other system utilities, from launch on.
    SystemUtilitiesAssembly* systemUtilities() const { return systemUtilities_.get(); }
    /// Settings and clipboard sync, from launch on.
    SyncAssembly* sync() const { return sync_.get(); }
    /// The settings window's opener, from launch on.
    SettingsWindowAssembly* settingsWindow() const { return settingsWindow_.get(); }

private:
    void logLaunchBanner();
    void createSettings();
    void followLoginItem();
    void createMenuBar();
    bool showOnboardingIfNeeded();
    void startKeyboardWatching();
    AppServices services();

    AppLogger& logger_;
    platform::MainLoop& loop_;
    const platform::Clock& clock_;
    platform::SerialQueue& preferencesWriter_;
    AppPaths paths_;
    const DesktopServices& desktop_;
    std::function<void()> quit_;
    std::function<void()> settingsOpener_;
    NotificationCenter notifications_;
    std::unique_ptr<PreferenceStore> store_;
    std::unique_ptr<AppSettings> settings_;
    std::unique_ptr<LaunchAtLoginManager> launchAtLogin_;
    std::unique_ptr<ui::MenuBarController> menuBarController_;
    Subscription menuLanguage_;  ///< the menu follows a language written by another process
    std::unique_ptr<LayoutSwitchingAssembly> layoutSwitching_;
    std::unique_ptr<TranslatorAssembly> translator_;
    std::unique_ptr<ClipboardAssembly> clipboard_;
    std::unique_ptr<SyncAssembly> sync_;
    std::unique_ptr<PomodoroAssembly> pomodoro_;
    std::unique_ptr<PasswordsAssembly> passwords_;
    std::unique_ptr<SnippetsAssembly> snippets_;
    std::unique_ptr<TextToolsAssembly> textTools_;
    std::unique_ptr<HotkeyOverlayCoordinator> hotkeyOverlay_;
    std::unique_ptr<SystemUtilitiesAssembly> systemUtilities_;
    std::unique_ptr<SettingsWindowAssembly> settingsWindow_;
    std::unique_ptr<PermissionsManager> permissionsManager_;
    std::unique_ptr<PermissionPolling> permissionPolling_;
    /// The onboarding window and its model while it is open; dropped one turn after it closes.
    std::unique_ptr<OnboardingModel> onboardingModel_;
    std::unique_ptr<OnboardingWindow> onboardingWindow_;
    platform::TimerHandle onboardingDrop_;
};

/// The launch banner line: "launch: Orvantis <version> (build <build>) on <system>;
/// accessibility=granted|missing, inputMonitoring=granted|missing". An empty version or build
/// shows as "?".
std::string launchBanner(std::string_view version, std::string_view build, std::string_view systemVersion,
                         bool accessibility, bool inputMonitoring);

/// Runs Orvantis as a tray application until it is quit from its menu or by SIGTERM or
/// SIGINT, and answers the process exit status (0 then). A second instance in the same
/// session prints "Orvantis is already running" and answers 0 at once.
int runTrayApp(int& argc, char** argv);

}  // namespace orvantis::app
