#include "app/tray_app.h"

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <utility>

#include <QApplication>
#include <QGuiApplication>
#include <QSocketNotifier>
#include <QSystemTrayIcon>

#include "app/clipboard_bus_export.h"
#include "app/selection_key_output.h"
#include "app/termination_signal_watcher.h"
#include "build_info.h"
#include "core/log/app_logger.h"
#include "core/events/global_event_monitor.h"
#include "core/layout/layout_switcher.h"
#include "core/layout/layout_translator.h"
#include "core/layout/text_switch_coordinator.h"
#include "core/layout/transliteration_map.h"
#include "core/clipboard/clipboard_history_coordinator.h"
#include "core/clipboard/clipboard_monitor.h"
#include "core/permissions/permission_polling.h"
#include "core/translation/translation_service.h"
#include "core/translator/translation_coordinator.h"
#include "platform/curl/curl_http_client.h"
#include "core/permissions/permissions_manager.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "platform/clock.h"
#include "platform/freedesktop/accessibility_bus.h"
#include "platform/freedesktop/atspi_accessibility.h"
#include "platform/freedesktop/clipboard_bus.h"
#include "platform/freedesktop/desktop_entries.h"
#include "platform/freedesktop/journal_sink.h"
#include "platform/freedesktop/os_release.h"
#include "platform/freedesktop/single_instance_guard.h"
#include "platform/freedesktop/terminate_handler.h"
#include "platform/freedesktop/xdg_paths.h"
#include "platform/serial_queue.h"
#include "platform/text_element.h"
#include "platform/x11/input_extension.h"
#include "platform/x11/x11_applications.h"
#include "platform/x11/x11_clipboard.h"
#include "platform/x11/x11_display.h"
#include "platform/x11/x11_event_tap.h"
#include "platform/x11/x11_permissions.h"
#include "platform/x11/xkb_input_sources.h"
#include "platform/x11/xtest_key_output.h"
#include "ui/clipboard_history_popup.h"
#include "ui/menu_bar_controller.h"
#include "ui/qt_translation_popup.h"
#include "ui/translation_popup_controller.h"
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

AppDelegate::AppDelegate(AppLogger& logger, platform::MainLoop& loop, platform::SerialQueue& preferencesWriter,
                         std::function<void()> quit)
    : logger_(logger), loop_(loop), preferencesWriter_(preferencesWriter), quit_(std::move(quit)) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    // 1. The banner: the first use of the logger.
    logLaunchBanner();

    // 2. Settings.
    createSettings();

    // 3. The tray icon and its menu.
    menuBarController_ = std::make_unique<ui::MenuBarController>(
        notifications_, [this] { return settings_->settingsLanguage(); }, [this] { quit_(); },
        [this] {
            // One click: the request, then the settings of what is missing.
            if (!permissionsManager_) return;
            permissionsManager_->requestMissing();
            permissionsManager_->openSettingsForMissing();
        });
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        logger_.log().app.info("menuBar: no system tray yet; the icon docks when one appears");
    }

    // 4 and 5: the layout switcher with the keyboard monitor, and the translator.
    createLayoutSwitching();
    // 7: the clipboard history starts watching the clipboard.
    createClipboardHistory();
    // 19 to 21: the keyboard monitor starts, or the banner asks for permission.
    startKeyboardWatching();
}

void AppDelegate::createLayoutSwitching() {
    eventTap_ = x11::X11EventTap::open(nullptr, &logger_.log());
    keyOutput_ = x11::XTestKeyOutput::open();
    inputSources_ = x11::XkbInputSources::open();
    if (!eventTap_ || !keyOutput_ || !inputSources_) {
        logger_.log().app.warning("keyboard: no X display with XKB, XInput 2 and XTest; the hotkeys are off");
        return;
    }
    permissions_ = std::make_unique<x11::X11Permissions>();
    // Watching the keyboard counts as granted with the accessibility bus on, the text path's
    // need; until then the tray shows the banner and retries.
    eventTap_->setPermissionCheck([this] { return permissions_->hasAccessibility(); });
    // The focused text field of other applications; without an accessibility bus the layout
    // switcher retypes from what it saw typed.
    accessibility_ = std::make_unique<freedesktop::AtspiAccessibility>(&logger_.log().app);
    eventTapWatch_ = std::make_unique<QSocketNotifier>(eventTap_->fileDescriptor(), QSocketNotifier::Read);
    QObject::connect(eventTapWatch_.get(), &QSocketNotifier::activated, eventTapWatch_.get(),
                     [this] {
                         eventTap_->dispatchPending();
                         if (eventTap_->connectionLost()) eventTapWatch_->setEnabled(false);
                     });

    layoutTranslator_ = std::make_unique<LayoutTranslator>(*inputSources_);
    transliterationMap_ = std::make_unique<TransliterationMap>(*layoutTranslator_);
    layoutSwitcher_ = std::make_unique<LayoutSwitcher>(*inputSources_);
    monitor_ = std::make_unique<GlobalEventMonitor>(*settings_, *eventTap_, loop_, logger_.log());
    textSwitchCoordinator_ = std::make_unique<TextSwitchCoordinator>(
        *settings_, *monitor_, *layoutSwitcher_, *transliterationMap_, *accessibility_, *keyOutput_, loop_,
        notifications_, logger_.log().app);

    // 5. The translator, on the same monitor.
    createTranslator();

    permissionsManager_ = std::make_unique<PermissionsManager>(*permissions_);
}

void AppDelegate::startKeyboardWatching() {
    if (!monitor_ || !permissionsManager_) return;
    permissionPolling_ = std::make_unique<PermissionPolling>(
        *monitor_, *permissionsManager_, loop_,
        PermissionPolling::Banner{[this] {
                                      logger_.log().app.warning(
                                          "keyboard: the keyboard cannot be watched; retrying every 2 s");
                                      menuBarController_->showAccessibilityNeeded();
                                  },
                                  [this] {
                                      logger_.log().app.info("keyboard: watching the keyboard");
                                      menuBarController_->clearAccessibilityNeeded();
                                  }});
    permissionPolling_->launch();
    // Events that arrived while the tap was being set up.
    eventTap_->dispatchPending();
}

void AppDelegate::createDesktopServices() {
    if (!applications_) applications_ = x11::X11Applications::open();
    if (!pasteboard_) {
        // The clipboard's own connection, read whenever the server has something for it.
        pasteboard_ = x11::X11Clipboard::open(nullptr, loop_, &logger_.log().clipboard);
        if (pasteboard_) {
            pasteboardWatch_ = std::make_unique<QSocketNotifier>(pasteboard_->fileDescriptor(), QSocketNotifier::Read);
            QObject::connect(pasteboardWatch_.get(), &QSocketNotifier::activated, pasteboardWatch_.get(), [this] {
                pasteboard_->dispatchPending();
                if (pasteboard_->connectionLost()) pasteboardWatch_->setEnabled(false);
            });
        }
    }
    if (!accessibility_) accessibility_ = std::make_unique<freedesktop::AtspiAccessibility>(&logger_.log().app);
}

void AppDelegate::createClipboardHistory() {
    createDesktopServices();
    if (!applications_ || !pasteboard_) {
        logger_.log().clipboard.warning("clipboard: no X display; the clipboard history is off");
        return;
    }
    clipboardMonitor_ = std::make_unique<ClipboardMonitor>(
        *settings_, *pasteboard_, *applications_, *accessibility_, loop_, clock_, uuids_,
        freedesktop::XdgPaths::dataDirectory() / "clipboard.json", &logger_.log().clipboard);
    // 6: the popup's coordinator, before the clipboard is watched.
    createClipboardPopup();
    clipboardMonitor_->start();
}

void AppDelegate::createClipboardPopup() {
    // The popup opens on a hotkey: nothing to do without the keyboard monitor.
    if (!monitor_ || !clipboardMonitor_) return;
    platform::KeyOutput* keys = selectionKeys_ ? selectionKeys_.get() : keyOutput_.get();
    if (!keys) return;
    if (!pointer_) pointer_ = std::make_unique<ui::QtPointer>();
    clipboardPopupController_ = std::make_unique<ui::ClipboardPopupController>(
        loop_, ui::KeyboardGrab::forPlatform(), [this](const std::string& bundleID) -> std::optional<std::string> {
            if (!desktopEntries_) desktopEntries_ = std::make_unique<freedesktop::DesktopEntries>();
            const freedesktop::DesktopEntry* entry = desktopEntries_->byID(bundleID);
            if (!entry) entry = desktopEntries_->forWindowClass(bundleID, bundleID);
            if (!entry || entry->name.empty()) return std::nullopt;
            return entry->name;
        });
    clipboardPopup_ = std::make_unique<ui::QtClipboardHistoryPopup>(*clipboardPopupController_);
    clipboardHistoryCoordinator_ = std::make_unique<ClipboardHistoryCoordinator>(
        *settings_, *monitor_, *clipboardPopup_, *clipboardMonitor_, *pasteboard_, *keys, *pointer_);
}

void AppDelegate::createTranslator() {
    createDesktopServices();
    if (!applications_ || !pasteboard_) return;
    selectionKeys_ = std::make_unique<SelectionKeyOutput>(*keyOutput_, *pasteboard_, *pasteboard_);
    pointer_ = std::make_unique<ui::QtPointer>();
    httpClient_ = std::make_unique<curl::CurlHttpClient>(loop_);
    translationService_ = std::make_unique<TranslationService>(*httpClient_, loop_, logger_.log().translate,
                                                               [this] { return settings_->translationEndpoint(); });
    translationPopupController_ =
        std::make_unique<ui::TranslationPopupController>(loop_, ui::KeyboardGrab::forPlatform());
    translationPopup_ = std::make_unique<ui::QtTranslationPopup>(*translationPopupController_);
    translationCoordinator_ = std::make_unique<TranslationCoordinator>(
        *settings_, *monitor_, *translationPopup_, *translationService_, *applications_, *accessibility_,
        *pasteboard_, *selectionKeys_, *pointer_, loop_);
}

void AppDelegate::createSettings() {
    // The first use of the settings: the file is read, defaults registered, migrations run.
    store_ = std::make_unique<PreferenceStore>(freedesktop::XdgPaths::preferencesFile(), preferencesWriter_,
                                               &logger_.log());
    settings_ = std::make_unique<AppSettings>(*store_);
    // Another process (the command line, a sync) may write the file while we run.
    store_->startWatching(loop_);
}

void AppDelegate::logLaunchBanner() {
    // The desktop's counterparts of the two permissions: the accessibility bus for reading
    // and writing other applications' text, the X Input extension for watching keys.
    const bool accessibility = freedesktop::accessibilityBusEnabled();
    const bool inputMonitoring = x11::hasInputExtension();
    logger_.log().app.info(launchBanner(build::kVersion, build::kBuild,
                                        freedesktop::OsRelease::readSystem().systemVersion(), accessibility,
                                        inputMonitoring));
}

void AppDelegate::applicationEndsWithoutQuit(std::string_view reason) {
    logger_.log().app.warning(reason);
    applicationWillTerminate();
}

void AppDelegate::applicationWillTerminate() {
    logger_.log().app.info("terminating");
    // The permission poll ends before the monitor stops.
    if (permissionPolling_) permissionPolling_->stop();
    // The clipboard stops being watched; a history change still waiting to be saved is saved.
    if (clipboardMonitor_) {
        clipboardMonitor_->stop();
        clipboardMonitor_->flushPersistence();
    }
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
    AppDelegate delegate(logger, loop, preferencesWriter, [] { QCoreApplication::quit(); });
    delegate.applicationDidFinishLaunching();
    // `orvantis clipboard` reaches the live history through the guard's connection.
    const auto clipboardBus = exportClipboardOnBus(
        *instance, [&delegate] { return delegate.clipboardMonitor(); }, logger.log().clipboard);
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
