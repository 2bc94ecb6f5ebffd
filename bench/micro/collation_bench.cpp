// Ordering the names of a large directory: keys computed once against decoding both names at
// every comparison.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "text/lex.h"

namespace corvane {
namespace {

std::vector<std::string> names(std::int64_t count) {
    std::vector<std::string> all;
    for (std::int64_t i = 0; i < count; ++i) {
        all.push_back("File-" + std::to_string(i * 7919 % 1'000'003) + ".txt");
    }
    return all;
}

void sortByKeys(benchmark::State& state) {
    const std::vector<std::string> unsorted = names(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        std::vector<std::pair<std::string, const std::string*>> keyed;
        keyed.reserve(unsorted.size());
        for (const std::string& name : unsorted) {
            keyed.emplace_back(sortKey(name, lex_icoll), &name);
        }
        std::sort(keyed.begin(), keyed.end());
        benchmark::DoNotOptimize(keyed.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void sortByComparison(benchmark::State& state) {
    const std::vector<std::string> unsorted = names(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        std::vector<std::string> sorted = unsorted;
        std::sort(sorted.begin(), sorted.end(),
                  [](const std::string& a, const std::string& b) { return lex_stricmp(a, b) < 0; });
        benchmark::DoNotOptimize(sorted.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void oneKey(benchmark::State& state) {
    const std::string name = "Zażółć gęślą jaźń.txt";
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(sortKey(name, lex_icoll));
    }
}

BENCHMARK(sortByKeys)->Arg(100)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(sortByComparison)->Arg(100)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(oneKey);

}  // namespace
}  // namespace corvane
