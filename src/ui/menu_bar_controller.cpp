#include "ui/menu_bar_controller.h"

#include <string_view>
#include <utility>

#include <QAction>
#include <QCursor>
#include <QMenu>
#include <QPoint>
#include <QRect>
#include <QString>

#include "core/strings/settings_strings.h"

namespace orvantis::ui {
namespace {

constexpr const char* kTooltip = "Orvantis";

QString toQString(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

}  // namespace

MenuBarController::MenuBarController(NotificationCenter& notifications, std::function<SettingsLanguage()> language,
                                     std::function<void()> quit)
    : language_(std::move(language)), quit_(std::move(quit)) {
    configureButton();
    buildMenu();
    languageChanged_ = notifications.observe(orvantisSettingsLanguageChanged, [this] { handleSettingsLanguageChanged(); });
    needsRebuild_ = notifications.observe(orvantisMenuBarNeedsRebuild, [this] { handleMenuBarNeedsRebuild(); });
    connect(&statusItem_, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) { handleActivated(reason); });
    statusItem_.show();
}

MenuBarController::~MenuBarController() {
    statusItem_.setContextMenu(nullptr);
    delete menu_;
}

void MenuBarController::configureButton() {
    KeyboardIcon loaded = KeyboardIcon::load();
    iconSource_ = loaded.source;
    statusItem_.setIcon(loaded.icon);
    statusItem_.setToolTip(QString::fromLatin1(kTooltip));
}

void MenuBarController::buildMenu() {
    const SettingsStrings strings = SettingsStrings::make(language_ ? language_() : SettingsLanguage::en);
    auto* menu = new QMenu;
    menu->setObjectName(QStringLiteral("statusMenu"));

    QAction* quitItem = menu->addAction(toQString(strings.menuQuitItem));
    quitItem->setObjectName(QStringLiteral("menuQuitItem"));
    connect(quitItem, &QAction::triggered, this, [this] {
        if (quit_) quit_();
    });

    QMenu* old = std::exchange(menu_, menu);
    statusItem_.setContextMenu(menu_);
    if (old != nullptr) old->deleteLater();
}

void MenuBarController::handleSettingsLanguageChanged() { buildMenu(); }

void MenuBarController::handleMenuBarNeedsRebuild() { buildMenu(); }

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
