// Attributed text on a 200,000-word novel: attribute lookup, typing through a text storage,
// appending paragraphs, longest effective ranges, enumeration, and the memory it takes.
#include "ns/AttributeNames.h"
#include "ns/TextStorage.h"
#include "support/Novel.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <map>
#include <new>
#include <set>

using namespace vl;
using namespace vl::ns;

// Every allocation of this program is counted, so a benchmark can tell the bytes a structure
// holds as the growth of live heap bytes while it is built.
namespace {
std::atomic<int64_t> liveBytes{0};
void *counted(void *p) {
  if (p)
    liveBytes.fetch_add(static_cast<int64_t>(malloc_usable_size(p)), std::memory_order_relaxed);
  return p;
}
void release(void *p) {
  if (p)
    liveBytes.fetch_sub(static_cast<int64_t>(malloc_usable_size(p)), std::memory_order_relaxed);
  std::free(p);
}
} // namespace

void *operator new(std::size_t n) {
  if (void *p = counted(std::malloc(n ? n : 1)))
    return p;
  throw std::bad_alloc();
}
void *operator new[](std::size_t n) {
  if (void *p = counted(std::malloc(n ? n : 1)))
    return p;
  throw std::bad_alloc();
}
void *operator new(std::size_t n, const std::nothrow_t &) noexcept {
  return counted(std::malloc(n ? n : 1));
}
void *operator new[](std::size_t n, const std::nothrow_t &) noexcept {
  return counted(std::malloc(n ? n : 1));
}
void operator delete(void *p) noexcept {
  release(p);
}
void operator delete[](void *p) noexcept {
  release(p);
}
void operator delete(void *p, std::size_t) noexcept {
  release(p);
}
void operator delete[](void *p, std::size_t) noexcept {
  release(p);
}

namespace {

// Benchmarks that build and drop a novel per iteration would otherwise measure the kernel:
// glibc hands large freed blocks back and faults fresh pages in on the next build.
const bool keepFreedMemory = [] {
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  return true;
}();

// The novel with about `runs` runs, built once per count.
const AttributedString &novel(uint64_t runs) {
  static std::map<uint64_t, AttributedStringPtr> novels;
  AttributedStringPtr &slot = novels[runs];
  if (!slot) {
    bench::NovelOptions options;
    options.runs = runs;
    slot = AttributedString::create(*bench::makeNovel(options));
  }
  return *slot;
}

const std::vector<AttributedStringPtr> &paragraphs() {
  static const std::vector<AttributedStringPtr> all = bench::novelParagraphs();
  return all;
}

// The number of runs, and of distinct dictionary objects they hold.
std::pair<uint64_t, uint64_t> countRuns(const AttributedString &s) {
  uint64_t runs = 0;
  std::set<const Dictionary *> dictionaries;
  s.enumerateAttributesInRange(Range{0, s.length()},
                               AttributedStringEnumerationLongestEffectiveRangeNotRequired,
                               [&](const ConstDictionaryPtr &d, Range, bool &) {
                                 ++runs;
                                 dictionaries.insert(d.get());
                               });
  return {runs, dictionaries.size()};
}

// Fixed pseudo-random positions below `limit`.
std::vector<uint64_t> positions(uint64_t limit, size_t count) {
  std::vector<uint64_t> out(count);
  uint64_t x = 88172645463325252ULL;
  for (uint64_t &p : out) {
    x ^= x << 13;
    x ^= x >> 7;
    x ^= x << 17;
    p = x % limit;
  }
  return out;
}

void BM_NovelAttributeLookup(benchmark::State &state) {
  const AttributedString &s = novel(static_cast<uint64_t>(state.range(0)));
  std::vector<uint64_t> at = positions(s.length(), 4096);
  size_t i = 0;
  for (auto _ : state) {
    Range r;
    ConstDictionaryPtr a = s.attributesAtIndex(at[i++ & 4095], &r);
    benchmark::DoNotOptimize(a.get());
    benchmark::DoNotOptimize(r);
  }
  state.counters["runs"] = static_cast<double>(countRuns(s).first);
}
BENCHMARK(BM_NovelAttributeLookup)->Arg(2500)->Arg(10000)->Arg(40000);

// One keystroke in the middle of the novel, inside a batch, through a text storage: typing
// and deleting by turns, so the paragraph keeps its length.
void BM_NovelInsertCharacter(benchmark::State &state) {
  auto storage = TextStorage::create(novel(40000));
  uint64_t middle = storage->length() / 2;
  while (storage->characterAtIndex(middle) < u'a' || storage->characterAtIndex(middle) > u'z')
    ++middle;
  bool insert = true;
  for (auto _ : state) {
    storage->beginEditing();
    if (insert)
      storage->replaceCharactersInRange(Range{middle, 0}, u"e");
    else
      storage->deleteCharactersInRange(Range{middle, 1});
    storage->endEditing();
    insert = !insert;
  }
  state.counters["length"] = static_cast<double>(storage->length());
}
BENCHMARK(BM_NovelInsertCharacter);

// Readers build documents by appending styled paragraphs one by one.
void BM_AppendParagraphs(benchmark::State &state) {
  const auto &all = paragraphs();
  const size_t n = static_cast<size_t>(state.range(0));
  for (auto _ : state) {
    MutableAttributedString s;
    for (size_t i = 0; i < n; ++i)
      s.appendAttributedString(*all[i]);
    benchmark::DoNotOptimize(s.length());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_AppendParagraphs)
    ->Arg(2500)
    ->Arg(5000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

// The same into a text storage inside one batch, fixed once at the end.
void BM_AppendParagraphsToTextStorage(benchmark::State &state) {
  const auto &all = paragraphs();
  for (auto _ : state) {
    TextStorage s;
    s.beginEditing();
    for (const AttributedStringPtr &p : all)
      s.appendAttributedString(*p);
    s.endEditing();
    benchmark::DoNotOptimize(s.length());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(all.size()));
}
BENCHMARK(BM_AppendParagraphsToTextStorage)->Unit(benchmark::kMillisecond);

// The run of one paragraph's style, from its first character, across its emphasis runs.
void BM_NovelLongestEffectiveRange(benchmark::State &state) {
  const AttributedString &s = novel(40000);
  std::vector<Range> paragraphRanges;
  for (uint64_t p = 0; p < s.length();) {
    paragraphRanges.push_back(s.paragraphRangeForRange(Range{p, 0}));
    p = paragraphRanges.back().max();
  }
  std::vector<uint64_t> pick = positions(paragraphRanges.size(), 1024);
  size_t i = 0;
  for (auto _ : state) {
    Range paragraph = paragraphRanges[pick[i++ & 1023]];
    Range r;
    Value style = s.attribute(bench::NovelStyleAttributeName, paragraph.location, &r, paragraph);
    benchmark::DoNotOptimize(style);
    benchmark::DoNotOptimize(r);
  }
}
BENCHMARK(BM_NovelLongestEffectiveRange);

void BM_NovelEnumerateAttribute(benchmark::State &state) {
  const AttributedString &s = novel(40000);
  int64_t ranges = 0;
  for (auto _ : state) {
    s.enumerateAttribute(FontAttributeName, Range{0, s.length()}, 0,
                         [&](const Value &, Range, bool &) { ++ranges; });
  }
  state.SetItemsProcessed(ranges);
  state.counters["ranges"] = static_cast<double>(ranges / state.iterations());
}
BENCHMARK(BM_NovelEnumerateAttribute)->Unit(benchmark::kMillisecond);

// Heap bytes the novel holds per byte of its UTF-16 text: built by appending (as readers do,
// with room to grow) and copied into an immutable string.
void BM_NovelMemory(benchmark::State &state) {
  for (auto _ : state) {
    int64_t before = liveBytes.load();
    MutableAttributedStringPtr built = bench::makeNovel();
    int64_t appended = liveBytes.load() - before;
    AttributedStringPtr copy = AttributedString::create(*built);
    int64_t copied = liveBytes.load() - before - appended;
    double text = 2.0 * static_cast<double>(built->length());
    state.counters["textMB"] = text / 1e6;
    state.counters["appendedBytesPerTextByte"] = static_cast<double>(appended) / text;
    state.counters["copiedBytesPerTextByte"] = static_cast<double>(copied) / text;
    auto [runs, dictionaries] = countRuns(*built);
    state.counters["runs"] = static_cast<double>(runs);
    state.counters["dictionaries"] = static_cast<double>(dictionaries);
    state.counters["units"] = static_cast<double>(built->length());
  }
}
BENCHMARK(BM_NovelMemory)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
