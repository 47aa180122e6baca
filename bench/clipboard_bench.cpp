// The clipboard history on the caller's thread: the poll that finds nothing new, a capture into
// a full history, and the snapshot write behind a change.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "core/clipboard/clipboard_history.h"
#include "core/clipboard/clipboard_monitor.h"
#include "core/clipboard/clipboard_persistence.h"
#include "core/clipboard/clipboard_snapshot.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"

#include "platform/applications.h"
#include "platform/serial_queue.h"
#include "platform/sim/accessibility.h"
#include "platform/sim/pasteboard.h"
#include "platform/sim/virtual_main_loop.h"

namespace orvantis {
namespace {

std::filesystem::path freshFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvantis-bench-XXXXXX").string();
    return std::filesystem::path(::mkdtemp(pattern.data()));
}

class NoApplications final : public platform::Applications {
public:
    std::optional<platform::ApplicationInfo> frontmostApplication() const override {
        return platform::ApplicationInfo{"org.example.editor", "Editor", 1};
    }
};

/// `count` distinct texts of `size` bytes each.
std::vector<ClipboardItem> texts(std::size_t count, std::size_t size, UuidGenerator& ids) {
    std::vector<ClipboardItem> items;
    items.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::string text = "entry " + std::to_string(i) + " ";
        while (text.size() < size) text += "lorem ipsum dolor sit amet, consectetur adipiscing elit ";
        text.resize(size);
        items.push_back(ClipboardItem::makeText(std::move(text), std::string("org.example.editor"), ids.generate(),
                                                815616000.0 + static_cast<double>(i) * 0.37));
    }
    return items;
}

/// One poll of a running monitor while the pasteboard stays as it is: the history is on,
/// the change count is the one last seen.
void BM_PollWithoutChange(benchmark::State& state) {
    const auto folder = freshFolder();
    {
        platform::ThreadSerialQueue writer("bench");
        PreferenceStore store(folder / "preferences.plist", writer, nullptr);
        AppSettings settings(store);
        sim::VirtualMainLoop loop;
        sim::Pasteboard pasteboard(10);
        NoApplications applications;
        sim::Accessibility accessibility([] { return nullptr; });
        UuidGenerator ids(1);
        ClipboardMonitor monitor(settings, pasteboard, applications, accessibility, loop, loop, ids,
                                 folder / "clipboard.json", nullptr);
        pasteboard.writeTextFromOtherApp("already seen");
        monitor.acknowledgeCurrentChangeCount();
        for (auto _ : state) monitor.tick();
        if (!monitor.history().isEmpty()) state.SkipWithError("the poll captured something");
    }
    std::filesystem::remove_all(folder);
}
BENCHMARK(BM_PollWithoutChange);

/// `add` of a new content into a history whose 200 unpinned places are taken: the duplicate
/// search over all entries, the insertion at the front and the eviction of the oldest. The
/// records are made beforehand; each iteration copies one (a string of ~60 bytes) into `add`.
void BM_AddIntoFullHistory(benchmark::State& state) {
    UuidGenerator ids(2);
    const std::vector<ClipboardItem> pool = texts(1000, 60, ids);
    ClipboardHistory history(200);
    for (std::size_t i = 0; i < 200; ++i) history.add(pool[i]);
    std::size_t next = 200;
    for (auto _ : state) {
        history.add(pool[next]);
        next = (next + 1) % pool.size();
    }
    if (history.unpinned().size() != 200) state.SkipWithError("the history is not full");
}
BENCHMARK(BM_AddIntoFullHistory);

/// The JSON form of 200 entries of 10 KB each, in memory.
void BM_SnapshotEncode200x10KB(benchmark::State& state) {
    UuidGenerator ids(3);
    ClipboardSnapshot snapshot;
    for (const auto& item : texts(200, 10 * 1024, ids)) snapshot.unpinned.push_back(*item.toPersisted());
    std::size_t bytes = 0;
    for (auto _ : state) {
        auto encoded = encodeSnapshot(snapshot);
        bytes = encoded->size();
        benchmark::DoNotOptimize(encoded);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}
BENCHMARK(BM_SnapshotEncode200x10KB)->Unit(benchmark::kMillisecond);

/// The whole write of a snapshot of 200 entries of 10 KB each, on the calling thread: encoding,
/// the temporary file, fsync, rename and the fsync of the folder.
void BM_SnapshotWrite200x10KB(benchmark::State& state) {
    const auto folder = freshFolder();
    {
        sim::VirtualMainLoop loop;
        ClipboardPersistence persistence(folder / "orvantis" / "clipboard.json", loop, nullptr);
        UuidGenerator ids(4);
        ClipboardSnapshot snapshot;
        for (const auto& item : texts(200, 10 * 1024, ids)) snapshot.unpinned.push_back(*item.toPersisted());
        for (auto _ : state) {
            if (!persistence.writeSnapshot(snapshot)) state.SkipWithError("the write failed");
        }
        state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                                static_cast<std::int64_t>(std::filesystem::file_size(persistence.fileURL())));
    }
    std::filesystem::remove_all(folder);
}
BENCHMARK(BM_SnapshotWrite200x10KB)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Reading the same snapshot back at start-up: read, decode, previews.
void BM_SnapshotLoad200x10KB(benchmark::State& state) {
    const auto folder = freshFolder();
    {
        sim::VirtualMainLoop loop;
        ClipboardPersistence persistence(folder / "clipboard.json", loop, nullptr);
        UuidGenerator ids(5);
        ClipboardSnapshot snapshot;
        for (const auto& item : texts(200, 10 * 1024, ids)) snapshot.unpinned.push_back(*item.toPersisted());
        persistence.writeSnapshot(snapshot);
        for (auto _ : state) benchmark::DoNotOptimize(persistence.loadSnapshot());
    }
    std::filesystem::remove_all(folder);
}
BENCHMARK(BM_SnapshotLoad200x10KB)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orvantis
