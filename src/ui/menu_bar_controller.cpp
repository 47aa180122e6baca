#include "ui/menu_bar_controller.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <QAction>
#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPixmap>
#include <QCursor>
#include <QMenu>
#include <QGuiApplication>
#include <QMessageBox>
#include <QScreen>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QTimer>

#include "core/shell/shell_texts.h"
#include "core/strings/settings_strings.h"
#include "ui/help_view.h"

namespace orvantis::ui {
namespace {

constexpr int kLaunchAtLoginTag = 100;
constexpr int kBannerTag = 200;
constexpr int kPomodoroStartTag = 300;
constexpr int kPomodoroPlayTag = 301;
constexpr int kPomodoroStopTag = 302;

/// The countdown as an icon: the minutes left on the phase's colour (grey while paused), for
/// trays that show no text beside an icon.
QIcon countdownIcon(const PomodoroTimerState& state) {
    QColor colour(0xd9, 0x48, 0x3b);  // work
    if (state.isPaused()) colour = QColor(0x80, 0x80, 0x80);
    else if (state.phase() == PomodoroPhase::breakTime) colour = QColor(0x2e, 0x9e, 0x5b);
    else if (state.phase() == PomodoroPhase::longBreak) colour = QColor(0x2f, 0x7d, 0xd1);
    const int seconds = state.remainingSeconds().value_or(0);
    const int minutes = seconds / 60;
    const QString text = minutes > 0 ? QString::number(minutes) : QString::number(seconds);
    QIcon icon;
    for (int size : {16, 22, 24, 32, 48, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawEllipse(QRectF(0.5, 0.5, size - 1, size - 1));
        QFont font = painter.font();
        font.setBold(true);
        font.setPixelSize(std::max(6, text.size() > 1 ? size * 5 / 9 : size * 2 / 3));
        painter.setFont(font);
        painter.setPen(Qt::white);
        painter.drawText(QRect(0, 0, size, size), Qt::AlignCenter, text);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

/// `base` with a round badge carrying `mark` in its lower right corner.
QIcon badged(const QIcon& base, const QColor& colour, const QString& mark) {
    QIcon icon;
    for (int size : {16, 22, 24, 32, 48, 64}) {
        QPixmap pixmap = base.pixmap(size, size);
        if (pixmap.isNull()) {
            pixmap = QPixmap(size, size);
            pixmap.fill(Qt::transparent);
        }
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        const int badge = size * 3 / 5;
        const QRect circle(size - badge, size - badge, badge, badge);
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawEllipse(circle);
        QFont font = painter.font();
        font.setBold(true);
        font.setPixelSize(std::max(6, badge * 3 / 4));
        painter.setFont(font);
        painter.setPen(Qt::white);
        painter.drawText(circle, Qt::AlignCenter, mark);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

/// `base` coloured with `colour` (multiplied, so its light parts take the colour and its dark
/// lines stay), keeping its shape: the keep-awake icon.
QIcon tinted(const QIcon& base, const QColor& colour) {
    QIcon icon;
    for (int size : {16, 22, 24, 32, 48, 64}) {
        const QPixmap source = base.pixmap(size, size);
        if (source.isNull()) continue;
        QPixmap pixmap = source;
        QPainter painter(&pixmap);
        painter.setCompositionMode(QPainter::CompositionMode_Multiply);
        painter.fillRect(pixmap.rect(), colour);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        painter.drawPixmap(0, 0, source);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon.isNull() ? base : icon;
}

QString toQString(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

}  // namespace

MenuBarController::MenuBarController(NotificationCenter& notifications, std::function<SettingsLanguage()> language,
                                     std::function<void()> quit, std::function<void()> openAccessibilitySettings)
    : language_(std::move(language)), quit_(std::move(quit)),
      openAccessibilitySettings_(std::move(openAccessibilitySettings)) {
    configureButton();
    buildMenu();
    languageChanged_ = notifications.observe(orvantisSettingsLanguageChanged, [this] { handleSettingsLanguageChanged(); });
    needsRebuild_ = notifications.observe(orvantisMenuBarNeedsRebuild, [this] { handleMenuBarNeedsRebuild(); });
    noOppositeSource_ = notifications.observe(orvantisNoOppositeSource, [this] { handleNoOppositeSource(); });
    clearedWarning_ = notifications.observe(orvantisClearedWarning, [this] { handleClearedWarning(); });
    renderStatusItem();
    connect(&statusItem_, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) { handleActivated(reason); });
    statusItem_.show();
}

MenuBarController::~MenuBarController() {
    statusItem_.setContextMenu(nullptr);
    delete menu_;
    delete helpWindow_;
    delete updatesNotice_;
}

void MenuBarController::configureButton() {
    KeyboardIcon loaded = KeyboardIcon::load();
    iconSource_ = loaded.source;
    keyboardIcon_ = loaded.icon;
    statusItem_.setIcon(keyboardIcon_);
}

void MenuBarController::buildMenu() {
    builtLanguage_ = language_ ? language_() : SettingsLanguage::en;
    const SettingsStrings strings = SettingsStrings::make(builtLanguage_);
    auto* menu = new QMenu;
    menu->setObjectName(QStringLiteral("statusMenu"));
    addShellItems(*menu, strings);
    addPomodoroItems(*menu, strings);

    addSystemUtilityRows(*menu, strings);

    QAction* quitItem = menu->addAction(toQString(strings.menuQuitItem));
    quitItem->setObjectName(QStringLiteral("menuQuitItem"));
    connect(quitItem, &QAction::triggered, this, [this] {
        if (quit_) quit_();
    });

    QMenu* old = std::exchange(menu_, menu);
    statusItem_.setContextMenu(menu_);
    if (old != nullptr) old->deleteLater();
}

void MenuBarController::addShellItems(QMenu& menu, const SettingsStrings& strings) {
    // Rows 1 to 4: the settings window, and the launch-at-login switch with its check mark.
    QAction* settings = menu.addAction(toQString(strings.menuSettingsItem));
    settings->setObjectName(QStringLiteral("menuSettingsItem"));
    connect(settings, &QAction::triggered, this, [this] { openSettings(); });
    menu.addSeparator();
    QAction* login = menu.addAction(toQString(strings.launchAtLogin));
    login->setObjectName(QStringLiteral("launchAtLogin"));
    login->setData(kLaunchAtLoginTag);
    login->setCheckable(true);
    login->setChecked(shell_.launchAtLogin && shell_.launchAtLogin());
    // The check mark is set here, not by Qt's own toggle, so that it always shows the setting.
    connect(login, &QAction::triggered, this, [this] { toggleLaunchAtLogin(); });
    menu.addSeparator();
}

void MenuBarController::setShellActions(ShellMenuActions actions) {
    shell_ = std::move(actions);
    buildMenu();
}

void MenuBarController::openSettings() {
    if (shell_.openSettings) shell_.openSettings();
}

void MenuBarController::toggleLaunchAtLogin() {
    if (shell_.toggleLaunchAtLogin) shell_.toggleLaunchAtLogin();
    const bool on = shell_.launchAtLogin && shell_.launchAtLogin();
    for (QAction* action : menu_->actions()) {
        if (action->data().toInt() == kLaunchAtLoginTag) action->setChecked(on);
    }
}

void MenuBarController::openHelp() {
    if (helpWindow_ == nullptr) {
        helpWindow_ = new HelpView(language_ ? language_() : SettingsLanguage::en);
        helpWindow_->setObjectName(QStringLiteral("helpWindow"));
        helpWindow_->setWindowTitle(QStringLiteral("Orvantis Help"));
        helpWindow_->resize(HelpView::kWidth, HelpView::kHeight);
        if (const QScreen* screen = QGuiApplication::primaryScreen()) {
            const QRect area = screen->availableGeometry();
            helpWindow_->move(area.center() - QPoint(HelpView::kWidth / 2, HelpView::kHeight / 2));
        }
    }
    helpWindow_->show();
    helpWindow_->raise();
    helpWindow_->activateWindow();
}

void MenuBarController::checkForUpdates() {
    if (updatesNotice_ == nullptr) {
        updatesNotice_ = new QMessageBox(QMessageBox::Information, QStringLiteral("Orvantis"),
                                         toQString(shell::kUpdaterNotConfiguredMessage), QMessageBox::Ok);
        updatesNotice_->setObjectName(QStringLiteral("updatesNotice"));
        updatesNotice_->setInformativeText(toQString(shell::kUpdaterNotConfiguredDetails));
    }
    // Not exec(): the notice must not hold up the event loop, nor a quit.
    updatesNotice_->show();
    updatesNotice_->raise();
    updatesNotice_->activateWindow();
}

void MenuBarController::addPomodoroItems(QMenu& menu, const SettingsStrings& strings) {
    if (!pomodoro_.enabled || !pomodoro_.enabled()) return;
    // The actions run on the next turn of the loop, once the menu has closed.
    auto later = [this](std::function<void()> PomodoroMenuActions::*action) {
        return [this, action] {
            QTimer::singleShot(0, this, [this, action] {
                if (pomodoro_.*action) (pomodoro_.*action)();
            });
        };
    };
    auto add = [&](std::string_view title, const char* name, int tag, std::function<void()> PomodoroMenuActions::*action) {
        QAction* item = menu.addAction(toQString(title));
        item->setObjectName(QString::fromLatin1(name));
        if (tag != 0) item->setData(tag);
        connect(item, &QAction::triggered, this, later(action));
        return item;
    };
    add(strings.pomodoroDashboardMenuItem, "pomodoroDashboardMenuItem", 0, &PomodoroMenuActions::openDashboard);
    add(strings.pomodoroStartItem, "pomodoroStartItem", kPomodoroStartTag, &PomodoroMenuActions::start);
    add(strings.pomodoroPauseItem, "pomodoroPauseItem", kPomodoroPlayTag, &PomodoroMenuActions::togglePlay)
        ->setVisible(false);
    add(strings.pomodoroStopItem, "pomodoroStopItem", kPomodoroStopTag, &PomodoroMenuActions::stop)->setVisible(false);
    menu.addSeparator();
}

void MenuBarController::setPomodoroActions(PomodoroMenuActions actions) {
    pomodoro_ = std::move(actions);
    buildMenu();
}

void MenuBarController::updatePomodoroDisplay(const PomodoroTimerState& state) {
    pomodoroState_ = state;
    const SettingsStrings strings = SettingsStrings::make(language_ ? language_() : SettingsLanguage::en);
    for (QAction* action : menu_->actions()) {
        // Items missing from the menu (the Pomodoro is off) are simply not found.
        switch (action->data().toInt()) {
            case kPomodoroStartTag: action->setVisible(!state.isActive()); break;
            case kPomodoroPlayTag:
                action->setVisible(state.isActive());
                action->setText(toQString(state.isPaused() ? strings.pomodoroResumeItem : strings.pomodoroPauseItem));
                break;
            case kPomodoroStopTag: action->setVisible(state.isActive()); break;
            default: break;
        }
    }
    renderStatusItem();
}

void MenuBarController::setSystemUtilityRows(SystemUtilityRows rows) {
    utilityRows_ = std::move(rows);
    buildMenu();
    renderStatusItem();
}

void MenuBarController::addSystemUtilityRows(QMenu& menu, const SettingsStrings& strings) {
    const auto ask = [](const std::function<bool()>& f) { return f && f(); };
    const auto checkable = [&](std::string_view title, const char* name, bool checked,
                               const std::function<void()>& action) {
        QAction* item = menu.addAction(toQString(title));
        item->setObjectName(QString::fromLatin1(name));
        item->setCheckable(true);
        item->setChecked(checked);
        connect(item, &QAction::triggered, this, [action] {
            if (action) action();
        });
    };
    // Rows 10 to 12: keep-awake and its unconditional lid-close switch.
    if (ask(utilityRows_.caffeineEnabled)) {
        checkable(strings.menuCaffeineItem, "menuCaffeineItem", ask(utilityRows_.caffeineActive),
                  utilityRows_.toggleCaffeine);
        if (ask(utilityRows_.lidAlwaysShown))
            checkable(strings.menuCaffeineLidAlwaysItem, "menuCaffeineLidAlwaysItem", ask(utilityRows_.lidAlwaysActive),
                      utilityRows_.toggleCaffeineLidAlways);
        menu.addSeparator();
    }
    // Rows 13 and 14: the keyboard lock.
    if (ask(utilityRows_.keyboardLockEnabled)) {
        QAction* item = menu.addAction(toQString(strings.menuKeyboardLockItem));
        item->setObjectName(QStringLiteral("menuKeyboardLockItem"));
        connect(item, &QAction::triggered, this, [action = utilityRows_.toggleKeyboardLock] {
            if (action) action();
        });
        menu.addSeparator();
    }
}

void MenuBarController::renderStatusItem() {
    if (accessibilityBannerVisible_) {
        statusIcon_ = StatusIcon::permissionsRequired;
        statusItem_.setIcon(badged(keyboardIcon_, QColor(0xd0, 0x30, 0x30), QStringLiteral("!")));
        description_ = QStringLiteral("Permissions required");
    } else if (noSourceWarningVisible_) {
        statusIcon_ = StatusIcon::noOppositeSource;
        statusItem_.setIcon(badged(keyboardIcon_, QColor(0xe0, 0x90, 0x10), QStringLiteral("?")));
        description_ = QString::fromUtf8("Orvantis — No opposite layout found");
    } else if (pomodoroState_.isActive()) {
        // The tray shows no text beside an icon: the countdown is drawn, and the tool tip
        // carries the title itself ("🍅 24:59").
        statusIcon_ = StatusIcon::pomodoro;
        statusItem_.setIcon(countdownIcon(pomodoroState_));
        description_ = QString::fromStdString(pomodoroState_.menuBarTitle());
    } else if (utilityRows_.assertionHeld && utilityRows_.assertionHeld()) {
        statusIcon_ = StatusIcon::caffeine;
        statusItem_.setIcon(tinted(keyboardIcon_, QColor(0xff, 0x3b, 0x30)));
        description_ = QString::fromUtf8("Orvantis — Caffeine holding sleep lock");
    } else {
        statusIcon_ = StatusIcon::keyboard;
        statusItem_.setIcon(keyboardIcon_);
        description_ = QStringLiteral("Orvantis");
    }
    statusItem_.setToolTip(toolTip_.isEmpty() ? description_ : toolTip_);
}

void MenuBarController::setToolTip(const QString& text) {
    toolTip_ = text;
    statusItem_.setToolTip(toolTip_.isEmpty() ? description_ : toolTip_);
}

void MenuBarController::showAccessibilityNeeded() {
    accessibilityBannerVisible_ = true;
    renderStatusItem();
    setToolTip(QString::fromUtf8(
        "Hotkeys disabled — Accessibility or Input Monitoring permission missing. Click the menu."));
    const SettingsStrings strings = SettingsStrings::make(language_ ? language_() : SettingsLanguage::en);
    auto* banner = new QAction(toQString(strings.menuEnablePermissionsItem), menu_);
    banner->setObjectName(QStringLiteral("menuEnablePermissionsItem"));
    banner->setData(kBannerTag);
    connect(banner, &QAction::triggered, this, [this] {
        if (openAccessibilitySettings_) openAccessibilitySettings_();
    });
    QAction* first = menu_->actions().isEmpty() ? nullptr : menu_->actions().first();
    menu_->insertAction(first, banner);
    auto* separator = new QAction(menu_);
    separator->setSeparator(true);
    menu_->insertAction(first, separator);
}

void MenuBarController::clearAccessibilityNeeded() {
    accessibilityBannerVisible_ = false;
    renderStatusItem();
    setToolTip({});
    for (QAction* action : menu_->actions()) {
        if (action->data().toInt() == kBannerTag) {
            menu_->removeAction(action);
            action->deleteLater();
            break;
        }
    }
    if (!menu_->actions().isEmpty() && menu_->actions().first()->isSeparator()) {
        QAction* separator = menu_->actions().first();
        menu_->removeAction(separator);
        separator->deleteLater();
    }
}

void MenuBarController::handleNoOppositeSource() {
    noSourceWarningVisible_ = true;
    renderStatusItem();
    setToolTip(QString::fromUtf8("Add a second keyboard layout in System Settings → Keyboard → Input Sources"));
}

void MenuBarController::handleClearedWarning() {
    noSourceWarningVisible_ = false;
    renderStatusItem();
    setToolTip({});
}

void MenuBarController::handleSettingsLanguageChanged() {
    bool hadBanner = false;
    for (QAction* action : menu_->actions()) hadBanner |= action->data().toInt() == kBannerTag;
    buildMenu();
    // The banner comes back, in the new language.
    if (hadBanner) showAccessibilityNeeded();
    // The rebuilt menu shows the Pomodoro rows idle; the next turn puts them right.
    QTimer::singleShot(0, this, [this] {
        if (pomodoro_.currentState) updatePomodoroDisplay(pomodoro_.currentState());
    });
}

void MenuBarController::handleMenuBarNeedsRebuild() { buildMenu(); }

void MenuBarController::followLanguage() {
    QTimer::singleShot(0, this, [this] {
        if (language_ && language_() != builtLanguage_) handleSettingsLanguageChanged();
    });
}

QAction* MenuBarController::menuItem(const char* name) const {
    const QString wanted = QString::fromLatin1(name);
    for (QAction* action : menu_->actions()) {
        if (action->objectName() == wanted) return action;
    }
    return nullptr;
}

void MenuBarController::handleActivated(QSystemTrayIcon::ActivationReason reason) {
    // A status item opens its menu on a plain click too; Qt does that itself only for the
    // context click. Below the icon when the tray tells where it is, else at the pointer.
    if (reason != QSystemTrayIcon::Trigger || menu_->isVisible()) return;
    const QRect icon = statusItem_.geometry();
    menu_->popup(icon.isValid() ? icon.bottomLeft() + QPoint(0, 1) : QCursor::pos());
}

}  // namespace orvantis::ui
