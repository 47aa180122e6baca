// The preference store on the caller's thread: typed reads, writes, and the file write behind them.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>

#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "platform/serial_queue.h"

namespace orvantis {
namespace {

std::filesystem::path freshFile() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvantis-bench-XXXXXX").string();
    return std::filesystem::path(::mkdtemp(pattern.data())) / "preferences.plist";
}

/// A store with a realistic file: every setting stored once.
struct Fixture {
    Fixture() : file(freshFile()), writer("bench"), store(file, writer, nullptr), settings(store) {
        for (const auto& [key, value] : AppSettings::registeredDefaults()) store.set(key, value);
        settings.setHotkey(HotkeyDescriptor{51, 0x20000});
        store.flush();
    }
    ~Fixture() {
        store.flush();
        std::filesystem::remove_all(file.parent_path());
    }
    std::filesystem::path file;
    platform::ThreadSerialQueue writer;
    PreferenceStore store;
    AppSettings settings;
};

void BM_GetBool(benchmark::State& state) {
    Fixture f;
    for (auto _ : state) benchmark::DoNotOptimize(f.settings.layoutSwitchEnabled());
}
BENCHMARK(BM_GetBool);

void BM_GetClampedInteger(benchmark::State& state) {
    Fixture f;
    for (auto _ : state) benchmark::DoNotOptimize(f.settings.switchDelayMs());
}
BENCHMARK(BM_GetClampedInteger);

void BM_GetHotkey(benchmark::State& state) {
    Fixture f;
    for (auto _ : state) benchmark::DoNotOptimize(f.settings.hotkey());
}
BENCHMARK(BM_GetHotkey);

void BM_GetString(benchmark::State& state) {
    Fixture f;
    for (auto _ : state) benchmark::DoNotOptimize(f.settings.translatorPrimaryLanguage());
}
BENCHMARK(BM_GetString);

void BM_SetInteger(benchmark::State& state) {
    Fixture f;
    std::int64_t v = 0;
    for (auto _ : state) f.settings.setSwitchDelayMs(v++ % 500);
}
BENCHMARK(BM_SetInteger);

void BM_SetBool(benchmark::State& state) {
    Fixture f;
    bool v = false;
    for (auto _ : state) f.settings.setLayoutSwitchEnabled(v = !v);
}
BENCHMARK(BM_SetBool);

// One change on disk: lock, re-read, merge, write a temporary file, fsync, rename.
void BM_FileWrite(benchmark::State& state) {
    Fixture f;
    std::int64_t v = 0;
    for (auto _ : state) {
        f.settings.setSwitchDelayMs(v++ % 500);
        f.store.flush();
    }
}
BENCHMARK(BM_FileWrite)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace orvantis
