#include "platform/freedesktop/accessibility_bus.h"

#include <cstdint>

#include "platform/freedesktop/sd_bus_handles.h"

namespace orvantis::freedesktop {
namespace {

constexpr const char* kService = "org.a11y.Bus";
constexpr const char* kPath = "/org/a11y/bus";

/// Calls `interface.member` on the accessibility bus launcher without activating it; the
/// reply, or null on any failure.
SdBusMessagePtr callLauncher(sd_bus* bus, const char* interface, const char* member,
                             std::chrono::microseconds timeout, const char* statusInterface = nullptr,
                             const char* property = nullptr) {
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_method_call(bus, &raw, kService, kPath, interface, member) < 0) return nullptr;
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

/// The question asked over `bus`.
bool enabledOn(sd_bus* bus, std::chrono::microseconds perCall) {
    SdBusMessagePtr address = callLauncher(bus, "org.a11y.Bus", "GetAddress", perCall);
    if (!address) return false;
    const char* text = nullptr;
    if (sd_bus_message_read(address.get(), "s", &text) < 0 || text == nullptr || *text == '\0') return false;

    SdBusMessagePtr enabled = callLauncher(bus, "org.freedesktop.DBus.Properties", "Get", perCall,
                                           "org.a11y.Status", "IsEnabled");
    if (!enabled) return false;
    int value = 0;
    if (sd_bus_message_read(enabled.get(), "v", "b", &value) < 0) return false;
    return value != 0;
}

}  // namespace

bool accessibilityBusEnabled(std::chrono::milliseconds timeout) {
    const auto perCall = std::chrono::duration_cast<std::chrono::microseconds>(timeout);
    SdBusPtr bus = openSessionBus(perCall);
    return bus && enabledOn(bus.get(), perCall);
}

struct AccessibilityBusCheck::Connection {
    SdBusPtr bus;
};

AccessibilityBusCheck::AccessibilityBusCheck() : connection_(std::make_unique<Connection>()) {}

AccessibilityBusCheck::~AccessibilityBusCheck() = default;

bool AccessibilityBusCheck::enabled(std::chrono::milliseconds timeout) {
    const auto perCall = std::chrono::duration_cast<std::chrono::microseconds>(timeout);
    if (!connection_->bus) connection_->bus = openSessionBus(perCall);
    if (!connection_->bus) return false;
    const bool answer = enabledOn(connection_->bus.get(), perCall);
    // A broken connection (the bus went away) is made anew at the next question.
    if (!answer && sd_bus_is_open(connection_->bus.get()) <= 0) connection_->bus.reset();
    return answer;
}

bool enableAccessibilityBus(std::chrono::milliseconds timeout) {
    SdBusPtr bus = openSessionBus(std::chrono::duration_cast<std::chrono::microseconds>(timeout));
    if (!bus) return false;
    SdBusError error;
    return sd_bus_set_property(bus.get(), kService, kPath, "org.a11y.Status", "IsEnabled", error.get(), "b", 1) >= 0;
}

}  // namespace orvantis::freedesktop
