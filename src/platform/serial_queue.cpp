#include "platform/serial_queue.h"

#include <future>
#include <utility>

namespace orvantis::platform {

ThreadSerialQueue::ThreadSerialQueue(std::string label)
    : label_(std::move(label)), thread_([this] { run(); }) {}

ThreadSerialQueue::~ThreadSerialQueue() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void ThreadSerialQueue::async(std::function<void()> task) {
    {
        std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    wake_.notify_one();
}

void ThreadSerialQueue::sync(std::function<void()> task) {
    std::promise<void> done;
    auto finished = done.get_future();
    async([&task, &done] {
        task();
        done.set_value();
    });
    finished.wait();
}

void ThreadSerialQueue::run() {
    for (;;) {
        std::function<void()> task;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
            if (tasks_.empty()) return;  // stopping, and nothing left to do
            task = std::move(tasks_.front());
            tasks_.pop_front();
        }
        task();
    }
}

}  // namespace orvantis::platform
