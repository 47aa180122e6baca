#pragma once

#include <functional>

#include "platform/subscription.h"

namespace orvantis::platform {

/// The computer going to sleep and waking up. Callbacks run on the main thread. Where the
/// system cannot tell (no login manager on the bus), the callbacks are simply never called.
class SystemSleepEvents {
public:
    virtual ~SystemSleepEvents() = default;
    /// Just before the system sleeps.
    [[nodiscard]] virtual Subscription onWillSleep(std::function<void()> callback) = 0;
    /// Just after it woke.
    [[nodiscard]] virtual Subscription onDidWake(std::function<void()> callback) = 0;
};

}  // namespace orvantis::platform
