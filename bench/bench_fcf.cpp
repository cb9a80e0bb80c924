// Benchmarks of FCF reading and writing on synthetic screenplays of 120 and 600 pages.
#include "converters/fcf/VLFCFReader.h"
#include "converters/fcf/VLFCFWriter.h"
#include "converters/fountain/FastFountainParser.h"
#include "model/VLStylesheet.h"
#include "ns/MutableAttributedString.h"
#include "support/Screenplay.h"

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace {

/// The screenplay as styled text: one paragraph an element, in the default screenplay
/// stylesheet's style of its kind; sections, synopses, notes and page breaks left out.
vl::ns::MutableAttributedStringPtr styledScreenplay(int pages) {
  auto parser = vl::FastFountainParser::createWithString(vl::bench::fountainScreenplay(pages));
  auto sheet = vl::VLStylesheet::defaultScreenplayStylesheet();
  std::map<std::u16string, vl::ns::ConstDictionaryPtr, std::less<>> attributes;
  for (const char16_t *name :
       {u"Scene_20_Heading", u"Action", u"Character", u"Dialogue", u"Parenthetical", u"Transition"})
    attributes[sheet->styleForName(name)->displayName().value()] =
        sheet->styleForName(name)->attributes();
  auto text = vl::ns::MutableAttributedString::create();
  for (const vl::FNElementPtr &element : parser->elements()) {
    auto found = attributes.find(element->elementType());
    if (found == attributes.end())
      continue;
    text->appendAttributedString(
        vl::ns::AttributedString(element->elementText() + u"\n", found->second));
  }
  return text;
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
