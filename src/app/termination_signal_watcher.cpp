#include "app/termination_signal_watcher.h"

#include <atomic>
#include <cerrno>
#include <utility>

#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

namespace orvantis::app {
namespace {

// The pipe end the handler writes to; -1 while no watcher exists.
std::atomic<int> gWriteEnd{-1};
static_assert(std::atomic<int>::is_always_lock_free, "the signal handler needs a lock-free descriptor");

extern "C" void handleTerminationSignal(int signal) {
    const int savedErrno = errno;
    const int fd = gWriteEnd.load(std::memory_order_relaxed);
    if (fd >= 0) {
        const auto byte = static_cast<unsigned char>(signal);
        // A full pipe already holds a pending request; dropping this byte loses nothing.
        [[maybe_unused]] const auto written = ::write(fd, &byte, 1);
    }
    errno = savedErrno;
}

}  // namespace

TerminationSignalWatcher::TerminationSignalWatcher(std::function<void(int)> onSignal)
    : onSignal_(std::move(onSignal)) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return;
    readEnd_ = ends[0];
    writeEnd_ = ends[1];
    gWriteEnd.store(writeEnd_);

    struct sigaction action {};
    action.sa_handler = handleTerminationSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &action, &previous_[i]);

    notifier_ = new QSocketNotifier(readEnd_, QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, [this] { drain(); });
}

TerminationSignalWatcher::~TerminationSignalWatcher() {
    if (readEnd_ < 0) return;
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &previous_[i], nullptr);
    gWriteEnd.store(-1);
    delete notifier_;
    ::close(readEnd_);
    ::close(writeEnd_);
}

void TerminationSignalWatcher::drain() {
    unsigned char received[16];
    for (;;) {
        const auto count = ::read(readEnd_, received, sizeof received);
        if (count <= 0) return;  // EAGAIN: all read
        for (ssize_t i = 0; i < count; ++i) {
            if (onSignal_) onSignal_(received[i]);
        }
    }
}

}  // namespace orvantis::app
