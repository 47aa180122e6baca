#include "app/clipboard_command.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/command_line.h"
#include "platform/freedesktop/clipboard_bus.h"
#include "platform/freedesktop/single_instance_guard.h"
#include "testing/test_support.h"

#include <poll.h>
#include <unistd.h>

namespace orvantis::app {
namespace {

using namespace std::chrono_literals;
using freedesktop::ClipboardBusReply;
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

TEST_F(ClipboardCommandTest, AListingTooLargeForTheBusIsReadFromTheFile) {
    writeSnapshot();
    std::vector<std::optional<std::string>> asked;
    ClipboardBusClient bus;
    bus.list = [&](std::optional<std::string_view> search) {
        asked.emplace_back(search);
        return ClipboardBusReply{ClipboardBusReply::Status::TooLarge, "the listing is larger than one bus message"};
    };
    bus.clear = [] { return ClipboardBusReply{ClipboardBusReply::Status::NotRunning, {}}; };
    const auto runWith = [&](std::vector<std::string> args) {
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const int status = runClipboardCommand(args, bus);
        std::string out = ::testing::internal::GetCapturedStdout();
        std::string err = ::testing::internal::GetCapturedStderr();
        return Result{status, out, err};
    };

    const auto list = runWith({"clipboard", "list"});
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(list.out, "1\t*\tpinned note\n2\t-\tПривет, мир\n3\t-\t     \n");
    EXPECT_EQ(list.err, "orvantis: the history is too large for the session bus; listed from the snapshot file " +
                            snapshot().string() + "\n");

    const auto search = runWith({"clipboard", "search", "ВТОРАЯ"});
    EXPECT_EQ(search.status, 0);
    EXPECT_EQ(search.out, "1\t-\tПривет, мир\n");
    EXPECT_EQ(search.err, "orvantis: the history is too large for the session bus; searched the snapshot file " +
                              snapshot().string() + "\n");
    EXPECT_EQ(asked, (std::vector<std::optional<std::string>>{std::nullopt, "ВТОРАЯ"}));
}

TEST_F(ClipboardCommandTest, AFailedCallIsNotReadFromTheFile) {
    writeSnapshot();
    ClipboardBusClient bus;
    bus.list = [](std::optional<std::string_view>) {
        return ClipboardBusReply{ClipboardBusReply::Status::Failed, "the running Orvantis did not answer in time"};
    };
    bus.clear = [] { return ClipboardBusReply{ClipboardBusReply::Status::NotRunning, {}}; };
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const int status = runClipboardCommand({"clipboard", "list"}, bus);
    const std::string out = ::testing::internal::GetCapturedStdout();
    const std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(status, 1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "orvantis: clipboard: the running Orvantis did not answer in time\n");
}

TEST_F(ClipboardCommandTest, TheHelpNamesTheCommands) {
    const auto r = run({"--help"});
    EXPECT_NE(r.out.find("orvantis clipboard list [--json]"), std::string::npos);
    EXPECT_NE(r.out.find("orvantis clipboard search [--json] TEXT"), std::string::npos);
    EXPECT_NE(r.out.find("orvantis clipboard clear"), std::string::npos);
}


/// The command against a program's object on the session bus of the test run, under a name of
/// the test's own and with a message size limit small enough for a test to exceed.
class ClipboardCommandLiveTest : public ::testing::Test {
protected:
    static constexpr std::size_t kSmallLimit = 64 * 1024;

    void SetUp() override {
        const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        if (address == nullptr || *address == '\0') GTEST_SKIP() << "no session bus";
        freedesktop::SingleInstanceOptions options;
        options.busName = busName_;
        guard_ = freedesktop::SingleInstanceGuard::acquire(options);
        ASSERT_NE(guard_, nullptr);
        if (guard_->mechanism() != freedesktop::SingleInstanceGuard::Mechanism::SessionBus) {
            GTEST_SKIP() << "session bus unusable";
        }
        freedesktop::ClipboardBusHandlers handlers;
        handlers.list = [this](std::string_view) -> std::optional<std::string> { return listing_; };
        handlers.clear = [] { return true; };
        service_ = freedesktop::ClipboardBusService::exportOn(*guard_, std::move(handlers), kSmallLimit);
        ASSERT_NE(service_, nullptr);
        client_.list = [this](std::optional<std::string_view> search) {
            return freedesktop::listRunningClipboard(search, 2000ms, busName_);
        };
        client_.clear = [this] { return freedesktop::clearRunningClipboard(2000ms, busName_); };
    }

    /// Runs the command on another thread and serves the bus here until it is done.
    Result runServed(std::vector<std::string> args) {
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        auto done = std::async(std::launch::async, [&] { return runClipboardCommand(args, client_); });
        while (done.wait_for(0s) != std::future_status::ready) {
            pollfd fd{guard_->busDescriptor(), POLLIN, 0};
            ::poll(&fd, 1, 10);
            guard_->processBus();
        }
        const int status = done.get();
        std::string out = ::testing::internal::GetCapturedStdout();
        std::string err = ::testing::internal::GetCapturedStderr();
        return {status, out, err};
    }

    std::filesystem::path snapshot() const { return dir_.path() / "data" / "orvantis" / "clipboard.json"; }

    TemporaryDirectory dir_;
    ScopedEnv data_{"XDG_DATA_HOME", (dir_.path() / "data").c_str()};
    const std::string busName_ = "org.orvantis.OrvantisCommandTest.p" + std::to_string(::getpid());
    std::unique_ptr<freedesktop::SingleInstanceGuard> guard_;
    std::unique_ptr<freedesktop::ClipboardBusService> service_;
    ClipboardBusClient client_;
    std::string listing_;
};

TEST_F(ClipboardCommandLiveTest, AListingBeyondTheBusLimitComesFromTheFile) {
    writeFile(snapshot(), std::string(R"({"pinned":[],"unpinned":[{"id":")") + kFirstId +
                              R"(","timestamp":815616001.5,"text":"from the file","isPinned":false}]})");
    // One entry of the program's own, with a text larger than the bus limit allows.
    listing_ = std::string(R"([{"id":")") + kSecondId + R"(","preview":"big","isPinned":false,"isText":true,"text":")" +
               std::string(kSmallLimit, 'x') + "\"}]";
    const auto r = runServed({"clipboard", "list"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "1\t-\tfrom the file\n");
    EXPECT_EQ(r.err, "orvantis: the history is too large for the session bus; listed from the snapshot file " +
                         snapshot().string() + "\n");
}

TEST_F(ClipboardCommandLiveTest, AListingWithinTheLimitComesFromTheProgram) {
    listing_ = std::string(R"([{"id":")") + kSecondId + R"(","preview":"live","isPinned":true,"isText":true,"text":")" +
               std::string(kSmallLimit / 2, 'y') + "\"}]";
    const auto r = runServed({"clipboard", "list"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "1\t*\tlive\n");
    EXPECT_EQ(r.err, "");
}

}  // namespace
}  // namespace orvantis::app
