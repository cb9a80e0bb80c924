// Benchmarks of the regular expression conveniences on a screenplay-sized workload.
#include "ns/RegularExpression.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

using namespace vl::ns;

namespace {

// About 120 pages: 6,000 lines of headings, action, cues, parentheticals and dialogue.
std::vector<std::u16string> screenplayLines() {
  std::vector<std::u16string> lines;
  for (int scene = 0; lines.size() < 6000; ++scene) {
    lines.push_back(u"INT. KITCHEN - NIGHT #" + std::u16string(1, u'0' + scene % 10) + u"#");
    lines.push_back(u"");
    lines.push_back(u"Rain hammers the window. MARY stirs a pot that has long gone cold.");
    lines.push_back(u"");
    for (int exchange = 0; exchange < 4; ++exchange) {
      lines.push_back(exchange % 2 ? u"JOHN" : u"MARY ^");
      lines.push_back(u"(quietly)");
      lines.push_back(u"We should have left when the river rose. Nobody listens to me.");
      lines.push_back(u"");
    }
    lines.push_back(u"CUT TO:");
    lines.push_back(u"");
  }
  return lines;
}

// The per-line tests of a line-by-line screenplay parser: about ten searches a line.
void BM_ScreenplayLineRules(benchmark::State &state) {
  auto lines = screenplayLines();
  for (auto _ : state) {
    size_t hits = 0;
    for (const std::u16string &line : lines) {
      hits += isMatchedByRegex(line, uR"(^\s*$)");
      hits += isMatchedByRegex(line, uR"(^\/\*)");
      hits += isMatchedByRegex(line, uR"(\*\/\s*$)");
      hits += isMatchedByRegex(line, uR"(^={3,}\s*$)");
      hits += isMatchedByRegex(line, uR"(^\s*\[{2}\s*([^\]\n])+\s*\]{2}\s*$)");
      if (isMatchedByRegex(line, uR"(^(INT|EXT|EST|I\/??E)[\.\-\s])", RKLCaseless)) {
        auto number = stringByMatching(line, uR"(#([^\n#]*?)#\s*$)", 1);
        hits += number.has_value();
      }
      std::u16string trimmed = stringByReplacingOccurrencesOfRegex(line, uR"(^\s*)", u"");
      hits += trimmed.size();
      hits += isMatchedByRegex(line, uR"(^[^a-z]+$)");
      hits += isMatchedByRegex(line, uR"(\^\s*$)");
      hits += isMatchedByRegex(line, uR"(^\s*\()");
    }
    benchmark::DoNotOptimize(hits);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(lines.size()));
}
BENCHMARK(BM_ScreenplayLineRules)->Unit(benchmark::kMillisecond);

void BM_CachedLookup(benchmark::State &state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(RegularExpression::cached(uR"(^(INT|EXT|EST|I\/??E)[\.\-\s])"));
}
BENCHMARK(BM_CachedLookup);

void BM_ReplaceAllInScript(benchmark::State &state) {
  std::u16string script;
  for (const auto &line : screenplayLines())
    script += line + u"\r\n";
  for (auto _ : state)
    benchmark::DoNotOptimize(stringByReplacingOccurrencesOfRegex(script, u"\\r\\n|\\r|\\n", u"\n"));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(script.size() * 2));
}
BENCHMARK(BM_ReplaceAllInScript)->Unit(benchmark::kMillisecond);

// One search with a compiled pattern held by the caller, and the same through the
// conveniences (which add the cache lookup).
void BM_HeldPatternSearch(benchmark::State &state) {
  auto re = RegularExpression::cached(uR"(^(INT|EXT|EST|I\/??E)[\.\-\s])",
                                      RegularExpressionCaseInsensitive);
  std::u16string line = u"We should have left when the river rose. Nobody listens to me.";
  for (auto _ : state)
    benchmark::DoNotOptimize(re->hasMatchInString(line));
}
BENCHMARK(BM_HeldPatternSearch);
void BM_ConvenienceSearch(benchmark::State &state) {
  std::u16string line = u"We should have left when the river rose. Nobody listens to me.";
  for (auto _ : state)
    benchmark::DoNotOptimize(
        isMatchedByRegex(line, uR"(^(INT|EXT|EST|I\/??E)[\.\-\s])", RKLCaseless));
}
BENCHMARK(BM_ConvenienceSearch);

} // namespace
