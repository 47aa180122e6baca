#pragma once

#include <chrono>
#include <cstdint>

namespace orvantis {

/// 2001-01-01 00:00:00 UTC in seconds since the Unix epoch: the origin of the moments that the
/// product's files store as a double.
inline constexpr std::int64_t kReferenceDateUnixSeconds = 978307200;

/// `time` as seconds since 2001-01-01 00:00:00 UTC, with the clock's sub-second precision.
double secondsSinceReferenceDate(std::chrono::system_clock::time_point time);

/// The moment `seconds` after 2001-01-01 00:00:00 UTC.
std::chrono::system_clock::time_point timeFromReferenceDate(double seconds);

}  // namespace orvantis
