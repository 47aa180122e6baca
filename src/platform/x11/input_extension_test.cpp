#include "platform/x11/input_extension.h"

#include <chrono>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

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
    const char* saved = std::getenv("DISPLAY");
    const std::string previous = saved ? saved : "";
    unsetenv("DISPLAY");
    EXPECT_FALSE(hasInputExtension());
    if (saved) setenv("DISPLAY", previous.c_str(), 1);
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
