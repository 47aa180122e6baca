#include "platform/x11/input_extension.h"

#include <chrono>
#include <cstdlib>

#include <gtest/gtest.h>

#include "testing/test_support.h"

#include <X11/Xlib.h>

namespace orvantis::x11 {
namespace {

TEST(InputExtensionTest, UnreachableDisplayAnswersFalse) {
    // No server listens on this display number's socket; the tests never start one there.
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(hasInputExtension(":64999"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(InputExtensionTest, MalformedDisplayNameAnswersFalse) {
    EXPECT_FALSE(hasInputExtension("not a display"));
}

TEST(InputExtensionTest, EmptyNameWithoutDisplayVariableAnswersFalse) {
    const testing::ScopedEnv display("DISPLAY", nullptr);
    EXPECT_FALSE(hasInputExtension());
}

TEST(InputExtensionTest, RunningServerOffersTheExtension) {
    const char* name = std::getenv("DISPLAY");
    Display* display = (name != nullptr && *name != '\0') ? XOpenDisplay(name) : nullptr;
    if (display == nullptr) GTEST_SKIP() << "no X display in this environment";
    XCloseDisplay(display);
    // Xvfb and every desktop X server carry XInput.
    EXPECT_TRUE(hasInputExtension(name));
}

}  // namespace
}  // namespace orvantis::x11
