// The launch and end sequences, run on the simulated desktop. Every service the delegate hands
// to the features records what is done with it in one list, so the order of the steps shows as
// the order of their effects: the keyboard monitor made (its hotkeys pushed to the tap), the
// popups made, the clipboard's poll started, the tap installed, the permission request and
// polling scheduled; and at the end the polling, the clipboard's poll and the tap taken down.

#include "app/tray_app.h"
#include "app/settings_window_assembly.h"
#include "app/feedback_assembly.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <QAction>
#include <QMenu>
#include <QApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>

#include "core/clipboard/clipboard_history_popup.h"
#include "core/clipboard/clipboard_monitor.h"
#include "core/log/app_logger.h"
#include "core/passwords/password_popup.h"
#include "core/pomodoro/pomodoro_coordinator.h"
#include "core/pomodoro/pomodoro_history.h"
#include "core/shell/hotkey_overlay.h"
#include "core/shell/onboarding_model.h"
#include "core/shell/toast.h"
#include "core/sync/sync_manager.h"
#include "core/snippets/snippet_expander.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "core/text_tools/text_transformer_coordinator.h"
#include "core/utilities/keyboard_lock_coordinator.h"
#include "core/translator/translation_popup.h"
#include "platform/applications.h"
#include "platform/key_output.h"
#include "platform/login_item.h"
#include "platform/pointer.h"
#include "platform/serial_queue.h"
#include "platform/sim/desktop.h"
#include "platform/sim/event_tap.h"
#include "platform/sim/http_client.h"
#include "platform/sim/login_item.h"
#include "platform/sim/mail_composer.h"
#include "platform/sim/permissions.h"
#include "platform/sim/pomodoro_services.h"
#include "platform/system_utilities.h"
#include "testing/qt_test_application.h"
#include "testing/test_support.h"
#include "ui/menu_bar_controller.h"
#include "ui/feedback_window_controller.h"
#include "ui/settings_window_controller.h"

namespace orvantis::app {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using Record = std::vector<std::string>;

/// The tray icon's controller needs a QApplication.
[[maybe_unused]] const auto* const kQtApplication =
    ::testing::AddGlobalTestEnvironment(new testing::QtTestApplication("app_tests"));

std::string milliseconds(platform::Duration d) {
    return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(d).count()) + "ms";
}

/// The virtual main loop, recording each timer made ("every 500ms", "after 1000ms") and each
/// timer cancelled before it was done ("cancel every 500ms").
class RecordingLoop final : public platform::MainLoop {
public:
    RecordingLoop(sim::VirtualMainLoop& loop, Record& record) : loop_(loop), record_(record) {}

    void post(platform::Task task) override { loop_.post(std::move(task)); }
    platform::TimerHandle postAfter(platform::Duration delay, platform::Task task) override {
        return recorded("after " + milliseconds(delay), [&](platform::Task wrapped) {
            return loop_.postAfter(delay, std::move(wrapped));
        }, std::move(task), true);
    }
    platform::TimerHandle every(platform::Duration interval, platform::Task task) override {
        return recorded("every " + milliseconds(interval), [&](platform::Task wrapped) {
            return loop_.every(interval, std::move(wrapped));
        }, std::move(task), false);
    }
    std::unique_ptr<platform::SerialQueue> makeSerialQueue(std::string label) override {
        return loop_.makeSerialQueue(std::move(label));
    }
    Subscription watchReadable(int fd, platform::Task task) override {
        record_.push_back("watch");
        return loop_.watchReadable(fd, std::move(task));
    }

private:
    template <typename Make>
    platform::TimerHandle recorded(std::string label, Make make, platform::Task task, bool oneShot) {
        record_.push_back(label);
        auto state = std::make_shared<platform::TimerState>();
        std::weak_ptr<platform::TimerState> weak = state;
        auto inner = std::make_shared<platform::TimerHandle>(make([weak, task = std::move(task), oneShot] {
            if (auto s = weak.lock(); s && oneShot) s->finished = true;
            task();
        }));
        state->onCancel = [this, label, inner] {
            record_.push_back("cancel " + label);
            inner->cancel();
        };
        return platform::TimerHandle(state);
    }

    sim::VirtualMainLoop& loop_;
    Record& record_;
};

/// The simulated login item, recording each call ("login item status", "login item register").
class RecordingLoginItem final : public platform::LoginItem {
public:
    RecordingLoginItem(sim::LoginItem& item, Record& record) : item_(item), record_(record) {}
    bool isEnabled() const override {
        record_.push_back("login item status");
        return item_.isEnabled();
    }
    std::optional<std::string> registerItem() override {
        record_.push_back("login item register");
        return item_.registerItem();
    }
    std::optional<std::string> unregisterItem() override {
        record_.push_back("login item unregister");
        return item_.unregisterItem();
    }

private:
    sim::LoginItem& item_;
    Record& record_;
};

/// The simulated tap, recording the hotkeys pushed to it and its installation and removal.
class RecordingTap final : public platform::EventTap {
public:
    RecordingTap(sim::EventTap& tap, Record& record) : tap_(tap), record_(record) {}

    bool start(Handler handler) override {
        const bool started = tap_.start(std::move(handler));
        record_.push_back(started ? "tap start" : "tap start refused");
        return started;
    }
    void stop() override {
        record_.push_back("tap stop");
        tap_.stop();
    }
    bool isRunning() const override { return tap_.isRunning(); }
    void reenable() override { tap_.reenable(); }
    bool isPermitted() const override { return tap_.isPermitted(); }
    void setGrabbedHotkeys(std::vector<platform::GrabbedKey> keys) override {
        record_.push_back("tap hotkeys");
        tap_.setGrabbedHotkeys(std::move(keys));
    }
    void setWholeKeyboardGrabbed(bool grabbed) override { tap_.setWholeKeyboardGrabbed(grabbed); }

private:
    sim::EventTap& tap_;
    Record& record_;
};

/// The simulated permissions, recording each request.
class RecordingPermissions final : public platform::Permissions {
public:
    RecordingPermissions(sim::Permissions& permissions, Record& record) : permissions_(permissions), record_(record) {}

    bool hasAccessibility() const override { return permissions_.hasAccessibility(); }
    bool requestAccessibility() override {
        record_.push_back("ask accessibility");
        return permissions_.requestAccessibility();
    }
    void openAccessibilitySettings() override { permissions_.openAccessibilitySettings(); }
    bool hasInputMonitoring() const override { return permissions_.hasInputMonitoring(); }
    bool requestInputMonitoring() override {
        record_.push_back("ask input monitoring");
        return permissions_.requestInputMonitoring();
    }
    bool hasInputMonitoringSettings() const override { return permissions_.hasInputMonitoringSettings(); }
    void openInputMonitoringSettings() override { permissions_.openInputMonitoringSettings(); }

private:
    sim::Permissions& permissions_;
    Record& record_;
};

class NoTranslationPopup final : public TranslationPopup {
public:
    void setOnConfirm(std::function<void(const std::string&)>) override {}
    void setOnDismiss(std::function<void()>) override {}
    void setOnTabPressed(std::function<void()>) override {}
    void show(platform::ScreenPoint) override {}
    void showOptions(std::vector<PopupOption>) override {}
    void setFooterHint(std::optional<std::string>) override {}
    void showError(const std::string&) override {}
    void dismiss() override {}
    bool isVisible() const override { return false; }
};

class NoClipboardPopup final : public ClipboardHistoryPopup {
public:
    void setOnConfirm(ItemCallback) override {}
    void setOnDelete(ItemCallback) override {}
    void setOnTogglePin(ItemCallback) override {}
    void setOnDismiss(std::function<void()>) override {}
    void show(platform::ScreenPoint, std::vector<ClipboardItem>, ClipboardPopupTexts) override {}
    void refresh(std::vector<ClipboardItem>) override {}
    void dismiss() override {}
    bool isVisible() const override { return false; }
};

class RecordingTextToolsWindow final : public TextTransformerWindow {
public:
    explicit RecordingTextToolsWindow(Record& record) : record_(record) {}
    void show() override { record_.push_back("text tools show"); }

private:
    Record& record_;
};

class RecordingToast final : public Toast {
public:
    explicit RecordingToast(Record& record) : record_(record) {}
    void show(const ToastContent& content) override { record_.push_back("toast " + content.title); }

private:
    Record& record_;
};

class RecordingPasswordPopup final : public PasswordPopup {
public:
    explicit RecordingPasswordPopup(Record& record) : record_(record) {}
    void show() override {
        visible_ = true;
        record_.push_back("password popup show");
    }
    bool isVisible() const override { return visible_; }
    void bringToFront() override { record_.push_back("password popup front"); }

private:
    Record& record_;
    bool visible_ = false;
};

class NoFrontmostApplication final : public platform::Applications {
public:
    std::optional<platform::ApplicationInfo> frontmostApplication() const override { return std::nullopt; }
};

/// Keep-awake's power assertion and lid-close control, recording what is asked of them.
class RecordingPower final : public platform::PowerAssertions {
public:
    explicit RecordingPower(Record& record) : record_(record) {}
    int create(std::string_view, std::uint32_t& id) override {
        record_.push_back("power hold");
        id = 1;
        return 0;
    }
    int release(std::uint32_t) override {
        record_.push_back("power release");
        return 0;
    }

private:
    Record& record_;
};

class RecordingLidSleep final : public platform::LidSleepControl {
public:
    explicit RecordingLidSleep(Record& record) : record_(record) {}
    bool setDisableSleep(bool disable) override {
        record_.push_back(disable ? "lid sleep off" : "lid sleep on");
        return true;
    }
    bool provision() override { return true; }
    bool deprovision() override { return true; }

private:
    Record& record_;
};

class FixedPointer final : public platform::Pointer {
public:
    platform::ScreenPoint location() const override { return {100, 100}; }
};

/// The simulated Focus commands and sleep events, recording the coordinator's wiring.
class RecordingFocusCommands final : public platform::FocusCommands {
public:
    explicit RecordingFocusCommands(Record& record) : record_(record) {}
    std::optional<std::string> list() override {
        record_.push_back("focus commands listed");
        return listing;
    }
    void run(const std::string& name) override { record_.push_back("run " + name); }
    std::optional<std::string> listing = std::string("Orvantis Focus On\nOrvantis Focus Off\n");

private:
    Record& record_;
};
class RecordingSleepEvents final : public platform::SystemSleepEvents {
public:
    explicit RecordingSleepEvents(Record& record) : record_(record) {}
    Subscription onWillSleep(std::function<void()> callback) override {
        record_.push_back("sleep watched");
        return sim_.onWillSleep(std::move(callback));
    }
    Subscription onDidWake(std::function<void()> callback) override { return sim_.onDidWake(std::move(callback)); }
    sim::SystemSleepEvents sim_;

private:
    Record& record_;
};

/// The onboarding window, recording what the delegate does with it.
class RecordingOnboardingWindow final : public OnboardingWindow {
public:
    RecordingOnboardingWindow(Record& record, OnboardingModel& m) : model(m), record_(record) {}
    void showAndActivate() override { record_.push_back("onboarding shown"); }
    OnboardingModel& model;

private:
    Record& record_;
};

class AppDelegateTest : public ::testing::Test {
protected:
    AppDelegateTest() {
        services_.makeOnboardingWindow = [this](OnboardingModel& model, SettingsLanguage language) {
            record_.push_back(std::string("onboarding window ") + (language == SettingsLanguage::ru ? "ru" : "en"));
            auto window = std::make_unique<RecordingOnboardingWindow>(record_, model);
            onboarding_ = window.get();
            return window;
        };
        services_.eventTap = &tap_;
        services_.keyOutput = &desktop_.keyOutput();
        services_.selectionKeys = &desktop_.keyOutput();
        services_.inputSources = &desktop_.inputSources();
        services_.permissions = &permissions_;
        services_.accessibility = &desktop_.accessibility();
        services_.applications = &applications_;
        services_.pasteboard = &desktop_.pasteboard();
        services_.pointer = &pointer_;
        services_.httpClient = &http_;
        services_.userNotifications = &notifications_;
        services_.sleepEvents = &sleep_;
        services_.focusCommands = &focus_;
        services_.powerAssertions = &power_;
        services_.lidSleep = &lidSleep_;
        services_.loginItem = &loginItem_;
        services_.mailComposer = &mail_;
        services_.makeTranslationPopup = [this] {
            record_.push_back("translation popup");
            return std::make_unique<NoTranslationPopup>();
        };
        services_.makeClipboardPopup = [this] {
            record_.push_back("clipboard popup");
            return std::make_unique<NoClipboardPopup>();
        };
        services_.makeTextTransformerWindow = [this](AppSettings&, std::function<void()>) {
            record_.push_back("text tools window");
            return std::make_unique<RecordingTextToolsWindow>(record_);
        };
        services_.makeToast = [this] {
            record_.push_back("toast panel");
            return std::make_unique<RecordingToast>(record_);
        };
        services_.makePasswordPopup = [this](const PasswordConfig&, PasswordGenerator&, AppSettings&,
                                             PasswordPopup::Callbacks) {
            record_.push_back("password popup");
            return std::make_unique<RecordingPasswordPopup>(record_);
        };
        services_.systemVersion = "Simulated Linux 1";
        simPermissions_.set(sim::Permissions::Kind::inputMonitoring, true);
    }

    /// A later run: onboarding was completed in an earlier one.
    void completeOnboarding() {
        platform::ThreadSerialQueue writer("test.preferences");
        PreferenceStore store(preferencesFile(), writer, nullptr);
        AppSettings(store).setHasCompletedOnboarding(true);
        store.flush();
    }
    /// The unconditional lid-close mode is switched on in an earlier run.
    void keepAwakeWithLidClosed() {
        platform::ThreadSerialQueue writer("test.preferences");
        PreferenceStore store(preferencesFile(), writer, nullptr);
        AppSettings(store).setCaffeineLidCloseAlways(true);
        store.flush();
    }
    /// The desktop refuses the tap (no permission to watch the keyboard).
    void refuseTap() { desktop_.eventTap().setPermitted(false); }

    AppDelegate& launch() {
        delegate_ = std::make_unique<AppDelegate>(logger_, loop_, desktop_.loop(), preferencesWriter_,
                                                  AppPaths{preferencesFile(), home_.path() / "data", syncHome_}, services_,
                                                  [] {});
        delegate_->applicationDidFinishLaunching();
        return *delegate_;
    }
    /// The record from here on.
    Record takeRecord() { return std::exchange(record_, {}); }

    std::filesystem::path preferencesFile() const { return home_.path() / "preferences.plist"; }

    testing::TemporaryDirectory home_;
    /// Where the synced folder is looked for; empty (none) unless a test gives one.
    std::filesystem::path syncHome_;
    sim::Desktop desktop_;
    Record record_;
    RecordingLoop loop_{desktop_.loop(), record_};
    RecordingTap tap_{desktop_.eventTap(), record_};
    sim::Permissions simPermissions_;
    RecordingPermissions permissions_{simPermissions_, record_};
    NoFrontmostApplication applications_;
    FixedPointer pointer_;
    RecordingPower power_{record_};
    RecordingLidSleep lidSleep_{record_};
    sim::LoginItem simLoginItem_;
    sim::MailComposer mail_{desktop_.loop()};
    RecordingLoginItem loginItem_{simLoginItem_, record_};
    sim::HttpClient http_{desktop_.loop()};
    sim::UserNotifications notifications_{desktop_.loop()};
    RecordingSleepEvents sleep_{record_};
    RecordingFocusCommands focus_{record_};
    platform::ThreadSerialQueue logQueue_{"test.log"};
    platform::ThreadSerialQueue preferencesWriter_{"test.preferences.writer"};
    AppLogger logger_{home_.path() / "logs", logQueue_, desktop_.loop()};
    DesktopServices services_;
    RecordingOnboardingWindow* onboarding_ = nullptr;  ///< the last one made
    std::unique_ptr<AppDelegate> delegate_;
};

TEST_F(AppDelegateTest, LaunchBuildsEachFeatureInOrderThenInstallsTheTap) {
    completeOnboarding();
    launch();
    EXPECT_THAT(takeRecord(), ElementsAre("watch",              // 2: the settings file is watched
                                          "login item status",  //    and the login item asked
                                          "tap hotkeys",        // 4: the keyboard monitor, with its hotkeys
                                          "translation popup",  // 5: the translator
                                          "clipboard popup",    // 6: the clipboard history's popup
                                          "every 500ms",        // 7: the clipboard is watched
                                          "focus commands listed",  // 9: the Pomodoro asks for Focus
                                          "sleep watched",          //    and follows sleep
                                          "toast panel",        // 10: the password generator's notice
                                          "tap start"));        // 19: the tap, after every closure is wired
    ASSERT_NE(delegate_->menuBarController(), nullptr);
    EXPECT_EQ(delegate_->menuBarController()->statusIcon(), ui::MenuBarController::StatusIcon::keyboard);
}

TEST_F(AppDelegateTest, WithASyncedFolderTheSyncPollStartsRightAfterTheClipboardIsWatched) {
    completeOnboarding();
    std::filesystem::create_directories(home_.path() / "Sync");
    syncHome_ = home_.path();
    launch();
    EXPECT_THAT(takeRecord(), ElementsAre("watch", "login item status", "tap hotkeys", "translation popup",
                                          "clipboard popup",
                                          "every 500ms",   // 7: the clipboard is watched
                                          "every 5000ms",  // 8: sync pulls and polls the synced folder
                                          "focus commands listed", "sleep watched", "toast panel", "tap start"));
    EXPECT_TRUE(std::filesystem::is_directory(home_.path() / "Sync" / "Orvantis"));
    ASSERT_NE(delegate_->sync(), nullptr);
    EXPECT_TRUE(delegate_->sync()->manager().isICloudDriveAvailable());
}

TEST_F(AppDelegateTest, APomodoroStartedFromTheMenuCountsDownOnTheIconAndEndsWithTheProgram) {
    completeOnboarding();
    launch();
    AppSettings& settings = *delegate_->settings();
    settings.set(settings::kPomodoroToggleDND, true);
    ui::MenuBarController& menu = *delegate_->menuBarController();
    menu.menuItem("pomodoroStartItem")->trigger();
    QApplication::processEvents();
    EXPECT_EQ(menu.statusItem().toolTip(), QString::fromUtf8("\U0001F345 25:00"));
    desktop_.loop().runFor(61s);
    EXPECT_EQ(menu.statusItem().toolTip(), QString::fromUtf8("\U0001F345 23:59"));
    EXPECT_EQ(menu.statusIcon(), ui::MenuBarController::StatusIcon::pomodoro);
    takeRecord();
    delegate_->applicationWillTerminate();
    const Record end = takeRecord();
    // The session ends first: its timer, then Focus is released, before anything else stops.
    ASSERT_GE(end.size(), 2u);
    EXPECT_EQ(end[0], "cancel every 1000ms");
    EXPECT_EQ(end[1], "run Orvantis Focus Off");
    EXPECT_EQ(menu.statusIcon(), ui::MenuBarController::StatusIcon::keyboard);
}

TEST_F(AppDelegateTest, ASkippedWorkPhaseIsOneRecordInTheDataFolder) {
    completeOnboarding();
    launch();
    ASSERT_NE(delegate_->pomodoro(), nullptr);
    delegate_->pomodoro()->coordinator().startSession();
    delegate_->pomodoro()->coordinator().skipPhase();
    desktop_.loop().runUntilIdle();
    const auto records = PomodoroHistory::decode(testing::readFile(home_.path() / "data" / "pomodoro-history.json"));
    ASSERT_TRUE(records);
    ASSERT_EQ(records->size(), 1u);
    EXPECT_EQ((*records)[0].durationMinutes, 25);
    EXPECT_EQ(delegate_->pomodoro()->statusLine(), "running\tbreakTime\t300\t1\t1");
}

TEST_F(AppDelegateTest, TheTextToolsHotkeyOpensOneWindow) {
    completeOnboarding();
    launch();
    takeRecord();
    // Super+Shift+T, the default of the text tools hotkey.
    desktop_.press(17, platform::key_flags::kControl | platform::key_flags::kShift);
    desktop_.loop().runUntilIdle();
    desktop_.press(17, platform::key_flags::kControl | platform::key_flags::kShift);
    desktop_.loop().runUntilIdle();
    const Record record = takeRecord();
    EXPECT_EQ(std::count(record.begin(), record.end(), "text tools window"), 1);
    EXPECT_EQ(std::count(record.begin(), record.end(), "text tools show"), 2);
}

TEST_F(AppDelegateTest, ThePasswordHotkeyOpensOnePopup) {
    completeOnboarding();
    launch();
    takeRecord();
    // Super+Shift+P, the default of the password hotkey; the default mode is the popup.
    desktop_.press(35, platform::key_flags::kControl | platform::key_flags::kShift);
    desktop_.loop().runUntilIdle();
    desktop_.press(35, platform::key_flags::kControl | platform::key_flags::kShift);
    desktop_.loop().runUntilIdle();
    EXPECT_THAT(takeRecord(), ElementsAre("password popup", "password popup show", "password popup front"));
}

TEST_F(AppDelegateTest, TheSnippetHotkeyExpandsTheTokenBeforeTheCaret) {
    completeOnboarding();
    launch();
    SnippetExpander(delegate_->settings()->store()).setEntries({{Uuid(), "sig", "Best regards"}});
    desktop_.focusTextField("hello sig");
    // Super+Shift+Backspace, the default of the snippet hotkey.
    desktop_.press(platform::key_code::kDelete, platform::key_flags::kControl | platform::key_flags::kShift);
    desktop_.loop().runFor(500ms);
    EXPECT_EQ(desktop_.focusedText(), "hello Best regards");
}

TEST_F(AppDelegateTest, PermissionAlreadyGrantedCreatesNoPollingTimer) {
    completeOnboarding();
    launch();
    takeRecord();
    desktop_.loop().runFor(10s);
    const Record later = takeRecord();
    EXPECT_EQ(std::count(later.begin(), later.end(), "every 2000ms"), 0);
    EXPECT_EQ(std::count(later.begin(), later.end(), "ask accessibility"), 0);
}

TEST_F(AppDelegateTest, LaterRunWithoutPermissionAsksOneSecondAfterLaunchAndPolls) {
    completeOnboarding();
    refuseTap();
    launch();
    EXPECT_THAT(takeRecord(), ElementsAre("watch", "login item status", "tap hotkeys", "translation popup", "clipboard popup",
                                          "every 500ms", "focus commands listed", "sleep watched", "toast panel",
                                          "tap start refused",
                                          "after 1000ms",    // 21: the request for the permissions
                                          "every 2000ms"));  // 21: the tap retried
    EXPECT_EQ(delegate_->menuBarController()->statusIcon(), ui::MenuBarController::StatusIcon::permissionsRequired);

    desktop_.loop().runFor(999ms);
    EXPECT_THAT(takeRecord(), ElementsAre());
    desktop_.loop().runFor(1ms);
    EXPECT_THAT(takeRecord(), ElementsAre("ask accessibility"));
}

TEST_F(AppDelegateTest, FirstRunWithoutPermissionShowsTheBannerAndPollsButAsksNothing) {
    refuseTap();
    launch();
    EXPECT_THAT(takeRecord(), ElementsAre("watch", "login item status", "tap hotkeys", "translation popup", "clipboard popup",
                                          "every 500ms", "focus commands listed", "sleep watched", "toast panel",
                                          "tap start refused", "every 1000ms", "onboarding window en",
                                          "onboarding shown", "every 2000ms"));
    EXPECT_EQ(delegate_->menuBarController()->statusIcon(), ui::MenuBarController::StatusIcon::permissionsRequired);
    desktop_.loop().runFor(1500ms);
    EXPECT_EQ(simPermissions_.requestCount(sim::Permissions::Kind::accessibility), 0u);

    // Granted in the desktop's settings: the next retry installs the tap and the banner goes,
    // without a restart.
    desktop_.eventTap().setPermitted(true);
    takeRecord();
    desktop_.loop().runFor(500ms);
    EXPECT_THAT(takeRecord(), ElementsAre("tap start", "cancel every 2000ms"));
    EXPECT_EQ(delegate_->menuBarController()->statusIcon(), ui::MenuBarController::StatusIcon::keyboard);
}

TEST_F(AppDelegateTest, KeepAwakeComesAfterTheTextToolsAndBeforeTheTapAndLetsLidSleepGoFirstAtTheEnd) {
    completeOnboarding();
    keepAwakeWithLidClosed();
    launch();
    EXPECT_THAT(takeRecord(), ElementsAre("watch", "login item status", "tap hotkeys", "translation popup", "clipboard popup",
                                          "every 500ms", "focus commands listed", "sleep watched", "toast panel",
                                          "lid sleep off",  // 18: keep-awake, its lid-close mode
                                          "tap start"));
    delegate_->applicationWillTerminate();
    EXPECT_THAT(takeRecord(), ElementsAre("lid sleep on",  // lid-close sleep undone first
                                          "cancel every 500ms", "tap stop"));
}

TEST_F(AppDelegateTest, TheKeepAwakeHotkeyHoldsThePowerAssertionAndTurnsTheIconRed) {
    completeOnboarding();
    launch();
    takeRecord();
    // Super+Shift+K, the default of the keep-awake hotkey.
    desktop_.press(40, platform::key_flags::kControl | platform::key_flags::kShift);
    desktop_.loop().runUntilIdle();
    EXPECT_THAT(takeRecord(), ElementsAre("power hold"));
    EXPECT_EQ(delegate_->menuBarController()->statusIcon(), ui::MenuBarController::StatusIcon::caffeine);
    ASSERT_NE(delegate_->menuBarController()->menuItem("menuCaffeineItem"), nullptr);
    EXPECT_TRUE(delegate_->menuBarController()->menuItem("menuCaffeineItem")->isChecked());
    delegate_->menuBarController()->menuItem("menuCaffeineItem")->trigger();
    EXPECT_THAT(takeRecord(), ElementsAre("power release"));
    EXPECT_EQ(delegate_->menuBarController()->statusIcon(), ui::MenuBarController::StatusIcon::keyboard);
}

TEST_F(AppDelegateTest, TheKeyboardLockEndsWhenItsSwitchGoesOff) {
    completeOnboarding();
    services_.makeKeyboardLockOverlay = [] { return std::unique_ptr<KeyboardLockOverlay>(); };
    launch();
    // Super+Shift+L, the default of the lock hotkey.
    desktop_.press(37, platform::key_flags::kControl | platform::key_flags::kShift);
    desktop_.loop().runUntilIdle();
    KeyboardLockCoordinator* lock = delegate_->systemUtilities()->keyboardLock();
    ASSERT_NE(lock, nullptr);
    ASSERT_TRUE(lock->isLocked());
    EXPECT_TRUE(desktop_.eventTap().wholeKeyboardGrabbed());
    delegate_->settings()->setKeyboardLockEnabled(false);
    desktop_.loop().runUntilIdle();
    EXPECT_FALSE(lock->isLocked());
    EXPECT_FALSE(desktop_.eventTap().wholeKeyboardGrabbed());
}

TEST_F(AppDelegateTest, EndSequenceStopsTheClipboardBeforeTheKeyboardMonitor) {
    completeOnboarding();
    launch();
    takeRecord();
    delegate_->applicationWillTerminate();
    EXPECT_THAT(takeRecord(), ElementsAre("cancel every 500ms",  // the clipboard's poll
                                          "tap stop"));          // the keyboard monitor, last
}

TEST_F(AppDelegateTest, EndSequenceWithAPollPendingEndsThePollingFirst) {
    completeOnboarding();
    refuseTap();
    launch();
    takeRecord();
    delegate_->applicationWillTerminate();
    EXPECT_THAT(takeRecord(), ElementsAre("cancel every 2000ms",  // the permission poll
                                          "cancel after 1000ms",  // the request not yet made
                                          "cancel every 500ms"));  // the clipboard's poll
}

TEST_F(AppDelegateTest, EndSequenceWritesAHistoryChangeStillWaitingToBeSaved) {
    completeOnboarding();
    launch();
    desktop_.pasteboard().writeTextFromOtherApp("copied just before quitting");
    desktop_.loop().runFor(500ms);
    ASSERT_EQ(delegate_->clipboardMonitor()->history().count(), 1u);
    delegate_->applicationWillTerminate();
    const std::string snapshot = testing::readFile(home_.path() / "data" / "clipboard.json");
    EXPECT_NE(snapshot.find("copied just before quitting"), std::string::npos);
}

}  // namespace
}  // namespace orvantis::app

namespace orvantis::app {
namespace {

/// Every line the log has written so far.
std::string logText(AppLogger& logger, const std::filesystem::path& folder) {
    logger.flush();
    std::string text;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        std::ifstream in(entry.path());
        text.append(std::istreambuf_iterator<char>(in), {});
    }
    return text;
}

TEST_F(AppDelegateTest, TheSettingsRowOpensTheSettingsWindowAndRaisesTheOneOpen) {
    completeOnboarding();
    launch();
    ASSERT_NE(delegate_->settingsWindow(), nullptr);
    EXPECT_EQ(delegate_->settingsWindow()->window(), nullptr);
    ui::MenuBarController& menu = *delegate_->menuBarController();
    menu.menuItem("menuSettingsItem")->trigger();
    auto* window = delegate_->settingsWindow()->window();
    ASSERT_NE(window, nullptr);
    menu.menuItem("menuSettingsItem")->trigger();
    EXPECT_EQ(delegate_->settingsWindow()->window(), window);
    int opened = 0;
    delegate_->setSettingsOpener([&] { ++opened; });
    menu.menuItem("menuSettingsItem")->trigger();
    EXPECT_EQ(opened, 1);
}

TEST_F(AppDelegateTest, TheSettingsWindowOpenedAgainInTheTurnItClosedIsANewOneThatStays) {
    completeOnboarding();
    launch();
    ui::MenuBarController& menu = *delegate_->menuBarController();
    menu.menuItem("menuSettingsItem")->trigger();
    auto* first = delegate_->settingsWindow()->window();
    ASSERT_NE(first, nullptr);
    first->close();
    EXPECT_EQ(delegate_->settingsWindow()->window(), nullptr);
    menu.menuItem("menuSettingsItem")->trigger();
    auto* second = delegate_->settingsWindow()->window();
    ASSERT_NE(second, nullptr);
    QApplication::processEvents();  // the closed window is dropped
    EXPECT_EQ(delegate_->settingsWindow()->window(), second);
    EXPECT_TRUE(second->isVisible());
    second->close();
    // The program ends in the turn the window closed: the waiting drop goes with its owner.
    delegate_.reset();
    QApplication::processEvents();
}

TEST_F(AppDelegateTest, TheAboutPagesFeedbackButtonOpensOneWindowThatSendsWithTheDiagnostics) {
    completeOnboarding();
    launch();
    delegate_->openSettings();
    auto* settings = delegate_->settingsWindow()->window();
    ASSERT_NE(settings, nullptr);
    settings->selectSection(SettingsSection::about);
    auto* button = settings->findChild<QPushButton*>(QStringLiteral("feedbackButton"));
    ASSERT_NE(button, nullptr);
    button->click();
    ui::FeedbackWindowController* feedback = delegate_->settingsWindow()->feedback().window();
    ASSERT_NE(feedback, nullptr);
    button->click();  // raises the same window
    EXPECT_EQ(delegate_->settingsWindow()->feedback().window(), feedback);
    feedback->bodyTextView()->setPlainText(QStringLiteral("The popup flickers"));
    feedback->sendButton()->click();
    desktop_.loop().runUntilIdle();
    ASSERT_EQ(mail_.drafts().size(), 1u);
    const auto& draft = mail_.drafts()[0];
    EXPECT_EQ(draft.draft.recipient, "feedback@orvantis.org");
    EXPECT_EQ(draft.draft.body, "The popup flickers");
    ASSERT_TRUE(draft.attachmentExisted);
    EXPECT_TRUE(draft.attachmentText.starts_with("Orvantis feedback diagnostics\n")) << draft.attachmentText;
    EXPECT_NE(draft.attachmentText.find("System:        Simulated Linux 1\n"), std::string::npos);
    EXPECT_FALSE(feedback->isVisible());
    // Opened again before the closed window is dropped: a new window shows, and stays.
    button->click();
    QApplication::processEvents();
    ASSERT_NE(delegate_->settingsWindow()->feedback().window(), nullptr);
    EXPECT_TRUE(delegate_->settingsWindow()->feedback().window()->isVisible());
    delegate_->settingsWindow()->feedback().window()->close();
    QApplication::processEvents();
    EXPECT_EQ(delegate_->settingsWindow()->feedback().window(), nullptr);
    settings->close();
    QApplication::processEvents();  // the closed settings window is dropped while its owner lives
}

TEST_F(AppDelegateTest, LaunchAtLoginRowRegistersAndUnregistersTheLoginItem) {
    completeOnboarding();
    launch();
    QAction* row = delegate_->menuBarController()->menuItem("launchAtLogin");
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->data().toInt(), 100);
    takeRecord();
    row->trigger();
    EXPECT_TRUE(delegate_->settings()->launchAtLogin());
    EXPECT_TRUE(row->isChecked());
    EXPECT_TRUE(simLoginItem_.enabled());
    EXPECT_NE(logText(logger_, home_.path() / "logs").find("Launch: registered with the autostart entry"),
              std::string::npos);
    row->trigger();
    EXPECT_FALSE(delegate_->settings()->launchAtLogin());
    EXPECT_FALSE(simLoginItem_.enabled());
    EXPECT_THAT(takeRecord(), ElementsAre("login item register", "login item unregister"));
}

TEST_F(AppDelegateTest, TheMenuFollowsALanguageWrittenByAnotherProcessOrASync) {
    completeOnboarding();
    launch();
    QAction* quit = delegate_->menuBarController()->menuItem("menuQuitItem");
    ASSERT_NE(quit, nullptr);
    EXPECT_EQ(quit->text().toStdString(), "Quit Orvantis");
    QMenu* before = delegate_->menuBarController()->menu();
    // Written to the store alone, as `orvantis settings set` and a pull of the synced folder do:
    // no save of the settings window announces it.
    delegate_->settings()->set(settings::kSettingsLanguage, SettingsLanguage::ru);
    QApplication::processEvents();
    quit = delegate_->menuBarController()->menuItem("menuQuitItem");
    ASSERT_NE(quit, nullptr);
    EXPECT_EQ(quit->text().toStdString(), "Выйти из Orvantis");
    // Another setting written later does not rebuild the menu again.
    QMenu* rebuilt = delegate_->menuBarController()->menu();
    EXPECT_NE(rebuilt, before);
    delegate_->settings()->set(settings::kClipboardHistorySize, std::int64_t{30});
    QApplication::processEvents();
    EXPECT_EQ(delegate_->menuBarController()->menu(), rebuilt);
}

TEST_F(AppDelegateTest, AnAutostartEntryFoundAtLaunchTurnsThePreferenceOn) {
    completeOnboarding();
    simLoginItem_.setEnabled(true);
    launch();
    EXPECT_TRUE(delegate_->settings()->launchAtLogin());
    const Record record = takeRecord();
    ASSERT_GE(record.size(), 3u);
    EXPECT_THAT(Record(record.begin(), record.begin() + 3),
                ElementsAre("watch", "login item status", "login item register"));
}

}  // namespace
}  // namespace orvantis::app

namespace orvantis::app {
namespace {

TEST_F(AppDelegateTest, OnboardingShowsOnTheFirstRunAndClosedItIsNotShownAgain) {
    launch();
    ASSERT_NE(delegate_->onboardingWindow(), nullptr);
    ASSERT_NE(onboarding_, nullptr);
    // Closed by its close box with nothing granted: seen, and dropped on the next turn.
    onboarding_->model.windowClosed();
    EXPECT_TRUE(delegate_->settings()->hasCompletedOnboarding());
    desktop_.loop().runFor(1ms);
    EXPECT_EQ(delegate_->onboardingWindow(), nullptr);
    delegate_->applicationWillTerminate();
    delegate_.reset();
    takeRecord();
    launch();
    EXPECT_EQ(delegate_->onboardingWindow(), nullptr);
    for (const std::string& step : takeRecord()) EXPECT_EQ(step.find("onboarding"), std::string::npos) << step;
}

TEST_F(AppDelegateTest, ShowOnboardingAgainRaisesTheSameWindow) {
    completeOnboarding();
    launch();
    takeRecord();
    delegate_->showOnboarding();
    OnboardingWindow* first = delegate_->onboardingWindow();
    delegate_->showOnboarding();
    EXPECT_EQ(delegate_->onboardingWindow(), first);
    EXPECT_THAT(takeRecord(), ElementsAre("every 1000ms", "onboarding window en", "onboarding shown",
                                          "onboarding shown"));
    // Closed, and asked for again before the closed one is dropped: a new window, which stays.
    onboarding_->model.windowClosed();
    delegate_->showOnboarding();
    desktop_.loop().runFor(10ms);
    ASSERT_NE(delegate_->onboardingWindow(), nullptr);
    EXPECT_FALSE(onboarding_->model.isClosed());
}

TEST_F(AppDelegateTest, TheOverlayHotkeyHeldShowsThePanelAndLetGoHidesIt) {
    completeOnboarding();
    int shows = 0, hides = 0;
    struct Panel final : HotkeyOverlayView {
        int& shows;
        int& hides;
        Panel(int& s, int& h) : shows(s), hides(h) {}
        void show(const std::string&, const std::vector<HotkeyOverlayEntries::Section>&) override { ++shows; }
        void hide() override { ++hides; }
    };
    services_.makeHotkeyOverlay = [&] { return std::make_unique<Panel>(shows, hides); };
    launch();
    ASSERT_NE(delegate_->hotkeyOverlay(), nullptr);
    constexpr std::uint64_t kFlags = platform::key_flags::kControl | platform::key_flags::kShift;
    desktop_.eventTap().deliver(sim::flagsChanged(kFlags));
    desktop_.eventTap().deliver(sim::keyDown(4, kFlags));
    desktop_.loop().runUntilIdle();
    EXPECT_EQ(shows, 1);
    desktop_.eventTap().deliver(sim::keyUp(4, kFlags));
    desktop_.loop().runUntilIdle();
    EXPECT_EQ(hides, 1);
}

}  // namespace
}  // namespace orvantis::app

namespace orvantis::app {
namespace {

TEST_F(AppDelegateTest, ShowWindowOpensEachWindowAndRefusesOtherNames) {
    completeOnboarding();
    launch();
    int settingsOpened = 0;
    delegate_->setSettingsOpener([&] { ++settingsOpened; });
    EXPECT_EQ(delegate_->showWindow("settings"), std::nullopt);
    EXPECT_EQ(settingsOpened, 1);
    EXPECT_EQ(delegate_->showWindow("help"), std::nullopt);
    ASSERT_NE(delegate_->menuBarController()->helpWindow(), nullptr);
    QWidget* help = delegate_->menuBarController()->helpWindow();
    EXPECT_EQ(delegate_->showWindow("help"), std::nullopt);
    EXPECT_EQ(delegate_->menuBarController()->helpWindow(), help) << "a second show raises the same window";
    EXPECT_EQ(delegate_->showWindow("onboarding"), std::nullopt);
    EXPECT_NE(delegate_->onboardingWindow(), nullptr);
    EXPECT_EQ(delegate_->showWindow("overlay"), std::nullopt);
    EXPECT_TRUE(delegate_->hotkeyOverlay()->isVisible() || !services_.makeHotkeyOverlay);
    EXPECT_EQ(delegate_->showWindow("feedback"), std::nullopt);
    ASSERT_NE(delegate_->settingsWindow()->feedback().window(), nullptr);
    EXPECT_TRUE(delegate_->settingsWindow()->feedback().window()->isVisible());
    delegate_->settingsWindow()->feedback().window()->close();
    EXPECT_EQ(delegate_->showWindow("dashboard"), std::optional<std::string>("no window is called \"dashboard\""));
}

}  // namespace
}  // namespace orvantis::app
