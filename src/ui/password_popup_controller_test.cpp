#include "ui/password_popup_controller.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QSlider>
#include <QToolButton>
#include <QWidget>

#include "core/passwords/password_generator.h"
#include "core/passwords/test_random_sources.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "platform/sim/virtual_main_loop.h"
#include "testing/test_support.h"

namespace orvantis::ui {
namespace {

class CountingGrab final : public KeyboardGrab {
public:
    bool tryGrab(QWindow&) override {
        ++attempts;
        held = true;
        return true;
    }
    void release() override { held = false; }
    bool holdsPointer() const override { return held; }
    int attempts = 0;
    bool held = false;
};

/// Saves a picture of `widget` as NAME.png in $ORVANTIS_POPUP_SCREENSHOTS, when that is set.
void screenshot(QWidget& widget, const char* name) {
    const QByteArray dir = qgetenv("ORVANTIS_POPUP_SCREENSHOTS");
    if (dir.isEmpty()) return;
    QDir().mkpath(QString::fromUtf8(dir));
    widget.grab().save(QString::fromUtf8(dir) + QStringLiteral("/") + QString::fromLatin1(name) +
                       QStringLiteral(".png"));
}

class PasswordPopupControllerTest : public ::testing::Test {
protected:
    std::unique_ptr<PasswordPopupController> make(std::optional<PasswordConfig> initial = std::nullopt) {
        auto grab = std::make_unique<CountingGrab>();
        grab_ = grab.get();
        PasswordPopup::Callbacks callbacks;
        callbacks.onCopy = [this](const std::string& password) { events_.push_back("copy " + password); };
        callbacks.onPaste = [this](const std::string& password) { events_.push_back("paste " + password); };
        callbacks.onDismiss = [this] { events_.push_back("dismiss"); };
        return std::make_unique<PasswordPopupController>(
            initial.value_or(PasswordConfig::fromSettings(settings_)), generator_, settings_, std::move(callbacks),
            loop_, std::move(grab), [this](std::function<void()> changed) {
                activation_ = std::move(changed);
                return Subscription([this] { activation_ = nullptr; });
            });
    }
    void press(PasswordPopupController& popup, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
               const QString& text = {}) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        QApplication::sendEvent(&popup.passwordField(), &event);
    }
    std::string shown(PasswordPopupController& popup) { return popup.passwordField().text().toStdString(); }

    testing::TemporaryDirectory dir_;
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> queue_ = loop_.makeSerialQueue("prefs");
    PreferenceStore store_{dir_.path() / "preferences.plist", *queue_, nullptr};
    AppSettings settings_{store_};
    orvantis::testing::SeededRandomSource random_{17};
    PasswordGenerator generator_{random_};
    CountingGrab* grab_ = nullptr;
    std::function<void()> activation_;
    std::vector<std::string> events_;
};

TEST_F(PasswordPopupControllerTest, A380By230PanelAboveTheCentreOfTheScreen) {
    auto popup = make();
    popup->show();
    EXPECT_TRUE(popup->panel().isVisible());
    EXPECT_EQ(popup->panel().size(), QSize(380, 230));
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_EQ(popup->panel().pos(), QPoint(area.x() + area.width() / 2 - 190, area.y() + area.height() / 2 - 115 - 80));
    EXPECT_TRUE(popup->holdsKeyboard());
    // Never activated: the application that had the focus keeps it.
    EXPECT_TRUE(popup->panel().testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_TRUE(popup->panel().windowFlags() & Qt::WindowDoesNotAcceptFocus);
}

TEST_F(PasswordPopupControllerTest, TextsFollowTheInterfaceLanguage) {
    auto english = make();
    english->show();
    EXPECT_EQ(english->titleLabel().text(), QStringLiteral("Generate password"));
    EXPECT_EQ(english->copyButton().text(), QStringLiteral("Copy"));
    EXPECT_EQ(english->pasteButton().text(), QStringLiteral("Paste here"));
    EXPECT_EQ(english->checkbox(PasswordClass::digits).text(), QStringLiteral("Digits (0–9)"));
    EXPECT_TRUE(english->pasteButton().isDefault());
    screenshot(english->panel(), "password-popup-en");
    english->revealButton().click();
    screenshot(english->panel(), "password-popup-en-revealed");
    english->close();

    settings_.setSettingsLanguage(SettingsLanguage::ru);
    auto russian = make();
    russian->show();
    EXPECT_EQ(russian->titleLabel().text(), QStringLiteral("Сгенерировать пароль"));
    EXPECT_EQ(russian->copyButton().text(), QStringLiteral("Копировать"));
    EXPECT_EQ(russian->pasteButton().text(), QStringLiteral("Вставить сюда"));
    screenshot(russian->panel(), "password-popup-ru");
}

TEST_F(PasswordPopupControllerTest, MaskedUntilRevealedAndAGeneratedPasswordKeepsTheState) {
    auto popup = make();
    popup->show();
    const std::string password = popup->model().password();
    EXPECT_EQ(popup->passwordField().text(), QString(static_cast<qsizetype>(password.size()), QChar(0x2022)));
    EXPECT_EQ(popup->revealButton().toolTip(), QStringLiteral("Reveal"));
    popup->revealButton().click();
    EXPECT_EQ(shown(*popup), password);
    EXPECT_EQ(popup->revealButton().toolTip(), QStringLiteral("Hide"));
    popup->regenerateButton().click();
    EXPECT_NE(shown(*popup), password);
    EXPECT_EQ(shown(*popup), popup->model().password());
    press(*popup, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "));
    EXPECT_EQ(shown(*popup), popup->model().password());
    popup->revealButton().click();
    EXPECT_EQ(shown(*popup).find(popup->model().password()), std::string::npos);
}

TEST_F(PasswordPopupControllerTest, EachSliderStepRegeneratesAndShowsTheLength) {
    auto popup = make();
    popup->show();
    EXPECT_EQ(popup->lengthSlider().minimum(), 4);
    EXPECT_EQ(popup->lengthSlider().maximum(), 64);
    std::string previous = popup->model().password();
    for (int value : {17, 18, 19, 40}) {
        popup->lengthSlider().setValue(value);
        EXPECT_EQ(popup->model().password().size(), static_cast<std::size_t>(value));
        EXPECT_NE(popup->model().password(), previous);
        EXPECT_EQ(popup->lengthLabel().text(), QString::number(value));
        EXPECT_EQ(popup->passwordField().text().size(), value);
        EXPECT_EQ(settings_.passwordLength(), value);
        previous = popup->model().password();
    }
}

TEST_F(PasswordPopupControllerTest, AStoredLengthOf100OpensAt64) {
    settings_.setPasswordLength(100);
    auto popup = make();
    EXPECT_EQ(popup->lengthSlider().value(), 64);
    EXPECT_EQ(popup->model().password().size(), 64u);
    EXPECT_EQ(settings_.passwordLength(), 64);
}

TEST_F(PasswordPopupControllerTest, UntickingTheLastClassTicksLowerCase) {
    auto popup = make(PasswordConfig{16, false, false, false, true});
    popup->show();
    popup->checkbox(PasswordClass::symbols).click();
    EXPECT_FALSE(popup->checkbox(PasswordClass::symbols).isChecked());
    EXPECT_TRUE(popup->checkbox(PasswordClass::lowercase).isChecked());
    EXPECT_TRUE(settings_.passwordIncludeLowercase());
    EXPECT_FALSE(settings_.passwordIncludeSymbols());
    for (char c : popup->model().password()) EXPECT_TRUE(c >= 'a' && c <= 'z');
}

TEST_F(PasswordPopupControllerTest, ReturnPastesAndCtrlCCopiesMaskedOrNot) {
    for (bool revealed : {false, true}) {
        for (int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_C}) {
            events_.clear();
            auto popup = make();
            popup->show();
            if (revealed) popup->revealButton().click();
            const std::string password = popup->model().password();
            if (key == Qt::Key_C)
                press(*popup, key, Qt::ControlModifier);
            else
                press(*popup, key);
            const std::string verb = key == Qt::Key_C ? "copy " : "paste ";
            EXPECT_EQ(events_, (std::vector<std::string>{"dismiss", verb + password})) << key << revealed;
            EXPECT_FALSE(popup->isVisible());
            EXPECT_FALSE(popup->holdsKeyboard());
        }
    }
}

TEST_F(PasswordPopupControllerTest, TheButtonsCopyAndPaste) {
    auto popup = make();
    popup->show();
    const std::string password = popup->model().password();
    popup->copyButton().click();
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss", "copy " + password}));
    events_.clear();
    auto second = make();
    second->show();
    second->pasteButton().click();
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss", "paste " + second->model().password()}));
}

TEST_F(PasswordPopupControllerTest, EscClosesWithoutACopyAndOtherKeysPassOn) {
    auto popup = make();
    popup->show();
    press(*popup, Qt::Key_C, Qt::NoModifier, QStringLiteral("c"));
    press(*popup, Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
    EXPECT_TRUE(popup->isVisible());
    press(*popup, Qt::Key_Escape);
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss"}));
    EXPECT_FALSE(popup->panel().isVisible());
}

TEST_F(PasswordPopupControllerTest, AnotherApplicationsActivationClosesWithoutACopy) {
    auto popup = make();
    popup->show();
    EXPECT_FALSE(activation_);  // not at once: the event that opened it must not close it
    loop_.runUntilIdle();
    ASSERT_TRUE(activation_);
    activation_();
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss"}));
    EXPECT_FALSE(activation_);
}

TEST_F(PasswordPopupControllerTest, AClickOutsideClosesAndOneInsideDoesNot) {
    auto popup = make();
    popup->show();
    loop_.runUntilIdle();
    popup->handlePanelPress(popup->panel().geometry().center());
    loop_.runUntilIdle();
    EXPECT_TRUE(popup->isVisible());
    popup->handlePanelPress(popup->panel().geometry().bottomRight() + QPoint(40, 40));
    loop_.runUntilIdle();
    EXPECT_EQ(events_, (std::vector<std::string>{"dismiss"}));
}

TEST_F(PasswordPopupControllerTest, BringingToFrontKeepsThePassword) {
    auto popup = make();
    popup->show();
    const std::string password = popup->model().password();
    popup->bringToFront();
    EXPECT_TRUE(popup->isVisible());
    EXPECT_EQ(popup->model().password(), password);
}

}  // namespace
}  // namespace orvantis::ui
