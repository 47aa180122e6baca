// The Pomodoro's statistics and the dashboard's refresh over a full history: 60 days of 20
// sessions a day (the history keeps 60 days). Target: under 1 ms per refresh.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "core/pomodoro/pomodoro_calendar.h"
#include "core/pomodoro/pomodoro_dashboard_model.h"
#include "core/pomodoro/pomodoro_history.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "platform/serial_queue.h"
#include "platform/sim/virtual_main_loop.h"

namespace orvantis {
namespace {

using namespace std::chrono_literals;

std::filesystem::path freshFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvantis-bench-XXXXXX").string();
    return std::filesystem::path(::mkdtemp(pattern.data()));
}

/// 1,200 records: 20 a day, every 25 minutes from 08:00, for the last 60 days.
struct Fixture {
    Fixture() {
        const auto file = folder / "pomodoro-history.json";
        {
            std::vector<PomodoroSessionRecord> records;
            UuidGenerator uuids(1);
            const auto today = PomodoroCalendar("Europe/Moscow", "ru_RU").startOfDay(loop.wallNow());
            for (int day = 59; day >= 0; --day)
                for (int i = 0; i < 20; ++i)
                    records.push_back({uuids.generate(), today - day * 24h + 8h + i * 25min, 25});
            std::ofstream(file) << PomodoroHistory::encode(records);
        }
        history = std::make_unique<PomodoroHistory>(file, *queue, loop, nullptr);
    }
    ~Fixture() { std::filesystem::remove_all(folder); }

    std::filesystem::path folder = freshFolder();
    sim::VirtualMainLoop loop;
    std::unique_ptr<platform::SerialQueue> queue = loop.makeSerialQueue("history");
    std::unique_ptr<platform::SerialQueue> prefsQueue = loop.makeSerialQueue("prefs");
    PreferenceStore store{folder / "preferences.plist", *prefsQueue, nullptr};
    AppSettings settings{store};
    std::unique_ptr<PomodoroHistory> history;
};

void BM_Statistics(benchmark::State& state) {
    Fixture f;
    const PomodoroCalendar calendar("Europe/Moscow", "ru_RU");
    for (auto _ : state) {
        benchmark::DoNotOptimize(f.history->countToday(calendar));
        benchmark::DoNotOptimize(f.history->focusedSecondsToday(calendar));
        benchmark::DoNotOptimize(f.history->countThisWeek(calendar));
        benchmark::DoNotOptimize(f.history->sessionsPerDay(calendar));
    }
    state.counters["records"] = static_cast<double>(f.history->records().size());
}
BENCHMARK(BM_Statistics)->Unit(benchmark::kMicrosecond);

/// One refresh of the dashboard's content: the calendar in force asked anew, the view computed.
void BM_DashboardRefresh(benchmark::State& state) {
    Fixture f;
    const auto running = PomodoroTimerState::running(PomodoroPhase::work, 1234);
    for (auto _ : state) {
        const PomodoroCalendar calendar = PomodoroCalendar::current();
        benchmark::DoNotOptimize(pomodoro_dashboard::makeView(running, 2, 4, f.settings, *f.history, calendar));
    }
}
BENCHMARK(BM_DashboardRefresh)->Unit(benchmark::kMicrosecond);

/// The heat map's 182 cells: their dates and colours, as one paint walks them.
void BM_HeatmapCells(benchmark::State& state) {
    Fixture f;
    const PomodoroCalendar calendar("Europe/Moscow", "ru_RU");
    const auto counts = f.history->sessionsPerDay(calendar);
    const auto today = calendar.startOfDay(f.loop.wallNow());
    for (auto _ : state) {
        const auto monday = pomodoro_dashboard::heatmapMonday(today, calendar);
        double alpha = 0;
        for (int c = 0; c < pomodoro_dashboard::kHeatmapWeeks; ++c)
            for (int r = 0; r < 7; ++r)
                if (auto date = pomodoro_dashboard::heatmapCellDate(c, r, monday, today, calendar)) {
                    auto found = counts.find(*date);
                    alpha += pomodoro_dashboard::heatColour(found == counts.end() ? 0 : found->second).alpha;
                }
        benchmark::DoNotOptimize(alpha);
    }
}
BENCHMARK(BM_HeatmapCells)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace orvantis
