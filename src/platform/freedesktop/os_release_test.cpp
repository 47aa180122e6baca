#include "platform/freedesktop/os_release.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace orvantis::freedesktop {
namespace {

class OsReleaseFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir_ = std::filesystem::temp_directory_path() /
               ("orvantis-os-release-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(dir_);
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    std::filesystem::path write(const std::string& content) {
        const auto path = dir_ / "os-release";
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    std::filesystem::path dir_;
};

TEST(OsReleaseTest, PrettyNameWins) {
    const auto release = OsRelease::parse(
        "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"
        "NAME=\"Debian GNU/Linux\"\n"
        "VERSION_ID=\"12\"\n"
        "VERSION=\"12 (bookworm)\"\n"
        "ID=debian\n");
    EXPECT_EQ(release.prettyName, "Debian GNU/Linux 12 (bookworm)");
    EXPECT_EQ(release.name, "Debian GNU/Linux");
    EXPECT_EQ(release.version, "12 (bookworm)");
    EXPECT_EQ(release.systemVersion(), "Debian GNU/Linux 12 (bookworm)");
}

TEST(OsReleaseTest, NameAndVersionWithoutPrettyName) {
    EXPECT_EQ(OsRelease::parse("NAME=Fedora\nVERSION=\"40 (Workstation Edition)\"\n").systemVersion(),
              "Fedora 40 (Workstation Edition)");
}

TEST(OsReleaseTest, NameAloneAndVersionAlone) {
    EXPECT_EQ(OsRelease::parse("NAME='Arch Linux'\n").systemVersion(), "Arch Linux");
    EXPECT_EQ(OsRelease::parse("VERSION=12\n").systemVersion(), "Linux 12");
}

TEST(OsReleaseTest, EmptyPrettyNameFallsBack) {
    EXPECT_EQ(OsRelease::parse("PRETTY_NAME=\"\"\nNAME=Gentoo\n").systemVersion(), "Gentoo");
    EXPECT_EQ(OsRelease::parse("PRETTY_NAME=\"   \"\n").systemVersion(), "Linux");
}

TEST(OsReleaseTest, NothingUsableIsLinux) {
    EXPECT_EQ(OsRelease::parse("").systemVersion(), "Linux");
    EXPECT_EQ(OsRelease::parse("ID=debian\nHOME_URL=\"https://example.org/\"\n").systemVersion(), "Linux");
}

TEST(OsReleaseTest, CommentsBlankAndKeylessLinesAreSkipped) {
    const auto release = OsRelease::parse(
        "# PRETTY_NAME=\"commented out\"\n"
        "\n"
        "   \n"
        "just some words\n"
        "=no key\n"
        "1NAME=bad key\n"
        "NA ME=bad key\n"
        "NAME=Good\n");
    EXPECT_EQ(release.prettyName, "");
    EXPECT_EQ(release.name, "Good");
}

TEST(OsReleaseTest, UnterminatedQuoteSkipsOnlyThatLine) {
    const auto release = OsRelease::parse(
        "PRETTY_NAME=\"Broken\n"
        "NAME=\"Still here\"\n"
        "VERSION='also broken\n");
    EXPECT_EQ(release.prettyName, "");
    EXPECT_EQ(release.version, "");
    EXPECT_EQ(release.systemVersion(), "Still here");
}

TEST(OsReleaseTest, TextAfterTheClosingQuoteIsMalformed) {
    EXPECT_EQ(OsRelease::parse("PRETTY_NAME=\"A\"B\nNAME=N\n").systemVersion(), "N");
    EXPECT_EQ(OsRelease::parse("PRETTY_NAME=\"A\"   \n").systemVersion(), "A");
}

TEST(OsReleaseTest, EscapesInDoubleQuotes) {
    EXPECT_EQ(OsRelease::parse(R"(PRETTY_NAME="My \"Distro\" \$1 \\ \`x\` \n")").prettyName,
              R"(My "Distro" $1 \ `x` \n)");
}

TEST(OsReleaseTest, SingleQuotesKeepBackslashes) {
    EXPECT_EQ(OsRelease::parse(R"(NAME='a\b')").name, R"(a\b)");
}

TEST(OsReleaseTest, LaterAssignmentWins) {
    EXPECT_EQ(OsRelease::parse("NAME=First\nNAME=Second\n").name, "Second");
}

TEST(OsReleaseTest, WindowsLineEndingsAndSurroundingBlanks) {
    const auto release = OsRelease::parse("  PRETTY_NAME=\"Crlf OS 1\"\r\nNAME=Crlf\r\n");
    EXPECT_EQ(release.prettyName, "Crlf OS 1");
    EXPECT_EQ(release.name, "Crlf");
}

TEST(OsReleaseTest, ControlCharactersBecomeSpaces) {
    const std::string text = std::string("PRETTY_NAME=\"Tab\there\x01x\"\n");
    EXPECT_EQ(OsRelease::parse(text).prettyName, "Tab here x");
}

TEST(OsReleaseTest, NulBytesDoNotEndParsing) {
    const std::string text("GARBAGE\0\0\nNAME=AfterNul\n", 24);
    EXPECT_EQ(OsRelease::parse(text).name, "AfterNul");
}

TEST_F(OsReleaseFileTest, ReadsAFile) {
    EXPECT_EQ(OsRelease::readFile(write("PRETTY_NAME=\"Sample Linux 3\"\n")).systemVersion(), "Sample Linux 3");
}

TEST_F(OsReleaseFileTest, MissingFileIsEmpty) {
    const auto release = OsRelease::readFile(dir_ / "absent");
    EXPECT_EQ(release.prettyName, "");
    EXPECT_EQ(release.systemVersion(), "Linux");
}

TEST_F(OsReleaseFileTest, DirectoryInsteadOfFileIsEmpty) {
    EXPECT_EQ(OsRelease::readFile(dir_).systemVersion(), "Linux");
}

TEST_F(OsReleaseFileTest, BinaryGarbageIsLinux) {
    std::string garbage;
    for (int i = 0; i < 4096; ++i) garbage += static_cast<char>((i * 37) % 256);
    EXPECT_FALSE(OsRelease::readFile(write(garbage)).systemVersion().empty());
}

TEST_F(OsReleaseFileTest, HugeFileIsReadOnlyAtItsStart) {
    std::string content = "NAME=Early\n";
    content += std::string(200 * 1024, '#');
    content += "\nNAME=Late\n";
    EXPECT_EQ(OsRelease::readFile(write(content)).name, "Early");
}

TEST(OsReleaseSystemTest, TheSystemHasAName) {
    EXPECT_FALSE(OsRelease::readSystem().systemVersion().empty());
}

}  // namespace
}  // namespace orvantis::freedesktop
