// Benchmarks of the text decoders on a megabyte of text.
#include "ns/StringEncoding.h"

#include <benchmark/benchmark.h>

#include <string>

using namespace vl::ns;

namespace {

std::string sampleBytes(StringEncoding encoding) {
  std::u16string text;
  while (text.size() < (1 << 20))
    text += u"Caf\u00E9 \u201Cna\u00EFve\u201D r\u00E9sum\u00E9 \u2014 plain words here. ";
  return *encode(text, encoding, true);
}

void BM_Decode(benchmark::State &state, StringEncoding encoding) {
  std::string bytes = sampleBytes(encoding);
  for (auto _ : state)
    benchmark::DoNotOptimize(decode(bytes, encoding));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}
BENCHMARK_CAPTURE(BM_Decode, UTF8, UTF8StringEncoding)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Decode, MacRoman, MacOSRomanStringEncoding)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Decode, Windows1252, WindowsCP1252StringEncoding)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Decode, ShiftJIS, ShiftJISStringEncoding)->Unit(benchmark::kMillisecond);

} // namespace
