#pragma once

#include <array>
#include <functional>
#include <string_view>

#include "platform/subscription.h"

namespace orvantis {

/// The system-wide notifications, posted with no object and no extra information.
enum class AppNotification {
    noOppositeSource,         ///< no second input source to switch to
    clearedWarning,           ///< a switch succeeded again after that warning
    settingsLanguageChanged,  ///< the settings window saved another interface language
    menuBarNeedsRebuild,      ///< the settings window saved
};

inline constexpr AppNotification orvantisNoOppositeSource = AppNotification::noOppositeSource;
inline constexpr AppNotification orvantisClearedWarning = AppNotification::clearedWarning;
inline constexpr AppNotification orvantisSettingsLanguageChanged = AppNotification::settingsLanguageChanged;
inline constexpr AppNotification orvantisMenuBarNeedsRebuild = AppNotification::menuBarNeedsRebuild;

/// The notification's name string ("MOLVEX.Orvantis.noOppositeSource").
constexpr std::string_view notificationName(AppNotification notification) {
    switch (notification) {
        case AppNotification::noOppositeSource: return "MOLVEX.Orvantis.noOppositeSource";
        case AppNotification::clearedWarning: return "MOLVEX.Orvantis.clearedWarning";
        case AppNotification::settingsLanguageChanged: return "MOLVEX.Orvantis.settingsLanguageChanged";
        case AppNotification::menuBarNeedsRebuild: return "MOLVEX.Orvantis.menuBarNeedsRebuild";
    }
    return {};
}

/// Delivers notifications to their observers, synchronously, on the thread that posts (the main
/// thread in practice). Owned by the composition root and injected into posters and observers.
class NotificationCenter {
public:
    void post(AppNotification notification) const { lists_[index(notification)].notify(); }
    [[nodiscard]] Subscription observe(AppNotification notification, std::function<void()> handler) {
        return lists_[index(notification)].add(std::move(handler));
    }

private:
    static constexpr std::size_t index(AppNotification n) { return static_cast<std::size_t>(n); }
    std::array<CallbackList<>, 4> lists_;
};

}  // namespace orvantis
