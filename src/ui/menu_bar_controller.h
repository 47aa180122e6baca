#pragma once

#include <functional>

#include <QObject>
#include <QSystemTrayIcon>

#include "core/events/notification_center.h"
#include "core/pomodoro/pomodoro_timer_state.h"
#include "core/settings/settings_language.h"
#include "platform/subscription.h"
#include "ui/keyboard_icon.h"

class QAction;
class QMenu;
class QMessageBox;
class QWidget;

namespace orvantis {
struct SettingsStrings;
}

namespace orvantis::ui {

/// What the Pomodoro rows of the menu do; given by the Pomodoro's assembly.
struct PomodoroMenuActions {
    std::function<bool()> enabled;  ///< the rows are in the menu only while this answers true
    std::function<PomodoroTimerState()> currentState;
    std::function<void()> openDashboard;
    std::function<void()> start;
    std::function<void()> togglePlay;
    std::function<void()> stop;
};

/// What the first rows of the menu do: the settings window and the launch-at-login switch.
/// Given by the composition root; an empty function makes its row log nothing and do nothing,
/// so the root fills every one.
struct ShellMenuActions {
    std::function<void()> openSettings;
    std::function<bool()> launchAtLogin;        ///< the check mark of the launch-at-login row
    std::function<void()> toggleLaunchAtLogin;  ///< inverts the setting
};

/// Owns the tray icon through which the user reaches Orvantis, and its menu. Created by the
/// composition root and kept for the life of the process. The icon is shown at once; when
/// the desktop has no tray yet, Qt docks it as soon as one appears. Main thread only.
class MenuBarController final : public QObject {
    Q_OBJECT

public:
    /// `language` is asked on every build of the menu. `quit` ends the application through
    /// its end sequence; it is called from the Quit item. The menu is built anew when the
    /// interface language changes and after every save of the settings.
    MenuBarController(NotificationCenter& notifications, std::function<SettingsLanguage()> language,
                      std::function<void()> quit, std::function<void()> openAccessibilitySettings = {});
    ~MenuBarController() override;
    MenuBarController(const MenuBarController&) = delete;
    MenuBarController& operator=(const MenuBarController&) = delete;

    /// Builds a new menu in the current language and makes it the icon's menu. The old menu
    /// is freed once control is back in the event loop, so this is safe from one of its items.
    /// A permission banner that stood in the old menu is not carried over.
    void buildMenu();

    /// The hotkeys are off for want of a permission: the lock icon, its tool tip, and the
    /// banner item leading the menu. Each call inserts the item again: call it once per menu.
    void showAccessibilityNeeded();
    /// Takes the banner away again; a menu without one is left as it is.
    void clearAccessibilityNeeded();
    /// Shows the icon of the first state that applies: missing permission, no second layout,
    /// the red keyboard while keep-awake holds its assertion, else the plain keyboard.
    void renderStatusItem();

    /// Gives the settings and launch-at-login rows their actions and rebuilds the menu.
    void setShellActions(ShellMenuActions actions);
    /// The settings row's action: asks the composition root to open or raise the window.
    void openSettings();
    /// Shows the help window, 420 by 360, titled "Orvantis Help"; raises it when it is open.
    /// The window is kept and reused.
    void openHelp();
    /// Tells that no update mechanism is built in, in a message box that does not block.
    void checkForUpdates();
    /// The help window once opened, else null.
    QWidget* helpWindow() const { return helpWindow_; }
    /// The updates notice once shown, else null.
    QMessageBox* updatesNotice() const { return updatesNotice_; }

    /// Gives the Pomodoro rows their actions and rebuilds the menu with them.
    void setPomodoroActions(PomodoroMenuActions actions);
    /// Keeps `state`, shows the rows that fit it (start when idle; pause or resume and stop
    /// otherwise), then renders the icon, which shows the countdown while a phase is active.
    void updatePomodoroDisplay(const PomodoroTimerState& state);
    const PomodoroTimerState& pomodoroState() const { return pomodoroState_; }

    /// The keep-awake and keyboard lock rows of the menu and the red keep-awake icon, as the
    /// system utilities provide them; each function is asked at every build and render.
    struct SystemUtilityRows {
        std::function<bool()> caffeineEnabled, caffeineActive, lidAlwaysShown, lidAlwaysActive, keyboardLockEnabled,
            keyboardLocked, assertionHeld;
        std::function<void()> toggleCaffeine, toggleCaffeineLidAlways, toggleKeyboardLock;
    };
    /// Installs the rows and rebuilds the menu and the icon.
    void setSystemUtilityRows(SystemUtilityRows rows);

    /// Rebuilds the menu, as a language change does, if the interface language is no longer the
    /// one the menu was built in: a change that came from the command line or a sync rather than
    /// from a save of the settings window. Checked one turn later, so a save, which announces its
    /// own change, rebuilds once.
    void followLanguage();

    /// What the icon shows now.
    enum class StatusIcon { keyboard, permissionsRequired, noOppositeSource, pomodoro, caffeine };
    StatusIcon statusIcon() const { return statusIcon_; }

    /// The tray icon itself.
    QSystemTrayIcon& statusItem() { return statusItem_; }
    /// The current menu; never null after construction.
    QMenu* menu() const { return menu_; }
    /// The menu's item with object name `name` ("menuQuitItem"), or null.
    QAction* menuItem(const char* name) const;
    /// Where the icon's picture came from.
    KeyboardIcon::Source iconSource() const { return iconSource_; }

private:
    void configureButton();
    void addSystemUtilityRows(QMenu& menu, const SettingsStrings& strings);
    void handleActivated(QSystemTrayIcon::ActivationReason reason);
    void handleSettingsLanguageChanged();
    void handleMenuBarNeedsRebuild();
    void handleNoOppositeSource();
    void handleClearedWarning();
    void setToolTip(const QString& text);
    void addPomodoroItems(QMenu& menu, const SettingsStrings& strings);
    void addShellItems(QMenu& menu, const SettingsStrings& strings);
    void toggleLaunchAtLogin();

    std::function<SettingsLanguage()> language_;
    SettingsLanguage builtLanguage_ = SettingsLanguage::en;  ///< the language of the current menu
    std::function<void()> quit_;
    std::function<void()> openAccessibilitySettings_;
    SystemUtilityRows utilityRows_;
    QSystemTrayIcon statusItem_;
    QIcon keyboardIcon_;
    bool accessibilityBannerVisible_ = false;
    bool noSourceWarningVisible_ = false;
    QString toolTip_;      ///< set by a state that explains itself; empty otherwise
    QString description_;  ///< what the icon stands for, shown when there is no tool tip
    StatusIcon statusIcon_ = StatusIcon::keyboard;
    KeyboardIcon::Source iconSource_ = KeyboardIcon::Source::Text;
    PomodoroMenuActions pomodoro_;
    ShellMenuActions shell_;
    QWidget* helpWindow_ = nullptr;        ///< owned; a top-level window without a parent
    QMessageBox* updatesNotice_ = nullptr;  ///< owned; a top-level window without a parent
    PomodoroTimerState pomodoroState_;
    QMenu* menu_ = nullptr;  ///< owned; menus are top-level widgets and take no QObject parent
    Subscription languageChanged_;
    Subscription needsRebuild_;
    Subscription noOppositeSource_;
    Subscription clearedWarning_;
};

}  // namespace orvantis::ui
