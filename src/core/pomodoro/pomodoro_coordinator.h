#pragma once

#include <functional>
#include <memory>

#include "core/events/global_event_monitor_protocol.h"
#include "core/pomodoro/dnd_manager.h"
#include "core/pomodoro/pomodoro_history.h"
#include "core/pomodoro/pomodoro_timer.h"
#include "core/settings/app_settings.h"
#include "platform/focus_commands.h"
#include "platform/main_loop.h"
#include "platform/subscription.h"
#include "platform/system_sleep.h"
#include "platform/user_notifications.h"

namespace orvantis {

struct AppLog;

/// The Pomodoro feature's brain: owns the timer and the Focus switch, numbers the work
/// sessions of a cycle of four (the fourth work phase is followed by the long break), logs each
/// finished work phase to the history, switches Focus at the phase ends, announces them with a
/// banner or the bell, and pauses across system sleep. Borrows every collaborator, which must
/// outlive it. Main thread only.
class PomodoroCoordinator {
public:
    static constexpr int kSessionsPerCycle = 4;

    struct Services {
        platform::UserNotifications& notifications;
        platform::SystemSleepEvents& sleep;
        platform::FocusCommands& focus;
    };

    /// `monitor` may be null (no keyboard): then there is no hotkey.
    PomodoroCoordinator(AppSettings& settings, PomodoroHistory& history, GlobalEventMonitorProtocol* monitor,
                        platform::MainLoop& loop, Services services, const AppLog& log);
    ~PomodoroCoordinator();
    PomodoroCoordinator(const PomodoroCoordinator&) = delete;
    PomodoroCoordinator& operator=(const PomodoroCoordinator&) = delete;

    /// Nothing when the Pomodoro is off in the settings. Otherwise asks for the banners'
    /// permission, switches Focus on when the settings say so (or calls the missing-commands
    /// alert and goes on without), and starts a first work phase as session 1.
    void startSession();
    /// Idle, and Focus off if this session switched it on. Also the end sequence's step.
    void stopSession();
    void pauseSession() { timer_.pause(); }
    void resumeSession() { timer_.resume(); }
    /// Running pauses, paused resumes, idle does nothing; the dashboard is told in each case.
    void togglePauseResume();
    void skipPhase() { timer_.skip(); }
    void resetPhase() { timer_.reset(); }

    const PomodoroTimerState& currentState() const { return timer_.state(); }
    int currentSessionInCycle() const { return currentSessionInCycle_; }
    bool pausedBySleep() const { return pausedBySleep_; }
    DNDManager& dnd() { return dnd_; }
    PomodoroHistory& history() { return history_; }
    AppSettings& settings() { return settings_; }

    /// Called with the state after every change and tick (the menu and the icon), before the
    /// dashboard is told.
    [[nodiscard]] Subscription onStateChanged(std::function<void(const PomodoroTimerState&)> callback) {
        return stateChanged_.add(std::move(callback));
    }
    /// The open dashboard's refresh; empty while none is open.
    std::function<void()> onDashboardStateChange;
    /// Shown when Focus should be switched but the commands are missing; the session starts in
    /// any case. Unset: the fact is only logged.
    std::function<void()> showFocusShortcutsMissingAlert;

    /// The system's sleep and wake (also reached through the platform's events).
    void handleWillSleep();
    void handleDidWake();

private:
    std::pair<PomodoroPhase, int> nextPhaseAfter(PomodoroPhase ended) const;
    void handlePhaseTransition(PomodoroPhase phase);
    void handleHotkey();
    void postNotification(std::string title, std::string body);
    void dashboardChanged() {
        if (onDashboardStateChange) onDashboardStateChange();
    }

    AppSettings& settings_;
    PomodoroHistory& history_;
    platform::UserNotifications& notifications_;
    const AppLog& log_;
    PomodoroTimer timer_;
    DNDManager dnd_;
    bool pausedBySleep_ = false;
    int currentSessionInCycle_ = 1;
    CallbackList<const PomodoroTimerState&> stateChanged_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    Subscription hotkey_;
    Subscription willSleep_;
    Subscription didWake_;
};

}  // namespace orvantis
