// Styles: the defines word and the cascade, application to attributes, comparison and derived
// styles, resets, names, line spacing modes, copies, coding, the summary for users and walks
// over chains that loop.
#include "ModelTestSupport.h"
#include "model/VLConstants.h"
#include "model/VLGraphicStyle.h"
#include "model/VLParagraphStyleAdditions.h"
#include "model/VLStyle.h"
#include "model/VLStylesheet.h"
#include "ns/Array.h"
#include "ns/AttributeNames.h"
#include "ns/String.h"

#include <gtest/gtest.h>

using namespace vl;
using ns::Value;
using test::childOf;
using test::failureOf;
using test::font;

namespace {

ns::DictionaryPtr plainAttributes() {
  return ns::Dictionary::create(
      {{u"NSFont", font(u"Helvetica")},
       {u"NSParagraphStyle", ns::ParagraphStyle::defaultParagraphStyle()}});
}

const ns::ParagraphStyle &paragraphOf(const ns::Dictionary &attributes) {
  return *attributes.objectForKey(ns::ParagraphStyleAttributeName).as<ns::ParagraphStyle>();
}

ns::FontPtr fontOf(const ns::Dictionary &attributes) {
  return attributes.objectForKey(ns::FontAttributeName).as<ns::Font>();
}

// `style` applied to plain Helvetica 12 text.
ns::DictionaryPtr appliedTo(const VLStyle &style) {
  auto attributes = plainAttributes();
  style.applyToAttributes(*attributes);
  return attributes;
}

} // namespace

TEST(VLStyle, EverySetterDefinesExactlyItsBitAndTheBitSurvivesAnArchive) {
  // Key-value coding reaches each setter; the keys stand in the order of their bits.
  const std::u16string_view keys =
      u"alignment lineSpacing paragraphSpacingBefore paragraphSpacing headIndent tailIndent "
      u"firstLineHeadIndent minimumLineHeight maximumLineHeight defaultTabInterval "
      u"lineHeightMultiple hyphenationFactor headerLevel tighteningFactor pageBreakBefore "
      u"pageBreakAfter keepWithNext avoidsWidowsAndOrphans tabStops baseWritingDirection "
      u"paginationStyle font fontSize hasBoldFontWeight hasItalicFontStyle underlineStyle "
      u"underlinePattern underlineMask underlineColor foregroundColor textTransform";
  uint32_t bit = 0;
  for (size_t start = 0; start < keys.size(); ++bit) {
    size_t end = std::min(keys.find(u' ', start), keys.size());
    std::u16string_view key = keys.substr(start, end - start);
    start = end + 1;
    auto style = VLStyle::create();
    style->setValueForKey(Value(1), key);
    EXPECT_EQ(style->defines(), 1u << bit) << ns::toUTF8(key);
    EXPECT_EQ(test::roundTrip(style)->defines(), 1u << bit) << ns::toUTF8(key);
  }
  EXPECT_EQ(bit, VLStyleDefinesBitCount);
  auto outline = VLStyle::create();
  outline->setOutlineLevel(10);
  outline->addTabStop(ns::TextTab::create(ns::LeftTabStopType, 9));
  EXPECT_EQ(outline->defines(), VLStyleDefinesHeaderLevel | VLStyleDefinesTabStops);
}

TEST(VLStyle, CascadeAsksTheParentForWhatTheStyleDoesNotDefine) {
  auto style = VLStyle::create();
  // Without a parent, paragraph values answer the own paragraph style even with the bit clear.
  style->paragraphStyle()->setAlignment(ns::TextAlignmentRight);
  EXPECT_EQ(style->alignment(), ns::TextAlignmentRight);
  EXPECT_EQ(style->fontSize(), 12.0);

  auto parent = VLStyle::create();
  parent->setAlignment(ns::TextAlignmentCenter);
  parent->setKeepWithNext(true);
  parent->setForegroundColor(ns::Color::blueColor());
  parent->setTextTransform(VLTextTransformUppercase);
  style->setParentStyle(parent);
  EXPECT_EQ(style->alignment(), ns::TextAlignmentCenter);
  EXPECT_TRUE(style->keepWithNext());
  EXPECT_EQ(style->foregroundColor(), ns::Color::blueColor());
  EXPECT_EQ(style->textTransform(), VLTextTransformUppercase);
  style->setAlignment(ns::TextAlignmentLeft);
  EXPECT_EQ(style->alignment(), ns::TextAlignmentLeft);
}

TEST(VLStyle, OwnFontStandsBetweenOwnSizeAndParent) {
  auto parent = VLStyle::create();
  parent->setFontSize(16);
  parent->setHasBoldFontWeight(false);
  auto child = childOf(parent);
  EXPECT_EQ(child->fontSize(), 16.0);
  child->setFont(font(u"Helvetica-Bold", 11));
  EXPECT_EQ(child->fontSize(), 11.0) << "the own font's size, not the parent's";
  EXPECT_TRUE(child->hasBoldFontWeight()) << "the own font's trait, not the parent's";
  EXPECT_FALSE(child->hasItalicFontStyle());
  child->setFontSize(9);
  EXPECT_EQ(child->fontSize(), 9.0);
  EXPECT_EQ(childOf(child)->fontSize(), 9.0);
}

TEST(VLStyle, UnderlineFieldsShareOneWord) {
  auto style = VLStyle::create();
  style->setUnderlinePattern(ns::UnderlinePatternDot);
  style->setUnderlineStyle(ns::UnderlineStyleDouble);
  EXPECT_EQ(style->underlineStyleAttribute(), ns::UnderlineStyleDouble | ns::UnderlinePatternDot);

  // No underline over a parent's removes the underline, whatever pattern the child sets.
  auto parent = VLStyle::create();
  parent->setUnderlineStyle(ns::UnderlineStyleSingle);
  parent->setUnderlinePattern(ns::UnderlinePatternDash);
  auto off = childOf(parent);
  off->setUnderlineStyle(0);
  off->setUnderlinePattern(ns::UnderlinePatternDot);
  EXPECT_FALSE(appliedTo(*off)->containsKey(ns::UnderlineStyleAttributeName));
  auto byWord = childOf(parent);
  byWord->setUnderlineMask(ns::UnderlineByWordMask);
  EXPECT_EQ(appliedTo(*byWord)->objectForKey(ns::UnderlineStyleAttributeName).integerValue(),
            ns::UnderlineStyleSingle | ns::UnderlinePatternDash | ns::UnderlineByWordMask);
}

TEST(VLStyle, ApplyWritesTheChainRootFirst) {
  // Five deep: root, an empty style, middle, another empty style, leaf.
  auto root = VLStyle::create();
  root->setFont(font(u"Courier"));
  root->setHeadIndent(10);
  root->setAlignment(ns::TextAlignmentCenter);
  root->setHyphenationFactor(0.75);
  root->setTighteningFactor(0.5);
  auto middle = childOf(childOf(root));
  middle->setHasBoldFontWeight(true);
  middle->setHeadIndent(20);
  middle->setForegroundColor(nullptr);
  middle->setUnderlineColor(ns::Color::greenColor());
  auto leaf = childOf(childOf(middle));
  leaf->setFontSize(16);
  leaf->addTabStop(ns::TextTab::create(ns::LeftTabStopType, 50));

  auto attributes = plainAttributes();
  attributes->setObject(ns::Color::redColor(), ns::ForegroundColorAttributeName);
  attributes->setObject(ns::Color::redColor(), ns::BackgroundColorAttributeName);
  leaf->applyToAttributes(*attributes);
  EXPECT_EQ(fontOf(*attributes), font(u"Courier-Bold", 16));
  const ns::ParagraphStyle &paragraph = paragraphOf(*attributes);
  EXPECT_EQ(paragraph.headIndent(), 20.0);
  EXPECT_EQ(paragraph.alignment(), ns::TextAlignmentCenter);
  ASSERT_EQ(paragraph.tabStops().size(), 1u);
  EXPECT_EQ(paragraph.tabStops()[0]->location(), 50.0);
  EXPECT_EQ(paragraph.hyphenationFactor(), 0.0f) << "neither hyphenation nor tightening is applied";
  EXPECT_EQ(paragraph.tighteningFactorForTruncation(), 0.05f);
  EXPECT_EQ(attributes->objectForKey(VLParagraphStyleAttributeName).object(), leaf);
  EXPECT_FALSE(attributes->containsKey(ns::ForegroundColorAttributeName)) << "a nil colour removes";
  EXPECT_EQ(attributes->objectForKey(ns::UnderlineColorAttributeName).object(),
            ns::Color::greenColor());
  EXPECT_TRUE(attributes->containsKey(ns::BackgroundColorAttributeName)) << "not the style's";

  // Without a paragraph style the platform default is the start; without a font, nothing is.
  auto bare = ns::Dictionary::create({{u"NSFont", font(u"Helvetica")}});
  leaf->applyToAttributes(*bare);
  EXPECT_EQ(paragraphOf(*bare).headIndent(), 20.0);
  ns::Dictionary empty;
  EXPECT_EQ(failureOf([&] { VLStyle::create()->applyTextPropertiesToAttributes(empty); }),
            "Font not specified");
}

TEST(VLStyle, ApplyWritesStyleAttributesByKind) {
  auto base = VLStyle::create();
  base->setHeadIndent(10);
  auto automatic = childOf(base);
  automatic->setIsAutomaticStyle(true);
  EXPECT_EQ(appliedTo(*automatic)->objectForKey(VLParagraphStyleAttributeName).object(), base)
      << "an automatic style stands for its parent";
  auto orphan = VLStyle::create();
  orphan->setIsAutomaticStyle(true);
  auto attributes = plainAttributes();
  attributes->setObject(u"marker", VLParagraphStyleAttributeName);
  orphan->applyToAttributes(*attributes);
  EXPECT_EQ(attributes->objectForKey(VLParagraphStyleAttributeName), Value(u"marker"));
  auto nested = childOf(automatic);
  nested->setIsAutomaticStyle(true);
  EXPECT_EQ(failureOf([&] { appliedTo(*nested); }), "Parent style is automatic style");

  // A text style writes its own attribute and not its paragraph values; a paragraph style below
  // it applies the whole chain's.
  auto text = childOf(base);
  text->setStyleType(VLTextStyleType);
  text->setHeadIndent(50);
  attributes = appliedTo(*text);
  EXPECT_EQ(attributes->objectForKey(VLTextStyleAttributeName).object(), text);
  EXPECT_EQ(attributes->objectForKey(VLParagraphStyleAttributeName).object(), base);
  EXPECT_EQ(paragraphOf(*attributes).headIndent(), 10.0);
  EXPECT_EQ(paragraphOf(*appliedTo(*childOf(text))).headIndent(), 50.0);

  auto other = VLStyle::create();
  other->setStyleType(VLOtherStyleType);
  EXPECT_FALSE(appliedTo(*other)->containsKey(VLParagraphStyleAttributeName));
}

TEST(VLStyle, MatchingComparesTheStylesOwnAttributes) {
  auto root = VLStyle::defaultParagraphStyle();
  root->setFont(font(u"Courier"));
  auto leaf = childOf(childOf(root));
  leaf->parentStyle()->setHasBoldFontWeight(true);
  leaf->setFontSize(16);
  auto attributes = leaf->attributes();
  EXPECT_TRUE(leaf->matchesAttributes(*attributes));
  EXPECT_FALSE(leaf->parentStyle()->matchesAttributes(*attributes));
  attributes->setObject(ns::Color::redColor(), ns::ForegroundColorAttributeName);
  EXPECT_TRUE(leaf->matchesParagraphStyle(*attributes));
  EXPECT_FALSE(leaf->matchesTextAttributes(*attributes));
  attributes = leaf->attributes();
  attributes->setObject(font(u"Courier-BoldOblique", 16), ns::FontAttributeName);
  EXPECT_FALSE(leaf->matchesAttributes(*attributes)) << "a trait the style lacks";

  // Definitions compare fonts by family, and the underline colour only one way.
  auto a = VLStyle::create(), b = VLStyle::create();
  a->setFont(font(u"Courier", 10));
  b->setFont(font(u"Courier-Bold", 14));
  EXPECT_TRUE(a->matchesTextAttributeDefinitionsInStyle(*b));
  b->setFontSize(14);
  EXPECT_FALSE(a->matchesTextAttributeDefinitionsInStyle(*b)) << "defined bits differ";
  a->setFontSize(14);
  b->setUnderlineColor(ns::Color::redColor());
  EXPECT_TRUE(a->matchesTextAttributeDefinitionsInStyle(*b));
  EXPECT_FALSE(b->matchesTextAttributeDefinitionsInStyle(*a));
}

TEST(VLStyle, DerivedStyleIsEmptyExactlyWhenNothingDiffers) {
  EXPECT_TRUE(VLStyle::create()->isEmpty());
  auto automatic = VLStyle::create();
  automatic->setIsAutomaticStyle(true);
  EXPECT_FALSE(automatic->isEmpty());
  EXPECT_FALSE(VLStyle::defaultParagraphStyle()->isEmpty()) << "a default style is never empty";

  auto sheet = VLStylesheet::defaultStylesheet();
  for (const VLStylePtr &style : sheet->styles()) {
    auto derived = style->derivedParagraphStyleWithAttributes(*style->attributes());
    EXPECT_TRUE(derived->isEmpty()) << *style << " defines " << derived->defines();
    EXPECT_EQ(derived->parentStyle(), style);
  }
  auto heading = sheet->styleForName(u"Heading_20_1");
  using Change = void (*)(ns::Dictionary &, ns::MutableParagraphStyle &);
  const std::pair<Change, uint32_t> changes[] = {
      {[](auto &, auto &p) { p.setAlignment(ns::TextAlignmentRight); }, VLStyleDefinesAlignment},
      {[](auto &, auto &p) { p.addTabStop(ns::TextTab::create(ns::RightTabStopType, 99)); },
       VLStyleDefinesTabStops},
      {[](auto &, auto &p) { p.setHyphenationFactor(0.5f); }, VLStyleDefinesHyphenationFactor},
      {[](auto &, auto &p) { p.setHeaderLevel(4); }, VLStyleDefinesHeaderLevel},
      {[](auto &a, auto &) { a.setObject(font(u"Times-Bold", 16), u"NSFont"); },
       VLStyleDefinesFont},
      {[](auto &a, auto &) { a.setObject(font(u"Helvetica-Bold", 20), u"NSFont"); },
       VLStyleDefinesFontSize},
      {[](auto &a, auto &) { a.setObject(font(u"Helvetica-BoldOblique", 16), u"NSFont"); },
       VLStyleDefinesHasItalicFontStyle},
      {[](auto &a, auto &) { a.setObject(ns::Color::redColor(), u"NSColor"); },
       VLStyleDefinesForegroundColor},
      {[](auto &a, auto &) { a.setObject(0x101, u"NSUnderline"); },
       VLStyleDefinesUnderlineStyle | VLStyleDefinesUnderlinePattern},
      {[](auto &a, auto &) { a.setObject(0x8000, u"NSUnderline"); }, VLStyleDefinesUnderlineMask},
      {[](auto &a, auto &) { a.setObject(ns::Color::redColor(), u"NSUnderlineColor"); },
       VLStyleDefinesUnderlineColor},
  };
  for (size_t i = 0; i < std::size(changes); ++i) {
    auto attributes = heading->attributes();
    auto paragraph = paragraphOf(*attributes).mutableParagraphStyle();
    changes[i].first(*attributes, *paragraph);
    attributes->setObject(paragraph, ns::ParagraphStyleAttributeName);
    auto derived = heading->derivedParagraphStyleWithAttributes(*attributes);
    EXPECT_EQ(derived->defines(), changes[i].second) << "change " << i;
    EXPECT_TRUE(derived->matchesAttributes(*attributes)) << "change " << i;
  }

  // A plain font over a bold style is another font, not a loss of boldness.
  auto bold = VLStyle::create();
  bold->setFont(font(u"Helvetica"));
  bold->setHasBoldFontWeight(true);
  auto attributes = plainAttributes();
  attributes->setObject(font(u"Times-Roman"), ns::FontAttributeName);
  EXPECT_EQ(bold->derivedTextStyleWithAttributes(*attributes)->defines(), VLStyleDefinesFont);
}

TEST(VLStyle, DerivedOperationsSetTypeParentAndClass) {
  auto sheet = VLStylesheet::defaultStylesheet();
  auto style = sheet->styleForName(u"Body_20_Text");
  auto attributes = style->attributes();
  attributes->setObject(ns::Color::redColor(), ns::ForegroundColorAttributeName);
  auto paragraph = paragraphOf(*attributes).mutableParagraphStyle();
  paragraph->setHeadIndent(7);
  attributes->setObject(paragraph, ns::ParagraphStyleAttributeName);

  auto diff = style->diffWithAttributes(*attributes);
  EXPECT_EQ(diff->defines(), VLStyleDefinesForegroundColor | VLStyleDefinesHeadIndent);
  EXPECT_EQ(diff->parentStyle(), nullptr);
  EXPECT_EQ(diff->styleType(), VLParagraphStyleType);
  auto textDiff = style->diffWithTextAttributes(*attributes);
  EXPECT_EQ(textDiff->defines(), VLStyleDefinesForegroundColor);
  EXPECT_EQ(textDiff->styleType(), VLTextStyleType);
  auto paragraphOnly = style->derivedParagraphOnlyStyleWithAttributes(*attributes);
  EXPECT_EQ(paragraphOnly->defines(), VLStyleDefinesHeadIndent);
  EXPECT_EQ(paragraphOnly->parentStyle(), style);
  auto text = style->derivedTextStyleWithAttributes(*attributes);
  EXPECT_EQ(text->styleType(), VLTextStyleType);
  EXPECT_EQ(text->parentStyle(), style);
  EXPECT_NE(std::dynamic_pointer_cast<VLGraphicStyle>(
                VLGraphicStyle::defaultGraphicStyle()->diffWithAttributes(*attributes)),
            nullptr);
}

TEST(VLStyle, ResetsFollowTheirMasks) {
  constexpr uint32_t resetBits =
      0x7fffffffu & ~(VLStyleDefinesBaseWritingDirection | VLStyleDefinesUnderlinePattern |
                      VLStyleDefinesUnderlineMask);
  auto style = VLStyle::create();
  style->resetToDefaultProperties();
  EXPECT_EQ(style->defines(), resetBits);
  EXPECT_EQ(style->font(), ns::Font::userFontOfSize(12));
  style->resetCharacterStyle();
  EXPECT_EQ(style->defines() & 0x3fc00000u, 0u) << "bits 22 to 29 cleared";
  EXPECT_TRUE(style->definesFont());
  EXPECT_TRUE(style->definesTextTransform());

  auto kept = VLStyle::create();
  kept->setFontSize(20);
  kept->setPageBreakBefore(true);
  kept->ensureDefaultProperties();
  EXPECT_EQ(kept->fontSize(), 20.0);
  EXPECT_TRUE(kept->pageBreakBefore());
  EXPECT_EQ(kept->defines(), resetBits);
  kept->addTabStop(ns::TextTab::create(ns::LeftTabStopType, 3));
  kept->resetParagraphStyle();
  EXPECT_TRUE(kept->tabStops().empty());
  EXPECT_TRUE(kept->definesTabStops()) << "the paragraph reset leaves the defines word";
}

TEST(VLStyle, DefaultStyleIsNewEachTimeAndNamedInTheUsersLanguage) {
  auto a = VLStyle::defaultParagraphStyle();
  EXPECT_NE(a, VLStyle::defaultParagraphStyle());
  EXPECT_EQ(a->styleName(), u"Default_20_Style");
  EXPECT_EQ(a->displayName(), u"Default Style");
}

TEST(VLStyle, StyleNamesKeepXMLNameCharactersOnly) {
  const std::pair<std::u16string_view, std::u16string_view> cases[] = {
      {u"Scene Heading", u"Scene_20_Heading"},
      {u"1st Act", u"_31_st_20_Act"},
      {u" Lead", u"_20_Lead"},
      {u"Caf\u00e9 Cr\u00e8me", u"Caf\u00e9_20_Cr\u00e8me"},
      {u"a.b-c_d", u"a.b-c_d"},
      {u".dot", u"_2e_dot"},
      {u"Tab\there", u"Tab_9_here"},
      {u"\U0001F600", u"_d83d__de00_"},
  };
  for (const auto &[display, name] : cases)
    EXPECT_EQ(VLStyle::styleNameForDisplayName(display), name);
  EXPECT_EQ(VLStyle::styleNameForDisplayName(u""), std::nullopt);
  EXPECT_EQ(VLStyle::styleNameForDisplayName(std::nullopt), std::nullopt);
}

TEST(VLStyle, LineSpacingModesBothWays) {
  for (auto mode : {0, 1, 2, 3, 4, 5, 6}) {
    auto style = VLStyle::create();
    style->setLineSpacingMode(mode, 14.0);
    ns::MutableParagraphStyle paragraph;
    setLineSpacingMode(paragraph, mode, 14.0);
    Value info, paragraphInfo;
    int64_t expected = mode > 5 ? 0 : mode;
    EXPECT_EQ(style->lineSpacingModeWithInfo(&info), expected);
    EXPECT_EQ(lineSpacingModeWithInfo(paragraph, &paragraphInfo), expected);
    EXPECT_EQ(info, paragraphInfo);
    EXPECT_EQ(info.isNil(), expected < 3) << "mode " << mode;
    EXPECT_EQ(style->minimumLineHeight(), paragraph.minimumLineHeight());
  }
  struct Reading {
    double multiple, minimum, maximum;
    int64_t mode;
    Value info;
  };
  const Reading readings[] = {
      {1.5, 12, 12, 1, {}}, {3, 0, 0, 5, 3.0},    {0, 12, 12, 4, 12.0}, {0, 0, 5, 3, 0.0},
      {0, 12, 0, 3, 12.0},  {0, 12, 20, 3, 12.0}, {0, -1, -1, 0, {}},   {0, 0, 0, 0, {}},
  };
  for (const Reading &r : readings) {
    Value info = u"untouched";
    EXPECT_EQ(lineSpacingModeForLineHeights({r.multiple, r.minimum, r.maximum}, &info), r.mode)
        << r.multiple << " " << r.minimum << " " << r.maximum;
    EXPECT_EQ(info, r.info);
  }
  EXPECT_EQ(lineHeightsForLineSpacingMode(VLLineSpacingExactly, Value()).minimumLineHeight, 0.0);
}

TEST(VLStyle, OutlineLevelIsTheOwnHeaderLevelWithTenForNone) {
  auto heading = VLStyle::create();
  heading->setHeaderLevel(1);
  auto child = childOf(heading);
  EXPECT_EQ(child->headerLevel(), 1);
  EXPECT_EQ(child->outlineLevel(), 10);
  child->setOutlineLevel(10);
  EXPECT_EQ(child->headerLevel(), 0);
  EXPECT_EQ(heading->compareOutlineLevel(*child), ns::OrderedAscending);
  EXPECT_EQ(child->compareOutlineLevel(*heading), ns::OrderedDescending);
  EXPECT_EQ(child->compareOutlineLevel(*VLStyle::create()), ns::OrderedSame);
}

TEST(VLStyle, PaginationQueries) {
  // Display names are matched without case; a name only starting like one is no match.
  const std::pair<std::u16string_view, int64_t> proposals[] = {
      {u"scene heading", 1}, {u"Character Name", 3}, {u"dialog", 5},
      {u"Transition", 7},    {u"Characters", 0},
  };
  for (const auto &[name, pagination] : proposals) {
    auto style = VLStyle::create();
    style->setDisplayName(std::u16string(name));
    EXPECT_EQ(style->proposedScreenplayPaginationStyle(), pagination);
  }
  EXPECT_EQ(VLStyle::create()->proposedScreenplayPaginationStyle(), 0);

  for (int64_t pagination = 0; pagination <= 7; ++pagination) {
    auto style = VLStyle::create();
    style->setPaginationStyle(pagination);
    style->setKeepWithNext(true);
    EXPECT_EQ(style->avoidsWidowsAndOrphansGivenPagiationStyle(), pagination != 0);
    bool keeps = pagination == 0 || pagination == 1 || pagination == 3 || pagination == 4;
    EXPECT_EQ(style->keepWithNextGivenPagiationStyle(), keeps) << pagination;
  }
}

TEST(VLStyle, CopiesShareOnlyLinksAndEqualityComparesTheChainButNotLinks) {
  auto sheet = VLStylesheet::defaultStylesheet();
  auto heading = sheet->styleForName(u"Heading_20_1");
  heading->setObject(u"value", u"key");
  auto copy = ns::copyOf(*heading);
  EXPECT_EQ(copy->parentStyle(), heading->parentStyle());
  EXPECT_EQ(copy->nextStyle(), heading->nextStyle());
  EXPECT_EQ(copy->tabStyle(), heading->tabStyle());
  copy->setNextStyle(nullptr);
  EXPECT_TRUE(heading->isEqualToStyle(copy));
  copy->setParentStyle(VLStyle::defaultParagraphStyle());
  EXPECT_TRUE(heading->isEqualToStyle(copy)) << "equal parents suffice";
  copy->parentStyle()->setHeadIndent(3);
  EXPECT_FALSE(heading->isEqualToStyle(copy));
  copy->setParentStyle(heading->parentStyle());
  copy->setHeadIndent(3);
  EXPECT_FALSE(heading->isEqualToStyle(copy));
  EXPECT_EQ(heading->paragraphStyle()->headIndent(), 0.0) << "the paragraph style is not shared";
  copy->setObject(u"changed", u"key");
  EXPECT_EQ(heading->objectForKey(u"key"), Value(u"value"));
  EXPECT_FALSE(heading->isEqualToStyle(nullptr));
  EXPECT_FALSE(heading->isEqualToStyle(childOf(heading)));
  EXPECT_NE(std::dynamic_pointer_cast<VLGraphicStyle>(
                ns::copyOf<VLStyle>(*VLGraphicStyle::defaultGraphicStyle())),
            nullptr);
}

TEST(VLStyle, ArchiveKeepsValuesAndRingsButLosesPageBreakAfter) {
  auto style = VLStyle::create();
  style->setFont(font(u"Times-Roman", 13));
  style->setHasItalicFontStyle(true);
  style->setUnderlineStyle(ns::UnderlineStyleDouble);
  style->setForegroundColor(ns::Color::redColor());
  style->setPageBreakAfter(true);
  style->setTailIndent(-20);
  style->setStyleType(VLTextStyleType);
  style->setNextStyle(style);
  ns::Data archive = ns::KeyedArchiver::archivedDataWithRootObject(style);
  style->setNextStyle(nullptr);

  auto decoded = ns::KeyedUnarchiver::unarchiveObjectWithData(archive).as<VLStyle>();
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->nextStyle(), decoded);
  decoded->setNextStyle(nullptr);
  EXPECT_TRUE(decoded->isEqualToStyle(style)) << "equality leaves page breaks after out";
  EXPECT_EQ(decoded->defines(), style->defines());
  EXPECT_FALSE(decoded->pageBreakAfter()) << "written, never read";
}

TEST(VLStyle, TextDefinitionSummarizesWhatTheStyleAddsToItsParent) {
  auto child = childOf(VLStyle::defaultParagraphStyle());
  EXPECT_EQ(child->textDefinition(), u"Default Style") << "no \" + \" before nothing";
  child->setFont(ns::Font::fontWithName(u"Courier", 10));
  child->setFontSize(12);
  EXPECT_EQ(child->textDefinition(), u"Default Style + Font: Courier, 12.0 pt");

  auto style = VLStyle::create();
  style->setHasBoldFontWeight(false);
  style->setForegroundColor(ns::Color::redColor());
  style->setHeaderLevel(0);
  style->setAlignment(ns::TextAlignmentCenter);
  style->setPaginationStyle(VLDialoguePagination);
  style->setPageBreakBefore(true);
  EXPECT_EQ(style->textDefinition(),
            u"Not Bold, Color:#ff0000, Level: Body Text, Centered, Paginate as Dialog")
      << "a pagination class hides the page break items";
}

TEST(VLStyle, WalksEndAtAParentLoopAndAtTheCascadeDepth) {
  auto a = VLStyle::create();
  auto b = childOf(a);
  a->setParentStyle(b);
  b->setFontSize(20);
  EXPECT_EQ(a->fontSize(), 20.0);
  EXPECT_EQ(a->alignment(), ns::ParagraphStyle::defaultParagraphStyle()->alignment());
  EXPECT_TRUE(a->attributes());
  EXPECT_FALSE(a->isDescendantOfStyle(VLStyle::create()));
  EXPECT_NO_THROW((void)a->isEqualToStyle(b));
  a->setParentStyle(nullptr);
  EXPECT_TRUE(b->isDescendantOfStyle(a));
  EXPECT_FALSE(a->isDescendantOfStyle(a));
  EXPECT_FALSE(a->isDescendantOfStyle(nullptr));

  // A chain deeper than any walk goes is cut: what lies beyond is not seen.
  auto root = VLStyle::create();
  root->setFontSize(30);
  VLStylePtr leaf = root;
  for (size_t i = 1; i < VLStyleMaxCascadeDepth; ++i)
    leaf = childOf(leaf);
  EXPECT_EQ(leaf->fontSize(), 30.0);
  EXPECT_TRUE(leaf->isDescendantOfStyle(root));
  leaf = childOf(leaf);
  EXPECT_EQ(leaf->fontSize(), 12.0);
  EXPECT_FALSE(leaf->isDescendantOfStyle(root));
}
