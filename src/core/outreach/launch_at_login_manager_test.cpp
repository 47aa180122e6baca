#include "core/outreach/launch_at_login_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "platform/sim/login_item.h"
#include "platform/sim/virtual_main_loop.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

using ::testing::ElementsAre;

class KeptLines final : public SystemLogSink {
public:
    explicit KeptLines(std::vector<std::string>& lines) : lines_(lines) {}
    void log(Type type, std::string_view category, std::string_view message) override {
        lines_.push_back(std::string(type == Type::Error ? "error " : "info ") + std::string(category) + " " +
                         std::string(message));
    }

private:
    std::vector<std::string>& lines_;
};

class LaunchAtLoginManagerTest : public ::testing::Test {
protected:
    /// The program starts: the manager is made and follows the item's state.
    LaunchAtLoginManager& launch() {
        manager_ = std::make_unique<LaunchAtLoginManager>(item_, settings_, logger_.log().launch);
        manager_->syncWithAppSettings();
        return *manager_;
    }

    testing::TemporaryDirectory dir_;
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> prefsQueue_ = loop_.makeSerialQueue("prefs");
    std::unique_ptr<platform::SerialQueue> logQueue_ = loop_.makeSerialQueue("log");
    PreferenceStore store_{dir_.path() / "preferences.plist", *prefsQueue_, nullptr};
    AppSettings settings_{store_};
    std::vector<std::string> lines_;
    AppLogger logger_{dir_.path() / "logs", *logQueue_, loop_, std::make_unique<KeptLines>(lines_)};
    sim::LoginItem item_;
    std::unique_ptr<LaunchAtLoginManager> manager_;
};

TEST_F(LaunchAtLoginManagerTest, AnItemRemovedInTheDesktopSettingsTurnsThePreferenceOffAtTheNextLaunch) {
    settings_.setLaunchAtLogin(true);
    item_.setEnabled(false);
    launch();
    EXPECT_FALSE(settings_.launchAtLogin());
    // The setter repeats the registration with the item's value.
    EXPECT_THAT(item_.calls(), ElementsAre("status", "unregister"));
    EXPECT_THAT(lines_, ElementsAre("info Launch unregistered with the autostart entry"));
}

TEST_F(LaunchAtLoginManagerTest, AnEnabledItemWithAFreshPreferenceStoreTurnsThePreferenceOn) {
    ASSERT_FALSE(settings_.launchAtLogin());
    item_.setEnabled(true);
    launch();
    EXPECT_TRUE(settings_.launchAtLogin());
    EXPECT_THAT(item_.calls(), ElementsAre("status", "register"));
    EXPECT_THAT(lines_, ElementsAre("info Launch registered with the autostart entry"));
}

TEST_F(LaunchAtLoginManagerTest, WhenBothAgreeOnlyTheStatusIsAsked) {
    settings_.setLaunchAtLogin(true);
    item_.setEnabled(true);
    launch();
    EXPECT_THAT(item_.calls(), ElementsAre("status"));
    EXPECT_TRUE(lines_.empty());

}

TEST_F(LaunchAtLoginManagerTest, BothOffAgreeToo) {
    launch();
    EXPECT_THAT(item_.calls(), ElementsAre("status"));
    EXPECT_FALSE(settings_.launchAtLogin());
}

TEST_F(LaunchAtLoginManagerTest, EveryWriteOfThePreferenceRegistersOrUnregisters) {
    launch();
    item_.clearCalls();
    settings_.setLaunchAtLogin(true);
    EXPECT_TRUE(item_.enabled());
    settings_.setLaunchAtLogin(false);
    EXPECT_FALSE(item_.enabled());
    // The same value again is registered again, as the setter always passes it on.
    settings_.setLaunchAtLogin(false);
    EXPECT_THAT(item_.calls(), ElementsAre("register", "unregister", "unregister"));
}

TEST_F(LaunchAtLoginManagerTest, OtherSettingsLeaveTheItemAlone) {
    launch();
    item_.clearCalls();
    settings_.setHasCompletedOnboarding(true);
    EXPECT_TRUE(item_.calls().empty());
}

TEST_F(LaunchAtLoginManagerTest, AFailureIsLoggedAndThePreferenceIsKept) {
    launch();
    item_.failWith("cannot write /x/orvantis.desktop: Read-only file system");
    settings_.setLaunchAtLogin(true);
    EXPECT_TRUE(settings_.launchAtLogin());
    EXPECT_FALSE(item_.enabled());
    EXPECT_THAT(lines_, ElementsAre("error Launch failed to register: cannot write /x/orvantis.desktop: "
                                    "Read-only file system"));
}

TEST_F(LaunchAtLoginManagerTest, AnItemThatCouldNotBeRegisteredTurnsThePreferenceBackOffAtTheNextLaunch) {
    item_.failWith("refused");
    settings_.setLaunchAtLogin(true);  // before the manager: written in an earlier run
    launch();
    EXPECT_FALSE(settings_.launchAtLogin());
    // The repeated registration fails as well, and only logs.
    EXPECT_THAT(lines_, ElementsAre("error Launch failed to unregister: refused"));
}

TEST_F(LaunchAtLoginManagerTest, NothingFollowsThePreferenceOnceTheManagerIsGone) {
    launch();
    manager_.reset();
    item_.clearCalls();
    settings_.setLaunchAtLogin(true);
    EXPECT_TRUE(item_.calls().empty());
}

}  // namespace
}  // namespace orvantis
