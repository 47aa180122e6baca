#include "core/pomodoro/pomodoro_calendar.h"

#include <unicode/calendar.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

namespace orvantis {
namespace {

using TimePoint = PomodoroCalendar::TimePoint;

UDate toUDate(TimePoint t) {
    return static_cast<UDate>(std::chrono::duration_cast<std::chrono::milliseconds>(t.time_since_epoch()).count());
}

TimePoint fromUDate(UDate ms) {
    return TimePoint(std::chrono::duration_cast<TimePoint::duration>(std::chrono::duration<double, std::milli>(ms)));
}

std::unique_ptr<icu::Calendar> makeCalendar(icu::TimeZone* zone, const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(zone, locale, status));
    if (U_FAILURE(status) || !calendar) {
        status = U_ZERO_ERROR;
        calendar.reset(icu::Calendar::createInstance(icu::TimeZone::getGMT()->clone(), icu::Locale::getRoot(), status));
    }
    return calendar;
}

void clearTimeOfDay(icu::Calendar& calendar) {
    calendar.set(UCAL_HOUR_OF_DAY, 0);
    calendar.set(UCAL_MINUTE, 0);
    calendar.set(UCAL_SECOND, 0);
    calendar.set(UCAL_MILLISECOND, 0);
}

}  // namespace

PomodoroCalendar PomodoroCalendar::current() {
    PomodoroCalendar result;
    icu::TimeZone* zone = icu::TimeZone::detectHostTimeZone();
    icu::UnicodeString id;
    zone->getID(id);
    id.toUTF8String(result.zoneId_);
    const icu::Locale& locale = icu::Locale::getDefault();
    result.localeId_ = locale.getName();
    result.calendar_ = makeCalendar(zone, locale);
    return result;
}

PomodoroCalendar::PomodoroCalendar(std::string_view timeZoneId, std::string_view localeId)
    : zoneId_(timeZoneId), localeId_(localeId) {
    icu::TimeZone* zone = icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(timeZoneId));
    calendar_ = makeCalendar(zone, icu::Locale(localeId_.c_str()));
}

PomodoroCalendar::~PomodoroCalendar() = default;
PomodoroCalendar::PomodoroCalendar(PomodoroCalendar&&) noexcept = default;
PomodoroCalendar& PomodoroCalendar::operator=(PomodoroCalendar&&) noexcept = default;

TimePoint PomodoroCalendar::startOfDay(TimePoint time) const {
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(toUDate(time), status);
    clearTimeOfDay(*calendar_);
    const UDate start = calendar_->getTime(status);
    return U_SUCCESS(status) ? fromUDate(start) : time;
}

TimePoint PomodoroCalendar::addDays(TimePoint time, int days) const {
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(toUDate(time), status);
    calendar_->add(UCAL_DATE, days, status);
    const UDate result = calendar_->getTime(status);
    return U_SUCCESS(status) ? fromUDate(result) : time + std::chrono::hours(24) * days;
}

int PomodoroCalendar::weekday(TimePoint time) const {
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(toUDate(time), status);
    const int day = calendar_->get(UCAL_DAY_OF_WEEK, status);
    return U_SUCCESS(status) ? day : 1;
}

int PomodoroCalendar::firstWeekday() const { return static_cast<int>(calendar_->getFirstDayOfWeek()); }

std::optional<PomodoroCalendar::Interval> PomodoroCalendar::weekInterval(TimePoint time) const {
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(toUDate(time), status);
    const int day = calendar_->get(UCAL_DAY_OF_WEEK, status);
    const int back = (day - firstWeekday() + 7) % 7;
    clearTimeOfDay(*calendar_);
    calendar_->add(UCAL_DATE, -back, status);
    const UDate start = calendar_->getTime(status);
    calendar_->add(UCAL_DATE, 7, status);
    const UDate end = calendar_->getTime(status);
    if (U_FAILURE(status)) return std::nullopt;
    return Interval{fromUDate(start), fromUDate(end)};
}

}  // namespace orvantis
