#pragma once

#include <memory>
#include <vector>

#include "platform/subscription.h"
#include "platform/system_utilities.h"

namespace orvantis {
struct AppLog;
}

namespace orvantis::x11 {

/// The pointing devices of the X server whose scroll direction libinput lets a client set:
/// every slave pointer with the property `libinput Natural Scrolling Enabled`. Vendor and
/// product come from `Device Product ID`, the default direction from `libinput Natural
/// Scrolling Enabled Default`; a device with `libinput Tapping Enabled` is a touch pad (HID
/// usage 13/5), any other a mouse (1/2). Devices plugged in or removed are told through
/// onDevicesChanged() (XInput 2 hierarchy events), read when the owner calls
/// dispatchPending() whenever fileDescriptor() is readable. A device that went away before a
/// write is logged and answered false. Holds a display connection of its own; main thread only.
class XInputPointerDevices final : public platform::PointerDevices {
public:
    /// Null without a display or XInput 2.2; `log` may be null.
    static std::unique_ptr<XInputPointerDevices> open(const char* displayName, const AppLog* log);
    ~XInputPointerDevices() override;
    XInputPointerDevices(const XInputPointerDevices&) = delete;
    XInputPointerDevices& operator=(const XInputPointerDevices&) = delete;

    std::vector<platform::PointerDeviceInfo> devices() const override;
    bool setNaturalScrolling(std::int64_t id, bool natural) override;
    [[nodiscard]] Subscription onDevicesChanged(std::function<void()> callback) override {
        return changed_.add(std::move(callback));
    }

    int fileDescriptor() const;
    void dispatchPending();

    struct Connection;

private:
    XInputPointerDevices(std::unique_ptr<Connection> connection, const AppLog* log);

    std::unique_ptr<Connection> connection_;
    const AppLog* log_;
    CallbackList<> changed_;
};

}  // namespace orvantis::x11
