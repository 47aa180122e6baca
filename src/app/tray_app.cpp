#include "app/tray_app.h"

#include <exception>
#include <iostream>
#include <utility>

#include <QApplication>
#include <QSocketNotifier>
#include <QSystemTrayIcon>

#include "app/termination_signal_watcher.h"
#include "build_info.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "platform/clock.h"
#include "platform/freedesktop/accessibility_bus.h"
#include "platform/freedesktop/journal_sink.h"
#include "platform/freedesktop/os_release.h"
#include "platform/freedesktop/single_instance_guard.h"
#include "platform/freedesktop/terminate_handler.h"
#include "platform/freedesktop/xdg_paths.h"
#include "platform/serial_queue.h"
#include "platform/x11/input_extension.h"
#include "ui/menu_bar_controller.h"
#include "ui/qt_main_loop.h"

#include <signal.h>
#include <string.h>

namespace orvantis::app {
namespace {

constexpr const char* kLoggerQueueLabel = "MOLVEX.Orvantis.AppLogger";
constexpr const char* kPreferencesQueueLabel = "MOLVEX.Orvantis.Preferences";

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
        notifications_, [this] { return settings_->settingsLanguage(); }, [this] { quit_(); });
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        logger_.log().app.info("menuBar: no system tray yet; the icon docks when one appears");
    }
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

void AppDelegate::applicationWillTerminate() {
    logger_.log().app.info("terminating");
    if (store_) store_->flush();
    logger_.flush();
}

int runTrayApp(int& argc, char** argv) {
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
    const int status = QApplication::exec();
    delegate.applicationWillTerminate();
    return status;
}

}  // namespace orvantis::app
