#include "platform/sim/permissions.h"

namespace orvantis::sim {

bool Permissions::requestAccessibility() {
    ++accessibilityRequests_;
    if (grantAccessibilityOnRequest_) accessibility_ = true;
    return accessibility_;
}

bool Permissions::requestInputMonitoring() {
    ++inputMonitoringRequests_;
    if (grantInputMonitoringOnRequest_) inputMonitoring_ = true;
    return inputMonitoring_;
}

void Permissions::set(Kind kind, bool granted) { flag(kind) = granted; }

bool Permissions::has(Kind kind) const {
    return kind == Kind::accessibility ? accessibility_ : inputMonitoring_;
}

void Permissions::grantLater(Kind kind, platform::MainLoop& loop, platform::Duration delay) {
    auto& pending = kind == Kind::accessibility ? accessibilityGrant_ : inputMonitoringGrant_;
    pending = loop.postAfter(delay, [this, kind] { set(kind, true); });
}

void Permissions::setGrantOnRequest(Kind kind, bool grants) {
    (kind == Kind::accessibility ? grantAccessibilityOnRequest_ : grantInputMonitoringOnRequest_) = grants;
}

std::size_t Permissions::requestCount(Kind kind) const {
    return kind == Kind::accessibility ? accessibilityRequests_ : inputMonitoringRequests_;
}

}  // namespace orvantis::sim
