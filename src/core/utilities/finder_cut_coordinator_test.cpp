#include "core/utilities/finder_cut_coordinator.h"

#include <gtest/gtest.h>

#include <chrono>

#include "testing/utilities_test_support.h"
#include "platform/key_output.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using namespace utilities_testing;
namespace key_flags = platform::key_flags;
using Decision = FinderCutCoordinator::Decision;

constexpr const char* kFiles = "org.example.files";
constexpr std::uint64_t kCapsLock = 0x10000;

/// Records the program's keystrokes; its Ctrl+C puts file URLs on the pasteboard unless told not.
class RecordingKeys final : public platform::KeyOutput {
public:
    explicit RecordingKeys(sim::Pasteboard& pasteboard) : pasteboard_(pasteboard) {}
    void postKey(std::uint16_t key, std::uint64_t flags) override {
        keys.emplace_back(key, flags);
        if (key == FinderCutCoordinator::kKeyC && copyLands) copyFiles();
    }
    void typeText(std::string_view) override {}
    void copyFiles() {
        pasteboard_.writeFromOtherApp(
            platform::PasteboardItem{{{std::string(platform::pasteboard_type::kFileURL), "file:///tmp/a"}}}, kFiles);
    }
    std::vector<std::pair<std::uint16_t, std::uint64_t>> keys;
    bool copyLands = true;

private:
    sim::Pasteboard& pasteboard_;
};

class FinderCutCoordinatorTest : public ::testing::Test, protected UtilitiesFixture {
protected:
    FinderCutCoordinatorTest() {
        settings.setFinderCutEnabled(true);
        apps_.frontmost = platform::ApplicationInfo{kFiles, "Files", 1};
    }
    Decision key(std::uint16_t code, std::uint64_t flags = key_flags::kCommand) {
        return coordinator_.handleKeyDown(code, flags);
    }
    int moves() const {
        return static_cast<int>(std::count(keys_.keys.begin(), keys_.keys.end(),
                                           std::pair<std::uint16_t, std::uint64_t>{
                                               9, key_flags::kCommand | key_flags::kOption}));
    }

    FakeApplications apps_;
    sim::Pasteboard& pasteboard_ = desktop.pasteboard();
    RecordingKeys keys_{pasteboard_};
    bool editing_ = false;
    FinderCutCoordinator coordinator_{settings, apps_, pasteboard_, keys_, desktop.loop(), logger.log().app,
                                      {kFiles}, [this] { return editing_; }};
};

TEST_F(FinderCutCoordinatorTest, CutThenPasteWithin150msMovesWhenTheCopyHasLanded) {
    EXPECT_EQ(key(7), Decision::swallow);
    EXPECT_EQ(coordinator_.cutChangeCount(), -1);
    EXPECT_EQ(key(9), Decision::swallow);
    EXPECT_EQ(moves(), 1);
    EXPECT_TRUE(logged("info finderCut: move (Ctrl+V → Ctrl+Alt+V)"));
}

TEST_F(FinderCutCoordinatorTest, TheCountSeenAfter150msIsTheExpectedOne) {
    key(7);
    desktop.loop().runFor(150ms);
    EXPECT_EQ(coordinator_.cutChangeCount(), coordinator_.preCutChangeCount() + 1);
    EXPECT_EQ(key(9), Decision::swallow);
}

TEST_F(FinderCutCoordinatorTest, ACopyElsewhereInBetweenMakesAPlainPasteAndResets) {
    key(7);
    desktop.loop().runFor(150ms);
    apps_.frontmost = platform::ApplicationInfo{"org.example.editor", "Editor", 2};
    pasteboard_.writeFromOtherApp(platform::PasteboardItem::text("hello"), "org.example.editor");
    apps_.frontmost = platform::ApplicationInfo{kFiles, "Files", 1};
    keys_.copyFiles();  // even file URLs: the count is not the cut's
    EXPECT_EQ(key(9), Decision::pass);
    EXPECT_FALSE(coordinator_.cutPending());
    EXPECT_EQ(moves(), 0);
}

TEST_F(FinderCutCoordinatorTest, TextCopiedInTheFileManagerMakesAPlainPaste) {
    keys_.copyLands = false;
    key(7);
    pasteboard_.writeFromOtherApp(platform::PasteboardItem::text("name.txt"), kFiles);
    EXPECT_EQ(key(9), Decision::pass);
    EXPECT_EQ(moves(), 0);
}

TEST_F(FinderCutCoordinatorTest, CutDuringARenamePassesAndLeavesThePendingCut) {
    editing_ = true;
    EXPECT_EQ(key(7), Decision::pass);
    EXPECT_FALSE(coordinator_.cutPending());
    editing_ = false;
    key(7);
    editing_ = true;
    EXPECT_EQ(key(7), Decision::pass);
    EXPECT_TRUE(coordinator_.cutPending());
}

TEST_F(FinderCutCoordinatorTest, TwoPastesAfterACutMoveOnceThenPaste) {
    key(7);
    EXPECT_EQ(key(9), Decision::swallow);
    EXPECT_EQ(key(9), Decision::pass);
    EXPECT_EQ(moves(), 1);
}

TEST_F(FinderCutCoordinatorTest, CapsLockDoesNotMatterButOtherModifiersDo) {
    EXPECT_EQ(key(7, key_flags::kCommand | kCapsLock), Decision::swallow);
    EXPECT_EQ(key(9, key_flags::kCommand | key_flags::kShift), Decision::pass);
    EXPECT_TRUE(coordinator_.cutPending());
    EXPECT_EQ(key(9, key_flags::kCommand | kCapsLock), Decision::swallow);
}

TEST_F(FinderCutCoordinatorTest, OnlyListedApplicationsAndOnlyWhenOn) {
    FinderCutCoordinator none{settings, apps_, pasteboard_, keys_, desktop.loop(), logger.log().app, {}, {}};
    EXPECT_EQ(none.handleKeyDown(7, key_flags::kCommand), Decision::pass);
    settings.setFinderCutEnabled(false);
    EXPECT_EQ(key(7), Decision::pass);
    EXPECT_TRUE(keys_.keys.empty());
}

}  // namespace
}  // namespace orvantis
