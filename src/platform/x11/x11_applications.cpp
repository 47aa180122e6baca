#include "platform/x11/x11_applications.h"

#include <algorithm>
#include <iterator>
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
    // The window manager's changes of the active window and the client list.
    XSelectInput(display, DefaultRootWindow(display), PropertyChangeMask);
    XFlush(display);
    return std::unique_ptr<X11Applications>(new X11Applications(std::move(connection)));
}

X11Applications::X11Applications(std::unique_ptr<Connection> connection) : connection_(std::move(connection)) {}

X11Applications::~X11Applications() = default;

const freedesktop::DesktopEntries& X11Applications::desktopEntries() const {
    if (!desktopEntries_) desktopEntries_ = std::make_unique<freedesktop::DesktopEntries>();
    return *desktopEntries_;
}

std::optional<platform::ApplicationInfo> X11Applications::applicationOf(unsigned long windowID) const {
    Display* display = connection_->display;
    auto window = connection_->clientWindow(static_cast<Window>(windowID));
    if (!window) return std::nullopt;
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
    if (info.bundleID.empty()) return std::nullopt;
    return info;
}

std::optional<platform::ApplicationInfo> X11Applications::frontmostApplication() const {
    Display* display = connection_->display;
    auto* previous = XSetErrorHandler(ignoreErrors);
    std::optional<platform::ApplicationInfo> result;
    if (auto active = connection_->activeWindow()) result = applicationOf(*active);
    XSync(display, False);
    XSetErrorHandler(previous);
    return result;
}

std::vector<platform::ApplicationInfo> X11Applications::runningApplications() const {
    Display* display = connection_->display;
    auto* previous = XSetErrorHandler(ignoreErrors);
    std::vector<platform::ApplicationInfo> result;
    if (auto bytes = connection_->property(DefaultRootWindow(display), "_NET_CLIENT_LIST", XA_WINDOW, 32)) {
        const auto* windows = reinterpret_cast<const long*>(bytes->data());
        const std::size_t count = bytes->size() / sizeof(long);
        for (std::size_t i = 0; i < count; ++i) {
            auto app = applicationOf(static_cast<unsigned long>(windows[i]));
            if (!app) continue;
            const bool seen = std::any_of(result.begin(), result.end(), [&](const platform::ApplicationInfo& a) {
                return a.bundleID == app->bundleID;
            });
            if (!seen) result.push_back(std::move(*app));
        }
    }
    XSync(display, False);
    XSetErrorHandler(previous);
    return result;
}

std::vector<std::string> X11Applications::runningIDs() const {
    std::vector<std::string> ids;
    for (const auto& app : runningApplications()) ids.push_back(app.bundleID);
    std::sort(ids.begin(), ids.end());
    return ids;
}

void X11Applications::watchClients() {
    if (watchingClients_) return;
    watchingClients_ = true;
    lastRunning_ = runningIDs();
}

int X11Applications::fileDescriptor() const { return ConnectionNumber(connection_->display); }

void X11Applications::dispatchPending() {
    Display* display = connection_->display;
    const Atom active = XInternAtom(display, "_NET_ACTIVE_WINDOW", False);
    const Atom clients = XInternAtom(display, "_NET_CLIENT_LIST", False);
    bool activatedNow = false, clientsChanged = false;
    while (XPending(display) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type != PropertyNotify || event.xproperty.window != DefaultRootWindow(display)) continue;
        if (event.xproperty.atom == active) activatedNow = true;
        if (event.xproperty.atom == clients) clientsChanged = true;
    }
    if (clientsChanged && watchingClients_) {
        std::vector<std::string> now = runningIDs();
        std::vector<std::string> added, removed;
        std::set_difference(now.begin(), now.end(), lastRunning_.begin(), lastRunning_.end(), std::back_inserter(added));
        std::set_difference(lastRunning_.begin(), lastRunning_.end(), now.begin(), now.end(),
                            std::back_inserter(removed));
        lastRunning_ = std::move(now);
        if (!added.empty()) launched_.notify();
        if (!removed.empty()) terminated_.notify();
    }
    if (activatedNow) activated_.notify();
}

}  // namespace orvantis::x11
