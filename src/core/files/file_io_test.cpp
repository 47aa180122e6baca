#include "core/files/file_io.h"

#include <cerrno>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include <unistd.h>

namespace orvantis::files {
namespace {

class FileIoTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder_ = std::filesystem::temp_directory_path() /
                  ("orvantis-file-io-" + std::to_string(::getpid()) + "-" +
                   ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    void put(const std::filesystem::path& file, const std::string& bytes) {
        std::ofstream(file, std::ios::binary) << bytes;
    }
    std::string contents(const std::filesystem::path& file) {
        std::ifstream in(file, std::ios::binary);
        std::ostringstream out;
        out << in.rdbuf();
        return out.str();
    }
    std::size_t entries() {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
    }

    std::filesystem::path folder_;
};

TEST_F(FileIoTest, AFileThatIsNotThereIsAbsent) {
    const FileRead read = readWholeFile(folder_ / "missing");
    EXPECT_EQ(read.status, FileRead::Status::Absent);
    EXPECT_TRUE(read.bytes.empty());
}

TEST_F(FileIoTest, AWholeFileIsReadWithItsStatus) {
    std::string bytes(200000, 'x');
    bytes[12345] = '\0';
    put(folder_ / "data", bytes);
    const FileRead read = readWholeFile(folder_ / "data");
    ASSERT_EQ(read.status, FileRead::Status::Read);
    EXPECT_EQ(read.bytes, bytes);
    EXPECT_EQ(read.info.st_size, 200000);
}

TEST_F(FileIoTest, AFolderIsAFailureNotAnEmptyFile) {
    const FileRead read = readWholeFile(folder_);
    EXPECT_EQ(read.status, FileRead::Status::Failed);
    EXPECT_EQ(read.error, EISDIR);
}

TEST_F(FileIoTest, APathThroughAFileIsAbsent) {
    put(folder_ / "plain", "text");
    const FileRead read = readWholeFile(folder_ / "plain" / "inside");
    EXPECT_EQ(read.status, FileRead::Status::Absent);
    EXPECT_EQ(read.error, ENOTDIR);
}

TEST_F(FileIoTest, AFileThatCannotBeOpenedIsAFailure) {
    const FileRead read = readWholeFile(folder_ / std::string(300, 'n'));
    EXPECT_EQ(read.status, FileRead::Status::Failed);
    EXPECT_EQ(read.error, ENAMETOOLONG);
}

TEST_F(FileIoTest, AFileOverTheLimitIsAFailureWithNothingRead) {
    put(folder_ / "big", std::string(101, 'b'));
    const FileRead read = readWholeFile(folder_ / "big", 100);
    EXPECT_EQ(read.status, FileRead::Status::Failed);
    EXPECT_EQ(read.error, EFBIG);
    EXPECT_TRUE(read.bytes.empty());
    EXPECT_EQ(readWholeFile(folder_ / "big", 101).status, FileRead::Status::Read);
}

TEST_F(FileIoTest, ReplacingWritesTheNewBytesPrivatelyAndLeavesNoTemporaryFile) {
    put(folder_ / "settings", "old");
    ASSERT_EQ(replaceFile(folder_ / "settings", "new and longer"), 0);
    EXPECT_EQ(contents(folder_ / "settings"), "new and longer");
    EXPECT_EQ(std::filesystem::status(folder_ / "settings").permissions() & std::filesystem::perms::all,
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    EXPECT_EQ(entries(), 1u);
}

TEST_F(FileIoTest, ReplacingCreatesAFileThatWasNotThere) {
    ASSERT_EQ(replaceFile(folder_ / "fresh", ""), 0);
    EXPECT_TRUE(std::filesystem::is_regular_file(folder_ / "fresh"));
    EXPECT_EQ(contents(folder_ / "fresh"), "");
}

TEST_F(FileIoTest, AFailedReplacementKeepsTheOldFileAndLeavesNothingBehind) {
    // A folder where the file should be: the rename fails.
    std::filesystem::create_directories(folder_ / "taken" / "child");
    EXPECT_NE(replaceFile(folder_ / "taken", "bytes"), 0);
    EXPECT_TRUE(std::filesystem::is_directory(folder_ / "taken" / "child"));
    EXPECT_EQ(entries(), 1u);
}

TEST_F(FileIoTest, ReplacingInAMissingFolderAnswersItsError) {
    EXPECT_EQ(replaceFile(folder_ / "absent" / "file", "bytes"), ENOENT);
    EXPECT_EQ(entries(), 0u);
}

TEST_F(FileIoTest, ErrnoTextGivesTheWords) { EXPECT_EQ(errnoText(ENOENT), "No such file or directory"); }

}  // namespace
}  // namespace orvantis::files
