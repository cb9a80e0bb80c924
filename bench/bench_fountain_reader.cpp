// Benchmarks of reading Fountain files (decoding, parsing and styling) into a document, on
// synthetic screenplays of 120 and 600 pages.
#include "converters/fountain/VLSFountainReader.h"
#include "ns/Data.h"
#include "support/Screenplay.h"

#include <benchmark/benchmark.h>

namespace {

void BM_FountainRead(benchmark::State &state) {
  vl::ns::Data data =
      vl::ns::Data::fromString(vl::bench::fountainScreenplayUTF8(static_cast<int>(state.range(0))));
  uint64_t length = 0;
  for (auto _ : state) {
    auto reader = vl::VLSFountainReader::create();
    vl::ns::DictionaryPtr attributes;
    auto text = reader->attributedStringWithData(data, nullptr, &attributes, nullptr);
    length = text->length();
    benchmark::DoNotOptimize(attributes);
  }
  state.counters["characters"] = static_cast<double>(length);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(data.size()));
}
BENCHMARK(BM_FountainRead)->Arg(120)->Arg(600)->Unit(benchmark::kMillisecond);

} // namespace
