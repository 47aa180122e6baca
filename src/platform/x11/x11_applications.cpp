#include "platform/x11/x11_applications.h"

#include <string>
#include <utility>

#include "platform/x11/x11_display.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace orvantis::x11 {

struct X11Applications::Connection {
    Display* display = nullptr;
    ~Connection() {
        closeDisplay(display);
    }

    /// The bytes of a window property of 8-bit or 32-bit items, or nullopt.
    std::optional<std::string> property(Window window, const char* name, Atom type, int wantedFormat) const {
        const Atom atom = XInternAtom(display, name, True);
        if (atom == None) return std::nullopt;
        Atom actualType = None;
        int format = 0;
        unsigned long count = 0, remaining = 0;
        unsigned char* data = nullptr;
        if (XGetWindowProperty(display, window, atom, 0, 1024, False, type, &actualType, &format, &count, &remaining,
                               &data) != Success ||
            data == nullptr)
            return std::nullopt;
        std::optional<std::string> bytes;
        if (format == wantedFormat && count > 0) {
            // Xlib hands 32-bit items back as longs.
            const std::size_t size = format == 32 ? count * sizeof(long) : count;
            bytes = std::string(reinterpret_cast<const char*>(data), size);
        }
        XFree(data);
        return bytes;
    }

    std::optional<Window> activeWindow() const {
        if (auto bytes = property(DefaultRootWindow(display), "_NET_ACTIVE_WINDOW", XA_WINDOW, 32);
            bytes && bytes->size() >= sizeof(long)) {
            const Window window = static_cast<Window>(*reinterpret_cast<const long*>(bytes->data()));
            if (window != None) return window;
        }
        Window focus = None;
        int revert = 0;
        XGetInputFocus(display, &focus, &revert);
        if (focus == None || focus == PointerRoot) return std::nullopt;
        return focus;
    }

    /// The window itself or the nearest ancestor that carries WM_CLASS (the client window).
    std::optional<Window> clientWindow(Window window) const {
        for (int depth = 0; depth < 32 && window != None; ++depth) {
            XClassHint hint{};
            if (XGetClassHint(display, window, &hint) != 0) {
                XFree(hint.res_name);
                XFree(hint.res_class);
                return window;
            }
            Window root = None, parent = None, *children = nullptr;
            unsigned int count = 0;
            if (XQueryTree(display, window, &root, &parent, &children, &count) == 0) return std::nullopt;
            if (children != nullptr) XFree(children);
            if (parent == root) return std::nullopt;
            window = parent;
        }
        return std::nullopt;
    }
};

namespace {

// A window that vanishes between two requests answers BadWindow; that is no reason to end
// the program.
int ignoreErrors(Display*, XErrorEvent*) { return 0; }

}  // namespace

std::unique_ptr<X11Applications> X11Applications::open(const char* displayName) {
    Display* display = XOpenDisplay(displayName);
    if (display == nullptr) return nullptr;
    keepQuietWhenLost(display);
    auto connection = std::make_unique<Connection>();
    connection->display = display;
    return std::unique_ptr<X11Applications>(new X11Applications(std::move(connection)));
}

X11Applications::X11Applications(std::unique_ptr<Connection> connection) : connection_(std::move(connection)) {}

X11Applications::~X11Applications() = default;

const freedesktop::DesktopEntries& X11Applications::desktopEntries() const {
    if (!desktopEntries_) desktopEntries_ = std::make_unique<freedesktop::DesktopEntries>();
    return *desktopEntries_;
}

std::optional<platform::ApplicationInfo> X11Applications::frontmostApplication() const {
    Display* display = connection_->display;
    auto* previous = XSetErrorHandler(ignoreErrors);
    std::optional<platform::ApplicationInfo> result;
    if (auto active = connection_->activeWindow()) {
        if (auto window = connection_->clientWindow(*active)) {
            XClassHint hint{};
            XGetClassHint(display, *window, &hint);
            const std::string instanceName = hint.res_name != nullptr ? hint.res_name : "";
            const std::string className = hint.res_class != nullptr ? hint.res_class : "";
            XFree(hint.res_name);
            XFree(hint.res_class);

            platform::ApplicationInfo info;
            const freedesktop::DesktopEntry* entry = nullptr;
            if (auto gtkID = connection_->property(*window, "_GTK_APPLICATION_ID", AnyPropertyType, 8))
                entry = desktopEntries().byID(*gtkID);
            if (entry == nullptr) entry = desktopEntries().forWindowClass(instanceName, className);
            if (entry != nullptr) {
                info.bundleID = entry->id;
                info.localizedName = entry->name;
            } else {
                info.bundleID = !className.empty() ? className : instanceName;
                info.localizedName = info.bundleID;
            }
            if (auto pid = connection_->property(*window, "_NET_WM_PID", XA_CARDINAL, 32); pid && pid->size() >= sizeof(long))
                info.processID = *reinterpret_cast<const long*>(pid->data());
            if (!info.bundleID.empty()) result = std::move(info);
        }
    }
    XSync(display, False);
    XSetErrorHandler(previous);
    return result;
}

}  // namespace orvantis::x11
