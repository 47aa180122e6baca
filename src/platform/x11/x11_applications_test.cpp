#include "platform/x11/x11_applications.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace orvantis::x11 {
namespace {

TEST(X11ApplicationsTest, NoDisplayGivesNoApplications) { EXPECT_EQ(X11Applications::open(":9999"), nullptr); }

// Needs the virtual desktop's X session; runs in the end-to-end desktop probes and skips
// elsewhere. A window of ours with the class of xterm stands for the terminal: it is identified
// by the terminal's desktop file, as the real one is.
TEST(X11ApplicationsTest, LiveSessionNamesTheFocusedWindowsApplication) {
    auto applications = X11Applications::open();
    Display* display = XOpenDisplay(nullptr);
    if (!applications || display == nullptr) GTEST_SKIP() << "no X display";
    auto focus = [&](const char* instance, const char* className) {
        Window window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 50, 50, 0, 0, 0);
        XClassHint hint{const_cast<char*>(instance), const_cast<char*>(className)};
        XSetClassHint(display, window, &hint);
        XSelectInput(display, window, StructureNotifyMask);
        XMapRaised(display, window);
        XEvent event;
        do XNextEvent(display, &event);
        while (event.type != MapNotify);
        XSetInputFocus(display, window, RevertToParent, CurrentTime);
        XSync(display, False);
        return window;
    };

    const Window terminal = focus("xterm", "XTerm");
    auto front = applications->frontmostApplication();
    ASSERT_TRUE(front.has_value());
    EXPECT_EQ(front->bundleID, "debian-xterm");
    EXPECT_EQ(front->localizedName, "XTerm");

    const Window unknown = focus("tool", "SomeTool");
    front = applications->frontmostApplication();
    ASSERT_TRUE(front.has_value());
    EXPECT_EQ(front->bundleID, "SomeTool");

    XDestroyWindow(display, unknown);
    XDestroyWindow(display, terminal);
    XSetInputFocus(display, PointerRoot, RevertToPointerRoot, CurrentTime);
    XSync(display, False);
    EXPECT_FALSE(applications->frontmostApplication().has_value());
    XCloseDisplay(display);
}

}  // namespace
}  // namespace orvantis::x11
