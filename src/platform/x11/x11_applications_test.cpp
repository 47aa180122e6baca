#include "platform/x11/x11_applications.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include <X11/Xatom.h>
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

// Needs the virtual desktop's X session. The test plays the window manager: it writes the
// client list and the active window on the root window, as one does.
TEST(X11ApplicationsTest, LiveSessionTellsActivationsLaunchesAndEndsFromTheWindowManagersLists) {
    auto applications = X11Applications::open();
    Display* display = XOpenDisplay(nullptr);
    if (!applications || display == nullptr) GTEST_SKIP() << "no X display";
    const Window root = DefaultRootWindow(display);
    auto window = [&](const char* instance, const char* className) {
        Window w = XCreateSimpleWindow(display, root, 0, 0, 10, 10, 0, 0, 0);
        XClassHint hint{const_cast<char*>(instance), const_cast<char*>(className)};
        XSetClassHint(display, w, &hint);
        return w;
    };
    auto setWindows = [&](const char* name, std::vector<Window> windows) {
        std::vector<long> items(windows.begin(), windows.end());
        XChangeProperty(display, root, XInternAtom(display, name, False), XA_WINDOW, 32, PropModeReplace,
                        reinterpret_cast<unsigned char*>(items.data()), static_cast<int>(items.size()));
        XSync(display, False);
    };
    int activations = 0, launches = 0, ends = 0;
    auto a = applications->onActivated([&] { ++activations; });
    auto l = applications->onLaunched([&] { ++launches; });
    auto t = applications->onTerminated([&] { ++ends; });
    auto settle = [&] {
        for (int i = 0; i < 50; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            applications->dispatchPending();
        }
    };

    const Window terminal = window("xterm", "XTerm");
    const Window tool = window("tool", "SomeTool");
    setWindows("_NET_CLIENT_LIST", {terminal, tool});
    settle();
    EXPECT_EQ(launches, 1);
    const auto running = applications->runningApplications();
    ASSERT_EQ(running.size(), 2u);
    EXPECT_EQ(running[0].bundleID, "debian-xterm");
    EXPECT_EQ(running[1].bundleID, "SomeTool");

    setWindows("_NET_ACTIVE_WINDOW", {tool});
    settle();
    EXPECT_EQ(activations, 1);
    ASSERT_TRUE(applications->frontmostApplication().has_value());
    EXPECT_EQ(applications->frontmostApplication()->bundleID, "SomeTool");

    setWindows("_NET_CLIENT_LIST", {tool});
    settle();
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(launches, 1);

    XDeleteProperty(display, root, XInternAtom(display, "_NET_CLIENT_LIST", False));
    XDeleteProperty(display, root, XInternAtom(display, "_NET_ACTIVE_WINDOW", False));
    XDestroyWindow(display, terminal);
    XDestroyWindow(display, tool);
    XCloseDisplay(display);
}

}  // namespace
}  // namespace orvantis::x11
