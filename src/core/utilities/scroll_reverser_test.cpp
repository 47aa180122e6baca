#include "core/utilities/scroll_reverser.h"

#include <gtest/gtest.h>

#include <map>

#include "testing/utilities_test_support.h"

namespace orvantis {
namespace {

using namespace utilities_testing;
using platform::PointerDeviceInfo;

PointerDeviceInfo device(std::int64_t id, std::uint32_t vendor, std::uint32_t product, std::string name,
                         std::uint32_t page, std::uint32_t usage, bool naturalDefault = false) {
    return PointerDeviceInfo{id, vendor, product, std::move(name), page, usage, naturalDefault};
}

const PointerDeviceInfo kMagicMouse = device(1, 1452, 781, "Mouse", 1, 2);
const PointerDeviceInfo kTouchpad = device(2, 1267, 12, "ELAN Touchpad", 1, 2, true);
const PointerDeviceInfo kWheelMouse = device(3, 1133, 49271, "USB Optical Mouse", 1, 2);

ScrollEventFields gesture(std::int64_t phase = 1) {
    ScrollEventFields e;
    e.scrollPhase = phase;
    e.deltaAxis1 = 2;
    e.pointDeltaAxis1 = 12;
    e.fixedPointDeltaAxis1 = 2.5;
    e.continuous = true;
    return e;
}

class ScrollReverserTest : public ::testing::Test, protected UtilitiesFixture {};

TEST_F(ScrollReverserTest, ClassifyDevice) {
    EXPECT_EQ(classifyDevice(kMagicMouse), DeviceKind::magicMouse);
    EXPECT_EQ(classifyDevice(kTouchpad), DeviceKind::trackpad);
    EXPECT_EQ(classifyDevice(kWheelMouse), DeviceKind::wheelMouse);
    EXPECT_EQ(classifyDevice(device(9, 0, 0, "Apple Internal Trackpad", 0, 0)), DeviceKind::trackpad);
    EXPECT_EQ(classifyDevice(device(9, 0, 0, "pad", 13, 5)), DeviceKind::trackpad);
}

TEST_F(ScrollReverserTest, AnUnlistedAppleProductNamedMagicMouseIsOneByName) {
    EXPECT_EQ(classifyDevice(device(4, 1452, 999, "Jane's Magic Mouse 2", 1, 2)), DeviceKind::magicMouse);
    EXPECT_EQ(classifyDevice(device(4, 1452, 999, "Keyboard", 1, 6)), DeviceKind::unknown);
}

TEST_F(ScrollReverserTest, ADeviceOfUsagePage1Usage6IsNotRecorded) {
    ScrollAttribution attribution;
    attribution.record(kMagicMouse, 10.0);
    attribution.record(device(5, 1, 1, "Keyboard", 1, 6), 10.05);
    EXPECT_EQ(attribution.classify(gesture(), 10.1), DeviceKind::magicMouse);
}

TEST_F(ScrollReverserTest, AGestureAfterAMagicMouseReportIsTheMouseOnlyStrictlyWithin150ms) {
    ScrollAttribution attribution;
    attribution.record(kMagicMouse, 10.0);
    EXPECT_EQ(attribution.classify(gesture(), 10.1), DeviceKind::magicMouse);
    EXPECT_EQ(attribution.classify(gesture(), 10.2), DeviceKind::trackpad);
    // Exactly 0.15 s after a report (at uptime 0, so the difference is exact): a trackpad.
    ScrollAttribution atStart;
    atStart.record(kMagicMouse, 0.0);
    EXPECT_EQ(atStart.classify(gesture(), 0.149), DeviceKind::magicMouse);
    EXPECT_EQ(atStart.classify(gesture(), ScrollAttribution::kAttributionWindowSeconds), DeviceKind::trackpad);
    EXPECT_EQ(attribution.classify(ScrollEventFields{}, 10.05), DeviceKind::wheelMouse);
}

TEST_F(ScrollReverserTest, PostedEventsComeBackAndTheMarkPassesThem) {
    settings.setReverseMouseScroll(true);
    ScrollEventFilter filter(settings);
    ScrollEventFields wheel;
    wheel.deltaAxis1 = 3;
    const auto replacement = filter.handle(wheel, 1.0);
    ASSERT_TRUE(replacement);
    EXPECT_EQ(replacement->userData, kScrollEventMark);
    EXPECT_FALSE(filter.handle(*replacement, 1.0));
    EXPECT_EQ(kScrollEventMark, 0x4F52565343524F4C);  // "ORVSCROL"
}

TEST_F(ScrollReverserTest, WithTheTrackpadOffAndTheMagicMouseOnTrackpadEventsPass) {
    settings.setReverseMagicMouseScroll(true);
    ScrollEventFilter filter(settings);
    EXPECT_FALSE(filter.handle(gesture(), 5.0));
    filter.attribution().record(kMagicMouse, 5.0);
    EXPECT_TRUE(filter.handle(gesture(), 5.1));
}

TEST_F(ScrollReverserTest, ALineDeltaOf3Becomes3NegatedWithPointAndFixedPointAndTheFlagKept) {
    ScrollEventFields e;
    e.deltaAxis1 = 3;
    e.pointDeltaAxis1 = 30;
    e.pointDeltaAxis2 = -4;
    e.fixedPointDeltaAxis1 = 3.0;
    e.continuous = true;
    e.momentumPhase = 2;
    const ScrollEventFields n = ScrollEventFilter::negated(e);
    EXPECT_EQ(n.deltaAxis1, -3);
    EXPECT_EQ(n.pointDeltaAxis1, -30);
    EXPECT_EQ(n.pointDeltaAxis2, 4);
    EXPECT_EQ(n.fixedPointDeltaAxis1, -3.0);
    EXPECT_TRUE(n.continuous);
    EXPECT_EQ(n.momentumPhase, 2);
}

TEST_F(ScrollReverserTest, ReversedClassesGetTheOppositeOfTheirDefaultAndQuitRestoresThem) {
    FakeDevices devices;
    devices.list = {kTouchpad, kWheelMouse};
    ScrollReverserCoordinator coordinator(settings, &devices, logger.log().app);
    coordinator.applyState();
    EXPECT_TRUE(logged("info scrollReverser: disabled (all toggles off)"));
    EXPECT_EQ(devices.writes, 0);
    settings.setReverseTrackpadScroll(true);
    EXPECT_FALSE(devices.natural(kTouchpad.id));  // its default is natural
    EXPECT_FALSE(devices.natural(kWheelMouse.id));
    EXPECT_TRUE(logged("info scrollReverser: active (trackpad=true, mouse=false, magicMouse=false)"));
    settings.setReverseMouseScroll(true);
    EXPECT_TRUE(devices.natural(kWheelMouse.id));
    settings.setReverseTrackpadScroll(false);
    EXPECT_TRUE(devices.natural(kTouchpad.id));
    coordinator.restoreDefaults();
    EXPECT_FALSE(devices.natural(kWheelMouse.id));
}

TEST_F(ScrollReverserTest, ChangingAnUnrelatedSettingDoesNotTouchTheDevices) {
    FakeDevices devices;
    devices.list = {kTouchpad, kWheelMouse};
    settings.setReverseMouseScroll(true);
    ScrollReverserCoordinator coordinator(settings, &devices, logger.log().app);
    coordinator.applyState();
    const int writes = devices.writes;
    const std::size_t lines = logLines.size();
    settings.setSwitchDelayMs(40);
    settings.setCaffeineEnabled(false);
    EXPECT_EQ(devices.writes, writes);
    EXPECT_EQ(logLines.size(), lines);
}

TEST_F(ScrollReverserTest, NewDevicesAreHandledAndAVanishedOneIsNoCrash) {
    FakeDevices devices;
    devices.list = {kTouchpad, kWheelMouse};
    settings.setReverseMagicMouseScroll(true);
    ScrollReverserCoordinator coordinator(settings, &devices, logger.log().app);
    coordinator.applyState();
    devices.list.push_back(kMagicMouse);
    devices.changed.notify();
    EXPECT_TRUE(devices.natural(kMagicMouse.id));
    devices.list.pop_back();
    devices.changed.notify();
    coordinator.restoreDefaults();  // the write to the vanished device fails quietly
    EXPECT_EQ(devices.writes, 2);
}

TEST_F(ScrollReverserTest, WithoutDeviceControlTheLogSaysWhy) {
    settings.setReverseMouseScroll(true);
    ScrollReverserCoordinator coordinator(settings, nullptr, logger.log().app);
    coordinator.applyState();
    EXPECT_TRUE(logged("error scrollReverser: this desktop cannot set the scroll direction of its devices"));
}

}  // namespace
}  // namespace orvantis
