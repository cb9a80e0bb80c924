// List styles: keywords and marker formats both ways, text lists, level lookup, matching
// and deriving, indent and tab layout, copying and archiving.
#include "model/VLConstants.h"
#include "model/VLListAdditions.h"
#include "model/VLListLevelProperties.h"
#include "model/VLListLevelStyle.h"
#include "model/VLListStyle.h"
#include "ns/Array.h"
#include "ns/Assert.h"
#include "ns/AttributeNames.h"
#include "ns/KeyedArchiver.h"
#include "ns/ParagraphStyle.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <functional>

using namespace vl;

namespace {

ns::TextListPtr list(std::u16string format) {
  return ns::TextList::create(std::move(format), 0);
}

VLListLevelStylePtr levelFor(std::u16string format) {
  return VLListLevelStyle::listLevelStyleWithTextList(list(std::move(format)));
}

std::shared_ptr<VLListNumberLevelStyle> asNumber(const VLListLevelStylePtr &level) {
  return std::dynamic_pointer_cast<VLListNumberLevelStyle>(level);
}

std::shared_ptr<VLListBulletLevelStyle> asBullet(const VLListLevelStylePtr &level) {
  return std::dynamic_pointer_cast<VLListBulletLevelStyle>(level);
}

template <class Level> std::shared_ptr<Level> makeLevel(uint64_t level) {
  auto made = std::make_shared<Level>();
  made->setLevel(level);
  return made;
}

std::shared_ptr<VLListNumberLevelStyle> numberLevel(uint64_t level, std::u16string format,
                                                    std::u16string suffix = u".") {
  auto made = makeLevel<VLListNumberLevelStyle>(level);
  made->setNumFormat(std::move(format));
  made->setNumSuffix(std::move(suffix));
  return made;
}

std::vector<double> tabLocations(const ns::ParagraphStyle &style) {
  std::vector<double> locations;
  for (const auto &tab : style.tabStops())
    locations.push_back(tab->location());
  return locations;
}

std::vector<std::u16string> formats(const std::vector<ns::TextListPtr> &lists) {
  std::vector<std::u16string> out;
  for (const auto &each : lists)
    out.push_back(each->markerFormat());
  return out;
}

std::string failureOf(const std::function<void()> &operation) {
  try {
    operation();
  } catch (const ns::InternalInconsistencyException &e) {
    return e.description();
  }
  return "no failure";
}

// A list style with a decimal level 1 and a square bullet level 2, added in reverse order.
VLListStylePtr twoLevelStyle() {
  auto style = VLListStyle::create();
  style->setStyleName(u"L1");
  auto bullet = makeLevel<VLListBulletLevelStyle>(2);
  bullet->setBulletChar(u"\u25AA");
  style->addListLevelStyle(bullet);
  style->addListLevelStyle(numberLevel(1, u"1"));
  return style;
}

} // namespace

TEST(VLListKeywords, ClassTableMakesNumberAndBulletLevels) {
  const auto &classes = VLListLevelStyle::listLevelClassByKeyword();
  EXPECT_EQ(classes.size(), 16u);
  for (auto keyword :
       {u"decimal", u"upper-roman", u"lower-roman", u"upper-latin", u"upper-alpha", u"lower-latin",
        u"lower-alpha", u"octal", u"upper-hexadecimal", u"lower-hexadecimal"})
    EXPECT_EQ(classes.at(keyword), &VLListNumberLevelStyle::createWithTextList);
  for (auto keyword : {u"square", u"hyphen", u"disc", u"diamond", u"check", u"circle"})
    EXPECT_EQ(classes.at(keyword), &VLListBulletLevelStyle::createWithTextList);
  EXPECT_FALSE(classes.contains(u"box"));
  EXPECT_EQ(&classes, &VLListLevelStyle::listLevelClassByKeyword()) << "made once";
}

TEST(VLListKeywords, FormatTableHasNumbersBulletsAndBox) {
  const auto &formats = VLListLevelStyle::formatByKeyword();
  const std::pair<std::u16string, std::u16string> rows[] = {
      {u"decimal", u"1"},     {u"upper-roman", u"I"},  {u"lower-roman", u"i"},
      {u"upper-latin", u"A"}, {u"upper-alpha", u"A"},  {u"lower-latin", u"a"},
      {u"lower-alpha", u"a"}, {u"square", u"\u25AA"},  {u"hyphen", u"\u2043"},
      {u"disc", u"\u2022"},   {u"diamond", u"\u25C6"}, {u"check", u"\u2713"},
      {u"circle", u"\u25E6"}, {u"box", u"\u25AB"}};
  EXPECT_EQ(formats.size(), std::size(rows));
  for (const auto &[keyword, value] : rows)
    EXPECT_EQ(formats.at(keyword), value) << ns::toUTF8(keyword);
  EXPECT_FALSE(formats.contains(u"octal"));
  EXPECT_FALSE(formats.contains(u"lower-hexadecimal"));
}

TEST(VLListKeywords, NumberFormatsMapToOneKeywordEach) {
  EXPECT_EQ(VLListNumberLevelStyle::keywordForNumFormat(u"a"), u"lower-latin");
  EXPECT_EQ(VLListNumberLevelStyle::keywordForNumFormat(u"A"), u"upper-latin");
  EXPECT_EQ(VLListNumberLevelStyle::keywordForNumFormat(u"i"), u"lower-roman");
  EXPECT_EQ(VLListNumberLevelStyle::keywordForNumFormat(u"I"), u"upper-roman");
  EXPECT_EQ(VLListNumberLevelStyle::keywordForNumFormat(u"1"), u"decimal");
  EXPECT_FALSE(VLListNumberLevelStyle::keywordForNumFormat(u"\u25AB"));
  EXPECT_FALSE(VLListNumberLevelStyle::keywordForNumFormat(u"11"));
  EXPECT_FALSE(VLListNumberLevelStyle::keywordForNumFormat(u""));
}

TEST(VLListKeywords, BulletCharactersMapBothWays) {
  for (auto keyword : {u"square", u"hyphen", u"disc", u"diamond", u"check", u"circle", u"box"}) {
    std::u16string bullet = VLListBulletLevelStyle::bulletCharForKeyword(keyword);
    EXPECT_EQ(bullet, VLListLevelStyle::formatByKeyword().at(keyword));
    EXPECT_EQ(VLListBulletLevelStyle::keywordForBulletChar(bullet[0]), keyword);
  }
  EXPECT_EQ(VLListBulletLevelStyle::keywordForBulletChar(u'*'), u"disc");
  EXPECT_EQ(VLListBulletLevelStyle::bulletCharForKeyword(u"decimal"), u"\u2022");
  EXPECT_EQ(VLListBulletLevelStyle::bulletCharForKeyword(u"Disc"), u"\u2022");
}

TEST(VLListMarkerFormat, ParsesPrefixKeywordAndSuffix) {
  std::optional<std::u16string> prefix = u"stale", suffix = u"stale";
  EXPECT_EQ(VLListLevelStyle::keywordForList(list(u"({lower-alpha})"), &prefix, &suffix),
            u"lower-alpha");
  EXPECT_EQ(prefix, u"(");
  EXPECT_EQ(suffix, u")");

  EXPECT_FALSE(VLListLevelStyle::keywordForList(list(u"no braces"), &prefix, &suffix));
  EXPECT_FALSE(prefix) << "no brace: the prefix stays nil";
  EXPECT_EQ(suffix, u"no braces");

  EXPECT_FALSE(VLListLevelStyle::keywordForList(list(u"a{decimal"), &prefix, &suffix));
  EXPECT_FALSE(prefix);
  EXPECT_FALSE(suffix) << "an open brace without a close: everything nil";

  EXPECT_EQ(VLListLevelStyle::keywordForList(list(u"}{x}{y}"), &prefix, &suffix), u"x")
      << "the first } after the first {";
  EXPECT_EQ(prefix, u"}");
  EXPECT_EQ(suffix, u"{y}");
  EXPECT_EQ(VLListLevelStyle::keywordForList(list(u"{ decimal }"), nullptr, nullptr), u" decimal ")
      << "not trimmed";
  EXPECT_FALSE(VLListLevelStyle::keywordForList(nullptr, &prefix, &suffix));
  EXPECT_FALSE(suffix);
}

TEST(VLListMarkerFormat, LevelsFromListsKeepPrefixAndSuffix) {
  auto alpha = asNumber(levelFor(u"({lower-alpha})"));
  ASSERT_TRUE(alpha);
  EXPECT_EQ(alpha->numFormat(), u"a");
  EXPECT_EQ(alpha->numPrefix(), u"(");
  EXPECT_EQ(alpha->numSuffix(), u")");
  EXPECT_EQ(alpha->markerFormat(), u"({lower-latin})") << "alpha and latin share one format";

  EXPECT_EQ(levelFor(u"Part {upper-roman}:")->markerFormat(), u"Part {upper-roman}:");
  EXPECT_EQ(levelFor(u"{upper-alpha}")->markerFormat(), u"{upper-latin}");
  EXPECT_EQ(levelFor(u"{decimal}.")->markerFormat(), u"{decimal}.");

  auto square = asBullet(levelFor(u"[{square}]"));
  ASSERT_TRUE(square);
  EXPECT_EQ(square->bulletChar(), u"\u25AA");
  EXPECT_EQ(square->markerFormat(), u"[{square}]");
  for (auto keyword : {u"hyphen", u"disc", u"diamond", u"check", u"circle"}) {
    std::u16string format = u"{" + std::u16string(keyword) + u"}";
    EXPECT_EQ(levelFor(format)->markerFormat(), format);
  }
}

TEST(VLListMarkerFormat, FormatsWithoutKeywordBecomeNumberLevels) {
  auto plain = asNumber(levelFor(u"no braces"));
  ASSERT_TRUE(plain);
  EXPECT_FALSE(plain->numFormat());
  EXPECT_EQ(plain->markerFormat(), u"no braces");

  auto octal = asNumber(levelFor(u"{octal})"));
  ASSERT_TRUE(octal);
  EXPECT_FALSE(octal->numFormat());
  EXPECT_EQ(octal->markerFormat(), u")") << "no format value, so no keyword";

  auto unknown = asNumber(levelFor(u"<{stars}>"));
  ASSERT_TRUE(unknown);
  EXPECT_EQ(unknown->markerFormat(), u"<>");
  EXPECT_TRUE(asNumber(VLListLevelStyle::listLevelStyleWithTextList(nullptr)));
}

TEST(VLListMarkerFormat, BoxReadsAsNumberLevelWithoutKeyword) {
  auto box = asNumber(levelFor(u"{box} "));
  ASSERT_TRUE(box) << "box has a format value but no class";
  EXPECT_EQ(box->numFormat(), u"\u25AB");
  EXPECT_EQ(box->markerFormat(), u" ");

  auto bullet = asBullet(VLListBulletLevelStyle::createWithTextList(list(u"{box}")));
  EXPECT_EQ(bullet->bulletChar(), u"\u25AB");
  EXPECT_EQ(bullet->markerFormat(), u"{box}");
}

TEST(VLListMarkerFormat, BulletWithoutCharacterHasNoKeyword) {
  auto bullet = makeLevel<VLListBulletLevelStyle>(1);
  EXPECT_EQ(bullet->markerFormat(), u"{disc}") << "a new bullet level holds U+2022";
  bullet->setBulletChar(u"*");
  EXPECT_EQ(bullet->markerFormat(), u"{disc}");
  bullet->setNumPrefix(u"<");
  bullet->setBulletChar(std::nullopt);
  EXPECT_EQ(bullet->markerFormat(), u"<");
  bullet->setBulletChar(u"");
  EXPECT_EQ(bullet->markerFormat(), u"<");
  EXPECT_FALSE(
      asBullet(VLListBulletLevelStyle::createWithTextList(list(u"{stars}")))->bulletChar());
}

TEST(VLListMarkerFormat, AbstractBaseFailsItsChecks) {
  VLListLevelStyle base;
  EXPECT_EQ(failureOf([&] { base.markerFormat(); }), "Subclass responsibility");
  EXPECT_EQ(failureOf([] { VLListLevelStyle::createWithTextList(list(u"{disc}")); }),
            "subclass responsibility");
}

TEST(VLListTextList, IsMadeFromTheMarkerFormatAndKept) {
  auto level = numberLevel(1, u"a", u")");
  const auto &first = level->textList();
  EXPECT_EQ(first->markerFormat(), u"{lower-latin})");
  EXPECT_EQ(first->listOptions(), 0u);
  EXPECT_EQ(first->markerForItemNumber(2), u"b)");
  EXPECT_EQ(level->textList().get(), first.get());
  level->setNumFormat(u"I");
  EXPECT_EQ(level->textList()->markerForItemNumber(4), u"IV)") << "a new format, a new list";
  level->setValueForKey(ns::Value(u"("), u"numPrefix");
  EXPECT_EQ(level->textList()->markerFormat(), u"({upper-roman})");
}

TEST(VLListTextList, PreambleIsTheMarkerBetweenTabs) {
  auto attributes = ns::Dictionary::create({{u"key", ns::Value(u"value")}});
  auto preamble = numberLevel(1, u"i", u")")->preambleForItemNumber(4, attributes);
  EXPECT_EQ(preamble->string(), u"\tiv)\t");
  ns::Range run;
  EXPECT_EQ(preamble->attributesAtIndex(0, &run)->objectForKey(u"key"), ns::Value(u"value"));
  EXPECT_EQ(run.length, 5u);
  EXPECT_EQ(makeLevel<VLListBulletLevelStyle>(1)->preambleForItemNumber(9, nullptr)->string(),
            u"\t\u2022\t");
}

TEST(VLListTextList, OrderedListsHaveNumberKeywords) {
  for (auto format : {u"{decimal}.", u"({ lower-roman })", u"{upper-alpha}", u"{lower-latin}",
                      u"{octal}", u"{upper-hexadecimal}", u"x{lower-hexadecimal}y"})
    EXPECT_TRUE(isOrderedList(*list(format))) << ns::toUTF8(format);
  for (auto format : {u"{disc}", u"{box}", u"decimal", u"{decimal", u"", u"{Decimal}", u"{}"})
    EXPECT_FALSE(isOrderedList(*list(format))) << ns::toUTF8(format);
}

TEST(VLListStyleLevels, AddingPointsBackAndSortsByLevel) {
  auto style = twoLevelStyle();
  for (const auto &level : style->listLevels())
    EXPECT_EQ(level->listStyle(), style);
  EXPECT_EQ(style->listLevels()[0]->level(), 2u) << "kept in the order put in";
  auto sorted = style->listLevelStyles();
  ASSERT_EQ(sorted.size(), 2u);
  EXPECT_EQ(sorted[0]->level(), 1u);
  EXPECT_EQ(sorted[1]->level(), 2u);

  auto second = numberLevel(1, u"i");
  style->addListLevelStyle(second);
  EXPECT_EQ(style->listLevels().size(), 3u) << "no test for a level already there";
  EXPECT_EQ(style->listLevelStyleForLevel(1), style->listLevels()[1]) << "first in array order";
  sorted = style->listLevelStyles();
  EXPECT_EQ(sorted[0], style->listLevels()[1]);
  EXPECT_EQ(sorted[1], second) << "equal levels keep their order";
  EXPECT_FALSE(style->listLevelStyleForLevel(7));
}

TEST(VLListStyleLevels, SettingALevelReplacesWithoutBackReference) {
  auto style = twoLevelStyle();
  auto replacement = numberLevel(2, u"A");
  style->setListLevelStyle(replacement, 2);
  ASSERT_EQ(style->listLevels().size(), 2u);
  EXPECT_EQ(style->listLevels().back(), replacement);
  EXPECT_EQ(style->listLevelStyleForLevel(2), replacement);
  EXPECT_FALSE(replacement->listStyle());

  auto other = VLListStyle::create();
  other->addListLevelStyle(replacement);
  style->setListLevelStyle(replacement, 2);
  EXPECT_EQ(replacement->listStyle(), other) << "the back reference stays as it was";

  EXPECT_EQ(failureOf([&] { style->setListLevelStyle(numberLevel(3, u"1"), 2); }),
            "Style level must equal level");
  EXPECT_EQ(style->listLevels().size(), 2u);
}

TEST(VLListStyleLevels, BackReferenceDoesNotOwn) {
  auto level = numberLevel(1, u"1");
  {
    auto style = VLListStyle::create();
    style->addListLevelStyle(level);
    EXPECT_EQ(level->listStyle(), style);
  }
  EXPECT_FALSE(level->listStyle());
}

TEST(VLListStyleLevels, TextListsPerLevel) {
  auto style = twoLevelStyle();
  EXPECT_EQ(style->textListForLevel(2)->markerFormat(), u"{square}");
  EXPECT_EQ(style->textListForLevel(2), style->listLevelStyleForLevel(2)->textList());
  auto missing = style->textListForLevel(5);
  EXPECT_EQ(missing->markerFormat(), u"{decimal}");
  EXPECT_EQ(missing->listOptions(), 0u);
  EXPECT_NE(style->textListForLevel(5), missing) << "a new list each time";

  EXPECT_TRUE(style->textListsForLevel(0).empty());
  EXPECT_EQ(formats(style->textListsForLevel(3)),
            (std::vector<std::u16string>{u"{decimal}.", u"{square}", u"{decimal}"}));
}

TEST(VLListStyleMatching, ComparesMarkerFormatsLevelByLevel) {
  auto style = twoLevelStyle();
  EXPECT_TRUE(style->matchesTextLists({}));
  EXPECT_TRUE(style->matchesTextLists({list(u"{decimal}.")}));
  EXPECT_TRUE(style->matchesTextLists({list(u"{decimal}."), list(u"{square}")}));
  EXPECT_FALSE(style->matchesTextLists({list(u"{decimal}."), list(u"{disc}")}));
  EXPECT_FALSE(style->matchesTextLists({list(u"{decimal}")}));
  EXPECT_FALSE(
      style->matchesTextLists({list(u"{decimal}."), list(u"{square}"), list(u"{decimal}")}))
      << "a level the style lacks is a difference, even with the fallback format";
  EXPECT_FALSE(style->matchesTextLists({nullptr}));
}

TEST(VLListStyleMatching, DerivingReplacesDifferingLevelsInACopy) {
  auto style = twoLevelStyle();
  auto derived = style->derivedLevelStyleWithTextLists({list(u"{decimal}."), list(u"({circle})")});
  ASSERT_NE(derived, style);
  EXPECT_EQ(derived->styleName(), u"L1");
  EXPECT_EQ(style->textListForLevel(2)->markerFormat(), u"{square}") << "the original stays";

  auto circle = asBullet(derived->listLevelStyleForLevel(2));
  ASSERT_TRUE(circle);
  EXPECT_EQ(circle->level(), 2u);
  EXPECT_EQ(circle->markerFormat(), u"({circle})");
  EXPECT_FALSE(circle->listStyle()) << "put in with setListLevelStyle";

  // The unchanged number level was copied, and a copied number level keeps only its level.
  auto kept = asNumber(derived->listLevelStyleForLevel(1));
  ASSERT_TRUE(kept);
  EXPECT_EQ(kept->listStyle(), derived);
  EXPECT_FALSE(kept->numFormat());
  EXPECT_FALSE(derived->matchesTextLists({list(u"{decimal}.")}));
  auto again = derived->derivedLevelStyleWithTextLists({list(u"{decimal}.")});
  EXPECT_EQ(again->textListForLevel(1)->markerFormat(), u"{decimal}.");

  auto added = style->derivedLevelStyleWithTextLists(
      {list(u"{decimal}."), list(u"{square}"), list(u"{lower-roman}")});
  EXPECT_EQ(added->listLevels().size(), 3u);
  EXPECT_EQ(added->listLevelStyleForLevel(3)->markerFormat(), u"{lower-roman}");
}

TEST(VLListLayout, LevelSetsIndentTabsListsAndStyle) {
  auto style = twoLevelStyle();
  auto attributes = ns::Dictionary::create();
  style->listLevelStyleForLevel(2)->applyToAttributes(*attributes);

  auto paragraph =
      attributes->objectForKey(ns::ParagraphStyleAttributeName).as<ns::ParagraphStyle>();
  ASSERT_TRUE(paragraph) << "the default paragraph style when there was none";
  EXPECT_EQ(paragraph->headIndent(), 72.0);
  std::vector<double> tabs = {47.0, 72.0};
  for (double location = 84; location <= 336; location += 28)
    tabs.push_back(location);
  EXPECT_EQ(tabLocations(*paragraph), tabs) << "default stops up to the head indent go";
  EXPECT_EQ(formats(paragraph->textLists()),
            (std::vector<std::u16string>{u"{decimal}.", u"{square}"}));
  EXPECT_EQ(attributes->objectForKey(VLListStyleAttributeName).object(), style);
}

TEST(VLListLayout, LevelIndentStartsAtTheFirstLineInSinglePrecision) {
  auto style = twoLevelStyle();
  auto start = ns::MutableParagraphStyle::create();
  start->setFirstLineHeadIndent(0.2);
  start->setTabStops({ns::TextTab::create(ns::RightTabStopType, 36.2),
                      ns::TextTab::create(ns::LeftTabStopType, 36.3)});
  auto attributes =
      ns::Dictionary::create({{std::u16string(ns::ParagraphStyleAttributeName), ns::Value(start)}});
  style->listLevelStyleForLevel(1)->applyToAttributes(*attributes);

  auto paragraph =
      attributes->objectForKey(ns::ParagraphStyleAttributeName).as<ns::ParagraphStyle>();
  ASSERT_NE(paragraph, start) << "works on a copy";
  EXPECT_EQ(start->headIndent(), 0.0);
  double headIndent = static_cast<float>(36.2);
  EXPECT_GT(headIndent, 36.2);
  EXPECT_EQ(paragraph->headIndent(), headIndent);
  EXPECT_EQ(tabLocations(*paragraph), (std::vector<double>{11.2, headIndent, 36.3}))
      << "the stop at 36.2 is not above the single-precision indent";
}

TEST(VLListLayout, AutomaticOrMissingListStyleIsNotNamed) {
  auto style = twoLevelStyle();
  style->setIsAutomaticStyle(true);
  auto attributes = ns::Dictionary::create();
  style->listLevelStyleForLevel(1)->applyToAttributes(*attributes);
  EXPECT_FALSE(attributes->containsKey(VLListStyleAttributeName));
  EXPECT_EQ(attributes->objectForKey(ns::ParagraphStyleAttributeName)
                .as<ns::ParagraphStyle>()
                ->textLists()
                .size(),
            1u);

  auto loose = numberLevel(3, u"1");
  attributes->setObject(ns::Value(style), VLListStyleAttributeName);
  loose->applyToAttributes(*attributes);
  auto paragraph =
      attributes->objectForKey(ns::ParagraphStyleAttributeName).as<ns::ParagraphStyle>();
  EXPECT_TRUE(paragraph->textLists().empty()) << "no list style, no lists";
  EXPECT_EQ(paragraph->headIndent(), 108.0);
  EXPECT_FALSE(attributes->containsKey(VLListStyleAttributeName));
}

TEST(VLListLayout, ApplyListsUndoesTheOldLayout) {
  auto paragraph = ns::ParagraphStyle::defaultParagraphStyle()->mutableParagraphStyle();
  std::vector<ns::TextListPtr> two = {list(u"{decimal}."), list(u"{disc}")};
  applyLists(*paragraph, &two);
  EXPECT_EQ(paragraph->headIndent(), 72.0);
  EXPECT_EQ(tabLocations(*paragraph)[0], 47.0);
  EXPECT_EQ(tabLocations(*paragraph)[1], 72.0);
  EXPECT_EQ(tabLocations(*paragraph)[2], 84.0);

  std::vector<ns::TextListPtr> one = {list(u"{decimal}.")};
  applyLists(*paragraph, &one);
  EXPECT_EQ(paragraph->headIndent(), 36.0);
  std::vector<double> tabs = {11.0, 36.0, 56.0};
  for (double location = 84; location <= 336; location += 28)
    tabs.push_back(location);
  EXPECT_EQ(tabLocations(*paragraph), tabs) << "the default stop at 56 comes back";
  EXPECT_EQ(paragraph->textLists(), one);

  applyLists(*paragraph, nullptr);
  EXPECT_EQ(paragraph->headIndent(), 0.0);
  EXPECT_TRUE(paragraph->textLists().empty());
  EXPECT_EQ(tabLocations(*paragraph), tabLocations(*ns::ParagraphStyle::defaultParagraphStyle()));
}

TEST(VLListLayout, ApplyListsCountsFromTheFirstLineIndent) {
  auto paragraph = ns::MutableParagraphStyle::create();
  paragraph->setFirstLineHeadIndent(20);
  paragraph->setTabStops(
      {ns::TextTab::create(ns::LeftTabStopType, 40), ns::TextTab::create(ns::LeftTabStopType, 60)});
  std::vector<ns::TextListPtr> one = {list(u"{disc}")};
  applyLists(*paragraph, &one);
  EXPECT_EQ(paragraph->headIndent(), 56.0);
  EXPECT_EQ(tabLocations(*paragraph), (std::vector<double>{31.0, 56.0, 60.0}));

  std::vector<ns::TextListPtr> none;
  applyLists(*paragraph, &none);
  EXPECT_EQ(paragraph->headIndent(), 20.0) << "an empty array indents to the first line";
  EXPECT_EQ(tabLocations(*paragraph), (std::vector<double>{28.0, 60.0}))
      << "no list tabs; the freed band gets its default stops";

  paragraph->setTextLists(one);
  applyLists(*paragraph, nullptr);
  EXPECT_EQ(paragraph->headIndent(), 0.0) << "nil goes to 0, not to the first line";
}

TEST(VLListDefault, TenDiscLevelsInOneSharedStyle) {
  const auto &style = VLListStyle::defaultListStyle();
  ASSERT_TRUE(style);
  EXPECT_EQ(&VLListStyle::defaultListStyle(), &style);
  EXPECT_EQ(style->displayName(), u"Default List Style");
  EXPECT_EQ(style->styleName(), u"Default_20_List_20_Style");
  EXPECT_FALSE(style->isAutomaticStyle());
  ASSERT_EQ(style->listLevels().size(), 10u);
  for (uint64_t level = 1; level <= 10; ++level) {
    auto bullet = asBullet(style->listLevels()[level - 1]);
    ASSERT_TRUE(bullet);
    EXPECT_EQ(bullet->level(), level);
    EXPECT_EQ(bullet->markerFormat(), u"{disc}");
    EXPECT_FALSE(bullet->listStyle()) << "put in with setListLevelStyle";
  }
  EXPECT_EQ(formats(style->textListsForLevel(2)),
            (std::vector<std::u16string>{u"{disc}", u"{disc}"}));

  // Its levels have no list style, so they lay out no lists and name no style.
  auto attributes = ns::Dictionary::create();
  style->listLevelStyleForLevel(2)->applyToAttributes(*attributes);
  auto paragraph =
      attributes->objectForKey(ns::ParagraphStyleAttributeName).as<ns::ParagraphStyle>();
  EXPECT_TRUE(paragraph->textLists().empty());
  EXPECT_EQ(paragraph->headIndent(), 72.0);
  EXPECT_FALSE(attributes->containsKey(VLListStyleAttributeName));
}

TEST(VLListCopy, CopiesAreIndependentAndPointAtTheCopy) {
  auto style = twoLevelStyle();
  style->setDisplayName(u"Steps");
  style->setIsOutlineStyle(true);
  style->setConsecutiveNumbering(true);
  style->setLevel(4);
  auto bullet = asBullet(style->listLevelStyleForLevel(2));
  bullet->setNumPrefix(u"(");
  bullet->setStyleName(u"B");
  bullet->setBulletRelativeSize(0.5);
  bullet->setDisplayName(u"Second");

  auto copy = ns::copyOf(*style);
  EXPECT_EQ(copy->styleName(), u"L1");
  EXPECT_EQ(copy->displayName(), u"Steps");
  EXPECT_TRUE(copy->isOutlineStyle());
  EXPECT_TRUE(copy->consecutiveNumbering());
  EXPECT_EQ(copy->level(), 4u);
  ASSERT_EQ(copy->listLevels().size(), 2u);
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_NE(copy->listLevels()[i], style->listLevels()[i]);
    EXPECT_EQ(copy->listLevels()[i]->listStyle(), copy);
    EXPECT_EQ(copy->listLevels()[i]->level(), style->listLevels()[i]->level());
  }
  auto bulletCopy = asBullet(copy->listLevelStyleForLevel(2));
  EXPECT_EQ(bulletCopy->markerFormat(), u"({square}");
  EXPECT_EQ(bulletCopy->styleName(), u"B");
  EXPECT_EQ(bulletCopy->bulletRelativeSize(), 0.5);
  EXPECT_FALSE(bulletCopy->displayName()) << "a copy has fresh properties";
  EXPECT_NE(bulletCopy->listLevelProperties(), bullet->listLevelProperties());

  auto numberCopy = asNumber(copy->listLevelStyleForLevel(1));
  EXPECT_FALSE(numberCopy->numFormat()) << "a copied number level keeps only its level";
  EXPECT_FALSE(numberCopy->numSuffix());

  copy->setStyleName(u"L2");
  bulletCopy->setBulletChar(u"\u2713");
  EXPECT_EQ(style->styleName(), u"L1");
  EXPECT_EQ(bullet->markerFormat(), u"({square}");
}

TEST(VLListCoding, ListStyleRoundTripKeepsTheLevelsOwnValuesOnly) {
  auto style = twoLevelStyle();
  style->setDisplayName(u"Steps");
  style->setIsAutomaticStyle(true);
  style->setConsecutiveNumbering(true);
  style->setLevel(3);
  auto number = asNumber(style->listLevelStyleForLevel(1));
  number->setNumPrefix(u"§");
  number->setStartValue(5);
  number->setDisplayLevels(2);
  number->setNumLetterSync(true);
  number->setStyleName(u"N");
  number->setDisplayName(u"First");
  number->textProperties()->setObject(ns::Value(u"bold"), u"weight");
  auto bullet = asBullet(style->listLevelStyleForLevel(2));
  bullet->setBulletRelativeSize(0.75);

  auto data = ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(style));
  ns::ErrorPtr error;
  auto decoded = ns::KeyedUnarchiver::unarchiveObjectWithData(data, &error).as<VLListStyle>();
  ASSERT_TRUE(decoded) << (error ? ns::toUTF8(error->localizedDescription()) : "");
  EXPECT_EQ(decoded->styleName(), u"L1");
  EXPECT_EQ(decoded->displayName(), u"Steps");
  EXPECT_TRUE(decoded->isAutomaticStyle());
  EXPECT_FALSE(decoded->isOutlineStyle());
  EXPECT_TRUE(decoded->consecutiveNumbering());
  EXPECT_EQ(decoded->level(), 3u);
  ASSERT_EQ(decoded->listLevels().size(), 2u);

  auto bulletBack = asBullet(decoded->listLevels()[0]);
  ASSERT_TRUE(bulletBack) << "the levels keep their array order and class";
  EXPECT_EQ(bulletBack->markerFormat(), u"{square}");
  EXPECT_EQ(bulletBack->bulletRelativeSize(), 0.75);

  auto numberBack = asNumber(decoded->listLevels()[1]);
  ASSERT_TRUE(numberBack);
  EXPECT_EQ(numberBack->markerFormat(), u"§{decimal}.");
  EXPECT_EQ(numberBack->startValue(), 5u);
  EXPECT_EQ(numberBack->displayLevels(), 2u);
  EXPECT_TRUE(numberBack->numLetterSync());
  EXPECT_EQ(numberBack->styleName(), u"N");
  EXPECT_EQ(numberBack->textProperties()->objectForKey(u"weight"), ns::Value(u"bold"));

  // The concrete levels never write the base's keys.
  for (const auto &level : decoded->listLevels()) {
    EXPECT_EQ(level->level(), 0u);
    EXPECT_FALSE(level->listStyle());
    EXPECT_FALSE(level->listLevelProperties());
    EXPECT_FALSE(level->displayName());
  }
  EXPECT_FALSE(decoded->listLevelStyleForLevel(1));
  numberBack->setDisplayName(u"Renamed");
  EXPECT_EQ(numberBack->displayName(), u"Renamed") << "properties are made again on demand";
}

// A number level that also writes the base's keys, archived under the number level's name.
struct FullyArchivedNumberLevel : VLListNumberLevelStyle {
  void encodeWithCoder(ns::KeyedArchiver &coder) const override {
    VLListLevelStyle::encodeWithCoder(coder);
    VLListNumberLevelStyle::encodeWithCoder(coder);
  }
};

TEST(VLListCoding, BaseKeysAreReadWhenAnArchiveHasThem) {
  auto style = VLListStyle::create();
  auto level = std::make_shared<FullyArchivedNumberLevel>();
  level->setLevel(3);
  level->setNumFormat(u"A");
  level->setDisplayName(u"Third");
  style->addListLevelStyle(level);
  auto data = ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(style));
  auto decoded = ns::KeyedUnarchiver::unarchiveObjectWithData(data).as<VLListStyle>();
  ASSERT_TRUE(decoded);
  auto back = asNumber(decoded->listLevelStyleForLevel(3));
  ASSERT_TRUE(back);
  EXPECT_EQ(back->listStyle(), decoded);
  EXPECT_EQ(back->displayName(), u"Third");
  EXPECT_EQ(back->markerFormat(), u"{upper-latin}");

  level->setLevel(1001);
  ns::ErrorPtr error;
  data = ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(style));
  EXPECT_TRUE(ns::KeyedUnarchiver::unarchiveObjectWithData(data, &error).isNil());
  ASSERT_TRUE(error) << "a level deeper than any list is refused";
  EXPECT_EQ(error->code(), ns::CoderReadCorruptError);
}

TEST(VLListCoding, LevelPropertiesKeepTheirDisplayName) {
  auto properties = VLListLevelProperties::create();
  properties->setDisplayName(u"Chapter");
  auto data = ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(properties));
  auto decoded = ns::KeyedUnarchiver::unarchiveObjectWithData(data).as<VLListLevelProperties>();
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->displayName(), u"Chapter");
  properties->setObject(ns::Value(2), u"depth");
  auto copy = ns::copyOf(*properties);
  EXPECT_EQ(copy->displayName(), u"Chapter");
  copy->setObject(ns::Value(3), u"depth");
  EXPECT_EQ(properties->objectForKey(u"depth"), ns::Value(2));
}

TEST(VLListDescription, NamesTheStyleAndTheMarker) {
  auto style = twoLevelStyle();
  std::u16string base = style->ns::Object::description();
  EXPECT_EQ(style->description(), base + u" - L1");
  style->setIsOutlineStyle(true);
  EXPECT_EQ(style->description(), base + u" - outline-style");
  EXPECT_EQ(VLListStyle::create()->description().substr(base.size() - 1), u"> - ?");

  auto level = style->listLevelStyleForLevel(1);
  EXPECT_EQ(level->description(), level->ns::Object::description() + u" level:1 marker:{decimal}.");
}

TEST(VLListKeyValueCoding, NamesAndValuesAreReachableByKey) {
  auto style = twoLevelStyle();
  EXPECT_EQ(style->valueForKey(u"displayName"), ns::Value(u"L1")) << "falls back to styleName";
  style->setValueForKey(ns::Value(u"Outline"), u"displayName");
  EXPECT_EQ(style->displayName(), u"Outline");
  EXPECT_EQ(style->valueForKeyPath(u"listLevelStyles.markerFormat").array()->count(), 2u);

  auto level = style->listLevelStyleForLevel(1);
  level->setValueForKey(ns::Value(u"Top"), u"displayName");
  EXPECT_EQ(level->displayName(), u"Top");
  level->setValueForKey(ns::Value(u"i"), u"numFormat");
  EXPECT_EQ(level->valueForKey(u"markerFormat"), ns::Value(u"{lower-roman}."));
  EXPECT_EQ(level->valueForKey(u"level"), ns::Value(1));
}
