#pragma once

#include <functional>
#include <memory>

namespace orvantis {
class AppSettings;
class LogCategory;
}  // namespace orvantis
namespace orvantis::platform {
class Clock;
}
namespace orvantis::freedesktop {
class SingleInstanceGuard;
class SystemUtilitiesBusService;
}  // namespace orvantis::freedesktop

namespace orvantis::app {

class SystemUtilitiesAssembly;

/// Puts keep-awake and the keyboard lock on the session bus for `orvantis caffeine` and
/// `orvantis lock`. `utilities` and `settings` answer those of the moment, or null: the calls
/// then get an error reply. Null when the guard has no bus. Keep the result no longer than
/// the guard; main thread only.
std::unique_ptr<freedesktop::SystemUtilitiesBusService> exportSystemUtilitiesOnBus(
    freedesktop::SingleInstanceGuard& guard, std::function<SystemUtilitiesAssembly*()> utilities,
    std::function<AppSettings*()> settings, const platform::Clock& clock, const LogCategory& log);

}  // namespace orvantis::app
