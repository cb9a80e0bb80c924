// Benchmarks of FCF reading and writing on synthetic screenplays of 120 and 600 pages.
#include "converters/fcf/VLFCFReader.h"
#include "converters/fcf/VLFCFWriter.h"
#include "converters/fountain/VLSFountainReader.h"
#include "support/Screenplay.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

/// The screenplay as the Fountain reader styles it.
vl::ns::MutableAttributedStringPtr styledScreenplay(int pages) {
  std::string bytes = vl::bench::fountainScreenplayUTF8(pages);
  return vl::VLSFountainReader::create()->attributedStringWithData(
      vl::ns::Data(bytes.data(), bytes.size()), nullptr, nullptr, nullptr);
}

vl::ns::Data fcfScreenplay(int pages) {
  auto text = styledScreenplay(pages);
  return vl::VLFCFWriter::create(text)->dataFromRange(vl::ns::Range{0, text->length()});
}

void BM_FCFRead(benchmark::State &state) {
  vl::ns::Data data = fcfScreenplay(static_cast<int>(state.range(0)));
  uint64_t length = 0;
  for (auto _ : state) {
    vl::ns::DictionaryPtr attributes;
    auto text =
        vl::VLFCFReader::create()->attributedStringWithData(data, nullptr, &attributes, nullptr);
    length = text->length();
    benchmark::DoNotOptimize(text);
  }
  state.counters["characters"] = static_cast<double>(length);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(data.length()));
}
BENCHMARK(BM_FCFRead)->Arg(120)->Arg(600)->Unit(benchmark::kMillisecond);

void BM_FCFWrite(benchmark::State &state) {
  auto text = styledScreenplay(static_cast<int>(state.range(0)));
  size_t bytes = 0;
  for (auto _ : state) {
    vl::ns::Data data =
        vl::VLFCFWriter::create(text)->dataFromRange(vl::ns::Range{0, text->length()});
    bytes = data.length();
    benchmark::DoNotOptimize(data);
  }
  state.counters["bytes"] = static_cast<double>(bytes);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}
BENCHMARK(BM_FCFWrite)->Arg(120)->Arg(600)->Unit(benchmark::kMillisecond);

} // namespace
