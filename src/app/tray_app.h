#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "core/clipboard/uuid.h"
#include "core/events/notification_center.h"
#include "platform/clock.h"

namespace orvantis {
class AppLogger;
class AppSettings;
class ClipboardHistoryCoordinator;
class ClipboardHistoryPopup;
class ClipboardMonitor;
class GlobalEventMonitor;
class LayoutSwitcher;
class LayoutTranslator;
class PermissionPolling;
class PermissionsManager;
class PreferenceStore;
class TextSwitchCoordinator;
class TranslationCoordinator;
class TranslationPopup;
class TranslationService;
class TransliterationMap;
}  // namespace orvantis
namespace orvantis::x11 {
class X11Clipboard;
class X11EventTap;
class X11Permissions;
class XkbInputSources;
class XTestKeyOutput;
}  // namespace orvantis::x11
namespace orvantis::freedesktop {
class DesktopEntries;
}
class QSocketNotifier;
namespace orvantis::platform {
class Accessibility;
class Applications;
class HttpClient;
class KeyOutput;
class MainLoop;
class Pointer;
class SerialQueue;
}  // namespace orvantis::platform
namespace orvantis::ui {
class ClipboardPopupController;
class MenuBarController;
class TranslationPopupController;
}

namespace orvantis::app {

/// The application delegate: brings the parts of Orvantis to life in the launch order and
/// takes them down in the end order. Holds the only reference to the tray icon's controller.
/// Created by runTrayApp() once Qt and the logger exist; main thread only.
class AppDelegate {
public:
    /// `logger`, `loop` and `preferencesWriter` (the queue that writes the preference file)
    /// outlive the delegate. `quit` leaves the event loop; runTrayApp() then runs
    /// applicationWillTerminate().
    AppDelegate(AppLogger& logger, platform::MainLoop& loop, platform::SerialQueue& preferencesWriter,
                std::function<void()> quit);
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    /// The launch sequence. Never fails: a part that cannot start logs why and launch goes on.
    void applicationDidFinishLaunching();
    /// The end sequence: logs "terminating", stops the parts that hold outside state, and
    /// waits until the log is on disk.
    void applicationWillTerminate();
    /// The end sequence when a library ends the process with exit() instead of a quit (Qt
    /// does when the X display goes away): `reason` as a warning, then the end sequence, so
    /// the settings and the log still reach the disk.
    void applicationEndsWithoutQuit(std::string_view reason);

    /// The tray icon's controller, from launch step 3 on; null before.
    ui::MenuBarController* menuBarController() const { return menuBarController_.get(); }
    /// The typed settings, from launch step 2 on; null before.
    AppSettings* settings() const { return settings_.get(); }
    /// The clipboard watcher and its history, from launch on; null without an X display.
    ClipboardMonitor* clipboardMonitor() const { return clipboardMonitor_.get(); }
    NotificationCenter& notifications() { return notifications_; }

private:
    void logLaunchBanner();
    void createSettings();
    void createLayoutSwitching();
    void createTranslator();
    void createDesktopServices();
    void createClipboardHistory();
    void createClipboardPopup();
    void startKeyboardWatching();

    AppLogger& logger_;
    platform::MainLoop& loop_;
    platform::SerialQueue& preferencesWriter_;
    std::function<void()> quit_;
    NotificationCenter notifications_;
    std::unique_ptr<PreferenceStore> store_;
    std::unique_ptr<AppSettings> settings_;
    std::unique_ptr<ui::MenuBarController> menuBarController_;

    // The desktop, through the X11 backends; absent without an X display.
    std::unique_ptr<x11::X11EventTap> eventTap_;
    std::unique_ptr<x11::XTestKeyOutput> keyOutput_;
    std::unique_ptr<x11::XkbInputSources> inputSources_;
    std::unique_ptr<x11::X11Permissions> permissions_;
    std::unique_ptr<platform::Accessibility> accessibility_;
    std::unique_ptr<QSocketNotifier> eventTapWatch_;
    // The layout switcher and the keyboard monitor it creates.
    std::unique_ptr<LayoutTranslator> layoutTranslator_;
    std::unique_ptr<TransliterationMap> transliterationMap_;
    std::unique_ptr<LayoutSwitcher> layoutSwitcher_;
    std::unique_ptr<GlobalEventMonitor> monitor_;
    std::unique_ptr<TextSwitchCoordinator> textSwitchCoordinator_;
    // The translator.
    std::unique_ptr<platform::Applications> applications_;
    std::unique_ptr<x11::X11Clipboard> pasteboard_;
    std::unique_ptr<QSocketNotifier> pasteboardWatch_;
    std::unique_ptr<platform::KeyOutput> selectionKeys_;
    std::unique_ptr<platform::Pointer> pointer_;
    std::unique_ptr<platform::HttpClient> httpClient_;
    std::unique_ptr<TranslationService> translationService_;
    std::unique_ptr<ui::TranslationPopupController> translationPopupController_;
    std::unique_ptr<TranslationPopup> translationPopup_;
    std::unique_ptr<TranslationCoordinator> translationCoordinator_;
    // The clipboard history.
    platform::SystemClock clock_;
    UuidGenerator uuids_;
    std::unique_ptr<ClipboardMonitor> clipboardMonitor_;
    // The clipboard popup and its coordinator; absent without the keyboard monitor.
    std::unique_ptr<freedesktop::DesktopEntries> desktopEntries_;  ///< read at the first name looked up
    std::unique_ptr<ui::ClipboardPopupController> clipboardPopupController_;
    std::unique_ptr<ClipboardHistoryPopup> clipboardPopup_;
    std::unique_ptr<ClipboardHistoryCoordinator> clipboardHistoryCoordinator_;
    std::unique_ptr<PermissionsManager> permissionsManager_;
    std::unique_ptr<PermissionPolling> permissionPolling_;
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
