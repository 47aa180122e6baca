#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sd_bus_slot;

namespace orvantis::freedesktop {

class SingleInstanceGuard;

inline constexpr std::string_view kShellInterface = "org.orvantis.Orvantis.Shell";
/// The error of a Show() for a window the program does not know.
inline constexpr std::string_view kShellUnknownWindowError = "org.orvantis.Orvantis.Error.UnknownWindow";

/// The object /org/orvantis/Orvantis with the interface org.orvantis.Orvantis.Shell on the
/// guard's connection: Show(s window) opens "settings", "onboarding", "help", "overlay" or "feedback", or
/// raises it when it is open. `show` answers an error text for a window it does not know, nullopt
/// when done; it is called on the main thread. Destroy the service before the guard.
class ShellBusService {
public:
    using ShowHandler = std::function<std::optional<std::string>(std::string_view window)>;

    /// Null when the guard has no bus connection or the export fails.
    static std::unique_ptr<ShellBusService> exportOn(SingleInstanceGuard& guard, ShowHandler show);
    ~ShellBusService();
    ShellBusService(const ShellBusService&) = delete;
    ShellBusService& operator=(const ShellBusService&) = delete;

private:
    explicit ShellBusService(ShowHandler show) : show_(std::move(show)) {}
    friend struct ShellBusCalls;

    ShowHandler show_;
    sd_bus_slot* slot_ = nullptr;  ///< owned
};

/// The running program's answer to `orvantis show`.
struct ShellBusReply {
    enum class Status { Answered, NotRunning, Failed };
    Status status = Status::NotRunning;
    std::string text;  ///< why the call failed
};

/// Calls Show(`window`) on the running program, waiting at most `timeout`.
ShellBusReply callRunningShell(std::string_view window, std::chrono::milliseconds timeout,
                               std::string_view busName = "org.orvantis.Orvantis");

}  // namespace orvantis::freedesktop
