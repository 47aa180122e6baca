#include "platform/freedesktop/accessibility_bus.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "platform/freedesktop/sd_bus_handles.h"

namespace orvantis::freedesktop {
namespace {

constexpr const char* kService = "org.a11y.Bus";
constexpr const char* kPath = "/org/a11y/bus";

/// Calls `interface.member` on the accessibility bus launcher without activating it; the
/// reply, or null on any failure.
SdBusMessagePtr callLauncher(sd_bus* bus, const char* service, const char* interface, const char* member,
                             std::chrono::microseconds timeout, std::size_t* calls,
                             const char* statusInterface = nullptr, const char* property = nullptr) {
    if (calls != nullptr) ++*calls;
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_method_call(bus, &raw, service, kPath, interface, member) < 0) return nullptr;
    SdBusMessagePtr call(raw);
    if (sd_bus_message_set_auto_start(call.get(), 0) < 0) return nullptr;
    if (property != nullptr && sd_bus_message_append(call.get(), "ss", statusInterface, property) < 0) {
        return nullptr;
    }
    SdBusError error;
    sd_bus_message* reply = nullptr;
    if (sd_bus_call(bus, call.get(), static_cast<std::uint64_t>(timeout.count()), error.get(), &reply) < 0) {
        return nullptr;
    }
    return SdBusMessagePtr(reply);
}

/// The question asked over `bus` of the launcher at `service`; `calls` (may be null) counts the
/// calls made.
bool enabledOn(sd_bus* bus, const char* service, std::chrono::microseconds perCall, std::size_t* calls) {
    SdBusMessagePtr address = callLauncher(bus, service, "org.a11y.Bus", "GetAddress", perCall, calls);
    if (!address) return false;
    const char* text = nullptr;
    if (sd_bus_message_read(address.get(), "s", &text) < 0 || text == nullptr || *text == '\0') return false;

    SdBusMessagePtr enabled = callLauncher(bus, service, "org.freedesktop.DBus.Properties", "Get", perCall,
                                           calls, "org.a11y.Status", "IsEnabled");
    if (!enabled) return false;
    int value = 0;
    if (sd_bus_message_read(enabled.get(), "v", "b", &value) < 0) return false;
    return value != 0;
}

}  // namespace

bool accessibilityBusEnabled(std::chrono::milliseconds timeout) {
    const auto perCall = std::chrono::duration_cast<std::chrono::microseconds>(timeout);
    SdBusPtr bus = openSessionBus(perCall);
    return bus && enabledOn(bus.get(), kService, perCall, nullptr);
}

struct AccessibilityBusCheck::Connection {
    SdBusPtr bus;
    /// The match on the bus daemon's NameOwnerChanged for the launcher's name.
    sd_bus_slot* ownerWatch = nullptr;
    /// Whether the launcher's name has an owner, as the bus daemon last reported it.
    bool launcherPresent = false;

    ~Connection() { sd_bus_slot_unref(ownerWatch); }

    static int ownerChanged(sd_bus_message* message, void* userdata, sd_bus_error*) {
        const char* name = nullptr;
        const char* oldOwner = nullptr;
        const char* newOwner = nullptr;
        if (sd_bus_message_read(message, "sss", &name, &oldOwner, &newOwner) >= 0) {
            static_cast<Connection*>(userdata)->launcherPresent = newOwner != nullptr && *newOwner != '\0';
        }
        return 0;
    }

    /// Connects, subscribes to the owner changes of `launcher`, then asks whether it has an
    /// owner now: in this order, so that no change falls between the answer and the match.
    bool open(const std::string& launcher, std::chrono::microseconds perCall) {
        bus = openSessionBus(perCall);
        if (!bus) return false;
        const std::string match =
            "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
            "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + launcher + "'";
        SdBusError error;
        sd_bus_message* reply = nullptr;
        int value = 0;
        if (sd_bus_add_match(bus.get(), &ownerWatch, match.c_str(), &Connection::ownerChanged, this) < 0 ||
            sd_bus_call_method(bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                               "NameHasOwner", error.get(), &reply, "s", launcher.c_str()) < 0) {
            close();
            return false;
        }
        SdBusMessagePtr owned(reply);
        if (sd_bus_message_read(owned.get(), "b", &value) < 0) {
            close();
            return false;
        }
        launcherPresent = value != 0;
        return true;
    }

    /// Hands every message that has arrived (owner changes) to its handler, without waiting.
    /// False when the connection broke.
    bool drain() {
        int processed = 0;
        while ((processed = sd_bus_process(bus.get(), nullptr)) > 0) {
        }
        return processed >= 0;
    }

    void close() {
        ownerWatch = sd_bus_slot_unref(ownerWatch);
        bus.reset();
        launcherPresent = false;
    }
};

AccessibilityBusCheck::AccessibilityBusCheck(std::string launcherName)
    : launcherName_(std::move(launcherName)), connection_(std::make_unique<Connection>()) {}

AccessibilityBusCheck::~AccessibilityBusCheck() = default;

bool AccessibilityBusCheck::enabled(std::chrono::milliseconds timeout) {
    const auto perCall = std::chrono::duration_cast<std::chrono::microseconds>(timeout);
    Connection& connection = *connection_;
    if (!connection.bus && !connection.open(launcherName_, perCall)) return false;
    // The owner changes reported since the last question; a broken connection is made anew at
    // the next question.
    if (!connection.drain()) {
        connection.close();
        return false;
    }
    // No launcher: nothing to ask (a launcher that starts is reported before it can answer).
    if (!connection.launcherPresent) return false;
    const bool answer = enabledOn(connection.bus.get(), launcherName_.c_str(), perCall, &launcherCalls_);
    if (!answer && sd_bus_is_open(connection.bus.get()) <= 0) connection.close();
    return answer;
}

bool enableAccessibilityBus(std::chrono::milliseconds timeout) {
    SdBusPtr bus = openSessionBus(std::chrono::duration_cast<std::chrono::microseconds>(timeout));
    if (!bus) return false;
    SdBusError error;
    return sd_bus_set_property(bus.get(), kService, kPath, "org.a11y.Status", "IsEnabled", error.get(), "b", 1) >= 0;
}

}  // namespace orvantis::freedesktop
