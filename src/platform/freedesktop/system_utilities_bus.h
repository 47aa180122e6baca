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

inline constexpr std::string_view kSystemUtilitiesInterface = "org.orvantis.Orvantis.SystemUtilities";
/// The error of a call whose feature is switched off in the settings.
inline constexpr std::string_view kFeatureDisabledError = "org.orvantis.Orvantis.Error.FeatureDisabled";
/// The error of a call that the desktop could not carry out (no power assertion, no keyboard).
inline constexpr std::string_view kUnavailableError = "org.orvantis.Orvantis.Error.Unavailable";

/// What one call answers: the reply text, or an error name and its message.
struct SystemUtilitiesAnswer {
    std::string text;
    std::string errorName;  ///< empty on success
    std::string errorMessage;
};

/// What the running program does for the calls; main thread, inside processBus().
struct SystemUtilitiesBusHandlers {
    /// Arms keep-awake by hand; `minutes` overrides the default duration when given.
    std::function<SystemUtilitiesAnswer(std::optional<int> minutes)> caffeineOn;
    std::function<SystemUtilitiesAnswer()> caffeineOff;
    /// The status line of `orvantis caffeine status`.
    std::function<SystemUtilitiesAnswer()> caffeineStatus;
    std::function<SystemUtilitiesAnswer()> lock;
};

/// The interface org.orvantis.Orvantis.SystemUtilities on /org/orvantis/Orvantis, on the
/// connection of the single-instance guard:
///
///     CaffeineOn(i minutes) -> s    arms keep-awake; minutes < 0 takes the default duration
///     CaffeineOff() -> s            disarms
///     CaffeineStatus() -> s         "active|inactive <TAB> seconds|- <TAB> held|released"
///     Lock()                        locks the keyboard for cleaning
///
/// The replies of On and Off are the status line after the change. Destroy it before the
/// guard; main thread only.
class SystemUtilitiesBusService {
public:
    /// Null when the guard has no bus connection or the export fails.
    static std::unique_ptr<SystemUtilitiesBusService> exportOn(SingleInstanceGuard& guard,
                                                               SystemUtilitiesBusHandlers handlers);
    ~SystemUtilitiesBusService();
    SystemUtilitiesBusService(const SystemUtilitiesBusService&) = delete;
    SystemUtilitiesBusService& operator=(const SystemUtilitiesBusService&) = delete;

private:
    explicit SystemUtilitiesBusService(SystemUtilitiesBusHandlers handlers) : handlers_(std::move(handlers)) {}
    friend struct SystemUtilitiesBusCalls;

    SystemUtilitiesBusHandlers handlers_;
    sd_bus_slot* slot_ = nullptr;  ///< owned
};

/// The running program's answer to the command line.
struct SystemUtilitiesReply {
    enum class Status { Answered, NotRunning, Failed };
    Status status = Status::NotRunning;
    std::string text;       ///< the reply, or why it failed
    std::string errorName;  ///< the bus error's name when Failed by the program's answer
};

/// Calls `method` ("CaffeineOn" with `minutes`, "CaffeineOff", "CaffeineStatus", "Lock") on the
/// running program, waiting at most `timeout`.
SystemUtilitiesReply callSystemUtilities(std::string_view method, std::optional<int> minutes,
                                         std::chrono::milliseconds timeout);

}  // namespace orvantis::freedesktop
