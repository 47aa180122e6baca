#include "core/permissions/permissions_manager.h"

namespace orvantis {

void PermissionsManager::requestMissing() {
    if (!hasAccessibility()) permissions_.requestAccessibility();
    if (!hasInputMonitoring()) permissions_.requestInputMonitoring();
}

void PermissionsManager::openSettingsForMissing() {
    if (!hasAccessibility()) {
        permissions_.openAccessibilitySettings();
    } else if (!hasInputMonitoring()) {
        permissions_.openInputMonitoringSettings();
    }
}

}  // namespace orvantis
