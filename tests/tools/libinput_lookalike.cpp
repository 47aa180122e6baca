// Dresses the X server's test pointer up as a libinput mouse, for end-to-end tests of the
// scroll reverser on a virtual display that has no libinput device:
//
//   libinput_lookalike add       puts the natural scrolling property (0), its default (0) and
//                                a product id on the "Virtual core XTEST pointer"
//   libinput_lookalike natural   prints the natural scrolling property (0 or 1)
//   libinput_lookalike remove    takes the three properties off again

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

int testPointer(Display* display) {
    int count = 0, id = -1;
    XIDeviceInfo* info = XIQueryDevice(display, XIAllDevices, &count);
    for (int i = 0; i < count; ++i)
        if (info[i].use == XISlavePointer && std::string(info[i].name).find("XTEST") != std::string::npos)
            id = info[i].deviceid;
    XIFreeDeviceInfo(info);
    return id;
}

void set8(Display* display, int id, const char* name, unsigned char value) {
    XIChangeProperty(display, id, XInternAtom(display, name, False), XA_INTEGER, 8, XIPropModeReplace, &value, 1);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: libinput_lookalike add|natural|remove\n");
        return 2;
    }
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) return 1;
    const int id = testPointer(display);
    if (id < 0) return 1;
    const char* kNatural = "libinput Natural Scrolling Enabled";
    if (std::strcmp(argv[1], "add") == 0) {
        set8(display, id, kNatural, 0);
        set8(display, id, "libinput Natural Scrolling Enabled Default", 0);
        std::uint32_t ids[2] = {1133, 49271};
        XIChangeProperty(display, id, XInternAtom(display, "Device Product ID", False), XA_INTEGER, 32,
                         XIPropModeReplace, reinterpret_cast<unsigned char*>(ids), 2);
    } else if (std::strcmp(argv[1], "natural") == 0) {
        Atom type;
        int format;
        unsigned long count, after;
        unsigned char* data = nullptr;
        XIGetProperty(display, id, XInternAtom(display, kNatural, False), 0, 1, False, AnyPropertyType, &type,
                      &format, &count, &after, &data);
        std::printf("%d\n", data != nullptr && count > 0 ? data[0] : -1);
        if (data != nullptr) XFree(data);
    } else {
        for (const char* name : {kNatural, "libinput Natural Scrolling Enabled Default", "Device Product ID"})
            XIDeleteProperty(display, id, XInternAtom(display, name, False));
    }
    XSync(display, False);
    XCloseDisplay(display);
    return 0;
}
