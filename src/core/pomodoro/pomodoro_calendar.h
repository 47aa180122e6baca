#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <unicode/uversion.h>

U_NAMESPACE_BEGIN
class Calendar;
U_NAMESPACE_END

namespace orvantis {

/// The user's calendar for the Pomodoro statistics: day boundaries in a time zone, and weeks
/// that begin on the locale's first weekday, through ICU's Gregorian calendar. Main thread
/// only (the ICU calendar inside is reused between calls).
class PomodoroCalendar {
public:
    using TimePoint = std::chrono::system_clock::time_point;

    /// The calendar in force now: the host's time zone as it is set at this moment (TZ, else
    /// /etc/localtime) and ICU's default locale (from LC_ALL, LC_TIME or LANG).
    static PomodoroCalendar current();
    /// A given IANA time zone ("Europe/Moscow") and locale ("ru_RU", "en_US"). An unknown zone
    /// reads as UTC (ICU's rule).
    PomodoroCalendar(std::string_view timeZoneId, std::string_view localeId);
    ~PomodoroCalendar();
    PomodoroCalendar(PomodoroCalendar&&) noexcept;
    PomodoroCalendar& operator=(PomodoroCalendar&&) noexcept;

    /// Midnight that begins the day of `time` (or the first moment of that day where a clock
    /// change skips midnight).
    TimePoint startOfDay(TimePoint time) const;
    /// `days` calendar days after `time` (before, when negative), keeping the wall time.
    TimePoint addDays(TimePoint time, int days) const;
    /// The weekday of `time`, Sunday being 1 and Saturday 7.
    int weekday(TimePoint time) const;
    /// The first weekday of the locale, Sunday being 1 (2, Monday, for ru_RU).
    int firstWeekday() const;

    /// The week that contains `time`: its first moment and the first moment of the next week.
    struct Interval {
        TimePoint start;
        TimePoint end;
        /// Inclusive at both ends, as the platform's date intervals are.
        bool contains(TimePoint t) const { return t >= start && t <= end; }
    };
    std::optional<Interval> weekInterval(TimePoint time) const;

    const std::string& timeZoneId() const { return zoneId_; }
    const std::string& localeId() const { return localeId_; }

private:
    PomodoroCalendar() = default;
    std::unique_ptr<icu::Calendar> calendar_;
    std::string zoneId_;
    std::string localeId_;
};

}  // namespace orvantis
