// One QApplication for every test of the interface, on Qt's offscreen platform so the tests
// need no display; with ORVANTIS_UI_TESTS_PLATFORM=xcb on a real X display instead, for the
// live tests that skip elsewhere.

#include <memory>

#include <QApplication>
#include <gtest/gtest.h>

namespace orvantis::ui {
namespace {

class QtTestEnvironment final : public ::testing::Environment {
public:
    void SetUp() override {
        const QByteArray platform = qgetenv("ORVANTIS_UI_TESTS_PLATFORM");
        qputenv("QT_QPA_PLATFORM", platform.isEmpty() ? QByteArray("offscreen") : platform);
        // The offscreen platform lacks a tray signal that QSystemTrayIcon connects to; the
        // warning about it is noise here. Project code connects through member pointers.
        qputenv("QT_LOGGING_RULES", "qt.core.qobject.connect=false");
        application_ = std::make_unique<QApplication>(argc_, argv_);
        QApplication::setQuitOnLastWindowClosed(false);
    }
    void TearDown() override { application_.reset(); }

private:
    int argc_ = 1;
    char name_[10] = "ui_tests";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_;
};

[[maybe_unused]] const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new QtTestEnvironment);

}  // namespace
}  // namespace orvantis::ui
