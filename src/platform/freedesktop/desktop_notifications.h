#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/main_loop.h"
#include "platform/subscription.h"
#include "platform/user_notifications.h"

struct sd_bus;

namespace orvantis {
struct AppLog;
}

namespace orvantis::freedesktop {

/// Banners through the desktop's notification service (org.freedesktop.Notifications on the
/// session bus), on a connection of its own watched by the main loop, so no call ever blocks
/// it. "Authorised" means that the service answers GetServerInformation in time; there is no
/// permission to ask for. The bell comes from `beep`, given by the toolkit. Without a session
/// bus every check answers false, so each phase change rings the bell. Main thread only.
class DesktopNotifications final : public platform::UserNotifications {
public:
    static constexpr std::chrono::milliseconds kCallTimeout{2000};

    DesktopNotifications(platform::MainLoop& loop, const AppLog& log, std::function<void()> beep);
    ~DesktopNotifications() override;
    DesktopNotifications(const DesktopNotifications&) = delete;
    DesktopNotifications& operator=(const DesktopNotifications&) = delete;

    void requestAuthorization() override {}
    void checkAuthorization(std::function<void(bool)> done) override;
    void post(const std::string& title, const std::string& body) override;
    void beep() override;

private:
    struct PendingCall;
    bool connect();
    void process();
    void processLater();

    platform::MainLoop& loop_;
    const AppLog& log_;
    std::function<void()> beep_;
    sd_bus* bus_ = nullptr;  ///< owned
    bool connectFailed_ = false;
    Subscription watch_;
    platform::TimerHandle timeoutCheck_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace orvantis::freedesktop
