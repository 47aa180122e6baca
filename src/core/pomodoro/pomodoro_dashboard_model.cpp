#include "core/pomodoro/pomodoro_dashboard_model.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include <unicode/dtptngen.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include "core/pomodoro/pomodoro_history.h"
#include "core/pomodoro/pomodoro_timer.h"
#include "core/strings/settings_strings.h"
#include "core/strings/string_format.h"

namespace orvantis::pomodoro_dashboard {
namespace {

using TimePoint = std::chrono::system_clock::time_point;

std::string_view phaseText(const SettingsStrings& s, PomodoroPhase phase) {
    switch (phase) {
        case PomodoroPhase::work: return s.pomodoroPhaseFocus;
        case PomodoroPhase::breakTime: return s.pomodoroPhaseBreak;
        case PomodoroPhase::longBreak: return s.pomodoroPhaseLongBreak;
    }
    return s.pomodoroPhaseFocus;
}

}  // namespace

double ringProgress(const PomodoroTimerState& state, const AppSettings& settings) {
    if (!state.isActive()) return 0;
    const int total = pomodoroDurationSeconds(settings, *state.phase());
    if (total <= 0) return 0;
    const double progress = 1.0 - static_cast<double>(*state.remainingSeconds()) / total;
    return std::clamp(progress, 0.0, 1.0);
}

View makeView(const PomodoroTimerState& state, int sessionInCycle, int sessionsPerCycle, const AppSettings& settings,
              const PomodoroHistory& history, const PomodoroCalendar& calendar) {
    const SettingsLanguage language = settings.get(settings::kSettingsLanguage);
    const SettingsStrings s = SettingsStrings::make(language);
    View view;
    if (!state.isActive()) {
        view.timeText = formatMinutesSeconds(pomodoroDurationSeconds(settings, PomodoroPhase::work));
        view.phaseText = s.pomodoroPhaseFocus;
        view.primary = PrimaryAction::start;
        view.primaryTitle = s.pomodoroDashboardStart;
    } else {
        view.timeText = formatMinutesSeconds(*state.remainingSeconds());
        view.phaseText = phaseText(s, *state.phase());
        view.progress = ringProgress(state, settings);
        view.ringActive = true;
        view.primary = state.isRunning() ? PrimaryAction::pause : PrimaryAction::resume;
        view.primaryTitle = state.isRunning() ? s.pomodoroDashboardPause : s.pomodoroDashboardResume;
        view.transportEnabled = true;
    }
    view.sessionCurrent = sessionInCycle;
    view.sessionTotal = sessionsPerCycle;
    view.sessionText = formatString(s.pomodoroDashboardSessionFormat, {sessionInCycle, sessionsPerCycle});
    view.todayText = std::to_string(history.countToday(calendar));
    view.focusedText = PomodoroHistory::formatFocused(history.focusedSecondsToday(calendar), language);
    view.counts = history.sessionsPerDay(calendar);
    view.weekText = std::to_string(history.countThisWeek(calendar));
    view.focusChecked = settings.get(settings::kPomodoroToggleDND);
    return view;
}

DotFill dotFill(int i, int current) {
    if (i < current) return DotFill::finished;
    if (i == current) return DotFill::current;
    return DotFill::upcoming;
}

Rect dotRect(int i, double height) {
    return {(i - 1) * (kDotSize + kDotSpacing), (height - kDotSize) / 2, kDotSize, kDotSize};
}

Rect currentDotRing(int i, double height) {
    const Rect dot = dotRect(i, height);
    return {dot.x - 2, dot.y - 2, dot.width + 4, dot.height + 4};
}

double dotsIntrinsicWidth(int total) {
    if (total <= 0) return 0;
    return total * kDotSize + (total - 1) * kDotSpacing;
}

double heatmapCellSize(double width) {
    return std::max(4.0, (width - (kHeatmapWeeks - 1) * kHeatmapCellGap) / kHeatmapWeeks);
}

double heatmapIntrinsicHeight(double cellSize) { return 7 * cellSize + 6 * kHeatmapCellGap; }

TimePoint heatmapMonday(TimePoint today, const PomodoroCalendar& calendar) {
    const int weekday = calendar.weekday(today);  // Sunday is 1
    return calendar.addDays(today, -((weekday + 5) % 7));
}

std::optional<TimePoint> heatmapCellDate(int column, int row, TimePoint monday, TimePoint today,
                                         const PomodoroCalendar& calendar) {
    const TimePoint date = calendar.addDays(monday, (column - (kHeatmapWeeks - 1)) * 7 + row);
    if (date > today) return std::nullopt;
    return date;
}

Rect heatmapCellRect(int column, int row, double cellSize) {
    return {column * (cellSize + kHeatmapCellGap), row * (cellSize + kHeatmapCellGap), cellSize, cellSize};
}

std::optional<std::pair<int, int>> heatmapCellAt(Point point, double cellSize) {
    if (point.x < 0 || point.y < 0) return std::nullopt;
    const int column = static_cast<int>(std::floor(point.x / (cellSize + kHeatmapCellGap)));
    const int row = static_cast<int>(std::floor(point.y / (cellSize + kHeatmapCellGap)));
    if (column >= kHeatmapWeeks || row >= 7) return std::nullopt;
    return std::pair{column, row};
}

HeatColour heatColour(int sessions) {
    if (sessions <= 0) return {HeatColour::Base::separator, 0.35};
    if (sessions <= 2) return {HeatColour::Base::green, 0.28};
    if (sessions <= 4) return {HeatColour::Base::green, 0.5};
    if (sessions <= 7) return {HeatColour::Base::green, 0.75};
    return {HeatColour::Base::green, 1.0};
}

std::string sessionsCountText(int count, SettingsLanguage language) {
    const std::string number = std::to_string(count);
    if (language != SettingsLanguage::ru) return number + (count == 1 ? " session" : " sessions");
    const int n = count < 0 ? -count : count;
    if (n % 100 >= 11 && n % 100 <= 14) return number + " сессий";
    if (n % 10 == 1) return number + " сессия";
    if (n % 10 >= 2 && n % 10 <= 4) return number + " сессии";
    return number + " сессий";
}

std::string tooltipText(TimePoint day, int count, SettingsLanguage language, const PomodoroCalendar& calendar) {
    const icu::Locale locale(language == SettingsLanguage::ru ? "ru_RU" : "en_US");
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::DateTimePatternGenerator> generator(
        icu::DateTimePatternGenerator::createInstance(locale, status));
    std::string date;
    if (U_SUCCESS(status)) {
        const icu::UnicodeString pattern = generator->getBestPattern(u"EEEEdMMMM", status);
        icu::SimpleDateFormat format(pattern, locale, status);
        if (U_SUCCESS(status)) {
            format.adoptTimeZone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(calendar.timeZoneId())));
            icu::UnicodeString text;
            const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(day.time_since_epoch()).count();
            format.format(static_cast<UDate>(ms), text);
            text.toUTF8String(date);
        }
    }
    return date + " — " + sessionsCountText(count, language);
}

Rect tooltipFrame(double textWidth, double textHeight, Point pointer, Rect visible) {
    const double width = std::ceil(textWidth) + 16;
    const double height = textHeight + 8;
    double x = pointer.x - width / 2;
    double y = pointer.y - 18 - height;  // above the pointer
    if (y < visible.y + 4) y = pointer.y + 18;
    x = std::max(x, visible.x + 4);
    x = std::min(x, visible.x + visible.width - 4 - width);
    y = std::min(y, visible.y + visible.height - 4 - height);
    return {x, y, width, height};
}

}  // namespace orvantis::pomodoro_dashboard
