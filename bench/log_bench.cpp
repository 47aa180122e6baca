// What a log call costs the thread that makes it: taking the time, copying the message and
// handing the line to the logger's queue. The disk work happens on the queue's own thread.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "core/log/app_logger.h"
#include "platform/clock.h"
#include "platform/serial_queue.h"

namespace orvantis {
namespace {

namespace fs = std::filesystem;

// Lines handed over between two waits for the queue. Without the waits the queue would grow
// for as long as the benchmark runs, and the measure would become one of memory.
constexpr int kBatch = 4096;

/// A fresh folder for the log files of one run, removed afterwards.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (fs::temp_directory_path() / "orvantis-log-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        if (!path_.empty()) fs::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

template <typename Log>
void measure(benchmark::State& state, Log log) {
    TemporaryFolder folder;
    platform::ThreadSerialQueue queue("orvantis.AppLogger");
    platform::SystemClock clock;
    AppLogger logger(folder.path() / "logs", queue, clock);
    logger.flush();
    int inBatch = 0;
    for (auto _ : state) {
        log(logger);
        if (++inBatch == kBatch) {
            state.PauseTiming();
            logger.flush();
            inBatch = 0;
            state.ResumeTiming();
        }
    }
    logger.flush();  // the timing stopped with the loop
    state.SetItemsProcessed(state.iterations());
}

void BM_CategoryInfo(benchmark::State& state) {
    const std::string message = "clipboard: captured item of kind text, 42 characters";
    measure(state, [&](AppLogger& logger) { logger.log().clipboard.info(message); });
}
BENCHMARK(BM_CategoryInfo);

void BM_InfoByNameWithClosure(benchmark::State& state) {
    int count = 0;
    measure(state, [&](AppLogger& logger) {
        logger.info("Translate", [&] { return "translate: request " + std::to_string(++count) + " answered"; });
    });
}
BENCHMARK(BM_InfoByNameWithClosure);

void BM_CategoryInfoLongMessage(benchmark::State& state) {
    const std::string message(static_cast<std::size_t>(state.range(0)), 'x');
    measure(state, [&](AppLogger& logger) { logger.log().app.info(message); });
}
BENCHMARK(BM_CategoryInfoLongMessage)->Arg(1024)->Arg(16 * 1024);

// A debug message without a system log: the closure is not even evaluated.
void BM_DebugWithoutSystemLog(benchmark::State& state) {
    measure(state, [](AppLogger& logger) {
        logger.debug("App", [] { return std::string("never built"); });
    });
}
BENCHMARK(BM_DebugWithoutSystemLog);

}  // namespace
}  // namespace orvantis
