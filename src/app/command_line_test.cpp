#include "app/command_line.h"

#include <gtest/gtest.h>

#include "platform/sim/input_sources.h"
#include "testing/test_support.h"

namespace orvantis::app {
namespace {

using orvantis::testing::readFile;
using orvantis::testing::ScopedEnv;
using orvantis::testing::TemporaryDirectory;
using orvantis::testing::writeFile;

struct Result {
    int status;
    std::string out;
    std::string err;
};

class CommandLineTest : public ::testing::Test {
protected:
    Result run(std::vector<std::string> args, const CommandLineEnvironment& environment = {}) {
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const int status = runCommandLine(args, environment);
        std::string out = ::testing::internal::GetCapturedStdout();
        std::string err = ::testing::internal::GetCapturedStderr();
        return {status, out, err};
    }
    std::filesystem::path prefs() const { return dir_.path() / "config" / "orvantis" / "preferences.plist"; }

    TemporaryDirectory dir_;
    ScopedEnv config_{"XDG_CONFIG_HOME", (dir_.path() / "config").c_str()};
    ScopedEnv state_{"XDG_STATE_HOME", (dir_.path() / "state").c_str()};
};

TEST_F(CommandLineTest, ListPrintsEveryPropertyWithItsJsonValue) {
    const auto r = run({"settings", "list"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(std::count(r.out.begin(), r.out.end(), '\n'), 58);
    EXPECT_NE(r.out.find("hotkey\t{\"keyCode\":51,\"modifiers\":131072}\tShift+Backspace\n"), std::string::npos);
    EXPECT_NE(r.out.find("\ntranslationHotkey\t{\"keyCode\":7,\"modifiers\":393216}\tSuper+Shift+X\n"), std::string::npos);
    EXPECT_NE(r.out.find("\nswitchDelayMs\t100\n"), std::string::npos);
    EXPECT_NE(r.out.find("\nsettingsLanguage\t\"en\"\n"), std::string::npos);
    EXPECT_NE(r.out.find("\nclipboardIgnoredApps\t[]\n"), std::string::npos);
    EXPECT_NE(r.out.find("\nlayoutSwitchEnabled\ttrue\n"), std::string::npos);
}

TEST_F(CommandLineTest, GetAnswersWhatTheTypedGetterAnswers) {
    EXPECT_EQ(run({"settings", "get", "switchDelayMs"}).out, "100\n");
    EXPECT_EQ(run({"settings", "get", "translatorSecondaryLanguage"}).out, "\"ru\"\n");
    EXPECT_EQ(run({"settings", "get", "directTranslationHotkey"}).out, "{\"keyCode\":7,\"modifiers\":786432}\n");
    EXPECT_EQ(run({"settings", "get", "passwordMode"}).out, "\"popup\"\n");
}

TEST_F(CommandLineTest, SetWritesThroughTheTypedSetterSoNumbersAreClamped) {
    EXPECT_EQ(run({"settings", "set", "switchDelayMs", "9999"}).status, 0);
    EXPECT_EQ(run({"settings", "get", "switchDelayMs"}).out, "500\n");
    EXPECT_NE(readFile(prefs()).find("<integer>500</integer>"), std::string::npos);
    EXPECT_EQ(run({"settings", "set", "clipboardIgnoredApps", R"(["a","b"])"}).status, 0);
    EXPECT_EQ(run({"settings", "get", "clipboardIgnoredApps"}).out, "[\"a\",\"b\"]\n");
    EXPECT_EQ(run({"settings", "set", "hotkey", R"({"keyCode":9,"modifiers":1179648})"}).status, 0);
    EXPECT_EQ(run({"settings", "get", "hotkey"}).out, "{\"keyCode\":9,\"modifiers\":1179648}\n");
    EXPECT_EQ(run({"settings", "set", "settingsLanguage", "\"ru\""}).status, 0);
    EXPECT_EQ(run({"settings", "get", "settingsLanguage"}).out, "\"ru\"\n");
}

TEST_F(CommandLineTest, SetTakesAHotkeyByItsLinuxName) {
    const auto r = run({"settings", "set", "translationHotkey", "Super+Alt+Y"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "translationHotkey\t{\"keyCode\":16,\"modifiers\":786432}\tSuper+Alt+Y\n");
    EXPECT_TRUE(r.err.empty()) << r.err;
    EXPECT_EQ(run({"settings", "get", "translationHotkey"}).out, "{\"keyCode\":16,\"modifiers\":786432}\n");
}

TEST_F(CommandLineTest, SetWarnsOfAConflictAndStoresTheHotkeyAllTheSame) {
    const auto reserved = run({"settings", "set", "caffeineHotkey", "alt+tab"});
    EXPECT_EQ(reserved.status, 0);
    EXPECT_NE(reserved.err.find("Alt+Tab is reserved"), std::string::npos) << reserved.err;
    const auto twice = run({"settings", "set", "pomodoroHotkey", "Super+Shift+X"});  // the translation hotkey's
    EXPECT_EQ(twice.status, 0);
    EXPECT_NE(twice.err.find("Super+Shift+X is already used"), std::string::npos) << twice.err;
    EXPECT_EQ(run({"settings", "get", "pomodoroHotkey"}).out, "{\"keyCode\":7,\"modifiers\":393216}\n");
    // The direct translation hotkey is outside the count, as in the settings window.
    const auto direct = run({"settings", "set", "caffeineHotkey", "Super+Alt+X"});
    EXPECT_TRUE(direct.err.empty()) << direct.err;
}

TEST_F(CommandLineTest, SetRefusesABadHotkeyNameAndWritesNothing) {
    for (const char* name : {"Super", "X", "Super+Hyper+X", "Super+X+Y"}) {
        const auto r = run({"settings", "set", "translationHotkey", name});
        EXPECT_EQ(r.status, 2) << name;
        EXPECT_NE(r.err.find("nothing was written"), std::string::npos) << r.err;
    }
    EXPECT_FALSE(std::filesystem::exists(prefs()));
}

TEST_F(CommandLineTest, ResetBringsTheDefaultBack) {
    run({"settings", "set", "layoutSwitchEnabled", "false"});
    EXPECT_EQ(run({"settings", "get", "layoutSwitchEnabled"}).out, "false\n");
    EXPECT_EQ(run({"settings", "reset", "layoutSwitchEnabled"}).status, 0);
    EXPECT_EQ(run({"settings", "get", "layoutSwitchEnabled"}).out, "true\n");
    EXPECT_EQ(readFile(prefs()).find("layoutSwitchEnabled"), std::string::npos);
}

TEST_F(CommandLineTest, UnknownNamesAndWrongTypesExitTwoAndWriteNothing) {
    run({"settings", "set", "switchDelayMs", "200"});
    const std::string before = readFile(prefs());
    for (const auto& args : std::vector<std::vector<std::string>>{
             {"settings", "set", "noSuchSetting", "1"},
             {"settings", "get", "noSuchSetting"},
             {"settings", "reset", "noSuchSetting"},
             {"settings", "set", "switchDelayMs", "\"fast\""},
             {"settings", "set", "switchDelayMs", "1.5"},
             {"settings", "set", "switchDelayMs", "{"},
             {"settings", "set", "layoutSwitchEnabled", "1"},
             {"settings", "set", "settingsLanguage", "\"de\""},
             {"settings", "set", "passwordMode", "\"typeIt\""},
             {"settings", "set", "clipboardIgnoredApps", "[1]"},
             {"settings", "set", "hotkey", R"({"keyCode":70000,"modifiers":0})"},
             {"settings", "set", "hotkey", "51"},
             {"settings", "set", "switchDelayMs"},
             {"settings", "frobnicate"},
             {"settings"},
             {"unknown"},
         }) {
        const auto r = run(args);
        EXPECT_EQ(r.status, 2) << args.back();
        EXPECT_FALSE(r.err.empty()) << args.back();
        EXPECT_TRUE(r.out.empty()) << args.back();
    }
    EXPECT_EQ(readFile(prefs()), before);
}

TEST_F(CommandLineTest, ADamagedFileIsKeptAsideReportedAndDefaultsAnswer) {
    writeFile(prefs(), "\x01\x02 definitely not a property list");
    const auto r = run({"settings", "get", "switchDelayMs"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "100\n");
    EXPECT_NE(r.err.find("kept it as preferences.plist.corrupt-"), std::string::npos) << r.err;
    bool kept = false;
    for (const auto& e : std::filesystem::directory_iterator(prefs().parent_path()))
        kept |= e.path().filename().string().rfind("preferences.plist.corrupt-", 0) == 0 &&
                readFile(e.path()) == "\x01\x02 definitely not a property list";
    EXPECT_TRUE(kept);
}

TEST_F(CommandLineTest, StoredOutOfRangeValuesReadClamped) {
    writeFile(prefs(), R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>MOLVEX.Orvantis.keyboardLockAutoUnlockMin</key><integer>0</integer>
<key>MOLVEX.Orvantis.clipboardHistorySize</key><integer>100000</integer>
<key>MOLVEX.Orvantis.hotkey</key><data>bm90IGpzb24=</data>
</dict></plist>)");
    EXPECT_EQ(run({"settings", "get", "keyboardLockAutoUnlockMinutes"}).out, "10\n");
    EXPECT_EQ(run({"settings", "get", "clipboardHistorySize"}).out, "200\n");
    EXPECT_EQ(run({"settings", "get", "hotkey"}).out, "{\"keyCode\":51,\"modifiers\":131072}\n");
}

TEST_F(CommandLineTest, VersionAndHelp) {
    const auto version = run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out.rfind("Orvantis ", 0), 0u);
    EXPECT_NE(version.out.find("(build "), std::string::npos);
    const auto help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("orvantis settings set NAME JSON"), std::string::npos);
}

// --- convert --------------------------------------------------------------------------------

/// A desktop whose session has the XKB layouts `layouts` ("us", "ru(phonetic)", ...).
CommandLineEnvironment sessionWith(std::vector<std::pair<std::string, std::string>> layouts) {
    CommandLineEnvironment environment;
    environment.sessionInputSources = [layouts]() -> std::unique_ptr<platform::InputSources> {
        auto sources = std::make_unique<sim::InputSources>();
        for (const auto& [layout, variant] : layouts) {
            const bool russian = layout == "ru";
            EXPECT_TRUE(sources->addXkb(layout, variant, russian ? "Russian" : "English (US)",
                                        {russian ? "ru" : "en"}));
        }
        return sources;
    };
    return environment;
}

CommandLineEnvironment noDesktop() {
    CommandLineEnvironment environment;
    environment.sessionInputSources = [] { return std::unique_ptr<platform::InputSources>(); };
    return environment;
}

TEST_F(CommandLineTest, ConvertRetypesAWordThroughTheFixedTable) {
    const auto r = run({"convert", "--table", "fixed", "ghbdtn"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "привет\n");
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(run({"convert", "--table=fixed", "руддщ"}).out, "hello\n");
}

TEST_F(CommandLineTest, ConvertKeepsACapitalAtTheStart) {
    EXPECT_EQ(run({"convert", "--table", "fixed", "Ghbdtn"}).out, "Привет\n");
    EXPECT_EQ(run({"convert", "--table", "fixed", "Руддщ"}).out, "Hello\n");
}

TEST_F(CommandLineTest, ConvertTakesASelectionWithSpacesAsTheHotkeyWould) {
    EXPECT_EQ(run({"convert", "--table", "fixed", "Ghbdtn vbh"}).out, "Привет мир\n");
    // Letters of two scripts in a selection: left as they are.
    const auto mixed = run({"convert", "--table", "fixed", "hello мир"});
    EXPECT_EQ(mixed.status, 0);
    EXPECT_EQ(mixed.out, "hello мир\n");
}

TEST_F(CommandLineTest, ConvertExitsZeroWhenNothingChanges) {
    const auto digits = run({"convert", "--table", "fixed", "2024"});
    EXPECT_EQ(digits.status, 0);
    EXPECT_EQ(digits.out, "2024\n");
    const auto empty = run({"convert", "--table", "fixed", ""});
    EXPECT_EQ(empty.status, 0);
    EXPECT_EQ(empty.out, "\n");
}

TEST_F(CommandLineTest, ConvertUsesTheSessionsLayoutsByDefault) {
    // The phonetic Russian layout puts other letters on the keys than the fixed table does.
    const auto environment = sessionWith({{"us", ""}, {"ru", "phonetic"}});
    const auto system = run({"convert", "ghbdtn"}, environment);
    EXPECT_EQ(system.status, 0);
    EXPECT_EQ(system.out, "гхбдтн\n");
    EXPECT_EQ(run({"convert", "--table", "system", "ghbdtn"}, environment).out, "гхбдтн\n");
    EXPECT_EQ(run({"convert", "--table", "fixed", "ghbdtn"}, environment).out, "привет\n");
    EXPECT_EQ(run({"convert", "ghbdtn"}, sessionWith({{"us", ""}, {"ru", ""}})).out, "привет\n");
}

TEST_F(CommandLineTest, ConvertWithoutADesktopFallsBackOrFails) {
    // Without a desktop the default is the fixed table.
    EXPECT_EQ(run({"convert", "ghbdtn"}, noDesktop()).out, "привет\n");
    EXPECT_EQ(run({"convert", "ghbdtn"}).out, "привет\n");
    // Asked for the session's layouts where there are none: a failure that says so.
    const auto r = run({"convert", "--table", "system", "ghbdtn"}, noDesktop());
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_NE(r.err.find("--table fixed"), std::string::npos);
}

TEST_F(CommandLineTest, ConvertWithOneLayoutInTheSessionSaysTheFixedTableWasUsed) {
    const auto r = run({"convert", "ghbdtn"}, sessionWith({{"us", ""}}));
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "привет\n");
    EXPECT_NE(r.err.find("fixed table was used"), std::string::npos);
}

TEST_F(CommandLineTest, ConvertRejectsBadArguments) {
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"convert"},
             {"convert", "--table"},
             {"convert", "--table", "phonetic", "x"},
             {"convert", "--fast", "x"},
             {"convert", "one", "two"},
         }) {
        const auto r = run(args, noDesktop());
        EXPECT_EQ(r.status, 2) << args.size();
        EXPECT_EQ(r.out, "");
        EXPECT_NE(r.err.find("Usage:"), std::string::npos);
    }
    const auto invalid = run({"convert", "--table", "fixed", std::string("gh\xff\xfe")});
    EXPECT_EQ(invalid.status, 2);
    EXPECT_NE(invalid.err.find("not valid UTF-8"), std::string::npos);
    // After "--" a text may start with dashes.
    EXPECT_EQ(run({"convert", "--table", "fixed", "--", "--ghbdtn"}).out, "--привет\n");
}

// --- variants and detect ----------------------------------------------------------------------

TEST_F(CommandLineTest, VariantsPrintsElevenStyleAndNameLines) {
    const auto r = run({"variants", "get the user name"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out,
              "lowerCamelCase\tgetUserName\n"
              "pascalCase\tGetUserName\n"
              "snakeCase\tget_user_name\n"
              "screamingSnakeCase\tGET_USER_NAME\n"
              "kebabCase\tget-user-name\n"
              "screamingKebabCase\tGET-USER-NAME\n"
              "lowercaseSpaces\tget user name\n"
              "uppercaseSpaces\tGET USER NAME\n"
              "titleCase\tGet User Name\n"
              "sentenceCase\tGet user name\n"
              "dotCase\tget.user.name\n");
    // Punctuation alone still gives eleven lines, with empty names.
    const auto empty = run({"variants", "?!"});
    EXPECT_EQ(empty.status, 0);
    EXPECT_EQ(std::count(empty.out.begin(), empty.out.end(), '\n'), 11);
    EXPECT_EQ(empty.out.rfind("lowerCamelCase\t\n", 0), 0u);
}

TEST_F(CommandLineTest, DetectPrintsTheCodeOrADashAndTheWordCount) {
    EXPECT_EQ(run({"detect", "Съешь же ещё этих мягких французских булок, да выпей чаю"}).out, "ru\t10\n");
    EXPECT_EQ(run({"detect", "Привет"}).out, "ru\t1\n");
    EXPECT_EQ(run({"detect", "user name"}).out, "en\t2\n");
    EXPECT_EQ(run({"detect", "   "}).out, "-\t0\n");
    EXPECT_EQ(run({"detect", "--", "?! ..."}).out, "-\t2\n");
}

TEST_F(CommandLineTest, VariantsAndDetectRejectBadArguments) {
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"variants"}, {"variants", "a", "b"}, {"detect"}, {"detect", "a", "b"}}) {
        const auto r = run(args);
        EXPECT_EQ(r.status, 2);
        EXPECT_EQ(r.out, "");
    }
    const auto invalid = run({"detect", std::string("\xc3\x28")});
    EXPECT_EQ(invalid.status, 2);
    EXPECT_NE(invalid.err.find("not valid UTF-8"), std::string::npos);
}

}  // namespace
}  // namespace orvantis::app
