// String operations on a novel-sized text: the per-edit work (word edges, a local word
// count, paragraph bounds) must not grow with the text, and whole-text passes must be linear.
#include "ns/String.h"

#include <benchmark/benchmark.h>

namespace {
using namespace vl::ns;

// About six units a word and a paragraph every hundred words, like prose.
std::u16string novel(size_t units) {
  static const std::u16string sentence =
      u"The rain, which hadn't stopped since Tuesday, fell on 3.5 acres of town. ";
  std::u16string text;
  text.reserve(units + sentence.size());
  for (size_t i = 0; text.size() < units; ++i) {
    text += sentence;
    if (i % 8 == 7)
      text.back() = u'\n';
  }
  text.resize(units);
  return text;
}

void BM_CountWordsIn100Units(benchmark::State &state) {
  std::u16string text = novel(static_cast<size_t>(state.range(0)));
  Range range{text.size() / 2, 100};
  for (auto _ : state)
    benchmark::DoNotOptimize(countWords(text, range));
}
BENCHMARK(BM_CountWordsIn100Units)->Arg(12'000)->Arg(120'000)->Arg(1'200'000);

// What a text storage does per keystroke: word edges around the edit, then a recount.
void BM_WordRangeAndRecountAtAnEdit(benchmark::State &state) {
  std::u16string text = novel(static_cast<size_t>(state.range(0)));
  uint64_t at = text.size() / 2;
  for (auto _ : state) {
    uint64_t start = nextWordFromIndex(text, at, false);
    uint64_t end = nextWordFromIndex(text, at, true);
    benchmark::DoNotOptimize(countWords(text, Range{start, end - start}));
  }
}
BENCHMARK(BM_WordRangeAndRecountAtAnEdit)->Arg(12'000)->Arg(120'000)->Arg(1'200'000);

void BM_ParagraphRangeAtAnEdit(benchmark::State &state) {
  std::u16string text = novel(static_cast<size_t>(state.range(0)));
  Range range{text.size() / 2, 0};
  for (auto _ : state)
    benchmark::DoNotOptimize(paragraphRangeForRange(text, range));
}
BENCHMARK(BM_ParagraphRangeAtAnEdit)->Arg(12'000)->Arg(1'200'000);

void BM_CountAllWords(benchmark::State &state) {
  std::u16string text = novel(static_cast<size_t>(state.range(0)));
  for (auto _ : state)
    benchmark::DoNotOptimize(countWords(text, Range{0, text.size()}));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size() * 2));
}
BENCHMARK(BM_CountAllWords)->Arg(1'200'000)->Unit(benchmark::kMillisecond);

void BM_CaselessSearch(benchmark::State &state) {
  std::u16string text = novel(1'200'000) + u"Straße";
  for (auto _ : state)
    benchmark::DoNotOptimize(rangeOfString(text, u"STRASSE", CaseInsensitiveSearch));
}
BENCHMARK(BM_CaselessSearch)->Unit(benchmark::kMillisecond);

void BM_CharacterIsMember(benchmark::State &state) {
  std::u16string text = novel(100'000);
  const CharacterSet &set = CharacterSet::whitespaceAndNewlineCharacterSet();
  for (auto _ : state) {
    size_t n = 0;
    for (char16_t c : text)
      n += set.characterIsMember(c);
    benchmark::DoNotOptimize(n);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_CharacterIsMember);

void BM_Format(benchmark::State &state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(format(u"%@: %2.1f pt (%ld)", u"Spacing", 12.5, 42));
}
BENCHMARK(BM_Format);
} // namespace
