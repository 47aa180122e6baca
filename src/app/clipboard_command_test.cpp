#include "app/clipboard_command.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include <nlohmann/json.hpp>

#include "app/command_line.h"
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

constexpr const char* kPinnedId = "E621E1F8-C36C-495A-93FC-0C247A3E6E5F";
constexpr const char* kFirstId = "0A1B2C3D-0000-4000-8000-000000000001";
constexpr const char* kSecondId = "0A1B2C3D-0000-4000-8000-000000000002";

/// The command without a running program: no session bus to ask, so the snapshot file in a
/// temporary data folder is all there is.
class ClipboardCommandTest : public ::testing::Test {
protected:
    Result run(std::vector<std::string> args) {
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const int status = runCommandLine(args);
        std::string out = ::testing::internal::GetCapturedStdout();
        std::string err = ::testing::internal::GetCapturedStderr();
        return {status, out, err};
    }
    std::filesystem::path snapshot() const { return dir_.path() / "data" / "orvantis" / "clipboard.json"; }
    void writeSnapshot() {
        writeFile(snapshot(),
                  std::string(R"({"pinned":[{"id":")") + kPinnedId +
                      R"(","timestamp":815616000,"text":"pinned note","isPinned":true}],"unpinned":[{"id":")" +
                      kFirstId +
                      R"(","timestamp":815616001.5,"text":"Привет, мир\nвторая строка","isPinned":false,)"
                      R"("sourceBundleID":"org.gnome.Terminal"},{"id":")" +
                      kSecondId + R"(","timestamp":815616000.25,"text":"  \n\t ","isPinned":false}]})");
    }

    TemporaryDirectory dir_;
    ScopedEnv data_{"XDG_DATA_HOME", (dir_.path() / "data").c_str()};
    ScopedEnv state_{"XDG_STATE_HOME", (dir_.path() / "state").c_str()};
    ScopedEnv config_{"XDG_CONFIG_HOME", (dir_.path() / "config").c_str()};
    ScopedEnv bus_{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/orvantis-test-bus"};
    ScopedEnv runtime_{"XDG_RUNTIME_DIR", (dir_.path() / "runtime").c_str()};
};

TEST_F(ClipboardCommandTest, ListWithoutAFileIsEmpty) {
    const auto plain = run({"clipboard", "list"});
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(plain.out, "");
    const auto json = run({"clipboard", "list", "--json"});
    EXPECT_EQ(json.status, 0);
    EXPECT_EQ(json.out, "[]\n");
}

TEST_F(ClipboardCommandTest, ListReadsTheFilePinnedFirstOneLineEach) {
    writeSnapshot();
    const auto r = run({"clipboard", "list"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "1\t*\tpinned note\n2\t-\tПривет, мир\n3\t-\t     \n");
    EXPECT_EQ(r.err, "");
}

TEST_F(ClipboardCommandTest, ListAsJsonCarriesTheWholeEntries) {
    writeSnapshot();
    const auto r = run({"clipboard", "list", "--json"});
    ASSERT_EQ(r.status, 0);
    const auto json = nlohmann::json::parse(r.out);
    ASSERT_EQ(json.size(), 3u);
    EXPECT_EQ(json[0]["id"], kPinnedId);
    EXPECT_EQ(json[0]["isPinned"], true);
    EXPECT_FALSE(json[0].contains("sourceBundleID"));
    EXPECT_EQ(json[1]["id"], kFirstId);
    EXPECT_EQ(json[1]["preview"], "Привет, мир");
    EXPECT_EQ(json[1]["text"], "Привет, мир\nвторая строка");
    EXPECT_EQ(json[1]["isText"], true);
    EXPECT_EQ(json[1]["sourceBundleID"], "org.gnome.Terminal");
    EXPECT_EQ(json[2]["text"], "  \n\t ");
    EXPECT_EQ(r.out.substr(0, 7), "[{\"id\":");
}

TEST_F(ClipboardCommandTest, SearchUsesThePopupsFilterAcrossTheWholeText) {
    writeSnapshot();
    EXPECT_EQ(run({"clipboard", "search", "ВТОРАЯ"}).out, "1\t-\tПривет, мир\n");
    EXPECT_EQ(run({"clipboard", "search", "  NOTE\t"}).out, "1\t*\tpinned note\n");
    EXPECT_EQ(run({"clipboard", "search", "absent"}).out, "");
    const auto json = run({"clipboard", "search", "--json", "note"});
    EXPECT_EQ(json.status, 0);
    EXPECT_EQ(nlohmann::json::parse(json.out).size(), 1u);
    EXPECT_EQ(run({"clipboard", "search", "--", "--json"}).status, 0);
}

TEST_F(ClipboardCommandTest, ClearRemovesTheFilePinnedEntriesToo) {
    writeSnapshot();
    EXPECT_EQ(run({"clipboard", "clear"}).status, 0);
    EXPECT_FALSE(std::filesystem::exists(snapshot()));
    EXPECT_EQ(run({"clipboard", "list"}).out, "");
    // Nothing to clear is no failure.
    EXPECT_EQ(run({"clipboard", "clear"}).status, 0);
}

TEST_F(ClipboardCommandTest, ADamagedFileIsNamedAndLeftAlone) {
    writeFile(snapshot(), "{\"pinned\":[");
    for (const auto& args : {std::vector<std::string>{"clipboard", "list"},
                             std::vector<std::string>{"clipboard", "search", "x"},
                             std::vector<std::string>{"clipboard", "list", "--json"}}) {
        const auto r = run(args);
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(r.out, "");
        EXPECT_NE(r.err.find(snapshot().string()), std::string::npos) << r.err;
    }
    EXPECT_EQ(readFile(snapshot()), "{\"pinned\":[");
}

TEST_F(ClipboardCommandTest, AnEmptyFileIsDamagedToo) {
    writeFile(snapshot(), "");
    EXPECT_EQ(run({"clipboard", "list"}).status, 1);
    EXPECT_TRUE(std::filesystem::exists(snapshot()));
}

TEST_F(ClipboardCommandTest, AFolderInPlaceOfTheFileIsAFailure) {
    std::filesystem::create_directories(snapshot());
    const auto r = run({"clipboard", "list"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("clipboard.json"), std::string::npos);
}

TEST_F(ClipboardCommandTest, UsageErrorsExitTwo) {
    EXPECT_EQ(run({"clipboard"}).status, 2);
    EXPECT_EQ(run({"clipboard", "remove"}).status, 2);
    EXPECT_EQ(run({"clipboard", "list", "extra"}).status, 2);
    EXPECT_EQ(run({"clipboard", "list", "--yaml"}).status, 2);
    EXPECT_EQ(run({"clipboard", "search"}).status, 2);
    EXPECT_EQ(run({"clipboard", "search", "a", "b"}).status, 2);
    EXPECT_EQ(run({"clipboard", "search", "\xff"}).status, 2);
    EXPECT_EQ(run({"clipboard", "clear", "--json"}).status, 2);
    EXPECT_EQ(run({"clipboard", "clear", "now"}).status, 2);
    const auto r = run({"clipboard", "list", "--yaml"});
    EXPECT_NE(r.err.find("usage: orvantis clipboard"), std::string::npos);
}

TEST_F(ClipboardCommandTest, TheHelpNamesTheCommands) {
    const auto r = run({"--help"});
    EXPECT_NE(r.out.find("orvantis clipboard list [--json]"), std::string::npos);
    EXPECT_NE(r.out.find("orvantis clipboard search [--json] TEXT"), std::string::npos);
    EXPECT_NE(r.out.find("orvantis clipboard clear"), std::string::npos);
}

}  // namespace
}  // namespace orvantis::app
