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

inline constexpr std::string_view kPomodoroInterface = "org.orvantis.Orvantis.Pomodoro";
/// The error of a call the Pomodoro refuses (turned off in the settings).
inline constexpr std::string_view kPomodoroRefusedError = "org.orvantis.Orvantis.Error.PomodoroRefused";

/// What the running program does for the calls; called on the main thread.
struct PomodoroBusHandlers {
    /// Runs one of "start", "stop", "pause", "resume", "skip", "reset"; an error text when the
    /// Pomodoro refuses, nullopt when done.
    std::function<std::optional<std::string>(std::string_view action)> act;
    /// The status line (see the command's help).
    std::function<std::string()> status;
};

/// The object /org/orvantis/Orvantis with the interface org.orvantis.Orvantis.Pomodoro on the
/// guard's connection: Start(), Stop(), Pause(), Resume(), Skip(), Reset() and Status() -> s.
/// A refusal gives org.orvantis.Orvantis.Error.PomodoroRefused with its reason. Destroy it
/// before the guard. Main thread only.
class PomodoroBusService {
public:
    /// Null when the guard has no bus connection or the export fails.
    static std::unique_ptr<PomodoroBusService> exportOn(SingleInstanceGuard& guard, PomodoroBusHandlers handlers);
    ~PomodoroBusService();
    PomodoroBusService(const PomodoroBusService&) = delete;
    PomodoroBusService& operator=(const PomodoroBusService&) = delete;

private:
    explicit PomodoroBusService(PomodoroBusHandlers handlers) : handlers_(std::move(handlers)) {}
    friend struct PomodoroBusCalls;

    PomodoroBusHandlers handlers_;
    sd_bus_slot* slot_ = nullptr;  ///< owned
};

/// The running program's answer to the command line.
struct PomodoroBusReply {
    enum class Status { Answered, NotRunning, Failed };
    Status status = Status::NotRunning;
    std::string text;  ///< Status()'s line, or why the call failed
};

/// Calls `method` ("Start" … "Status") on the running program, waiting at most `timeout`.
PomodoroBusReply callRunningPomodoro(std::string_view method, std::chrono::milliseconds timeout,
                                     std::string_view busName = "org.orvantis.Orvantis");

}  // namespace orvantis::freedesktop
