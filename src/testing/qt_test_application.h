#pragma once

// One QApplication for every test of a test program that needs Qt widgets.

#include <memory>
#include <optional>

#include <QApplication>
#include <QByteArray>
#include <gtest/gtest.h>

#include "testing/test_support.h"

namespace orvantis::testing {

/// Makes the QApplication before the first test and destroys it after the last, on Qt's
/// offscreen platform so that the tests need no display, or on the platform named by the
/// environment variable `platformVariable` when it is set (xcb on a real X display for the live
/// tests that skip elsewhere). Register it with ::testing::AddGlobalTestEnvironment.
class QtTestApplication final : public ::testing::Environment {
public:
    explicit QtTestApplication(const char* programName, const char* platformVariable = nullptr)
        : programName_(programName), platformVariable_(platformVariable) {}

    void SetUp() override {
        const QByteArray platform = platformVariable_ != nullptr ? qgetenv(platformVariable_) : QByteArray();
        qtPlatform_.emplace("QT_QPA_PLATFORM", platform.isEmpty() ? "offscreen" : platform.constData());
        // The offscreen platform lacks a tray signal that QSystemTrayIcon connects to; the
        // warning about it is noise here. Project code connects through member pointers.
        loggingRules_.emplace("QT_LOGGING_RULES", "qt.core.qobject.connect=false");
        argv_[0] = programName_.data();
        application_ = std::make_unique<QApplication>(argc_, argv_);
        QApplication::setQuitOnLastWindowClosed(false);
    }
    void TearDown() override {
        application_.reset();
        loggingRules_.reset();
        qtPlatform_.reset();
    }

private:
    QByteArray programName_;
    const char* platformVariable_;
    int argc_ = 1;
    char* argv_[2] = {nullptr, nullptr};
    std::optional<ScopedEnv> qtPlatform_;
    std::optional<ScopedEnv> loggingRules_;
    std::unique_ptr<QApplication> application_;
};

}  // namespace orvantis::testing
