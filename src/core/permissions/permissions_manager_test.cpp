#include "core/permissions/permissions_manager.h"

#include <vector>

#include <gtest/gtest.h>

#include "platform/sim/permissions.h"

namespace orvantis {
namespace {

using Kind = sim::Permissions::Kind;

class PermissionsManagerTest : public ::testing::Test {
protected:
    sim::Permissions desktop_;
    PermissionsManager manager_{desktop_};
};

TEST_F(PermissionsManagerTest, AnswersWhatTheDesktopSaysAtTheMomentOfAsking) {
    EXPECT_FALSE(manager_.hasAccessibility());
    EXPECT_FALSE(manager_.hasInputMonitoring());
    desktop_.set(Kind::accessibility, true);
    EXPECT_TRUE(manager_.hasAccessibility());
    EXPECT_FALSE(manager_.hasInputMonitoring());
    desktop_.set(Kind::inputMonitoring, true);
    EXPECT_TRUE(manager_.hasInputMonitoring());
    desktop_.set(Kind::accessibility, false);
    EXPECT_FALSE(manager_.hasAccessibility());
}

TEST_F(PermissionsManagerTest, HasAllRequiredNeedsBoth) {
    EXPECT_FALSE(manager_.hasAllRequired());
    desktop_.set(Kind::accessibility, true);
    EXPECT_FALSE(manager_.hasAllRequired()) << "input monitoring missing";
    desktop_.set(Kind::accessibility, false);
    desktop_.set(Kind::inputMonitoring, true);
    EXPECT_FALSE(manager_.hasAllRequired()) << "accessibility missing";
    desktop_.set(Kind::accessibility, true);
    EXPECT_TRUE(manager_.hasAllRequired());
}

TEST_F(PermissionsManagerTest, RequestMissingWithBothGrantedAsksNothing) {
    desktop_.set(Kind::accessibility, true);
    desktop_.set(Kind::inputMonitoring, true);
    manager_.requestMissing();
    EXPECT_EQ(desktop_.requestCount(Kind::accessibility), 0u);
    EXPECT_EQ(desktop_.requestCount(Kind::inputMonitoring), 0u);
    EXPECT_TRUE(desktop_.openedPanes().empty());
}

TEST_F(PermissionsManagerTest, RequestMissingAsksForEachMissingOneOnce) {
    manager_.requestMissing();
    EXPECT_EQ(desktop_.requestCount(Kind::accessibility), 1u);
    EXPECT_EQ(desktop_.requestCount(Kind::inputMonitoring), 1u);
    EXPECT_TRUE(desktop_.openedPanes().empty()) << "a request opens no settings page";
}

TEST_F(PermissionsManagerTest, RequestMissingSkipsTheGrantedOne) {
    desktop_.set(Kind::inputMonitoring, true);
    manager_.requestMissing();
    EXPECT_EQ(desktop_.requestCount(Kind::accessibility), 1u);
    EXPECT_EQ(desktop_.requestCount(Kind::inputMonitoring), 0u);

    desktop_.set(Kind::accessibility, true);
    desktop_.set(Kind::inputMonitoring, false);
    manager_.requestMissing();
    EXPECT_EQ(desktop_.requestCount(Kind::accessibility), 1u);
    EXPECT_EQ(desktop_.requestCount(Kind::inputMonitoring), 1u);
}

TEST_F(PermissionsManagerTest, RequestMissingDoesNotAskForWhatTheFirstRequestGranted) {
    // Switching the accessibility bus on answers at once; input monitoring is asked for
    // only while it is still missing.
    desktop_.setGrantOnRequest(Kind::accessibility, true);
    manager_.requestMissing();
    EXPECT_TRUE(manager_.hasAccessibility());
    EXPECT_EQ(desktop_.requestCount(Kind::inputMonitoring), 1u);
    manager_.requestMissing();
    EXPECT_EQ(desktop_.requestCount(Kind::accessibility), 1u);
    EXPECT_EQ(desktop_.requestCount(Kind::inputMonitoring), 2u);
}

TEST_F(PermissionsManagerTest, SingleRequestsAnswerTheStateAfterAsking) {
    EXPECT_FALSE(manager_.requestAccessibility());
    desktop_.setGrantOnRequest(Kind::accessibility, true);
    EXPECT_TRUE(manager_.requestAccessibility());
    EXPECT_FALSE(manager_.requestInputMonitoring());
    desktop_.set(Kind::inputMonitoring, true);
    EXPECT_TRUE(manager_.requestInputMonitoring());
    EXPECT_EQ(desktop_.requestCount(Kind::accessibility), 2u);
    EXPECT_EQ(desktop_.requestCount(Kind::inputMonitoring), 2u);
}

TEST_F(PermissionsManagerTest, OpenSettingsForMissingWithOnlyInputMonitoringMissingOpensTheSecondPage) {
    desktop_.set(Kind::accessibility, true);
    manager_.openSettingsForMissing();
    EXPECT_EQ(desktop_.openedPanes(), std::vector<Kind>{Kind::inputMonitoring});
}

TEST_F(PermissionsManagerTest, OpenSettingsForMissingOpensOnlyTheFirstMissingPage) {
    manager_.openSettingsForMissing();
    EXPECT_EQ(desktop_.openedPanes(), std::vector<Kind>{Kind::accessibility});
}

TEST_F(PermissionsManagerTest, OpenSettingsForMissingWithOnlyAccessibilityMissingOpensTheFirstPage) {
    desktop_.set(Kind::inputMonitoring, true);
    manager_.openSettingsForMissing();
    EXPECT_EQ(desktop_.openedPanes(), std::vector<Kind>{Kind::accessibility});
}

TEST_F(PermissionsManagerTest, OpenSettingsForMissingWithNothingMissingOpensNothing) {
    desktop_.set(Kind::accessibility, true);
    desktop_.set(Kind::inputMonitoring, true);
    manager_.openSettingsForMissing();
    EXPECT_TRUE(desktop_.openedPanes().empty());
}

TEST_F(PermissionsManagerTest, OpenersOpenTheirOwnPageWhateverTheState) {
    desktop_.set(Kind::accessibility, true);
    manager_.openAccessibilitySettings();
    manager_.openInputMonitoringSettings();
    EXPECT_EQ(desktop_.openedPanes(), (std::vector<Kind>{Kind::accessibility, Kind::inputMonitoring}));
    EXPECT_EQ(desktop_.requestCount(Kind::accessibility), 0u);
}

}  // namespace
}  // namespace orvantis
