#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/serial_queue.h"
#include "platform/subscription.h"

namespace orvantis::platform {

using Task = std::function<void()>;
using Duration = std::chrono::nanoseconds;

/// Shared between a main loop and the handle of one of its timers. Main thread only.
struct TimerState {
    bool cancelled = false;
    bool finished = false;             ///< a one-shot timer that has fired
    std::function<void()> onCancel;    ///< lets a backend free its native timer at once
};

/// The handle of a delayed or repeating task. Destroying the handle cancels the task, so an
/// object that keeps its timers as members can never be called back after its destruction.
/// Main thread only.
class TimerHandle {
public:
    TimerHandle() = default;
    explicit TimerHandle(std::shared_ptr<TimerState> state) : state_(std::move(state)) {}
    TimerHandle(const TimerHandle&) = delete;
    TimerHandle& operator=(const TimerHandle&) = delete;
    TimerHandle(TimerHandle&&) noexcept = default;
    TimerHandle& operator=(TimerHandle&& other) noexcept {
        if (this != &other) {
            cancel();
            state_ = std::move(other.state_);
        }
        return *this;
    }
    ~TimerHandle() { cancel(); }

    /// Stops the task from running (again). Safe to call more than once, and from the task.
    void cancel() {
        if (!state_) return;
        auto state = std::move(state_);
        if (!state->cancelled && !state->finished) {
            state->cancelled = true;
            if (state->onCancel) state->onCancel();
        }
    }
    /// True while the task is still going to run.
    bool isActive() const { return state_ && !state_->cancelled && !state_->finished; }

private:
    std::shared_ptr<TimerState> state_;
};

/// The application's main loop: all behaviour runs on its thread, one task at a time.
/// The app runs it over Qt's event loop; tests run a virtual one whose time only moves by hand.
class MainLoop {
public:
    virtual ~MainLoop() = default;
    /// Runs `task` on the main thread after the tasks already posted. Any thread.
    virtual void post(Task task) = 0;
    /// Runs `task` once, `delay` from now. Main thread only.
    [[nodiscard]] virtual TimerHandle postAfter(Duration delay, Task task) = 0;
    /// Runs `task` every `interval`, first one interval from now, until cancelled.
    /// Main thread only.
    [[nodiscard]] virtual TimerHandle every(Duration interval, Task task) = 0;
    /// Runs `onReadable` on the main thread whenever `fd` has something to read, until the
    /// Subscription ends; `onReadable` must read what is there, or it is called again at once.
    /// The descriptor stays the caller's and must stay open while watched. Answers an empty
    /// Subscription when this loop cannot watch descriptors: the caller then has to poll.
    /// Main thread only.
    [[nodiscard]] virtual Subscription watchReadable(int fd, Task onReadable) = 0;
    /// A serial queue whose tasks run off the main thread (in the virtual loop: in its own
    /// turns, so tests stay deterministic).
    virtual std::unique_ptr<SerialQueue> makeSerialQueue(std::string label) = 0;
};

}  // namespace orvantis::platform
