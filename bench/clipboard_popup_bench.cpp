// The clipboard popup's work for one keystroke in the search field: a full history of 200
// texts of 10 KB each filtered anew (the needle is looked for in every full text), and the
// marks of the rows that stay. filterClipboardItems() lower-cases every text on each call; the
// popup's model does that once per list and searches the kept lower-case texts.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "core/clipboard/clipboard_filter.h"
#include "core/clipboard/clipboard_item.h"
#include "core/clipboard/clipboard_popup_model.h"
#include "core/clipboard/uuid.h"

namespace orvantis {
namespace {

constexpr std::size_t kEntries = 200;
constexpr std::size_t kEntrySize = 10 * 1024;

/// `kEntries` distinct texts of about `kEntrySize` bytes: mixed-case words over many lines,
/// one in ten with a Cyrillic line, one in twenty holding the word "Needle" near its end.
std::vector<ClipboardItem> fullHistory() {
    static const char* const kWords[] = {"Lorem", "ipsum", "dolor", "sit", "amet", "Consectetur", "adipiscing",
                                         "elit", "sed", "do", "eiusmod", "Tempor", "incididunt", "ut", "labore"};
    UuidGenerator ids(3);
    std::vector<ClipboardItem> items;
    for (std::size_t i = 0; i < kEntries; ++i) {
        std::string text = "entry " + std::to_string(i) + "\n";
        if (i % 10 == 0) text += "Привет, мир и ещё немного текста\n";
        for (std::size_t w = 0; text.size() < kEntrySize - 40; ++w) {
            text += kWords[(w + i) % std::size(kWords)];
            text += (w % 12 == 11) ? '\n' : ' ';
        }
        if (i % 20 == 0) text += " the Needle is here";
        items.push_back(ClipboardItem::makeText(std::move(text), std::nullopt, ids.generate(), 0));
    }
    return items;
}

void BM_FilterOneKeystroke(benchmark::State& state) {
    const std::vector<ClipboardItem> items = fullHistory();
    for (auto _ : state) {
        auto kept = filterClipboardItems(items, "needl");
        benchmark::DoNotOptimize(kept);
    }
    state.counters["kept"] = static_cast<double>(filterClipboardItems(items, "needl").size());
}
BENCHMARK(BM_FilterOneKeystroke)->Unit(benchmark::kMicrosecond);

ClipboardPopupTexts benchTexts() { return {"empty", "search", "hint", "%d items", "%d of %d"}; }

/// A keystroke that looks through every full text: the two searches alternate and neither
/// contains the other, so no result of the last keystroke narrows the next one.
void BM_PopupSearchKeystroke(benchmark::State& state) {
    ClipboardPopupModel model([] { return std::optional<PopupRect>(PopupRect{0, 0, 1920, 1080}); });
    model.show({100, 100}, fullHistory(), benchTexts());
    model.setSearchText("needlx");
    bool flip = false;
    for (auto _ : state) {
        model.setSearchText(flip ? "needlx" : "needle");
        flip = !flip;
        std::size_t marks = 0;
        for (const ClipboardItem& item : model.filteredItems()) marks += model.matchesIn(item.previewText()).size();
        benchmark::DoNotOptimize(marks);
        benchmark::DoNotOptimize(model.countText());
    }
}
BENCHMARK(BM_PopupSearchKeystroke)->Unit(benchmark::kMicrosecond);

/// Opening the popup over a full history: the texts are lower-cased for the search here.
void BM_PopupOpen(benchmark::State& state) {
    const std::vector<ClipboardItem> items = fullHistory();
    ClipboardPopupModel model([] { return std::optional<PopupRect>(PopupRect{0, 0, 1920, 1080}); });
    for (auto _ : state) {
        model.show({100, 100}, items, benchTexts());
        benchmark::DoNotOptimize(model.filteredItems().size());
    }
}
BENCHMARK(BM_PopupOpen)->Unit(benchmark::kMicrosecond);

/// The first keystroke after the popup opened.
void BM_PopupFirstKeystroke(benchmark::State& state) {
    const std::vector<ClipboardItem> items = fullHistory();
    ClipboardPopupModel model([] { return std::optional<PopupRect>(PopupRect{0, 0, 1920, 1080}); });
    for (auto _ : state) {
        state.PauseTiming();
        model.show({100, 100}, items, benchTexts());
        state.ResumeTiming();
        model.setSearchText("n");
        benchmark::DoNotOptimize(model.filteredItems().size());
    }
}
BENCHMARK(BM_PopupFirstKeystroke)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace orvantis
