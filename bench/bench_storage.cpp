// Styled text storages on a 200,000-word novel: typing with a live word count, a fresh count,
// applying and exchanging styles, loading paragraph by paragraph, and typing through a focus.
#include "model/VLAttributedStringAdditions.h"
#include "model/VLConstants.h"
#include "model/VLFocusedTextStorage.h"
#include "model/VLStyle.h"
#include "model/VLStyledTextStorage.h"
#include "model/VLStylesheet.h"
#include "model/VLTextStorageAdditions.h"
#include "ns/AttributeNames.h"
#include "ns/FontManager.h"
#include "ns/NotificationCenter.h"
#include "support/Novel.h"

#include <benchmark/benchmark.h>

#include <map>
#include <stdexcept>

using namespace vl;

namespace {

const VLStylesheetPtr &stylesheet() {
  static const VLStylesheetPtr sheet = VLStylesheet::defaultNovelStylesheet();
  return sheet;
}

VLStylePtr styleNamed(const char16_t *name) {
  VLStylePtr style = stylesheet()->styleForDisplayName(name);
  if (!style)
    throw std::runtime_error("the default novel stylesheet lacks a style");
  return style;
}

// The novel's options: body text and block quotes in "Section Text", chapter heads in
// "Chapter Title", each run with its style's attributes and its emphasis.
bench::NovelOptions novelOptions() {
  bench::NovelOptions options;
  VLStylePtr section = styleNamed(u"Section Text");
  options.styles = {ns::Value(section), ns::Value(styleNamed(u"Chapter Title")),
                    ns::Value(section)};
  options.attributes = [](const ns::Value &style, bool bold, bool italic) {
    ns::DictionaryPtr attributes = style.as<VLStyle>()->attributes();
    ns::FontManager &fonts = *ns::FontManager::sharedFontManager();
    auto font = attributes->objectForKey(ns::FontAttributeName).as<ns::Font>();
    if (bold)
      font = fonts.convertFontToHaveTrait(font, ns::BoldFontMask);
    if (italic)
      font = fonts.convertFontToHaveTrait(font, ns::ItalicFontMask);
    attributes->setObject(ns::Value(font), ns::FontAttributeName);
    return ns::ConstDictionaryPtr(attributes);
  };
  return options;
}

const std::vector<ns::AttributedStringPtr> &paragraphs() {
  static const std::vector<ns::AttributedStringPtr> all = bench::novelParagraphs(novelOptions());
  return all;
}

// The styled novel in one attributed string, built once.
const ns::AttributedString &novel() {
  static const ns::AttributedStringPtr text = [] {
    auto built = ns::MutableAttributedString::create();
    for (const ns::AttributedStringPtr &paragraph : paragraphs())
      built->appendAttributedString(*paragraph);
    return ns::AttributedStringPtr(built);
  }();
  return *text;
}

// A storage holding the novel, its word count set to the true total.
VLStyledTextStoragePtr novelStorage() {
  auto storage = VLStyledTextStorage::create(ns::AttributedString::create(novel()));
  storage->setWordCount(wordsInRange(*storage, ns::Range{0, storage->length()}));
  return storage;
}

bool isLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

// A position between two letters, in the middle of a word, from `from` on.
uint64_t insideWord(const ns::AttributedString &text, uint64_t from) {
  uint64_t at = from;
  while (!(isLetter(text.characterAtIndex(at - 1)) && isLetter(text.characterAtIndex(at)) &&
           isLetter(text.characterAtIndex(at + 1))))
    ++at;
  return at;
}

// Types `typed` at `at` and deletes it again, by turns, so the text keeps its length.
void typeAndDelete(benchmark::State &state, ns::TextStorage &storage, uint64_t at,
                   std::u16string_view typed) {
  bool insert = true;
  for (auto _ : state) {
    if (insert)
      storage.replaceCharactersInRange(ns::Range{at, 0}, typed);
    else
      storage.replaceCharactersInRange(ns::Range{at, typed.size()}, u"");
    insert = !insert;
  }
}

void BM_StyledTypeCharacter(benchmark::State &state) {
  VLStyledTextStoragePtr storage = novelStorage();
  uint64_t words = storage->wordCount();
  typeAndDelete(state, *storage, insideWord(*storage, storage->length() / 2), u"e");
  state.counters["words"] = static_cast<double>(words);
  state.counters["countKept"] =
      storage->wordCount() == wordsInRange(*storage, ns::Range{0, storage->length()});
}
BENCHMARK(BM_StyledTypeCharacter);

void BM_StyledTypeBlankSplittingWord(benchmark::State &state) {
  VLStyledTextStoragePtr storage = novelStorage();
  typeAndDelete(state, *storage, insideWord(*storage, storage->length() / 2), u" ");
  state.counters["countKept"] =
      storage->wordCount() == wordsInRange(*storage, ns::Range{0, storage->length()});
}
BENCHMARK(BM_StyledTypeBlankSplittingWord);

// What a count of the whole text costs, for comparison with the running count.
void BM_StyledFullWordRecount(benchmark::State &state) {
  VLStyledTextStoragePtr storage = novelStorage();
  for (auto _ : state)
    benchmark::DoNotOptimize(wordsInRange(*storage, ns::Range{0, storage->length()}));
}
BENCHMARK(BM_StyledFullWordRecount)->Unit(benchmark::kMillisecond);

// A style laid over one body paragraph with its emphasis runs: each iteration takes the next
// paragraph that has not been styled yet, from the middle of the novel on.
void BM_StyledApplyStyleToParagraph(benchmark::State &state) {
  VLStyledTextStoragePtr storage = novelStorage();
  VLStylePtr body = styleNamed(u"Section Text"), separator = styleNamed(u"Section Separator");
  std::vector<ns::Range> bodyParagraphs;
  for (uint64_t p = storage->length() / 4; p < storage->length();) {
    ns::Range paragraph = storage->paragraphRangeForRange(ns::Range{p, 0});
    if (storage->attribute(VLParagraphStyleAttributeName, p, nullptr).object() == body)
      bodyParagraphs.push_back(paragraph);
    p = paragraph.max();
  }
  int64_t runs = 0;
  for (size_t i = 0; i < bodyParagraphs.size(); ++i)
    storage->enumerateAttributesInRange(bodyParagraphs[i], 0,
                                        [&](auto &, ns::Range, bool &) { ++runs; });
  size_t next = 0;
  for (auto _ : state)
    applyStyle(*storage, *separator, bodyParagraphs[next++ % bodyParagraphs.size()]);
  state.counters["runsPerParagraph"] =
      static_cast<double>(runs) / static_cast<double>(bodyParagraphs.size());
  state.counters["fresh"] = next <= bodyParagraphs.size();
}
BENCHMARK(BM_StyledApplyStyleToParagraph)->Iterations(5000);

// Every body paragraph of a fresh copy of the novel from "Section Text" to another style.
void BM_StyledConvertStyleWholeNovel(benchmark::State &state) {
  VLStylePtr from = styleNamed(u"Section Text"), to = styleNamed(u"Header");
  for (auto _ : state) {
    state.PauseTiming();
    VLStyledTextStoragePtr storage = novelStorage();
    state.ResumeTiming();
    convertTextWithStyle(*storage, from, to);
    benchmark::DoNotOptimize(storage->length());
    state.PauseTiming();
    state.counters["leftUnconverted"] = static_cast<double>(rangesOfStyle(*storage, from).size());
    state.counters["converted"] = static_cast<double>(rangesOfStyle(*storage, to).size());
    storage.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(BM_StyledConvertStyleWholeNovel)->Unit(benchmark::kMillisecond);

// The first n paragraphs appended one by one, each edit processed on its own, as a reader
// that builds its text in the storage does.
void BM_StyledLoadNovel(benchmark::State &state) {
  const auto &all = paragraphs();
  const size_t n = static_cast<size_t>(state.range(0));
  for (auto _ : state) {
    VLStyledTextStorage storage;
    for (size_t i = 0; i < n; ++i)
      storage.appendAttributedString(*all[i]);
    benchmark::DoNotOptimize(storage.wordCount());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_StyledLoadNovel)
    ->Arg(2500)
    ->Arg(5000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

// The host's part of a focus: it tells followers of the base where each edit happens.
class Host : public ns::TextStorageDelegate {
public:
  explicit Host(ns::TextStorage &base) : base_(base) {}
  bool respondsTo(ns::TextStorageDelegateMethod method) const override {
    return method == ns::TextStorageDelegateMethod::Edited;
  }
  void edited(uint64_t, ns::Range range, int64_t change) override {
    if (change == 0)
      return;
    auto info = ns::Dictionary::create({{u"range", ns::Value(ns::StringFromRange(range))},
                                        {u"changeInLength", ns::Value(change)}});
    ns::NotificationCenter::defaultCenter().postNotificationName(VLSTextStorageEditedNotificaton,
                                                                 &base_, info);
  }

private:
  ns::TextStorage &base_;
};

// Typing inside a word of the chapter in the middle of the novel, through a focus on it.
void BM_FocusedTypeCharacter(benchmark::State &state) {
  VLStyledTextStoragePtr storage = novelStorage();
  Host host(*storage);
  storage->setDelegate(&host);
  std::vector<ns::Range> chapters = rangesOfStyle(*storage, styleNamed(u"Chapter Title"));
  ns::Range head = chapters[chapters.size() / 2], next = chapters[chapters.size() / 2 + 1];
  auto focused = VLFocusedTextStorage::create(storage);
  focused->setFocusedRange(ns::Range{head.location, next.location - head.location});
  uint64_t at = insideWord(*focused, focused->length() / 2);
  typeAndDelete(state, *focused, at, u"e");
  state.counters["chapterUnits"] = static_cast<double>(focused->length());
  state.counters["countKept"] =
      focused->wordCount() == wordsInRange(*storage, focused->focusedRange());
  storage->setDelegate(nullptr);
}
BENCHMARK(BM_FocusedTypeCharacter);

} // namespace
