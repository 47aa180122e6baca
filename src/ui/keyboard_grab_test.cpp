#include "ui/keyboard_grab.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <gtest/gtest.h>

namespace orvantis::ui {
namespace {

/// Counts the events of one type that pass it on their way to any object.
class CountingFilter final : public QObject {
public:
    int seen = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::User) ++seen;
        return QObject::eventFilter(watched, event);
    }
};

void sendUserEvent() {
    QObject target;
    QEvent event(QEvent::User);
    QCoreApplication::sendEvent(&target, &event);
}

TEST(ApplicationEventFilterTest, SeesTheApplicationsEventsOnlyWhileInstalledAndOnce) {
    CountingFilter counter;
    ApplicationEventFilter filter(counter);
    sendUserEvent();
    EXPECT_EQ(counter.seen, 0);
    filter.install();
    filter.install();  // a second install does not filter twice
    sendUserEvent();
    EXPECT_EQ(counter.seen, 1);
    EXPECT_TRUE(filter.installed());
    filter.remove();
    sendUserEvent();
    EXPECT_EQ(counter.seen, 1);
    EXPECT_FALSE(filter.installed());
}

TEST(ApplicationEventFilterTest, GoingAwayRemovesTheFilter) {
    CountingFilter counter;
    {
        ApplicationEventFilter filter(counter);
        filter.install();
    }
    sendUserEvent();
    EXPECT_EQ(counter.seen, 0);
}

}  // namespace
}  // namespace orvantis::ui
