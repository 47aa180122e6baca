#include "app/tray_app.h"

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <utility>
#include <vector>

#include <QApplication>
#include <QGuiApplication>
#include <QSocketNotifier>
#include <QSystemTrayIcon>
#include <QTimer>

#include "app/clipboard_bus_export.h"
#include "app/feedback_assembly.h"
#include "app/system_utilities_bus_export.h"
#include "app/termination_signal_watcher.h"
#include "app/launch_code_pages.h"
#include "app/x11_desktop.h"
#include "build_info.h"
#include "core/clipboard/clipboard_monitor.h"
#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/outreach/launch_at_login_manager.h"
#include "core/permissions/permission_polling.h"
#include "core/permissions/permissions_manager.h"
#include "core/settings/app_settings.h"
#include "core/shell/hotkey_overlay.h"
#include "core/shell/onboarding_model.h"
#include "core/settings/preference_store.h"
#include "platform/clock.h"
#include "platform/freedesktop/clipboard_bus.h"
#include "platform/freedesktop/pomodoro_bus.h"
#include "platform/freedesktop/shell_bus.h"
#include "platform/freedesktop/journal_sink.h"
#include "platform/freedesktop/single_instance_guard.h"
#include "platform/freedesktop/system_utilities_bus.h"
#include "platform/freedesktop/terminate_handler.h"
#include "platform/freedesktop/xdg_paths.h"
#include "platform/permissions.h"
#include "platform/serial_queue.h"
#include "platform/x11/x11_display.h"
#include "ui/menu_bar_controller.h"
#include "ui/qt_main_loop.h"

#include <signal.h>
#include <string.h>
#include <xcb/xcb.h>

namespace orvantis::app {
namespace {

constexpr const char* kLoggerQueueLabel = "MOLVEX.Orvantis.AppLogger";
constexpr const char* kPreferencesQueueLabel = "MOLVEX.Orvantis.Preferences";

/// The delegate whose end sequence still has to run should a library end the process with
/// exit(), as Qt does when its own connection to the X display breaks. Set while the event loop
/// runs.
AppDelegate* delegateToEnd = nullptr;

constexpr std::string_view kDisplayLostLine = "display: the connection to the X display broke; Orvantis ends";

bool displayConnectionBroken() {
    if (x11::anyConnectionLost()) return true;
    const auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 != nullptr && x11->connection() != nullptr && xcb_connection_has_error(x11->connection()) != 0;
}

void endSequenceOnExit() {
    AppDelegate* delegate = std::exchange(delegateToEnd, nullptr);
    if (delegate == nullptr) return;
    delegate->applicationEndsWithoutQuit(displayConnectionBroken() ? kDisplayLostLine
                                                                   : "a library ended the process; Orvantis ends");
}

std::string_view orUnknown(std::string_view value) { return value.empty() ? std::string_view("?") : value; }

/// Puts back the terminate handler that was there before, when the logger that the crash
/// handler writes to is about to go.
class TerminateHandlerScope {
public:
    TerminateHandlerScope() : previous_(std::get_terminate()) {}
    ~TerminateHandlerScope() { std::set_terminate(previous_); }
    TerminateHandlerScope(const TerminateHandlerScope&) = delete;
    TerminateHandlerScope& operator=(const TerminateHandlerScope&) = delete;

private:
    std::terminate_handler previous_;
};

}  // namespace

std::string launchBanner(std::string_view version, std::string_view build, std::string_view systemVersion,
                         bool accessibility, bool inputMonitoring) {
    std::string line = "launch: Orvantis ";
    line += orUnknown(version);
    line += " (build ";
    line += orUnknown(build);
    line += ") on ";
    line += systemVersion;
    line += "; accessibility=";
    line += accessibility ? "granted" : "missing";
    line += ", inputMonitoring=";
    line += inputMonitoring ? "granted" : "missing";
    return line;
}

AppDelegate::AppDelegate(AppLogger& logger, platform::MainLoop& loop, const platform::Clock& clock,
                         platform::SerialQueue& preferencesWriter, AppPaths paths, const DesktopServices& desktop,
                         std::function<void()> quit)
    : logger_(logger), loop_(loop), clock_(clock), preferencesWriter_(preferencesWriter), paths_(std::move(paths)),
      desktop_(desktop), quit_(std::move(quit)) {}

AppDelegate::~AppDelegate() = default;

AppServices AppDelegate::services() {
    return AppServices{logger_, loop_, clock_, *settings_, notifications_, desktop_, paths_.dataDirectory};
}

ClipboardMonitor* AppDelegate::clipboardMonitor() const {
    return clipboard_ ? &clipboard_->clipboardMonitor() : nullptr;
}

void AppDelegate::applicationDidFinishLaunching() {
    // 1. The banner: the first use of the logger.
    logLaunchBanner();
    // 2. Settings; the login item's state wins over the preference.
    createSettings();
    followLoginItem();
    // 3. The tray icon and its menu.
    createMenuBar();
    AppServices app = services();
    // 4. The layout switcher, which creates the keyboard monitor.
    layoutSwitching_ = LayoutSwitchingAssembly::create(app);
    GlobalEventMonitor* monitor = layoutSwitching_ ? &layoutSwitching_->monitor() : nullptr;
    // 5. The translator, on the same monitor.
    if (monitor) translator_ = TranslatorAssembly::create(app, *monitor);
    // 6. The clipboard history with its popup.
    clipboard_ = ClipboardAssembly::create(app, monitor);
    // 7. The clipboard is watched.
    if (clipboard_) clipboard_->startWatching();
    // 8. Settings and clipboard sync through the synced folder: the first pull and the poll.
    sync_ = std::make_unique<SyncAssembly>(app, clipboardMonitor(), paths_.home);
    sync_->start();
    // 9. The Pomodoro: its coordinator, menu rows and countdown.
    pomodoro_ = PomodoroAssembly::create(app, *menuBarController_, monitor);
    // 10. The password generator, on its hotkey.
    passwords_ = PasswordsAssembly::create(app, monitor, clipboardMonitor());
    // 11. The snippet expander, on its hotkey.
    snippets_ = SnippetsAssembly::create(app, monitor, clipboardMonitor());
    // 12. The text tools window, on its hotkey.
    textTools_ = TextToolsAssembly::create(app, monitor);
    // 13. The hotkey overlay, shown while its hotkey is held.
    hotkeyOverlay_ = std::make_unique<HotkeyOverlayCoordinator>(monitor, *settings_, loop_, desktop_.makeHotkeyOverlay);
    // 15 to 18: the keyboard lock, scroll reversal, the icon hider, keep-awake.
    systemUtilities_ = SystemUtilitiesAssembly::create(app, monitor, menuBarController_.get());
    // The settings window, opened from the menu and the command line.
    settingsWindow_ = std::make_unique<SettingsWindowAssembly>(
        app, SettingsWindowCollaborators{monitor, clipboardMonitor(), systemUtilities_.get(), pomodoro_.get(),
                                         &sync_->manager()});
    settingsOpener_ = [this] { settingsWindow_->openSettings(); };
    // 19 to 21: the keyboard monitor starts, or the banner asks for permission.
    startKeyboardWatching();
}

void AppDelegate::createMenuBar() {
    menuBarController_ = std::make_unique<ui::MenuBarController>(
        notifications_, [this] { return settings_->settingsLanguage(); }, [this] { quit_(); },
        [this] {
            // One click: the request, then the settings of what is missing.
            if (!permissionsManager_) return;
            permissionsManager_->requestMissing();
            permissionsManager_->openSettingsForMissing();
        });
    menuBarController_->setShellActions(ui::ShellMenuActions{
        [this] { openSettings(); }, [this] { return settings_->launchAtLogin(); },
        // The login item follows the preference's every write.
        [this] { settings_->setLaunchAtLogin(!settings_->launchAtLogin()); }});
    // The settings window's save announces a new language itself; the command line and a sync
    // write only the store.
    menuLanguage_ = settings_->store().onChange(
        [this](const std::vector<std::string>&) { menuBarController_->followLanguage(); });
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        logger_.log().app.info("menuBar: no system tray yet; the icon docks when one appears");
    }
}

void AppDelegate::openSettings() {
    if (!settingsOpener_) {
        logger_.log().app.info("settings: the settings window is not built yet");
        return;
    }
    settingsOpener_();
}

bool AppDelegate::showOnboardingIfNeeded() {
    if (settings_->hasCompletedOnboarding()) return false;
    // A first run: the onboarding window leads the user to the permissions, so launch asks for
    // none of its own.
    logger_.log().app.info("launch: first run; onboarding shows and the permissions are not asked for at launch");
    showOnboarding();
    return true;
}

std::optional<std::string> AppDelegate::showWindow(std::string_view window) {
    logger_.log().app.info("shell: show " + std::string(window) + " asked for on the session bus");
    if (window == "settings") {
        openSettings();
    } else if (window == "onboarding") {
        showOnboarding();
    } else if (window == "help") {
        if (menuBarController_) menuBarController_->openHelp();
    } else if (window == "overlay") {
        if (hotkeyOverlay_) hotkeyOverlay_->showForCommand();
    } else if (window == "feedback") {
        if (settingsWindow_) settingsWindow_->feedback().openFeedback();
    } else {
        return "no window is called \"" + std::string(window) + "\"";
    }
    return std::nullopt;
}

void AppDelegate::showOnboarding() {
    if (onboardingModel_ && onboardingModel_->isClosed()) {
        // Closed in this turn and not yet dropped: a new window takes its place.
        onboardingDrop_.cancel();
        onboardingWindow_.reset();
        onboardingModel_.reset();
    }
    if (!onboardingWindow_) {
        if (!desktop_.makeOnboardingWindow) {
            logger_.log().app.warning("onboarding: this desktop has no onboarding window");
            return;
        }
        onboardingDrop_.cancel();
        onboardingModel_ = std::make_unique<OnboardingModel>(
            *settings_, desktop_.permissions, desktop_.userNotifications, loop_, [this] {
                logger_.log().app.info("onboarding: closed; it counts as seen");
                // Dropped one turn later: the window is still inside its close handling now.
                onboardingDrop_ = loop_.postAfter(platform::Duration::zero(), [this] {
                    onboardingWindow_.reset();
                    onboardingModel_.reset();
                });
            });
        onboardingWindow_ = desktop_.makeOnboardingWindow(*onboardingModel_, settings_->settingsLanguage());
    }
    onboardingWindow_->showAndActivate();
}

void AppDelegate::startKeyboardWatching() {
    if (!layoutSwitching_) {
        showOnboardingIfNeeded();
        return;
    }
    permissionsManager_ = std::make_unique<PermissionsManager>(*desktop_.permissions);
    permissionPolling_ = std::make_unique<PermissionPolling>(
        layoutSwitching_->monitor(), *permissionsManager_, loop_,
        PermissionPolling::Banner{[this] {
                                      logger_.log().app.warning(
                                          "keyboard: the keyboard cannot be watched; retrying every 2 s");
                                      menuBarController_->showAccessibilityNeeded();
                                  },
                                  [this] {
                                      logger_.log().app.info("keyboard: watching the keyboard");
                                      menuBarController_->clearAccessibilityNeeded();
                                  }});
    // 19, 20 and 21: the tap, onboarding, then the wait for permission if the tap was refused.
    permissionPolling_->launch([this] { return showOnboardingIfNeeded(); });
}

void AppDelegate::createSettings() {
    // The first use of the settings: the file is read, defaults registered, migrations run.
    store_ = std::make_unique<PreferenceStore>(paths_.preferencesFile, preferencesWriter_, &logger_.log());
    settings_ = std::make_unique<AppSettings>(*store_);
    // Another process (the command line, a sync) may write the file while we run.
    store_->startWatching(loop_);
}

void AppDelegate::followLoginItem() {
    if (desktop_.loginItem == nullptr) {
        logger_.log().launch.info("launchAtLogin: this desktop has no login item; the preference acts on nothing");
        return;
    }
    launchAtLogin_ = std::make_unique<LaunchAtLoginManager>(*desktop_.loginItem, *settings_, logger_.log().launch);
    launchAtLogin_->syncWithAppSettings();
}

void AppDelegate::logLaunchBanner() {
    // The desktop's counterparts of the two permissions: the accessibility bus for reading
    // and writing other applications' text, the X Input extension for watching keys.
    const platform::Permissions* permissions = desktop_.permissions;
    const bool accessibility = permissions != nullptr && permissions->hasAccessibility();
    const bool inputMonitoring = permissions != nullptr && permissions->hasInputMonitoring();
    logger_.log().app.info(
        launchBanner(build::kVersion, build::kBuild, desktop_.systemVersion, accessibility, inputMonitoring));
}

void AppDelegate::applicationEndsWithoutQuit(std::string_view reason) {
    logger_.log().app.warning(reason);
    applicationWillTerminate();
}

void AppDelegate::applicationWillTerminate() {
    logger_.log().app.info("terminating");
    // The Pomodoro session ends first, so Focus is released.
    if (pomodoro_) pomodoro_->stopForTermination();
    // Lid-close sleep back on if it was turned off here; scroll directions back to default.
    if (systemUtilities_) systemUtilities_->stopForTermination();
    // The permission polling ends before anything else stops.
    if (permissionPolling_) permissionPolling_->cancelPolling();
    // The clipboard stops being watched; a history change still waiting to be saved is saved.
    if (clipboard_) clipboard_->stopForTermination();
    // The keyboard monitor last.
    if (layoutSwitching_) layoutSwitching_->monitor().stop();
    if (store_) store_->flush();
    logger_.flush();
}

int runTrayApp(int& argc, char** argv) {
    // Without a display the toolkit would abort with a core dump; say what is missing instead.
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0') {
        std::cerr << "Orvantis: no X display (DISPLAY is not set); it runs in an X11 desktop session" << std::endl;
        return 1;
    }
    // Held until the toolkit has its own connection: a server left without clients may reset.
    x11::DisplayPointer displayHeld = x11::openDisplay(display);
    if (!displayHeld) {
        std::cerr << "Orvantis: cannot open the X display \"" << display << "\"" << std::endl;
        return 1;
    }
    // A write to a connection whose other end went away (the X server, a bus peer) fails with
    // EPIPE, which each library handles, instead of ending the process on the spot.
    std::signal(SIGPIPE, SIG_IGN);

    // Before anything shows: a second copy only says so and leaves.
    std::unique_ptr<freedesktop::SingleInstanceGuard> instance = freedesktop::SingleInstanceGuard::acquire();
    if (!instance) {
        std::cout << "Orvantis is already running" << std::endl;
        return 0;
    }

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orvantis"));
    QApplication::setApplicationVersion(QString::fromLatin1(build::kVersion));
    QApplication::setQuitOnLastWindowClosed(false);
    displayHeld.reset();

    ui::QtMainLoop loop;
    platform::SystemClock clock;
    platform::ThreadSerialQueue logQueue(kLoggerQueueLabel);
    AppLogger logger(freedesktop::XdgPaths::logsDirectory(), logQueue, clock,
                     freedesktop::makeJournalSinkIfAvailable());
    TerminateHandlerScope crashLogging;
    freedesktop::installTerminateHandler(logger);

    // Quit from the menu and the termination signals take the same road: leave the event
    // loop, then run the end sequence below.
    TerminationSignalWatcher terminationSignals([&logger](int signal) {
        logger.log().app.info(std::string("quit requested by SIG") + sigabbrev_np(signal));
        QCoreApplication::quit();
    });

    std::unique_ptr<QSocketNotifier> busWatch;
    if (const int fd = instance->busDescriptor(); fd >= 0) {
        busWatch = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
        QObject::connect(busWatch.get(), &QSocketNotifier::activated, busWatch.get(), [&instance, &busWatch] {
            if (!instance->processBus()) busWatch->setEnabled(false);
        });
        instance->processBus();
    }

    platform::ThreadSerialQueue preferencesWriter(kPreferencesQueueLabel);
    // The desktop outlives the delegate: the features borrow its services to the end.
    X11Desktop desktop(logger, loop);
    AppDelegate delegate(logger, loop, clock, preferencesWriter,
                         AppPaths{freedesktop::XdgPaths::preferencesFile(), freedesktop::XdgPaths::dataDirectory(),
                                  freedesktop::XdgPaths::home()},
                         desktop.services(), [] { QCoreApplication::quit(); });
    delegate.applicationDidFinishLaunching();
    // Launch ran much of the program's own code once and freed much of what it allocated;
    // once the tray has docked and drawn, those pages go back, and what runs later maps its
    // pages again.
    QTimer::singleShot(kLaunchCodeRelease, qApp, [] {
        trimHeap();
        releaseOwnCodePages();  // last, so that no code of ours runs after it in this turn
    });
    // `orvantis clipboard` reaches the live history through the guard's connection.
    const auto clipboardBus = exportClipboardOnBus(
        *instance, [&delegate] { return delegate.clipboardMonitor(); }, logger.log().clipboard);
    // `orvantis pomodoro` drives the live Pomodoro the same way.
    const auto pomodoroBus =
        delegate.pomodoro() ? exportPomodoroOnBus(*instance, *delegate.pomodoro()) : nullptr;
    // `orvantis caffeine` and `orvantis lock` likewise.
    const auto systemUtilitiesBus = exportSystemUtilitiesOnBus(
        *instance, [&delegate] { return delegate.systemUtilities(); }, [&delegate] { return delegate.settings(); },
        clock, logger.log().app);
    // `orvantis show` opens the shell's windows.
    const auto shellBus = freedesktop::ShellBusService::exportOn(
        *instance, [&delegate](std::string_view window) { return delegate.showWindow(window); });
    // Registered once: runTrayApp runs once per process.
    static const bool exitHookRegistered = std::atexit(endSequenceOnExit) == 0;
    // A display connection of ours that breaks ends the program through the event loop, so
    // the end sequence runs as on a quit. (The toolkit ends the process itself when its own
    // connection breaks; the exit hook covers that.)
    x11::setConnectionLossHandler(
        [] { QMetaObject::invokeMethod(qApp, [] { QCoreApplication::exit(1); }, Qt::QueuedConnection); });
    if (exitHookRegistered) delegateToEnd = &delegate;
    const int status = QApplication::exec();
    delegateToEnd = nullptr;
    x11::setConnectionLossHandler({});
    if (displayConnectionBroken()) delegate.applicationEndsWithoutQuit(kDisplayLostLine);
    else delegate.applicationWillTerminate();
    return status;
}

}  // namespace orvantis::app
