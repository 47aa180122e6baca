#pragma once

#include <chrono>

namespace orvantis::platform {

/// Where the system reads time. Tests inject a virtual clock that only moves when told.
/// Thread-safe.
class Clock {
public:
    virtual ~Clock() = default;
    /// Time for intervals and time-outs; never jumps.
    virtual std::chrono::steady_clock::time_point monotonicNow() const = 0;
    /// Calendar time for stamps, day boundaries and file dates.
    virtual std::chrono::system_clock::time_point wallNow() const = 0;
};

/// The real clocks of the machine.
class SystemClock final : public Clock {
public:
    std::chrono::steady_clock::time_point monotonicNow() const override {
        return std::chrono::steady_clock::now();
    }
    std::chrono::system_clock::time_point wallNow() const override {
        return std::chrono::system_clock::now();
    }
};

}  // namespace orvantis::platform
