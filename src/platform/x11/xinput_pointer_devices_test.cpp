#include "platform/x11/xinput_pointer_devices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

namespace orvantis::x11 {
namespace {

TEST(XInputPointerDevicesTest, NoDisplayGivesNoDevices) { EXPECT_EQ(XInputPointerDevices::open(":9999", nullptr), nullptr); }

/// The X server's own test pointer dressed up as a libinput mouse: the properties a libinput
/// device carries are put on it, and taken off again at the end.
class LibinputLookalike {
public:
    explicit LibinputLookalike(Display* display) : display_(display) {
        int count = 0;
        XIDeviceInfo* info = XIQueryDevice(display, XIAllDevices, &count);
        for (int i = 0; i < count; ++i)
            if (info[i].use == XISlavePointer && std::string(info[i].name).find("XTEST") != std::string::npos)
                id_ = info[i].deviceid;
        XIFreeDeviceInfo(info);
        if (id_ < 0) return;
        set("libinput Natural Scrolling Enabled", 0);
        set("libinput Natural Scrolling Enabled Default", 0);
        std::uint32_t ids[2] = {1133, 49271};  // device properties carry 32-bit items as they are
        XIChangeProperty(display, id_, XInternAtom(display, "Device Product ID", False), XA_INTEGER, 32,
                         XIPropModeReplace, reinterpret_cast<unsigned char*>(ids), 2);
        XSync(display, False);
    }
    ~LibinputLookalike() {
        if (id_ < 0) return;
        for (const char* name : {"libinput Natural Scrolling Enabled", "libinput Natural Scrolling Enabled Default",
                                 "Device Product ID"})
            XIDeleteProperty(display_, id_, XInternAtom(display_, name, False));
        XSync(display_, False);
    }
    int id() const { return id_; }
    int natural() const {
        Atom type;
        int format;
        unsigned long count, after;
        unsigned char* data = nullptr;
        XIGetProperty(display_, id_, XInternAtom(display_, "libinput Natural Scrolling Enabled", False), 0, 1, False,
                      AnyPropertyType, &type, &format, &count, &after, &data);
        const int value = data != nullptr && count > 0 ? data[0] : -1;
        if (data != nullptr) XFree(data);
        return value;
    }

private:
    void set(const char* name, unsigned char value) {
        XIChangeProperty(display_, id_, XInternAtom(display_, name, False), XA_INTEGER, 8, XIPropModeReplace, &value,
                         1);
    }
    Display* display_;
    int id_ = -1;
};

// Needs the virtual desktop's X session; runs in the end-to-end desktop probes and skips
// elsewhere.
TEST(XInputPointerDevicesTest, LiveSessionReadsAndSetsTheScrollDirection) {
    auto devices = XInputPointerDevices::open(nullptr, nullptr);
    Display* display = XOpenDisplay(nullptr);
    if (!devices || display == nullptr) GTEST_SKIP() << "no X display";
    {
        LibinputLookalike mouse(display);
        ASSERT_GE(mouse.id(), 0) << "no test pointer";
        const auto list = devices->devices();
        const auto it = std::find_if(list.begin(), list.end(), [&](const auto& d) { return d.id == mouse.id(); });
        ASSERT_NE(it, list.end());
        EXPECT_EQ(it->vendorID, 1133u);
        EXPECT_EQ(it->productID, 49271u);
        EXPECT_EQ(it->primaryUsagePage, 1u);
        EXPECT_EQ(it->primaryUsage, 2u);
        EXPECT_FALSE(it->naturalScrollingDefault);
        EXPECT_TRUE(devices->setNaturalScrolling(mouse.id(), true));
        EXPECT_EQ(mouse.natural(), 1);
        EXPECT_TRUE(devices->setNaturalScrolling(mouse.id(), false));
        EXPECT_EQ(mouse.natural(), 0);
    }
    // A device that is not there (unplugged between the listing and the write).
    EXPECT_FALSE(devices->setNaturalScrolling(250, true));
    XCloseDisplay(display);
}

}  // namespace
}  // namespace orvantis::x11
