#include "ui/menu_bar_controller.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvantis::ui {
namespace {

class MenuBarControllerTest : public ::testing::Test {
protected:
    NotificationCenter notifications_;
};

TEST_F(MenuBarControllerTest, WithEveryFeatureOffTheMenuHoldsTheShellRowsAndQuit) {
    MenuBarController controller(notifications_,[] { return SettingsLanguage::en; }, [] {});
    ASSERT_NE(controller.menu(), nullptr);
    ASSERT_EQ(controller.menu()->actions().size(), 5);
    QAction* quit = controller.menuItem("menuQuitItem");
    ASSERT_NE(quit, nullptr);
    EXPECT_EQ(quit->text(), QStringLiteral("Quit Orvantis"));
    EXPECT_TRUE(quit->shortcut().isEmpty());
}

TEST_F(MenuBarControllerTest, QuitTitleFollowsTheInterfaceLanguage) {
    MenuBarController controller(notifications_,[] { return SettingsLanguage::ru; }, [] {});
    EXPECT_EQ(controller.menuItem("menuQuitItem")->text(), QStringLiteral("Выйти из Orvantis"));
}

TEST_F(MenuBarControllerTest, RebuildAsksTheLanguageAgain) {
    SettingsLanguage language = SettingsLanguage::en;
    MenuBarController controller(notifications_,[&] { return language; }, [] {});
    language = SettingsLanguage::ru;
    controller.buildMenu();
    EXPECT_EQ(controller.menuItem("menuQuitItem")->text(), QStringLiteral("Выйти из Orvantis"));
}

TEST_F(MenuBarControllerTest, QuitItemRunsTheQuitAction) {
    int quits = 0;
    MenuBarController controller(notifications_,[] { return SettingsLanguage::en; }, [&] { ++quits; });
    controller.menuItem("menuQuitItem")->trigger();
    EXPECT_EQ(quits, 1);
}

TEST_F(MenuBarControllerTest, IconIsTheMenusOwnerWithTooltip) {
    MenuBarController controller(notifications_,[] { return SettingsLanguage::en; }, [] {});
    EXPECT_EQ(controller.statusItem().contextMenu(), controller.menu());
    EXPECT_EQ(controller.statusItem().toolTip(), QStringLiteral("Orvantis"));
    EXPECT_FALSE(controller.statusItem().icon().isNull());
    EXPECT_TRUE(controller.statusItem().isVisible());
}

TEST_F(MenuBarControllerTest, RebuildReplacesTheMenuAndFreesTheOldOne) {
    MenuBarController controller(notifications_,[] { return SettingsLanguage::en; }, [] {});
    QPointer<QMenu> old = controller.menu();
    controller.buildMenu();
    EXPECT_NE(controller.menu(), old.data());
    EXPECT_EQ(controller.statusItem().contextMenu(), controller.menu());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(old.isNull());
}

TEST_F(MenuBarControllerTest, OpensNoWindow) {
    MenuBarController controller(notifications_,[] { return SettingsLanguage::en; }, [] {});
    for (QWidget* widget : QApplication::topLevelWidgets()) EXPECT_FALSE(widget->isVisible());
}

TEST(KeyboardIconTest, BundledDrawingRendersAtTraySizes) {
    QIcon icon = KeyboardIcon::bundled();
    ASSERT_FALSE(icon.isNull());
    QImage image = icon.pixmap(22, 22).toImage();
    ASSERT_FALSE(image.isNull());
    // Something is drawn in the middle, and the corners stay transparent.
    EXPECT_GT(qAlpha(image.pixel(11, 11)), 0);
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
}

TEST(KeyboardIconTest, TextFallbackIsNeverNull) {
    EXPECT_FALSE(KeyboardIcon::text().isNull());
}

TEST(KeyboardIconTest, LoadAnswersAUsableIcon) {
    KeyboardIcon loaded = KeyboardIcon::load();
    EXPECT_FALSE(loaded.icon.isNull());
}

TEST_F(MenuBarControllerTest, ALanguageChangeShowsAtOnceInTheMenu) {
    SettingsLanguage language = SettingsLanguage::en;
    MenuBarController controller(notifications_, [&] { return language; }, [] {});
    language = SettingsLanguage::ru;
    EXPECT_EQ(controller.menuItem("menuQuitItem")->text(), QStringLiteral("Quit Orvantis"))
        << "nothing changes before the settings are saved";
    notifications_.post(orvantisSettingsLanguageChanged);
    EXPECT_EQ(controller.menuItem("menuQuitItem")->text(), QStringLiteral("Выйти из Orvantis"));
}

TEST_F(MenuBarControllerTest, EverySaveRebuildsTheMenu) {
    MenuBarController controller(notifications_, [] { return SettingsLanguage::en; }, [] {});
    QMenu* before = controller.menu();
    notifications_.post(orvantisMenuBarNeedsRebuild);
    EXPECT_NE(controller.menu(), before);
}

TEST_F(MenuBarControllerTest, TheBannerLeadsTheMenuWithTheLockIconAndItsToolTip) {
    int opened = 0;
    MenuBarController controller(notifications_, [] { return SettingsLanguage::en; }, [] {}, [&] { ++opened; });
    controller.showAccessibilityNeeded();
    const auto actions = controller.menu()->actions();
    ASSERT_EQ(actions.size(), 7);
    EXPECT_EQ(actions[0]->text(), QString::fromUtf8("Enable Permissions…"));
    EXPECT_TRUE(actions[1]->isSeparator());
    EXPECT_EQ(controller.statusIcon(), MenuBarController::StatusIcon::permissionsRequired);
    EXPECT_EQ(controller.statusItem().toolTip(),
              QString::fromUtf8("Hotkeys disabled — Accessibility or Input Monitoring permission missing. Click the menu."));
    actions[0]->trigger();
    EXPECT_EQ(opened, 1);

    controller.clearAccessibilityNeeded();
    ASSERT_EQ(controller.menu()->actions().size(), 5);
    EXPECT_EQ(controller.menu()->actions()[0]->objectName(), QStringLiteral("menuSettingsItem"));
    EXPECT_EQ(controller.statusIcon(), MenuBarController::StatusIcon::keyboard);
    EXPECT_EQ(controller.statusItem().toolTip(), QStringLiteral("Orvantis"));
}

TEST_F(MenuBarControllerTest, ClearingAMenuWithoutBannerLeavesItAsItIs) {
    MenuBarController controller(notifications_, [] { return SettingsLanguage::en; }, [] {});
    controller.clearAccessibilityNeeded();
    EXPECT_EQ(controller.menu()->actions().size(), 5);
}

TEST_F(MenuBarControllerTest, TwoCallsInsertTheBannerTwice) {
    MenuBarController controller(notifications_, [] { return SettingsLanguage::en; }, [] {});
    controller.showAccessibilityNeeded();
    controller.showAccessibilityNeeded();
    EXPECT_EQ(controller.menu()->actions().size(), 9);
}

TEST_F(MenuBarControllerTest, ALanguageChangeKeepsTheBannerAtTheTopInTheNewLanguage) {
    SettingsLanguage language = SettingsLanguage::en;
    MenuBarController controller(notifications_, [&] { return language; }, [] {});
    controller.showAccessibilityNeeded();
    language = SettingsLanguage::ru;
    notifications_.post(orvantisSettingsLanguageChanged);
    const auto actions = controller.menu()->actions();
    ASSERT_EQ(actions.size(), 7);
    EXPECT_EQ(actions[0]->text(), QString::fromUtf8("Включить разрешения…"));
    EXPECT_EQ(actions[2]->text(), QString::fromUtf8("Настройки…"));
    EXPECT_EQ(actions[6]->text(), QString::fromUtf8("Выйти из Orvantis"));
}

TEST_F(MenuBarControllerTest, ARebuildAfterASaveDropsTheBanner) {
    MenuBarController controller(notifications_, [] { return SettingsLanguage::en; }, [] {});
    controller.showAccessibilityNeeded();
    notifications_.post(orvantisMenuBarNeedsRebuild);
    EXPECT_EQ(controller.menu()->actions().size(), 5);
}

TEST_F(MenuBarControllerTest, TheNoLayoutWarningShowsUntilASwitchSucceedsAndYieldsToThePermissionBanner) {
    MenuBarController controller(notifications_, [] { return SettingsLanguage::en; }, [] {});
    notifications_.post(orvantisNoOppositeSource);
    EXPECT_EQ(controller.statusIcon(), MenuBarController::StatusIcon::noOppositeSource);
    EXPECT_EQ(controller.statusItem().toolTip(),
              QString::fromUtf8("Add a second keyboard layout in System Settings → Keyboard → Input Sources"));
    controller.showAccessibilityNeeded();
    EXPECT_EQ(controller.statusIcon(), MenuBarController::StatusIcon::permissionsRequired);
    controller.clearAccessibilityNeeded();
    EXPECT_EQ(controller.statusIcon(), MenuBarController::StatusIcon::noOppositeSource);
    notifications_.post(orvantisClearedWarning);
    EXPECT_EQ(controller.statusIcon(), MenuBarController::StatusIcon::keyboard);
    EXPECT_EQ(controller.statusItem().toolTip(), QStringLiteral("Orvantis"));
}


class MenuBarPomodoroTest : public MenuBarControllerTest {
protected:
    MenuBarPomodoroTest() {
        controller_.setPomodoroActions({[this] { return enabled_; }, [this] { return state_; },
                                        [this] { calls_.push_back("dashboard"); }, [this] { calls_.push_back("start"); },
                                        [this] { calls_.push_back("toggle"); }, [this] { calls_.push_back("stop"); }});
    }
    bool visible(const char* name) const {
        QAction* item = controller_.menuItem(name);
        return item != nullptr && item->isVisible();
    }

    bool enabled_ = true;
    PomodoroTimerState state_;
    SettingsLanguage language_ = SettingsLanguage::en;
    std::vector<std::string> calls_;
    MenuBarController controller_{notifications_, [this] { return language_; }, [] {}};
};

TEST_F(MenuBarPomodoroTest, TheRowsStandBeforeQuitInTheirIdleForm) {
    const auto actions = controller_.menu()->actions();
    ASSERT_EQ(actions.size(), 10);
    EXPECT_EQ(actions[4]->objectName(), QStringLiteral("pomodoroDashboardMenuItem"));
    EXPECT_EQ(actions[5]->objectName(), QStringLiteral("pomodoroStartItem"));
    EXPECT_EQ(actions[5]->data().toInt(), 300);
    EXPECT_EQ(actions[6]->data().toInt(), 301);
    EXPECT_EQ(actions[7]->data().toInt(), 302);
    EXPECT_TRUE(actions[8]->isSeparator());
    EXPECT_EQ(actions[9]->objectName(), QStringLiteral("menuQuitItem"));
    EXPECT_TRUE(visible("pomodoroStartItem"));
    EXPECT_FALSE(visible("pomodoroPauseItem"));
    EXPECT_FALSE(visible("pomodoroStopItem"));
}

TEST_F(MenuBarPomodoroTest, TheRowsFollowTheStateAndTheIconShowsTheCountdown) {
    controller_.updatePomodoroDisplay(PomodoroTimerState::running(PomodoroPhase::work, 1499));
    EXPECT_FALSE(visible("pomodoroStartItem"));
    EXPECT_TRUE(visible("pomodoroPauseItem"));
    EXPECT_TRUE(visible("pomodoroStopItem"));
    EXPECT_EQ(controller_.menuItem("pomodoroPauseItem")->text(), QStringLiteral("Pause Pomodoro"));
    EXPECT_EQ(controller_.statusIcon(), MenuBarController::StatusIcon::pomodoro);
    EXPECT_EQ(controller_.statusItem().toolTip(), QString::fromUtf8("\U0001F345 24:59"));
    controller_.updatePomodoroDisplay(PomodoroTimerState::paused(PomodoroPhase::work, 1499));
    EXPECT_EQ(controller_.menuItem("pomodoroPauseItem")->text(), QStringLiteral("Resume Pomodoro"));
    EXPECT_EQ(controller_.statusItem().toolTip(), QString::fromUtf8("\u23F8 24:59"));
    controller_.updatePomodoroDisplay(PomodoroTimerState::idle());
    EXPECT_TRUE(visible("pomodoroStartItem"));
    EXPECT_FALSE(visible("pomodoroStopItem"));
    EXPECT_EQ(controller_.statusIcon(), MenuBarController::StatusIcon::keyboard);
    EXPECT_EQ(controller_.statusItem().toolTip(), QStringLiteral("Orvantis"));
}

TEST_F(MenuBarPomodoroTest, AWarningHidesTheCountdown) {
    controller_.updatePomodoroDisplay(PomodoroTimerState::running(PomodoroPhase::work, 1499));
    controller_.showAccessibilityNeeded();
    EXPECT_EQ(controller_.statusIcon(), MenuBarController::StatusIcon::permissionsRequired);
    controller_.clearAccessibilityNeeded();
    EXPECT_EQ(controller_.statusIcon(), MenuBarController::StatusIcon::pomodoro);
}

TEST_F(MenuBarPomodoroTest, ActionsRunAfterTheMenuClosed) {
    controller_.menuItem("pomodoroStartItem")->trigger();
    EXPECT_TRUE(calls_.empty());
    QApplication::processEvents();
    controller_.menuItem("pomodoroDashboardMenuItem")->trigger();
    controller_.menuItem("pomodoroPauseItem")->trigger();
    controller_.menuItem("pomodoroStopItem")->trigger();
    QApplication::processEvents();
    EXPECT_EQ(calls_, (std::vector<std::string>{"start", "dashboard", "toggle", "stop"}));
}

TEST_F(MenuBarPomodoroTest, PomodoroOffLeavesNoRowsAndTheCountdownStays) {
    controller_.updatePomodoroDisplay(PomodoroTimerState::running(PomodoroPhase::work, 1499));
    enabled_ = false;
    controller_.buildMenu();
    EXPECT_EQ(controller_.menu()->actions().size(), 5);
    controller_.updatePomodoroDisplay(PomodoroTimerState::running(PomodoroPhase::work, 1498));
    EXPECT_EQ(controller_.statusIcon(), MenuBarController::StatusIcon::pomodoro);
    EXPECT_EQ(controller_.statusItem().toolTip(), QString::fromUtf8("\U0001F345 24:58"));
}

TEST_F(MenuBarPomodoroTest, ALanguageChangeRestoresTheRowsOnTheNextTurn) {
    state_ = PomodoroTimerState::paused(PomodoroPhase::breakTime, 10);
    controller_.updatePomodoroDisplay(state_);
    language_ = SettingsLanguage::ru;
    notifications_.post(orvantisSettingsLanguageChanged);
    EXPECT_TRUE(visible("pomodoroStartItem"));  // a rebuilt menu is idle
    QApplication::processEvents();
    EXPECT_FALSE(visible("pomodoroStartItem"));
    EXPECT_TRUE(visible("pomodoroPauseItem"));
    EXPECT_EQ(controller_.menuItem("pomodoroPauseItem")->text(), QString::fromUtf8("Продолжить"));
}

/// The system utilities' rows over plain switches.
struct UtilityState {
    bool caffeineEnabled = true, caffeineActive = false, lidAlways = false, lidAlwaysActive = false,
         lockEnabled = true, held = false;
    int caffeineToggles = 0, lidToggles = 0, lockToggles = 0;
    MenuBarController::SystemUtilityRows rows() {
        MenuBarController::SystemUtilityRows r;
        r.caffeineEnabled = [this] { return caffeineEnabled; };
        r.caffeineActive = [this] { return caffeineActive; };
        r.lidAlwaysShown = [this] { return lidAlways; };
        r.lidAlwaysActive = [this] { return lidAlwaysActive; };
        r.keyboardLockEnabled = [this] { return lockEnabled; };
        r.keyboardLocked = [] { return false; };
        r.assertionHeld = [this] { return held; };
        r.toggleCaffeine = [this] { ++caffeineToggles; };
        r.toggleCaffeineLidAlways = [this] { ++lidToggles; };
        r.toggleKeyboardLock = [this] { ++lockToggles; };
        return r;
    }
};

QStringList titles(const QMenu& menu) {
    QStringList out;
    for (QAction* a : menu.actions()) out << (a->isSeparator() ? QStringLiteral("-") : a->text());
    return out;
}

TEST_F(MenuBarControllerTest, UtilityRowsStandBeforeQuitOnlyWhenTheirFeaturesAreOn) {
    UtilityState state;
    MenuBarController controller(notifications_, [] { return SettingsLanguage::en; }, [] {});
    controller.setSystemUtilityRows(state.rows());
    EXPECT_EQ(titles(*controller.menu()).mid(4), (QStringList{"Caffeine", "-", "Lock Keyboard for Cleaning", "-",
                                                       "Quit Orvantis"}));
    state.lidAlways = true;
    state.lidAlwaysActive = true;
    state.caffeineActive = true;
    controller.buildMenu();
    EXPECT_EQ(titles(*controller.menu()).mid(4), (QStringList{"Caffeine", "Keep awake with lid closed", "-",
                                                       "Lock Keyboard for Cleaning", "-", "Quit Orvantis"}));
    EXPECT_TRUE(controller.menuItem("menuCaffeineItem")->isChecked());
    EXPECT_TRUE(controller.menuItem("menuCaffeineLidAlwaysItem")->isChecked());
    state.caffeineEnabled = false;
    state.lockEnabled = false;
    controller.buildMenu();
    EXPECT_EQ(titles(*controller.menu()).mid(4), QStringList{"Quit Orvantis"});
}

TEST_F(MenuBarControllerTest, UtilityRowsRunTheirActionsAndFollowTheLanguage) {
    UtilityState state;
    state.lidAlways = true;
    MenuBarController controller(notifications_, [] { return SettingsLanguage::ru; }, [] {});
    controller.setSystemUtilityRows(state.rows());
    controller.menuItem("menuCaffeineItem")->trigger();
    controller.menuItem("menuCaffeineLidAlwaysItem")->trigger();
    controller.menuItem("menuKeyboardLockItem")->trigger();
    EXPECT_EQ(state.caffeineToggles, 1);
    EXPECT_EQ(state.lidToggles, 1);
    EXPECT_EQ(state.lockToggles, 1);
    EXPECT_EQ(controller.menuItem("menuCaffeineItem")->text(), QStringLiteral("Кофеин"));
}

TEST_F(MenuBarControllerTest, AHeldAssertionTurnsTheIconRedBelowTheWarnings) {
    UtilityState state;
    MenuBarController controller(notifications_, [] { return SettingsLanguage::en; }, [] {});
    controller.setSystemUtilityRows(state.rows());
    EXPECT_EQ(controller.statusIcon(), MenuBarController::StatusIcon::keyboard);
    state.held = true;
    controller.renderStatusItem();
    EXPECT_EQ(controller.statusIcon(), MenuBarController::StatusIcon::caffeine);
    EXPECT_EQ(controller.statusItem().toolTip(), QString::fromUtf8("Orvantis — Caffeine holding sleep lock"));
    controller.showAccessibilityNeeded();
    EXPECT_EQ(controller.statusIcon(), MenuBarController::StatusIcon::permissionsRequired);
    controller.clearAccessibilityNeeded();
    EXPECT_EQ(controller.statusIcon(), MenuBarController::StatusIcon::caffeine);
}

TEST_F(MenuBarPomodoroTest, TheCountdownHidesTheRedKeepAwakeIcon) {
    UtilityState utilities;
    utilities.held = true;
    controller_.setSystemUtilityRows(utilities.rows());
    EXPECT_EQ(controller_.statusIcon(), MenuBarController::StatusIcon::caffeine);
    controller_.updatePomodoroDisplay(PomodoroTimerState::running(PomodoroPhase::work, 1499));
    EXPECT_EQ(controller_.statusIcon(), MenuBarController::StatusIcon::pomodoro);
    controller_.updatePomodoroDisplay(PomodoroTimerState::idle());
    EXPECT_EQ(controller_.statusIcon(), MenuBarController::StatusIcon::caffeine);
}

}  // namespace
}  // namespace orvantis::ui

namespace orvantis::ui {
namespace {

/// The settings and launch-at-login rows over a plain switch.
class MenuBarShellTest : public MenuBarControllerTest {
protected:
    MenuBarShellTest() {
        controller_.setShellActions({[this] { ++settingsOpened_; }, [this] { return launchAtLogin_; },
                                     [this] { launchAtLogin_ = !launchAtLogin_; }});
    }
    int settingsOpened_ = 0;
    bool launchAtLogin_ = false;
    SettingsLanguage language_ = SettingsLanguage::en;
    MenuBarController controller_{notifications_, [this] { return language_; }, [] {}};
};

TEST_F(MenuBarShellTest, TheSettingsAndLaunchAtLoginRowsLeadTheMenu) {
    const auto actions = controller_.menu()->actions();
    ASSERT_EQ(titles(*controller_.menu()),
              (QStringList{QString::fromUtf8("Settings…"), "-", "Launch at login", "-", "Quit Orvantis"}));
    EXPECT_EQ(actions[2]->data().toInt(), 100);
    EXPECT_TRUE(actions[2]->isCheckable());
    EXPECT_FALSE(actions[2]->isChecked());
    for (QAction* action : actions) EXPECT_TRUE(action->shortcut().isEmpty()) << action->text().toStdString();
}

TEST_F(MenuBarShellTest, EveryRowInOrderWithAllFeaturesOnInRussian) {
    language_ = SettingsLanguage::ru;
    UtilityState utilities;
    utilities.lidAlways = true;
    controller_.setSystemUtilityRows(utilities.rows());
    controller_.setPomodoroActions({[] { return true; }, [] { return PomodoroTimerState(); }, [] {}, [] {}, [] {},
                                    [] {}});
    QStringList names;
    for (QAction* a : controller_.menu()->actions()) names << (a->isSeparator() ? QStringLiteral("-") : a->objectName());
    EXPECT_EQ(names, (QStringList{"menuSettingsItem", "-", "launchAtLogin", "-", "pomodoroDashboardMenuItem",
                                  "pomodoroStartItem", "pomodoroPauseItem", "pomodoroStopItem", "-",
                                  "menuCaffeineItem", "menuCaffeineLidAlwaysItem", "-", "menuKeyboardLockItem", "-",
                                  "menuQuitItem"}));
    EXPECT_EQ(controller_.menuItem("menuSettingsItem")->text(), QString::fromUtf8("Настройки…"));
    EXPECT_EQ(controller_.menuItem("launchAtLogin")->text(), QString::fromUtf8("Запускать при входе в систему"));
}

TEST_F(MenuBarShellTest, TheSettingsRowCallsTheOpener) {
    controller_.menuItem("menuSettingsItem")->trigger();
    EXPECT_EQ(settingsOpened_, 1);
}

TEST_F(MenuBarShellTest, LaunchAtLoginInvertsTheSettingAndItsCheckMarkInPlace) {
    QAction* row = controller_.menuItem("launchAtLogin");
    QMenu* menu = controller_.menu();
    row->trigger();
    EXPECT_TRUE(launchAtLogin_);
    EXPECT_TRUE(row->isChecked());
    EXPECT_EQ(controller_.menu(), menu) << "the check mark changes in place, not by a rebuild";
    row->trigger();
    EXPECT_FALSE(launchAtLogin_);
    EXPECT_FALSE(row->isChecked());
    launchAtLogin_ = true;
    controller_.buildMenu();
    EXPECT_TRUE(controller_.menuItem("launchAtLogin")->isChecked());
}

TEST_F(MenuBarShellTest, AMenuBuiltByBuildMenuNeverBeginsWithASeparator) {
    controller_.clearAccessibilityNeeded();
    EXPECT_EQ(controller_.menu()->actions().size(), 5);
    EXPECT_EQ(controller_.menu()->actions().first()->objectName(), QStringLiteral("menuSettingsItem"));
}

TEST_F(MenuBarShellTest, TheBannerStandsAboveTheSettingsRowAndGoesWithItsSeparator) {
    controller_.showAccessibilityNeeded();
    EXPECT_EQ(titles(*controller_.menu()),
              (QStringList{QString::fromUtf8("Enable Permissions…"), "-", QString::fromUtf8("Settings…"), "-",
                           "Launch at login", "-", "Quit Orvantis"}));
    controller_.clearAccessibilityNeeded();
    EXPECT_EQ(controller_.menu()->actions().first()->objectName(), QStringLiteral("menuSettingsItem"));
    EXPECT_EQ(controller_.menu()->actions().size(), 5);
}

TEST_F(MenuBarShellTest, PomodoroRunningAndPermissionLostShowsTheLockNotTheCountdown) {
    controller_.setPomodoroActions({[] { return true; }, [] { return PomodoroTimerState(); }, [] {}, [] {}, [] {},
                                    [] {}});
    controller_.updatePomodoroDisplay(PomodoroTimerState::running(PomodoroPhase::work, 1499));
    controller_.showAccessibilityNeeded();
    EXPECT_EQ(controller_.statusIcon(), MenuBarController::StatusIcon::permissionsRequired);
    EXPECT_NE(controller_.statusItem().toolTip(), QString::fromUtf8("\U0001F345 24:59"));
}

TEST_F(MenuBarShellTest, HelpOpensOnceAndIsRaisedAgain) {
    EXPECT_EQ(controller_.helpWindow(), nullptr);
    controller_.openHelp();
    QWidget* help = controller_.helpWindow();
    ASSERT_NE(help, nullptr);
    EXPECT_TRUE(help->isVisible());
    EXPECT_EQ(help->windowTitle(), QStringLiteral("Orvantis Help"));
    EXPECT_EQ(help->size(), QSize(420, 360));
    help->close();
    controller_.openHelp();
    EXPECT_EQ(controller_.helpWindow(), help);
    EXPECT_TRUE(help->isVisible());
}

TEST_F(MenuBarShellTest, TheMenuHasNoHelpOrUpdatesRow) {
    for (QAction* action : controller_.menu()->actions()) {
        EXPECT_NE(action->text(), QStringLiteral("Help"));
        EXPECT_NE(action->text(), QString::fromUtf8("Check for Updates…"));
    }
}

TEST_F(MenuBarShellTest, CheckForUpdatesTellsInEnglishWithoutBlocking) {
    language_ = SettingsLanguage::ru;
    controller_.checkForUpdates();  // returns: the notice does not run a loop of its own
    ASSERT_NE(controller_.updatesNotice(), nullptr);
    EXPECT_TRUE(controller_.updatesNotice()->isVisible());
    EXPECT_EQ(controller_.updatesNotice()->text(), QStringLiteral("Updater not configured"));
    EXPECT_TRUE(controller_.updatesNotice()->informativeText().contains(QStringLiteral("package manager")));
    EXPECT_EQ(controller_.updatesNotice()->buttons().size(), 1);
    controller_.updatesNotice()->close();
}

}  // namespace
}  // namespace orvantis::ui

namespace orvantis::ui {
namespace {

TEST_F(MenuBarControllerTest, TheLaunchAtLoginCheckMarkShowsTheSettingNotTheClick) {
    // A setting that does not change (its write refused) keeps the mark as it was.
    MenuBarController controller(notifications_, [] { return SettingsLanguage::en; }, [] {});
    controller.setShellActions({[] {}, [] { return false; }, [] {}});
    controller.menuItem("launchAtLogin")->trigger();
    EXPECT_FALSE(controller.menuItem("launchAtLogin")->isChecked());
}

}  // namespace
}  // namespace orvantis::ui
