#include "core/clipboard/clipboard_popup_model.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/clipboard/clipboard_filter.h"

#include "platform/key_output.h"

namespace orvantis {
namespace {

namespace key_code = platform::key_code;
namespace key_flags = platform::key_flags;
using Model = ClipboardPopupModel;
using Action = ClipboardPopupAction;

constexpr PopupRect kScreen{0, 0, 1280, 800};

ClipboardPopupTexts englishTexts() {
    return {"No clipboard history", "Search clipboard…", "hint", "%d items", "%d of %d"};
}

class ClipboardPopupModelTest : public ::testing::Test {
protected:
    ClipboardItem text(const std::string& content, bool pinned = false) {
        ClipboardItem item = ClipboardItem::makeText(content, std::nullopt, ids_.generate(), 0);
        item.setPinned(pinned);
        return item;
    }
    std::vector<ClipboardItem> texts(std::size_t count) {
        std::vector<ClipboardItem> out;
        for (std::size_t i = 0; i < count; ++i) out.push_back(text("entry " + std::to_string(i)));
        return out;
    }
    void show(std::vector<ClipboardItem> items, PopupPoint pointer = {100, 100}) {
        model_.show(pointer, std::move(items), englishTexts());
    }
    ClipboardPopupOutcome press(std::uint16_t code, std::uint64_t flags = 0) {
        return model_.handleKey(PopupKey{code, flags, {}});
    }
    std::vector<std::string> previews() const {
        std::vector<std::string> out;
        for (const auto& item : model_.filteredItems()) out.push_back(item.previewText());
        return out;
    }

    UuidGenerator ids_{7};
    std::optional<PopupRect> screen_ = kScreen;
    Model model_{[this] { return screen_; }};
};

TEST_F(ClipboardPopupModelTest, ShowingSelectsTheFirstEntryAndHangsEightBelowThePointer) {
    show(texts(3), {200, 300});
    EXPECT_TRUE(model_.isVisible());
    EXPECT_EQ(model_.selectedIndex(), 0);
    EXPECT_EQ(model_.frame(), (PopupRect{200, 308, 440, 66 + 3 * 36}));
    EXPECT_EQ(model_.countText(), "3 items");
    EXPECT_FALSE(model_.showsEmptyLabel());
}

TEST_F(ClipboardPopupModelTest, TheHeightHasRoomForOneRowAtLeastAndTenAtMost) {
    EXPECT_EQ(Model::heightFor(0), 102);
    EXPECT_EQ(Model::heightFor(1), 102);
    EXPECT_EQ(Model::heightFor(10), 426);
    EXPECT_EQ(Model::heightFor(200), 426);
}

TEST_F(ClipboardPopupModelTest, AnEmptyHistoryShowsOneRowHighWithTheEmptyLabelAndReturnDoesNothing) {
    show({});
    EXPECT_EQ(model_.selectedIndex(), -1);
    EXPECT_EQ(model_.frame().height, 66 + 36);
    EXPECT_TRUE(model_.showsEmptyLabel());
    EXPECT_EQ(model_.countText(), "0 items");
    EXPECT_EQ(press(key_code::kReturn), ClipboardPopupOutcome::take());
    EXPECT_EQ(press(Model::kKeypadEnterKeyCode), ClipboardPopupOutcome::take());
    EXPECT_EQ(press(key_code::kDownArrow), ClipboardPopupOutcome::take());
    EXPECT_EQ(model_.selectedIndex(), -1);
    EXPECT_EQ(press(Model::kPinKeyCode, key_flags::kCommand), ClipboardPopupOutcome::take());
    EXPECT_TRUE(model_.isVisible());
}

TEST_F(ClipboardPopupModelTest, ASearchThatMatchesNothingShowsTheEmptyLabelAndReturnDoesNothing) {
    show(texts(4));
    model_.setSearchText("zebra");
    EXPECT_TRUE(model_.showsEmptyLabel());
    EXPECT_EQ(model_.selectedIndex(), -1);
    EXPECT_EQ(model_.countText(), "0 of 4");
    EXPECT_EQ(press(key_code::kReturn), ClipboardPopupOutcome::take());
    EXPECT_EQ(model_.frame().height, 66 + 36);
}

TEST_F(ClipboardPopupModelTest, AWordOnTheFifthLineIsFoundAndNothingIsMarkedInThePreview) {
    show({text("first line\nsecond\nthird\nfourth\nthe needle is here"), text("other")});
    model_.setSearchText("needle");
    ASSERT_EQ(model_.filteredItems().size(), 1u);
    EXPECT_EQ(model_.filteredItems()[0].previewText(), "first line");
    EXPECT_TRUE(model_.matchesIn(model_.filteredItems()[0].previewText()).empty());
}

TEST_F(ClipboardPopupModelTest, ASearchOfBlanksShowsEverythingWithTheFilteredCount) {
    show(texts(5));
    model_.setSearchText("  \t ");
    EXPECT_EQ(model_.filteredItems().size(), 5u);
    EXPECT_EQ(model_.countText(), "5 of 5");
    EXPECT_TRUE(model_.matchesIn("entry 1").empty());
}

TEST_F(ClipboardPopupModelTest, DownStopsAtTheLastRowAndUpAtTheFirst) {
    show(texts(3));
    EXPECT_EQ(press(key_code::kUpArrow), ClipboardPopupOutcome::take());
    EXPECT_EQ(model_.selectedIndex(), 0);
    EXPECT_EQ(press(key_code::kDownArrow).action, Action::selectionChanged);
    EXPECT_EQ(press(key_code::kDownArrow).action, Action::selectionChanged);
    EXPECT_EQ(model_.selectedIndex(), 2);
    EXPECT_EQ(press(key_code::kDownArrow), ClipboardPopupOutcome::take());
    EXPECT_EQ(model_.selectedIndex(), 2);
    EXPECT_EQ(press(key_code::kUpArrow).action, Action::selectionChanged);
    EXPECT_EQ(model_.selectedIndex(), 1);
}

TEST_F(ClipboardPopupModelTest, FifteenEntriesShowTenRowsAndScroll) {
    show(texts(15));
    EXPECT_EQ(model_.frame().height, 66 + 10 * 36);
    EXPECT_TRUE(model_.scrolls());
    EXPECT_EQ(model_.filteredItems().size(), 15u);
    for (int i = 0; i < 20; ++i) press(key_code::kDownArrow);
    EXPECT_EQ(model_.selectedIndex(), 14);
}

TEST_F(ClipboardPopupModelTest, DeletingTheLastRowOfAFilteredListSelectsTheFirst) {
    std::vector<ClipboardItem> items{text("apple pie"), text("banana"), text("apple juice"), text("apple tart")};
    show(items);
    model_.setSearchText("apple");
    press(key_code::kDownArrow);
    press(key_code::kDownArrow);
    ASSERT_EQ(model_.selectedIndex(), 2);
    const ClipboardPopupOutcome outcome = press(key_code::kDelete, key_flags::kCommand);
    ASSERT_EQ(outcome.action, Action::remove);
    EXPECT_EQ(outcome.id, items[3].id());
    items.erase(items.begin() + 3);
    model_.refresh(items);
    EXPECT_EQ(previews(), (std::vector<std::string>{"apple pie", "apple juice"}));
    EXPECT_EQ(model_.selectedIndex(), 0);
    EXPECT_EQ(model_.countText(), "2 of 3");
}

TEST_F(ClipboardPopupModelTest, APanelNearTheBottomIsPushedUpAndMayCoverThePointer) {
    show(texts(5), {600, 780});
    const double height = 66 + 5 * 36;
    EXPECT_EQ(model_.frame().y, 800 - height - 4);
    EXPECT_TRUE(model_.frame().contains({600, 780}));
}

TEST_F(ClipboardPopupModelTest, ThePanelIsPulledLeftAtTheRightEdgeAndStaysWithoutAScreen) {
    show(texts(1), {1200, 100});
    EXPECT_EQ(model_.frame().x, 1280 - 440 - 4);
    screen_.reset();
    show(texts(1), {1200, 790});
    EXPECT_EQ(model_.frame().origin(), (PopupPoint{1200, 798}));
}

TEST_F(ClipboardPopupModelTest, AFilterChangeKeepsTheTopEdge) {
    show(texts(12), {100, 100});
    const double top = model_.frame().y;
    model_.setSearchText("entry 1");  // entry 1, 10, 11
    EXPECT_EQ(model_.frame().y, top);
    EXPECT_EQ(model_.frame().height, 66 + 3 * 36);
    EXPECT_EQ(press(key_code::kEscape).action, Action::contentChanged);
    EXPECT_EQ(model_.searchText(), "");
    EXPECT_EQ(model_.frame().height, 66 + 10 * 36);
    EXPECT_EQ(model_.frame().y, top);
    EXPECT_EQ(press(key_code::kEscape).action, Action::dismiss);
}

TEST_F(ClipboardPopupModelTest, CtrlWithADigitConfirmsThatPositionAndOutOfRangeDoesNothing) {
    std::vector<ClipboardItem> items = texts(3);
    show(items);
    const ClipboardPopupOutcome third = press(20, key_flags::kCommand);  // the key 3
    EXPECT_EQ(third, ClipboardPopupOutcome::take(Action::confirm, items[2].id()));
    EXPECT_EQ(press(25, key_flags::kCommand), ClipboardPopupOutcome::take());  // the key 9
    EXPECT_TRUE(model_.isVisible());
    // Without Ctrl a digit is typed into the search field.
    EXPECT_EQ(press(18), ClipboardPopupOutcome::passed());
    EXPECT_EQ(press(18, key_flags::kCommand | key_flags::kShift), ClipboardPopupOutcome::passed());
}

TEST_F(ClipboardPopupModelTest, ReturnConfirmsTheSelectedEntryAndLettersPassOn) {
    std::vector<ClipboardItem> items = texts(3);
    show(items);
    press(key_code::kDownArrow);
    EXPECT_EQ(press(key_code::kReturn), ClipboardPopupOutcome::take(Action::confirm, items[1].id()));
    EXPECT_EQ(press(Model::kKeypadEnterKeyCode), ClipboardPopupOutcome::take(Action::confirm, items[1].id()));
    EXPECT_EQ(press(0), ClipboardPopupOutcome::passed());
    EXPECT_EQ(press(key_code::kDelete), ClipboardPopupOutcome::passed()) << "Backspace edits the search";
    EXPECT_EQ(press(Model::kPinKeyCode, key_flags::kCommand),
              ClipboardPopupOutcome::take(Action::togglePin, items[1].id()));
}

TEST_F(ClipboardPopupModelTest, ASingleClickSelectsAndADoubleClickConfirms) {
    std::vector<ClipboardItem> items = texts(4);
    show(items);
    EXPECT_EQ(model_.click(2, 1).action, Action::selectionChanged);
    EXPECT_EQ(model_.selectedIndex(), 2);
    EXPECT_EQ(model_.click(3, 2), ClipboardPopupOutcome::take(Action::confirm, items[3].id()));
    EXPECT_EQ(model_.click(9, 1), ClipboardPopupOutcome::take());
}

TEST_F(ClipboardPopupModelTest, NothingIsTakenWhileHidden) {
    show(texts(2));
    EXPECT_TRUE(model_.dismiss());
    EXPECT_FALSE(model_.dismiss());
    EXPECT_EQ(press(key_code::kReturn), ClipboardPopupOutcome::passed());
}

TEST_F(ClipboardPopupModelTest, ASelectionStillInRangeStaysAfterARefresh) {
    std::vector<ClipboardItem> items = texts(5);
    show(items);
    press(key_code::kDownArrow);
    press(key_code::kDownArrow);
    items[4].setPinned(true);
    std::rotate(items.begin(), items.begin() + 4, items.end());
    model_.refresh(items);
    EXPECT_EQ(model_.selectedIndex(), 2);
}

TEST_F(ClipboardPopupModelTest, EveryOccurrenceIsMarkedWhateverTheCase) {
    show(texts(1));
    model_.setSearchText(" Ab ");
    EXPECT_EQ(model_.matchesIn("xABcabAB"), (std::vector<TextMatch>{{1, 3}, {4, 6}, {6, 8}}));
    model_.setSearchText("ПРИ");
    // "Привет, при" in UTF-8: each Cyrillic letter has two bytes.
    EXPECT_EQ(model_.matchesIn("Привет, при"), (std::vector<TextMatch>{{0, 6}, {14, 20}}));
}

TEST_F(ClipboardPopupModelTest, TypingFiltersExactlyAsTheClipboardFilterDoes) {
    std::vector<ClipboardItem> items{text("Hello World"), text("HELLO İSTANBUL ǅ"), text("TAB\tHELLO"), text("help me\nwith HELLO inside"), text("Привет"),
                                     text("  \n\n  spaced Hello"), text("yellow")};
    PasteboardTypeData types{{"public.png", "hello"}};
    items.push_back(ClipboardItem::makeNonText("🖼️", "Hello.png", types, std::nullopt, ids_.generate(), 0));
    items.push_back(ClipboardItem::makeNonText("📄", "notes.txt", types, std::nullopt, ids_.generate(), 0));
    show(items);
    for (const char* search : {"h", "he", "hel", "hell", "hello", "hello ", " hello w", "ello", "x", "", "ПР", "при",
                               "ow", "low", "\t", ".png", "📄", "i̇st", "ǆ", "tab\thel"}) {
        model_.setSearchText(search);
        std::vector<std::string> expected;
        for (const auto& item : filterClipboardItems(items, search)) expected.push_back(item.previewText());
        EXPECT_EQ(previews(), expected) << search;
    }
}

}  // namespace
}  // namespace orvantis
