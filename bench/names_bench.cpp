// The translator's local work on a selection: the eleven identifier names of a short phrase,
// the language guess and the word count that choose the plan.

#include <benchmark/benchmark.h>

#include "core/language/language_detector.h"
#include "core/names/name_variants.h"

namespace orvantis {
namespace {

void BM_GenerateFourWordPhrase(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(NameVariantGenerator::generate("get current user name"));
}
BENCHMARK(BM_GenerateFourWordPhrase);

void BM_GenerateFourCyrillicWords(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(NameVariantGenerator::generate("получить имя текущего пользователя"));
}
BENCHMARK(BM_GenerateFourCyrillicWords);

void BM_DetectAndCountASentence(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(LanguageDetector::detect("Съешь же ещё этих мягких французских булок"));
        benchmark::DoNotOptimize(LanguageDetector::wordCount("Съешь же ещё этих мягких французских булок"));
    }
}
BENCHMARK(BM_DetectAndCountASentence)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace orvantis
