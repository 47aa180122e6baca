#include "platform/freedesktop/desktop_entries.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <unistd.h>

#include "testing/test_support.h"

namespace orvantis::freedesktop {
namespace {

using orvantis::testing::TemporaryDirectory;
using orvantis::testing::writeFile;

TEST(DesktopEntriesTest, ParsesNameAndWindowClassOfTheMainGroupOnly) {
    const auto entry = DesktopEntries::parse("debian-xterm", "# comment\r\n[Desktop Entry]\r\nName=XTerm\r\n"
                                                             "Name[ru]=Терминал\nStartupWMClass = XTerm\n"
                                                             "[Desktop Action new]\nName=New Window\n");
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->id, "debian-xterm");
    EXPECT_EQ(entry->name, "XTerm");
    EXPECT_EQ(entry->startupWMClass, "XTerm");
}

TEST(DesktopEntriesTest, ReadsTheIconOfTheMainGroup) {
    const auto entry = DesktopEntries::parse("org.example.Editor", "[Desktop Entry]\nName=Editor\nIcon=accessories-text-editor\n"
                                                                   "[Desktop Action new]\nIcon=other\n");
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->icon, "accessories-text-editor");
    EXPECT_EQ(DesktopEntries::parse("a", "[Desktop Entry]\nName=A\n")->icon, "");
}

TEST(DesktopEntriesTest, FilesWithoutTheMainGroupOrANameAreSkipped) {
    EXPECT_FALSE(DesktopEntries::parse("a", "Name=Loose\n").has_value());
    EXPECT_FALSE(DesktopEntries::parse("b", "[Desktop Entry]\nExec=b\n").has_value());
    EXPECT_FALSE(DesktopEntries::parse("c", std::string("\0\xff\xfe", 3)).has_value());
}

TEST(DesktopEntriesTest, FindsTheEntryOfAWindowClassTheUsersFolderFirst) {
    TemporaryDirectory dir;
    const auto user = dir.path() / "user", system = dir.path() / "system";
    writeFile(user / "org.example.Editor.desktop", "[Desktop Entry]\nName=My Editor\n");
    writeFile(system / "org.example.Editor.desktop", "[Desktop Entry]\nName=Editor\n");
    writeFile(system / "debian-xterm.desktop", "[Desktop Entry]\nName=XTerm\nStartupWMClass=XTerm\n");
    writeFile(system / "kde" / "konsole.desktop", "[Desktop Entry]\nName=Konsole\n");
    writeFile(system / "broken.desktop", "garbage");
    DesktopEntries entries({user, system, dir.path() / "missing"});

    ASSERT_NE(entries.byID("org.example.Editor"), nullptr);
    EXPECT_EQ(entries.byID("org.example.Editor")->name, "My Editor");
    EXPECT_EQ(entries.byID("broken"), nullptr);
    ASSERT_NE(entries.forWindowClass("xterm", "XTerm"), nullptr);
    EXPECT_EQ(entries.forWindowClass("xterm", "XTerm")->id, "debian-xterm");
    ASSERT_NE(entries.forWindowClass("org.example.editor", "Org.example.Editor"), nullptr);
    EXPECT_EQ(entries.forWindowClass("org.example.editor", "Org.example.Editor")->id, "org.example.Editor");
    ASSERT_NE(entries.forWindowClass("", "kde-konsole"), nullptr);
    EXPECT_EQ(entries.forWindowClass("nothing", "Nothing"), nullptr);
}

/// A folder of the kinds of wreckage an applications folder collects, beside two good files.
void writeBrokenFolder(const std::filesystem::path& apps) {
    writeFile(apps / "good.desktop", "[Desktop Entry]\nName=Good\nIcon=good\n");
    writeFile(apps / "sub" / "also.desktop", "[Desktop Entry]\nName=Also Good\n");
    std::string binary(4096, '\0');
    for (std::size_t i = 0; i < binary.size(); ++i) binary[i] = static_cast<char>((i * 131 + 7) % 256);
    writeFile(apps / "binary.desktop", binary);
    writeFile(apps / "nogroup.desktop", "Name=Loose\nExec=loose\n");
    writeFile(apps / "noname.desktop", "[Desktop Entry]\nExec=noname\n");
    writeFile(apps / "badname.desktop", "[Desktop Entry]\nName=\xff\xfe\n");
    writeFile(apps / "hidden.desktop", "[Desktop Entry]\nName=Hidden\nHidden=true\n");
    writeFile(apps / "nodisplay.desktop", "[Desktop Entry]\nName=Helper\nNoDisplay=true\n");
    writeFile(apps / "unreadable.desktop", "[Desktop Entry]\nName=Unreadable\n");
    std::filesystem::permissions(apps / "unreadable.desktop", std::filesystem::perms::none);
    std::filesystem::create_symlink(apps / "gone.target", apps / "dangling.desktop");
    std::string huge = "[Desktop Entry]\nName=Huge\n";
    huge.resize(10 * 1024 * 1024, '#');
    writeFile(apps / "huge.desktop", huge);
    std::filesystem::create_directories(apps / "folder.desktop");
    ASSERT_EQ(mkfifo((apps / "pipe.desktop").c_str(), 0644), 0);
    std::filesystem::create_directories(apps / "closed");
    writeFile(apps / "closed" / "inside.desktop", "[Desktop Entry]\nName=Inside\n");
    std::filesystem::permissions(apps / "closed", std::filesystem::perms::none);
}

TEST(DesktopEntriesTest, ABrokenFolderListsTheGoodFilesAndNamesEachBadOneOnce) {
    TemporaryDirectory dir;
    const auto apps = dir.path() / "share" / "applications";
    writeBrokenFolder(apps);
    orvantis::testing::ScopedEnv dataHome("XDG_DATA_HOME", (dir.path() / "home").c_str());
    orvantis::testing::ScopedEnv dataDirs("XDG_DATA_DIRS", (dir.path() / "share").c_str());
    // Root reads files and folders whatever their mode: then those two are simply good ones.
    const bool modesHold = geteuid() != 0;

    const DesktopEntries entries;  // the folders of the environment, as the program reads them

    std::vector<std::string> ids;
    for (const auto& entry : entries.entries()) ids.push_back(entry.id);
    std::sort(ids.begin(), ids.end());
    std::vector<std::string> expected{"good", "nodisplay", "sub-also"};
    if (!modesHold) expected = {"closed-inside", "good", "nodisplay", "sub-also", "unreadable"};
    EXPECT_EQ(ids, expected);
    EXPECT_TRUE(entries.byID("nodisplay")->noDisplay);
    EXPECT_FALSE(entries.byID("good")->noDisplay);
    EXPECT_EQ(entries.byID("hidden"), nullptr);

    std::map<std::string, std::string> skipped;
    for (const auto& file : entries.skipped()) {
        EXPECT_TRUE(skipped.emplace(file.path.filename().string(), file.reason).second) << file.path;
    }
    std::map<std::string, std::string> expectedSkipped{{"binary.desktop", "no [Desktop Entry] group"},
                                                       {"nogroup.desktop", "no [Desktop Entry] group"},
                                                       {"noname.desktop", "no Name"},
                                                       {"badname.desktop", "not UTF-8"},
                                                       {"dangling.desktop", "a link to nothing"},
                                                       {"huge.desktop", "larger than 1 MiB"}};
    if (modesHold) expectedSkipped["unreadable.desktop"] = "cannot be read";
    EXPECT_EQ(skipped, expectedSkipped);
    std::filesystem::permissions(apps / "closed", std::filesystem::perms::owner_all);
}

TEST(DesktopEntriesTest, AHiddenEntryDeletesTheSameIdOfALaterFolder) {
    TemporaryDirectory dir;
    writeFile(dir.path() / "user" / "editor.desktop", "[Desktop Entry]\nName=Editor\nHidden=true\n");
    writeFile(dir.path() / "system" / "editor.desktop", "[Desktop Entry]\nName=Editor\n");
    const DesktopEntries entries({dir.path() / "user", dir.path() / "system"});
    EXPECT_TRUE(entries.entries().empty());
    EXPECT_TRUE(entries.skipped().empty());
}

}  // namespace
}  // namespace orvantis::freedesktop
