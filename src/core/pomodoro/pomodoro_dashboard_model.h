#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>

#include "core/pomodoro/pomodoro_calendar.h"
#include "core/pomodoro/pomodoro_timer_state.h"
#include "core/settings/app_settings.h"
#include "core/settings/settings_language.h"

namespace orvantis {

class PomodoroHistory;

/// The dashboard's arithmetic, kept apart from its widgets: what each view shows and where
/// each cell of the heat map lies. Coordinates are a widget's own, origin at the top left and
/// y growing downwards. Plain functions; no state.
namespace pomodoro_dashboard {

struct Rect {
    double x = 0, y = 0, width = 0, height = 0;
    bool operator==(const Rect&) const = default;
};
struct Point {
    double x = 0, y = 0;
};

/// How far the phase has run, 0 to 1: one minus the seconds left over the phase's configured
/// length read now. Idle is 0. A lowered or raised setting never takes it outside 0 to 1.
double ringProgress(const PomodoroTimerState& state, const AppSettings& settings);

enum class PrimaryAction { start, pause, resume };

/// Everything one refresh puts on screen.
struct View {
    std::string timeText;   ///< "25:00"
    std::string phaseText;  ///< "FOCUS", "BREAK", "LONG BREAK"
    double progress = 0;
    bool ringActive = false;
    PrimaryAction primary = PrimaryAction::start;
    std::string primaryTitle;
    bool transportEnabled = false;  ///< skip and reset
    int sessionCurrent = 1;
    int sessionTotal = 4;
    std::string sessionText;  ///< "Session 1 of 4"
    std::string todayText;
    std::string focusedText;
    std::string weekText;
    bool focusChecked = false;
    std::map<std::chrono::system_clock::time_point, int> counts;  ///< the heat map's
};

/// One refresh: the coordinator's state and session number, the settings and the history's
/// statistics in `calendar`, in the interface language.
View makeView(const PomodoroTimerState& state, int sessionInCycle, int sessionsPerCycle, const AppSettings& settings,
              const PomodoroHistory& history, const PomodoroCalendar& calendar);

// The session dots: ovals of 10, 6 apart, the current one ringed.
inline constexpr double kDotSize = 10;
inline constexpr double kDotSpacing = 6;
enum class DotFill { finished, current, upcoming };
/// The fill of dot `i` (from 1) while session `current` runs.
DotFill dotFill(int i, int current);
/// The oval of dot `i` (from 1) in a view of `height`, vertically centred.
Rect dotRect(int i, double height);
/// The ring drawn around the current dot.
Rect currentDotRing(int i, double height);
/// Width of `total` dots with their gaps; the height is 14.
double dotsIntrinsicWidth(int total);
inline constexpr double kDotsIntrinsicHeight = 14;

// The heat map: 26 week columns, 7 rows from Monday at the top.
inline constexpr int kHeatmapWeeks = 26;
inline constexpr double kHeatmapCellGap = 2;
/// (width − 25 × gap) / 26, at least 4.
double heatmapCellSize(double width);
/// The height that shows all seven rows at that cell size.
double heatmapIntrinsicHeight(double cellSize);
/// The Monday of the week of `today` (a start of day): today on a Monday, six days back on a
/// Sunday.
std::chrono::system_clock::time_point heatmapMonday(std::chrono::system_clock::time_point today,
                                                    const PomodoroCalendar& calendar);
/// The day of column `column` (0–25) and row `row` (0–6); nullopt after `today`.
std::optional<std::chrono::system_clock::time_point> heatmapCellDate(int column, int row,
                                                                     std::chrono::system_clock::time_point monday,
                                                                     std::chrono::system_clock::time_point today,
                                                                     const PomodoroCalendar& calendar);
/// The square of a cell.
Rect heatmapCellRect(int column, int row, double cellSize);
inline constexpr double kHeatmapCornerRadius = 2;
/// The cell under a point, or nullopt outside the grid.
std::optional<std::pair<int, int>> heatmapCellAt(Point point, double cellSize);

/// The colour of a day: a grey for none, then four greens.
struct HeatColour {
    enum class Base { separator, green } base;
    double alpha;
    bool operator==(const HeatColour&) const = default;
};
HeatColour heatColour(int sessions);

/// "1 session", "3 sessions"; "1 сессия", "3 сессии", "5 сессий", "12 сессий", "21 сессия".
std::string sessionsCountText(int count, SettingsLanguage language);
/// "Monday, 16 November — 3 sessions": the weekday, day and month of `day` in the calendar's
/// time zone, in the interface language's own order.
std::string tooltipText(std::chrono::system_clock::time_point day, int count, SettingsLanguage language,
                        const PomodoroCalendar& calendar);

/// The tooltip's frame for text of the given size near `pointer`, in screen coordinates:
/// centred 18 above the pointer, or below it when that would pass the top of `visible` less 4;
/// then kept 4 inside the left, right and bottom of `visible`.
Rect tooltipFrame(double textWidth, double textHeight, Point pointer, Rect visible);

}  // namespace pomodoro_dashboard
}  // namespace orvantis
