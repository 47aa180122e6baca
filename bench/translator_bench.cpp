// The synonym cycle's arithmetic: the walk over one alternative per word.

#include <benchmark/benchmark.h>

#include "core/translator/translation_plan.h"

namespace orvantis {
namespace {

void BM_SnakeSequenceEightEightEight(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(snakeSequence({8, 8, 8}));
}
BENCHMARK(BM_SnakeSequenceEightEightEight)->Unit(benchmark::kMicrosecond);

void BM_SnakeSequenceEightEightEightCutToSixty(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(snakeSequence({8, 8, 8}, 60));
}
BENCHMARK(BM_SnakeSequenceEightEightEightCutToSixty)->Unit(benchmark::kMicrosecond);

void BM_SnakeSequenceTenWordsOfEightCutToSixty(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(snakeSequence({8, 8, 8, 8, 8, 8, 8, 8, 8, 8}, 60));
}
BENCHMARK(BM_SnakeSequenceTenWordsOfEightCutToSixty)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace orvantis
