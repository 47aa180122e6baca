#include "platform/freedesktop/clipboard_bus.h"

#include <chrono>
#include <cstdlib>
#include <future>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/freedesktop/single_instance_guard.h"
#include "testing/test_support.h"

#include <poll.h>
#include <unistd.h>

namespace orvantis::freedesktop {
namespace {

using namespace std::chrono_literals;
using orvantis::testing::ScopedEnv;

/// The program's side on the session bus of the test run: a guard owning a name of its own,
/// with the object exported, served on this thread while the client calls from another.
class ClipboardBusLiveTest : public ::testing::Test {
protected:
    void SetUp() override {
        const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        if (address == nullptr || *address == '\0') GTEST_SKIP() << "no session bus";
        SingleInstanceOptions options;
        options.busName = busName_;
        guard_ = SingleInstanceGuard::acquire(options);
        ASSERT_NE(guard_, nullptr);
        if (guard_->mechanism() != SingleInstanceGuard::Mechanism::SessionBus) GTEST_SKIP() << "session bus unusable";
    }

    void exportObject(std::size_t messageSizeLimit = kBusMessageSizeLimit) {
        ClipboardBusHandlers handlers;
        handlers.list = [this](std::string_view search) -> std::optional<std::string> {
            searches_.emplace_back(search);
            if (!hasHistory_) return std::nullopt;
            return listing_;
        };
        handlers.clear = [this] {
            ++clears_;
            return hasHistory_;
        };
        service_ = ClipboardBusService::exportOn(*guard_, std::move(handlers), messageSizeLimit);
        ASSERT_NE(service_, nullptr);
    }

    /// Runs `work` on another thread and serves the bus here until it is done.
    template <typename Work>
    ClipboardBusReply serveWhile(Work work) {
        auto reply = std::async(std::launch::async, work);
        while (reply.wait_for(0s) != std::future_status::ready) {
            pollfd fd{guard_->busDescriptor(), POLLIN, 0};
            ::poll(&fd, 1, 10);
            guard_->processBus();
        }
        return reply.get();
    }

    const std::string busName_ = "org.orvantis.OrvantisTest.p" + std::to_string(::getpid());
    std::unique_ptr<SingleInstanceGuard> guard_;
    std::unique_ptr<ClipboardBusService> service_;
    std::string listing_ = "[]";
    bool hasHistory_ = true;
    std::vector<std::string> searches_;
    int clears_ = 0;
};

TEST_F(ClipboardBusLiveTest, ListAnswersTheListingOfTheHandler) {
    exportObject();
    listing_ = R"([{"id":"A","preview":"Привет","isPinned":false,"isText":true,"text":"Привет"}])";
    const auto reply = serveWhile([this] { return listRunningClipboard(std::nullopt, 1000ms, busName_); });
    EXPECT_EQ(reply.status, ClipboardBusReply::Status::Answered);
    EXPECT_EQ(reply.text, listing_);
    EXPECT_EQ(searches_, std::vector<std::string>{""});
}

TEST_F(ClipboardBusLiveTest, SearchHandsTheTextToTheHandler) {
    exportObject();
    const auto reply = serveWhile([this] { return listRunningClipboard("needle ж", 1000ms, busName_); });
    EXPECT_EQ(reply.status, ClipboardBusReply::Status::Answered);
    EXPECT_EQ(searches_, std::vector<std::string>{"needle ж"});
}

TEST_F(ClipboardBusLiveTest, AMegabyteListingGoesThroughWhole) {
    exportObject();
    listing_ = "[\"" + std::string(1 << 20, 'x') + "\"]";
    const auto reply = serveWhile([this] { return listRunningClipboard(std::nullopt, 2000ms, busName_); });
    EXPECT_EQ(reply.status, ClipboardBusReply::Status::Answered);
    EXPECT_EQ(reply.text.size(), listing_.size());
}

TEST_F(ClipboardBusLiveTest, AListingBeyondTheMessageLimitIsRefusedByName) {
    exportObject(64 * 1024);
    listing_ = "[\"" + std::string(64 * 1024, 'x') + "\"]";
    const auto list = serveWhile([this] { return listRunningClipboard(std::nullopt, 2000ms, busName_); });
    EXPECT_EQ(list.status, ClipboardBusReply::Status::TooLarge);
    EXPECT_NE(list.text.find(std::to_string(listing_.size()) + " bytes"), std::string::npos) << list.text;
    const auto search = serveWhile([this] { return listRunningClipboard("x", 2000ms, busName_); });
    EXPECT_EQ(search.status, ClipboardBusReply::Status::TooLarge);
    // A listing well within the limit still goes through.
    listing_ = "[\"" + std::string(32 * 1024, 'x') + "\"]";
    const auto small = serveWhile([this] { return listRunningClipboard(std::nullopt, 2000ms, busName_); });
    EXPECT_EQ(small.status, ClipboardBusReply::Status::Answered);
    EXPECT_EQ(small.text, listing_);
}

TEST_F(ClipboardBusLiveTest, ClearCallsTheHandler) {
    exportObject();
    const auto reply = serveWhile([this] { return clearRunningClipboard(1000ms, busName_); });
    EXPECT_EQ(reply.status, ClipboardBusReply::Status::Answered);
    EXPECT_EQ(clears_, 1);
}

TEST_F(ClipboardBusLiveTest, NoHistoryIsAnErrorReplyNotACrash) {
    exportObject();
    hasHistory_ = false;
    const auto list = serveWhile([this] { return listRunningClipboard(std::nullopt, 1000ms, busName_); });
    EXPECT_EQ(list.status, ClipboardBusReply::Status::Failed);
    EXPECT_NE(list.text.find("without a clipboard history"), std::string::npos);
    const auto clear = serveWhile([this] { return clearRunningClipboard(1000ms, busName_); });
    EXPECT_EQ(clear.status, ClipboardBusReply::Status::Failed);
}

TEST_F(ClipboardBusLiveTest, AHandlerThatThrowsGivesAnErrorReply) {
    ClipboardBusHandlers handlers;
    handlers.list = [](std::string_view) -> std::optional<std::string> { throw std::runtime_error("broken"); };
    service_ = ClipboardBusService::exportOn(*guard_, std::move(handlers));
    ASSERT_NE(service_, nullptr);
    const auto reply = serveWhile([this] { return listRunningClipboard(std::nullopt, 1000ms, busName_); });
    EXPECT_EQ(reply.status, ClipboardBusReply::Status::Failed);
    // Clear has no handler at all.
    EXPECT_EQ(serveWhile([this] { return clearRunningClipboard(1000ms, busName_); }).status,
              ClipboardBusReply::Status::Failed);
}

TEST_F(ClipboardBusLiveTest, WithTheObjectWithdrawnTheCallFails) {
    exportObject();
    service_.reset();
    const auto reply = serveWhile([this] { return listRunningClipboard(std::nullopt, 1000ms, busName_); });
    EXPECT_EQ(reply.status, ClipboardBusReply::Status::Failed);
}

TEST_F(ClipboardBusLiveTest, NobodyOwningTheNameMeansNotRunning) {
    const auto reply = listRunningClipboard(std::nullopt, 1000ms, busName_ + ".Absent");
    EXPECT_EQ(reply.status, ClipboardBusReply::Status::NotRunning);
}

TEST(ClipboardBusTest, NoSessionBusMeansNotRunning) {
    ScopedEnv address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/orvantis-test-bus");
    ScopedEnv runtime("XDG_RUNTIME_DIR", "/nonexistent");
    EXPECT_EQ(listRunningClipboard(std::nullopt, 200ms).status, ClipboardBusReply::Status::NotRunning);
    EXPECT_EQ(clearRunningClipboard(200ms).status, ClipboardBusReply::Status::NotRunning);
}

TEST(ClipboardBusTest, AGuardWithoutABusExportsNothing) {
    orvantis::testing::TemporaryDirectory dir;
    SingleInstanceOptions options;
    options.useSessionBus = false;
    options.lockFile = dir.path() / "orvantis.lock";
    auto guard = SingleInstanceGuard::acquire(options);
    ASSERT_NE(guard, nullptr);
    EXPECT_EQ(ClipboardBusService::exportOn(*guard, {}), nullptr);
}

}  // namespace
}  // namespace orvantis::freedesktop
