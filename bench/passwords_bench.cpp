// The password generator: one password at 16 and at 128 characters, all four classes, from the
// kernel's random source as the program uses it, and from a seeded source to show the cost of
// the generator itself.

#include <benchmark/benchmark.h>

#include <random>
#include <span>

#include "core/passwords/password_generator.h"
#include "core/passwords/random_source.h"

namespace orvantis {
namespace {

class SeededSource final : public RandomSource {
public:
    bool fill(std::span<std::uint8_t> out) override {
        for (auto& byte : out) byte = static_cast<std::uint8_t>(engine_());
        return true;
    }

private:
    std::mt19937_64 engine_{42};
};

template <typename Source>
void generate(benchmark::State& state) {
    Source source;
    PasswordGenerator generator(source);
    const PasswordConfig config{static_cast<int>(state.range(0)), true, true, true, true};
    for (auto _ : state) benchmark::DoNotOptimize(generator.generate(config));
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(generate<KernelRandomSource>)->Name("generate/kernel")->Arg(16)->Arg(128);
BENCHMARK(generate<SeededSource>)->Name("generate/seeded")->Arg(16)->Arg(128);

}  // namespace
}  // namespace orvantis
