#include "core/outreach/launch_at_login_manager.h"

#include <algorithm>
#include <string>
#include <vector>

#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "platform/login_item.h"

namespace orvantis {

LaunchAtLoginManager::LaunchAtLoginManager(platform::LoginItem& item, AppSettings& settings, const LogCategory& log)
    : item_(item), settings_(settings), log_(log) {
    // The preference's setter: whoever writes the value, the item follows it.
    preferenceChanges_ = settings_.store().onChange([this](const std::vector<std::string>& keys) {
        if (std::find(keys.begin(), keys.end(), settings::kLaunchAtLogin.key) == keys.end()) return;
        setEnabled(settings_.launchAtLogin());
    });
}

void LaunchAtLoginManager::setEnabled(bool enabled) {
    const auto failure = enabled ? item_.registerItem() : item_.unregisterItem();
    if (failure) {
        log_.error(std::string("failed to ") + (enabled ? "register" : "unregister") + ": " + *failure);
        return;
    }
    log_.info(std::string(enabled ? "registered" : "unregistered") + " with the autostart entry");
}

bool LaunchAtLoginManager::isEnabled() const { return item_.isEnabled(); }

void LaunchAtLoginManager::syncWithAppSettings() {
    const bool registered = isEnabled();
    if (registered == settings_.launchAtLogin()) return;
    settings_.setLaunchAtLogin(registered);
}

}  // namespace orvantis
