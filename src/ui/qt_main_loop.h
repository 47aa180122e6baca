#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/main_loop.h"

class QObject;

namespace orvantis::ui {

/// The application's main loop over Qt's event loop. Tasks run on the thread that created the
/// loop, which must be the thread of the QCoreApplication; timers are QTimers owned by the
/// loop and freed as soon as their handle is cancelled or a one-shot timer has fired.
/// Created and destroyed on the main thread; post() is callable from any thread while the
/// loop exists.
class QtMainLoop final : public platform::MainLoop {
public:
    QtMainLoop();
    ~QtMainLoop() override;
    QtMainLoop(const QtMainLoop&) = delete;
    QtMainLoop& operator=(const QtMainLoop&) = delete;

    /// Queued as an event of the loop's thread; tasks posted from one thread run in order.
    void post(platform::Task task) override;
    /// A delay below one millisecond is rounded up to one; a negative one counts as zero.
    [[nodiscard]] platform::TimerHandle postAfter(platform::Duration delay, platform::Task task) override;
    /// The interval is rounded up to whole milliseconds, at least one.
    [[nodiscard]] platform::TimerHandle every(platform::Duration interval, platform::Task task) override;
    /// A QSocketNotifier owned by the loop, freed as soon as the Subscription ends.
    [[nodiscard]] Subscription watchReadable(int fd, platform::Task onReadable) override;
    /// A ThreadSerialQueue: one thread of its own, joined when the queue is destroyed.
    std::unique_ptr<platform::SerialQueue> makeSerialQueue(std::string label) override;

    /// Number of native timers still alive, for diagnostics: a cancelled or fired timer is
    /// freed at the next turn of the event loop.
    std::size_t timerCount() const;
    /// Number of descriptor watches still alive, for diagnostics; freed like timers.
    std::size_t watchCount() const;

private:
    platform::TimerHandle startTimer(platform::Duration interval, bool repeating, platform::Task task);

    std::unique_ptr<QObject> context_;  ///< receives posted tasks and parents every timer
};

}  // namespace orvantis::ui
