#include "platform/freedesktop/desktop_notifications.h"

#include <cstring>
#include <utility>

#include "core/log/app_logger.h"
#include "platform/freedesktop/sd_bus_handles.h"

namespace orvantis::freedesktop {
namespace {

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
constexpr const char* kInterface = "org.freedesktop.Notifications";

}  // namespace

/// One call in flight: the answer's handler and what it needs, freed with the call's slot.
struct DesktopNotifications::PendingCall {
    std::weak_ptr<bool> alive;
    std::function<void(sd_bus_message* reply)> handler;

    static int onReply(sd_bus_message* reply, void* userdata, sd_bus_error*) {
        auto* call = static_cast<PendingCall*>(userdata);
        if (auto alive = call->alive.lock(); alive && *alive) call->handler(reply);
        return 0;
    }
    static void destroy(void* userdata) { delete static_cast<PendingCall*>(userdata); }
};

DesktopNotifications::DesktopNotifications(platform::MainLoop& loop, const AppLog& log, std::function<void()> beep)
    : loop_(loop), log_(log), beep_(std::move(beep)) {}

DesktopNotifications::~DesktopNotifications() {
    *alive_ = false;
    watch_.reset();
    if (bus_ != nullptr) sd_bus_flush_close_unref(bus_);
}

bool DesktopNotifications::connect() {
    if (bus_ != nullptr) return true;
    if (connectFailed_) return false;
    SdBusPtr bus = openSessionBus(std::chrono::duration_cast<std::chrono::microseconds>(kCallTimeout));
    if (!bus) {
        connectFailed_ = true;
        log_.app.warning("pomodoro: no session bus; phase changes ring the bell instead of showing a notification");
        return false;
    }
    bus_ = bus.release();
    watch_ = loop_.watchReadable(sd_bus_get_fd(bus_), [this] { process(); });
    return true;
}

void DesktopNotifications::process() {
    if (bus_ == nullptr) return;
    int r = 0;
    do {
        r = sd_bus_process(bus_, nullptr);
    } while (r > 0);
    if (r < 0) {
        log_.app.warning(std::string("pomodoro: the session bus connection broke: ") + std::strerror(-r));
        watch_.reset();
        timeoutCheck_.cancel();
        sd_bus_flush_close_unref(std::exchange(bus_, nullptr));
    }
}

void DesktopNotifications::processLater() {
    // Replies arrive through the watch; a call that is never answered ends only when the
    // connection is processed after its deadline.
    timeoutCheck_ = loop_.postAfter(kCallTimeout + std::chrono::milliseconds(50), [this] { process(); });
}

void DesktopNotifications::checkAuthorization(std::function<void(bool)> done) {
    if (!connect()) {
        loop_.post([done = std::move(done)] { done(false); });
        return;
    }
    auto* call = new PendingCall{alive_, [done](sd_bus_message* reply) {
                                     done(reply != nullptr && !sd_bus_message_is_method_error(reply, nullptr));
                                 }};
    sd_bus_slot* slot = nullptr;
    const int r = sd_bus_call_method_async(bus_, &slot, kService, kPath, kInterface, "GetServerInformation",
                                           &PendingCall::onReply, call, "");
    if (r < 0) {
        delete call;
        loop_.post([done = std::move(done)] { done(false); });
        return;
    }
    sd_bus_slot_set_destroy_callback(slot, &PendingCall::destroy);
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
    sd_bus_flush(bus_);
    processLater();
}

void DesktopNotifications::post(const std::string& title, const std::string& body) {
    if (!connect()) return;
    auto* call = new PendingCall{alive_, [this](sd_bus_message* reply) {
                                     if (reply == nullptr || !sd_bus_message_is_method_error(reply, nullptr)) return;
                                     const sd_bus_error* error = sd_bus_message_get_error(reply);
                                     log_.app.warning(std::string("pomodoro: the notification was refused: ") +
                                                      (error && error->message ? error->message : "no reason given"));
                                 }};
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_method_call(bus_, &raw, kService, kPath, kInterface, "Notify") < 0) {
        delete call;
        return;
    }
    SdBusMessagePtr message(raw);
    // app_name, replaces_id, app_icon, summary, body, actions, hints, expire_timeout
    int r = sd_bus_message_append(message.get(), "susssas", "Orvantis", 0u, "", title.c_str(), body.c_str(), 0);
    if (r >= 0) r = sd_bus_message_open_container(message.get(), 'a', "{sv}");
    if (r >= 0) r = sd_bus_message_append(message.get(), "{sv}", "sound-name", "s", "message-new-instant");
    if (r >= 0) r = sd_bus_message_append(message.get(), "{sv}", "desktop-entry", "s", "orvantis");
    if (r >= 0) r = sd_bus_message_close_container(message.get());
    if (r >= 0) r = sd_bus_message_append(message.get(), "i", -1);
    sd_bus_slot* slot = nullptr;
    if (r >= 0)
        r = sd_bus_call_async(bus_, &slot, message.get(), &PendingCall::onReply, call,
                              std::chrono::duration_cast<std::chrono::microseconds>(kCallTimeout).count());
    if (r < 0) {
        delete call;
        log_.app.warning(std::string("pomodoro: the notification could not be sent: ") + std::strerror(-r));
        return;
    }
    sd_bus_slot_set_destroy_callback(slot, &PendingCall::destroy);
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
    sd_bus_flush(bus_);
    processLater();
}

void DesktopNotifications::beep() {
    if (beep_) beep_();
}

}  // namespace orvantis::freedesktop
