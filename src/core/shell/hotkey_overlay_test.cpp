#include "core/shell/hotkey_overlay.h"

#include "core/settings/hotkey_names.h"

#include <gtest/gtest.h>

#include <chrono>

#include "core/shell/shell_texts.h"
#include "platform/sim/event_tap.h"
#include "testing/utilities_test_support.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using utilities_testing::UtilitiesFixture;
namespace key_flags = platform::key_flags;

struct ViewRecord {
    int made = 0, shows = 0, hides = 0;
    std::string title;
    std::vector<HotkeyOverlayEntries::Section> sections;
};

class FakeView final : public HotkeyOverlayView {
public:
    explicit FakeView(ViewRecord& r) : r_(r) {}
    void show(const std::string& title, const std::vector<HotkeyOverlayEntries::Section>& sections) override {
        ++r_.shows;
        r_.title = title;
        r_.sections = sections;
    }
    void hide() override { ++r_.hides; }

private:
    ViewRecord& r_;
};

// The overlay hotkey by default: H with Control and Shift (Super+Shift+H on Linux).
constexpr std::uint16_t kKeyH = 4;
constexpr std::uint64_t kFlags = key_flags::kControl | key_flags::kShift;

class HotkeyOverlayTest : public ::testing::Test, protected UtilitiesFixture {
protected:
    void press() {
        desktop.eventTap().deliver(sim::flagsChanged(kFlags));
        desktop.eventTap().deliver(sim::keyDown(kKeyH, kFlags));
        settle();
    }
    void release() {
        desktop.eventTap().deliver(sim::keyUp(kKeyH, kFlags));
        settle();
    }
    ViewRecord record;
    HotkeyOverlayCoordinator coordinator{&monitor, settings, desktop.loop(), [this] {
                                             ++record.made;
                                             return std::make_unique<FakeView>(record);
                                         }};
};

TEST(LinuxHotkeyNameTest, NamesModifiersTheLinuxWayInAFixedOrder) {
    EXPECT_EQ(linuxHotkeyName({7, 0x60000}), "Super+Shift+X");
    EXPECT_EQ(linuxHotkeyName({7, 0xC0000}), "Super+Alt+X");
    EXPECT_EQ(linuxHotkeyName({51, 0x20000}), "Shift+Backspace");
    EXPECT_EQ(linuxHotkeyName({53, 0x1C0000}), "Ctrl+Super+Alt+Esc");
    EXPECT_EQ(linuxHotkeyName({49, 0x100000}), "Ctrl+Space");
}

TEST_F(HotkeyOverlayTest, HeldItShowsEveryFeatureAndLetGoItHides) {
    press();
    ASSERT_EQ(record.shows, 1);
    EXPECT_TRUE(coordinator.isVisible());
    EXPECT_EQ(record.title, "Orvantis Hotkeys");
    ASSERT_EQ(record.sections.size(), 2u);
    EXPECT_FALSE(record.sections[0].title.has_value());
    ASSERT_EQ(record.sections[0].entries.size(), 9u);
    EXPECT_EQ(record.sections[0].entries[0], (HotkeyOverlayEntries::Entry{"input-keyboard", "Layout Switcher",
                                                                          "Shift+Backspace", true}));
    EXPECT_EQ(record.sections[0].entries[1].hotkey, "Super+Shift+X");
    EXPECT_EQ(record.sections[0].entries[8].hotkey, "Super+Shift+H");
    EXPECT_EQ(record.sections[1].title, std::optional<std::string>("Bonus"));
    ASSERT_EQ(record.sections[1].entries.size(), 3u);
    release();
    EXPECT_EQ(record.hides, 1);
    EXPECT_FALSE(coordinator.isVisible());
}

TEST_F(HotkeyOverlayTest, LettingGoOfAModifierHidesItToo) {
    press();
    desktop.eventTap().deliver(sim::flagsChanged(key_flags::kControl));
    settle();
    EXPECT_EQ(record.hides, 1);
}

TEST_F(HotkeyOverlayTest, ASecondPressWhileVisibleDoesNothingAndTheReleaseHidesOnce) {
    coordinator.pressed();
    coordinator.pressed();
    EXPECT_EQ(record.shows, 1);
    coordinator.released();
    coordinator.released();
    EXPECT_EQ(record.hides, 1);
    EXPECT_EQ(record.made, 1);
}

TEST_F(HotkeyOverlayTest, ThePanelIsMadeOnceAndKept) {
    press();
    release();
    press();
    release();
    EXPECT_EQ(record.made, 1);
    EXPECT_EQ(record.shows, 2);
}

TEST_F(HotkeyOverlayTest, ALanguageChangeShowsAtTheNextPress) {
    press();
    settings.setSettingsLanguage(SettingsLanguage::ru);
    EXPECT_EQ(record.title, "Orvantis Hotkeys");
    release();
    press();
    EXPECT_EQ(record.title, "Сочетания клавиш Orvantis");
    EXPECT_EQ(record.sections[1].title, std::optional<std::string>("Бонус"));
}

TEST_F(HotkeyOverlayTest, AFeatureTurnedOffKeepsItsRowDimmedWithItsHotkey) {
    settings.setPomodoroEnabled(false);
    settings.setCaffeineEnabled(false);
    coordinator.pressed();
    const auto& pomodoro = record.sections[0].entries[4];
    EXPECT_EQ(pomodoro.name, "Pomodoro Timer");
    EXPECT_FALSE(pomodoro.enabled);
    EXPECT_EQ(pomodoro.hotkey, "Super+Shift+M");
    EXPECT_FALSE(record.sections[1].entries[2].enabled);
    EXPECT_TRUE(record.sections[0].entries[8].enabled) << "the overlay's own row is always on";
}

TEST_F(HotkeyOverlayTest, FromTheCommandLineItStaysForAWhile) {
    coordinator.showForCommand();
    EXPECT_TRUE(coordinator.isVisible());
    desktop.loop().runFor(HotkeyOverlayCoordinator::kCommandDisplayTime - 1ms);
    EXPECT_TRUE(coordinator.isVisible());
    coordinator.showForCommand();  // again: the time starts over
    desktop.loop().runFor(2s);
    EXPECT_TRUE(coordinator.isVisible());
    desktop.loop().runFor(HotkeyOverlayCoordinator::kCommandDisplayTime);
    EXPECT_FALSE(coordinator.isVisible());
    EXPECT_EQ(record.shows, 1);
}

TEST(ShellTextsTest, BothLanguagesFillEveryText) {
    for (SettingsLanguage language : {SettingsLanguage::en, SettingsLanguage::ru}) {
        const auto texts = shell::OnboardingTexts::make(language);
        for (std::string_view subtitle : texts.featureSubtitles) EXPECT_FALSE(subtitle.empty());
        EXPECT_FALSE(texts.granted.empty());
        EXPECT_FALSE(texts.serviceAbsentNote.empty());
    }
    EXPECT_NE(shell::OnboardingTexts::make(SettingsLanguage::ru).granted,
              shell::OnboardingTexts::make(SettingsLanguage::en).granted);
}

}  // namespace
}  // namespace orvantis
