#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/main_loop.h"

namespace orvantis::sim {

/// A main loop and clock whose time moves only when a test says so. Tasks posted from any
/// thread, timers and the tasks of its serial queues all run on the thread that calls
/// runUntilIdle() or runFor(), in a deterministic order: posted tasks first, then queued
/// work, then watched descriptors that are readable, then timers in the order of their due
/// time. Watched descriptors are real ones (a pipe, an inotify instance): each turn asks the
/// kernel, without waiting, which of them have something to read.
class VirtualMainLoop final : public platform::MainLoop, public platform::Clock {
public:
    /// Wall time starts at `wallStart` (by default 2026-11-15 12:00:00 UTC).
    explicit VirtualMainLoop(std::chrono::system_clock::time_point wallStart = defaultWallStart());
    ~VirtualMainLoop() override;

    // MainLoop
    void post(platform::Task task) override;
    [[nodiscard]] platform::TimerHandle postAfter(platform::Duration delay, platform::Task task) override;
    [[nodiscard]] platform::TimerHandle every(platform::Duration interval, platform::Task task) override;
    [[nodiscard]] Subscription watchReadable(int fd, platform::Task onReadable) override;
    std::unique_ptr<platform::SerialQueue> makeSerialQueue(std::string label) override;

    // Clock
    std::chrono::steady_clock::time_point monotonicNow() const override;
    std::chrono::system_clock::time_point wallNow() const override;

    /// Runs everything that is due now, including what those tasks post, without moving time.
    /// Answers the number of tasks run.
    std::size_t runUntilIdle();
    /// Moves time forward by `duration`, running each timer at its own due time.
    void runFor(platform::Duration duration);
    /// Sets the wall clock without moving monotonic time (a clock change, a time zone trip).
    void setWallTime(std::chrono::system_clock::time_point wall);
    /// Number of timers still to fire.
    std::size_t pendingTimers() const;
    /// Number of descriptors being watched.
    std::size_t watchedDescriptors() const;

    static std::chrono::system_clock::time_point defaultWallStart();

private:
    struct Timer {
        std::shared_ptr<platform::TimerState> state;
        platform::Task task;
        platform::Duration interval{};  ///< zero for one-shot timers
    };
    struct QueueState {
        std::mutex mutex;
        std::deque<platform::Task> tasks;
    };
    struct Watch {
        int fd;
        std::shared_ptr<platform::Task> onReadable;
    };
    class Queue;

    platform::TimerHandle addTimer(platform::Duration delay, platform::Duration interval, platform::Task task);
    bool runOnePosted();
    bool runOneQueued();
    bool runOneReadable();
    bool runOneDueTimer();

    platform::Duration elapsed_{};
    std::chrono::system_clock::duration wallOffset_{};
    std::chrono::system_clock::time_point wallStart_;
    mutable std::mutex postedMutex_;
    std::deque<platform::Task> posted_;
    std::multimap<std::pair<platform::Duration, std::uint64_t>, Timer> timers_;
    std::uint64_t nextTimerSeq_ = 0;
    std::vector<std::weak_ptr<QueueState>> queues_;
    std::map<std::uint64_t, Watch> watches_;
    std::uint64_t nextWatchId_ = 0;
    std::size_t readableInARow_ = 0;  ///< guards against a callback that never reads
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace orvantis::sim
