// Benchmarks of Fountain parsing on synthetic screenplays of 120 and 600 pages.
#include "converters/fountain/FastFountainParser.h"
#include "converters/fountain/FountainParser.h"
#include "support/Screenplay.h"

#include <benchmark/benchmark.h>

namespace {

void BM_FastFountainParse(benchmark::State &state) {
  std::u16string text = vl::bench::fountainScreenplay(static_cast<int>(state.range(0)));
  size_t elements = 0;
  for (auto _ : state) {
    auto parser = vl::FastFountainParser::createWithString(text);
    elements = parser->elements().size();
    benchmark::DoNotOptimize(parser);
  }
  state.counters["elements"] = static_cast<double>(elements);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size() * 2));
}
BENCHMARK(BM_FastFountainParse)->Arg(120)->Arg(600)->Unit(benchmark::kMillisecond);

// The regex pipeline, for comparison: it is reachable only on request.
void BM_FountainParserParse(benchmark::State &state) {
  std::u16string text = vl::bench::fountainScreenplay(static_cast<int>(state.range(0)));
  for (auto _ : state)
    benchmark::DoNotOptimize(vl::FountainParser::parseBodyOfString(text));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size() * 2));
}
BENCHMARK(BM_FountainParserParse)->Arg(120)->Unit(benchmark::kMillisecond);

} // namespace
