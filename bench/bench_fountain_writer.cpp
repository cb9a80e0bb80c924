// Benchmarks of writing styled screenplays of 120 and 600 pages back to Fountain.
#include "converters/fountain/VLSFountainReader.h"
#include "converters/fountain/VLSFountainWriter.h"
#include "model/VLConstants.h"
#include "model/VLMemoryRDFModel.h"
#include "ns/Data.h"
#include "ns/Dictionary.h"
#include "support/Screenplay.h"

#include <benchmark/benchmark.h>

namespace {

using namespace vl;

struct StyledScreenplay {
  ns::MutableAttributedStringPtr text;
  ns::DictionaryPtr attributes;
};

// The generated screenplay as the reader styles it, with the titles and synopses of its
// outline entries in a metadata model, as a host keeps them.
StyledScreenplay styledScreenplay(int pages) {
  auto reader = VLSFountainReader::create();
  StyledScreenplay screenplay;
  screenplay.text =
      reader->attributedStringWithData(ns::Data::fromString(bench::fountainScreenplayUTF8(pages)),
                                       nullptr, &screenplay.attributes, nullptr);
  auto model = VLMemoryRDFModel::create();
  model->addResourcesFromReferences(
      screenplay.attributes->objectForKey(VLReferencesDocumentAttribute).dictionary());
  screenplay.attributes->setObject(model, VLRDFMetadataDocumentAttribute);
  return screenplay;
}

void BM_FountainWrite(benchmark::State &state) {
  StyledScreenplay screenplay = styledScreenplay(static_cast<int>(state.range(0)));
  size_t bytes = 0;
  for (auto _ : state) {
    auto writer = VLSFountainWriter::create(screenplay.text);
    auto data =
        writer->dataFromRange({0, screenplay.text->length()}, screenplay.attributes, nullptr);
    bytes = data->size();
    benchmark::DoNotOptimize(data);
  }
  state.counters["bytes"] = static_cast<double>(bytes);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}
BENCHMARK(BM_FountainWrite)->Arg(120)->Arg(600)->Unit(benchmark::kMillisecond);

} // namespace
