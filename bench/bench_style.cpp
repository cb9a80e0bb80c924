// Cost of laying a style chain onto run attributes and of deriving a style back from them,
// per property defined along the chain.
#include "model/VLStyle.h"
#include "model/VLStylesheet.h"
#include "ns/AttributeNames.h"

#include <benchmark/benchmark.h>

#include <bit>

using namespace vl;

namespace {

/// A default style and four descendants, each defining a few paragraph and text
/// properties, as a document's heading under a chapter style might.
std::vector<VLStylePtr> chainOfFive() {
  std::vector<VLStylePtr> chain{VLStyle::defaultParagraphStyle()};
  auto add = [&chain](auto &&define) {
    VLStylePtr style = VLStyle::create();
    style->setParentStyle(chain.back());
    define(*style);
    chain.push_back(style);
  };
  add([](VLStyle &s) {
    s.setFont(ns::Font::fontWithName(u"Times", 12));
    s.setHasBoldFontWeight(true);
    s.setParagraphSpacing(12);
  });
  add([](VLStyle &s) {
    s.setFontSize(14);
    s.setHeadIndent(18);
    s.setFirstLineHeadIndent(36);
  });
  add([](VLStyle &s) {
    s.setHasItalicFontStyle(true);
    s.setTabStops({ns::TextTab::create(ns::LeftTabStopType, 72)});
    s.setForegroundColor(ns::Color::blueColor());
  });
  add([](VLStyle &s) {
    s.setUnderlineStyle(ns::UnderlineStyleSingle);
    s.setAlignment(ns::TextAlignmentCenter);
    s.setParagraphSpacingBefore(6);
  });
  return chain;
}

double propertiesDefined(const std::vector<VLStylePtr> &chain) {
  double count = 0;
  for (const VLStylePtr &style : chain)
    count += std::popcount(style->defines());
  return count;
}

void perProperty(benchmark::State &state, double properties) {
  state.counters["per_property"] = benchmark::Counter(
      properties, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_ApplyToAttributesChain5(benchmark::State &state) {
  std::vector<VLStylePtr> chain = chainOfFive();
  const VLStyle &leaf = *chain.back();
  auto attributes =
      ns::Dictionary::create({{std::u16string(ns::FontAttributeName), ns::Font::userFontOfSize(12)},
                              {std::u16string(ns::ParagraphStyleAttributeName),
                               ns::ParagraphStyle::defaultParagraphStyle()}});
  for (auto _ : state) {
    leaf.applyToAttributes(*attributes);
    benchmark::DoNotOptimize(attributes.get());
  }
  perProperty(state, propertiesDefined(chain));
  for (const VLStylePtr &style : chain)
    style->setParentStyle(nullptr);
}
BENCHMARK(BM_ApplyToAttributesChain5);

void BM_AttributesChain5(benchmark::State &state) {
  std::vector<VLStylePtr> chain = chainOfFive();
  for (auto _ : state)
    benchmark::DoNotOptimize(chain.back()->attributes());
  perProperty(state, propertiesDefined(chain));
  for (const VLStylePtr &style : chain)
    style->setParentStyle(nullptr);
}
BENCHMARK(BM_AttributesChain5);

void BM_DerivedParagraphStyleChain5(benchmark::State &state) {
  std::vector<VLStylePtr> chain = chainOfFive();
  auto attributes = chain.back()->attributes();
  for (auto _ : state)
    benchmark::DoNotOptimize(chain.back()->derivedParagraphStyleWithAttributes(*attributes));
  perProperty(state, propertiesDefined(chain));
  for (const VLStylePtr &style : chain)
    style->setParentStyle(nullptr);
}
BENCHMARK(BM_DerivedParagraphStyleChain5);

void BM_StyleForNameScreenplay(benchmark::State &state) {
  auto sheet = VLStylesheet::defaultScreenplayStylesheet();
  for (auto _ : state)
    benchmark::DoNotOptimize(sheet->styleForName(u"Transition"));
}
BENCHMARK(BM_StyleForNameScreenplay);

} // namespace
