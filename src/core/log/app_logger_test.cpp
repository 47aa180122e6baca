#include "core/log/app_logger.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/serial_queue.h"
#include "platform/sim/virtual_main_loop.h"
#include "testing/test_support.h"

#include <sys/resource.h>
#include <unistd.h>

namespace orvantis {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using WallTime = std::chrono::system_clock::time_point;

/// A UTC instant; with TZ=UTC it is also the local time.
WallTime at(int y, unsigned mo, unsigned d, int h, int mi, int s, int ms = 0) {
    const std::chrono::sys_days day = std::chrono::year{y} / std::chrono::month{mo} / std::chrono::day{d};
    return day + std::chrono::hours{h} + std::chrono::minutes{mi} + std::chrono::seconds{s} +
           std::chrono::milliseconds{ms};
}

std::string readAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeFile(const fs::path& path, std::string_view content) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
}

void setModified(const fs::path& path, WallTime when) {
    fs::last_write_time(path, std::chrono::file_clock::from_sys(when));
}

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

/// Names of the files of `dir` that this process holds open.
std::set<std::string> openFilesIn(const fs::path& dir) {
    std::set<std::string> names;
    const fs::path canonicalDir = fs::canonical(dir);
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const fs::path target = fs::read_symlink(entry.path(), error);
        if (!error && target.parent_path() == canonicalDir) names.insert(target.filename().string());
    }
    return names;
}

/// Keeps every message that reaches the system log, as "type category: message".
class RecordingSink final : public SystemLogSink {
public:
    explicit RecordingSink(std::vector<std::string>& received) : received_(received) {}
    void log(Type type, std::string_view category, std::string_view message) override {
        const char* name = type == Type::Debug ? "debug" : type == Type::Info ? "info" : "error";
        received_.push_back(std::string(name) + " " + std::string(category) + ": " + std::string(message));
    }

private:
    std::vector<std::string>& received_;
};

/// A wall clock that stands still, safe from any thread.
class FixedClock final : public platform::Clock {
public:
    explicit FixedClock(WallTime wall) : wall_(wall) {}
    std::chrono::steady_clock::time_point monotonicNow() const override { return {}; }
    WallTime wallNow() const override { return wall_; }

private:
    WallTime wall_;
};

class AppLoggerTest : public ::testing::Test {
protected:
    void SetUp() override {
        useTimeZone("UTC");
        std::string pattern = (fs::path(::testing::TempDir()) / "orvantis-log-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        root_ = pattern;
        dir_ = root_ / "state" / "orvantis" / "logs";
        loop_.setWallTime(at(2026, 11, 15, 12, 0, 0));
    }

    void TearDown() override {
        timeZone_.reset();
        tzset();
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }

    void useTimeZone(const char* zone) {
        timeZone_.reset();
        timeZone_.emplace("TZ", zone);
        tzset();
    }

    fs::path file(std::string_view day) const { return dir_ / AppLogger::fileNameForDay(day); }

    std::optional<testing::ScopedEnv> timeZone_;
    fs::path root_;
    fs::path dir_;
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> queue_ = loop_.makeSerialQueue("orvantis.AppLogger");
};

// --- Line format ---------------------------------------------------------------------------

TEST_F(AppLoggerTest, WritesEachLevelInTheExactLineFormat) {
    AppLogger logger(dir_, *queue_, loop_);
    loop_.setWallTime(at(2026, 11, 15, 14, 0, 57, 123) + 999us);  // milliseconds are cut, not rounded
    logger.log().app.info("started");
    logger.log().app.warning("globalEventMonitor: tap disabled (4294967294), re-enabling");
    logger.log().icloud.error("push failed");
    logger.info("Launch", [] { return std::string("by name"); });
    logger.warning("Translate", [] { return std::string("slow"); });
    logger.error("Clipboard", [] { return std::string("lost"); });
    loop_.runUntilIdle();

    EXPECT_EQ(readAll(file("2026-11-15")),
              "2026-11-15 14:00:57.123 [INFO ] App: started\n"
              "2026-11-15 14:00:57.123 [WARN ] App: globalEventMonitor: tap disabled (4294967294), re-enabling\n"
              "2026-11-15 14:00:57.123 [ERROR] iCloud: push failed\n"
              "2026-11-15 14:00:57.123 [INFO ] Launch: by name\n"
              "2026-11-15 14:00:57.123 [WARN ] Translate: slow\n"
              "2026-11-15 14:00:57.123 [ERROR] Clipboard: lost\n");
}

TEST_F(AppLoggerTest, LabelsAndFileNames) {
    EXPECT_EQ(AppLogger::label(AppLogger::Level::Debug), "DEBUG");
    EXPECT_EQ(AppLogger::label(AppLogger::Level::Info), "INFO ");
    EXPECT_EQ(AppLogger::label(AppLogger::Level::Warn), "WARN ");
    EXPECT_EQ(AppLogger::label(AppLogger::Level::Error), "ERROR");
    EXPECT_EQ(AppLogger::fileNameForDay("2026-11-15"), "orvantis-2026-11-15.log");
    AppLogger logger(dir_, *queue_, loop_);
    EXPECT_EQ(logger.logsDirectory(), dir_);
    EXPECT_EQ(logger.log().launch.name(), "Launch");
    EXPECT_EQ(logger.log().translate.name(), "Translate");
    EXPECT_EQ(logger.log().clipboard.name(), "Clipboard");
    EXPECT_EQ(logger.log().icloud.name(), "iCloud");
}

TEST_F(AppLoggerTest, CreatesTheDirectoryAtStartUp) {
    AppLogger logger(dir_, *queue_, loop_);
    EXPECT_TRUE(fs::is_directory(dir_));
}

TEST_F(AppLoggerTest, StampsAndFileNamesAreInLocalTime) {
    useTimeZone("UTC-3");  // three hours east of Greenwich
    AppLogger logger(dir_, *queue_, loop_);
    loop_.setWallTime(at(2026, 11, 15, 22, 30, 0, 5));
    logger.log().app.info("late evening in Greenwich");
    loop_.runUntilIdle();
    EXPECT_FALSE(fs::exists(file("2026-11-15")));
    EXPECT_EQ(readAll(file("2026-11-16")), "2026-11-16 01:30:00.005 [INFO ] App: late evening in Greenwich\n");
}

TEST_F(AppLoggerTest, LinesFollowTheOrderOfCallsNotOfTheirStamps) {
    AppLogger logger(dir_, *queue_, loop_);
    loop_.setWallTime(at(2026, 11, 15, 12, 0, 5));
    logger.log().app.info("one");
    loop_.setWallTime(at(2026, 11, 15, 12, 0, 1));  // the clock was set back
    logger.log().clipboard.error("two");
    logger.log().app.debug("not in the file");
    loop_.setWallTime(at(2026, 11, 15, 12, 0, 3));
    logger.warning("Launch", [] { return std::string("three"); });
    logger.log().app.info("four");
    loop_.runUntilIdle();

    EXPECT_EQ(readAll(file("2026-11-15")),
              "2026-11-15 12:00:05.000 [INFO ] App: one\n"
              "2026-11-15 12:00:01.000 [ERROR] Clipboard: two\n"
              "2026-11-15 12:00:03.000 [WARN ] Launch: three\n"
              "2026-11-15 12:00:03.000 [INFO ] App: four\n");
}

TEST_F(AppLoggerTest, TheTimeOfTheCallIsStampedNotTheTimeOfTheWrite) {
    AppLogger logger(dir_, *queue_, loop_);
    loop_.setWallTime(at(2026, 11, 15, 12, 0, 0, 250));
    logger.log().app.info("queued");
    loop_.setWallTime(at(2026, 11, 15, 12, 5, 0));
    loop_.runUntilIdle();
    EXPECT_EQ(readAll(file("2026-11-15")), "2026-11-15 12:00:00.250 [INFO ] App: queued\n");
}

// --- Debug ---------------------------------------------------------------------------------

TEST_F(AppLoggerTest, DebugReachesNeitherTheFileNorRecentLogs) {
    std::vector<std::string> received;
    AppLogger logger(dir_, *queue_, loop_, std::make_unique<RecordingSink>(received));
    logger.log().app.debug("debug by category");
    logger.debug("App", [] { return std::string("debug by name"); });
    logger.write(AppLogger::Level::Debug, "App", "debug written directly");
    logger.log().app.info("kept");
    loop_.runUntilIdle();

    EXPECT_EQ(readAll(file("2026-11-15")), "2026-11-15 12:00:00.000 [INFO ] App: kept\n");
    const std::string recent = logger.recentLogs(1);
    EXPECT_EQ(recent.find("debug"), std::string::npos) << recent;
    EXPECT_NE(recent.find("kept"), std::string::npos) << recent;
    EXPECT_EQ(received.size(), 3u);  // the system log did get the first two debug messages and the info
}

TEST_F(AppLoggerTest, AMessageIsEvaluatedOnlyWhenSomeSinkWantsIt) {
    int evaluated = 0;
    const auto message = [&] {
        ++evaluated;
        return std::string("costly");
    };
    {
        AppLogger logger(dir_, *queue_, loop_);
        logger.debug("App", message);
        EXPECT_EQ(evaluated, 0);
        logger.info("App", message);
        EXPECT_EQ(evaluated, 1);
    }
    std::vector<std::string> received;
    AppLogger logger(dir_, *queue_, loop_, std::make_unique<RecordingSink>(received));
    logger.debug("App", message);
    EXPECT_EQ(evaluated, 2);
    logger.error("App", message);
    EXPECT_EQ(evaluated, 3);  // once for both sinks
}

// --- Days and midnight ---------------------------------------------------------------------

TEST_F(AppLoggerTest, MidnightClosesTheFirstFileAndOpensTheNextAtTheFirstMessageAfterIt) {
    AppLogger logger(dir_, *queue_, loop_);
    loop_.setWallTime(at(2026, 11, 15, 23, 59, 59, 900));
    logger.log().app.info("before midnight");
    loop_.runUntilIdle();
    EXPECT_EQ(openFilesIn(dir_), std::set<std::string>{"orvantis-2026-11-15.log"});

    loop_.setWallTime(at(2026, 11, 16, 0, 0, 0, 100));
    loop_.runUntilIdle();
    EXPECT_FALSE(fs::exists(file("2026-11-16")));  // nothing was logged on the new day yet
    EXPECT_EQ(openFilesIn(dir_), std::set<std::string>{"orvantis-2026-11-15.log"});

    logger.log().app.info("after midnight");
    loop_.runUntilIdle();
    EXPECT_EQ(openFilesIn(dir_), std::set<std::string>{"orvantis-2026-11-16.log"});
    EXPECT_EQ(readAll(file("2026-11-15")), "2026-11-15 23:59:59.900 [INFO ] App: before midnight\n");
    EXPECT_EQ(readAll(file("2026-11-16")), "2026-11-16 00:00:00.100 [INFO ] App: after midnight\n");
}

TEST_F(AppLoggerTest, TheDayOfTheCallDecidesTheFileEvenWhenWrittenLater) {
    AppLogger logger(dir_, *queue_, loop_);
    loop_.setWallTime(at(2026, 11, 15, 23, 59, 59, 999));
    logger.log().app.info("late");
    loop_.setWallTime(at(2026, 11, 16, 0, 0, 0, 1));
    logger.log().app.info("early");
    loop_.setWallTime(at(2026, 11, 15, 23, 59, 59, 999));  // set back across midnight
    logger.log().app.info("late again");
    loop_.runUntilIdle();
    EXPECT_EQ(readAll(file("2026-11-15")),
              "2026-11-15 23:59:59.999 [INFO ] App: late\n"
              "2026-11-15 23:59:59.999 [INFO ] App: late again\n");
    EXPECT_EQ(readAll(file("2026-11-16")), "2026-11-16 00:00:00.001 [INFO ] App: early\n");
}

TEST_F(AppLoggerTest, AppendsToTheFileAnEarlierRunLeft) {
    fs::create_directories(dir_);
    writeFile(file("2026-11-15"), "2026-11-15 08:00:00.000 [INFO ] App: earlier run\n");
    AppLogger logger(dir_, *queue_, loop_);
    logger.log().app.info("this run");
    loop_.runUntilIdle();
    EXPECT_EQ(readAll(file("2026-11-15")),
              "2026-11-15 08:00:00.000 [INFO ] App: earlier run\n"
              "2026-11-15 12:00:00.000 [INFO ] App: this run\n");
}

// --- recentLogs ----------------------------------------------------------------------------

TEST_F(AppLoggerTest, RecentLogsOfZeroDaysReadsTodaysFileOnly) {
    fs::create_directories(dir_);
    writeFile(file("2026-11-14"), "2026-11-14 10:00:00.000 [INFO ] App: yesterday\n");
    AppLogger logger(dir_, *queue_, loop_);
    logger.log().app.info("today");
    // No runUntilIdle: recentLogs itself waits for the line to be written.
    EXPECT_EQ(logger.recentLogs(0),
              "------- orvantis-2026-11-15.log -------\n"
              "2026-11-15 12:00:00.000 [INFO ] App: today\n");
}

TEST_F(AppLoggerTest, RecentLogsOfZeroDaysWithoutTodaysFileSaysZeroDays) {
    fs::create_directories(dir_);
    writeFile(file("2026-11-14"), "2026-11-14 10:00:00.000 [INFO ] App: yesterday\n");
    AppLogger logger(dir_, *queue_, loop_);
    EXPECT_EQ(logger.recentLogs(0), "(no log entries found in the last 0 day(s))");
    writeFile(file("2026-11-15"), "");
    EXPECT_EQ(logger.recentLogs(0), "(no log entries found in the last 0 day(s))");
}

TEST_F(AppLoggerTest, RecentLogsOfThreeDaysGivesTwoSectionsOlderFirst) {
    fs::create_directories(dir_);
    writeFile(file("2026-11-12"), "2026-11-12 09:00:00.000 [INFO ] App: too old for three days\n");
    writeFile(file("2026-11-13"), "2026-11-13 09:00:00.000 [WARN ] App: two days ago\n");
    AppLogger logger(dir_, *queue_, loop_);
    logger.log().app.info("today");
    EXPECT_EQ(logger.recentLogs(3),
              "------- orvantis-2026-11-13.log -------\n"
              "2026-11-13 09:00:00.000 [WARN ] App: two days ago\n"
              "\n"
              "------- orvantis-2026-11-15.log -------\n"
              "2026-11-15 12:00:00.000 [INFO ] App: today\n");
}

TEST_F(AppLoggerTest, RecentLogsCountsCalendarDaysInLocalTime) {
    useTimeZone("UTC+5");  // five hours west of Greenwich
    fs::create_directories(dir_);
    writeFile(file("2026-11-14"), "yesterday, local\n");
    writeFile(file("2026-11-15"), "today in Greenwich only\n");
    AppLogger logger(dir_, *queue_, loop_);
    loop_.setWallTime(at(2026, 11, 16, 2, 0, 0));  // 2026-11-15 21:00 local
    EXPECT_EQ(logger.recentLogs(1), "------- orvantis-2026-11-15.log -------\ntoday in Greenwich only\n");
    EXPECT_EQ(logger.recentLogs(2),
              "------- orvantis-2026-11-14.log -------\nyesterday, local\n\n"
              "------- orvantis-2026-11-15.log -------\ntoday in Greenwich only\n");
}

TEST_F(AppLoggerTest, AnEmptyFileYieldsNoHeader) {
    fs::create_directories(dir_);
    writeFile(file("2026-11-14"), "");
    AppLogger logger(dir_, *queue_, loop_);
    logger.log().app.info("today");
    EXPECT_EQ(logger.recentLogs(2),
              "------- orvantis-2026-11-15.log -------\n"
              "2026-11-15 12:00:00.000 [INFO ] App: today\n");
}

TEST_F(AppLoggerTest, FilesThatAreNotValidUtf8AreSkipped) {
    fs::create_directories(dir_);
    writeFile(file("2026-11-10"), "stray byte \xff here\n");
    writeFile(file("2026-11-11"), "overlong slash \xc0\xaf\n");
    writeFile(file("2026-11-12"), "surrogate \xed\xa0\x80\n");
    writeFile(file("2026-11-13"), "cut short \xe2\x82");
    fs::create_directory(file("2026-11-14"));  // cannot be read as a file
    AppLogger logger(dir_, *queue_, loop_);
    logger.log().app.info("привет, €, 𝄞");
    EXPECT_EQ(logger.recentLogs(7),
              "------- orvantis-2026-11-15.log -------\n"
              "2026-11-15 12:00:00.000 [INFO ] App: привет, €, 𝄞\n");
}

TEST_F(AppLoggerTest, DaysBelowOneReadTodayAndAreQuotedAsGiven) {
    AppLogger logger(dir_, *queue_, loop_);
    EXPECT_EQ(logger.recentLogs(-2), "(no log entries found in the last -2 day(s))");
    EXPECT_EQ(logger.recentLogs(5), "(no log entries found in the last 5 day(s))");
    logger.log().app.info("today");
    EXPECT_EQ(logger.recentLogs(-2), "------- orvantis-2026-11-15.log -------\n"
                                     "2026-11-15 12:00:00.000 [INFO ] App: today\n");
}

// --- Pruning -------------------------------------------------------------------------------

TEST_F(AppLoggerTest, PruningLeavesFilesThatAreNotDailyLogsWhateverTheirAge) {
    fs::create_directories(dir_);
    const WallTime longAgo = at(2025, 1, 1, 0, 0, 0);
    for (const char* name : {"notes.log", "orvantis-old.txt", "orvantis-2026-10-01.log"}) {
        writeFile(dir_ / name, "x\n");
        setModified(dir_ / name, longAgo);
    }
    AppLogger logger(dir_, *queue_, loop_);
    loop_.runUntilIdle();
    EXPECT_TRUE(fs::exists(dir_ / "notes.log"));
    EXPECT_TRUE(fs::exists(dir_ / "orvantis-old.txt"));
    EXPECT_FALSE(fs::exists(dir_ / "orvantis-2026-10-01.log"));
}

TEST_F(AppLoggerTest, PruningJudgesAgeByModificationTimeNotByName) {
    fs::create_directories(dir_);
    const WallTime now = loop_.wallNow();
    const auto make = [&](const char* name, WallTime modified) {
        writeFile(dir_ / name, "x\n");
        setModified(dir_ / name, modified);
    };
    make("orvantis-2020-01-01.log", now - 1h);                   // old name, fresh date: kept
    make("orvantis-2026-11-15.log", now - std::chrono::days{8});  // fresh name, old date: removed
    make("orvantis-a.log", now - std::chrono::days{7} + 1min);   // just inside the seven days
    make("orvantis-b.log", now - std::chrono::days{7} - 1min);   // just outside
    AppLogger logger(dir_, *queue_, loop_);
    loop_.runUntilIdle();
    EXPECT_TRUE(fs::exists(dir_ / "orvantis-2020-01-01.log"));
    EXPECT_FALSE(fs::exists(dir_ / "orvantis-2026-11-15.log"));
    EXPECT_TRUE(fs::exists(dir_ / "orvantis-a.log"));
    EXPECT_FALSE(fs::exists(dir_ / "orvantis-b.log"));
}

TEST_F(AppLoggerTest, PruningCountsCalendarDaysAcrossAClockChange) {
    useTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");  // summer time ended on 2026-10-25
    fs::create_directories(dir_);
    loop_.setWallTime(at(2026, 10, 28, 11, 0, 0));  // 12:00 local; seven days earlier was 12:00 summer time
    const WallTime now = loop_.wallNow();
    writeFile(dir_ / "orvantis-kept.log", "x\n");
    setModified(dir_ / "orvantis-kept.log", now - std::chrono::days{7} - 30min);  // 12:30 summer time
    writeFile(dir_ / "orvantis-gone.log", "x\n");
    setModified(dir_ / "orvantis-gone.log", now - std::chrono::days{7} - 90min);  // 11:30 summer time
    AppLogger logger(dir_, *queue_, loop_);
    loop_.runUntilIdle();
    EXPECT_TRUE(fs::exists(dir_ / "orvantis-kept.log"));
    EXPECT_FALSE(fs::exists(dir_ / "orvantis-gone.log"));
}

TEST_F(AppLoggerTest, PruningIgnoresAFailedRemovalAndGoesOn) {
    fs::create_directories(dir_ / "orvantis-stuck.log");  // a folder that is not empty cannot be removed
    writeFile(dir_ / "orvantis-stuck.log" / "inside", "x\n");
    const WallTime longAgo = at(2026, 1, 1, 0, 0, 0);
    for (const char* name : {"orvantis-2026-01-01.log", "orvantis-2026-01-02.log", "orvantis-stuck.log"}) {
        if (!fs::is_directory(dir_ / name)) writeFile(dir_ / name, "x\n");
        setModified(dir_ / name, longAgo);
    }
    AppLogger logger(dir_, *queue_, loop_);
    loop_.runUntilIdle();
    EXPECT_TRUE(fs::exists(dir_ / "orvantis-stuck.log" / "inside"));
    EXPECT_FALSE(fs::exists(dir_ / "orvantis-2026-01-01.log"));
    EXPECT_FALSE(fs::exists(dir_ / "orvantis-2026-01-02.log"));
    logger.log().app.info("still logging");
    EXPECT_NE(logger.recentLogs(1).find("still logging"), std::string::npos);
}

TEST_F(AppLoggerTest, PruningRunsOnlyAtStartUp) {
    AppLogger logger(dir_, *queue_, loop_);
    loop_.runUntilIdle();
    writeFile(dir_ / "orvantis-2026-01-01.log", "x\n");
    setModified(dir_ / "orvantis-2026-01-01.log", at(2026, 1, 1, 0, 0, 0));
    loop_.setWallTime(at(2026, 12, 31, 12, 0, 0));
    logger.log().app.info("weeks later");
    logger.recentLogs(1);
    logger.flush();
    EXPECT_TRUE(fs::exists(dir_ / "orvantis-2026-01-01.log"));
}

// --- Failures ------------------------------------------------------------------------------

TEST_F(AppLoggerTest, ADirectoryThatCannotBeCreatedLosesLinesQuietly) {
    writeFile(root_ / "blocker", "a file where a folder should be\n");
    const fs::path impossible = root_ / "blocker" / "logs";
    std::vector<std::string> received;
    AppLogger logger(impossible, *queue_, loop_, std::make_unique<RecordingSink>(received));
    logger.log().app.info("lost");
    logger.log().app.error("lost too");
    logger.logCrash("std::logic_error", "lost as well", {"frame"});
    loop_.runUntilIdle();
    logger.flush();
    EXPECT_EQ(logger.recentLogs(1), "(no log entries found in the last 1 day(s))");
    EXPECT_FALSE(fs::exists(impossible));
    EXPECT_EQ(received, (std::vector<std::string>{"info App: lost", "error App: lost too"}));
}

// --- System log ----------------------------------------------------------------------------

TEST_F(AppLoggerTest, TheSystemLogGetsTypesByLevelAndNeverTheCrashLine) {
    std::vector<std::string> received;
    AppLogger logger(dir_, *queue_, loop_, std::make_unique<RecordingSink>(received));
    logger.log().app.debug("d");
    logger.log().launch.info("i");
    logger.log().translate.warning("w");
    logger.log().clipboard.error("e");
    logger.debug("iCloud", [] { return std::string("d2"); });
    logger.info("iCloud", [] { return std::string("i2"); });
    logger.warning("iCloud", [] { return std::string("w2"); });
    logger.error("iCloud", [] { return std::string("e2"); });
    logger.logCrash("std::bad_alloc", "std::bad_alloc", {"frame"});
    EXPECT_EQ(received, (std::vector<std::string>{"debug App: d", "info Launch: i", "error Translate: w",
                                                  "error Clipboard: e", "debug iCloud: d2", "info iCloud: i2",
                                                  "error iCloud: w2", "error iCloud: e2"}));
    EXPECT_NE(readAll(file("2026-11-15")).find("Crash: uncaught exception std::bad_alloc"), std::string::npos);
}

// --- Crash ---------------------------------------------------------------------------------

TEST_F(AppLoggerTest, TheCrashLineIsOnDiskWhenLogCrashReturns) {
    AppLogger logger(dir_, *queue_, loop_);
    logger.log().app.info("before the crash");
    logger.logCrash("std::out_of_range", "vector::_M_range_check", {"0 orvantis main", "1 libc start"});
    // No runUntilIdle: logCrash waited for both lines.
    EXPECT_EQ(readAll(file("2026-11-15")),
              "2026-11-15 12:00:00.000 [INFO ] App: before the crash\n"
              "2026-11-15 12:00:00.000 [ERROR] Crash: "
              "uncaught exception std::out_of_range: vector::_M_range_check\n"
              "    0 orvantis main\n"
              "    1 libc start\n");
}

TEST_F(AppLoggerTest, ACrashWithoutReasonOrFramesSaysSo) {
    AppLogger logger(dir_, *queue_, loop_);
    logger.logCrash("std::terminate", std::nullopt, {});
    EXPECT_EQ(readAll(file("2026-11-15")),
              "2026-11-15 12:00:00.000 [ERROR] Crash: uncaught exception std::terminate: <no reason>\n    \n");
}

// --- Whole lines ---------------------------------------------------------------------------

TEST_F(AppLoggerTest, AMessageIsCopiedAtTheCall) {
    AppLogger logger(dir_, *queue_, loop_);
    std::string message(300, 'a');
    logger.log().app.info(message);
    logger.write(AppLogger::Level::Warn, std::string("Temp") + "orary", message);
    message.assign(10, 'b');  // the caller reuses its buffer before the queue gets to the line
    message.shrink_to_fit();
    loop_.runUntilIdle();
    EXPECT_EQ(readAll(file("2026-11-15")), "2026-11-15 12:00:00.000 [INFO ] App: " + std::string(300, 'a') +
                                               "\n2026-11-15 12:00:00.000 [WARN ] Temporary: " +
                                               std::string(300, 'a') + "\n");
}

TEST_F(AppLoggerTest, ALongMessageOfSeveralLinesIsWrittenAsItStands) {
    AppLogger logger(dir_, *queue_, loop_);
    std::string message;
    for (int i = 0; message.size() < (1u << 20); ++i) message += "row " + std::to_string(i) + "\n";
    message += std::string("with a NUL \0 inside", 19);
    logger.log().app.error(message);
    logger.flush();
    EXPECT_EQ(readAll(file("2026-11-15")), "2026-11-15 12:00:00.000 [ERROR] App: " + message + "\n");
}

TEST_F(AppLoggerTest, AFileThatCannotGrowNeverKeepsHalfALine) {
    AppLogger logger(dir_, *queue_, loop_);
    const std::string prefix = "2026-11-15 12:00:00.000 [INFO ] App: ";
    const std::string first = prefix + std::string(20, '1') + "\n";   // 58 bytes
    const std::string second = prefix + std::string(60, '2') + "\n";  // 98 bytes: only 42 would fit
    const std::string third = prefix + "3\n";                         // 39 bytes: fits again

    rlimit saved{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limited = saved;
    limited.rlim_cur = 100;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    logger.log().app.info(std::string(20, '1'));
    logger.log().app.info(std::string(60, '2'));
    logger.log().app.info("3");
    logger.flush();
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);

    EXPECT_EQ(readAll(file("2026-11-15")), first + third);
}

// --- Threads -------------------------------------------------------------------------------

TEST_F(AppLoggerTest, ManyThreadsLoggingAtOnceLoseNoLine) {
    constexpr int kThreads = 8;
    constexpr int kLinesEach = 1000;
    FixedClock clock(at(2026, 11, 15, 9, 30, 0, 42));
    platform::ThreadSerialQueue queue("orvantis.AppLogger");
    AppLogger logger(dir_, queue, clock);
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&logger, t] {
                for (int i = 0; i < kLinesEach; ++i) {
                    const std::string message = "thread " + std::to_string(t) + " line " + std::to_string(i) +
                                                " " + std::string(static_cast<std::size_t>(i % 97), 'x');
                    if (i % 2 == 0) {
                        logger.log().app.info(message);
                    } else {
                        logger.warning("Launch", [&] { return message; });
                    }
                }
            });
        }
    }
    logger.flush();

    const std::vector<std::string> lines = splitLines(readAll(file("2026-11-15")));
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(kThreads * kLinesEach));
    const std::regex shape(
        R"(2026-11-15 09:30:00\.042 \[(INFO |WARN )\] (App|Launch): thread (\d) line (\d+) (x*))");
    std::vector<int> next(kThreads, 0);
    for (const std::string& line : lines) {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(line, match, shape)) << line;
        const int t = std::stoi(match[3].str());
        const int i = std::stoi(match[4].str());
        EXPECT_EQ(i, next[static_cast<std::size_t>(t)]) << line;  // each thread's lines in its own order
        EXPECT_EQ(match[5].length(), i % 97) << line;
        EXPECT_EQ(match[1].str(), i % 2 == 0 ? "INFO " : "WARN ") << line;
        next[static_cast<std::size_t>(t)] = i + 1;
    }
}

TEST_F(AppLoggerTest, DestroyingTheLoggerLeavesEveryLineOnDisk) {
    FixedClock clock(at(2026, 11, 15, 9, 0, 0));
    platform::ThreadSerialQueue queue("orvantis.AppLogger");
    {
        AppLogger logger(dir_, queue, clock);
        for (int i = 0; i < 2000; ++i) logger.log().app.info("line " + std::to_string(i));
    }
    const std::vector<std::string> lines = splitLines(readAll(file("2026-11-15")));
    ASSERT_EQ(lines.size(), 2000u);
    EXPECT_EQ(lines.back(), "2026-11-15 09:00:00.000 [INFO ] App: line 1999");
}

TEST_F(AppLoggerTest, RecentLogsOnARealQueueSeesEveryEarlierLine) {
    FixedClock clock(at(2026, 11, 15, 9, 0, 0));
    platform::ThreadSerialQueue queue("orvantis.AppLogger");
    AppLogger logger(dir_, queue, clock);
    for (int i = 0; i < 500; ++i) logger.log().app.info("line " + std::to_string(i));
    const std::string recent = logger.recentLogs(1);
    EXPECT_EQ(splitLines(recent).size(), 501u);  // the header and every line
    EXPECT_NE(recent.find("App: line 499\n"), std::string::npos);
}

}  // namespace
}  // namespace orvantis
