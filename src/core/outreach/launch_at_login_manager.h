#pragma once

#include "platform/subscription.h"

namespace orvantis {
class AppSettings;
class LogCategory;
}  // namespace orvantis
namespace orvantis::platform {
class LoginItem;
}

namespace orvantis {

/// Keeps the preference `launchAtLogin` and the desktop's login item in step. Every write of
/// the preference (the tray menu's row, the settings window's Save, `orvantis settings set`
/// seen through the preference file) registers or unregisters the item with the same value;
/// at launch the item's state wins over the preference, as the user may have changed it in the
/// desktop's settings. Failures only log: the preference is never rolled back and nobody is
/// told. Borrows everything; owned by the composition root. Main thread only.
class LaunchAtLoginManager {
public:
    /// Starts following the preference; `log` is the Launch category.
    LaunchAtLoginManager(platform::LoginItem& item, AppSettings& settings, const LogCategory& log);

    /// Registers (true) or unregisters (false) the login item and logs the outcome.
    void setEnabled(bool enabled);
    /// True when the desktop starts Orvantis at login.
    bool isEnabled() const;
    /// Once at launch: when the item's state differs from the preference, the preference takes
    /// the item's state through its setter (which registers again with that value).
    void syncWithAppSettings();

private:
    platform::LoginItem& item_;
    AppSettings& settings_;
    const LogCategory& log_;
    Subscription preferenceChanges_;
};

}  // namespace orvantis
