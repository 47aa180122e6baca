#include "app/pomodoro_assembly.h"

#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include <QDesktopServices>
#include <QFont>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QUrl>

#include "app/app_services.h"
#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/pomodoro/pomodoro_calendar.h"
#include "core/pomodoro/pomodoro_coordinator.h"
#include "core/pomodoro/pomodoro_history.h"
#include "core/settings/app_settings.h"
#include "core/strings/settings_strings.h"
#include "platform/freedesktop/focus_command_directory.h"
#include "platform/freedesktop/pomodoro_bus.h"
#include "platform/main_loop.h"
#include "ui/menu_bar_controller.h"
#include "ui/pomodoro_dashboard_window_controller.h"

namespace orvantis::app {

struct PomodoroAssembly::Subscriptions {
    Subscription menuUpdates;
};

std::unique_ptr<PomodoroAssembly> PomodoroAssembly::create(AppServices& services, ui::MenuBarController& menu,
                                                           GlobalEventMonitor* monitor) {
    const DesktopServices& desktop = services.desktop;
    if (!desktop.userNotifications || !desktop.sleepEvents || !desktop.focusCommands) {
        services.logger.log().app.warning("pomodoro: the desktop offers no notifications, sleep or Focus; the Pomodoro is off");
        return nullptr;
    }
    return std::unique_ptr<PomodoroAssembly>(new PomodoroAssembly(services, menu, monitor));
}

PomodoroAssembly::PomodoroAssembly(AppServices& services, ui::MenuBarController& menu, GlobalEventMonitor* monitor)
    : logger_(services.logger), settings_(services.settings), menu_(menu),
      historyQueue_(services.loop.makeSerialQueue("MOLVEX.Orvantis.PomodoroHistory")),
      subscriptions_(std::make_unique<Subscriptions>()) {
    std::error_code ignored;
    std::filesystem::create_directories(services.dataDirectory, ignored);  // a failure shows at the first write
    history_ = std::make_unique<PomodoroHistory>(services.dataDirectory / PomodoroHistory::kFileName, *historyQueue_,
                                                 services.clock, &services.logger.log());
    const DesktopServices& desktop = services.desktop;
    coordinator_ = std::make_unique<PomodoroCoordinator>(
        services.settings, *history_, monitor, services.loop,
        PomodoroCoordinator::Services{*desktop.userNotifications, *desktop.sleepEvents, *desktop.focusCommands},
        services.logger.log());
    coordinator_->showFocusShortcutsMissingAlert = [this] { showFocusMissingAlert(); };
    subscriptions_->menuUpdates =
        coordinator_->onStateChanged([this](const PomodoroTimerState& state) { menu_.updatePomodoroDisplay(state); });
    AppSettings& settings = services.settings;
    menu_.setPomodoroActions({
        [&settings] { return settings.get(settings::kPomodoroEnabled); },
        [this] { return coordinator_->currentState(); },
        [this] { openDashboard(); },
        [this] { coordinator_->startSession(); },
        [this] { coordinator_->togglePauseResume(); },
        [this] { coordinator_->stopSession(); },
    });
}

PomodoroAssembly::~PomodoroAssembly() {
    dashboard_.reset();
    menu_.setPomodoroActions({});
}

void PomodoroAssembly::stopForTermination() {
    if (coordinator_->currentState().isActive()) logger_.log().app.info("pomodoro: the session ends with the program");
    coordinator_->stopSession();
}

void PomodoroAssembly::openDashboard() {
    if (!dashboard_) {
        dashboard_ = std::make_unique<ui::PomodoroDashboardWindowController>(
            *coordinator_, [] { return PomodoroCalendar::current(); },
            [this] {
                // Not from within the window's own close: the next turn of the loop.
                QTimer::singleShot(0, &menu_, [this] { dashboard_.reset(); });
            });
    }
    dashboard_->bringToFront();
}

std::string PomodoroAssembly::statusLine() const {
    const PomodoroTimerState& state = coordinator_->currentState();
    std::string line;
    if (state.isActive()) {
        line = std::string(state.isRunning() ? "running" : "paused") + "\t" + std::string(caseName(*state.phase())) +
               "\t" + std::to_string(*state.remainingSeconds());
    } else {
        line = "idle";
    }
    line += "\t" + std::to_string(coordinator_->currentSessionInCycle());
    line += "\t" + std::to_string(history_->countToday(PomodoroCalendar::current()));
    return line;
}

void PomodoroAssembly::showFocusMissingAlert() {
    const SettingsStrings s = SettingsStrings::make(settings_.get(settings::kSettingsLanguage));
    const auto qs = [](std::string_view text) {
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    };
    // The message in bold, the explanation below it; the window is titled with the message too.
    auto* alert = new QMessageBox(QMessageBox::Warning, qs(s.focusMissingAlertTitle), qs(s.focusMissingAlertTitle));
    alert->setInformativeText(qs(s.focusMissingAlertBody));
    alert->setObjectName(QStringLiteral("focusMissingAlert"));
    alert->setTextFormat(Qt::PlainText);
    QFont bold = alert->font();
    bold.setBold(true);
    if (auto* label = alert->findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) label->setFont(bold);
    // Wide enough that each line of the list stays one line.
    if (auto* label = alert->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel")))
        label->setMinimumWidth(480);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    QPushButton* open = alert->addButton(qs(s.focusOpenShortcuts), QMessageBox::ActionRole);
    QPushButton* goOn = alert->addButton(qs(s.focusMissingAlertContinue), QMessageBox::AcceptRole);
    alert->setDefaultButton(goOn);
    // Escape, the close button and a quit of the program close it as "Start without Focus";
    // without an escape button the box would refuse to close, and hold up the quit.
    alert->setEscapeButton(goOn);
    QObject::connect(open, &QPushButton::clicked, alert, [&logger = logger_] { openFocusCommandFolder(logger); });
    // Not modal: the session has already started and goes on while the alert is open.
    alert->open();
}

void openFocusCommandFolder(AppLogger& logger) {
    // The commands' folder, made if missing, in the file manager (xdg-open, through Qt).
    const auto folder = freedesktop::FocusCommandDirectory::defaultFolder();
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) logger.log().app.warning("pomodoro: cannot make the Focus commands folder: " + error.message());
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(folder.string()))))
        logger.log().app.warning("pomodoro: no file manager opened the Focus commands folder " + folder.string());
    else
        logger.log().app.info("pomodoro: the Focus commands folder is shown in the file manager");
}

std::unique_ptr<freedesktop::PomodoroBusService> exportPomodoroOnBus(freedesktop::SingleInstanceGuard& guard,
                                                                     PomodoroAssembly& pomodoro) {
    freedesktop::PomodoroBusHandlers handlers;
    handlers.act = [&pomodoro](std::string_view action) -> std::optional<std::string> {
        PomodoroCoordinator& c = pomodoro.coordinator();
        if (action == "start") {
            if (!c.settings().get(settings::kPomodoroEnabled)) return "the Pomodoro is turned off in the settings";
            if (c.currentState().isActive()) return "a session is already running; stop it first";
            c.startSession();
        } else if (action == "stop") {
            c.stopSession();
        } else if (action == "pause") {
            c.pauseSession();
        } else if (action == "resume") {
            c.resumeSession();
        } else if (action == "skip") {
            c.skipPhase();
        } else if (action == "reset") {
            c.resetPhase();
        }
        return std::nullopt;
    };
    handlers.status = [&pomodoro] { return pomodoro.statusLine(); };
    return freedesktop::PomodoroBusService::exportOn(guard, std::move(handlers));
}

}  // namespace orvantis::app
