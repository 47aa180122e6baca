#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/applications.h"
#include "platform/subscription.h"

namespace orvantis::platform {

/// Keeps the computer and its display awake while an assertion is held. Main thread only.
class PowerAssertions {
public:
    virtual ~PowerAssertions() = default;
    /// Takes one assertion named `name`. Answers 0 and sets `id` on success; any other number
    /// is the desktop's error, and the backend has logged why.
    virtual int create(std::string_view name, std::uint32_t& id) = 0;
    /// Lets the assertion `id` go. Answers 0 on success, else the desktop's error.
    virtual int release(std::uint32_t id) = 0;
};

/// Keeps the computer from sleeping when its lid closes. Main thread only.
class LidSleepControl {
public:
    virtual ~LidSleepControl() = default;
    /// Turns lid-close sleep off (true) or back on (false); false when that failed, which the
    /// backend has logged.
    virtual bool setDisableSleep(bool disable) = 0;
    /// Makes setDisableSleep() possible from now on (asking the user where the desktop needs
    /// that); false when it isn't.
    virtual bool provision() = 0;
    /// Undoes provision(); false when that failed or the user refused.
    virtual bool deprovision() = 0;
};

/// Runs a program and waits for it, its output and errors going nowhere. Main thread only.
class CommandRunner {
public:
    virtual ~CommandRunner() = default;
    /// The exit status of `program` run with `arguments`, or nullopt with the reason in
    /// `launchError` when it could not be started.
    virtual std::optional<int> run(const std::string& program, const std::vector<std::string>& arguments,
                                   std::string& launchError) = 0;
};

/// The running applications of the session and their comings and goings. Main thread only.
class ApplicationWatch {
public:
    using Callback = std::function<void()>;
    virtual ~ApplicationWatch() = default;
    /// Every application with a window now, in no particular order.
    virtual std::vector<ApplicationInfo> runningApplications() const = 0;
    /// Another application became the frontmost one.
    [[nodiscard]] virtual Subscription onActivated(Callback callback) = 0;
    /// An application appeared (`onLaunched`) or went away (`onTerminated`).
    [[nodiscard]] virtual Subscription onLaunched(Callback callback) = 0;
    [[nodiscard]] virtual Subscription onTerminated(Callback callback) = 0;
};

/// One pointing device as the scroll reverser sees it. Fields the desktop does not tell are 0
/// or empty.
struct PointerDeviceInfo {
    /// The desktop's handle of the device; stable while it is plugged in.
    std::int64_t id = 0;
    std::uint32_t vendorID = 0;
    std::uint32_t productID = 0;
    std::string product;
    /// The HID usage page and usage of its main function: 1 and 2 for a mouse, 13 and 5 for a
    /// touch pad.
    std::uint32_t primaryUsagePage = 0;
    std::uint32_t primaryUsage = 0;
    /// What the device scrolls like when nobody has changed it.
    bool naturalScrollingDefault = false;
    bool operator==(const PointerDeviceInfo&) const = default;
};

/// The pointing devices whose scroll direction can be set one by one. Main thread only.
class PointerDevices {
public:
    virtual ~PointerDevices() = default;
    /// The devices present now.
    virtual std::vector<PointerDeviceInfo> devices() const = 0;
    /// Sets the device's natural (reversed) scrolling; false when it failed (the device has
    /// gone, or refuses), which the backend has logged.
    virtual bool setNaturalScrolling(std::int64_t id, bool natural) = 0;
    /// A device was plugged in or removed.
    [[nodiscard]] virtual Subscription onDevicesChanged(std::function<void()> callback) = 0;
};

}  // namespace orvantis::platform
