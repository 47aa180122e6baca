#include "core/files/file_change_watch.h"

#include <cstdio>

#include <gtest/gtest.h>

#include "core/files/file_io.h"
#include "testing/test_support.h"

#include <poll.h>

namespace orvantis::files {
namespace {

using testing::TemporaryDirectory;
using testing::writeFile;

bool readable(const FileChangeWatch& watch) {
    pollfd entry{watch.descriptor(), POLLIN, 0};
    return ::poll(&entry, 1, 0) == 1;
}

class FileChangeWatchTest : public ::testing::Test {
protected:
    std::filesystem::path file() const { return dir_.path() / "settings" / "preferences.plist"; }
    std::unique_ptr<FileChangeWatch> open() {
        int error = 0;
        auto watch = FileChangeWatch::open(file(), error);
        EXPECT_TRUE(watch) << "errno " << error;
        return watch;
    }

    TemporaryDirectory dir_;
};

TEST_F(FileChangeWatchTest, NothingHappenedNothingToRead) {
    auto watch = open();
    ASSERT_TRUE(watch);
    EXPECT_TRUE(std::filesystem::is_directory(file().parent_path())) << "the folder is made to be watched";
    EXPECT_FALSE(readable(*watch));
    EXPECT_FALSE(watch->takeEvents());
}

TEST_F(FileChangeWatchTest, AFileReplacedByARenameIsReported) {
    auto watch = open();
    ASSERT_TRUE(watch);
    ASSERT_EQ(replaceFile(file(), "one"), 0);
    EXPECT_TRUE(readable(*watch));
    EXPECT_TRUE(watch->takeEvents());
    EXPECT_FALSE(readable(*watch)) << "every event was taken";
    ASSERT_EQ(replaceFile(file(), "two"), 0);
    EXPECT_TRUE(watch->takeEvents()) << "the watch outlives the file it saw replaced";
}

TEST_F(FileChangeWatchTest, AFileWrittenInPlaceOrRemovedIsReported) {
    writeFile(file(), "old");
    auto watch = open();
    ASSERT_TRUE(watch);
    writeFile(file(), "new");
    EXPECT_TRUE(watch->takeEvents());
    std::filesystem::remove(file());
    EXPECT_TRUE(watch->takeEvents());
}

TEST_F(FileChangeWatchTest, OtherFilesOfTheFolderAreNotReported) {
    auto watch = open();
    ASSERT_TRUE(watch);
    writeFile(file().parent_path() / "preferences.plist.lock", "");
    ASSERT_EQ(replaceFile(file().parent_path() / "clipboard.json", "{}"), 0);
    writeFile(file().parent_path() / "preferences.plist~", "");
    EXPECT_TRUE(readable(*watch)) << "the folder's events wake the owner";
    EXPECT_FALSE(watch->takeEvents()) << "but none of them names the file";
}

TEST_F(FileChangeWatchTest, AFolderRemovedAndMadeAgainIsWatchedAgain) {
    auto watch = open();
    ASSERT_TRUE(watch);
    std::filesystem::remove_all(file().parent_path());
    EXPECT_TRUE(watch->takeEvents());
    EXPECT_TRUE(std::filesystem::is_directory(file().parent_path()));
    ASSERT_EQ(replaceFile(file(), "back"), 0);
    EXPECT_TRUE(watch->takeEvents());
}

TEST_F(FileChangeWatchTest, AFolderThatCannotBeMadeIsRefused) {
    writeFile(dir_.path() / "blocker", "a file where the folder should be");
    int error = 0;
    EXPECT_FALSE(FileChangeWatch::open(dir_.path() / "blocker" / "preferences.plist", error));
    EXPECT_NE(error, 0);
}

}  // namespace
}  // namespace orvantis::files
