#include "platform/freedesktop/desktop_entries.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace orvantis::freedesktop
