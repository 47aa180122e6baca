#pragma once

#include <memory>
#include <string>

#include <QObject>
#include <QPoint>

#include "core/passwords/password_popup.h"
#include "core/passwords/password_popup_model.h"
#include "core/strings/settings_strings.h"
#include "platform/main_loop.h"
#include "ui/keyboard_grab.h"

class QAbstractButton;
class QCheckBox;
class QKeyEvent;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QToolButton;
class QWidget;

namespace orvantis::ui {

class PasswordPopupPanel;

/// The password popup: a panel of 380 by 230 slightly above the centre of the screen with the
/// new password (masked, with reveal and regenerate buttons), the length slider from 4 to 64,
/// the four character classes, and Copy and Paste here. Every change makes a new password and
/// writes the settings (PasswordPopupModel). Keys: Ctrl+C copies, Return pastes, Space makes a
/// new password, Esc closes. Like the other popups it takes the keyboard (and the pointer)
/// without taking the focus from the application that will receive the paste; it closes when
/// another application becomes active or on a click outside. It never writes to the clipboard
/// or sends keys itself: Copy and Paste go to the callbacks, then it closes. One controller is
/// one popup with one password; the coordinator drops it when it has closed. Main thread only.
class PasswordPopupController final : public QObject, public PasswordPopup {
    Q_OBJECT

public:
    static constexpr int kWidth = 380;
    static constexpr int kHeight = 230;
    /// How far the panel stands above the centre of the screen.
    static constexpr int kRaise = 80;

    /// `grab` takes the keyboard while shown (KeyboardGrab::forPlatform() in the application);
    /// `watchActivation` defaults to watchActiveWindowChanges(). The generator, the settings and
    /// the loop are borrowed and must outlive the popup.
    PasswordPopupController(const PasswordConfig& initial, PasswordGenerator& generator, AppSettings& settings,
                            Callbacks callbacks, platform::MainLoop& loop, std::unique_ptr<KeyboardGrab> grab,
                            OutsideWatch::ActivationWatch watchActivation = {});
    ~PasswordPopupController() override;
    PasswordPopupController(const PasswordPopupController&) = delete;
    PasswordPopupController& operator=(const PasswordPopupController&) = delete;

    // PasswordPopup
    void show() override;
    bool isVisible() const override { return visible_; }
    void bringToFront() override;

    /// Copy and Paste: the callback with the password, after the popup has closed.
    void copy();
    void paste();
    /// Closes: the keyboard and the outside watch are let go, onDismiss runs, the panel hides.
    /// Does nothing while hidden.
    void close();

    const PasswordPopupModel& model() const { return model_; }
    bool holdsKeyboard() const { return keyboard_.isHeld(); }

    /// A key that reached the popup. Answers whether the popup took it.
    bool handleKeyPress(const QKeyEvent& event);
    /// A press at `globalPosition` that reached the panel: one outside closes the popup on the
    /// next turn, once the outside is watched.
    void handlePanelPress(QPoint globalPosition);

    // The parts, for tests and screenshots.
    QWidget& panel();
    QLineEdit& passwordField();
    QToolButton& revealButton();
    QToolButton& regenerateButton();
    QSlider& lengthSlider();
    QLabel& lengthLabel();
    QCheckBox& checkbox(PasswordClass which);
    QPushButton& copyButton();
    QPushButton& pasteButton();
    QLabel& titleLabel();

protected:
    /// While shown, every key press meant for any of our windows comes here first.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void updateControls();
    void place();

    PasswordPopupModel model_;
    Callbacks callbacks_;
    platform::MainLoop& loop_;
    std::unique_ptr<KeyboardGrab> grab_;
    SettingsStrings strings_;
    std::unique_ptr<PasswordPopupPanel> panel_;
    HeldKeyboard keyboard_;
    OutsideWatch outside_;
    ApplicationEventFilter keyFilter_{*this};
    bool visible_ = false;
    bool updating_ = false;  ///< the controls are being set from the model
};

}  // namespace orvantis::ui
