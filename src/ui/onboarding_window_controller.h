#pragma once

#include <QWidget>

#include "core/shell/onboarding_model.h"
#include "core/settings/settings_language.h"

class QLabel;
class QPushButton;

namespace orvantis::ui {

/// The first-run window, 520 by 560, centred: a welcome, what Orvantis does, the three things it
/// needs of the desktop with their live state, first steps, and Skip and Get Started at the
/// bottom (Get Started answers Return). All logic is the model's: the window draws its states
/// and reports its buttons and its closing. Texts in `language`, fixed for the window's life.
/// Borrows the model, which outlives it. Main thread only.
class OnboardingWindowController final : public QWidget, public OnboardingWindow {
    Q_OBJECT

public:
    static constexpr int kWidth = 520;
    static constexpr int kHeight = 560;

    OnboardingWindowController(OnboardingModel& model, SettingsLanguage language);
    ~OnboardingWindowController() override;

    void showAndActivate() override;

    /// For tests: the status text of each row (accessibility, keyboard input, notifications).
    QString statusText(int row) const;
    QPushButton* accessibilityButton() const { return accessibilityButton_; }
    QPushButton* inputMonitoringButton() const { return inputMonitoringButton_; }
    QPushButton* getStartedButton() const { return getStarted_; }
    QPushButton* skipButton() const { return skip_; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    struct StatusRow {
        QLabel* icon = nullptr;
        QLabel* text = nullptr;
        QLabel* note = nullptr;
    };
    void updateStatuses();
    void applyStatus(StatusRow& row, PermissionStatus status, QPushButton* button);

    OnboardingModel& model_;
    SettingsLanguage language_;
    StatusRow rows_[3];
    QPushButton* accessibilityButton_ = nullptr;
    QPushButton* inputMonitoringButton_ = nullptr;
    QPushButton* getStarted_ = nullptr;
    QPushButton* skip_ = nullptr;
};

}  // namespace orvantis::ui
