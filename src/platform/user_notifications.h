#pragma once

#include <functional>
#include <string>

namespace orvantis::platform {

/// The desktop's notification banners, with the bell as the fallback. Main thread only.
class UserNotifications {
public:
    virtual ~UserNotifications() = default;
    /// Asks for permission to show banners where the desktop has such a question; the answer
    /// is not reported. Never blocks.
    virtual void requestAuthorization() = 0;
    /// Calls `done` later on the main thread with whether a banner can be shown now (on Linux:
    /// a notification service answers on the session bus). Never calls it synchronously.
    virtual void checkAuthorization(std::function<void(bool authorized)> done) = 0;
    /// Shows a banner with the default sound. A failure is logged and dropped.
    virtual void post(const std::string& title, const std::string& body) = 0;
    /// The system's alert sound (the X bell); nothing where there is none.
    virtual void beep() = 0;
};

}  // namespace orvantis::platform
