#include "core/clipboard/clipboard_persistence.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/log/app_logger.h"
#include "testing/recording_log_sink.h"
#include "testing/test_support.h"

#include "platform/sim/virtual_main_loop.h"

#include <sys/stat.h>
#include <unistd.h>

namespace orvantis {
namespace {

using namespace std::chrono_literals;

/// Keeps every message that reaches the system log, as "type category: message".
class ClipboardPersistenceTest : public ::testing::Test {
protected:
    ClipboardItem text(std::string t, bool pinned = false) {
        ClipboardItem item = ClipboardItem::makeText(std::move(t), std::nullopt, ids_.generate(), now_ += 1);
        item.setPinned(pinned);
        return item;
    }
    std::unique_ptr<ClipboardPersistence> make(std::filesystem::path file) {
        return std::make_unique<ClipboardPersistence>(std::move(file), loop_, &logger_.log().clipboard);
    }
    std::vector<std::string> filesIn(const std::filesystem::path& dir) {
        std::vector<std::string> names;
        for (const auto& e : std::filesystem::directory_iterator(dir)) names.push_back(e.path().filename().string());
        return names;
    }

    testing::TemporaryDirectory dir_;
    std::filesystem::path file_ = dir_.path() / "data" / "orvantis" / "clipboard.json";
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> logQueue_ = loop_.makeSerialQueue("log");
    std::vector<std::string> logLines_;
    AppLogger logger_{dir_.path() / "logs", *logQueue_, loop_, std::make_unique<testing::RecordingLogSink>(logLines_)};
    UuidGenerator ids_{11};
    double now_ = 815616000;
};

TEST_F(ClipboardPersistenceTest, CreatesItsFolderAndLoadsNothingSilentlyWithoutAFile) {
    auto store = make(file_);
    EXPECT_TRUE(std::filesystem::is_directory(file_.parent_path()));
    EXPECT_FALSE(store->loadSnapshot().has_value());
    EXPECT_TRUE(logLines_.empty());
}

TEST_F(ClipboardPersistenceTest, SavesTextEntriesOnly200MillisecondsAfterTheLastRequest) {
    auto store = make(file_);
    std::vector<ClipboardItem> pinned{text("p", true)};
    std::vector<ClipboardItem> unpinned{text("u")};
    unpinned.push_back(ClipboardItem::makeNonText("x", "data", {{"t", "b"}}, std::nullopt, ids_.generate(), 1));
    store->saveDebounced(pinned, unpinned);
    loop_.runFor(199ms);
    EXPECT_FALSE(std::filesystem::exists(file_));
    loop_.runFor(1ms);
    ASSERT_TRUE(std::filesystem::exists(file_));
    ClipboardSnapshot expected;
    expected.pinned.push_back(*pinned[0].toPersisted());
    expected.unpinned.push_back(*unpinned[0].toPersisted());
    EXPECT_EQ(testing::readFile(file_), *encodeSnapshot(expected));
    EXPECT_EQ(store->completedWrites(), 1u);
}

TEST_F(ClipboardPersistenceTest, FlushWritesAWaitingSaveAtOnce) {
    auto store = make(file_);
    store->saveDebounced({}, {text("first")});
    loop_.runFor(250ms);
    store->saveDebounced({}, {text("copied just before quitting")});
    loop_.runFor(50ms);
    store->flush();
    EXPECT_FALSE(store->hasPendingSave());
    EXPECT_NE(testing::readFile(file_).find("copied just before quitting"), std::string::npos);
    EXPECT_EQ(store->completedWrites(), 2u);
    // Nothing is written twice afterwards.
    loop_.runFor(1s);
    EXPECT_EQ(store->completedWrites(), 2u);
    // A flush with nothing waiting is harmless.
    store->flush();
    EXPECT_EQ(store->completedWrites(), 2u);
}

TEST_F(ClipboardPersistenceTest, FiveChangesWithin100MillisecondsCauseOneWrite) {
    auto store = make(file_);
    std::vector<ClipboardItem> items;
    for (int i = 0; i < 5; ++i) {
        items.insert(items.begin(), text("t" + std::to_string(i)));
        store->saveDebounced({}, items);
        loop_.runFor(20ms);
    }
    loop_.runFor(1s);
    EXPECT_EQ(store->completedWrites(), 1u);
    const auto loaded = store->loadSnapshot();
    ASSERT_TRUE(loaded.has_value());
    EXPECT_EQ(loaded->unpinned.size(), 5u);
}

TEST_F(ClipboardPersistenceTest, TheFileIsReplacedAtomicallyAndReadableByItsOwnerOnly) {
    auto store = make(file_);
    store->saveDebounced({}, {text("one")});
    loop_.runFor(300ms);
    const auto inodeBefore = [&] { struct stat s {}; ::stat(file_.c_str(), &s); return s.st_ino; }();
    store->saveDebounced({}, {text("two")});
    loop_.runFor(300ms);
    struct stat info {};
    ASSERT_EQ(::stat(file_.c_str(), &info), 0);
    EXPECT_NE(info.st_ino, inodeBefore);  // a new file took the old one's place
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    EXPECT_EQ(filesIn(file_.parent_path()), std::vector<std::string>{"clipboard.json"});  // no temporary left
}

TEST_F(ClipboardPersistenceTest, LoadingLogsTheCountsAndThePath) {
    auto store = make(file_);
    store->saveDebounced({text("p1", true), text("p2", true)}, {text("u1")});
    loop_.runFor(300ms);
    const auto loaded = store->loadSnapshot();
    ASSERT_TRUE(loaded.has_value());
    EXPECT_EQ(loaded->pinned.size(), 2u);
    EXPECT_EQ(*loaded->pinned[1].text(), "p2");
    EXPECT_TRUE(loaded->pinned[1].isPinned());
    ASSERT_EQ(logLines_.size(), 1u);
    EXPECT_EQ(logLines_[0], "info Clipboard: loaded snapshot: 2 pinned + 1 unpinned from " + file_.string());
}

TEST_F(ClipboardPersistenceTest, AFileThatDoesNotDecodeIsLoggedAndKept) {
    testing::writeFile(file_, "{\"pinned\":[],\"unpinned\":[{\"id\":\"E621E1F8-C36C-495A-93FC-0C247A3E6E5F\","
                              "\"timestamp\":1,\"text\":\"my secret\",\"isPinned\":\"no\"}]}");
    auto store = make(file_);
    EXPECT_FALSE(store->loadSnapshot().has_value());
    ASSERT_EQ(logLines_.size(), 1u);
    EXPECT_EQ(logLines_[0], "error Clipboard: loadSnapshot failed at " + file_.string() +
                                " \u2014 the data is not in the correct format: unpinned[0].isPinned is not a boolean");
    EXPECT_TRUE(std::filesystem::exists(file_));
}

TEST_F(ClipboardPersistenceTest, ATruncatedFileIsLoggedWithoutItsContent) {
    testing::writeFile(file_, "{\"pinned\":[],\"unpinned\":[{\"id\":\"E621E1F8-C36C-495A-93FC-0C247A3E6E5F\","
                              "\"timestamp\":1,\"text\":\"hunter2");
    auto store = make(file_);
    EXPECT_FALSE(store->loadSnapshot().has_value());
    ASSERT_EQ(logLines_.size(), 1u);
    EXPECT_TRUE(logLines_[0].starts_with("error Clipboard: loadSnapshot failed at " + file_.string() + " \u2014 "));
    EXPECT_EQ(logLines_[0].find("hunter2"), std::string::npos);
}

TEST_F(ClipboardPersistenceTest, AFolderInPlaceOfTheFileFailsToLoad) {
    std::filesystem::create_directories(file_);
    auto store = make(file_);
    EXPECT_FALSE(store->loadSnapshot().has_value());
    ASSERT_EQ(logLines_.size(), 1u);
    EXPECT_EQ(logLines_[0], "error Clipboard: loadSnapshot failed at " + file_.string() + " \u2014 Is a directory");
}

TEST_F(ClipboardPersistenceTest, AWriteIntoAFolderThatCantBeCreatedIsLogged) {
    testing::writeFile(dir_.path() / "blocker", "a file where the folder should be");
    const auto file = dir_.path() / "blocker" / "orvantis" / "clipboard.json";
    auto store = make(file);
    store->saveDebounced({}, {text("kept in memory")});
    loop_.runFor(300ms);
    EXPECT_EQ(store->completedWrites(), 0u);
    ASSERT_EQ(logLines_.size(), 1u);
    EXPECT_EQ(logLines_[0], "error Clipboard: writeSnapshot failed at " + file.string() + " \u2014 Not a directory");
}

TEST_F(ClipboardPersistenceTest, AReadOnlyParentLeavesTheOldFileAndTheNextChangeWritesAgain) {
    if (::geteuid() == 0) GTEST_SKIP() << "file permissions don't bind the superuser";
    auto store = make(file_);
    store->saveDebounced({}, {text("old")});
    loop_.runFor(300ms);
    const std::string before = testing::readFile(file_);
    std::filesystem::permissions(file_.parent_path(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    store->saveDebounced({}, {text("new")});
    loop_.runFor(300ms);
    EXPECT_EQ(testing::readFile(file_), before);
    ASSERT_EQ(logLines_.size(), 1u);
    EXPECT_TRUE(logLines_[0].starts_with("error Clipboard: writeSnapshot failed at " + file_.string() + " \u2014 "));
    std::filesystem::permissions(file_.parent_path(), std::filesystem::perms::owner_all);
    store->saveDebounced({}, {text("newer")});
    loop_.runFor(300ms);
    EXPECT_EQ(store->loadSnapshot()->unpinned.size(), 1u);
    EXPECT_EQ(*store->loadSnapshot()->unpinned[0].text(), "newer");
}

TEST_F(ClipboardPersistenceTest, ClearRemovesTheFileAtOnceAndIgnoresAMissingOne) {
    auto store = make(file_);
    store->clear();
    store->saveDebounced({}, {text("a")});
    loop_.runFor(300ms);
    store->clear();
    EXPECT_FALSE(std::filesystem::exists(file_));
    EXPECT_TRUE(logLines_.empty());
}

TEST_F(ClipboardPersistenceTest, AWaitingWriteRecreatesAFileThatClearRemoved) {
    auto store = make(file_);
    store->saveDebounced({}, {});
    store->clear();
    EXPECT_FALSE(std::filesystem::exists(file_));
    loop_.runFor(200ms);
    EXPECT_EQ(testing::readFile(file_), "{\"pinned\":[],\"unpinned\":[]}");
}

TEST_F(ClipboardPersistenceTest, AWriteStillWaitingAtTheEndIsDropped) {
    auto store = make(file_);
    store->saveDebounced({}, {text("a")});
    loop_.runFor(100ms);
    store.reset();
    loop_.runFor(1s);
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(ClipboardPersistenceTest, WriteSnapshotWritesOnTheCallingThread) {
    auto store = make(file_);
    ClipboardSnapshot snapshot;
    snapshot.unpinned.push_back({ids_.generate(), 1, "x", false, std::nullopt});
    EXPECT_TRUE(store->writeSnapshot(snapshot));
    EXPECT_EQ(testing::readFile(file_), *encodeSnapshot(snapshot));
}

}  // namespace
}  // namespace orvantis
