// Stylesheets: free names for styles, graphic styles, list styles and page layouts, list
// style lookups, names of outline levels, finding equal styles and children.
#include "model/VLStylesheet.h"

#include <gtest/gtest.h>

using namespace vl;

namespace {

VLStylePtr named(std::u16string_view name, std::optional<std::u16string_view> displayName = {}) {
  VLStylePtr style = VLStyle::create();
  style->setStyleName(std::u16string(name));
  if (displayName)
    style->setDisplayName(std::u16string(*displayName));
  return style;
}

VLStylePtr childOf(const VLStylePtr &parent, std::u16string_view name) {
  VLStylePtr style = named(name);
  style->setParentStyle(parent);
  return style;
}

VLListLevelStylePtr levelNamed(uint64_t level, std::optional<std::u16string> displayName) {
  auto style = std::make_shared<VLListBulletLevelStyle>();
  style->setLevel(level);
  style->setDisplayName(std::move(displayName));
  return style;
}

} // namespace

TEST(VLStylesheetNaming, StyleNamesFromDisplayNamesNumberFromOne) {
  auto sheet = VLStylesheet::create();
  EXPECT_EQ(sheet->uniqueNameForDisplayName(u"Scene Heading"), u"Scene_20_Heading");
  sheet->addStyle(named(u"Scene_20_Heading"));
  EXPECT_EQ(sheet->uniqueNameForDisplayName(u"Scene Heading"), u"Scene_20_Heading_1");
  sheet->addStyle(named(u"Scene_20_Heading_1"));
  EXPECT_EQ(sheet->uniqueNameForDisplayName(u"Scene Heading"), u"Scene_20_Heading_2");
  sheet->addStyle(named(u"Other", u"Plain"));
  EXPECT_EQ(sheet->uniqueNameForDisplayName(u"Plain"), u"Plain") << "tested against style names";
  EXPECT_EQ(sheet->uniqueNameForDisplayName(std::nullopt), std::nullopt);
  EXPECT_EQ(sheet->uniqueNameForDisplayName(u""), std::nullopt);
}

TEST(VLStylesheetNaming, DisplayNamesNumberFromTwo) {
  auto sheet = VLStylesheet::defaultScreenplayStylesheet();
  EXPECT_EQ(sheet->uniqueDisplayNameForName(u"Action"), u"Action 2");
  sheet->addStyle(named(u"x", u"Action 2"));
  EXPECT_EQ(sheet->uniqueDisplayNameForName(u"Action"), u"Action 3");
  EXPECT_EQ(sheet->uniqueDisplayNameForName(u"Shot"), u"Shot");
  sheet->addStyle(named(u"Shot"));
  EXPECT_EQ(sheet->uniqueDisplayNameForName(u"Shot"), u"Shot 2")
      << "a style without a display name shows its style name";
  EXPECT_EQ(sheet->uniqueDisplayNameForName(std::nullopt), std::nullopt);
}

TEST(VLStylesheetNaming, AutomaticNamesByKindAndFormat) {
  auto sheet = VLStylesheet::create();
  auto automatic = VLStyle::create();
  automatic->setIsAutomaticStyle(true);
  EXPECT_EQ(sheet->uniqueNameForStyle(automatic), u"P1");
  sheet->addStyle(named(u"P1"));
  sheet->addStyle(named(u"P3"));
  EXPECT_EQ(sheet->uniqueNameForStyle(automatic), u"P2");
  automatic->setStyleType(VLTextStyleType);
  EXPECT_EQ(sheet->uniqueNameForStyle(automatic), u"T1");
  automatic->setStyleType(VLOtherStyleType);
  EXPECT_EQ(sheet->uniqueNameForStyle(automatic), u"U1");
  EXPECT_EQ(sheet->uniqueNameForStyle(nullptr), u"P2");
  sheet->addStyle(named(u"Other", u"Q1"));
  EXPECT_EQ(sheet->uniqueNameForStyle(automatic, u"Q%d"), u"Q1") << "display names do not count";
}

TEST(VLStylesheetNaming, GraphicStyleAndPageLayoutNames) {
  auto sheet = VLStylesheet::defaultStylesheet();
  EXPECT_EQ(sheet->uniqueNameForGraphicStyle(nullptr), u"fr1");
  auto graphic = VLGraphicStyle::create();
  graphic->setStyleName(u"fr1");
  sheet->addGraphicStyle(graphic);
  sheet->addStyle(named(u"fr2"));
  EXPECT_EQ(sheet->uniqueNameForGraphicStyle(nullptr), u"fr2") << "only graphic styles count";

  EXPECT_EQ(sheet->uniqueNameForPageLayout(nullptr), u"pm1");
  auto first = VLPageLayout::create();
  first->setName(u"pm1");
  auto second = VLPageLayout::create();
  second->setName(u"pm1");
  sheet->addPageLayoutStyle(first);
  sheet->addPageLayoutStyle(second);
  EXPECT_EQ(sheet->uniqueNameForPageLayout(nullptr), u"pm2");
  EXPECT_EQ(sheet->pageLayoutStyleForName(u"pm1"), first) << "first in order";
  EXPECT_EQ(sheet->pageLayoutStyleForName(u"pm2"), nullptr);
  EXPECT_EQ(sheet->pageLayoutStyleForName(std::nullopt), nullptr);
}

TEST(VLStylesheetNaming, MatchingStyleIsTheFirstEqualOne) {
  auto sheet = VLStylesheet::defaultStylesheet();
  auto other = VLStylesheet::defaultStylesheet();
  auto heading = other->styleForName(u"Heading_20_2");
  EXPECT_EQ(sheet->styleMatchingStyle(heading), sheet->styleForName(u"Heading_20_2"));
  heading->setFontSize(14);
  EXPECT_EQ(sheet->styleMatchingStyle(heading), nullptr);
  EXPECT_EQ(sheet->styleMatchingStyle(nullptr), nullptr);
}

TEST(VLStylesheetNaming, DescendantsAreDirectChildrenInOrderOfDiscovery) {
  auto sheet = VLStylesheet::create();
  auto root = named(u"Root");
  auto first = childOf(root, u"First");
  auto second = childOf(root, u"Second");
  auto grandchild = childOf(second, u"Grandchild");
  auto unrelated = named(u"Unrelated");
  for (const auto &style : {grandchild, root, unrelated, first})
    sheet->addStyle(style);
  // The second child is not in the sheet; its child leads to it.
  EXPECT_EQ(sheet->descendantsOfStyle(root), (std::vector<VLStylePtr>{second, first}));
  EXPECT_EQ(sheet->descendantsOfStyle(first), std::nullopt) << "nil, not an empty array";
  EXPECT_EQ(sheet->descendantsOfStyle(nullptr), std::nullopt);
  sheet->addStyle(second);
  EXPECT_EQ(sheet->descendantsOfStyle(root)->size(), 2u) << "each child once";
}

TEST(VLStylesheetNaming, ListStyleNamesAndLookups) {
  auto sheet = VLStylesheet::create();
  EXPECT_EQ(sheet->uniqueNameForListStyle(nullptr), u"L1");
  auto first = VLListStyle::create();
  first->setStyleName(u"L1");
  auto second = VLListStyle::create();
  second->setStyleName(u"Numbers");
  second->setDisplayName(u"L2");
  sheet->addListStyle(first);
  sheet->addListStyle(second);
  EXPECT_EQ(sheet->uniqueNameForListStyle(nullptr), u"L2") << "style names only";
  EXPECT_EQ(sheet->listStyleForName(u"Numbers"), second);
  EXPECT_EQ(sheet->listStyleForName(u"L2"), nullptr);
  EXPECT_EQ(sheet->listStyleForDisplayName(u"L2"), second);
  EXPECT_EQ(sheet->listStyleForDisplayName(u"L1"), first) << "the style name stands in";
  EXPECT_EQ(sheet->listStyleForName(std::nullopt), nullptr);
  EXPECT_EQ(sheet->listStyleForDisplayName(std::nullopt), nullptr);
  EXPECT_EQ(sheet->defaultListStyle(), VLListStyle::defaultListStyle());
  EXPECT_EQ(sheet->listStyles().size(), 2u) << "the default list style is not held";
}

TEST(VLStylesheetNaming, OutlineLevelNamesComeFromTheOutlineListFirst) {
  auto sheet = VLStylesheet::defaultStylesheet();
  EXPECT_EQ(sheet->displayNameForOutlineLevel(1), u"Heading 1");
  EXPECT_EQ(sheet->displayNameForOutlineLevel(10), u"Default Style") << "10 is no level";
  EXPECT_EQ(sheet->displayNameForOutlineLevel(5), std::nullopt);

  auto plain = VLListStyle::create();
  plain->addListLevelStyle(levelNamed(1, u"Bullet"));
  auto outline = VLListStyle::create();
  outline->setIsOutlineStyle(true);
  outline->addListLevelStyle(levelNamed(1, u"Part"));
  outline->addListLevelStyle(levelNamed(2, std::nullopt));
  auto later = VLListStyle::create();
  later->setIsOutlineStyle(true);
  later->addListLevelStyle(levelNamed(3, u"Later"));
  for (const auto &list : {plain, outline, later})
    sheet->addListStyle(list);
  EXPECT_EQ(sheet->displayNameForOutlineLevel(1), u"Part");
  EXPECT_EQ(sheet->displayNameForOutlineLevel(2), u"Heading 2") << "a level without a name";
  EXPECT_EQ(sheet->displayNameForOutlineLevel(3), u"Heading 3") << "only the first outline list";
}
