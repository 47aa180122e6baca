#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>

#include <QWidget>

#include "core/pomodoro/pomodoro_calendar.h"
#include "core/pomodoro/pomodoro_coordinator.h"
#include "core/pomodoro/pomodoro_dashboard_model.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QToolButton;

namespace orvantis::ui {

/// The ring with the time left and the phase; the arc grows as the phase runs.
class PomodoroRingView final : public QWidget {
    Q_OBJECT
public:
    explicit PomodoroRingView(QWidget* parent = nullptr);
    void update(double progress, const QString& timeText, const QString& phaseText, bool active);
    QLabel* timeLabel() const { return timeLabel_; }
    QLabel* phaseLabel() const { return phaseLabel_; }
    double progress() const { return progress_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QLabel* timeLabel_;
    QLabel* phaseLabel_;
    double progress_ = 0;
    bool active_ = false;
};

/// One dot per session of the cycle; the current one ringed, the finished ones faded.
class PomodoroSessionDotsView final : public QWidget {
    Q_OBJECT
public:
    explicit PomodoroSessionDotsView(QWidget* parent = nullptr);
    void setSessions(int current, int total);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int current_ = 1;
    int total_ = 4;
};

/// The last 26 weeks, a column a week from Monday at the top, coloured by the day's sessions;
/// hovering a day shows its date and count in a small panel above the pointer.
class PomodoroHeatmapView final : public QWidget {
    Q_OBJECT
public:
    using TimePoint = std::chrono::system_clock::time_point;
    PomodoroHeatmapView(std::function<SettingsLanguage()> language, QWidget* parent = nullptr);
    ~PomodoroHeatmapView() override;
    /// The counts per start of day, today's start and the calendar they were counted in.
    void setCounts(std::map<TimePoint, int> counts, TimePoint today, PomodoroCalendar calendar);
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    /// The hover tooltip's text for a point in the view, or nullopt where none shows.
    std::optional<QString> tooltipTextAt(QPoint point) const;
    /// The tooltip panel, null until the first hover.
    QWidget* tooltipPanel() const { return tooltipPanel_; }
    void showTooltipAt(QPoint point);
    void hideTooltip();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    std::function<SettingsLanguage()> language_;
    std::map<TimePoint, int> counts_;
    TimePoint today_{};
    std::optional<PomodoroCalendar> calendar_;
    QWidget* tooltipPanel_ = nullptr;  ///< owned (a top-level widget, deleted with the view)
    QLabel* tooltipLabel_ = nullptr;
};

/// The Pomodoro dashboard: the ring, the transport buttons, the session dots, three figures, the
/// Focus switch, the pin that keeps the window on top, and the heat map. Holds no state of its
/// own: every refresh reads the coordinator, the settings and the history, and every button goes
/// back to the coordinator. While it lives it is the coordinator's dashboard. Borrows the
/// coordinator, which must outlive it. Main thread only.
class PomodoroDashboardWindowController final : public QWidget {
    Q_OBJECT
public:
    /// `calendar` answers the calendar in force at each refresh.
    PomodoroDashboardWindowController(PomodoroCoordinator& coordinator, std::function<PomodoroCalendar()> calendar,
                                      std::function<void()> onClosed);
    ~PomodoroDashboardWindowController() override;

    void refresh();
    /// Shows the window at its size, raised and active.
    void bringToFront();

    PomodoroRingView* ring() const { return ring_; }
    QPushButton* primaryButton() const { return primaryButton_; }
    QPushButton* skipButton() const { return skipButton_; }
    QPushButton* resetButton() const { return resetButton_; }
    QLabel* sessionLabel() const { return sessionLabel_; }
    QLabel* todayValueLabel() const { return todayValueLabel_; }
    QLabel* focusedValueLabel() const { return focusedValueLabel_; }
    QLabel* weekValueLabel() const { return weekValueLabel_; }
    QCheckBox* dndCheckbox() const { return dndCheckbox_; }
    QToolButton* pinButton() const { return pinButton_; }
    PomodoroHeatmapView* heatmapView() const { return heatmapView_; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildUI();
    QWidget* statColumn(const QString& title, QLabel*& value);
    void primaryClicked();
    void pinClicked();
    void refreshPinButton();
    void applyPin();

    PomodoroCoordinator& coordinator_;
    std::function<PomodoroCalendar()> calendar_;
    std::function<void()> onClosed_;
    PomodoroRingView* ring_ = nullptr;
    QPushButton* primaryButton_ = nullptr;
    QPushButton* skipButton_ = nullptr;
    QPushButton* resetButton_ = nullptr;
    PomodoroSessionDotsView* sessionDotsView_ = nullptr;
    QLabel* sessionLabel_ = nullptr;
    QLabel* todayValueLabel_ = nullptr;
    QLabel* focusedValueLabel_ = nullptr;
    QLabel* weekValueLabel_ = nullptr;
    QCheckBox* dndCheckbox_ = nullptr;
    QToolButton* pinButton_ = nullptr;
    PomodoroHeatmapView* heatmapView_ = nullptr;
};

}  // namespace orvantis::ui
