#include "core/pomodoro/pomodoro_history.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <regex>

#include "core/clipboard/reference_date.h"
#include "testing/pomodoro_test_environment.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::system_clock;

// Sunday 2026-11-15 12:00:00 UTC is the virtual loop's start.
const PomodoroCalendar& utc() {
    static const PomodoroCalendar calendar("UTC", "en_GB");
    return calendar;
}

class PomodoroHistoryTest : public ::testing::Test {
protected:
    std::filesystem::path file() const { return env_.dir.path() / "pomodoro-history.json"; }
    std::unique_ptr<PomodoroHistory> open() {
        return std::make_unique<PomodoroHistory>(file(), *env_.historyQueue, env_.loop(), &env_.log, UuidGenerator(1));
    }
    Clock::time_point now() { return env_.loop().wallNow(); }
    void flush() { env_.loop().runUntilIdle(); }

    pomodoro_testing::Environment env_;
};

TEST_F(PomodoroHistoryTest, TheFileIsACompactArrayWithUpperCaseIdsAndReferenceDateSeconds) {
    auto history = open();
    history->record(25, now() + 123ms);
    flush();
    const std::string text = testing::readFile(file());
    const std::regex shape(
        R"(^\[\{"id":"[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}","completedAt":([0-9.]+),"durationMinutes":25\}\]$)");
    std::smatch match;
    ASSERT_TRUE(std::regex_match(text, match, shape)) << text;
    EXPECT_DOUBLE_EQ(std::stod(match[1]), 816'436'800.123);  // 2026-11-15 12:00:00.123 UTC
}

TEST_F(PomodoroHistoryTest, PythonsJsonReadsTheFileBack) {
    auto history = open();
    history->record(25, now());
    history->record(50, now() + 1500ms);
    flush();
    const std::string script = env_.dir.path() / "read.py";
    testing::writeFile(script,
                       "import json, sys, uuid\n"
                       "data = json.load(open(sys.argv[1]))\n"
                       "assert isinstance(data, list) and len(data) == 2, data\n"
                       "for item in data:\n"
                       "    assert list(item.keys()) == ['id', 'completedAt', 'durationMinutes'], item\n"
                       "    assert item['id'] == str(uuid.UUID(item['id'])).upper()\n"
                       "    assert isinstance(item['completedAt'], float)\n"
                       "    assert isinstance(item['durationMinutes'], int)\n"
                       "print(data[0]['durationMinutes'], data[1]['durationMinutes'], data[1]['completedAt'])\n");
    const std::string out = (env_.dir.path() / "out.txt").string();
    const std::string command = "python3 '" + script + "' '" + file().string() + "' > '" + out + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(testing::readFile(out), "25 50 816436801.5\n");
}

TEST_F(PomodoroHistoryTest, RecordsSurviveAReopen) {
    auto history = open();
    history->record(25, now());
    history->record(30, now() + 10s);
    flush();
    const auto before = history->records();
    history.reset();
    auto reopened = open();
    EXPECT_EQ(reopened->records(), before);
}

TEST_F(PomodoroHistoryTest, AnEmptyObjectOrDamagedJsonGivesAnEmptyLogThatTheNextRecordReplaces) {
    for (const std::string bad : {"{}", "[{\"id\":", "not json", "[1,2]", ""}) {
        testing::writeFile(file(), bad);
        auto history = open();
        EXPECT_TRUE(history->records().empty()) << bad;
        flush();
        EXPECT_EQ(testing::readFile(file()), bad);  // left as it is until the next record
        history->record(25, now());
        flush();
        const auto text = testing::readFile(file());
        ASSERT_FALSE(text.empty());
        EXPECT_EQ(text.front(), '[');
        EXPECT_EQ(PomodoroHistory::decode(text)->size(), 1u) << bad;
    }
    EXPECT_NE(env_.logText().find("pomodoro: the history file is damaged"), std::string::npos);
}

TEST_F(PomodoroHistoryTest, WrongTypesAreDamage) {
    const std::string id = "\"id\":\"E621E1F8-C36C-495A-93FC-0C247A3E6E5F\"";
    EXPECT_TRUE(PomodoroHistory::decode("[{" + id + ",\"completedAt\":1.5,\"durationMinutes\":25}]"));
    EXPECT_TRUE(PomodoroHistory::decode("[{" + id + ",\"completedAt\":1,\"durationMinutes\":25}]"));
    EXPECT_TRUE(PomodoroHistory::decode("[{\"id\":\"e621e1f8-c36c-495a-93fc-0c247a3e6e5f\",\"completedAt\":1,\"durationMinutes\":25}]"));
    for (const std::string& bad : std::vector<std::string>{
             "[{" + id + ",\"completedAt\":\"1.5\",\"durationMinutes\":25}]",
             "[{" + id + ",\"completedAt\":1.5,\"durationMinutes\":\"25\"}]",
             "[{" + id + ",\"completedAt\":1.5,\"durationMinutes\":25.5}]",
             "[{" + id + ",\"completedAt\":1.5}]",
             std::string("[{\"id\":42,\"completedAt\":1.5,\"durationMinutes\":25}]"),
             "[{\"id\":\"not-a-uuid\",\"completedAt\":1.5,\"durationMinutes\":25}]",
             "[{" + id + ",\"completedAt\":1e300,\"durationMinutes\":25}]",
             "[{" + id + ",\"completedAt\":null,\"durationMinutes\":25}]",
             "[{" + id + ",\"completedAt\":1.5,\"durationMinutes\":99999999999}]",
             "{\"sessions\":[]}",
         }) {
        std::string error;
        EXPECT_FALSE(PomodoroHistory::decode(bad, &error)) << bad;
        EXPECT_FALSE(error.empty()) << bad;
    }
}

TEST_F(PomodoroHistoryTest, ARecordExactlyAtTheCutoffIsKept) {
    auto history = open();
    history->record(25, now() - PomodoroHistory::kRetention);
    history->record(25, now() - PomodoroHistory::kRetention - 1ms);
    ASSERT_EQ(history->records().size(), 1u);
    EXPECT_EQ(history->records()[0].completedAt, now() - PomodoroHistory::kRetention);
}

TEST_F(PomodoroHistoryTest, OldRecordsCountUntilTheNextRecordPrunesThem) {
    auto history = open();
    history->record(25, now());
    flush();
    history.reset();
    env_.loop().setWallTime(now() + 61 * 24h);
    auto later = open();
    EXPECT_EQ(later->records().size(), 1u);  // nothing is pruned at load
    EXPECT_EQ(later->sessionsPerDay(utc()).size(), 1u);
    later->record(25, now());
    EXPECT_EQ(later->records().size(), 1u);
    EXPECT_EQ(later->sessionsPerDay(utc()).size(), 1u);
    EXPECT_EQ(later->sessionsPerDay(utc()).begin()->first, utc().startOfDay(now()));
    flush();
    EXPECT_EQ(PomodoroHistory::decode(testing::readFile(file()))->size(), 1u);
}

TEST_F(PomodoroHistoryTest, AFileThatCannotBeWrittenIsLogged) {
    const auto folder = env_.dir.path() / "missing" / "folder";
    PomodoroHistory history(folder / "pomodoro-history.json", *env_.historyQueue, env_.loop(), &env_.log);
    history.record(25, now());
    flush();
    EXPECT_EQ(history.records().size(), 1u);
    EXPECT_NE(env_.logText().find("pomodoro: the history file can't be written"), std::string::npos);
}

TEST_F(PomodoroHistoryTest, FormatFocused) {
    using L = SettingsLanguage;
    EXPECT_EQ(PomodoroHistory::formatFocused(0, L::en), "0m");
    EXPECT_EQ(PomodoroHistory::formatFocused(59.9, L::en), "0m");
    EXPECT_EQ(PomodoroHistory::formatFocused(3599, L::en), "59m");
    EXPECT_EQ(PomodoroHistory::formatFocused(3600, L::en), "1h 0m");
    EXPECT_EQ(PomodoroHistory::formatFocused(45 * 60, L::en), "45m");
    EXPECT_EQ(PomodoroHistory::formatFocused(65 * 60, L::en), "1h 5m");
    EXPECT_EQ(PomodoroHistory::formatFocused(120 * 60, L::en), "2h 0m");
    EXPECT_EQ(PomodoroHistory::formatFocused(45 * 60, L::ru), "45м");
    EXPECT_EQ(PomodoroHistory::formatFocused(65 * 60, L::ru), "1ч 5м");
    EXPECT_EQ(PomodoroHistory::formatFocused(120 * 60, L::ru), "2ч 0м");
}

TEST_F(PomodoroHistoryTest, TodayAndFocusedCountTodaysRecords) {
    auto history = open();
    history->record(25, now() - 13h);  // yesterday, 23:00 UTC
    history->record(25, now() - 1h);
    history->record(50, now());
    EXPECT_EQ(history->countToday(utc()), 2);
    EXPECT_DOUBLE_EQ(history->focusedSecondsToday(utc()), 75 * 60.0);
    auto empty = std::make_unique<PomodoroHistory>(env_.dir.path() / "other.json", *env_.historyQueue, env_.loop(),
                                                   nullptr);
    EXPECT_DOUBLE_EQ(empty->focusedSecondsToday(utc()), 0.0);
    EXPECT_TRUE(empty->sessionsPerDay(utc()).empty());
}

TEST_F(PomodoroHistoryTest, ASessionAt2359CountsForThatDayByTheCalendarInForceWhenAsked) {
    // 2026-11-15 23:59 in Moscow (UTC+3) is 20:59 UTC, the same evening in UTC too.
    const PomodoroCalendar moscow("Europe/Moscow", "ru_RU");
    const PomodoroCalendar newYork("America/New_York", "en_US");
    env_.loop().setWallTime(Clock::from_time_t(1'763'240'340));  // 2025-11-15 20:59:00 UTC
    auto history = open();
    history->record(25, now());
    const auto days = history->sessionsPerDay(moscow);
    ASSERT_EQ(days.size(), 1u);
    EXPECT_EQ(days.begin()->first, Clock::from_time_t(1'763'240'340 - (20 * 3600 + 59 * 60) - 3 * 3600 + 24 * 3600 - 24 * 3600));
    EXPECT_EQ(history->countToday(moscow), 1);
    env_.loop().setWallTime(now() + 2min);  // 00:01 in Moscow: the record is yesterday's there
    EXPECT_EQ(history->countToday(moscow), 0);
    EXPECT_EQ(history->countToday(newYork), 1);  // 15:01 in New York: still the same day
    // The time zone changed between the record and the question: the new one decides.
    EXPECT_EQ(history->sessionsPerDay(newYork).begin()->first, Clock::from_time_t(1'763'182'800));  // 15th, 00:00 EST
}

TEST_F(PomodoroHistoryTest, AFutureRecordIsKeptAndNeverCountsForToday) {
    auto history = open();
    history->record(25, now() + 48h);
    EXPECT_EQ(history->records().size(), 1u);
    EXPECT_EQ(history->countToday(utc()), 0);
    EXPECT_EQ(history->sessionsPerDay(utc()).size(), 1u);
}

TEST_F(PomodoroHistoryTest, TheWeekFollowsTheLocalesFirstWeekday) {
    // Sunday 2026-11-15 12:00 UTC. A record on Saturday the 14th and one on Monday the 9th.
    auto history = open();
    history->record(25, now() - 24h);       // Saturday
    history->record(25, now() - 6 * 24h);   // Monday
    history->record(25, now() - 7 * 24h);   // the Sunday before
    history->record(25, now());             // today, Sunday
    const PomodoroCalendar us("UTC", "en_US");  // weeks start on Sunday
    const PomodoroCalendar ru("UTC", "ru_RU");  // weeks start on Monday
    EXPECT_EQ(us.firstWeekday(), 1);
    EXPECT_EQ(ru.firstWeekday(), 2);
    EXPECT_EQ(history->countThisWeek(us), 1);
    EXPECT_EQ(history->countThisWeek(ru), 3);
}

TEST_F(PomodoroHistoryTest, TheWeeksEndIsIncluded) {
    const PomodoroCalendar ru("UTC", "ru_RU");
    auto history = open();
    const auto week = ru.weekInterval(now());
    ASSERT_TRUE(week);
    history->record(25, week->end);  // Monday 00:00 of the next week
    EXPECT_EQ(history->countThisWeek(ru), 1);
    EXPECT_EQ(week->end - week->start, 7 * 24h);
}

TEST_F(PomodoroHistoryTest, SessionsPerDayGroupsByStartOfDay) {
    auto history = open();
    for (int day = 0; day < 3; ++day)
        for (int i = 0; i <= day; ++i) history->record(25, now() - day * 24h - i * 1h);
    const auto days = history->sessionsPerDay(utc());
    ASSERT_EQ(days.size(), 3u);
    const auto today = utc().startOfDay(now());
    EXPECT_EQ(days.at(today), 1);
    EXPECT_EQ(days.at(today - 24h), 2);
    EXPECT_EQ(days.at(today - 48h), 3);
}

TEST_F(PomodoroHistoryTest, DaysAcrossAClockChangeStartAtTheirOwnMidnight) {
    const PomodoroCalendar berlin("Europe/Berlin", "de_DE");
    env_.loop().setWallTime(Clock::from_time_t(1'761'469'200));  // 2025-10-26 09:00 UTC, the day clocks go back
    auto history = open();
    history->record(25, now());                 // 10:00 CET on the 26th
    history->record(25, now() - 10h);           // 01:00 CEST on the 26th
    history->record(25, now() - 10h - 2h);      // 23:00 CEST on the 25th
    const auto days = history->sessionsPerDay(berlin);
    ASSERT_EQ(days.size(), 2u);
    EXPECT_EQ(days.begin()->first, Clock::from_time_t(1'761'343'200));   // 25th 00:00 CEST
    EXPECT_EQ(days.rbegin()->first, Clock::from_time_t(1'761'429'600));  // 26th 00:00 CEST
    EXPECT_EQ(days.rbegin()->second, 2);
}

TEST_F(PomodoroHistoryTest, AShortDayOfAClockChangeEndsAtItsOwnMidnight) {
    // 2025-03-30 in Berlin has 23 hours: it runs from 29th 23:00 UTC to 30th 22:00 UTC.
    const PomodoroCalendar berlin("Europe/Berlin", "de_DE");
    env_.loop().setWallTime(Clock::from_time_t(1'743'375'600));  // 2025-03-30 23:00 UTC, the 31st in Berlin
    auto history = open();
    history->record(25, Clock::from_time_t(1'743'328'800));  // 30th 12:00 CEST
    history->record(25, Clock::from_time_t(1'743'373'800));  // 31st 00:30 CEST
    const auto days = history->sessionsPerDay(berlin);
    ASSERT_EQ(days.size(), 2u);
    EXPECT_EQ(days.begin()->first, Clock::from_time_t(1'743'289'200));   // 30th 00:00 CET
    EXPECT_EQ(days.rbegin()->first, Clock::from_time_t(1'743'372'000));  // 31st 00:00 CEST
    EXPECT_EQ(history->countToday(berlin), 1);
}

}  // namespace
}  // namespace orvantis

namespace orvantis {
namespace {

TEST(PomodoroCalendarTest, TheCurrentCalendarFollowsTheHostsTimeZoneAsItIsNow) {
    {
        testing::ScopedEnv zone("TZ", "Asia/Tokyo");
        EXPECT_EQ(PomodoroCalendar::current().timeZoneId(), "Asia/Tokyo");
        const auto midnight = PomodoroCalendar::current().startOfDay(std::chrono::system_clock::from_time_t(1'763'208'000));
        EXPECT_EQ(midnight, std::chrono::system_clock::from_time_t(1'763'218'800 - 24 * 3600));  // 15th, 00:00 JST
    }
    testing::ScopedEnv zone("TZ", "America/Los_Angeles");
    EXPECT_EQ(PomodoroCalendar::current().timeZoneId(), "America/Los_Angeles");
}

TEST(PomodoroCalendarTest, AnUnknownZoneReadsAsUtc) {
    const PomodoroCalendar nowhere("Not/AZone", "en_US");
    const auto t = std::chrono::system_clock::from_time_t(1'763'208'000);  // 2025-11-15 12:00 UTC
    EXPECT_EQ(nowhere.startOfDay(t), std::chrono::system_clock::from_time_t(1'763'164'800));
}

}  // namespace
}  // namespace orvantis
