// The language of a selection: a single word, a short phrase and a sentence, and the first short
// text of a script, which opens that script's spelling dictionaries.

#include <benchmark/benchmark.h>

#include "core/language/language_detector.h"
#include "core/language/spelling_dictionaries.h"

namespace orvantis {
namespace {

void detectEach(benchmark::State& state, const char* text) {
    LanguageDetector::detect(text);  // the dictionaries are open before the clock starts
    for (auto _ : state) benchmark::DoNotOptimize(LanguageDetector::detect(text));
}

void BM_DetectOneEnglishWord(benchmark::State& state) { detectEach(state, "computer"); }
BENCHMARK(BM_DetectOneEnglishWord)->Unit(benchmark::kMicrosecond);

void BM_DetectOneGermanWord(benchmark::State& state) { detectEach(state, "Schlüssel"); }
BENCHMARK(BM_DetectOneGermanWord)->Unit(benchmark::kMicrosecond);

void BM_DetectOneRussianWord(benchmark::State& state) { detectEach(state, "Привет"); }
BENCHMARK(BM_DetectOneRussianWord)->Unit(benchmark::kMicrosecond);

/// No letter of its own: both Cyrillic word lists are asked, and the Russian one in vain.
void BM_DetectOneUkrainianWordWithoutItsLetters(benchmark::State& state) { detectEach(state, "дякую"); }
BENCHMARK(BM_DetectOneUkrainianWordWithoutItsLetters)->Unit(benchmark::kMicrosecond);

void BM_DetectThreeWords(benchmark::State& state) { detectEach(state, "get user name"); }
BENCHMARK(BM_DetectThreeWords)->Unit(benchmark::kMicrosecond);

void BM_DetectEnglishSentence(benchmark::State& state) {
    detectEach(state, "The quick brown fox jumps over the lazy dog while the user renames the file");
}
BENCHMARK(BM_DetectEnglishSentence)->Unit(benchmark::kMicrosecond);

void BM_DetectRussianSentence(benchmark::State& state) {
    detectEach(state, "Съешь же ещё этих мягких французских булок, да выпей чаю");
}
BENCHMARK(BM_DetectRussianSentence)->Unit(benchmark::kMicrosecond);

/// The cost of the first short Latin text of the process: every Latin dictionary is opened.
void BM_FirstLatinWordOpensTheDictionaries(benchmark::State& state) {
    for (auto _ : state) {
        SpellingDictionaries fresh;
        benchmark::DoNotOptimize(LanguageDetector::detect("computer", fresh));
    }
}
BENCHMARK(BM_FirstLatinWordOpensTheDictionaries)->Unit(benchmark::kMillisecond);

void BM_FirstCyrillicWordOpensTheDictionaries(benchmark::State& state) {
    for (auto _ : state) {
        SpellingDictionaries fresh;
        benchmark::DoNotOptimize(LanguageDetector::detect("Привет", fresh));
    }
}
BENCHMARK(BM_FirstCyrillicWordOpensTheDictionaries)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orvantis
