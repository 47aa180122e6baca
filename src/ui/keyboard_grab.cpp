#include "ui/keyboard_grab.h"

#include <cstring>
#include <optional>
#include <utility>

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <QPointer>
#include <QWindow>

#include <xcb/xcb.h>

namespace orvantis::ui {
namespace {

bool onX11() { return QGuiApplication::platformName() == QLatin1String("xcb"); }

/// The X11 grab, made through Qt's own connection so that the events reach the window like
/// any other: an active keyboard grab (XGrabKeyboard, owner events off, asynchronous) and a
/// pointer grab on the window.
class X11KeyboardGrab final : public KeyboardGrab {
public:
    bool tryGrab(QWindow& window) override {
        release();
        if (!window.setKeyboardGrabEnabled(true)) return false;
        window_ = &window;
        pointer_ = window.setMouseGrabEnabled(true);
        return true;
    }
    void release() override {
        if (!window_) return;
        if (pointer_) window_->setMouseGrabEnabled(false);
        window_->setKeyboardGrabEnabled(false);
        window_.clear();
        pointer_ = false;
    }
    bool holdsPointer() const override { return window_ && pointer_; }
    ~X11KeyboardGrab() override { release(); }

private:
    QPointer<QWindow> window_;
    bool pointer_ = false;
};

class NoKeyboardGrab final : public KeyboardGrab {
public:
    bool tryGrab(QWindow&) override { return true; }
    void release() override {}
    bool holdsPointer() const override { return false; }
};

xcb_atom_t internAtom(xcb_connection_t* connection, const char* name) {
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection, cookie, nullptr);
    if (!reply) return XCB_ATOM_NONE;
    const xcb_atom_t atom = reply->atom;
    std::free(reply);
    return atom;
}

std::optional<std::uint32_t> readActiveWindow(xcb_connection_t* connection, xcb_window_t root, xcb_atom_t atom) {
    const auto cookie = xcb_get_property(connection, 0, root, atom, XCB_ATOM_WINDOW, 0, 1);
    xcb_get_property_reply_t* reply = xcb_get_property_reply(connection, cookie, nullptr);
    if (!reply) return std::nullopt;
    std::optional<std::uint32_t> window;
    if (reply->format == 32 && xcb_get_property_value_length(reply) >= 4)
        window = *static_cast<const std::uint32_t*>(xcb_get_property_value(reply));
    std::free(reply);
    return window;
}

/// Sees the root window's property changes among the events of Qt's connection and reports
/// a new value of _NET_ACTIVE_WINDOW.
class ActiveWindowFilter final : public QAbstractNativeEventFilter {
public:
    ActiveWindowFilter(xcb_connection_t* connection, xcb_window_t root, std::function<void()> changed)
        : connection_(connection), root_(root), changed_(std::move(changed)) {
        atom_ = internAtom(connection_, "_NET_ACTIVE_WINDOW");
        // Property changes of the root are asked for on top of what Qt already selects there.
        const auto cookie = xcb_get_window_attributes(connection_, root_);
        if (auto* attributes = xcb_get_window_attributes_reply(connection_, cookie, nullptr)) {
            const std::uint32_t mask = attributes->your_event_mask | XCB_EVENT_MASK_PROPERTY_CHANGE;
            if (mask != attributes->your_event_mask)
                xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &mask);
            std::free(attributes);
        }
        if (atom_ != XCB_ATOM_NONE) last_ = readActiveWindow(connection_, root_, atom_);
        xcb_flush(connection_);
    }

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) override {
        if (atom_ == XCB_ATOM_NONE || eventType != "xcb_generic_event_t") return false;
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY) return false;
        const auto* notify = reinterpret_cast<const xcb_property_notify_event_t*>(event);
        if (notify->window != root_ || notify->atom != atom_) return false;
        const auto now = readActiveWindow(connection_, root_, atom_);
        if (now == last_) return false;
        last_ = now;
        // Reported outside Qt's event dispatch, so the callback may close windows freely.
        QMetaObject::invokeMethod(
            qApp, [changed = changed_] { changed(); }, Qt::QueuedConnection);
        return false;
    }

private:
    xcb_connection_t* connection_;
    xcb_window_t root_;
    xcb_atom_t atom_ = XCB_ATOM_NONE;
    std::optional<std::uint32_t> last_;
    std::function<void()> changed_;
};

Subscription watchX11ActiveWindow(std::function<void()> changed) {
    auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection()) return {};
    xcb_connection_t* connection = x11->connection();
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    if (!screen) return {};
    // The callback is shared with the filter's queued calls and disarmed on unsubscribe.
    auto armed = std::make_shared<std::function<void()>>(std::move(changed));
    auto* filter = new ActiveWindowFilter(connection, screen->root, [armed] {
        if (*armed) (*armed)();
    });
    QCoreApplication::instance()->installNativeEventFilter(filter);
    return Subscription([filter, armed] {
        *armed = nullptr;
        if (auto* app = QCoreApplication::instance()) app->removeNativeEventFilter(filter);
        delete filter;
    });
}

Subscription watchFocusWindow(std::function<void()> changed) {
    auto connection = QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, qGuiApp,
                                       [changed = std::move(changed)](QWindow* window) {
                                           if (window) changed();
                                       });
    return Subscription([connection] { QObject::disconnect(connection); });
}

}  // namespace

std::unique_ptr<KeyboardGrab> KeyboardGrab::forPlatform() {
    if (onX11()) return std::make_unique<X11KeyboardGrab>();
    return none();
}

std::unique_ptr<KeyboardGrab> KeyboardGrab::none() { return std::make_unique<NoKeyboardGrab>(); }

void HeldKeyboard::hold(QWindow& window) {
    release();
    window_ = &window;
    attempts_ = 0;
    attempt();
    if (held_) return;
    retry_ = loop_.every(kRetryInterval, [this] { attempt(); });
}

void HeldKeyboard::release() {
    retry_.cancel();
    if (held_) grab_.release();
    held_ = false;
    window_ = nullptr;
}

void HeldKeyboard::attempt() {
    if (!window_) return;
    ++attempts_;
    if (grab_.tryGrab(*window_)) {
        held_ = true;
        retry_.cancel();
        return;
    }
    // The first attempt is made at once, the others one interval apart.
    if (static_cast<std::size_t>(kRetryLimit / kRetryInterval) < attempts_) retry_.cancel();
}

Subscription watchActiveWindowChanges(std::function<void()> changed) {
    if (onX11()) return watchX11ActiveWindow(std::move(changed));
    return watchFocusWindow(std::move(changed));
}

OutsideWatch::OutsideWatch(platform::MainLoop& loop, std::function<void()> close, ActivationWatch watchActivation)
    : loop_(loop), close_(std::move(close)),
      watchActivation_(watchActivation ? std::move(watchActivation) : ActivationWatch(&watchActiveWindowChanges)) {}

void OutsideWatch::startAfter(int turns) {
    pendingClose_.cancel();
    if (watching_) return;
    later(turns);
}

void OutsideWatch::later(int turns) {
    if (turns > 0) {
        start_ = loop_.postAfter(platform::Duration::zero(), [this, turns] { later(turns - 1); });
        return;
    }
    watching_ = true;
    activation_ = watchActivation_(close_);
}

void OutsideWatch::stop() {
    start_.cancel();
    pendingClose_.cancel();
    activation_.reset();
    watching_ = false;
}

void OutsideWatch::press(bool inside) {
    if (!watching_ || inside) return;
    pendingClose_ = loop_.postAfter(platform::Duration::zero(), close_);
}

void ApplicationEventFilter::install() {
    QCoreApplication* application = QCoreApplication::instance();
    if (installed_ || application == nullptr) return;
    application->installEventFilter(&filter_);
    installed_ = true;
}

void ApplicationEventFilter::remove() {
    if (!installed_) return;
    installed_ = false;
    if (QCoreApplication* application = QCoreApplication::instance()) application->removeEventFilter(&filter_);
}

}  // namespace orvantis::ui
