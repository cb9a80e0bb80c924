// Tests of the style, word, outline, marker and span operations on attributed text.
#include "ModelTestSupport.h"
#include "model/VLAttributedStringAdditions.h"
#include "model/VLConstants.h"
#include "model/VLOutline.h"
#include "model/VLRangeHolder.h"
#include "model/VLStyle.h"
#include "model/VLStyledTextStorage.h"
#include "model/VLTextStorageAdditions.h"
#include "ns/AttributeNames.h"
#include "ns/Color.h"
#include "ns/FontManager.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace vl;
using test::font;
using test::named;

namespace {

ns::FontPtr fontAt(const ns::AttributedString &text, uint64_t index) {
  return text.attribute(ns::FontAttributeName, index, nullptr).as<ns::Font>();
}

// A font's face and size, to compare fonts by what they are.
std::string face(const ns::FontPtr &font) {
  return font ? ns::toUTF8(font->fontName()) + " " + std::to_string(font->pointSize()) : "nil";
}

std::string faceAt(const ns::AttributedString &text, uint64_t index) {
  return face(fontAt(text, index));
}

uint32_t traitsAt(const ns::AttributedString &text, uint64_t index) {
  return ns::FontManager::sharedFontManager()->traitsOfFont(fontAt(text, index));
}

VLStylePtr styleAt(const ns::AttributedString &text, uint64_t index) {
  return text.attribute(VLParagraphStyleAttributeName, index, nullptr).as<VLStyle>();
}

// Attributes with `style` and a font, and optionally one more attribute.
ns::DictionaryPtr attributes(const VLStylePtr &style, ns::FontPtr withFont) {
  auto result = ns::Dictionary::create();
  if (withFont)
    result->setObject(ns::Value(std::move(withFont)), ns::FontAttributeName);
  if (style)
    result->setObject(ns::Value(style), VLParagraphStyleAttributeName);
  return result;
}

// Text made of (string, attributes) pieces.
VLStyledTextStoragePtr
textOf(std::initializer_list<std::pair<std::u16string_view, ns::ConstDictionaryPtr>> pieces) {
  auto text = VLStyledTextStorage::create();
  text->setSuppressParagraphStyleFixing(true);
  for (const auto &[string, attrs] : pieces)
    text->appendAttributedString(ns::AttributedString(string, attrs));
  text->setSuppressParagraphStyleFixing(false);
  return text;
}

// Text of `string` without attributes.
VLStyledTextStoragePtr unstyled(std::u16string_view string = u"0123456789") {
  return VLStyledTextStorage::create(string, attributes(nullptr, nullptr));
}

class CountingLayoutManager : public ns::LayoutManager {
public:
  void textStorage(ns::TextStorage &, uint64_t, ns::Range, int64_t, ns::Range) override {
    ++batches;
  }
  int batches = 0;
};

// An object in the text that remembers its range.
class Holder : public ns::Object, public VLRangeHolder {
public:
  ns::Range range() const override { return range_; }
  void setRange(ns::Range range) override { range_ = range; }

private:
  ns::Range range_{ns::NotFound, 0};
};

std::shared_ptr<Holder> holderOver(ns::MutableAttributedString &text, std::u16string_view name,
                                   ns::Range range) {
  auto holder = std::make_shared<Holder>();
  text.addAttribute(name, ns::Value(holder), range);
  return holder;
}

} // namespace

// Applying styles.

TEST(ApplyStyleTest, LaysTheStyleOverEachRunKeepingWhatItDoesNotDefine) {
  VLStylePtr large = named(u"Large");
  large->setFontSize(18);
  auto red = ns::Color::colorWithCalibratedRed(1, 0, 0, 1);
  auto plain = attributes(nullptr, font(u"Helvetica", 12));
  plain->setObject(ns::Value(red), ns::ForegroundColorAttributeName);
  auto text = textOf({{u"plain ", plain},
                      {u"bold", attributes(nullptr, font(u"Helvetica-Bold", 12))},
                      {u" bare\n", nullptr},
                      {u"next\n", plain}});
  CountingLayoutManager layout;
  text->addLayoutManager(&layout);

  applyStyle(*text, *large, ns::Range{0, 16});
  EXPECT_EQ(layout.batches, 1) << "one batch of edits";
  EXPECT_EQ(styleAt(*text, 0), large);
  EXPECT_EQ(faceAt(*text, 0), face(font(u"Helvetica", 18)));
  EXPECT_EQ(faceAt(*text, 6), face(font(u"Helvetica-Bold", 18))) << "the run's own face stays";
  EXPECT_EQ(text->attribute(ns::ForegroundColorAttributeName, 0, nullptr), ns::Value(red))
      << "a colour the style does not define stays";
  EXPECT_EQ(faceAt(*text, 11), face(ns::Font::userFontOfSize(18)))
      << "a run without attributes starts from the user font";
  EXPECT_EQ(faceAt(*text, 16), face(font(u"Helvetica", 12))) << "outside the range";
}

TEST(ApplyStyleTest, PreservesOnlyTraitsTheRunHadOfItsOwn) {
  VLStylePtr body = named(u"Body");
  body->setHasBoldFontWeight(false);
  body->setHasItalicFontStyle(false);
  body->setUnderlineStyle(0);
  VLStylePtr plainOld = named(u"Old");
  VLStylePtr boldOld = named(u"Bold Old");
  boldOld->setHasBoldFontWeight(true);

  auto underlined = attributes(plainOld, font(u"Helvetica-Bold", 12));
  underlined->setObject(ns::Value(ns::UnderlineStyleSingle), ns::UnderlineStyleAttributeName);
  auto make = [&] {
    return textOf({{u"local ", underlined},
                   {u"styled ", attributes(boldOld, font(u"Helvetica-Bold", 12))},
                   {u"slanted\n", attributes(plainOld, font(u"Helvetica-Oblique", 12))}});
  };

  auto kept = make();
  applyStyle(*kept, *body, VLPreserveBoldTrait | VLPreserveUnderlineTrait, ns::Range{0, 21});
  EXPECT_TRUE(traitsAt(*kept, 0) & ns::BoldFontMask) << "local bold survives";
  EXPECT_EQ(kept->attribute(ns::UnderlineStyleAttributeName, 0, nullptr),
            ns::Value(ns::UnderlineStyleSingle));
  EXPECT_FALSE(traitsAt(*kept, 6) & ns::BoldFontMask) << "bold of the old style goes with it";
  EXPECT_FALSE(kept->attributesAtIndex(6, nullptr)->containsKey(ns::UnderlineStyleAttributeName))
      << "no underline of its own to keep";
  EXPECT_EQ(traitsAt(*kept, 13) & ns::ItalicFontMask, 0u) << "italic was not asked for";

  auto italic = make();
  applyStyle(*italic, *body, VLPreserveItalicTrait, ns::Range{0, 21});
  EXPECT_TRUE(traitsAt(*italic, 13) & ns::ItalicFontMask);
  EXPECT_FALSE(traitsAt(*italic, 0) & ns::BoldFontMask);
  EXPECT_FALSE(italic->attributesAtIndex(0, nullptr)->containsKey(ns::UnderlineStyleAttributeName));
}

TEST(ConvertTextWithStyleTest, ExchangesTheStyleKeepingLocalDifferences) {
  VLStylePtr a = named(u"A"), b = named(u"B"), other = named(u"Other");
  a->setFont(font(u"Helvetica", 12));
  b->setFontSize(14);
  auto red = ns::Color::colorWithCalibratedRed(1, 0, 0, 1);
  auto local = a->attributes();
  local->setObject(ns::Value(red), ns::ForegroundColorAttributeName);
  auto bold = a->attributes();
  bold->setObject(ns::Value(font(u"Helvetica-Bold", 12)), ns::FontAttributeName);
  auto text = textOf({{u"Red start ", local},
                      {u"bold", bold},
                      {u" end\n", a->attributes()},
                      {u"Other\n", other->attributes()},
                      {u"Again\n", a->attributes()}});

  convertTextWithStyle(*text, a, b, ns::Range{0, 2});
  EXPECT_EQ(styleAt(*text, 0), b);
  EXPECT_EQ(styleAt(*text, 12), b) << "the whole run of the style, not just the range";
  EXPECT_EQ(text->attribute(ns::ForegroundColorAttributeName, 0, nullptr), ns::Value(red));
  EXPECT_EQ(fontAt(*text, 0)->pointSize(), 14);
  EXPECT_EQ(text->attribute(ns::ForegroundColorAttributeName, 12, nullptr), ns::Value(red))
      << "runs inside take the first character's formatting";
  EXPECT_FALSE(traitsAt(*text, 12) & ns::BoldFontMask);
  EXPECT_EQ(styleAt(*text, 19), other);
  EXPECT_EQ(styleAt(*text, 25), a) << "a separate run after the range";

  convertTextWithStyle(*text, a, b);
  EXPECT_EQ(styleAt(*text, 25), b);
  EXPECT_EQ(stylesInUse(*text), (std::vector<VLStylePtr>{b, other}));
}

TEST(StyleQueriesTest, DeviationFromTheStyleDefinition) {
  auto empty = VLStyledTextStorage::create();
  EXPECT_TRUE(attributesDifferFromStyleDefinitionAtLocation(*empty, 0));

  // As stylesheet styles do, the style defines every property.
  VLStylePtr a = named(u"A");
  a->resetToDefaultProperties();
  a->setFontSize(16);
  auto changed = a->attributes();
  changed->setObject(ns::Value(ns::Color::colorWithCalibratedRed(0, 0, 1, 1)),
                     ns::ForegroundColorAttributeName);
  auto text = textOf({{u"as defined ", a->attributes()},
                      {u"blue", changed},
                      {u"\nbare", attributes(nullptr, font(u"Helvetica", 30))}});
  EXPECT_FALSE(attributesDifferFromStyleDefinitionAtLocation(*text, 0));
  EXPECT_TRUE(attributesDifferFromStyleDefinitionAtLocation(*text, 12));
  EXPECT_FALSE(attributesDifferFromStyleDefinitionAtLocation(*text, 17)) << "no style, no test";
  EXPECT_TRUE(attributesDifferFromStyleDefinitionAtLocation(*text, text->length()));
}

TEST(StyleQueriesTest, FindsStylesByIdentity) {
  VLStylePtr a = named(u"A"), b = named(u"B");
  VLStylePtr twin = ns::copyOf(*a);
  auto withColour = attributes(a, font(u"Helvetica", 12));
  withColour->setObject(ns::Value(u"red"), u"colour");
  auto text = textOf({{u"a\n", attributes(a, font(u"Helvetica", 12))},
                      {u"a", withColour},
                      {u"\n", attributes(a, font(u"Helvetica", 12))},
                      {u"b\n", attributes(b, font(u"Helvetica", 12))},
                      {u"a\n", attributes(a, font(u"Helvetica", 12))}});
  EXPECT_TRUE(usesStyle(*text, a));
  EXPECT_FALSE(usesStyle(*text, twin)) << "an equal style is not the same style";
  EXPECT_FALSE(usesStyle(*text, nullptr));
  EXPECT_EQ(rangesOfStyle(*text, a), (std::vector<ns::Range>{{0, 4}, {6, 2}}));
  EXPECT_EQ(stylesInUse(*text), (std::vector<VLStylePtr>{a, b}));
  EXPECT_EQ(stylesInRange(*text, ns::Range{4, 2}), (std::vector<VLStylePtr>{b}));
  EXPECT_TRUE(stylesInRange(*text, ns::Range{text->length(), 0}).empty());
}

TEST(StyleQueriesTest, OutlineEntriesAndIdentifiers) {
  auto text = unstyled();
  auto first = VLOutline::entryWithRange(ns::Range{0, 0}, 0);
  auto second = VLOutline::entryWithRange(ns::Range{0, 0}, 1);
  first->setIdentifier(u"one");
  second->setIdentifier(u"two");
  text->addAttribute(VLOutlineElementAttributeName, ns::Value(first), ns::Range{0, 4});
  text->addAttribute(VLOutlineElementAttributeName, ns::Value(second), ns::Range{4, 4});
  text->addAttribute(VLOutlineElementAttributeName, ns::Value(first), ns::Range{8, 2});

  EXPECT_EQ(rangeOfIdentifier(*text, u"two"), (ns::Range{4, 4}));
  EXPECT_EQ(rangeOfIdentifier(*text, u"one"), (ns::Range{0, 4})) << "the first run";
  EXPECT_EQ(rangeOfIdentifier(*text, u"three"), (ns::Range{ns::NotFound, 0}));

  std::vector<VLOutlinePtr> entries = outlineEntriesInRange(*text, ns::Range{2, 6});
  EXPECT_EQ(entries, (std::vector<VLOutlinePtr>{first, second}));
  EXPECT_EQ(first->range(), (ns::Range{2, 2})) << "the run inside the range";
  EXPECT_EQ(second->range(), (ns::Range{4, 4}));
  EXPECT_EQ(outlineEntriesInRange(*text, ns::Range{0, 10}).size(), 3u) << "once per separate run";
  EXPECT_EQ(first->range(), (ns::Range{8, 2}));
}

TEST(StyleQueriesTest, MarkersByIdentity) {
  auto text = unstyled();
  auto marker = holderOver(*text, VLSTextMarkerAttributeName, ns::Range{3, 2});
  text->addAttribute(u"colour", ns::Value(u"red"), ns::Range{4, 3});
  EXPECT_EQ(rangeOfMarker(*text, marker), (ns::Range{3, 2})) << "the longest run";
  EXPECT_EQ(rangeOfMarker(*text, std::make_shared<Holder>()), (ns::Range{ns::NotFound, 0}));
  EXPECT_EQ(rangeOfMarker(*text, nullptr), (ns::Range{ns::NotFound, 0}));
}

TEST(StyleTransformTest, ChangesCaseByTheParagraphStyle) {
  VLStylePtr upper = named(u"Upper"), capital = named(u"Capital"), lower = named(u"Lower"),
             none = named(u"None");
  upper->setTextTransform(VLTextTransformUppercase);
  capital->setTextTransform(VLTextTransformCapitalize);
  lower->setTextTransform(VLTextTransformLowercase);
  auto bold = attributes(upper, font(u"Helvetica-Bold", 12));
  auto text = textOf({{u"große ", attributes(upper, font(u"Helvetica", 12))},
                      {u"straße\n", bold},
                      {u"two words\n", attributes(capital, font(u"Helvetica", 12))},
                      {u"LOUD\n", attributes(lower, font(u"Helvetica", 12))},
                      {u"as is\n", attributes(none, font(u"Helvetica", 12))}});
  applyStyleTransformToText(*text);
  EXPECT_EQ(text->string(), u"GROSSE STRASSE\nTwo Words\nloud\nas is\n");
  ns::Range run;
  EXPECT_EQ(text->attributesAtIndex(8, &run)->objectForKey(ns::FontAttributeName),
            bold->objectForKey(ns::FontAttributeName));
  EXPECT_EQ(run, (ns::Range{7, 8})) << "the grown run keeps its attributes";

  CountingLayoutManager layout;
  text->addLayoutManager(&layout);
  applyStyleTransformToText(*text);
  EXPECT_EQ(layout.batches, 0) << "text already in its case is not edited";
}

// Spans near a range.

TEST(TextSpansTest, FindsSpansInTheRangeOrEndingAtIt) {
  auto text = unstyled();
  auto before = holderOver(*text, VLTextSpanAttributeName, ns::Range{2, 3});
  auto at = holderOver(*text, VLTextSpanAttributeName, ns::Range{5, 2});
  auto after = holderOver(*text, VLTextSpanAttributeName, ns::Range{8, 1});
  text->addAttribute(u"colour", ns::Value(u"red"), ns::Range{3, 1}); // splits no span run
  auto spans = [&](ns::Range range) { return textSpansInOrAdjacentToRange(*text, range); };
  using Spans = std::vector<ns::ObjectPtr>;

  EXPECT_EQ(spans(ns::Range{5, 0}), (Spans{before, at}));
  EXPECT_EQ(before->range(), (ns::Range{2, 3})) << "the longest run, across the colour";
  EXPECT_EQ(spans(ns::Range{6, 0}), (Spans{at})) << "a span ending before is not adjacent";
  before->setRange(ns::Range{0, 0});
  EXPECT_EQ(spans(ns::Range{3, 6}), (Spans{before, at, after}));
  EXPECT_EQ(before->range(), (ns::Range{2, 3})) << "not clipped to the range";
  EXPECT_EQ(spans(ns::Range{0, 3}), (Spans{before}));
  EXPECT_EQ(spans(ns::Range{0, 0}), Spans{}) << "nothing before the text";
  EXPECT_EQ(spans(ns::Range{10, 0}), Spans{}) << "nothing after it";
  EXPECT_EQ(textSpansForAttribute(*text, u"colour", ns::Range{3, 0}), Spans{})
      << "values that are not objects are not spans";
}

// Words.

TEST(WordQueriesTest, WordRangeAndCount) {
  auto text = unstyled(u"The quick brown fox");
  EXPECT_EQ(wordRangeForCharRange(*text, ns::Range{6, 2}), (ns::Range{4, 5}));
  EXPECT_EQ(wordRangeForCharRange(*text, ns::Range{9, 1}), (ns::Range{4, 11}));
  EXPECT_EQ(wordRangeForCharRange(*text, ns::Range{0, 0}), (ns::Range{0, 3}));
  EXPECT_EQ(wordRangeForCharRange(*VLStyledTextStorage::create(), ns::Range{3, 2}),
            (ns::Range{3, 2}))
      << "empty text answers the range unchanged";

  EXPECT_EQ(wordsInRange(*text, ns::Range{0, text->length()}), 4u);
  EXPECT_EQ(wordsInRange(*text, ns::Range{10, 1000}), 2u) << "clipped to the text";
  EXPECT_EQ(wordsInRange(*text, ns::Range{50, 3}), 0u);
  EXPECT_EQ(wordsInRange(*text, ns::Range{6, 5}), 2u) << "words cut by the range count";
}

TEST(WordQueriesTest, NextAndLastWords) {
  auto text = unstyled(u"The quick brown fox");
  ns::Range found;
  EXPECT_EQ(lastWordInRange(*text, ns::Range{0, 12}, &found), u"br");
  EXPECT_EQ(found, (ns::Range{10, 2})) << "found within the range alone";
  EXPECT_EQ(lastWordInRange(*text, ns::Range{3, 1}, &found), std::nullopt);
  EXPECT_EQ(found, (ns::Range{ns::NotFound, 0}));

  EXPECT_EQ(nextWordForwardFromLocation(*text, 9), (ns::Range{10, 5}));
  EXPECT_EQ(nextWordForwardFromLocation(*text, 5), (ns::Range{5, 4}));
  EXPECT_EQ(nextWordForwardFromLocation(*text, 19), (ns::Range{ns::NotFound, 0}));
  EXPECT_EQ(nextWordBackwardFromLocation(*text, 9), (ns::Range{4, 5}));
  EXPECT_EQ(nextWordBackwardFromLocation(*text, 12), (ns::Range{10, 2}));
  EXPECT_EQ(nextWordBackwardFromLocation(*text, 0), (ns::Range{ns::NotFound, 0}));
}

TEST(WordQueriesTest, FarAndLongWordsAreFoundWhole) {
  std::u16string gap(1000, u' ');
  std::u16string longWord(700, u'a');
  auto text = unstyled(u"near" + gap + longWord + gap + u"far");
  EXPECT_EQ(nextWordForwardFromLocation(*text, 4), (ns::Range{1004, 700}));
  EXPECT_EQ(nextWordBackwardFromLocation(*text, 2704), (ns::Range{1004, 700}));
  EXPECT_EQ(wordRangeForCharRange(*text, ns::Range{1300, 1}), (ns::Range{1004, 700}));
}
