// The layout switcher's per-press work: a pair is built from the desktop's layouts for every
// retyping, and the word goes through the map.

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "core/layout/layout_translator.h"
#include "core/layout/transliteration_map.h"
#include "platform/sim/input_sources.h"

namespace orvantis {
namespace {

void addUsAndRu(sim::InputSources& sources) {
    sources.addXkb("us", "", "English (US)", {"en"});
    sources.addXkb("ru", "", "Russian", {"ru"});
}

void BM_BuildPairUsRu(benchmark::State& state) {
    sim::InputSources sources;
    addUsAndRu(sources);
    LayoutTranslator translator(sources);
    for (auto _ : state) benchmark::DoNotOptimize(translator.buildPair());
}
BENCHMARK(BM_BuildPairUsRu)->Unit(benchmark::kMicrosecond);

void BM_TransliterateTenLettersWithLayouts(benchmark::State& state) {
    sim::InputSources sources;
    addUsAndRu(sources);
    LayoutTranslator translator(sources);
    TransliterationMap map(translator);
    const std::vector<std::string> word{"k", "f", "q", "e", "n", "o", "d", "b", "n", "x"};
    for (auto _ : state)
        benchmark::DoNotOptimize(map.transliterate(word, TransliterationMap::Direction::enToRu));
}
BENCHMARK(BM_TransliterateTenLettersWithLayouts)->Unit(benchmark::kMicrosecond);

void BM_TransliterateTenLettersFixedTable(benchmark::State& state) {
    TransliterationMap map;
    const std::vector<std::string> word{"л", "а", "й", "у", "т", "щ", "в", "и", "т", "ч"};
    for (auto _ : state)
        benchmark::DoNotOptimize(map.transliterate(word, TransliterationMap::Direction::ruToEn));
}
BENCHMARK(BM_TransliterateTenLettersFixedTable);

void BM_TransliterateTenLetterText(benchmark::State& state) {
    TransliterationMap map;
    for (auto _ : state)
        benchmark::DoNotOptimize(map.transliterate("rfqenjdbnx", TransliterationMap::Direction::enToRu));
}
BENCHMARK(BM_TransliterateTenLetterText);

}  // namespace
}  // namespace orvantis
