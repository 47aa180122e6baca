#include "core/clipboard/clipboard_history_coordinator.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/clipboard/clipboard_popup_model.h"
#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/settings/preference_store.h"
#include "core/strings/settings_strings.h"
#include "platform/sim/desktop.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

namespace key_code = platform::key_code;
namespace key_flags = platform::key_flags;
namespace type = platform::pasteboard_type;

/// The popup as the coordinator sees it, with the real list logic behind it, so that keys
/// pressed in it run the same rules as the window's.
class FakePopup final : public ClipboardHistoryPopup {
public:
    void setOnConfirm(ItemCallback callback) override { onConfirm_ = std::move(callback); }
    void setOnDelete(ItemCallback callback) override { onDelete_ = std::move(callback); }
    void setOnTogglePin(ItemCallback callback) override { onTogglePin_ = std::move(callback); }
    void setOnDismiss(std::function<void()> callback) override { onDismiss_ = std::move(callback); }
    void show(platform::ScreenPoint near, std::vector<ClipboardItem> items, ClipboardPopupTexts texts) override {
        ++shows;
        shownAt = near;
        model.show({static_cast<double>(near.x), static_cast<double>(near.y)}, std::move(items), std::move(texts));
    }
    void refresh(std::vector<ClipboardItem> items) override {
        ++refreshes;
        model.refresh(std::move(items));
    }
    void dismiss() override {
        if (!model.dismiss()) return;
        ++dismissals;
        if (onDismiss_) onDismiss_();
    }
    bool isVisible() const override { return model.isVisible(); }

    /// The user presses a key in the popup.
    void press(std::uint16_t code, std::uint64_t flags = 0) {
        const ClipboardPopupOutcome outcome = model.handleKey(PopupKey{code, flags, {}});
        switch (outcome.action) {
            case ClipboardPopupAction::confirm:
                dismiss();
                if (onConfirm_) onConfirm_(*outcome.id);
                break;
            case ClipboardPopupAction::togglePin:
                if (onTogglePin_) onTogglePin_(*outcome.id);
                break;
            case ClipboardPopupAction::remove:
                if (onDelete_) onDelete_(*outcome.id);
                break;
            case ClipboardPopupAction::dismiss: dismiss(); break;
            default: break;
        }
    }
    std::vector<std::string> previews() const {
        std::vector<std::string> out;
        for (const auto& item : model.filteredItems()) out.push_back(item.previewText());
        return out;
    }

    ClipboardPopupModel model{[] { return std::optional<PopupRect>(PopupRect{0, 0, 1280, 800}); }};
    int shows = 0;
    int refreshes = 0;
    int dismissals = 0;
    platform::ScreenPoint shownAt;

private:
    ItemCallback onConfirm_;
    ItemCallback onDelete_;
    ItemCallback onTogglePin_;
    std::function<void()> onDismiss_;
};

class NoApplications final : public platform::Applications {
public:
    std::optional<platform::ApplicationInfo> frontmostApplication() const override { return std::nullopt; }
};

class MovablePointer final : public platform::Pointer {
public:
    platform::ScreenPoint location() const override { return at; }
    platform::ScreenPoint at{640, 400};
};

class ClipboardHistoryCoordinatorTest : public ::testing::Test {
protected:
    ClipboardHistoryCoordinatorTest() {
        monitor_.start();
        clipboard_.start();
    }

    ClipboardHistory& history() { return clipboard_.history(); }
    /// Entries copied oldest first; the last one ends on top.
    void copied(std::initializer_list<const char*> texts) {
        for (const char* text : texts) history().add(ClipboardItem::makeText(text, std::nullopt, ids_.generate(), 0));
    }
    const ClipboardItem& entry(const std::string& preview) {
        for (const auto& list : {&history().pinned(), &history().unpinned()})
            for (const auto& item : *list)
                if (item.previewText() == preview) return item;
        throw std::runtime_error("no entry " + preview);
    }
    void hotkey() {
        desktop_.press(key_code::kV, key_flags::kControl | key_flags::kShift);
        desktop_.loop().runUntilIdle();
    }
    using Strings = std::vector<std::string>;

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
    UuidGenerator ids_{11};
    ClipboardMonitor clipboard_{settings_,       desktop_.pasteboard(), applications_, desktop_.accessibility(),
                                desktop_.loop(), desktop_.loop(),       ids_,          dir_.path() / "clipboard.json",
                                nullptr};
    FakePopup popup_;
    MovablePointer pointer_;
    ClipboardHistoryCoordinator coordinator_{settings_, monitor_, popup_, clipboard_, desktop_.pasteboard(),
                                             desktop_.keyOutput(), pointer_};
};

TEST_F(ClipboardHistoryCoordinatorTest, TheHotkeyShowsPinnedThenOtherEntriesAtThePointer) {
    copied({"one", "two", "three"});
    history().togglePin(entry("one").id());
    pointer_.at = {300, 200};
    hotkey();
    ASSERT_EQ(popup_.shows, 1);
    EXPECT_TRUE(popup_.isVisible());
    EXPECT_EQ(popup_.shownAt, (platform::ScreenPoint{300, 200}));
    EXPECT_EQ(popup_.previews(), (Strings{"one", "three", "two"}));
    EXPECT_EQ(popup_.model.texts(), ClipboardHistoryCoordinator::textsFor(SettingsLanguage::en));
    EXPECT_EQ(popup_.model.texts().emptyText, "No clipboard history");
    EXPECT_EQ(popup_.model.frame(), (PopupRect{300, 208, 440, 66 + 3 * 36}));
}

TEST_F(ClipboardHistoryCoordinatorTest, NothingOpensWhileTheHistoryIsOff) {
    settings_.setClipboardHistoryEnabled(false);
    hotkey();
    EXPECT_EQ(popup_.shows, 0);
}

TEST_F(ClipboardHistoryCoordinatorTest, TheTextsFollowTheInterfaceLanguage) {
    settings_.setSettingsLanguage(SettingsLanguage::ru);
    hotkey();
    const auto russian = SettingsStrings::make(SettingsLanguage::ru);
    EXPECT_EQ(popup_.model.texts().emptyText, russian.noHistory);
    EXPECT_EQ(popup_.model.texts().searchPlaceholder, russian.clipboardSearchPlaceholder);
    EXPECT_EQ(popup_.model.countText(), "0 записей");
}

TEST_F(ClipboardHistoryCoordinatorTest, TheHotkeyWithThePopupOpenShowsItAfresh) {
    copied({"alpha", "beta"});
    hotkey();
    popup_.model.setSearchText("alp");
    popup_.press(key_code::kDownArrow);
    copied({"gamma"});
    hotkey();
    EXPECT_EQ(popup_.shows, 2);
    EXPECT_EQ(popup_.model.searchText(), "");
    EXPECT_EQ(popup_.model.selectedIndex(), 0);
    EXPECT_EQ(popup_.previews(), (Strings{"gamma", "beta", "alpha"}));
}

TEST_F(ClipboardHistoryCoordinatorTest, ReturnPastesTheChosenTextIntoTheFocusedFieldWithoutACapture) {
    copied({"first", "second"});
    sim::TextField& field = desktop_.focusTextField("x ");
    hotkey();
    popup_.press(key_code::kDownArrow);
    popup_.press(key_code::kReturn);
    EXPECT_FALSE(popup_.isVisible());
    EXPECT_EQ(field.text(), "x first");
    EXPECT_EQ(desktop_.pasteboard().text(), "first");
    EXPECT_EQ(desktop_.keyOutput().count(key_code::kV, key_flags::kCommand), 1u);
    desktop_.loop().runFor(ClipboardMonitor::kPollInterval * 2);
    EXPECT_EQ(history().count(), 2u) << "our own write is not captured";
    EXPECT_EQ(history().items().front().previewText(), "second") << "the order stays";
}

TEST_F(ClipboardHistoryCoordinatorTest, AFullTextIsPastedNotItsPreview) {
    const std::string longText = "line one\nline two\n" + std::string(120, 'z');
    history().add(ClipboardItem::makeText(longText, std::nullopt, ids_.generate(), 0));
    desktop_.focusTextField();
    hotkey();
    popup_.press(key_code::kReturn);
    EXPECT_EQ(desktop_.pasteboard().text(), longText);
}

TEST_F(ClipboardHistoryCoordinatorTest, ANonTextEntryIsWrittenWithEveryTypeItHad) {
    PasteboardTypeData types{{std::string(type::kPNG), std::string("\x89PNG", 4)},
                             {std::string(type::kFileURL), "file:///tmp/a.png"}};
    history().add(ClipboardItem::makeNonText("🖼️", "a.png", types, std::nullopt, ids_.generate(), 0));
    hotkey();
    popup_.press(key_code::kReturn);
    const auto& written = desktop_.pasteboard().writes().back();
    EXPECT_TRUE(written.byProgram());
    EXPECT_EQ(written.item.data(type::kPNG), std::string("\x89PNG", 4));
    EXPECT_EQ(written.item.data(type::kFileURL), "file:///tmp/a.png");
    desktop_.loop().runFor(ClipboardMonitor::kPollInterval * 2);
    EXPECT_EQ(history().count(), 1u);
}

TEST_F(ClipboardHistoryCoordinatorTest, AnEntryGoneFromTheHistoryIsNotPasted) {
    copied({"soon gone"});
    hotkey();
    const std::size_t writes = desktop_.pasteboard().writes().size();
    history().clear();
    popup_.press(key_code::kReturn);
    EXPECT_EQ(desktop_.pasteboard().writes().size(), writes);
    EXPECT_EQ(desktop_.keyOutput().count(key_code::kV, key_flags::kCommand), 0u);
}

TEST_F(ClipboardHistoryCoordinatorTest, CtrlDigitOutOfRangeLeavesThePopupOpen) {
    copied({"a1", "a2", "a3"});
    hotkey();
    popup_.press(25, key_flags::kCommand);  // Ctrl+9
    EXPECT_TRUE(popup_.isVisible());
    EXPECT_EQ(desktop_.keyOutput().count(key_code::kV, key_flags::kCommand), 0u);
    popup_.press(19, key_flags::kCommand);  // Ctrl+2
    EXPECT_FALSE(popup_.isVisible());
    EXPECT_EQ(desktop_.pasteboard().text(), "a2");
}

TEST_F(ClipboardHistoryCoordinatorTest, AnEmptyHistoryOpensOneRowHighAndReturnDoesNothing) {
    hotkey();
    ASSERT_TRUE(popup_.isVisible());
    EXPECT_TRUE(popup_.model.showsEmptyLabel());
    EXPECT_EQ(popup_.model.frame().height, 102);
    popup_.press(key_code::kReturn);
    EXPECT_TRUE(popup_.isVisible());
    EXPECT_TRUE(desktop_.pasteboard().writes().empty());
}

TEST_F(ClipboardHistoryCoordinatorTest, ASearchMatchingNothingCountsZeroOfAllAndReturnDoesNothing) {
    copied({"one", "two"});
    hotkey();
    popup_.model.setSearchText("nothing like it");
    EXPECT_TRUE(popup_.model.showsEmptyLabel());
    EXPECT_EQ(popup_.model.countText(), "0 of 2");
    popup_.press(key_code::kReturn);
    EXPECT_TRUE(popup_.isVisible());
    EXPECT_TRUE(desktop_.pasteboard().writes().empty());
}

TEST_F(ClipboardHistoryCoordinatorTest, AWordOnTheFifthLineFindsTheEntryWithoutMarks) {
    copied({"a\nb\nc\nd\nhidden treasure", "plain"});
    hotkey();
    popup_.model.setSearchText("treasure");
    ASSERT_EQ(popup_.previews(), (Strings{"a"}));
    EXPECT_TRUE(popup_.model.matchesIn("a").empty());
}

TEST_F(ClipboardHistoryCoordinatorTest, ASearchOfBlanksShowsAllWithTheFilteredCount) {
    copied({"one", "two", "three"});
    hotkey();
    popup_.model.setSearchText("   ");
    EXPECT_EQ(popup_.previews().size(), 3u);
    EXPECT_EQ(popup_.model.countText(), "3 of 3");
}

TEST_F(ClipboardHistoryCoordinatorTest, DownStopsOnTheLastRowAndUpOnTheFirst) {
    copied({"one", "two"});
    hotkey();
    popup_.press(key_code::kUpArrow);
    EXPECT_EQ(popup_.model.selectedIndex(), 0);
    popup_.press(key_code::kDownArrow);
    popup_.press(key_code::kDownArrow);
    EXPECT_EQ(popup_.model.selectedIndex(), 1);
}

TEST_F(ClipboardHistoryCoordinatorTest, FifteenEntriesShowTenRowsThatScroll) {
    settings_.setClipboardHistorySize(50);
    history().resize(50);
    for (int i = 0; i < 15; ++i)
        history().add(ClipboardItem::makeText("entry " + std::to_string(i), std::nullopt, ids_.generate(), 0));
    hotkey();
    EXPECT_EQ(popup_.previews().size(), 15u);
    EXPECT_EQ(popup_.model.frame().height, 66 + 10 * 36);
    EXPECT_TRUE(popup_.model.scrolls());
}

TEST_F(ClipboardHistoryCoordinatorTest, DeletingTheLastRowOfAFilteredListSelectsTheFirst) {
    copied({"apple tart", "apple juice", "banana", "apple pie"});
    hotkey();
    popup_.model.setSearchText("apple");
    ASSERT_EQ(popup_.previews(), (Strings{"apple pie", "apple juice", "apple tart"}));
    popup_.press(key_code::kDownArrow);
    popup_.press(key_code::kDownArrow);
    popup_.press(key_code::kDelete, key_flags::kCommand);
    EXPECT_TRUE(popup_.isVisible());
    EXPECT_EQ(popup_.refreshes, 1);
    EXPECT_EQ(history().count(), 3u);
    EXPECT_EQ(popup_.previews(), (Strings{"apple pie", "apple juice"}));
    EXPECT_EQ(popup_.model.selectedIndex(), 0);
    EXPECT_EQ(popup_.model.countText(), "2 of 3");
}

TEST_F(ClipboardHistoryCoordinatorTest, APopupOpenedNearTheBottomIsPushedUpOverThePointer) {
    copied({"one", "two", "three"});
    pointer_.at = {500, 790};
    hotkey();
    const PopupRect& frame = popup_.model.frame();
    EXPECT_EQ(frame.bottom(), 800 - 4);
    EXPECT_TRUE(frame.contains({500, 790}));
}

TEST_F(ClipboardHistoryCoordinatorTest, CtrlPOnASearchResultResortsByPinWhileTheFilterStays) {
    copied({"note alpha", "other", "note beta", "note gamma"});
    hotkey();
    popup_.model.setSearchText("note");
    ASSERT_EQ(popup_.previews(), (Strings{"note gamma", "note beta", "note alpha"}));
    popup_.press(key_code::kDownArrow);
    popup_.press(key_code::kDownArrow);
    popup_.press(ClipboardPopupModel::kPinKeyCode, key_flags::kCommand);
    EXPECT_TRUE(popup_.isVisible());
    EXPECT_TRUE(entry("note alpha").isPinned());
    EXPECT_EQ(popup_.model.searchText(), "note");
    EXPECT_EQ(popup_.previews(), (Strings{"note alpha", "note gamma", "note beta"}));
    EXPECT_EQ(popup_.model.selectedIndex(), 2) << "the index of the selection stays";
    EXPECT_EQ(popup_.model.countText(), "3 of 4");
}

TEST_F(ClipboardHistoryCoordinatorTest, EscClearsTheSearchFirstAndThenCloses) {
    copied({"one", "two"});
    hotkey();
    popup_.model.setSearchText("tw");
    popup_.press(key_code::kEscape);
    EXPECT_TRUE(popup_.isVisible());
    EXPECT_EQ(popup_.previews().size(), 2u);
    popup_.press(key_code::kEscape);
    EXPECT_FALSE(popup_.isVisible());
    EXPECT_TRUE(desktop_.pasteboard().writes().empty());
}

TEST_F(ClipboardHistoryCoordinatorTest, ACaptureWhileOpenWaitsForTheNextShow) {
    copied({"one"});
    hotkey();
    desktop_.pasteboard().writeTextFromOtherApp("fresh");
    desktop_.loop().runFor(ClipboardMonitor::kPollInterval * 2);
    EXPECT_EQ(history().count(), 2u);
    EXPECT_EQ(popup_.previews(), (Strings{"one"}));
}

}  // namespace
}  // namespace orvantis
