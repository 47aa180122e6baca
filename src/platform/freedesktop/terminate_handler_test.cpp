#include "platform/freedesktop/terminate_handler.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>

#include "core/log/app_logger.h"
#include "platform/clock.h"
#include "platform/serial_queue.h"

namespace orvantis::freedesktop {
namespace {

namespace fs = std::filesystem;

struct TableMissing : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void throwInt() { throw 42; }
void callWithoutExceptions() noexcept { throwInt(); }

/// The death test runs `crash` in a child process with a real logger writing to `dir`; the
/// parent reads what reached the disk.
class TerminateHandlerDeathTest : public ::testing::Test {
protected:
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "fast");  // the child must see the folder made here
        std::string pattern = (fs::path(::testing::TempDir()) / "orvantis-crash-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        dir_ = pattern;
    }
    void TearDown() override {
        std::error_code ignored;
        fs::remove_all(dir_, ignored);
    }

    template <typename Crash>
    static void runLoggedCrash(const fs::path& dir, Crash crash) {
        platform::ThreadSerialQueue queue("orvantis.AppLogger");
        platform::SystemClock clock;
        AppLogger logger(dir, queue, clock);
        installTerminateHandler(logger);
        logger.log().app.info("about to crash");
        crash();
    }

    /// Everything the child logged, whatever the day.
    std::string logged() const {
        std::string text;
        for (const auto& entry : fs::directory_iterator(dir_)) {
            std::ifstream in(entry.path(), std::ios::binary);
            text.append(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        }
        return text;
    }

    fs::path dir_;
};

TEST_F(TerminateHandlerDeathTest, AnUncaughtExceptionLeavesItsCrashLineOnDisk) {
    EXPECT_EXIT(runLoggedCrash(dir_, [] { std::thread([] { throw TableMissing("table 7"); }).join(); }),
                ::testing::KilledBySignal(SIGABRT), "");
    const std::string text = logged();
    EXPECT_NE(text.find("[INFO ] App: about to crash\n"), std::string::npos) << text;
    const std::string head = "[ERROR] Crash: uncaught exception "
                             "orvantis::freedesktop::(anonymous namespace)::TableMissing: table 7\n    ";
    const auto at = text.find(head);
    ASSERT_NE(at, std::string::npos) << text;
    EXPECT_LT(text.find("about to crash"), at);
    // At least one frame follows, indented by four blanks.
    const std::string rest = text.substr(at + head.size());
    EXPECT_FALSE(rest.empty() || rest.front() == '\n') << text;
}

TEST_F(TerminateHandlerDeathTest, ANonStandardExceptionHasNoReason) {
    EXPECT_EXIT(runLoggedCrash(dir_, [] { callWithoutExceptions(); }), ::testing::KilledBySignal(SIGABRT), "");
    const std::string text = logged();
    EXPECT_NE(text.find("[ERROR] Crash: uncaught exception int: <no reason>\n    "), std::string::npos) << text;
}

TEST_F(TerminateHandlerDeathTest, TerminateWithoutAnExceptionIsNamedSo) {
    EXPECT_EXIT(runLoggedCrash(dir_, [] { std::terminate(); }), ::testing::KilledBySignal(SIGABRT), "");
    const std::string text = logged();
    EXPECT_NE(text.find("[ERROR] Crash: uncaught exception std::terminate: <no reason>\n    "), std::string::npos)
        << text;
}

}  // namespace
}  // namespace orvantis::freedesktop
