#pragma once

#include <functional>
#include <memory>
#include <string>

#include "core/utilities/keyboard_lock_coordinator.h"

#include <QString>

class QLabel;
class QPushButton;
class QWidget;

namespace orvantis::ui {

/// The keyboard lock's overlay: a frameless, translucent window over the whole screen under
/// the pointer, above every other window (it bypasses the window manager and never takes the
/// focus), with the keyboard picture, the title, the subtitle, the Escape hint, the countdown
/// and the Unlock button. Made once and kept between locks; main thread only.
class QtKeyboardLockOverlay final : public KeyboardLockOverlay {
public:
    QtKeyboardLockOverlay();
    ~QtKeyboardLockOverlay() override;
    QtKeyboardLockOverlay(const QtKeyboardLockOverlay&) = delete;
    QtKeyboardLockOverlay& operator=(const QtKeyboardLockOverlay&) = delete;

    void setOnUnlockClicked(std::function<void()> callback) override { onUnlockClicked_ = std::move(callback); }
    void show(const SettingsStrings& strings, int autoUnlockMinutes) override;
    void updateCountdown(int secondsRemaining) override;
    void dismiss() override;

    /// For tests.
    QWidget* window() const { return window_.get(); }
    QString countdownText() const;
    void clickUnlock();

private:
    std::function<void()> onUnlockClicked_;
    std::unique_ptr<QWidget> window_;
    QLabel* iconView_ = nullptr;
    QLabel* titleLabel_ = nullptr;
    QLabel* subtitleLabel_ = nullptr;
    QLabel* escHintLabel_ = nullptr;
    QLabel* countdownLabel_ = nullptr;
    QPushButton* unlockButton_ = nullptr;
    std::string countdownTemplate_;
};

}  // namespace orvantis::ui
