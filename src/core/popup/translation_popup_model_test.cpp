#include "core/popup/translation_popup_model.h"

#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/key_output.h"

namespace orvantis {
namespace {

namespace key_code = platform::key_code;
namespace key_flags = platform::key_flags;

// A monospaced font of 8 x 16 pixels that wraps anywhere.
constexpr double kCharWidth = 8;
constexpr double kLineHeight = 16;

PopupTextMetrics fakeMetrics() {
    return {
        .singleLineWidth = [](std::string_view text) { return kCharWidth * static_cast<double>(text.size()); },
        .wrappedHeight =
            [](std::string_view text, double width) {
                const double perLine = std::max(1.0, std::floor(width / kCharWidth));
                const double lines = std::max(1.0, std::ceil(static_cast<double>(text.size()) / perLine));
                return lines * kLineHeight;
            },
    };
}

std::vector<PopupOption> optionsNamed(std::vector<std::string> names) {
    std::vector<PopupOption> options;
    for (auto& name : names) options.push_back({name, "value of " + name});
    return options;
}

std::vector<PopupOption> numberedOptions(int count) {
    std::vector<std::string> names;
    for (int i = 1; i <= count; ++i) names.push_back("option" + std::to_string(i));
    return optionsNamed(names);
}

PopupKey ctrlDigit(char digit) {
    return {.keyCode = 0, .flags = key_flags::kCommand, .charactersIgnoringModifiers = {digit}};
}
PopupKey plainKey(std::uint16_t code) { return {.keyCode = code, .flags = 0, .charactersIgnoringModifiers = {}}; }

class TranslationPopupModelTest : public ::testing::Test {
protected:
    std::optional<PopupRect> screen_ = PopupRect{0, 0, 1280, 800};
    TranslationPopupModel model_{fakeMetrics(), [this] { return screen_; }};
};

TEST_F(TranslationPopupModelTest, StartsHidden) {
    EXPECT_EQ(model_.state(), TranslationPopupState::hidden);
    EXPECT_FALSE(model_.isVisible());
    EXPECT_EQ(model_.selectedIndex(), 0u);
    EXPECT_TRUE(model_.options().empty());
}

TEST_F(TranslationPopupModelTest, TheNumbersOfTheDesign) {
    EXPECT_EQ(TranslationPopupModel::kMinWidth, 300);
    EXPECT_EQ(TranslationPopupModel::kRowHeight, 30);
    EXPECT_EQ(TranslationPopupModel::kMaxVisibleRows, 10u);
    EXPECT_EQ(TranslationPopupModel::kRowChrome, 42);
    EXPECT_EQ(TranslationPopupModel::kHintHeight, 22);
    EXPECT_EQ(TranslationPopupModel::kErrorDismissDelaySeconds, 3);
}

// --- Showing and placing

TEST_F(TranslationPopupModelTest, ShowPutsTheLoadingRow30BelowThePointer) {
    model_.show({400, 300});
    EXPECT_EQ(model_.state(), TranslationPopupState::loading);
    EXPECT_TRUE(model_.isVisible());
    EXPECT_EQ(model_.frame(), (PopupRect{400, 330, 300, 38}));
}

TEST_F(TranslationPopupModelTest, PointerNearTheBottomStands4AboveTheEdge) {
    model_.show({400, 790});
    EXPECT_EQ(model_.frame().bottom(), 800 - 4);
    EXPECT_EQ(model_.frame().y, 800 - 38 - 4);
}

TEST_F(TranslationPopupModelTest, PointerNearTheRightEdgeIsPulledLeft) {
    model_.show({1200, 300});
    EXPECT_EQ(model_.frame().x, 1280 - 300 - 4);
}

TEST_F(TranslationPopupModelTest, WithoutAScreenThePopupStandsWhereThePointerSays) {
    screen_.reset();
    model_.show({5000, 900});
    EXPECT_EQ(model_.frame(), (PopupRect{5000, 930, 300, 38}));
}

TEST_F(TranslationPopupModelTest, ShowAgainReusesThePopupInTheLoadingState) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(3));
    model_.show({200, 200});
    EXPECT_EQ(model_.state(), TranslationPopupState::loading);
    EXPECT_TRUE(model_.options().empty());
    EXPECT_EQ(model_.frame(), (PopupRect{200, 230, 300, 38}));
}

// --- Width

TEST_F(TranslationPopupModelTest, ShortTextsGiveTheMinimumWidth) {
    model_.show({100, 100});
    model_.showOptions(optionsNamed({"a", "bb"}));
    EXPECT_EQ(model_.frame().width, 300);
    EXPECT_EQ(model_.labelWidthLimit(), 258);
}

TEST_F(TranslationPopupModelTest, WidthIsTheWidestTextPlus42Plus4) {
    // 40 characters: 320 + 42 + 4.
    EXPECT_EQ(model_.computeContentWidth(optionsNamed({"short", std::string(40, 'x')})), 366);
}

TEST_F(TranslationPopupModelTest, TheWidestTextIsRoundedUp) {
    TranslationPopupModel model({.singleLineWidth = [](std::string_view) { return 320.2; },
                                 .wrappedHeight = [](std::string_view, double) { return 16.0; }},
                                [] {
                                    return PopupRect{0, 0, 1280, 800};
                                });
    EXPECT_EQ(model.computeContentWidth(optionsNamed({"x"})), 321 + 46);
}

TEST_F(TranslationPopupModelTest, AnEmptyListHasTheMinimumWidth) { EXPECT_EQ(model_.computeContentWidth({}), 300); }

TEST_F(TranslationPopupModelTest, TheCapIs720OnAWideScreen) {
    screen_ = PopupRect{0, 0, 1920, 1080};  // 0.6 x 1920 = 1152
    EXPECT_EQ(model_.computeContentWidth(optionsNamed({std::string(500, 'x')})), 720);
}

TEST_F(TranslationPopupModelTest, TheCapIs06OfTheScreenWidth) {
    screen_ = PopupRect{0, 0, 1000, 700};  // 600
    EXPECT_EQ(model_.computeContentWidth(optionsNamed({std::string(500, 'x')})), 600);
}

TEST_F(TranslationPopupModelTest, TheCapIsAtLeast300) {
    screen_ = PopupRect{0, 0, 400, 300};  // 240
    EXPECT_EQ(model_.computeContentWidth(optionsNamed({std::string(500, 'x')})), 300);
}

TEST_F(TranslationPopupModelTest, WithoutAScreenTheCapIs600) {
    screen_.reset();
    EXPECT_EQ(model_.computeContentWidth(optionsNamed({std::string(500, 'x')})), 600);
}

// --- Height

TEST_F(TranslationPopupModelTest, OptionRowsAreTheirTextPlus6AboveAndBelow) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(3));
    EXPECT_EQ(model_.optionRowHeight(0), 16 + 12);
    EXPECT_EQ(model_.frame().height, 3 * 28 + 8);
    EXPECT_EQ(model_.optionRowHeight(3), 0);
}

TEST_F(TranslationPopupModelTest, TheFooterAdds22) {
    model_.show({100, 100});
    model_.setFooterHint("Tab: synonyms");
    model_.showOptions(numberedOptions(3));
    EXPECT_EQ(model_.frame().height, 3 * 28 + 22 + 8);
}

TEST_F(TranslationPopupModelTest, ShowOptionsKeepsTheTopEdge) {
    model_.show({100, 100});
    const double top = model_.frame().y;
    model_.showOptions(numberedOptions(11));
    EXPECT_EQ(model_.frame().y, top);
    EXPECT_EQ(model_.frame().height, 11 * 28 + 8);
}

TEST_F(TranslationPopupModelTest, AListThatGrowsPastTheBottomIsPushedUp) {
    model_.show({100, 700});
    model_.showOptions(numberedOptions(11));
    EXPECT_EQ(model_.frame().bottom(), 796);
}

TEST_F(TranslationPopupModelTest, TheHeightStopsAt07OfTheScreen) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(40));  // 40 x 28 + 8 = 1128
    EXPECT_EQ(model_.frame().height, 800 * 0.7);
    EXPECT_EQ(model_.heightLimit(), 560);
}

TEST_F(TranslationPopupModelTest, WithoutAScreenTheHeightStopsAt600) {
    screen_.reset();
    model_.show({100, 100});
    model_.showOptions(numberedOptions(40));
    EXPECT_EQ(model_.frame().height, 600);
}

TEST_F(TranslationPopupModelTest, ALongTextStopsAtTheCapWrapsAndStopsAt07OfTheScreen) {
    screen_ = PopupRect{0, 0, 1280, 500};  // height limit 350
    model_.show({100, 100});
    model_.showOptions(optionsNamed({std::string(2000, 'w')}));
    EXPECT_EQ(model_.frame().width, 720);
    EXPECT_EQ(model_.labelWidthLimit(), 678);
    // 678 / 8 = 84 characters a line: 24 lines.
    EXPECT_EQ(model_.optionRowHeight(0), 24 * 16 + 12);
    EXPECT_EQ(model_.frame().height, 350);
    EXPECT_GE(model_.frame().y, 4);
    EXPECT_LE(model_.frame().bottom(), 796);
}

// --- Footer hint

TEST_F(TranslationPopupModelTest, AHintWhileVisibleResizesAtThePresentWidth) {
    model_.show({100, 100});
    model_.showOptions(optionsNamed({std::string(50, 'x')}));  // 446 wide
    model_.setFooterHint("hint");
    EXPECT_EQ(model_.footerHint(), "hint");
    EXPECT_EQ(model_.frame().width, 446);
    EXPECT_EQ(model_.frame().height, 28 + 22 + 8);
}

TEST_F(TranslationPopupModelTest, AHintDuringLoadingResizesAt300) {
    model_.show({100, 100});
    model_.setFooterHint("hint");
    EXPECT_EQ(model_.frame().width, 300);
    EXPECT_EQ(model_.frame().height, 30 + 22 + 8);
    EXPECT_EQ(model_.frame().y, 130);
}

TEST_F(TranslationPopupModelTest, AHintWhileHiddenIsKeptWithoutAFrame) {
    model_.setFooterHint("hint");
    EXPECT_EQ(model_.footerHint(), "hint");
    EXPECT_EQ(model_.frame(), PopupRect{});
}

TEST_F(TranslationPopupModelTest, NoneOrAnEmptyHintRemovesTheFooter) {
    model_.setFooterHint("hint");
    model_.setFooterHint(std::nullopt);
    EXPECT_FALSE(model_.footerHint());
    model_.setFooterHint("hint");
    model_.setFooterHint("");
    EXPECT_FALSE(model_.footerHint());
}

TEST_F(TranslationPopupModelTest, AnEmptyListStandsWithOnlyItsHint) {
    model_.show({100, 100});
    model_.setFooterHint("hint");
    model_.showOptions({});
    EXPECT_EQ(model_.state(), TranslationPopupState::list);
    EXPECT_EQ(model_.frame().height, 22 + 8);
    EXPECT_EQ(model_.frame().width, 300);
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kReturn)), PopupOutcome::take());
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kDownArrow)), PopupOutcome::take());
    EXPECT_EQ(model_.selectedIndex(), 0u);
}

// --- Error

TEST_F(TranslationPopupModelTest, AnErrorReplacesTheContentByOneRow) {
    model_.show({100, 100});
    model_.showError("Translation failed");
    EXPECT_EQ(model_.state(), TranslationPopupState::error);
    EXPECT_EQ(model_.errorMessage(), "Translation failed");
    EXPECT_EQ(model_.frame(), (PopupRect{100, 130, 300, 38}));
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kEscape)).action, PopupAction::dismiss);
}

TEST_F(TranslationPopupModelTest, TheOneRowFormulaKeepsTheBottomEdgeAndCountsTheFooter) {
    model_.show({100, 100});
    const double bottom = model_.frame().bottom();
    model_.setFooterHint("hint");  // resized at 60 with the top kept
    model_.showError("Translation failed");
    // Two stacked views: 8 + 30 x 2; the up-y origin (the bottom edge) stands.
    EXPECT_EQ(model_.frame().height, 68);
    EXPECT_EQ(model_.frame().bottom(), bottom + 22);
}

TEST_F(TranslationPopupModelTest, AnErrorAfterAListKeepsItsWidth) {
    model_.show({100, 100});
    model_.showOptions(optionsNamed({std::string(50, 'x')}));
    model_.showError("Translation failed");
    EXPECT_EQ(model_.frame().width, 446);
    EXPECT_TRUE(model_.options().empty());
}

// --- Keys

TEST_F(TranslationPopupModelTest, CtrlDigitsReachTheFirstNineOfElevenRows) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(11));
    for (char d = '1'; d <= '9'; ++d) {
        const auto outcome = model_.handleKey(ctrlDigit(d));
        EXPECT_TRUE(outcome.taken);
        EXPECT_EQ(outcome.action, PopupAction::confirm);
        EXPECT_EQ(outcome.value, "value of option" + std::string(1, d));
    }
    // No digit reaches rows 10 and 11; Ctrl+0 is not a row key.
    EXPECT_FALSE(model_.handleKey(ctrlDigit('0')).taken);
}

TEST_F(TranslationPopupModelTest, TheLastTwoOfElevenRowsAreReachedByArrows) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(11));
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(model_.handleKey(plainKey(key_code::kDownArrow)).action, PopupAction::selectionChanged);
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kReturn)).value, "value of option10");
    model_.handleKey(plainKey(key_code::kDownArrow));
    EXPECT_EQ(model_.selectedIndex(), 10u);
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kReturn)).value, "value of option11");
}

TEST_F(TranslationPopupModelTest, TheLastTwoOfElevenRowsAreReachedByTheMouse) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(11));
    EXPECT_EQ(model_.click(10, 2).value, "value of option11");
}

TEST_F(TranslationPopupModelTest, CtrlNineWithThreeRowsIsTakenAndDoesNothing) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(3));
    EXPECT_EQ(model_.handleKey(ctrlDigit('9')), PopupOutcome::take());
    EXPECT_EQ(model_.state(), TranslationPopupState::list);
}

TEST_F(TranslationPopupModelTest, CtrlDigitWinsOverTheKeyCode) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(3));
    PopupKey key = ctrlDigit('2');
    key.keyCode = key_code::kEscape;
    EXPECT_EQ(model_.handleKey(key).value, "value of option2");
}

TEST_F(TranslationPopupModelTest, DigitsWithoutCtrlPassOn) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(3));
    EXPECT_FALSE(model_.handleKey({.keyCode = 18, .flags = 0, .charactersIgnoringModifiers = "1"}).taken);
    EXPECT_FALSE(
        model_.handleKey({.keyCode = 18, .flags = key_flags::kOption, .charactersIgnoringModifiers = "1"}).taken);
}

TEST_F(TranslationPopupModelTest, UpOnTheFirstRowAndDownOnTheLastStay) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(3));
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kUpArrow)), PopupOutcome::take());
    EXPECT_EQ(model_.selectedIndex(), 0u);
    model_.handleKey(plainKey(key_code::kDownArrow));
    model_.handleKey(plainKey(key_code::kDownArrow));
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kDownArrow)), PopupOutcome::take());
    EXPECT_EQ(model_.selectedIndex(), 2u);
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kUpArrow)).action, PopupAction::selectionChanged);
    EXPECT_EQ(model_.selectedIndex(), 1u);
}

TEST_F(TranslationPopupModelTest, ReturnAndKeypadEnterConfirmTheSelectedRow) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(3));
    model_.handleKey(plainKey(key_code::kDownArrow));
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kReturn)), PopupOutcome::confirmed("value of option2"));
    EXPECT_EQ(model_.handleKey(plainKey(76)).value, "value of option2");
}

TEST_F(TranslationPopupModelTest, TabIsTakenEvenWithNothingToCycle) {
    model_.show({100, 100});
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kTab)), PopupOutcome::take(PopupAction::tab));
    model_.showOptions(numberedOptions(2));
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kTab)).action, PopupAction::tab);
}

TEST_F(TranslationPopupModelTest, EscDuringLoadingDismisses) {
    model_.show({100, 100});
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kEscape)), PopupOutcome::take(PopupAction::dismiss));
}

TEST_F(TranslationPopupModelTest, KeysDuringLoadingConfirmNothing) {
    model_.show({100, 100});
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kReturn)).action, PopupAction::none);
    EXPECT_EQ(model_.handleKey(ctrlDigit('1')).action, PopupAction::none);
    EXPECT_EQ(model_.handleKey(plainKey(key_code::kDownArrow)).action, PopupAction::none);
}

TEST_F(TranslationPopupModelTest, OtherKeysPassOn) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(3));
    EXPECT_FALSE(model_.handleKey({.keyCode = key_code::kA, .flags = 0, .charactersIgnoringModifiers = "a"}).taken);
    EXPECT_FALSE(model_.handleKey(plainKey(key_code::kLeftArrow)).taken);
    EXPECT_FALSE(model_.handleKey(plainKey(key_code::kSpace)).taken);
}

TEST_F(TranslationPopupModelTest, NothingIsTakenWhileHidden) {
    EXPECT_FALSE(model_.handleKey(plainKey(key_code::kEscape)).taken);
    EXPECT_FALSE(model_.handleKey(ctrlDigit('1')).taken);
}

TEST_F(TranslationPopupModelTest, NewOptionsSelectTheFirstRowAgain) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(3));
    model_.handleKey(plainKey(key_code::kDownArrow));
    model_.showOptions(numberedOptions(4));  // as after Tab
    EXPECT_EQ(model_.selectedIndex(), 0u);
}

// --- Mouse

TEST_F(TranslationPopupModelTest, AClickSelectsAndADoubleClickConfirms) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(3));
    EXPECT_EQ(model_.click(2, 1), PopupOutcome::take(PopupAction::selectionChanged));
    EXPECT_EQ(model_.selectedIndex(), 2u);
    EXPECT_EQ(model_.click(1, 2), PopupOutcome::confirmed("value of option2"));
}

TEST_F(TranslationPopupModelTest, ATripleClickIsASingleClick) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(3));
    EXPECT_EQ(model_.click(1, 3).action, PopupAction::selectionChanged);
    EXPECT_EQ(model_.selectedIndex(), 1u);
}

TEST_F(TranslationPopupModelTest, ClicksOutOfRangeAreIgnored) {
    model_.show({100, 100});
    model_.showOptions(numberedOptions(3));
    EXPECT_EQ(model_.click(3, 1).action, PopupAction::none);
    EXPECT_EQ(model_.click(7, 2).action, PopupAction::none);
    EXPECT_EQ(model_.selectedIndex(), 0u);
    EXPECT_FALSE(model_.valueAt(3));
    EXPECT_EQ(model_.valueAt(0), "value of option1");
}

// --- Dismissal

TEST_F(TranslationPopupModelTest, DismissForgetsOptionsAndHint) {
    model_.show({100, 100});
    model_.setFooterHint("hint");
    model_.showOptions(numberedOptions(3));
    EXPECT_TRUE(model_.dismiss());
    EXPECT_EQ(model_.state(), TranslationPopupState::hidden);
    EXPECT_TRUE(model_.options().empty());
    EXPECT_FALSE(model_.footerHint());
    EXPECT_FALSE(model_.dismiss());
}

TEST_F(TranslationPopupModelTest, ContentWhileHiddenDoesNotShowThePopup) {
    model_.show({100, 100});
    model_.dismiss();
    // A late result after Esc during loading.
    model_.showOptions(numberedOptions(3));
    EXPECT_FALSE(model_.isVisible());
    EXPECT_EQ(model_.state(), TranslationPopupState::hidden);
    EXPECT_FALSE(model_.handleKey(plainKey(key_code::kReturn)).taken);
    model_.showError("Translation failed");
    EXPECT_FALSE(model_.isVisible());
}

TEST_F(TranslationPopupModelTest, DismissWhileHiddenDoesNothing) {
    model_.setFooterHint("hint");
    EXPECT_FALSE(model_.dismiss());
    EXPECT_EQ(model_.footerHint(), "hint");
}

}  // namespace
}  // namespace orvantis
