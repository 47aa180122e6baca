#include "core/events/notification_center.h"

#include <gtest/gtest.h>

namespace orvantis {
namespace {

TEST(NotificationCenterTest, NamesCarryTheCommonPrefix) {
    EXPECT_EQ(notificationName(orvantisNoOppositeSource), "MOLVEX.Orvantis.noOppositeSource");
    EXPECT_EQ(notificationName(orvantisClearedWarning), "MOLVEX.Orvantis.clearedWarning");
    EXPECT_EQ(notificationName(orvantisSettingsLanguageChanged), "MOLVEX.Orvantis.settingsLanguageChanged");
    EXPECT_EQ(notificationName(orvantisMenuBarNeedsRebuild), "MOLVEX.Orvantis.menuBarNeedsRebuild");
}

TEST(NotificationCenterTest, DeliversOnlyToObserversOfThatNameWhileSubscribed) {
    NotificationCenter center;
    int rebuilds = 0, warnings = 0;
    auto a = center.observe(orvantisMenuBarNeedsRebuild, [&] { ++rebuilds; });
    auto b = center.observe(orvantisNoOppositeSource, [&] { ++warnings; });
    center.post(orvantisMenuBarNeedsRebuild);
    EXPECT_EQ(rebuilds, 1);
    EXPECT_EQ(warnings, 0);
    a.reset();
    center.post(orvantisMenuBarNeedsRebuild);
    center.post(orvantisNoOppositeSource);
    EXPECT_EQ(rebuilds, 1);
    EXPECT_EQ(warnings, 1);
}

}  // namespace
}  // namespace orvantis
