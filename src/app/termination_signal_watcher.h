#pragma once

#include <array>
#include <functional>

#include <QObject>

#include <signal.h>

class QSocketNotifier;

namespace orvantis::app {

/// Turns SIGTERM and SIGINT into a call on the main thread, where the end sequence can run
/// like any other task. The signal handler does nothing but write the signal number into a
/// pipe (async-signal-safe); a QSocketNotifier on the pipe's other end makes the call. Restores
/// the previous handlers when destroyed. At most one instance per process; main thread only.
class TerminationSignalWatcher final : public QObject {
public:
    /// `onSignal` gets the signal number, once per delivered signal.
    explicit TerminationSignalWatcher(std::function<void(int)> onSignal);
    ~TerminationSignalWatcher() override;
    TerminationSignalWatcher(const TerminationSignalWatcher&) = delete;
    TerminationSignalWatcher& operator=(const TerminationSignalWatcher&) = delete;

    /// False when the pipe or the handlers could not be set up; the signals then keep their
    /// default action.
    bool isWatching() const { return notifier_ != nullptr; }

    static constexpr std::array<int, 2> kSignals{SIGTERM, SIGINT};

private:
    void drain();

    std::function<void(int)> onSignal_;
    int readEnd_ = -1;
    int writeEnd_ = -1;
    QSocketNotifier* notifier_ = nullptr;  ///< child of this object
    std::array<struct sigaction, kSignals.size()> previous_{};
};

}  // namespace orvantis::app
