#include "ui/keyboard_lock_overlay.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>

namespace orvantis::ui {
namespace {

QStringList labelTexts(QWidget* window) {
    QStringList out;
    for (QLabel* label : window->findChildren<QLabel*>())
        if (!label->text().isEmpty()) out << label->text();
    return out;
}

TEST(KeyboardLockOverlayTest, ShowFillsTheTextsCoversTheScreenAndShowsTheFullTime) {
    QtKeyboardLockOverlay overlay;
    overlay.show(SettingsStrings::make(SettingsLanguage::en), 10);
    QWidget* window = overlay.window();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(window->windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        EXPECT_EQ(window->geometry(), screen->geometry());
    }
    EXPECT_EQ(labelTexts(window), (QStringList{"Keyboard locked for cleaning", "Wipe away — key presses are ignored.",
                                               "Hold Esc for 3 seconds to unlock", "Auto-unlock in 10:00"}));
    auto* button = window->findChild<QPushButton*>("keyboardLockUnlockButton");
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->text(), QStringLiteral("  Unlock  "));
    overlay.updateCountdown(65);
    EXPECT_EQ(overlay.countdownText(), QStringLiteral("Auto-unlock in 1:05"));
    overlay.updateCountdown(-2);
    EXPECT_EQ(overlay.countdownText(), QStringLiteral("Auto-unlock in 0:00"));
    overlay.dismiss();
    EXPECT_FALSE(window->isVisible());
}

TEST(KeyboardLockOverlayTest, TheButtonUnlocksAndALaterShowTakesTheNewLanguage) {
    QtKeyboardLockOverlay overlay;
    int clicks = 0;
    overlay.setOnUnlockClicked([&] { ++clicks; });
    overlay.show(SettingsStrings::make(SettingsLanguage::en), 1);
    overlay.window()->findChild<QPushButton*>("keyboardLockUnlockButton")->click();
    EXPECT_EQ(clicks, 1);
    overlay.dismiss();
    overlay.show(SettingsStrings::make(SettingsLanguage::ru), 60);
    EXPECT_TRUE(labelTexts(overlay.window()).contains(QStringLiteral("Клавиатура заблокирована")));
    EXPECT_EQ(overlay.countdownText(), QStringLiteral("Авто-разблокировка через 60:00"));
}

}  // namespace
}  // namespace orvantis::ui
