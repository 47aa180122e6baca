#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/clipboard/uuid.h"
#include "core/pomodoro/pomodoro_calendar.h"
#include "core/settings/settings_language.h"
#include "platform/clock.h"
#include "platform/serial_queue.h"

namespace orvantis {

struct AppLog;

/// One finished work session.
struct PomodoroSessionRecord {
    Uuid id;
    std::chrono::system_clock::time_point completedAt;  ///< when the work phase ended
    int durationMinutes = 0;                           ///< the configured length then, clamped
    bool operator==(const PomodoroSessionRecord&) const = default;
};

/// The log of finished work sessions, kept in memory and mirrored to one JSON file: a compact
/// array of {"id": upper-case UUID, "completedAt": seconds since 2001-01-01 UTC as a double,
/// "durationMinutes": integer}. The file is read once, at construction; a missing or damaged
/// file gives an empty log (a damaged one is logged) and stays until the next record replaces
/// it. Each record prunes what is older than 60 days and rewrites the whole file, atomically,
/// on the writer queue. The statistics scan the log in the calendar they are given.
/// Main thread only, apart from the file writes on `queue`; borrows the queue, the clock and
/// the log, which must outlive it.
class PomodoroHistory {
public:
    using TimePoint = std::chrono::system_clock::time_point;
    static constexpr std::string_view kFileName = "pomodoro-history.json";
    /// Records older than this at a save are dropped.
    static constexpr std::chrono::seconds kRetention{5'184'000};

    /// `log` may be null.
    PomodoroHistory(std::filesystem::path file, platform::SerialQueue& queue, const platform::Clock& clock,
                    const AppLog* log, UuidGenerator uuids = UuidGenerator());

    /// Appends a record with a new identifier, drops those older than the retention limit,
    /// and schedules the write of the file.
    void record(int durationMinutes, TimePoint completedAt);

    /// Oldest first, in the order in which they were recorded.
    const std::vector<PomodoroSessionRecord>& records() const { return cached_; }
    const std::filesystem::path& fileURL() const { return file_; }
    const platform::Clock& clock() const { return clock_; }

    /// Records whose moment falls in today, by `calendar`.
    int countToday(const PomodoroCalendar& calendar) const;
    /// Configured minutes of today's records, times 60.
    double focusedSecondsToday(const PomodoroCalendar& calendar) const;
    /// Records inside the calendar week that contains now (both ends included).
    int countThisWeek(const PomodoroCalendar& calendar) const;
    /// Number of records per start of day; days without records have no key.
    std::map<TimePoint, int> sessionsPerDay(const PomodoroCalendar& calendar) const;

    /// "45m", "1h 5m", "2h 0m" (Russian "45м", "1ч 5м"): whole minutes, truncated.
    static std::string formatFocused(double seconds, SettingsLanguage language);

    /// The file's text for `records`.
    static std::string encode(const std::vector<PomodoroSessionRecord>& records);
    /// The records of a file's text, or nullopt with the reason in `error` when the text is not
    /// an array of complete records.
    static std::optional<std::vector<PomodoroSessionRecord>> decode(std::string_view text, std::string* error = nullptr);

private:
    void load();

    std::filesystem::path file_;
    platform::SerialQueue& queue_;
    const platform::Clock& clock_;
    const AppLog* log_;
    UuidGenerator uuids_;
    std::vector<PomodoroSessionRecord> cached_;
};

}  // namespace orvantis
