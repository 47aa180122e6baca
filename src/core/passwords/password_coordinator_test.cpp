#include "core/passwords/password_coordinator.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/clipboard/clipboard_monitor.h"
#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/passwords/password_popup_model.h"
#include "core/passwords/test_random_sources.h"
#include "core/settings/preference_store.h"
#include "platform/sim/desktop.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
namespace key_code = platform::key_code;
namespace key_flags = platform::key_flags;
namespace type = platform::pasteboard_type;

class RecordingToast final : public Toast {
public:
    void show(const ToastContent& content) override { shown.push_back(content); }
    std::vector<ToastContent> shown;
};

/// The popup as the coordinator sees it, over the real popup rules.
class FakePopup final : public PasswordPopup {
public:
    FakePopup(const PasswordConfig& initial, PasswordGenerator& generator, AppSettings& settings, Callbacks callbacks)
        : model(initial, generator, settings), callbacks_(std::move(callbacks)) {}
    void show() override {
        visible_ = true;
        ++shows;
    }
    bool isVisible() const override { return visible_; }
    void bringToFront() override { ++raises; }

    void copy() {
        const std::string password = model.password();
        close();
        callbacks_.onCopy(password);
    }
    void paste() {
        const std::string password = model.password();
        close();
        callbacks_.onPaste(password);
    }
    void close() {
        if (!visible_) return;
        visible_ = false;
        callbacks_.onDismiss();
    }

    PasswordPopupModel model;
    int shows = 0;
    int raises = 0;

private:
    Callbacks callbacks_;
    bool visible_ = false;
};

class NoApplications final : public platform::Applications {
public:
    std::optional<platform::ApplicationInfo> frontmostApplication() const override { return std::nullopt; }
};

class PasswordCoordinatorTest : public ::testing::Test {
protected:
    PasswordCoordinatorTest() {
        monitor_.start();
        clipboard_.start();
        desktop_.focusTextField("");
    }

    void hotkey() {
        desktop_.press(35, key_flags::kControl | key_flags::kShift);  // Super+Shift+P
        desktop_.loop().runUntilIdle();
    }
    std::optional<std::string> clipboardText() { return desktop_.pasteboard().text(); }
    FakePopup& popup() { return *lastPopup_; }
    std::string typed() { return desktop_.keyOutput().typedText(); }

    testing::TemporaryDirectory dir_;
    sim::Desktop desktop_;
    std::unique_ptr<platform::SerialQueue> prefsQueue_ = desktop_.loop().makeSerialQueue("prefs");
    std::unique_ptr<platform::SerialQueue> logQueue_ = desktop_.loop().makeSerialQueue("log");
    PreferenceStore store_{dir_.path() / "preferences.plist", *prefsQueue_, nullptr};
    AppSettings settings_{store_};
    AppLogger logger_{dir_.path() / "logs", *logQueue_, desktop_.loop()};
    AppLog log_{logger_};
    GlobalEventMonitor monitor_{settings_, desktop_.eventTap(), desktop_.loop(), log_};
    NoApplications applications_;
    UuidGenerator ids_{3};
    ClipboardMonitor clipboard_{settings_,       desktop_.pasteboard(), applications_, desktop_.accessibility(),
                                desktop_.loop(), desktop_.loop(),       ids_,          dir_.path() / "clipboard.json",
                                nullptr};
    testing::SeededRandomSource random_{99};
    PasswordGenerator generator_{random_};
    RecordingToast toast_;
    FakePopup* lastPopup_ = nullptr;
    int popupsMade_ = 0;
    PasswordCoordinator coordinator_{
        settings_,
        monitor_,
        desktop_.loop(),
        desktop_.pasteboard(),
        desktop_.keyOutput(),
        generator_,
        toast_,
        [this] { clipboard_.acknowledgeCurrentChangeCount(); },
        [this](const PasswordConfig& initial, PasswordGenerator& generator, AppSettings& settings,
               PasswordPopup::Callbacks callbacks) -> std::unique_ptr<PasswordPopup> {
            auto popup = std::make_unique<FakePopup>(initial, generator, settings, std::move(callbacks));
            lastPopup_ = popup.get();
            ++popupsMade_;
            return popup;
        }};
};

// --- copyOnly ---

TEST_F(PasswordCoordinatorTest, CopyOnlyPutsASecretOnThePasteboardAndShowsTheToast) {
    settings_.setPasswordMode(PasswordMode::copyOnly);
    hotkey();
    const auto& content = desktop_.pasteboard().content();
    ASSERT_TRUE(content.has_value());
    ASSERT_TRUE(clipboardText().has_value());
    EXPECT_EQ(clipboardText()->size(), 16u);
    EXPECT_EQ(content->data(type::kConcealed), std::string(1, '\x01'));
    EXPECT_EQ(content->data(type::kPasswordManagerHint), "secret");
    ASSERT_EQ(toast_.shown.size(), 1u);
    EXPECT_EQ(toast_.shown[0].title, "Password copied");
    EXPECT_EQ(toast_.shown[0].subtitle, "16 chars · clears in 60 s");
    EXPECT_EQ(toast_.shown[0].symbolName, "checkmark.circle.fill");
    EXPECT_EQ(toast_.shown[0].tint, ToastTint::green);
    EXPECT_EQ(toast_.shown[0].duration, 2500ms);
    EXPECT_TRUE(typed().empty());
}

TEST_F(PasswordCoordinatorTest, ACopiedPasswordNeverEntersTheHistory) {
    settings_.setPasswordMode(PasswordMode::copyOnly);
    hotkey();
    // Acknowledged at once: the monitor's next look finds nothing new.
    EXPECT_EQ(clipboard_.lastChangeCount(), desktop_.pasteboard().changeCount());
    clipboard_.tick();
    desktop_.loop().runFor(1s);
    EXPECT_EQ(clipboard_.history().count(), 0u);
    EXPECT_EQ(clipboard_.lastChangeCount(), desktop_.pasteboard().changeCount());
}

TEST_F(PasswordCoordinatorTest, TheToastSpeaksTheInterfaceLanguage) {
    settings_.setPasswordMode(PasswordMode::copyOnly);
    settings_.setSettingsLanguage(SettingsLanguage::ru);
    hotkey();
    ASSERT_EQ(toast_.shown.size(), 1u);
    EXPECT_EQ(toast_.shown[0].title, "Пароль скопирован");
    EXPECT_EQ(toast_.shown[0].subtitle, "16 символов · очистится через 60 с");
}

TEST_F(PasswordCoordinatorTest, ThePasswordIsWipedAfterTheSetTime) {
    settings_.setPasswordMode(PasswordMode::copyOnly);
    settings_.setPasswordClipboardClearSeconds(30);
    hotkey();
    const std::int64_t afterWrite = desktop_.pasteboard().changeCount();
    // Not polled meanwhile: only the wipe's acknowledgement moves the monitor's count.
    clipboard_.stop();
    desktop_.loop().runFor(29900ms);
    EXPECT_TRUE(clipboardText().has_value());
    desktop_.loop().runFor(200ms);
    // Wiped: the pasteboard is empty, and the monitor takes the wipe as seen.
    EXPECT_TRUE(desktop_.pasteboard().types().empty());
    EXPECT_FALSE(clipboardText().has_value());
    EXPECT_GT(desktop_.pasteboard().changeCount(), afterWrite);
    EXPECT_EQ(clipboard_.lastChangeCount(), desktop_.pasteboard().changeCount());
    clipboard_.tick();
    desktop_.loop().runFor(1s);
    EXPECT_EQ(clipboard_.history().count(), 0u);
}

TEST_F(PasswordCoordinatorTest, SomethingCopiedBeforeTheWipeStays) {
    settings_.setPasswordMode(PasswordMode::copyOnly);
    settings_.setPasswordClipboardClearSeconds(30);
    hotkey();
    desktop_.loop().runFor(10s);
    desktop_.pasteboard().writeTextFromOtherApp("the user's own text");
    desktop_.loop().runFor(60s);
    EXPECT_EQ(clipboardText(), "the user's own text");
}

TEST_F(PasswordCoordinatorTest, OnlyTheSecondOfTwoPasswordsSchedulesALiveWipe) {
    settings_.setPasswordMode(PasswordMode::copyOnly);
    settings_.setPasswordClipboardClearSeconds(30);
    hotkey();
    desktop_.loop().runFor(20s);
    const std::size_t timersWithOneWipe = desktop_.loop().pendingTimers();
    hotkey();
    const std::string second = *clipboardText();
    // The first wipe is cancelled, not left to find the count changed.
    EXPECT_EQ(desktop_.loop().pendingTimers(), timersWithOneWipe);
    // 30 s after the first: the first wipe is gone, the second password stays.
    desktop_.loop().runFor(10s + 100ms);
    EXPECT_EQ(clipboardText(), second);
    // 30 s after the second: wiped.
    desktop_.loop().runFor(20s);
    EXPECT_FALSE(clipboardText().has_value());
}

TEST_F(PasswordCoordinatorTest, AWipeSettingOf3600IsUsedAs600) {
    settings_.setPasswordMode(PasswordMode::copyOnly);
    store_.set("MOLVEX.Orvantis.passwordClipboardClearSec", std::int64_t{3600});
    hotkey();
    ASSERT_EQ(toast_.shown.size(), 1u);
    EXPECT_EQ(toast_.shown[0].subtitle, "16 chars · clears in 600 s");
    desktop_.loop().runFor(599s);
    EXPECT_TRUE(clipboardText().has_value());
    desktop_.loop().runFor(2s);
    EXPECT_FALSE(clipboardText().has_value());
}

TEST_F(PasswordCoordinatorTest, AWipeSettingOfZeroSaysOnlyTheLengthAndNeverWipes) {
    settings_.setPasswordMode(PasswordMode::copyOnly);
    settings_.setPasswordClipboardClearSeconds(0);
    settings_.setPasswordLength(24);
    hotkey();
    ASSERT_EQ(toast_.shown.size(), 1u);
    EXPECT_EQ(toast_.shown[0].subtitle, "24 chars");
    EXPECT_FALSE(coordinator_.hasPendingWipe());
    desktop_.loop().runFor(3600s);
    EXPECT_EQ(clipboardText()->size(), 24u);
}

TEST_F(PasswordCoordinatorTest, LengthsOutsideTheRangeAreClamped) {
    settings_.setPasswordMode(PasswordMode::copyOnly);
    store_.set("MOLVEX.Orvantis.passwordLength", std::int64_t{2});
    hotkey();
    EXPECT_EQ(clipboardText()->size(), 4u);
    store_.set("MOLVEX.Orvantis.passwordLength", std::int64_t{500});
    hotkey();
    EXPECT_EQ(clipboardText()->size(), 128u);
}

TEST_F(PasswordCoordinatorTest, AllClassesOffDoesNothingInEveryMode) {
    settings_.setPasswordIncludeUppercase(false);
    settings_.setPasswordIncludeLowercase(false);
    settings_.setPasswordIncludeDigits(false);
    settings_.setPasswordIncludeSymbols(false);
    const std::int64_t before = desktop_.pasteboard().changeCount();
    for (PasswordMode mode : {PasswordMode::copyOnly, PasswordMode::autoPaste}) {
        settings_.setPasswordMode(mode);
        hotkey();
        desktop_.loop().runFor(1s);
    }
    EXPECT_EQ(desktop_.pasteboard().changeCount(), before);
    EXPECT_TRUE(toast_.shown.empty());
    EXPECT_TRUE(desktop_.keyOutput().log().empty());
}

TEST_F(PasswordCoordinatorTest, SwitchedOffDoesNothing) {
    settings_.setPasswordEnabled(false);
    for (PasswordMode mode : kAllPasswordModes) {
        settings_.setPasswordMode(mode);
        hotkey();
        desktop_.loop().runFor(1s);
    }
    EXPECT_EQ(popupsMade_, 0);
    EXPECT_TRUE(toast_.shown.empty());
    EXPECT_TRUE(desktop_.keyOutput().log().empty());
    EXPECT_EQ(desktop_.pasteboard().programWriteCount(), 0u);
}

// --- autoPaste ---

TEST_F(PasswordCoordinatorTest, AutoPasteTypes120MillisecondsLaterWithoutThePasteboard) {
    settings_.setPasswordMode(PasswordMode::autoPaste);
    settings_.setPasswordLength(20);
    hotkey();
    ASSERT_EQ(toast_.shown.size(), 1u);
    EXPECT_EQ(toast_.shown[0].title, "Password typed");
    EXPECT_EQ(toast_.shown[0].subtitle, "20 chars");
    EXPECT_TRUE(typed().empty());
    desktop_.loop().runFor(110ms);
    EXPECT_TRUE(typed().empty());
    desktop_.loop().runFor(20ms);
    EXPECT_EQ(typed().size(), 20u);
    EXPECT_EQ(desktop_.focusedText(), typed());
    // Typed as text, with no modifier: the keys the user still holds don't change it.
    for (const auto& sent : desktop_.keyOutput().log()) EXPECT_EQ(sent.kind, sim::SentKey::Kind::text);
    EXPECT_EQ(desktop_.pasteboard().programWriteCount(), 0u);
    EXPECT_FALSE(coordinator_.hasPendingWipe());
}

// --- popup ---

TEST_F(PasswordCoordinatorTest, PopupModeShowsAPopupWithTheSettings) {
    settings_.setPasswordLength(12);
    hotkey();
    ASSERT_EQ(popupsMade_, 1);
    EXPECT_EQ(popup().shows, 1);
    EXPECT_EQ(popup().model.password().size(), 12u);
    EXPECT_TRUE(toast_.shown.empty());
    EXPECT_EQ(desktop_.pasteboard().programWriteCount(), 0u);
}

TEST_F(PasswordCoordinatorTest, ASecondHotkeyBringsTheVisiblePopupForwardKeepingThePassword) {
    hotkey();
    const std::string password = popup().model.password();
    hotkey();
    EXPECT_EQ(popupsMade_, 1);
    EXPECT_EQ(popup().raises, 1);
    EXPECT_EQ(popup().model.password(), password);
}

TEST_F(PasswordCoordinatorTest, PopupCopyWritesTheSecretAndShowsTheToast) {
    hotkey();
    const std::string password = popup().model.password();
    popup().copy();
    desktop_.loop().runUntilIdle();
    EXPECT_EQ(clipboardText(), password);
    EXPECT_EQ(desktop_.pasteboard().content()->data(type::kConcealed), std::string(1, '\x01'));
    ASSERT_EQ(toast_.shown.size(), 1u);
    EXPECT_EQ(toast_.shown[0].title, "Password copied");
    EXPECT_TRUE(coordinator_.hasPendingWipe());
    // The closed popup is dropped; the next hotkey makes a new one with a new password.
    EXPECT_EQ(coordinator_.popup(), nullptr);
    hotkey();
    EXPECT_EQ(popupsMade_, 2);
}

TEST_F(PasswordCoordinatorTest, PopupPasteTypesAfter120MillisecondsWithoutAToast) {
    hotkey();
    const std::string password = popup().model.password();
    popup().paste();
    desktop_.loop().runFor(119ms);
    EXPECT_TRUE(typed().empty());
    desktop_.loop().runFor(2ms);
    EXPECT_EQ(typed(), password);
    EXPECT_TRUE(toast_.shown.empty());
    EXPECT_EQ(desktop_.pasteboard().programWriteCount(), 0u);
}

TEST_F(PasswordCoordinatorTest, TheWipeOutlivesThePopup) {
    settings_.setPasswordClipboardClearSeconds(5);
    hotkey();
    popup().copy();
    desktop_.loop().runFor(6s);
    EXPECT_EQ(coordinator_.popup(), nullptr);
    EXPECT_FALSE(clipboardText().has_value());
}

}  // namespace
}  // namespace orvantis
