#include "core/shell/onboarding_model.h"

#include <gtest/gtest.h>

#include <chrono>

#include "platform/sim/permissions.h"
#include "platform/sim/pomodoro_services.h"
#include "testing/utilities_test_support.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using utilities_testing::UtilitiesFixture;
using Kind = sim::Permissions::Kind;

class OnboardingModelTest : public ::testing::Test, protected UtilitiesFixture {
protected:
    std::unique_ptr<OnboardingModel> open() {
        auto model = std::make_unique<OnboardingModel>(settings, &permissions, &notifications, desktop.loop(),
                                                       [this] { ++closed; });
        model->setOnChanged([this] { ++changes; });
        return model;
    }
    sim::Permissions permissions;
    sim::UserNotifications notifications{desktop.loop()};
    int closed = 0;
    int changes = 0;
};

TEST_F(OnboardingModelTest, TheFirstStateShowsAtOnce) {
    permissions.set(Kind::inputMonitoring, true);
    auto model = open();
    EXPECT_EQ(model->accessibility(), PermissionStatus::missing);
    EXPECT_EQ(model->inputMonitoring(), PermissionStatus::granted);
    EXPECT_EQ(model->notificationService(), PermissionStatus::unknown) << "the service answers later";
    settle();
    EXPECT_EQ(model->notificationService(), PermissionStatus::granted);
}

TEST_F(OnboardingModelTest, APermissionGrantedWhileOpenShowsWithinASecond) {
    auto model = open();
    settle();
    permissions.grantLater(Kind::accessibility, desktop.loop(), 300ms);
    desktop.loop().runFor(1300ms);
    EXPECT_EQ(model->accessibility(), PermissionStatus::granted);
    EXPECT_GT(changes, 0);
}

TEST_F(OnboardingModelTest, AWithdrawnPermissionAndAVanishedServiceShowAsMissing) {
    permissions.set(Kind::accessibility, true);
    auto model = open();
    settle();
    permissions.set(Kind::accessibility, false);
    notifications.authorized = false;
    desktop.loop().runFor(1s);
    settle();
    EXPECT_EQ(model->accessibility(), PermissionStatus::missing);
    EXPECT_EQ(model->notificationService(), PermissionStatus::missing);
}

TEST_F(OnboardingModelTest, ClosingWithNothingGrantedStillMarksOnboardingSeen) {
    auto model = open();
    EXPECT_FALSE(settings.hasCompletedOnboarding());
    model->windowClosed();
    EXPECT_TRUE(settings.hasCompletedOnboarding());
    EXPECT_EQ(closed, 1);
    EXPECT_FALSE(model->isPolling());
}

TEST_F(OnboardingModelTest, FinishMarksSeenAndTheCloseThatFollowsCallsOnClosedOnce) {
    auto model = open();
    model->finish();
    EXPECT_TRUE(settings.hasCompletedOnboarding());
    EXPECT_EQ(closed, 0) << "the window closes itself and reports it";
    model->windowClosed();
    model->windowClosed();
    EXPECT_EQ(closed, 1);
}

TEST_F(OnboardingModelTest, ThePollRunsOnlyWhileOpen) {
    auto model = open();
    EXPECT_TRUE(model->isPolling());
    model->windowClosed();
    permissions.set(Kind::accessibility, true);
    desktop.loop().runFor(3s);
    EXPECT_EQ(model->accessibility(), PermissionStatus::missing);
}

TEST_F(OnboardingModelTest, TheButtonsAskThenOpenTheirPage) {
    permissions.setGrantOnRequest(Kind::accessibility, true);
    auto model = open();
    model->openAccessibilitySettings();
    model->openInputMonitoringSettings();
    EXPECT_EQ(permissions.requestCount(Kind::accessibility), 1u);
    EXPECT_EQ(permissions.requestCount(Kind::inputMonitoring), 1u);
    EXPECT_EQ(permissions.openedPanes(), (std::vector<Kind>{Kind::accessibility, Kind::inputMonitoring}));
    EXPECT_EQ(model->accessibility(), PermissionStatus::granted) << "a grant on request shows at once";
}

TEST_F(OnboardingModelTest, ALateAnswerAfterTheModelIsGoneIsIgnored) {
    auto model = open();
    model.reset();
    settle();  // the service's answer arrives for a model that no longer exists
    SUCCEED();
}

TEST_F(OnboardingModelTest, WithoutServicesEveryRowIsMissing) {
    OnboardingModel model(settings, nullptr, nullptr, desktop.loop(), {});
    EXPECT_EQ(model.accessibility(), PermissionStatus::missing);
    EXPECT_EQ(model.inputMonitoring(), PermissionStatus::missing);
    EXPECT_EQ(model.notificationService(), PermissionStatus::missing);
    EXPECT_FALSE(model.hasInputMonitoringSettings());
    model.openAccessibilitySettings();
    model.windowClosed();
    EXPECT_TRUE(settings.hasCompletedOnboarding());
}

}  // namespace
}  // namespace orvantis
