#include "app/termination_signal_watcher.h"

#include <vector>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <gtest/gtest.h>

#include <signal.h>

namespace orvantis::app {
namespace {

/// Runs Qt's event loop until `done` holds or five seconds have passed.
template <typename Predicate>
bool spinUntil(Predicate done) {
    QElapsedTimer elapsed;
    elapsed.start();
    while (!done() && elapsed.elapsed() < 5000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 10);
    }
    return done();
}

class TerminationSignalWatcherTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        static int argc = 1;
        static char name[] = "app_tests";
        static char* argv[] = {name, nullptr};
        if (QCoreApplication::instance() == nullptr) application_ = new QCoreApplication(argc, argv);
    }
    static void TearDownTestSuite() {
        delete application_;
        application_ = nullptr;
    }
    static QCoreApplication* application_;
};
QCoreApplication* TerminationSignalWatcherTest::application_ = nullptr;

TEST_F(TerminationSignalWatcherTest, SigtermReachesTheMainThreadCallback) {
    std::vector<int> received;
    TerminationSignalWatcher watcher([&](int signal) { received.push_back(signal); });
    ASSERT_TRUE(watcher.isWatching());
    ASSERT_EQ(::raise(SIGTERM), 0);
    // The handler only wrote into the pipe: nothing ran yet.
    EXPECT_TRUE(received.empty());
    ASSERT_TRUE(spinUntil([&] { return !received.empty(); }));
    EXPECT_EQ(received, std::vector<int>{SIGTERM});
}

TEST_F(TerminationSignalWatcherTest, SigintToo) {
    std::vector<int> received;
    TerminationSignalWatcher watcher([&](int signal) { received.push_back(signal); });
    ASSERT_EQ(::raise(SIGINT), 0);
    ASSERT_TRUE(spinUntil([&] { return !received.empty(); }));
    EXPECT_EQ(received, std::vector<int>{SIGINT});
}

TEST_F(TerminationSignalWatcherTest, PreviousHandlersComeBack) {
    struct sigaction before {};
    sigaction(SIGTERM, nullptr, &before);
    {
        TerminationSignalWatcher watcher([](int) {});
        struct sigaction during {};
        sigaction(SIGTERM, nullptr, &during);
        EXPECT_NE(during.sa_handler, before.sa_handler);
    }
    struct sigaction after {};
    sigaction(SIGTERM, nullptr, &after);
    EXPECT_EQ(after.sa_handler, before.sa_handler);
}

}  // namespace
}  // namespace orvantis::app
