#include "platform/sim/virtual_main_loop.h"

#include <algorithm>
#include <ctime>
#include <stdexcept>
#include <string>

#include <poll.h>

namespace orvantis::sim {

class VirtualMainLoop::Queue final : public platform::SerialQueue {
public:
    Queue(std::string label, std::shared_ptr<QueueState> state)
        : label_(std::move(label)), state_(std::move(state)) {}

    void async(std::function<void()> task) override {
        std::lock_guard lock(state_->mutex);
        state_->tasks.push_back(std::move(task));
    }
    // Runs what is queued first, then the task, on the calling thread: the order of a real
    // serial queue, without a thread.
    void sync(std::function<void()> task) override {
        for (;;) {
            platform::Task next;
            {
                std::lock_guard lock(state_->mutex);
                if (state_->tasks.empty()) break;
                next = std::move(state_->tasks.front());
                state_->tasks.pop_front();
            }
            next();
        }
        task();
    }
    const std::string& label() const override { return label_; }

private:
    std::string label_;
    std::shared_ptr<QueueState> state_;
};

VirtualMainLoop::VirtualMainLoop(std::chrono::system_clock::time_point wallStart) : wallStart_(wallStart) {}

VirtualMainLoop::~VirtualMainLoop() { *alive_ = false; }

std::chrono::system_clock::time_point VirtualMainLoop::defaultWallStart() {
    std::tm tm{};
    tm.tm_year = 2026 - 1900;
    tm.tm_mon = 10;
    tm.tm_mday = 15;
    tm.tm_hour = 12;
    return std::chrono::system_clock::from_time_t(timegm(&tm));
}

void VirtualMainLoop::post(platform::Task task) {
    std::lock_guard lock(postedMutex_);
    posted_.push_back(std::move(task));
}

platform::TimerHandle VirtualMainLoop::postAfter(platform::Duration delay, platform::Task task) {
    return addTimer(delay, platform::Duration::zero(), std::move(task));
}

platform::TimerHandle VirtualMainLoop::every(platform::Duration interval, platform::Task task) {
    return addTimer(interval, std::max(interval, platform::Duration(1)), std::move(task));
}

platform::TimerHandle VirtualMainLoop::addTimer(platform::Duration delay, platform::Duration interval,
                                                platform::Task task) {
    auto state = std::make_shared<platform::TimerState>();
    const auto due = elapsed_ + std::max(delay, platform::Duration::zero());
    timers_.emplace(std::make_pair(due, nextTimerSeq_++), Timer{state, std::move(task), interval});
    return platform::TimerHandle(state);
}

Subscription VirtualMainLoop::watchReadable(int fd, platform::Task onReadable) {
    const std::uint64_t id = nextWatchId_++;
    watches_.emplace(id, Watch{fd, std::make_shared<platform::Task>(std::move(onReadable))});
    return Subscription([this, alive = std::weak_ptr<bool>(alive_), id] {
        if (auto flag = alive.lock(); flag && *flag) watches_.erase(id);
    });
}

std::size_t VirtualMainLoop::watchedDescriptors() const { return watches_.size(); }

std::unique_ptr<platform::SerialQueue> VirtualMainLoop::makeSerialQueue(std::string label) {
    auto state = std::make_shared<QueueState>();
    std::erase_if(queues_, [](const auto& weak) { return weak.expired(); });
    queues_.push_back(state);
    return std::make_unique<Queue>(std::move(label), std::move(state));
}

std::chrono::steady_clock::time_point VirtualMainLoop::monotonicNow() const {
    return std::chrono::steady_clock::time_point(
        std::chrono::duration_cast<std::chrono::steady_clock::duration>(elapsed_) + std::chrono::hours(1));
}

std::chrono::system_clock::time_point VirtualMainLoop::wallNow() const {
    return wallStart_ + wallOffset_ + std::chrono::duration_cast<std::chrono::system_clock::duration>(elapsed_);
}

void VirtualMainLoop::setWallTime(std::chrono::system_clock::time_point wall) {
    wallOffset_ = wall - wallStart_ - std::chrono::duration_cast<std::chrono::system_clock::duration>(elapsed_);
}

std::size_t VirtualMainLoop::pendingTimers() const {
    return static_cast<std::size_t>(std::count_if(timers_.begin(), timers_.end(), [](const auto& entry) {
        return !entry.second.state->cancelled;
    }));
}

bool VirtualMainLoop::runOnePosted() {
    platform::Task task;
    {
        std::lock_guard lock(postedMutex_);
        if (posted_.empty()) return false;
        task = std::move(posted_.front());
        posted_.pop_front();
    }
    task();
    return true;
}

bool VirtualMainLoop::runOneQueued() {
    for (const auto& weak : queues_) {
        auto state = weak.lock();
        if (!state) continue;
        platform::Task task;
        {
            std::lock_guard lock(state->mutex);
            if (state->tasks.empty()) continue;
            task = std::move(state->tasks.front());
            state->tasks.pop_front();
        }
        task();
        return true;
    }
    return false;
}

bool VirtualMainLoop::runOneReadable() {
    for (const auto& [id, watch] : watches_) {
        pollfd entry{watch.fd, POLLIN, 0};
        if (::poll(&entry, 1, 0) != 1 || (entry.revents & (POLLIN | POLLHUP | POLLERR)) == 0) continue;
        // A callback that leaves its descriptor readable would be called for ever, as in a real
        // loop; a test is told instead of hanging.
        if (++readableInARow_ > 10000)
            throw std::logic_error("VirtualMainLoop: descriptor " + std::to_string(watch.fd) +
                                   " stays readable; its callback must read it");
        // The callback may end its own watch (or others): keep it alive for the call.
        const auto callback = watch.onReadable;
        (*callback)();
        return true;
    }
    return false;
}

bool VirtualMainLoop::runOneDueTimer() {
    while (!timers_.empty()) {
        auto it = timers_.begin();
        if (it->first.first > elapsed_) return false;
        Timer timer = std::move(it->second);
        timers_.erase(it);
        if (timer.state->cancelled) continue;
        if (timer.interval > platform::Duration::zero()) {
            // Rearm before running, so the task may cancel its own timer.
            timers_.emplace(std::make_pair(elapsed_ + timer.interval, nextTimerSeq_++),
                            Timer{timer.state, timer.task, timer.interval});
        } else {
            timer.state->finished = true;
        }
        timer.task();
        return true;
    }
    return false;
}

std::size_t VirtualMainLoop::runUntilIdle() {
    std::size_t count = 0;
    for (;;) {
        if (runOnePosted() || runOneQueued()) {
            ++count;
            readableInARow_ = 0;
            continue;
        }
        if (runOneReadable()) {
            ++count;
            continue;
        }
        if (runOneDueTimer()) {
            ++count;
            readableInARow_ = 0;
            continue;
        }
        readableInARow_ = 0;
        return count;
    }
}

void VirtualMainLoop::runFor(platform::Duration duration) {
    const auto end = elapsed_ + std::max(duration, platform::Duration::zero());
    runUntilIdle();
    for (;;) {
        auto next = std::find_if(timers_.begin(), timers_.end(),
                                 [](const auto& entry) { return !entry.second.state->cancelled; });
        if (next == timers_.end() || next->first.first > end) break;
        elapsed_ = std::max(elapsed_, next->first.first);
        runUntilIdle();
    }
    elapsed_ = end;
    runUntilIdle();
}

}  // namespace orvantis::sim
