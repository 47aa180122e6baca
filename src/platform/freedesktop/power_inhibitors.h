#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "platform/system_utilities.h"

struct sd_bus;

namespace orvantis {
class LogCategory;
}

namespace orvantis::freedesktop {

/// Where the services are asked; tests point them at stand-ins.
inline constexpr std::string_view kScreenSaverService = "org.freedesktop.ScreenSaver";
inline constexpr std::string_view kLogindService = "org.freedesktop.login1";

/// Keeps the display awake through the session's screen saver service
/// (org.freedesktop.ScreenSaver.Inhibit, its cookie given back with UnInhibit), plus an `idle`
/// inhibitor of the login manager where there is one, held as its file descriptor. Each
/// assertion opens its own calls; the buses are connected at the first assertion. Failures are
/// logged with their reason ("caffeine: ..."): no session bus, no screen saver service. Without
/// the login manager the screen saver alone holds. Main thread only; calls block at most
/// `timeout` each.
class ScreenSaverInhibitor final : public platform::PowerAssertions {
public:
    explicit ScreenSaverInhibitor(const LogCategory& log, std::chrono::milliseconds timeout = std::chrono::seconds(2));
    ~ScreenSaverInhibitor() override;
    ScreenSaverInhibitor(const ScreenSaverInhibitor&) = delete;
    ScreenSaverInhibitor& operator=(const ScreenSaverInhibitor&) = delete;

    /// Answers 0, or a positive errno-style number when the screen saver refused.
    int create(std::string_view name, std::uint32_t& id) override;
    int release(std::uint32_t id) override;

private:
    struct Held {
        std::uint32_t cookie = 0;
        int idleFd = -1;
    };
    const LogCategory& log_;
    std::chrono::milliseconds timeout_;
    std::map<std::uint32_t, Held> held_;
    /// The connection of each held cookie: the screen saver forgets a closed connection's.
    std::map<std::uint32_t, sd_bus*> sessionBuses_;  ///< owned
    std::uint32_t nextId_ = 1;
};

/// Lid-close sleep through the login manager: setDisableSleep(true) takes a
/// `handle-lid-switch` inhibitor in `block` mode and holds its file descriptor, false closes
/// it. Nothing has to be installed and nobody is asked: provision() answers whether the login
/// manager grants that inhibitor here (taking one and letting it go at once), deprovision()
/// lets go of a held one. Main thread only.
class LogindLidInhibitor final : public platform::LidSleepControl {
public:
    explicit LogindLidInhibitor(const LogCategory& log, std::chrono::milliseconds timeout = std::chrono::seconds(2));
    ~LogindLidInhibitor() override;
    LogindLidInhibitor(const LogindLidInhibitor&) = delete;
    LogindLidInhibitor& operator=(const LogindLidInhibitor&) = delete;

    bool setDisableSleep(bool disable) override;
    bool provision() override;
    bool deprovision() override;
    bool holding() const { return fd_ >= 0; }

private:
    const LogCategory& log_;
    std::chrono::milliseconds timeout_;
    int fd_ = -1;
};

/// Takes a login manager inhibitor on the system bus; the descriptor (owned by the caller), or
/// -1 with the reason in `error`.
int takeLogindInhibitor(std::string_view what, std::string_view why, std::string_view mode,
                        std::chrono::milliseconds timeout, std::string& error);

}  // namespace orvantis::freedesktop
