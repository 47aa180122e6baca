#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace orvantis::platform {

/// A serial queue of work off the main thread: tasks run one at a time, in the order they
/// were given. Results go back to the main thread through MainLoop::post.
class SerialQueue {
public:
    virtual ~SerialQueue() = default;
    /// Queues `task`. Any thread. Never blocks on the task.
    virtual void async(std::function<void()> task) = 0;
    /// Runs `task` after every task queued before it and returns when it is done.
    /// Must not be called from a task of this queue.
    virtual void sync(std::function<void()> task) = 0;
    /// The label of the queue, for diagnostics.
    virtual const std::string& label() const = 0;
};

/// A SerialQueue backed by one thread of its own. Destruction runs the tasks still queued,
/// then joins the thread.
class ThreadSerialQueue final : public SerialQueue {
public:
    explicit ThreadSerialQueue(std::string label);
    ~ThreadSerialQueue() override;
    ThreadSerialQueue(const ThreadSerialQueue&) = delete;
    ThreadSerialQueue& operator=(const ThreadSerialQueue&) = delete;

    void async(std::function<void()> task) override;
    void sync(std::function<void()> task) override;
    const std::string& label() const override { return label_; }

private:
    void run();

    std::string label_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> tasks_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace orvantis::platform
