#include "core/utilities/scroll_reverser.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "core/log/app_logger.h"

namespace orvantis {
namespace {

constexpr std::uint32_t kAppleVendor = 1452;

std::string lowered(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(), [](unsigned char c) { return std::tolower(c); });
    return out;
}

const char* boolText(bool value) { return value ? "true" : "false"; }

}  // namespace

std::string_view toString(DeviceKind kind) {
    switch (kind) {
        case DeviceKind::wheelMouse: return "wheelMouse";
        case DeviceKind::magicMouse: return "magicMouse";
        case DeviceKind::trackpad: return "trackpad";
        case DeviceKind::unknown: break;
    }
    return "unknown";
}

DeviceKind classifyDevice(const platform::PointerDeviceInfo& device) {
    if (device.vendorID == kAppleVendor &&
        (device.productID == 781 || device.productID == 617 || device.productID == 620))
        return DeviceKind::magicMouse;
    const std::string name = lowered(device.product);
    if (name.find("magic mouse") != std::string::npos) return DeviceKind::magicMouse;
    if (name.find("trackpad") != std::string::npos || name.find("touchpad") != std::string::npos)
        return DeviceKind::trackpad;
    if (device.primaryUsagePage == 1 && device.primaryUsage == 2) return DeviceKind::wheelMouse;
    if (device.primaryUsagePage == 13) return DeviceKind::trackpad;
    return DeviceKind::unknown;
}

void ScrollAttribution::record(const platform::PointerDeviceInfo& device, double uptimeSeconds) {
    const DeviceKind kind = classifyDevice(device);
    if (kind == DeviceKind::unknown) return;
    lastDeviceKind_ = kind;
    lastDeviceTime_ = uptimeSeconds;
}

DeviceKind ScrollAttribution::classify(const ScrollEventFields& event, double uptimeSeconds) const {
    if (event.scrollPhase == 0 && event.momentumPhase == 0) return DeviceKind::wheelMouse;
    if (uptimeSeconds - lastDeviceTime_ < kAttributionWindowSeconds && lastDeviceKind_ == DeviceKind::magicMouse)
        return DeviceKind::magicMouse;
    return DeviceKind::trackpad;
}

bool ScrollEventFilter::reversed(DeviceKind kind) const {
    switch (kind) {
        case DeviceKind::trackpad: return settings_.reverseTrackpadScroll();
        case DeviceKind::wheelMouse: return settings_.reverseMouseScroll();
        case DeviceKind::magicMouse: return settings_.reverseMagicMouseScroll();
        case DeviceKind::unknown: break;
    }
    return false;
}

ScrollEventFields ScrollEventFilter::negated(const ScrollEventFields& event) {
    ScrollEventFields out = event;
    out.deltaAxis1 = -event.deltaAxis1;
    out.deltaAxis2 = -event.deltaAxis2;
    out.fixedPointDeltaAxis1 = -event.fixedPointDeltaAxis1;
    out.fixedPointDeltaAxis2 = -event.fixedPointDeltaAxis2;
    out.pointDeltaAxis1 = -event.pointDeltaAxis1;
    out.pointDeltaAxis2 = -event.pointDeltaAxis2;
    out.userData = kScrollEventMark;
    return out;
}

std::optional<ScrollEventFields> ScrollEventFilter::handle(const ScrollEventFields& event,
                                                           double uptimeSeconds) const {
    // Our own posted events come back through the filter: they pass as they are.
    if (event.userData == kScrollEventMark) return std::nullopt;
    if (!reversed(attribution_.classify(event, uptimeSeconds))) return std::nullopt;
    return negated(event);
}

ScrollReverserCoordinator::ScrollReverserCoordinator(AppSettings& settings, platform::PointerDevices* devices,
                                                     const LogCategory& log)
    : settings_(settings), devices_(devices), log_(log) {
    defaultsObserver_ = settings_.store().onChange([this](const std::vector<std::string>&) { applyState(); });
    if (devices_ != nullptr) devicesObserver_ = devices_->onDevicesChanged([this] { applyToDevices(); });
}

ScrollReverserCoordinator::~ScrollReverserCoordinator() = default;

void ScrollReverserCoordinator::applyState() {
    const Toggles toggles{settings_.reverseTrackpadScroll(), settings_.reverseMouseScroll(),
                          settings_.reverseMagicMouseScroll()};
    if (lastAppliedState_ && *lastAppliedState_ == toggles) return;
    lastAppliedState_ = toggles;
    if (!toggles.trackpad && !toggles.mouse && !toggles.magicMouse) {
        restoreDefaults();
        log_.info("scrollReverser: disabled (all toggles off)");
        return;
    }
    if (devices_ == nullptr) {
        log_.error("scrollReverser: this desktop cannot set the scroll direction of its devices");
    } else {
        applyToDevices();
    }
    log_.info(std::string("scrollReverser: active (trackpad=") + boolText(toggles.trackpad) +
              ", mouse=" + boolText(toggles.mouse) + ", magicMouse=" + boolText(toggles.magicMouse) + ")");
}

void ScrollReverserCoordinator::applyToDevices() {
    if (devices_ == nullptr || !lastAppliedState_) return;
    const Toggles& t = *lastAppliedState_;
    for (const auto& device : devices_->devices()) {
        const DeviceKind kind = classifyDevice(device);
        const bool reverse = (kind == DeviceKind::trackpad && t.trackpad) || (kind == DeviceKind::wheelMouse && t.mouse) ||
                             (kind == DeviceKind::magicMouse && t.magicMouse);
        const bool isChanged = changed_.contains(device.id);
        if (reverse == isChanged) continue;
        const bool natural = reverse ? !device.naturalScrollingDefault : device.naturalScrollingDefault;
        ++writes_;
        if (!devices_->setNaturalScrolling(device.id, natural)) continue;  // gone, or refused: logged there
        if (reverse) changed_[device.id] = device.naturalScrollingDefault;
        else changed_.erase(device.id);
    }
}

void ScrollReverserCoordinator::restoreDefaults() {
    if (devices_ == nullptr) {
        changed_.clear();
        return;
    }
    for (const auto& [id, natural] : changed_) {
        ++writes_;
        (void)devices_->setNaturalScrolling(id, natural);
    }
    changed_.clear();
}

}  // namespace orvantis
