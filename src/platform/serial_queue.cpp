#include "platform/serial_queue.h"

#include <future>
#include <utility>

#include <pthread.h>

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
    // Named after the label's last part ("AppLogger"), so that a look at the process's threads
    // tells them apart; the kernel keeps 15 bytes.
    const std::size_t dot = label_.rfind('.');
    const std::string name = label_.substr(dot == std::string::npos ? 0 : dot + 1, 15);
    pthread_setname_np(pthread_self(), name.c_str());
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
