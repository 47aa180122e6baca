#include "ui/qt_main_loop.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>

namespace orvantis::ui {
namespace {

std::chrono::milliseconds toTimerInterval(platform::Duration duration, std::chrono::milliseconds floor) {
    const auto rounded = std::chrono::ceil<std::chrono::milliseconds>(duration);
    return std::max(rounded, floor);
}

}  // namespace

QtMainLoop::QtMainLoop() : context_(std::make_unique<QObject>()) {}

QtMainLoop::~QtMainLoop() = default;

void QtMainLoop::post(platform::Task task) {
    QMetaObject::invokeMethod(
        context_.get(), [task = std::move(task)] { task(); }, Qt::QueuedConnection);
}

platform::TimerHandle QtMainLoop::postAfter(platform::Duration delay, platform::Task task) {
    return startTimer(delay, false, std::move(task));
}

platform::TimerHandle QtMainLoop::every(platform::Duration interval, platform::Task task) {
    return startTimer(interval, true, std::move(task));
}

std::unique_ptr<platform::SerialQueue> QtMainLoop::makeSerialQueue(std::string label) {
    return std::make_unique<platform::ThreadSerialQueue>(std::move(label));
}

Subscription QtMainLoop::watchReadable(int fd, platform::Task onReadable) {
    auto* notifier = new QSocketNotifier(static_cast<qintptr>(fd), QSocketNotifier::Read, context_.get());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier,
                     [task = std::move(onReadable)] { task(); });
    // The watch may end from its own callback: the notifier goes at the next turn of the loop.
    QPointer<QSocketNotifier> guarded(notifier);
    return Subscription([guarded] {
        if (guarded) {
            guarded->setEnabled(false);
            guarded->deleteLater();
        }
    });
}

std::size_t QtMainLoop::watchCount() const {
    return static_cast<std::size_t>(context_->findChildren<QSocketNotifier*>(Qt::FindDirectChildrenOnly).size());
}

std::size_t QtMainLoop::timerCount() const {
    return static_cast<std::size_t>(context_->findChildren<QTimer*>(Qt::FindDirectChildrenOnly).size());
}

platform::TimerHandle QtMainLoop::startTimer(platform::Duration interval, bool repeating, platform::Task task) {
    auto state = std::make_shared<platform::TimerState>();
    auto* timer = new QTimer(context_.get());
    timer->setTimerType(Qt::PreciseTimer);
    timer->setSingleShot(!repeating);
    // A zero interval would make a repeating timer spin on every pass of the event loop.
    timer->setInterval(toTimerInterval(interval, std::chrono::milliseconds(repeating ? 1 : 0)));

    // The timer may already be gone with the loop when the handle is cancelled.
    QPointer<QTimer> guarded(timer);
    state->onCancel = [guarded] {
        if (guarded) {
            guarded->stop();
            guarded->deleteLater();
        }
    };
    QObject::connect(timer, &QTimer::timeout, timer,
                     [timer, repeating, weak = std::weak_ptr<platform::TimerState>(state),
                      task = std::move(task)] {
                         auto current = weak.lock();
                         if (!current || current->cancelled) return;
                         if (!repeating) {
                             current->finished = true;
                             timer->deleteLater();
                         }
                         // The task may cancel its own handle; `current` keeps the state alive.
                         task();
                     });
    timer->start();
    return platform::TimerHandle(std::move(state));
}

}  // namespace orvantis::ui
