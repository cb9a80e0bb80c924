// List styles: keywords and marker formats both ways, text lists, levels, matching and
// deriving, indent and tab layout, copying and archiving.
#include "ModelTestSupport.h"
#include "model/VLConstants.h"
#include "model/VLListAdditions.h"
#include "model/VLListLevelProperties.h"
#include "model/VLListLevelStyle.h"
#include "model/VLListStyle.h"
#include "ns/Array.h"
#include "ns/AttributeNames.h"
#include "ns/ParagraphStyle.h"
#include "ns/String.h"

#include <gtest/gtest.h>

using namespace vl;
using test::failureOf;

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

// The default stops from 84 on, after `first`.
std::vector<double> withDefaultStops(std::vector<double> first) {
  for (double location = 84; location <= 336; location += 28)
    first.push_back(location);
  return first;
}

std::vector<std::u16string> formats(const std::vector<ns::TextListPtr> &lists) {
  std::vector<std::u16string> out;
  for (const auto &each : lists)
    out.push_back(each->markerFormat());
  return out;
}

ns::ParagraphStylePtr paragraphIn(const ns::Dictionary &attributes) {
  return attributes.objectForKey(ns::ParagraphStyleAttributeName).as<ns::ParagraphStyle>();
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

TEST(VLListKeywords, EachKeywordMakesItsLevelAndComesBack) {
  struct Row {
    std::u16string_view keyword;
    bool bullet;
    std::optional<std::u16string_view> value; // the number format or bullet character
    std::u16string_view back;                 // the level's marker format
  };
  const Row rows[] = {
      {u"decimal", false, u"1", u"{decimal}"},
      {u"lower-roman", false, u"i", u"{lower-roman}"},
      {u"upper-alpha", false, u"A", u"{upper-latin}"}, // an alias comes back as the name
      {u"octal", false, std::nullopt, u""},            // no format value: nothing to write back
      {u"square", true, u"\u25AA", u"{square}"},
      {u"check", true, u"\u2713", u"{check}"},
      // Box has a format value but no class: it reads as a number level and loses its keyword.
      {u"box", false, u"\u25AB", u""},
      {u"stars", false, std::nullopt, u""},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(ns::toUTF8(row.keyword));
    auto level = levelFor(u"{" + std::u16string(row.keyword) + u"}");
    if (row.bullet) {
      ASSERT_TRUE(asBullet(level));
      EXPECT_EQ(asBullet(level)->bulletChar(), row.value);
      EXPECT_EQ(VLListBulletLevelStyle::keywordForBulletChar(row.value->front()), row.keyword);
    } else {
      ASSERT_TRUE(asNumber(level));
      EXPECT_EQ(asNumber(level)->numFormat(), row.value);
    }
    EXPECT_EQ(level->markerFormat(), row.back);
  }
  // A bullet level made directly keeps the box.
  auto box = VLListBulletLevelStyle::createWithTextList(list(u"{box}"));
  EXPECT_EQ(box->markerFormat(), u"{box}");
  EXPECT_EQ(VLListBulletLevelStyle::keywordForBulletChar(u'\u25AB'), u"box");
  EXPECT_EQ(VLListBulletLevelStyle::keywordForBulletChar(u'*'), u"disc");
  EXPECT_EQ(VLListBulletLevelStyle::bulletCharForKeyword(u"Disc"), u"\u2022");
  EXPECT_EQ(VLListBulletLevelStyle::bulletCharForKeyword(u"decimal"), u"\u2022");
  for (auto none : {u"\u25AB", u"11", u""})
    EXPECT_FALSE(VLListNumberLevelStyle::keywordForNumFormat(none));
}

TEST(VLListMarkerFormat, ParsesPrefixKeywordAndSuffix) {
  using Text = std::optional<std::u16string>;
  const struct {
    std::u16string_view format;
    Text keyword, prefix, suffix;
  } rows[] = {
      {u"({lower-alpha})", u"lower-alpha", u"(", u")"},
      {u"no braces", {}, {}, u"no braces"},     // no brace: the prefix stays nil
      {u"a{decimal", {}, {}, {}},               // an open brace without a close: everything nil
      {u"}{x}{y}", u"x", u"}", u"{y}"},         // the first } after the first {
      {u"{ decimal }", u" decimal ", u"", u""}, // not trimmed
  };
  for (const auto &row : rows) {
    Text prefix = u"stale", suffix = u"stale";
    EXPECT_EQ(VLListLevelStyle::keywordForList(list(std::u16string(row.format)), &prefix, &suffix),
              row.keyword)
        << ns::toUTF8(row.format);
    EXPECT_EQ(prefix, row.prefix) << ns::toUTF8(row.format);
    EXPECT_EQ(suffix, row.suffix) << ns::toUTF8(row.format);
  }
  EXPECT_FALSE(VLListLevelStyle::keywordForList(nullptr, nullptr, nullptr));

  // Levels keep prefix and suffix around the keyword, and text without one.
  auto alpha = asNumber(levelFor(u"({lower-alpha})"));
  EXPECT_EQ(alpha->numPrefix(), u"(");
  EXPECT_EQ(alpha->markerFormat(), u"({lower-latin})");
  EXPECT_EQ(levelFor(u"[{square}]")->markerFormat(), u"[{square}]");
  EXPECT_EQ(levelFor(u"no braces")->markerFormat(), u"no braces");
  EXPECT_EQ(levelFor(u"<{stars}>")->markerFormat(), u"<>");
  EXPECT_TRUE(asNumber(VLListLevelStyle::listLevelStyleWithTextList(nullptr)));

  auto bullet = makeLevel<VLListBulletLevelStyle>(1);
  EXPECT_EQ(bullet->markerFormat(), u"{disc}") << "a new bullet level holds U+2022";
  bullet->setNumPrefix(u"<");
  for (auto none : {std::optional<std::u16string>(), std::optional<std::u16string>(u"")}) {
    bullet->setBulletChar(none);
    EXPECT_EQ(bullet->markerFormat(), u"<");
  }
}

TEST(VLListTextList, IsMadeFromTheMarkerFormatAndRemadeOnChange) {
  auto level = numberLevel(1, u"a", u")");
  const auto &first = level->textList();
  EXPECT_EQ(first->markerFormat(), u"{lower-latin})");
  EXPECT_EQ(first->markerForItemNumber(2), u"b)");
  EXPECT_EQ(level->textList().get(), first.get());
  level->setNumFormat(u"I");
  EXPECT_EQ(level->textList()->markerForItemNumber(4), u"IV)") << "a new format, a new list";
  level->setValueForKey(ns::Value(u"("), u"numPrefix");
  EXPECT_EQ(level->textList()->markerFormat(), u"({upper-roman})");

  auto attributes = ns::Dictionary::create({{u"key", ns::Value(u"value")}});
  auto preamble = numberLevel(1, u"i", u")")->preambleForItemNumber(4, attributes);
  EXPECT_EQ(preamble->string(), u"\tiv)\t");
  ns::Range run;
  EXPECT_EQ(preamble->attributesAtIndex(0, &run)->objectForKey(u"key"), ns::Value(u"value"));
  EXPECT_EQ(run.length, 5u);

  for (auto format : {u"{decimal}.", u"({ lower-roman })", u"{upper-alpha}", u"{octal}",
                      u"x{lower-hexadecimal}y"})
    EXPECT_TRUE(isOrderedList(*list(format))) << ns::toUTF8(format);
  for (auto format : {u"{disc}", u"{box}", u"decimal", u"{decimal", u"", u"{Decimal}", u"{}"})
    EXPECT_FALSE(isOrderedList(*list(format))) << ns::toUTF8(format);
}

TEST(VLListStyleLevels, AddingPointsBackAndSortsByLevel) {
  auto style = twoLevelStyle();
  EXPECT_EQ(style->listLevels()[0]->listStyle(), style);
  auto sorted = style->listLevelStyles();
  ASSERT_EQ(sorted.size(), 2u);
  EXPECT_EQ(sorted[0]->level(), 1u);
  EXPECT_EQ(sorted[1]->level(), 2u);

  auto second = numberLevel(1, u"i");
  style->addListLevelStyle(second);
  EXPECT_EQ(style->listLevels().size(), 3u) << "no test for a level already there";
  EXPECT_EQ(style->listLevelStyleForLevel(1), style->listLevels()[1]) << "first in array order";
  EXPECT_EQ(style->listLevelStyles()[1], second) << "equal levels keep their order";
  EXPECT_FALSE(style->listLevelStyleForLevel(7));

  auto level = numberLevel(1, u"1");
  {
    auto owner = VLListStyle::create();
    owner->addListLevelStyle(level);
  }
  EXPECT_FALSE(level->listStyle()) << "the back reference does not own";
}

TEST(VLListStyleLevels, SettingALevelReplacesWithoutBackReference) {
  auto style = twoLevelStyle();
  auto replacement = numberLevel(2, u"A");
  style->setListLevelStyle(replacement, 2);
  ASSERT_EQ(style->listLevels().size(), 2u);
  EXPECT_EQ(style->listLevelStyleForLevel(2), replacement);
  EXPECT_FALSE(replacement->listStyle());
  EXPECT_EQ(failureOf([&] { style->setListLevelStyle(numberLevel(3, u"1"), 2); }),
            "Style level must equal level");
  EXPECT_EQ(style->listLevels().size(), 2u);
}

TEST(VLListStyleLevels, TextListsPerLevel) {
  auto style = twoLevelStyle();
  EXPECT_EQ(style->textListForLevel(2), style->listLevelStyleForLevel(2)->textList());
  auto missing = style->textListForLevel(5);
  EXPECT_EQ(missing->markerFormat(), u"{decimal}");
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

  // The unchanged number level was copied, and a copied number level keeps only its level.
  auto kept = asNumber(derived->listLevelStyleForLevel(1));
  ASSERT_TRUE(kept);
  EXPECT_EQ(kept->listStyle(), derived);
  EXPECT_FALSE(kept->numFormat());
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
  auto paragraph = paragraphIn(*attributes);
  ASSERT_TRUE(paragraph) << "the default paragraph style when there was none";
  EXPECT_EQ(paragraph->headIndent(), 72.0);
  EXPECT_EQ(tabLocations(*paragraph), withDefaultStops({47.0, 72.0}))
      << "default stops up to the head indent go";
  EXPECT_EQ(formats(paragraph->textLists()),
            (std::vector<std::u16string>{u"{decimal}.", u"{square}"}));
  EXPECT_EQ(attributes->objectForKey(VLListStyleAttributeName).object(), style);

  // An automatic list style is not named; a level without one lays out no lists.
  style->setIsAutomaticStyle(true);
  attributes = ns::Dictionary::create();
  style->listLevelStyleForLevel(1)->applyToAttributes(*attributes);
  EXPECT_FALSE(attributes->containsKey(VLListStyleAttributeName));
  EXPECT_EQ(paragraphIn(*attributes)->textLists().size(), 1u);
  attributes->setObject(ns::Value(style), VLListStyleAttributeName);
  numberLevel(3, u"1")->applyToAttributes(*attributes);
  EXPECT_TRUE(paragraphIn(*attributes)->textLists().empty()) << "no list style, no lists";
  EXPECT_EQ(paragraphIn(*attributes)->headIndent(), 108.0);
  EXPECT_FALSE(attributes->containsKey(VLListStyleAttributeName));
}

TEST(VLListLayout, ApplyListsUndoesTheOldLayout) {
  auto paragraph = ns::ParagraphStyle::defaultParagraphStyle()->mutableParagraphStyle();
  std::vector<ns::TextListPtr> two = {list(u"{decimal}."), list(u"{disc}")};
  applyLists(*paragraph, &two);
  EXPECT_EQ(paragraph->headIndent(), 72.0);
  std::vector<ns::TextListPtr> one = {list(u"{decimal}.")};
  applyLists(*paragraph, &one);
  EXPECT_EQ(paragraph->headIndent(), 36.0);
  EXPECT_EQ(tabLocations(*paragraph), withDefaultStops({11.0, 36.0, 56.0}))
      << "the default stop at 56 comes back";
  EXPECT_EQ(paragraph->textLists(), one);

  // The layout counts from the first line indent; an empty array goes back to it, nil to 0.
  paragraph = ns::MutableParagraphStyle::create();
  paragraph->setFirstLineHeadIndent(20);
  paragraph->setTabStops(
      {ns::TextTab::create(ns::LeftTabStopType, 40), ns::TextTab::create(ns::LeftTabStopType, 60)});
  std::vector<ns::TextListPtr> disc = {list(u"{disc}")};
  applyLists(*paragraph, &disc);
  EXPECT_EQ(paragraph->headIndent(), 56.0);
  EXPECT_EQ(tabLocations(*paragraph), (std::vector<double>{31.0, 56.0, 60.0}));
  std::vector<ns::TextListPtr> none;
  applyLists(*paragraph, &none);
  EXPECT_EQ(paragraph->headIndent(), 20.0);
  EXPECT_EQ(tabLocations(*paragraph), (std::vector<double>{28.0, 60.0}))
      << "no list tabs; the freed band gets its default stops";
  paragraph->setTextLists(disc);
  applyLists(*paragraph, nullptr);
  EXPECT_EQ(paragraph->headIndent(), 0.0);
}

TEST(VLListDefault, TenDiscLevelsInOneSharedStyleThatLayOutNoLists) {
  const auto &style = VLListStyle::defaultListStyle();
  ASSERT_TRUE(style);
  EXPECT_EQ(&VLListStyle::defaultListStyle(), &style);
  EXPECT_EQ(style->styleName(), u"Default_20_List_20_Style");
  ASSERT_EQ(style->listLevels().size(), 10u);
  for (uint64_t level = 1; level <= 10; ++level) {
    auto bullet = asBullet(style->listLevels()[level - 1]);
    ASSERT_TRUE(bullet);
    EXPECT_EQ(bullet->level(), level);
    EXPECT_EQ(bullet->markerFormat(), u"{disc}");
    EXPECT_FALSE(bullet->listStyle()) << "put in with setListLevelStyle";
  }
  auto attributes = ns::Dictionary::create();
  style->listLevelStyleForLevel(2)->applyToAttributes(*attributes);
  EXPECT_TRUE(paragraphIn(*attributes)->textLists().empty());
  EXPECT_EQ(paragraphIn(*attributes)->headIndent(), 72.0);
  EXPECT_FALSE(attributes->containsKey(VLListStyleAttributeName));
}

TEST(VLListCopy, CopiesAreIndependentAndPointAtTheCopy) {
  auto style = twoLevelStyle();
  style->setDisplayName(u"Steps");
  style->setIsOutlineStyle(true);
  auto bullet = asBullet(style->listLevelStyleForLevel(2));
  bullet->setNumPrefix(u"(");
  bullet->setBulletRelativeSize(0.5);

  auto copy = ns::copyOf(*style);
  EXPECT_EQ(copy->displayName(), u"Steps");
  EXPECT_TRUE(copy->isOutlineStyle());
  ASSERT_EQ(copy->listLevels().size(), 2u);
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_NE(copy->listLevels()[i], style->listLevels()[i]);
    EXPECT_EQ(copy->listLevels()[i]->listStyle(), copy);
  }
  auto bulletCopy = asBullet(copy->listLevelStyleForLevel(2));
  EXPECT_EQ(bulletCopy->markerFormat(), u"({square}");
  EXPECT_EQ(bulletCopy->bulletRelativeSize(), 0.5);
  bulletCopy->setBulletChar(u"\u2713");
  EXPECT_EQ(bullet->markerFormat(), u"({square}");
}

TEST(VLListCoding, ListStyleRoundTripKeepsTheLevelsOwnValuesOnly) {
  auto style = twoLevelStyle();
  style->setIsAutomaticStyle(true);
  style->setConsecutiveNumbering(true);
  style->setLevel(3);
  auto number = asNumber(style->listLevelStyleForLevel(1));
  number->setNumPrefix(u"§");
  number->setStartValue(5);
  number->setDisplayLevels(2);
  number->setDisplayName(u"First");
  number->textProperties()->setObject(ns::Value(u"bold"), u"weight");
  asBullet(style->listLevelStyleForLevel(2))->setBulletRelativeSize(0.75);

  auto decoded = test::roundTrip(style);
  ASSERT_TRUE(decoded);
  EXPECT_TRUE(decoded->isAutomaticStyle());
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
  EXPECT_EQ(numberBack->textProperties()->objectForKey(u"weight"), ns::Value(u"bold"));
  // The concrete levels never write the base's keys.
  for (const auto &level : decoded->listLevels()) {
    EXPECT_EQ(level->level(), 0u);
    EXPECT_FALSE(level->listStyle());
    EXPECT_FALSE(level->displayName());
  }
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
  auto decoded = test::roundTrip(style);
  ASSERT_TRUE(decoded);
  auto back = asNumber(decoded->listLevelStyleForLevel(3));
  ASSERT_TRUE(back);
  EXPECT_EQ(back->listStyle(), decoded);
  EXPECT_EQ(back->displayName(), u"Third");
  EXPECT_EQ(back->markerFormat(), u"{upper-latin}");

  level->setLevel(1001);
  ns::ErrorPtr error;
  auto data = ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(style));
  EXPECT_TRUE(ns::KeyedUnarchiver::unarchiveObjectWithData(data, &error).isNil());
  ASSERT_TRUE(error) << "a level deeper than any list is refused";
  EXPECT_EQ(error->code(), ns::CoderReadCorruptError);
}
