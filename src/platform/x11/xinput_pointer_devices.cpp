#include "platform/x11/xinput_pointer_devices.h"

#include <cstring>
#include <optional>
#include <string>

#include "core/log/app_logger.h"
#include "platform/x11/x11_display.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

namespace orvantis::x11 {

namespace {

constexpr const char* kNatural = "libinput Natural Scrolling Enabled";
constexpr const char* kNaturalDefault = "libinput Natural Scrolling Enabled Default";
constexpr const char* kTapping = "libinput Tapping Enabled";
constexpr const char* kProductID = "Device Product ID";

int deviceError = 0;
int recordError(Display*, XErrorEvent* event) {
    deviceError = event->error_code;
    return 0;
}

}  // namespace

struct XInputPointerDevices::Connection {
    Display* display = nullptr;
    int xiOpcode = 0;
    ~Connection() { closeDisplay(display); }

    /// The items of a device property, or nullopt when the device lacks it.
    std::optional<std::vector<long>> property(int device, const char* name) const {
        const Atom atom = XInternAtom(display, name, True);
        if (atom == None) return std::nullopt;
        Atom type = None;
        int format = 0;
        unsigned long count = 0, after = 0;
        unsigned char* data = nullptr;
        deviceError = 0;
        auto* previous = XSetErrorHandler(recordError);
        const Status status = XIGetProperty(display, device, atom, 0, 16, False, AnyPropertyType, &type, &format,
                                            &count, &after, &data);
        XSync(display, False);
        XSetErrorHandler(previous);
        if (status != Success || deviceError != 0 || type == None || data == nullptr) {
            if (data != nullptr) XFree(data);
            return std::nullopt;
        }
        std::vector<long> items;
        for (unsigned long i = 0; i < count; ++i) {
            if (format == 8) items.push_back(reinterpret_cast<const unsigned char*>(data)[i]);
            else if (format == 16) items.push_back(reinterpret_cast<const unsigned short*>(data)[i]);
            else items.push_back(static_cast<long>(reinterpret_cast<const std::uint32_t*>(data)[i]));
        }
        XFree(data);
        return items;
    }
};

std::unique_ptr<XInputPointerDevices> XInputPointerDevices::open(const char* displayName, const AppLog* log) {
    Display* display = XOpenDisplay(displayName);
    if (display == nullptr) return nullptr;
    keepQuietWhenLost(display);
    auto connection = std::make_unique<Connection>();
    connection->display = display;
    int event = 0, error = 0;
    int major = 2, minor = 2;
    if (!XQueryExtension(display, "XInputExtension", &connection->xiOpcode, &event, &error) ||
        XIQueryVersion(display, &major, &minor) != Success)
        return nullptr;
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(bits, XI_HierarchyChanged);
    XIEventMask mask{XIAllDevices, sizeof bits, bits};
    XISelectEvents(display, DefaultRootWindow(display), &mask, 1);
    XFlush(display);
    return std::unique_ptr<XInputPointerDevices>(new XInputPointerDevices(std::move(connection), log));
}

XInputPointerDevices::XInputPointerDevices(std::unique_ptr<Connection> connection, const AppLog* log)
    : connection_(std::move(connection)), log_(log) {}

XInputPointerDevices::~XInputPointerDevices() = default;

std::vector<platform::PointerDeviceInfo> XInputPointerDevices::devices() const {
    Display* display = connection_->display;
    std::vector<platform::PointerDeviceInfo> result;
    int count = 0;
    XIDeviceInfo* info = XIQueryDevice(display, XIAllDevices, &count);
    if (info == nullptr) return result;
    for (int i = 0; i < count; ++i) {
        if (info[i].use != XISlavePointer) continue;
        const int id = info[i].deviceid;
        const auto natural = connection_->property(id, kNatural);
        if (!natural || natural->empty()) continue;  // not driven by libinput
        platform::PointerDeviceInfo device;
        device.id = id;
        device.product = info[i].name != nullptr ? info[i].name : "";
        if (auto ids = connection_->property(id, kProductID); ids && ids->size() >= 2) {
            device.vendorID = static_cast<std::uint32_t>((*ids)[0]);
            device.productID = static_cast<std::uint32_t>((*ids)[1]);
        }
        const bool touchpad = connection_->property(id, kTapping).has_value();
        device.primaryUsagePage = touchpad ? 13 : 1;
        device.primaryUsage = touchpad ? 5 : 2;
        const auto byDefault = connection_->property(id, kNaturalDefault);
        device.naturalScrollingDefault = byDefault && !byDefault->empty() ? (*byDefault)[0] != 0 : false;
        result.push_back(std::move(device));
    }
    XIFreeDeviceInfo(info);
    return result;
}

bool XInputPointerDevices::setNaturalScrolling(std::int64_t id, bool natural) {
    Display* display = connection_->display;
    const Atom atom = XInternAtom(display, kNatural, True);
    if (atom == None) {
        if (log_ != nullptr) log_->app.warning("scrollReverser: no device has a scroll direction to set");
        return false;
    }
    unsigned char value = natural ? 1 : 0;
    deviceError = 0;
    auto* previous = XSetErrorHandler(recordError);
    XIChangeProperty(display, static_cast<int>(id), atom, XA_INTEGER, 8, XIPropModeReplace, &value, 1);
    XSync(display, False);
    XSetErrorHandler(previous);
    if (deviceError != 0) {
        if (log_ != nullptr)
            log_->app.warning("scrollReverser: device " + std::to_string(id) +
                              " refused its scroll direction or went away (X error " + std::to_string(deviceError) +
                              ")");
        return false;
    }
    return true;
}

int XInputPointerDevices::fileDescriptor() const { return ConnectionNumber(connection_->display); }

void XInputPointerDevices::dispatchPending() {
    Display* display = connection_->display;
    bool changed = false;
    while (XPending(display) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type == GenericEvent && event.xcookie.extension == connection_->xiOpcode &&
            event.xcookie.evtype == XI_HierarchyChanged)
            changed = true;
    }
    if (changed) changed_.notify();
}

}  // namespace orvantis::x11
