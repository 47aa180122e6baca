#include "platform/freedesktop/autostart_entry.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <sys/wait.h>

#include "testing/test_support.h"

namespace orvantis::freedesktop {
namespace {

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

class AutostartEntryTest : public ::testing::Test {
protected:
    testing::TemporaryDirectory dir_;
    std::filesystem::path file_ = dir_.path() / "config" / "autostart" / "orvantis.desktop";
};

TEST_F(AutostartEntryTest, TheFileLivesInTheConfigHomesAutostartFolder) {
    const testing::ScopedEnv config("XDG_CONFIG_HOME", "/tmp/cfg");
    EXPECT_EQ(AutostartEntry::defaultFile(), "/tmp/cfg/autostart/orvantis.desktop");
}

TEST_F(AutostartEntryTest, RegisteringWritesTheEntryAndUnregisteringRemovesIt) {
    AutostartEntry entry(file_, "/usr/bin/orvantis");
    EXPECT_FALSE(entry.isEnabled());
    EXPECT_EQ(entry.registerItem(), std::nullopt);  // the folders are made on the way
    EXPECT_TRUE(entry.isEnabled());
    const std::string text = readFile(file_);
    EXPECT_TRUE(text.starts_with("[Desktop Entry]\nType=Application\nName=Orvantis\n")) << text;
    EXPECT_NE(text.find("\nExec=/usr/bin/orvantis\n"), std::string::npos) << text;
    // Nothing of the temporary file is left beside it.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file_.parent_path()),
                            std::filesystem::directory_iterator()),
              1);
    EXPECT_EQ(entry.unregisterItem(), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(file_));
    EXPECT_FALSE(entry.isEnabled());
    // Nothing to remove is no failure.
    EXPECT_EQ(entry.unregisterItem(), std::nullopt);
}

TEST_F(AutostartEntryTest, RegisteringReplacesAnEntryTheUserHid) {
    writeFile(file_, "[Desktop Entry]\nType=Application\nName=Orvantis\nExec=orvantis\nHidden=true\n");
    AutostartEntry entry(file_, "/usr/bin/orvantis");
    EXPECT_FALSE(entry.isEnabled());
    ASSERT_EQ(entry.registerItem(), std::nullopt);
    EXPECT_TRUE(entry.isEnabled());
    EXPECT_EQ(readFile(file_).find("Hidden"), std::string::npos);
}

TEST_F(AutostartEntryTest, EnabledMeansAMainGroupThatNeitherHidesNorIsSwitchedOff) {
    EXPECT_TRUE(AutostartEntry::textIsEnabled("[Desktop Entry]\nExec=orvantis\n"));
    EXPECT_TRUE(AutostartEntry::textIsEnabled("# mine\n[Desktop Entry]\nHidden=false\n"));
    EXPECT_FALSE(AutostartEntry::textIsEnabled("[Desktop Entry]\nExec=orvantis\nHidden=true\n"));
    EXPECT_FALSE(AutostartEntry::textIsEnabled("[Desktop Entry]\nHidden = true\r\n"));
    EXPECT_FALSE(AutostartEntry::textIsEnabled("[Desktop Entry]\nX-GNOME-Autostart-enabled=false\n"));
    // Keys of another group do not count; a file without the main group is no entry.
    EXPECT_TRUE(AutostartEntry::textIsEnabled("[Desktop Entry]\nExec=o\n[Desktop Action x]\nHidden=true\n"));
    EXPECT_FALSE(AutostartEntry::textIsEnabled("Hidden=false\n"));
    EXPECT_FALSE(AutostartEntry::textIsEnabled(""));
}

TEST_F(AutostartEntryTest, AnUnreadableOrOversizedFileIsNotEnabled) {
    std::filesystem::create_directories(file_);  // a folder where the file should be
    EXPECT_FALSE(AutostartEntry(file_, "/usr/bin/orvantis").isEnabled());
    std::filesystem::remove(file_);
    writeFile(file_, "[Desktop Entry]\n" + std::string(70 * 1024, '#'));
    EXPECT_FALSE(AutostartEntry(file_, "/usr/bin/orvantis").isEnabled());
}

TEST_F(AutostartEntryTest, AFailedWriteIsDescribedAndKeepsTheEarlierState) {
    // A file where the autostart folder should be: the folder cannot be made.
    writeFile(dir_.path() / "config" / "autostart", "not a folder");
    AutostartEntry entry(file_, "/usr/bin/orvantis");
    const auto failure = entry.registerItem();
    ASSERT_TRUE(failure.has_value());
    EXPECT_TRUE(failure->starts_with("cannot create " + file_.parent_path().string() + ": ")) << *failure;
    EXPECT_FALSE(entry.isEnabled());
    EXPECT_EQ(readFile(dir_.path() / "config" / "autostart"), "not a folder");
}

TEST_F(AutostartEntryTest, AFolderInTheFilesPlaceCannotBeWritten) {
    std::filesystem::create_directories(file_ / "inside");
    const auto failure = AutostartEntry(file_, "/usr/bin/orvantis").registerItem();
    ASSERT_TRUE(failure.has_value());
    EXPECT_TRUE(failure->starts_with("cannot write " + file_.string() + ": ")) << *failure;
}

TEST_F(AutostartEntryTest, AFailedRemovalIsDescribed) {
    // A non-empty folder in the file's place cannot be removed as a file.
    std::filesystem::create_directories(file_ / "inside");
    const auto failure = AutostartEntry(file_, "/usr/bin/orvantis").unregisterItem();
    ASSERT_TRUE(failure.has_value());
    EXPECT_TRUE(failure->starts_with("cannot remove " + file_.string() + ": ")) << *failure;
}

TEST_F(AutostartEntryTest, ExecQuotesPathsWithReservedCharacters) {
    EXPECT_EQ(AutostartEntry::execValue("/usr/bin/orvantis"), "/usr/bin/orvantis");
    EXPECT_EQ(AutostartEntry::execValue("/home/a b/build/orvantis"), "\"/home/a b/build/orvantis\"");
    // Inside quotes " ` $ \ take a backslash; the string level doubles every backslash.
    EXPECT_EQ(AutostartEntry::execValue("/x/$HOME\"q"), "\"/x/\\\\$HOME\\\\\"q\"");
    EXPECT_EQ(AutostartEntry::execValue("/x/a\\b"), "\"/x/a\\\\\\\\b\"");
    // A percent sign would be a field code.
    EXPECT_EQ(AutostartEntry::execValue("/x/100%/orvantis"), "/x/100%%/orvantis");
}

TEST_F(AutostartEntryTest, APathWithAControlCharacterIsRefusedAndDescribed) {
    EXPECT_EQ(AutostartEntry::entryText("/x/a\nb"), std::nullopt);
    AutostartEntry entry(file_, "/x/a\nb");
    const auto failure = entry.registerItem();
    ASSERT_TRUE(failure.has_value());
    EXPECT_NE(failure->find("cannot be written in an autostart entry"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(AutostartEntryTest, TheInstalledBinaryIsStartedWhenItIsTheOneRunning) {
    const auto installed = dir_.path() / "usr" / "bin" / "orvantis";
    const auto built = dir_.path() / "build" / "src" / "app" / "orvantis";
    writeFile(installed, "x");
    writeFile(built, "y");
    EXPECT_EQ(AutostartEntry::launchTarget(installed, installed), installed);
    EXPECT_EQ(AutostartEntry::launchTarget(built, installed), built);
    // A link to the installed file (/bin on a merged /usr) runs the installed program.
    std::filesystem::create_symlink(installed, dir_.path() / "link");
    EXPECT_EQ(AutostartEntry::launchTarget(dir_.path() / "link", installed), installed);
    // Not installed at all: the build tree's binary.
    EXPECT_EQ(AutostartEntry::launchTarget(built, dir_.path() / "none" / "orvantis"), built);
}

TEST_F(AutostartEntryTest, TheRunningExecutableIsThisTestProgram) {
    EXPECT_EQ(AutostartEntry::runningExecutable().filename(), "freedesktop_tests");
}

/// desktop-file-validate's verdict on `file`: its exit status and what it printed.
std::pair<int, std::string> validate(const std::filesystem::path& file) {
    const std::string command = "desktop-file-validate '" + file.string() + "' 2>&1";
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return {-1, "popen failed"};
    std::string output;
    char buffer[512];
    while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) output += buffer;
    const int status = ::pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

TEST_F(AutostartEntryTest, TheWrittenEntryPassesDesktopFileValidate) {
    if (std::system("command -v desktop-file-validate >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "desktop-file-validate is not installed (package desktop-file-utils)";
    for (const char* executable : {"/usr/bin/orvantis", "/home/a b/100% \"odd\" $dir/build/orvantis"}) {
        AutostartEntry entry(file_, executable);
        ASSERT_EQ(entry.registerItem(), std::nullopt);
        const auto [status, output] = validate(file_);
        EXPECT_EQ(status, 0) << executable << ": " << output;
        EXPECT_EQ(output, "") << executable;
    }
    // The check itself can fail: a broken entry is refused.
    writeFile(file_, "[Desktop Entry]\nType=Application\nExec=/x/100%/orvantis\n");
    EXPECT_NE(validate(file_).first, 0);
}

}  // namespace
}  // namespace orvantis::freedesktop
