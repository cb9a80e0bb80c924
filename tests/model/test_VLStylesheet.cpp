// Stylesheets: adding, removing and replacing styles with their links, lookups in insertion
// order, the default styles, the other collections, rings, archives and copies.
#include "ModelTestSupport.h"
#include "model/VLStylesheet.h"
#include "ns/Array.h"

#include <gtest/gtest.h>

using namespace vl;
using ns::Value;

namespace {

VLStylePtr named(std::u16string_view name, const VLStylePtr &parent = nullptr) {
  VLStylePtr style = VLStyle::create();
  style->setStyleName(std::u16string(name));
  style->setParentStyle(parent);
  return style;
}

struct Counter : ns::Object {
  int changes = 0;
  void observeValueForKeyPath(std::u16string_view, ns::Object *, const ns::DictionaryPtr &,
                              const void *) override {
    ++changes;
  }
};

} // namespace

TEST(VLStylesheet, AddKeepsOneOfEachObjectAndAnnounces) {
  auto sheet = VLStylesheet::create();
  Counter counter;
  sheet->addObserver(&counter, u"styles", 0, nullptr);
  auto a = named(u"A");
  sheet->addStyle(a);
  sheet->addStyle(a);
  sheet->addStyle(nullptr);
  sheet->addStyle(named(u"A"));
  sheet->removeObserver(&counter, u"styles");
  EXPECT_EQ(sheet->styles().size(), 2u) << "equal names are allowed, the same object is not";
  EXPECT_EQ(counter.changes, 3);
  EXPECT_EQ(sheet->styleForName(u"A"), a) << "first match in insertion order";
  EXPECT_EQ(sheet->valueForKey(u"styles").array()->count(), 2u);
}

TEST(VLStylesheet, RemoveClearsOtherStylesLinks) {
  auto sheet = VLStylesheet::create();
  auto base = named(u"Base");
  auto child = named(u"Child", base);
  child->setNextStyle(base);
  child->setTabStyle(base);
  base->setNextStyle(base);
  for (const auto &style : {base, child})
    sheet->addStyle(style);
  sheet->removeStyle(base);
  EXPECT_EQ(sheet->styles(), std::vector<VLStylePtr>{child});
  EXPECT_EQ(child->parentStyle(), nullptr);
  EXPECT_EQ(child->nextStyle(), nullptr);
  EXPECT_EQ(child->tabStyle(), nullptr);
  EXPECT_EQ(base->nextStyle(), base) << "the removed style keeps its own links";
  base->setNextStyle(nullptr);
}

TEST(VLStylesheet, RemovingTheDefaultStyleOrphansChildrenAndMakesANewOne) {
  auto sheet = VLStylesheet::defaultStylesheet();
  auto old = sheet->defaultParagraphStyle();
  auto body = sheet->styleForName(u"Body_20_Text");
  sheet->removeStyle(old);
  EXPECT_EQ(body->parentStyle(), nullptr);
  EXPECT_EQ(sheet->styles().size(), 4u);
  auto fresh = sheet->defaultParagraphStyle();
  EXPECT_NE(fresh, old);
  EXPECT_EQ(sheet->styles().back(), fresh);
  EXPECT_EQ(sheet->defaultParagraphStyle(), fresh) << "made once";
}

TEST(VLStylesheet, ReplacePointsLinksAtTheNewStyleAndMovesItLast) {
  auto sheet = VLStylesheet::create();
  auto old = named(u"Old");
  auto other = named(u"Other", old);
  other->setTabStyle(old);
  auto last = named(u"Last");
  last->setNextStyle(old);
  for (const auto &style : {old, other, last})
    sheet->addStyle(style);
  auto replacement = named(u"New");
  sheet->replaceStyle(old, replacement);
  EXPECT_EQ(sheet->styles(), (std::vector<VLStylePtr>{other, last, replacement}));
  EXPECT_EQ(other->parentStyle(), replacement);
  EXPECT_EQ(other->tabStyle(), replacement);
  EXPECT_EQ(last->nextStyle(), replacement);
}

TEST(VLStylesheet, LookupsByNameDisplayNameAndLevels) {
  auto sheet = VLStylesheet::defaultStylesheet();
  EXPECT_EQ(sheet->styleForName(std::nullopt), nullptr);
  EXPECT_EQ(sheet->styleForName(u"Body Text"), nullptr) << "style names are encoded";
  EXPECT_EQ(*sheet->styleForDisplayName(u"Body Text")->styleName(), u"Body_20_Text");
  EXPECT_EQ(sheet->styleForDisplayName(std::nullopt), nullptr);
  auto unnamed = named(u"Only_name");
  sheet->addStyle(unnamed);
  EXPECT_EQ(sheet->styleForDisplayName(u"Only_name"), unnamed)
      << "a style without a display name answers with its style name";

  EXPECT_EQ(*sheet->styleForHeaderLevel(0)->styleName(), u"Body_20_Text")
      << "the default style comes last for level 0";
  EXPECT_EQ(*sheet->styleForHeaderLevel(2)->styleName(), u"Heading_20_2");
  EXPECT_EQ(sheet->styleForHeaderLevel(7), nullptr);
  EXPECT_EQ(*sheet->styleForOutlineLevel(3)->styleName(), u"Heading_20_3");
  EXPECT_EQ(*sheet->styleForOutlineLevel(10)->styleName(), u"Default_20_Style")
      << "own levels only: the default style has none";

  auto onlyDefault = VLStylesheet::create();
  auto base = onlyDefault->defaultParagraphStyle();
  EXPECT_EQ(onlyDefault->styleForHeaderLevel(0), base);
  // Header levels cascade: a child added before the heading is found first.
  auto heading = named(u"H");
  heading->setHeaderLevel(4);
  auto child = named(u"C", heading);
  onlyDefault->addStyle(child);
  onlyDefault->addStyle(heading);
  EXPECT_EQ(onlyDefault->styleForHeaderLevel(4), child);
  EXPECT_EQ(onlyDefault->styleForOutlineLevel(4), heading);
}

TEST(VLStylesheet, DefaultTextAndGraphicStyles) {
  auto sheet = VLStylesheet::create();
  EXPECT_EQ(sheet->defaultTextStyle(), nullptr);
  EXPECT_TRUE(sheet->styles().empty()) << "no text style is made";
  auto text = named(u"T");
  text->setStyleType(VLTextStyleType);
  text->setIsDefaultStyle(true);
  sheet->addStyle(text);
  EXPECT_EQ(sheet->defaultTextStyle(), text);
  EXPECT_NE(sheet->defaultParagraphStyle(), text);

  auto graphic = sheet->defaultGraphicStyle();
  EXPECT_EQ(sheet->graphicStyles().size(), 1u);
  EXPECT_EQ(sheet->defaultGraphicStyle(), graphic);
  EXPECT_EQ(*graphic->styleName(), u"Default_20_Graphic_20_Style");
  EXPECT_EQ(graphic->derivedGraphicStyleWithAttachment(nullptr)->parentStyle(), graphic);
  sheet->removeGraphicStyle(graphic);
  EXPECT_TRUE(sheet->graphicStyles().empty());
}

TEST(VLStylesheet, PaginationAndOutlineSettings) {
  EXPECT_TRUE(VLStylesheet::defaultStylesheet()->requiresSpecialPagination());
  auto plain = VLStylesheet::create();
  plain->defaultParagraphStyle();
  EXPECT_FALSE(plain->requiresSpecialPagination());
  auto paginated = named(u"P");
  paginated->setPaginationStyle(VLShotPagination);
  plain->addStyle(paginated);
  EXPECT_TRUE(plain->requiresSpecialPagination());

  auto sheet = VLStylesheet::defaultStylesheet();
  auto levels = sheet->defaultOutlineSettings()->objectForKey(u"outlineLevelSettings").array();
  ASSERT_EQ(levels->count(), 1u);
  auto level = levels->objectAtIndex(0).dictionary();
  EXPECT_EQ(level->objectForKey(u"displayName"), Value(u"Body Text"));
  EXPECT_EQ(level->objectForKey(u"defaultStyle"), Value(u"Body_20_Text"));
  auto novel = VLStylesheet::defaultNovelStylesheet();
  EXPECT_EQ(novel->defaultOutlineSettings()->valueForKeyPath(u"outlineLevelSettings.defaultStyle"),
            Value(ns::Array::create({u"Default_20_Style"})));
}

TEST(VLStylesheet, DefaultSortDescriptorsOrderByLevelThenName) {
  auto sheet = VLStylesheet::defaultStylesheet();
  std::vector<VLStylePtr> styles = sheet->styles();
  auto descriptors = VLStylesheet::defaultSortDescriptors();
  std::stable_sort(styles.begin(), styles.end(), [&](const VLStylePtr &a, const VLStylePtr &b) {
    for (const auto &descriptor : descriptors)
      if (auto order = descriptor.compareObject(*a, *b); order != ns::OrderedSame)
        return order == ns::OrderedAscending;
    return false;
  });
  std::vector<std::u16string> names;
  for (const auto &style : styles)
    names.push_back(*style->styleName());
  EXPECT_EQ(names, (std::vector<std::u16string>{u"Heading_20_1", u"Heading_20_2", u"Heading_20_3",
                                                u"Body_20_Text", u"Default_20_Style"}));
}

TEST(VLStylesheet, PageLayoutsAndListStyles) {
  auto sheet = VLStylesheet::create();
  Counter counter;
  sheet->addObserver(&counter, u"pageLayoutStyles", 0, nullptr);
  auto layout = VLPageLayout::create();
  sheet->addPageLayoutStyle(layout);
  sheet->addPageLayoutStyle(layout);
  EXPECT_EQ(sheet->pageLayoutStyles().size(), 1u);
  sheet->removePageLayoutStyle(layout);
  sheet->setPageLayoutStyles({layout, layout});
  sheet->removeObserver(&counter, u"pageLayoutStyles");
  EXPECT_EQ(counter.changes, 2);
  EXPECT_EQ(sheet->pageLayoutStyles().size(), 2u);

  auto list = VLListStyle::create();
  sheet->addListStyle(list);
  sheet->addListStyle(list);
  EXPECT_EQ(sheet->listStyles().size(), 2u) << "no test for duplicates";
  sheet->removeListStyle(list);
  EXPECT_TRUE(sheet->listStyles().empty());
}

TEST(VLStylesheet, DestructionBreaksRings) {
  std::weak_ptr<VLStyle> watched;
  VLStylePtr kept;
  {
    auto sheet = VLStylesheet::defaultScreenplayStylesheet();
    watched = sheet->styleForName(u"Action");
    kept = sheet->styleForName(u"Dialogue");
  }
  EXPECT_TRUE(watched.expired()) << "the action style's ring to itself is gone";
  EXPECT_EQ(kept->parentStyle(), nullptr);
  EXPECT_EQ(kept->nextStyle(), nullptr);
  EXPECT_EQ(kept->tabStyle(), nullptr);
}

TEST(VLStylesheet, CopyIsADeepArchiveRoundTripKeepingRings) {
  auto sheet = VLStylesheet::defaultScreenplayStylesheet();
  sheet->setDisplayName(u"Script");
  sheet->properties()->setObject(u"value", u"key");
  auto transition = sheet->styleForName(u"Transition");
  transition->setPageBreakAfter(true);

  auto copy = ns::copyOf(*sheet);
  ASSERT_TRUE(copy);
  EXPECT_EQ(copy->displayName(), u"Script");
  EXPECT_EQ(copy->properties()->objectForKey(u"key"), Value(u"value"));
  ASSERT_EQ(copy->styles().size(), sheet->styles().size());
  for (size_t i = 0; i < copy->styles().size(); ++i) {
    EXPECT_NE(copy->styles()[i], sheet->styles()[i]);
    EXPECT_TRUE(copy->styles()[i]->isEqualToStyle(sheet->styles()[i])) << i;
  }
  auto action = copy->styleForName(u"Action");
  EXPECT_EQ(action->nextStyle(), action);
  EXPECT_EQ(action->tabStyle(), copy->styleForName(u"Character"));
  EXPECT_EQ(action->parentStyle(), copy->defaultParagraphStyle());
  EXPECT_EQ(copy->styleForName(u"Dialogue")->parentStyle(), action->parentStyle());
  EXPECT_EQ(copy->styles().size(), sheet->styles().size()) << "the default style came along";
  EXPECT_FALSE(copy->styleForName(u"Transition")->pageBreakAfter());
  EXPECT_TRUE(copy->styleForName(u"Transition")->definesPageBreakAfter());
  ASSERT_EQ(copy->graphicStyles().size(), 1u);
  EXPECT_NE(copy->graphicStyles()[0], sheet->graphicStyles()[0]);
}

TEST(VLStylesheet, ArchiveHoldsEveryCollectionAndTheFontTable) {
  auto fonts = std::make_shared<VLFontTable>();
  fonts->addFont(VLFont::fontWithNSFont(ns::Font::fontWithName(u"Courier", 12)));
  auto sheet = VLStylesheet::defaultStylesheet();
  sheet->setFontTable(fonts);
  auto layout = VLPageLayout::create();
  layout->setTopMargin(37);
  sheet->addPageLayoutStyle(layout);
  EXPECT_EQ(test::archivedKeys(sheet, u"VLStylesheet"),
            test::sorted({u"displayName", u"fontTable", u"styles", u"listStyles", u"graphicStyles",
                          u"pageLayoutStyles", u"properties"}));

  auto decoded = test::roundTrip(sheet);
  ASSERT_TRUE(decoded);
  ASSERT_TRUE(decoded->fontTable());
  EXPECT_TRUE(decoded->fontTable()->fontForName(u"Courier"));
  ASSERT_EQ(decoded->pageLayoutStyles().size(), 1u);
  EXPECT_EQ(decoded->pageLayoutStyles()[0]->topMargin(), 37.0);
  EXPECT_EQ(decoded->styleForName(u"Heading_20_1")->nextStyle(),
            decoded->styleForName(u"Body_20_Text"));
}
