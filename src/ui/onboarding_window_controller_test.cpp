#include "ui/onboarding_window_controller.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <gtest/gtest.h>

#include "platform/sim/permissions.h"
#include "platform/sim/pomodoro_services.h"
#include "testing/utilities_test_support.h"
#include "ui/help_view.h"

namespace orvantis::ui {
namespace {

using namespace std::chrono_literals;
using Kind = sim::Permissions::Kind;

class OnboardingWindowTest : public ::testing::Test, protected utilities_testing::UtilitiesFixture {
protected:
    sim::Permissions permissions;
    sim::UserNotifications notifications{desktop.loop()};
    int closed = 0;
    OnboardingModel model{settings, &permissions, &notifications, desktop.loop(), [this] { ++closed; }};
};

TEST_F(OnboardingWindowTest, ShowsEachStateLiveAndDisablesTheButtonOfAGrantedRight) {
    permissions.set(Kind::inputMonitoring, true);
    model.updatePermissionStatuses();
    OnboardingWindowController window(model, SettingsLanguage::en);
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Getting Started"));
    EXPECT_EQ(window.size(), QSize(520, 560));
    EXPECT_EQ(window.statusText(0), QStringLiteral("Not granted"));
    EXPECT_TRUE(window.accessibilityButton()->isEnabled());
    EXPECT_EQ(window.statusText(1), QStringLiteral("Granted"));
    EXPECT_FALSE(window.inputMonitoringButton()->isEnabled());
    EXPECT_EQ(window.statusText(2), QString::fromUtf8("Checking…"));
    settle();
    EXPECT_EQ(window.statusText(2), QStringLiteral("Notification service found"));
    permissions.set(Kind::accessibility, true);
    desktop.loop().runFor(1s);
    EXPECT_EQ(window.statusText(0), QStringLiteral("Granted"));
    EXPECT_FALSE(window.accessibilityButton()->isEnabled());
}

TEST_F(OnboardingWindowTest, RussianTexts) {
    OnboardingWindowController window(model, SettingsLanguage::ru);
    EXPECT_EQ(window.windowTitle(), QString::fromUtf8("Начало работы"));
    EXPECT_EQ(window.statusText(0), QString::fromUtf8("Не разрешено"));
}

TEST_F(OnboardingWindowTest, GetStartedIsTheDefaultButtonAndClosesAsSeen) {
    OnboardingWindowController window(model, SettingsLanguage::en);
    window.showAndActivate();
    EXPECT_TRUE(window.getStartedButton()->isDefault());
    window.getStartedButton()->click();
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(settings.hasCompletedOnboarding());
    EXPECT_EQ(closed, 1);
}

TEST_F(OnboardingWindowTest, TheCloseBoxCountsAsSeenWithNothingGranted) {
    OnboardingWindowController window(model, SettingsLanguage::en);
    window.showAndActivate();
    window.close();
    EXPECT_TRUE(settings.hasCompletedOnboarding());
    EXPECT_EQ(closed, 1);
    EXPECT_FALSE(model.isPolling());
}

TEST_F(OnboardingWindowTest, TheAccessibilityButtonAsksAndOpensThePage) {
    OnboardingWindowController window(model, SettingsLanguage::en);
    window.accessibilityButton()->click();
    EXPECT_EQ(permissions.requestCount(Kind::accessibility), 1u);
    EXPECT_EQ(permissions.openedPanes(), std::vector<Kind>{Kind::accessibility});
}

TEST_F(OnboardingWindowTest, WithoutAKeyboardPageTheKeyboardRowHasNoButtonButItsStatus) {
    permissions.setHasInputMonitoringSettings(false);
    OnboardingWindowController window(model, SettingsLanguage::en);
    window.showAndActivate();
    EXPECT_FALSE(window.inputMonitoringButton()->isVisible());
    EXPECT_EQ(window.statusText(1), QStringLiteral("Not granted"));
    EXPECT_TRUE(window.accessibilityButton()->isVisible());
}

TEST_F(OnboardingWindowTest, WithAKeyboardPageItsButtonAsksAndOpensIt) {
    OnboardingWindowController window(model, SettingsLanguage::en);
    window.showAndActivate();
    ASSERT_TRUE(window.inputMonitoringButton()->isVisible());
    window.inputMonitoringButton()->click();
    EXPECT_EQ(permissions.requestCount(Kind::inputMonitoring), 1u);
    EXPECT_EQ(permissions.openedPanes(), std::vector<Kind>{Kind::inputMonitoring});
}

TEST_F(OnboardingWindowTest, TheLongRussianButtonStaysInsideItsCardWithALargerFont) {
    const QFont original = QApplication::font();
    QFont larger = original;
    larger.setPointSizeF(original.pointSizeF() * 1.25);
    QApplication::setFont(larger);
    {
        OnboardingWindowController window(model, SettingsLanguage::ru);
        window.showAndActivate();
        QApplication::processEvents();
        QPushButton* button = window.accessibilityButton();
        const QWidget* viewport = window.findChild<QScrollArea*>()->viewport();
        const int buttonRight = button->mapTo(&window, QPoint(button->width(), 0)).x();
        const int viewportRight = viewport->mapTo(&window, QPoint(viewport->width(), 0)).x();
        EXPECT_LE(buttonRight, viewportRight);
        EXPECT_GE(button->width(), button->sizeHint().width());  // whole, not squeezed
    }
    QApplication::setFont(original);
}

TEST(HelpViewTest, ThePickerSwitchesTheViewsLanguageOnly) {
    HelpView view(SettingsLanguage::en);
    EXPECT_EQ(view.sectionTitles(),
              (QStringList{"Translator", "Layout Switcher", "Clipboard History", "Pomodoro Timer"}));
    view.findChild<QPushButton*>(QStringLiteral("helpLanguageRu"))->click();
    EXPECT_EQ(view.language(), SettingsLanguage::ru);
    EXPECT_EQ(view.sectionTitles().size(), 4);
    EXPECT_NE(view.sectionTitles().first(), QStringLiteral("Translator"));
}

}  // namespace
}  // namespace orvantis::ui

#include "ui/hotkey_overlay_panel.h"

namespace orvantis::ui {
namespace {

TEST(HotkeyOverlayPanelTest, NeverNarrowerThan420AndEveryRowWithItsBadge) {
    HotkeyOverlayPanel panel;
    panel.show("T", {{std::nullopt, {{"input-keyboard", "A", "Shift+Backspace", true}}},
                     {std::string("Bonus"), {{"view-hidden", "B", "Super+Shift+B", false}}}});
    EXPECT_TRUE(panel.isVisible());
    EXPECT_GE(panel.width(), 420);
    const auto rows = panel.findChildren<QWidget*>(QStringLiteral("hotkeyOverlayRow"));
    ASSERT_EQ(rows.size(), 2);
    EXPECT_FALSE(rows[1]->property("enabledFeature").toBool());
    EXPECT_EQ(rows[1]->findChild<QLabel*>(QStringLiteral("hotkeyOverlayBadge"))->text(), QStringLiteral("Super+Shift+B"));
    EXPECT_TRUE(panel.testAttribute(Qt::WA_ShowWithoutActivating));
    panel.hide();
    EXPECT_FALSE(panel.isVisible());
    // Shown again: only the new content remains.
    panel.show("T", {{std::nullopt, {{"input-keyboard", "A", "Shift+Backspace", true}}}});
    EXPECT_EQ(panel.findChildren<QWidget*>(QStringLiteral("hotkeyOverlayRow")).size(), 1);
}

}  // namespace
}  // namespace orvantis::ui
