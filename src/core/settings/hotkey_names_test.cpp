#include "core/settings/hotkey_names.h"

#include <gtest/gtest.h>

#include "core/settings/app_settings.h"

namespace orvantis {
namespace {

using D = HotkeyDescriptor;

HotkeyDescriptor parsed(std::string_view text) {
    auto result = parseLinuxHotkeyName(text);
    EXPECT_TRUE(std::holds_alternative<HotkeyDescriptor>(result)) << text;
    return std::holds_alternative<HotkeyDescriptor>(result) ? std::get<HotkeyDescriptor>(result) : HotkeyDescriptor{};
}

std::string error(std::string_view text) {
    auto result = parseLinuxHotkeyName(text);
    return std::holds_alternative<HotkeyParseError>(result) ? std::get<HotkeyParseError>(result).message : "";
}

TEST(HotkeyNamesTest, NamesModifiersTheLinuxWayInAFixedOrder) {
    EXPECT_EQ(linuxHotkeyName({7, D::kControl | D::kShift}), "Super+Shift+X");
    EXPECT_EQ(linuxHotkeyName({51, D::kShift}), "Shift+Backspace");
    EXPECT_EQ(linuxHotkeyName({7, D::kControl | D::kOption}), "Super+Alt+X");
    EXPECT_EQ(linuxHotkeyName({51, D::kCommand | D::kOption}), "Ctrl+Alt+Backspace");
    EXPECT_EQ(linuxHotkeyName({49, D::kCommand | D::kControl | D::kOption | D::kShift}), "Ctrl+Super+Alt+Shift+Space");
    EXPECT_EQ(linuxHotkeyName({118, D::kOption}), "Alt+F4");
    EXPECT_EQ(linuxHotkeyName({200, D::kShift}), "Shift+(200)");
}

TEST(HotkeyNamesTest, ParsesWhatItWritesForEveryDefault) {
    for (const auto& s : {settings::kHotkey, settings::kTranslationHotkey, settings::kCaffeineHotkey,
                          settings::kKeyboardLockHotkey, settings::kSnippetExpanderHotkey}) {
        EXPECT_EQ(parsed(linuxHotkeyName(s.defaultValue)), s.defaultValue) << s.name;
    }
}

TEST(HotkeyNamesTest, ParsesCaseInsensitivelyWithAliasesAndBlanks) {
    EXPECT_EQ(parsed("super+shift+x"), (D{7, D::kControl | D::kShift}));
    EXPECT_EQ(parsed(" Control + Alt + Delete "), (D{117, D::kCommand | D::kOption}));
    EXPECT_EQ(parsed("Win+Escape"), (D{53, D::kControl}));
    EXPECT_EQ(parsed("Meta+Enter"), (D{36, D::kControl}));
    EXPECT_EQ(parsed("Shift+BackSpace"), (D{51, D::kShift}));
    EXPECT_EQ(parsed("Ctrl+1"), (D{18, D::kCommand}));
    EXPECT_EQ(parsed("Alt+PgUp"), (D{116, D::kOption}));
}

TEST(HotkeyNamesTest, RefusesWithAReason) {
    EXPECT_NE(error("Super").find("no key"), std::string::npos);
    EXPECT_NE(error("X").find("no modifier"), std::string::npos);
    EXPECT_NE(error("Print").find("no modifier"), std::string::npos);
    EXPECT_NE(error("Super+Hyper+X").find("unknown key \"Hyper\""), std::string::npos);
    EXPECT_NE(error("Super+X+Y").find("more than one key"), std::string::npos);
    EXPECT_NE(error("Super++X").find("empty part"), std::string::npos);
    EXPECT_NE(error("").find("empty"), std::string::npos);
}

TEST(HotkeyNamesTest, ReservedListHoldsTheSystemsThreeAndTheDesktopsOwn) {
    for (const char* name : {"Ctrl+Space", "Ctrl+Tab", "Super+Alt+Space", "Alt+Tab", "Alt+F4", "Super+L",
                             "Ctrl+Alt+T", "Ctrl+Alt+Delete", "Ctrl+Alt+Backspace", "Alt+Space", "Shift+Print",
                             "Alt+Print", "Super+Space", "Ctrl+Alt+Left"})
        EXPECT_TRUE(isReservedHotkey(parsed(name))) << name;
    for (const char* name : {"Super+Shift+X", "Shift+Backspace", "Super+Shift+L", "Alt+Shift+Space", "Ctrl+T"})
        EXPECT_FALSE(isReservedHotkey(parsed(name))) << name;
}

TEST(HotkeyNamesTest, ReservedMatchIgnoresFlagsBeyondTheFourModifiers) {
    EXPECT_TRUE(isReservedHotkey({48, D::kOption | 0x10000}));  // Caps Lock on
    EXPECT_FALSE(isReservedHotkey({48, D::kOption | D::kShift | D::kCommand}));
}

}  // namespace
}  // namespace orvantis
