#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string_view>

#include "core/settings/app_settings.h"
#include "platform/subscription.h"
#include "platform/system_utilities.h"

namespace orvantis {

class LogCategory;

/// The classes of pointing device whose scroll direction is chosen separately.
enum class DeviceKind { wheelMouse, magicMouse, trackpad, unknown };
std::string_view toString(DeviceKind kind);

/// The class of a device from its vendor, product, name and HID usage; touch pads count as
/// trackpads.
DeviceKind classifyDevice(const platform::PointerDeviceInfo& device);

/// The fields of one scroll event that the reverser reads or writes, by their meaning. A
/// desktop that hands scroll events to a filter fills this record from its own event.
struct ScrollEventFields {
    std::int64_t userData = 0;
    bool continuous = false;
    std::int64_t deltaAxis1 = 0, deltaAxis2 = 0;                ///< lines
    double fixedPointDeltaAxis1 = 0, fixedPointDeltaAxis2 = 0;  ///< fixed-point lines
    double pointDeltaAxis1 = 0, pointDeltaAxis2 = 0;            ///< pixels
    std::int64_t scrollPhase = 0;    ///< 0: no gesture
    std::int64_t momentumPhase = 0;  ///< 0: no momentum
    bool operator==(const ScrollEventFields&) const = default;
};

/// The mark of every event the reverser posts: the bytes ORVSCROL, O most significant.
inline constexpr std::int64_t kScrollEventMark = 0x4F52565343524F4C;

/// Which device a scroll event came from. The event itself doesn't tell, so each device's
/// report is recorded, and a gesture within 0.15 s of a Magic Mouse report is the mouse's.
class ScrollAttribution {
public:
    static constexpr double kAttributionWindowSeconds = 0.15;
    /// A device reported at `uptimeSeconds`; unknown devices are not recorded.
    void record(const platform::PointerDeviceInfo& device, double uptimeSeconds);
    /// wheelMouse for an event without phases; else magicMouse when one reported strictly less
    /// than 0.15 s before, else trackpad. Never unknown.
    DeviceKind classify(const ScrollEventFields& event, double uptimeSeconds) const;

private:
    DeviceKind lastDeviceKind_ = DeviceKind::unknown;
    double lastDeviceTime_ = 0;
};

/// The scroll filter: decides for each event whether it passes as it is or is replaced by its
/// negated copy. Reads the three settings at each event; main thread only.
class ScrollEventFilter {
public:
    explicit ScrollEventFilter(const AppSettings& settings) : settings_(settings) {}
    ScrollAttribution& attribution() { return attribution_; }
    /// nullopt: the event passes unchanged (ours, or its class isn't reversed). Otherwise the
    /// replacement to post, which swallows the original.
    std::optional<ScrollEventFields> handle(const ScrollEventFields& event, double uptimeSeconds) const;
    /// The replacement: every delta negated, the continuous flag and the phases kept, marked.
    static ScrollEventFields negated(const ScrollEventFields& event);
    bool reversed(DeviceKind kind) const;

private:
    const AppSettings& settings_;
    ScrollAttribution attribution_;
};

/// Scroll direction per class of device on a desktop where direction is a property of each
/// device: a device of a reversed class gets the opposite of its own default, the others their
/// default, and every device its default again when the program ends. New devices are handled
/// when they appear. Watches the settings store, and does nothing when none of the three
/// toggles changed. Borrows its collaborators; main thread only.
class ScrollReverserCoordinator {
public:
    /// `devices` may be null: the desktop cannot set scroll direction, which applyState() logs.
    ScrollReverserCoordinator(AppSettings& settings, platform::PointerDevices* devices, const LogCategory& log);
    ~ScrollReverserCoordinator();
    ScrollReverserCoordinator(const ScrollReverserCoordinator&) = delete;
    ScrollReverserCoordinator& operator=(const ScrollReverserCoordinator&) = delete;

    /// Brings the devices in line with the settings, unless the three toggles are as before.
    void applyState();
    /// Every device it changed back to its default (the end sequence).
    void restoreDefaults();
    /// How many device writes were made, for tests.
    int writes() const { return writes_; }

private:
    struct Toggles {
        bool trackpad, mouse, magicMouse;
        bool operator==(const Toggles&) const = default;
    };
    void applyToDevices();

    AppSettings& settings_;
    platform::PointerDevices* devices_;
    const LogCategory& log_;
    std::optional<Toggles> lastAppliedState_;
    /// The devices set away from their default: id and default.
    std::map<std::int64_t, bool> changed_;
    int writes_ = 0;
    Subscription defaultsObserver_;
    Subscription devicesObserver_;
};

}  // namespace orvantis
