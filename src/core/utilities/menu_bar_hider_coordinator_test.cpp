#include "core/utilities/menu_bar_hider_coordinator.h"

#include <gtest/gtest.h>

#include <chrono>

#include "testing/utilities_test_support.h"
#include "platform/key_output.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using namespace utilities_testing;
namespace key_flags = platform::key_flags;

class FakeItems final : public MenuBarHiderItems {
public:
    void install(std::function<void()> chevron, std::function<void()> separator) override {
        ++installs;
        present = true;
        onChevron = std::move(chevron);
        onSeparator = std::move(separator);
    }
    void remove() override {
        present = false;
        ++removals;
    }
    void setSeparatorLength(double points) override { length = points; }
    void setChevronCollapsed(bool c) override { chevronCollapsed = c; }
    int installs = 0, removals = 0;
    bool present = false, chevronCollapsed = false;
    double length = 0;
    std::function<void()> onChevron, onSeparator;
};

class MenuBarHiderCoordinatorTest : public ::testing::Test, protected UtilitiesFixture {
protected:
    void hotkey() {
        desktop.press(11, key_flags::kControl | key_flags::kShift);  // B with Control and Shift
        settle();
    }
    FakeItems items_;
    MenuBarHiderCoordinator coordinator_{settings, &items_, &monitor, desktop.loop(), logger.log().app};
};

TEST_F(MenuBarHiderCoordinatorTest, TogglingWithTheFeatureOffDoesNothingAlsoByHotkey) {
    coordinator_.applyState();
    hotkey();
    coordinator_.toggle("click-chevron");
    EXPECT_FALSE(settings.menuBarHiderCollapsed());
    EXPECT_EQ(items_.installs, 0);
    EXPECT_TRUE(logged("info menuBarHider: disabled"));
}

TEST_F(MenuBarHiderCoordinatorTest, TheHotkeyDoesNothingOnceTheFeatureIsOffEvenBeforeItsItemsGo) {
    settings.setMenuBarHiderEnabled(true);
    coordinator_.applyState();
    settings.setMenuBarHiderEnabled(false);
    hotkey();
    EXPECT_FALSE(settings.menuBarHiderCollapsed());
}

TEST_F(MenuBarHiderCoordinatorTest, TheHotkeyAndClicksToggle) {
    settings.setMenuBarHiderEnabled(true);
    coordinator_.applyState();
    EXPECT_EQ(items_.length, 22);
    hotkey();
    EXPECT_EQ(items_.length, 10000);
    EXPECT_TRUE(items_.chevronCollapsed);
    EXPECT_TRUE(logged("info menuBarHider: collapsed via hotkey"));
    items_.onSeparator();
    EXPECT_TRUE(logged("info menuBarHider: expanded via click-separator"));
}

TEST_F(MenuBarHiderCoordinatorTest, AnAutoCollapseOf0LeavesTheIconsShown) {
    settings.setMenuBarHiderEnabled(true);
    coordinator_.applyState();
    EXPECT_FALSE(coordinator_.autoCollapsePending());
    desktop.loop().runFor(1h);
    EXPECT_FALSE(settings.menuBarHiderCollapsed());
}

TEST_F(MenuBarHiderCoordinatorTest, OffWhileCollapsedRemovesTheItemsAndOnAgainStartsCollapsed) {
    settings.setMenuBarHiderEnabled(true);
    coordinator_.applyState();
    items_.onChevron();
    settings.setMenuBarHiderEnabled(false);
    coordinator_.applyState();
    EXPECT_FALSE(items_.present);
    settings.setMenuBarHiderEnabled(true);
    coordinator_.applyState();
    EXPECT_TRUE(items_.present);
    EXPECT_EQ(items_.length, 10000);
    EXPECT_TRUE(logged("info menuBarHider: enabled (collapsed=true, autoCollapseSec=0)"));
}

TEST_F(MenuBarHiderCoordinatorTest, AStored1000SecondsWaits300) {
    settings.store().set("MOLVEX.Orvantis.menuBarHiderAutoCollapseSec", PreferenceValue(std::int64_t{1000}));
    settings.setMenuBarHiderEnabled(true);
    coordinator_.applyState();
    desktop.loop().runFor(299s);
    EXPECT_FALSE(settings.menuBarHiderCollapsed());
    desktop.loop().runFor(1s);
    EXPECT_TRUE(settings.menuBarHiderCollapsed());
    EXPECT_TRUE(logged("info menuBarHider: auto-collapsed after 300s"));
}

TEST_F(MenuBarHiderCoordinatorTest, ApplyStateTwiceAddsNoSecondPairAndRestartsTheTimer) {
    settings.setMenuBarHiderEnabled(true);
    settings.setMenuBarHiderAutoCollapseSeconds(10);
    coordinator_.applyState();
    desktop.loop().runFor(8s);
    coordinator_.applyState();
    EXPECT_EQ(items_.installs, 1);
    desktop.loop().runFor(8s);
    EXPECT_FALSE(settings.menuBarHiderCollapsed());
    desktop.loop().runFor(2s);
    EXPECT_TRUE(settings.menuBarHiderCollapsed());
}

TEST_F(MenuBarHiderCoordinatorTest, WithoutAHostThatCanHideTheHotkeyDoesNothing) {
    settings.setMenuBarHiderEnabled(true);
    MenuBarHiderCoordinator hostless{settings, nullptr, &monitor, desktop.loop(), logger.log().app};
    hostless.applyState();
    hotkey();
    EXPECT_FALSE(settings.menuBarHiderCollapsed());
    EXPECT_TRUE(logged("info menuBarHider: the tray host gives no way to hide other applications' icons; nothing to do"));
}

}  // namespace
}  // namespace orvantis
