// One QApplication for every test of the interface, on Qt's offscreen platform so the tests
// need no display; with ORVANTIS_UI_TESTS_PLATFORM=xcb on a real X display instead, for the
// live tests that skip elsewhere.

#include "testing/qt_test_application.h"

namespace orvantis::ui {
namespace {

[[maybe_unused]] const auto* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new testing::QtTestApplication("ui_tests", "ORVANTIS_UI_TESTS_PLATFORM"));

}  // namespace
}  // namespace orvantis::ui
