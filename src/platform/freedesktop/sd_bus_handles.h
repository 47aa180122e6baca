#pragma once

// Owning handles for sd-bus objects. Internal to the freedesktop backend: other folders never
// include systemd headers.

#include <chrono>
#include <cstdint>
#include <memory>

#include <systemd/sd-bus.h>

namespace orvantis::freedesktop {

/// Flushes what is still queued, then closes and frees a connection.
struct SdBusCloser {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
/// Drops one reference to a message.
struct SdBusMessageUnref {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};

using SdBusPtr = std::unique_ptr<sd_bus, SdBusCloser>;
using SdBusMessagePtr = std::unique_ptr<sd_bus_message, SdBusMessageUnref>;

/// An sd_bus_error freed on scope exit.
class SdBusError {
public:
    SdBusError() = default;
    ~SdBusError() { sd_bus_error_free(&error_); }
    SdBusError(const SdBusError&) = delete;
    SdBusError& operator=(const SdBusError&) = delete;
    sd_bus_error* get() { return &error_; }

private:
    sd_bus_error error_ = SD_BUS_ERROR_NULL;
};

/// The session bus of this user ($DBUS_SESSION_BUS_ADDRESS, else $XDG_RUNTIME_DIR/bus), with
/// `timeout` for every method call; null when there is none.
inline SdBusPtr openSessionBus(std::chrono::microseconds timeout) {
    sd_bus* raw = nullptr;
    if (sd_bus_open_user(&raw) < 0) return nullptr;
    SdBusPtr bus(raw);
    sd_bus_set_method_call_timeout(bus.get(), static_cast<std::uint64_t>(timeout.count()));
    return bus;
}

}  // namespace orvantis::freedesktop
