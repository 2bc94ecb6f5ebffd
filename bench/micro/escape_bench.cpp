// Escaping a text for a reply: long runs, as in most files, and markup, where runs are short.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>

#include "reply/xml_escape.h"

namespace corvane {
namespace {

constexpr std::size_t TEXT_BYTES = 1 << 20;

/// Every `distance`th character is markup; 0 for none.
std::string textWithMarkup(std::size_t distance) {
    std::string text(TEXT_BYTES, 'x');
    for (std::size_t i = distance; distance != 0 && i < text.size(); i += distance) {
        text[i] = '<';
    }
    return text;
}

void escape(benchmark::State& state) {
    const std::string text = textWithMarkup(static_cast<std::size_t>(state.range(0)));
    std::string out;
    for ([[maybe_unused]] auto _ : state) {
        out.clear();
        appendEscaped(text, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

BENCHMARK(escape)->ArgName("markup every")->Arg(0)->Arg(100)->Arg(12);

}  // namespace
}  // namespace corvane
