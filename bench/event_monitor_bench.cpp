// The event monitor's answer for one key press, the code that runs for every key of the session:
// the decision alone, and the decision with its closure posted to the main loop. Heap
// allocations on the path are counted by replacing the global operator new.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <string>

#include "core/events/global_event_monitor.h"
#include "core/log/app_logger.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "platform/key_events.h"
#include "platform/main_loop.h"
#include "platform/serial_queue.h"
#include "platform/sim/event_tap.h"
#include "platform/sim/virtual_main_loop.h"

namespace {

// Allocations of the calling thread only, so that the writer threads of the store and the log
// do not count.
thread_local std::size_t tAllocations = 0;

// Behind calls the compiler does not inline, so that it sees no malloc paired with a delete.
[[gnu::noinline]] void* countedMalloc(std::size_t size) {
    ++tAllocations;
    return std::malloc(size == 0 ? 1 : size);
}
[[gnu::noinline]] void plainFree(void* p) noexcept { std::free(p); }

}  // namespace

void* operator new(std::size_t size) {
    if (void* p = countedMalloc(size)) return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return ::operator new(size); }
void operator delete(void* p) noexcept { plainFree(p); }
void operator delete[](void* p) noexcept { plainFree(p); }
void operator delete(void* p, std::size_t) noexcept { plainFree(p); }
void operator delete[](void* p, std::size_t) noexcept { plainFree(p); }

namespace orvantis {
namespace {

std::filesystem::path freshDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvantis-bench-XXXXXX").string();
    return std::filesystem::path(::mkdtemp(pattern.data()));
}

/// A main loop that drops what is posted: the cost of posting without the cost of running.
class DroppingLoop final : public platform::MainLoop {
public:
    void post(platform::Task task) override { benchmark::DoNotOptimize(task); }
    platform::TimerHandle postAfter(platform::Duration, platform::Task) override { return {}; }
    platform::TimerHandle every(platform::Duration, platform::Task) override { return {}; }
    Subscription watchReadable(int, platform::Task) override { return {}; }
    std::unique_ptr<platform::SerialQueue> makeSerialQueue(std::string) override { return nullptr; }
};

/// A monitor with the default hotkeys and closures in every slot the benchmarks reach.
struct Fixture {
    Fixture()
        : dir(freshDirectory()), prefsWriter("bench-prefs"), logWriter("bench-log"),
          store(dir / "preferences.plist", prefsWriter, nullptr), settings(store),
          logger(dir / "logs", logWriter, clock), monitor(settings, tap, loop, logger.log()),
          typed(monitor.onCharacterTyped([](std::string_view) {})), hotkey(monitor.onHotkey([] {})) {
        monitor.start();
    }
    ~Fixture() {
        store.flush();
        logger.flush();
        std::filesystem::remove_all(dir);
    }
    std::filesystem::path dir;
    platform::ThreadSerialQueue prefsWriter;
    platform::ThreadSerialQueue logWriter;
    sim::VirtualMainLoop clock;
    PreferenceStore store;
    AppSettings settings;
    AppLogger logger;
    sim::EventTap tap;
    DroppingLoop loop;
    GlobalEventMonitor monitor;
    Subscription typed;
    Subscription hotkey;
};

template <typename Body>
void measure(benchmark::State& state, Body&& body) {
    const std::size_t before = tAllocations;
    for (auto _ : state) body();
    state.counters["allocs/op"] = benchmark::Counter(static_cast<double>(tAllocations - before) /
                                                     static_cast<double>(state.iterations()));
}

/// "g" typed with no modifier: runs the whole hotkey table, then the text steps.
void BM_DecideKeyDownNoHotkey(benchmark::State& state) {
    Fixture f;
    const platform::KeyEvent event = sim::keyDown(5, 0, "g");
    measure(state, [&] { benchmark::DoNotOptimize(f.monitor.decideKeyDown(event)); });
}
BENCHMARK(BM_DecideKeyDownNoHotkey);

/// The same press as the tap's handler sees it: the decision and the posting of
/// onCharacterTyped.
void BM_HandleKeyDownNoHotkey(benchmark::State& state) {
    Fixture f;
    const platform::KeyEvent event = sim::keyDown(5, 0, "g");
    measure(state, [&] { benchmark::DoNotOptimize(f.monitor.handle(event)); });
}
BENCHMARK(BM_HandleKeyDownNoHotkey);

/// A key without text (F5): the decision for a key that neither matches nor reports.
void BM_HandleKeyDownNoText(benchmark::State& state) {
    Fixture f;
    const platform::KeyEvent event = sim::keyDown(96, 0, "");
    measure(state, [&] { benchmark::DoNotOptimize(f.monitor.handle(event)); });
}
BENCHMARK(BM_HandleKeyDownNoText);

/// The layout switch hotkey, the first row of the table, posted.
void BM_HandleKeyDownFirstHotkey(benchmark::State& state) {
    Fixture f;
    const platform::KeyEvent event = sim::keyDown(51, 0x20000, "\x7f");
    measure(state, [&] { benchmark::DoNotOptimize(f.monitor.handle(event)); });
}
BENCHMARK(BM_HandleKeyDownFirstHotkey);

}  // namespace
}  // namespace orvantis
