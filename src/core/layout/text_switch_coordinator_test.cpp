#include "core/layout/text_switch_coordinator.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/events/global_event_monitor.h"
#include "core/events/notification_center.h"
#include "core/layout/layout_switcher.h"
#include "core/layout/layout_translator.h"
#include "core/layout/transliteration_map.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "testing/test_support.h"

#include "platform/key_output.h"
#include "platform/sim/desktop.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using platform::TextRange;
using sim::SentKey;
using Direction = TransliterationMap::Direction;

constexpr std::uint16_t kDelete = platform::key_code::kDelete;
constexpr std::uint64_t kShift = platform::key_flags::kShift;

/// The whole road in the simulated desktop: the user's keys pass the desktop's tap into the
/// real event monitor, whose closures drive the coordinator; the coordinator reads the focused
/// field through the simulated accessibility layer, types through the simulated key output
/// and selects sources among real XKB layouts.
class TextSwitchCoordinatorTest : public ::testing::Test {
protected:
    TextSwitchCoordinatorTest() {
        addSource("us", "English (US)", "en");
        addSource("ru", "Russian", "ru");
        monitor_.start();
        observers_.push_back(notifications_.observe(orvantisNoOppositeSource, [this] { ++noOpposite_; }));
        observers_.push_back(notifications_.observe(orvantisClearedWarning, [this] { ++cleared_; }));
        rebuild();
    }

    void addSource(const char* layout, const char* name, const char* language) {
        ASSERT_TRUE(desktop_.inputSources().addXkb(layout, "", name, {language}));
    }
    /// A new coordinator, with `policy` deciding on accessibility writes.
    void rebuild(TextSwitchCoordinator::AccessibilityWritePolicy policy = {}) {
        coordinator_.reset();
        coordinator_ = std::make_unique<TextSwitchCoordinator>(settings_, monitor_, switcher_, map_,
                                                               desktop_.accessibility(), desktop_.keyOutput(),
                                                               desktop_.loop(), notifications_, log_.app,
                                                               std::move(policy));
    }
    void alwaysWriteThroughAccessibility() {
        rebuild([](const platform::TextElement&) { return true; });
    }

    void settle() { desktop_.loop().runUntilIdle(); }
    void runFor(platform::Duration duration) {
        settle();
        desktop_.loop().runFor(duration);
    }
    /// The user types `text`, and the monitor's closures run.
    void type(std::string_view text) {
        desktop_.type(text);
        settle();
    }
    /// The user presses Shift+Backspace, and the monitor's closures run.
    void pressHotkey() {
        desktop_.press(kDelete, kShift);
        settle();
    }
    std::string currentSource() {
        const auto current = desktop_.inputSources().currentSource();
        return current ? current->sourceID : std::string("(none)");
    }
    std::string text() const { return desktop_.focusedText(); }
    TextSwitchCoordinator& coordinator() { return *coordinator_; }
    sim::KeyOutput& keys() { return desktop_.keyOutput(); }

    testing::TemporaryDirectory dir_;
    sim::Desktop desktop_;
    std::unique_ptr<platform::SerialQueue> prefsQueue_ = desktop_.loop().makeSerialQueue("prefs");
    std::unique_ptr<platform::SerialQueue> logQueue_ = desktop_.loop().makeSerialQueue("log");
    PreferenceStore store_{dir_.path() / "preferences.plist", *prefsQueue_, nullptr};
    AppSettings settings_{store_};
    AppLogger logger_{dir_.path() / "logs", *logQueue_, desktop_.loop()};
    AppLog log_{logger_};
    GlobalEventMonitor monitor_{settings_, desktop_.eventTap(), desktop_.loop(), log_};
    LayoutSwitcher switcher_{desktop_.inputSources()};
    LayoutTranslator translator_{desktop_.inputSources()};
    TransliterationMap map_{translator_};
    NotificationCenter notifications_;
    std::vector<Subscription> observers_;
    int noOpposite_ = 0;
    int cleared_ = 0;
    std::unique_ptr<TextSwitchCoordinator> coordinator_;
};

// --- The road of one retyping ---------------------------------------------------------------

TEST_F(TextSwitchCoordinatorTest, GhbdtnBecomesPrivetAndTheRussianSourceIsSelected) {
    desktop_.focusTextField("");
    type("ghbdtn");
    EXPECT_EQ(coordinator().buffer().string(), "ghbdtn");

    pressHotkey();
    // Erased at once; the retype delay (100 ms by default) holds back the source and the text.
    EXPECT_EQ(text(), "");
    EXPECT_EQ(currentSource(), "us");
    EXPECT_TRUE(coordinator().isSwitching());

    runFor(100ms);
    EXPECT_EQ(text(), "привет");
    EXPECT_EQ(currentSource(), "ru");
    EXPECT_EQ(cleared_, 1);
    EXPECT_EQ(noOpposite_, 0);
    EXPECT_EQ(keys().count(kDelete, 0), 6u);
    EXPECT_EQ(keys().typedText(), "привет");
    // One Unicode key event per character, after the deletes.
    ASSERT_EQ(keys().log().size(), 12u);
    EXPECT_EQ(keys().log()[6], SentKey::typed("п"));

    // The program's own deletes and characters passed the tap but stayed out of the buffer.
    settle();
    EXPECT_EQ(coordinator().buffer().string(), "привет");
    ASSERT_TRUE(coordinator().lastOperation().has_value());
    EXPECT_EQ(coordinator().lastOperation()->originalString(), "ghbdtn");
    EXPECT_EQ(coordinator().lastOperation()->switchedString(), "привет");
    EXPECT_EQ(coordinator().lastOperation()->fromLayout.sourceID, "us");
    EXPECT_EQ(coordinator().lastOperation()->toLayout.sourceID, "ru");
    EXPECT_TRUE(coordinator().lastOperation()->isToggleable);
    ASSERT_TRUE(coordinator().lastSwitchedToLayout().has_value());
    EXPECT_EQ(coordinator().lastSwitchedToLayout()->sourceID, "ru");

    // The interval ends 0.25 s after the text was sent.
    runFor(249ms);
    EXPECT_TRUE(coordinator().isSwitching());
    runFor(1ms);
    EXPECT_FALSE(coordinator().isSwitching());
}

TEST_F(TextSwitchCoordinatorTest, WithTheSwitcherOffThePressDoesNothingAndNeverReachesTheField) {
    desktop_.focusTextField("");
    type("ghbdtn");
    settings_.setLayoutSwitchEnabled(false);
    pressHotkey();
    runFor(1s);
    EXPECT_EQ(text(), "ghbdtn");
    EXPECT_TRUE(keys().log().empty());
    EXPECT_EQ(currentSource(), "us");
}

TEST_F(TextSwitchCoordinatorTest, ASecondPressAfterTheIntervalTurnsTextAndSourceBack) {
    desktop_.focusTextField("");
    type("ghbdtn");
    pressHotkey();
    runFor(350ms);
    ASSERT_EQ(text(), "привет");
    ASSERT_FALSE(coordinator().isSwitching());

    pressHotkey();
    runFor(100ms);
    EXPECT_EQ(text(), "ghbdtn");
    EXPECT_EQ(currentSource(), "us");
    EXPECT_EQ(coordinator().buffer().string(), "ghbdtn");
    EXPECT_EQ(cleared_, 2);
}

TEST_F(TextSwitchCoordinatorTest, ASecondPressInsideTheIntervalActsWhenItEnds) {
    desktop_.focusTextField("");
    type("ghbdtn");
    pressHotkey();
    runFor(100ms);
    ASSERT_EQ(text(), "привет");

    // 0.1 s after the first press: stored, nothing happens now.
    pressHotkey();
    EXPECT_TRUE(coordinator().pendingHotkey());
    pressHotkey();  // stored once, however often
    runFor(249ms);
    EXPECT_EQ(text(), "привет");
    EXPECT_EQ(currentSource(), "ru");
    EXPECT_EQ(keys().count(kDelete, 0), 6u);

    runFor(1ms);  // the end of the interval runs the stored press
    EXPECT_FALSE(coordinator().pendingHotkey());
    runFor(100ms);
    EXPECT_EQ(text(), "ghbdtn");
    EXPECT_EQ(currentSource(), "us");
    EXPECT_EQ(keys().count(kDelete, 0), 12u);
}

TEST_F(TextSwitchCoordinatorTest, TheFirstCapitalIsKept) {
    desktop_.focusTextField("");
    type("Ghbdtn");
    pressHotkey();
    runFor(100ms);
    EXPECT_EQ(text(), "Привет");
    runFor(250ms);
    pressHotkey();
    runFor(100ms);
    EXPECT_EQ(text(), "Ghbdtn");
}

TEST_F(TextSwitchCoordinatorTest, KeysPressedInTheRussianLayoutTypeRussian) {
    desktop_.inputSources().setCurrent("ru");
    desktop_.focusTextField("");
    desktop_.pressKeysOf("ghbdtn");
    settle();
    EXPECT_EQ(text(), "привет");
    EXPECT_EQ(coordinator().buffer().string(), "привет");
    pressHotkey();
    runFor(100ms);
    EXPECT_EQ(text(), "ghbdtn");
    EXPECT_EQ(currentSource(), "us");
}

// --- Edge cases -------------------------------------------------------------------------------

TEST_F(TextSwitchCoordinatorTest, EmptyBufferAndNoFocusedElementOnlyChangesTheLayout) {
    desktop_.focusNonTextElement();
    pressHotkey();
    EXPECT_EQ(currentSource(), "ru");
    EXPECT_EQ(cleared_, 1);
    EXPECT_TRUE(keys().log().empty());
    // A plain layout change opens no interval and is not remembered as a retyping.
    EXPECT_FALSE(coordinator().isSwitching());
    EXPECT_FALSE(coordinator().lastSwitchedToLayout().has_value());
}

TEST_F(TextSwitchCoordinatorTest, OnlyOneSourcePostsNoOppositeSourceAndTypesNothing) {
    desktop_.inputSources().remove("ru");
    desktop_.focusTextField("");
    type("ghbdtn");
    pressHotkey();
    runFor(1s);
    EXPECT_EQ(noOpposite_, 1);
    EXPECT_EQ(cleared_, 0);
    EXPECT_EQ(text(), "ghbdtn");
    EXPECT_TRUE(keys().log().empty());
    EXPECT_EQ(currentSource(), "us");
}

TEST_F(TextSwitchCoordinatorTest, NoCurrentSourcePostsNoOppositeSource) {
    desktop_.inputSources().setCurrent(std::nullopt);
    desktop_.focusNonTextElement();
    pressHotkey();
    EXPECT_EQ(noOpposite_, 1);
    EXPECT_TRUE(keys().log().empty());
}

TEST_F(TextSwitchCoordinatorTest, AWordTheMapKeepsIsNotRetypedAndTheBufferPathFindsTheSame) {
    desktop_.focusTextField("");
    type("123");
    pressHotkey();
    runFor(1s);
    EXPECT_EQ(text(), "123");
    EXPECT_TRUE(keys().log().empty());
    EXPECT_EQ(currentSource(), "us");
    EXPECT_EQ(cleared_, 0);
    EXPECT_EQ(noOpposite_, 0);
}

TEST_F(TextSwitchCoordinatorTest, AWordTheMapKeepsWithAnEmptyBufferChangesTheLayout) {
    desktop_.focusTextField("123");  // in the field, never typed: the buffer is empty
    pressHotkey();
    EXPECT_EQ(text(), "123");
    EXPECT_TRUE(keys().log().empty());
    EXPECT_EQ(currentSource(), "ru");
    EXPECT_EQ(cleared_, 1);
}

TEST_F(TextSwitchCoordinatorTest, ASecureFieldIsNeverTouched) {
    auto& field = desktop_.focusTextField("");
    type("ghbdtn");
    field.setSecure(true);
    ASSERT_FALSE(coordinator().buffer().isEmpty());
    pressHotkey();
    runFor(1s);
    EXPECT_EQ(field.text(), "ghbdtn");
    EXPECT_TRUE(keys().log().empty());
    EXPECT_EQ(currentSource(), "us");
    EXPECT_EQ(cleared_ + noOpposite_, 0);
}

TEST_F(TextSwitchCoordinatorTest, TheCaretAtTheStartDoesNothingThoughTheBufferHoldsText) {
    auto& field = desktop_.focusTextField("");
    type("ghbdtn");
    ASSERT_TRUE(field.select(TextRange{0, 0}));
    ASSERT_EQ(coordinator().buffer().string(), "ghbdtn");
    pressHotkey();
    runFor(1s);
    EXPECT_EQ(field.text(), "ghbdtn");
    EXPECT_TRUE(keys().log().empty());
    EXPECT_EQ(currentSource(), "us");
    EXPECT_EQ(cleared_ + noOpposite_, 0);
}

TEST_F(TextSwitchCoordinatorTest, OnlyWhitespaceBeforeTheCaretDoesNothing) {
    desktop_.focusTextField("   ");
    pressHotkey();
    runFor(1s);
    EXPECT_TRUE(keys().log().empty());
    EXPECT_EQ(currentSource(), "us");
}

TEST_F(TextSwitchCoordinatorTest, BlanksBetweenTheWordAndTheCaretAreErasedAndTypedBack) {
    desktop_.focusTextField("ghbdtn  ");
    pressHotkey();
    runFor(100ms);
    EXPECT_EQ(keys().count(kDelete, 0), 8u);
    EXPECT_EQ(keys().typedText(), "привет  ");
    EXPECT_EQ(text(), "привет  ");
    // The buffer holds the word without the blanks.
    EXPECT_EQ(coordinator().buffer().string(), "привет");
}

TEST_F(TextSwitchCoordinatorTest, OnlyTheLastWordIsRetyped) {
    desktop_.focusTextField("hello ghbdtn");
    pressHotkey();
    runFor(100ms);
    EXPECT_EQ(text(), "hello привет");
}

TEST_F(TextSwitchCoordinatorTest, AsManyCyrillicAsLatinLettersGoEnglishToRussian) {
    EXPECT_EQ(TextSwitchCoordinator::dominantDirection({"a", "б"}), Direction::enToRu);
    EXPECT_EQ(TextSwitchCoordinator::dominantDirection({"1", "?"}), Direction::enToRu);
    EXPECT_EQ(TextSwitchCoordinator::dominantDirection({}), Direction::enToRu);
    EXPECT_EQ(TextSwitchCoordinator::dominantDirection({"a", "б", "в"}), Direction::ruToEn);
    EXPECT_EQ(TextSwitchCoordinator::dominantDirection({"ü", "б"}), Direction::ruToEn);
}

TEST_F(TextSwitchCoordinatorTest, The257thCharacterInARowEmptiesTheBuffer) {
    desktop_.focusTextField("");
    type(std::string(256, 'a'));
    EXPECT_EQ(coordinator().buffer().count(), 256u);
    type("a");
    EXPECT_TRUE(coordinator().buffer().isEmpty());
}

TEST_F(TextSwitchCoordinatorTest, WithThreeSourcesTheSecondPressSelectsTheThird) {
    addSource("ua", "Ukrainian", "uk");
    desktop_.focusTextField("");
    type("ghbdtn");
    pressHotkey();
    runFor(350ms);
    ASSERT_EQ(text(), "привет");
    ASSERT_EQ(currentSource(), "ru");

    pressHotkey();
    runFor(100ms);
    EXPECT_EQ(text(), "ghbdtn");
    EXPECT_EQ(currentSource(), "ua");
}

TEST_F(TextSwitchCoordinatorTest, AnAccessibilityWriteThatChangesNothingFallsBackToKeystrokes) {
    alwaysWriteThroughAccessibility();
    auto& field = desktop_.focusTextField("ghbdtn");
    field.setAccessibilityWrites(sim::AccessibilityWrites::ignored);
    pressHotkey();
    EXPECT_EQ(keys().count(kDelete, 0), 6u);
    EXPECT_EQ(text(), "");
    runFor(99ms);
    EXPECT_EQ(text(), "");  // the retype delay applies on this path too
    runFor(1ms);
    EXPECT_EQ(text(), "привет");
    EXPECT_EQ(currentSource(), "ru");
}

TEST_F(TextSwitchCoordinatorTest, AnAccessibilityWriteReplacesTheWordAndLeavesTheBlanks) {
    alwaysWriteThroughAccessibility();
    auto& field = desktop_.focusTextField("ghbdtn  ");
    pressHotkey();
    EXPECT_EQ(field.text(), "привет  ");
    EXPECT_EQ(currentSource(), "ru");
    EXPECT_TRUE(keys().log().empty());
    EXPECT_EQ(cleared_, 1);
    EXPECT_TRUE(coordinator().isSwitching());
    runFor(250ms);
    EXPECT_FALSE(coordinator().isSwitching());
}

TEST_F(TextSwitchCoordinatorTest, ARefusedAccessibilityWriteFallsBackToKeystrokes) {
    alwaysWriteThroughAccessibility();
    auto& field = desktop_.focusTextField("ghbdtn");
    field.setWritable(false);
    pressHotkey();
    runFor(100ms);
    EXPECT_EQ(field.text(), "привет");
    EXPECT_EQ(keys().count(kDelete, 0), 6u);
}

TEST_F(TextSwitchCoordinatorTest, ASelectionIsConvertedInPlace) {
    alwaysWriteThroughAccessibility();
    auto& field = desktop_.focusTextField("ghbdtn vbh!");
    ASSERT_TRUE(field.select(TextRange{7, 3}));
    pressHotkey();
    EXPECT_EQ(field.text(), "ghbdtn мир!");
    EXPECT_EQ(currentSource(), "ru");
}

TEST_F(TextSwitchCoordinatorTest, AWholeSelectionIsRetypedByKeystrokes) {
    auto& field = desktop_.focusTextField("ghbdtn vbh");
    field.selectAll();
    pressHotkey();
    runFor(100ms);
    EXPECT_EQ(field.text(), "привет мир");
    EXPECT_EQ(keys().count(kDelete, 0), 10u);
    EXPECT_EQ(currentSource(), "ru");
}

TEST_F(TextSwitchCoordinatorTest, KeystrokesForASelectionCountOneDeletePerSelectedCharacter) {
    // The first delete takes the whole selection; the count makes no allowance for that.
    auto& field = desktop_.focusTextField("ab vbh");
    ASSERT_TRUE(field.select(TextRange{3, 3}));
    pressHotkey();
    runFor(100ms);
    EXPECT_EQ(keys().count(kDelete, 0), 3u);
    EXPECT_EQ(field.text(), "aмир");  // the blank and the "b" went with the last two deletes
}

TEST_F(TextSwitchCoordinatorTest, AMixedScriptSelectionIsLeftAlone) {
    auto& field = desktop_.focusTextField("ghbdtn мир");
    field.selectAll();
    pressHotkey();
    runFor(1s);
    EXPECT_EQ(field.text(), "ghbdtn мир");
    EXPECT_TRUE(keys().log().empty());
    EXPECT_EQ(currentSource(), "us");
    EXPECT_EQ(cleared_ + noOpposite_, 0);
}

TEST_F(TextSwitchCoordinatorTest, AnUnreadableFieldIsServedFromTheBuffer) {
    auto& field = desktop_.focusTextField("");
    field.setReadable(false);
    type("ghbdtn");
    pressHotkey();
    runFor(100ms);
    EXPECT_EQ(field.text(), "привет");
    EXPECT_EQ(currentSource(), "ru");
    EXPECT_EQ(coordinator().buffer().string(), "привет");
}

TEST_F(TextSwitchCoordinatorTest, ASwitchDelayOfZeroRetypesAtOnce) {
    settings_.setSwitchDelayMs(0);
    desktop_.focusTextField("");
    type("ghbdtn");
    pressHotkey();
    EXPECT_EQ(text(), "привет");
    EXPECT_EQ(currentSource(), "ru");
}

TEST_F(TextSwitchCoordinatorTest, ANegativeSwitchDelayRetypesAtOnce) {
    store_.set(settings::kSwitchDelayMs.key, std::int64_t{-20});
    desktop_.focusTextField("ghbdtn");
    pressHotkey();
    EXPECT_EQ(text(), "привет");
}

TEST_F(TextSwitchCoordinatorTest, ASwitchDelayOf900WaitsHalfASecond) {
    store_.set(settings::kSwitchDelayMs.key, std::int64_t{900});
    desktop_.focusTextField("ghbdtn");
    pressHotkey();
    runFor(499ms);
    EXPECT_EQ(text(), "");
    EXPECT_EQ(currentSource(), "us");
    runFor(1ms);
    EXPECT_EQ(text(), "привет");
    EXPECT_EQ(currentSource(), "ru");
}

// --- Event handling ---------------------------------------------------------------------------

TEST_F(TextSwitchCoordinatorTest, BackspaceRemovesFromTheBufferAndWhitespaceEmptiesIt) {
    desktop_.focusTextField("");
    type("ghbdtnn");
    desktop_.press(kDelete);
    settle();
    EXPECT_EQ(coordinator().buffer().string(), "ghbdtn");
    EXPECT_EQ(text(), "ghbdtn");
    type(" ");
    EXPECT_TRUE(coordinator().buffer().isEmpty());
}

TEST_F(TextSwitchCoordinatorTest, TypingKeepsTheSwitchedSourceAndAResetClearsIt) {
    desktop_.focusTextField("");
    type("ghbdtn");
    pressHotkey();
    runFor(350ms);
    ASSERT_TRUE(coordinator().lastSwitchedToLayout().has_value());

    type("f");
    EXPECT_TRUE(coordinator().lastSwitchedToLayout().has_value());
    EXPECT_FALSE(coordinator().lastOperation().has_value());
    desktop_.press(platform::key_code::kLeftArrow);
    settle();
    EXPECT_FALSE(coordinator().lastSwitchedToLayout().has_value());
    EXPECT_TRUE(coordinator().buffer().isEmpty());
}

TEST_F(TextSwitchCoordinatorTest, EventsInsideTheIntervalAreIgnored) {
    desktop_.focusTextField("");
    type("ghbdtn");
    pressHotkey();
    runFor(100ms);
    coordinator().handleReset();
    coordinator().handleCharacter("x");
    coordinator().handleBackspace();
    EXPECT_EQ(coordinator().buffer().string(), "привет");
    EXPECT_TRUE(coordinator().lastSwitchedToLayout().has_value());
}

TEST_F(TextSwitchCoordinatorTest, ACoordinatorGoneDuringTheDelayIsNeverCalled) {
    desktop_.focusTextField("ghbdtn");
    pressHotkey();
    coordinator_.reset();
    runFor(1s);
    EXPECT_EQ(text(), "");
    EXPECT_EQ(currentSource(), "us");
    pressHotkey();  // the monitor's slot is empty now
    runFor(1s);
    EXPECT_EQ(currentSource(), "us");
}

// --- Word extraction --------------------------------------------------------------------------

TEST(TextSwitchCoordinatorWordTest, TheWordBeforeTrailingBlanks) {
    const std::vector<std::string> text{"f", "o", "o", " ", "b", "a", "r", " ", " "};
    const auto fragment = TextSwitchCoordinator::extractWordFragment(text, 9);
    ASSERT_TRUE(fragment.has_value());
    EXPECT_EQ(fragment->chars, (std::vector<std::string>{"b", "a", "r"}));
    EXPECT_EQ(fragment->wordStart, 4u);
    EXPECT_EQ(fragment->wordEnd, 7u);
}

TEST(TextSwitchCoordinatorWordTest, PunctuationBelongsToTheWordAndBlanksGiveNothing) {
    const std::vector<std::string> text{"(", "a", ",", "\u00A0", " "};
    const auto fragment = TextSwitchCoordinator::extractWordFragment(text, 3);
    ASSERT_TRUE(fragment.has_value());
    EXPECT_EQ(fragment->chars, (std::vector<std::string>{"(", "a", ","}));
    EXPECT_FALSE(TextSwitchCoordinator::extractWordFragment({" ", "\t"}, 2).has_value());
    EXPECT_FALSE(TextSwitchCoordinator::extractWordFragment(text, 0).has_value());
}

}  // namespace
}  // namespace orvantis
