#include "app/system_utilities_bus_export.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "app/system_utilities_assembly.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/utilities/caffeine_coordinator.h"
#include "core/utilities/keyboard_lock_coordinator.h"
#include "platform/clock.h"
#include "platform/freedesktop/system_utilities_bus.h"

namespace orvantis::app {
namespace {

using Answer = freedesktop::SystemUtilitiesAnswer;

Answer failure(std::string_view name, std::string message) {
    return Answer{{}, std::string(name), std::move(message)};
}

std::string statusOf(const CaffeineCoordinator& caffeine, const platform::Clock& clock) {
    std::optional<long long> left;
    if (caffeine.isActive() && caffeine.deadline()) {
        // Whole seconds, rounded up as the keyboard lock's countdown is: 1800 just after an arm
        // of 30 minutes, 1 in its last second.
        const auto rest = std::chrono::ceil<std::chrono::seconds>(*caffeine.deadline() - clock.wallNow());
        left = std::max<long long>(0, rest.count());
    }
    return caffeineStatusLine(caffeine.isActive(), left, caffeine.assertionHeld());
}

}  // namespace

std::unique_ptr<freedesktop::SystemUtilitiesBusService> exportSystemUtilitiesOnBus(
    freedesktop::SingleInstanceGuard& guard, std::function<SystemUtilitiesAssembly*()> utilities,
    std::function<AppSettings*()> settings, const platform::Clock& clock, const LogCategory& log) {
    freedesktop::SystemUtilitiesBusHandlers handlers;
    const auto missing = [] {
        return failure(freedesktop::kUnavailableError, "Orvantis runs without its system utilities");
    };
    handlers.caffeineOn = [=, &clock](std::optional<int> minutes) {
        SystemUtilitiesAssembly* u = utilities();
        AppSettings* s = settings();
        if (u == nullptr || s == nullptr) return missing();
        if (!s->caffeineEnabled())
            return failure(freedesktop::kFeatureDisabledError, "keep-awake (Caffeine) is switched off in the settings");
        u->caffeine().start(minutes, "command-line");
        if (!u->caffeine().isActive())
            return failure(freedesktop::kUnavailableError,
                           "the computer cannot be kept awake here (the log says why)");
        return Answer{statusOf(u->caffeine(), clock), {}, {}};
    };
    handlers.caffeineOff = [=, &clock] {
        SystemUtilitiesAssembly* u = utilities();
        if (u == nullptr) return missing();
        u->caffeine().stop("command-line");
        return Answer{statusOf(u->caffeine(), clock), {}, {}};
    };
    handlers.caffeineStatus = [=, &clock] {
        SystemUtilitiesAssembly* u = utilities();
        if (u == nullptr) return missing();
        return Answer{statusOf(u->caffeine(), clock), {}, {}};
    };
    handlers.lock = [=] {
        SystemUtilitiesAssembly* u = utilities();
        AppSettings* s = settings();
        if (u == nullptr || s == nullptr) return missing();
        if (u->keyboardLock() == nullptr)
            return failure(freedesktop::kUnavailableError, "the keyboard cannot be watched, so it cannot be locked");
        if (!s->keyboardLockEnabled())
            return failure(freedesktop::kFeatureDisabledError, "the keyboard lock is switched off in the settings");
        u->keyboardLock()->lock("command-line");
        return Answer{};
    };
    auto service = freedesktop::SystemUtilitiesBusService::exportOn(guard, std::move(handlers));
    if (service) log.info("caffeine: keep-awake and the keyboard lock answer on the session bus");
    return service;
}

}  // namespace orvantis::app
