// Stylesheets: adding, removing and replacing styles with their links, lookups, the default
// styles, the other collections, free names, and importing styles from another sheet.
#include "ModelTestSupport.h"
#include "model/VLStylesheet.h"
#include "ns/Array.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace vl;
using ns::Value;
using test::named;

namespace {

VLStylePtr displayed(std::u16string_view styleName, std::u16string_view displayName) {
  VLStylePtr style = named(styleName);
  style->setDisplayName(std::u16string(displayName));
  return style;
}

// A style named after its display name, as a user makes it.
VLStylePtr userStyle(std::u16string_view displayName, const VLStylePtr &parent = nullptr) {
  VLStylePtr style = named(*VLStyle::styleNameForDisplayName(displayName), parent);
  style->setDisplayName(std::u16string(displayName));
  return style;
}

VLStylePtr mapped(const ns::DictionaryPtr &map, std::u16string_view name) {
  return map->objectForKey(name).as<VLStyle>();
}

} // namespace

TEST(VLStylesheet, AddKeepsOneOfEachObjectAndAnnounces) {
  auto sheet = VLStylesheet::create();
  test::Counter counter;
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
}

TEST(VLStylesheet, RemoveAndReplaceRelinkTheOtherStyles) {
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

  auto other = named(u"Other", child);
  other->setTabStyle(child);
  auto last = named(u"Last");
  last->setNextStyle(child);
  sheet->addStyle(other);
  sheet->addStyle(last);
  auto replacement = named(u"New");
  sheet->replaceStyle(child, replacement);
  EXPECT_EQ(sheet->styles(), (std::vector<VLStylePtr>{other, last, replacement}));
  EXPECT_EQ(other->parentStyle(), replacement);
  EXPECT_EQ(other->tabStyle(), replacement);
  EXPECT_EQ(last->nextStyle(), replacement);

  // Without its default style a sheet orphans the children and makes a new one, once.
  auto defaults = VLStylesheet::defaultStylesheet();
  auto old = defaults->defaultParagraphStyle();
  auto body = defaults->styleForName(u"Body_20_Text");
  defaults->removeStyle(old);
  EXPECT_EQ(body->parentStyle(), nullptr);
  auto fresh = defaults->defaultParagraphStyle();
  EXPECT_NE(fresh, old);
  EXPECT_EQ(defaults->styles().back(), fresh);
  EXPECT_EQ(defaults->defaultParagraphStyle(), fresh);
}

TEST(VLStylesheet, LookupsByNameDisplayNameAndLevels) {
  auto sheet = VLStylesheet::defaultStylesheet();
  EXPECT_EQ(sheet->styleForName(std::nullopt), nullptr);
  EXPECT_EQ(sheet->styleForName(u"Body Text"), nullptr) << "style names are encoded";
  EXPECT_EQ(*sheet->styleForDisplayName(u"Body Text")->styleName(), u"Body_20_Text");
  auto unnamed = named(u"Only_name");
  sheet->addStyle(unnamed);
  EXPECT_EQ(sheet->styleForDisplayName(u"Only_name"), unnamed)
      << "a style without a display name answers with its style name";
  EXPECT_EQ(*sheet->styleForHeaderLevel(0)->styleName(), u"Body_20_Text")
      << "the default style comes last for level 0";
  EXPECT_EQ(*sheet->styleForHeaderLevel(2)->styleName(), u"Heading_20_2");
  EXPECT_EQ(sheet->styleForHeaderLevel(7), nullptr);
  EXPECT_EQ(*sheet->styleForOutlineLevel(10)->styleName(), u"Default_20_Style")
      << "own levels only: the default style has none";

  // Header levels cascade: a child added before the heading is found first.
  auto onlyDefault = VLStylesheet::create();
  EXPECT_EQ(onlyDefault->styleForHeaderLevel(0), onlyDefault->defaultParagraphStyle());
  auto heading = named(u"H");
  heading->setHeaderLevel(4);
  auto child = named(u"C", heading);
  onlyDefault->addStyle(child);
  onlyDefault->addStyle(heading);
  EXPECT_EQ(onlyDefault->styleForHeaderLevel(4), child);
  EXPECT_EQ(onlyDefault->styleForOutlineLevel(4), heading);

  // Equal styles and the children of a style, each once, in order of discovery.
  auto otherSheet = VLStylesheet::defaultStylesheet();
  auto other = otherSheet->styleForName(u"Heading_20_2");
  EXPECT_EQ(sheet->styleMatchingStyle(other), sheet->styleForName(u"Heading_20_2"));
  other->setFontSize(14);
  EXPECT_EQ(sheet->styleMatchingStyle(other), nullptr);
  auto second = named(u"Second", heading);
  onlyDefault->addStyle(named(u"Grandchild", second));
  EXPECT_EQ(onlyDefault->descendantsOfStyle(heading), (std::vector<VLStylePtr>{child, second}));
  EXPECT_EQ(onlyDefault->descendantsOfStyle(child), std::nullopt) << "nil, not an empty array";
}

TEST(VLStylesheet, DefaultTextGraphicAndListStyles) {
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
  EXPECT_EQ(sheet->defaultGraphicStyle(), graphic);
  EXPECT_EQ(*graphic->styleName(), u"Default_20_Graphic_20_Style");
  auto layout = VLPageLayout::create();
  sheet->addPageLayoutStyle(layout);
  sheet->addPageLayoutStyle(layout);
  EXPECT_EQ(sheet->pageLayoutStyles().size(), 1u) << "a layout is held once";
  EXPECT_EQ(sheet->defaultListStyle(), VLListStyle::defaultListStyle());
}

TEST(VLStylesheet, PaginationOutlineSettingsAndSortOrder) {
  auto plain = VLStylesheet::create();
  plain->defaultParagraphStyle();
  EXPECT_FALSE(plain->requiresSpecialPagination());
  auto paginated = named(u"P");
  paginated->setPaginationStyle(VLShotPagination);
  plain->addStyle(paginated);
  EXPECT_TRUE(plain->requiresSpecialPagination());

  auto sheet = VLStylesheet::defaultStylesheet();
  EXPECT_TRUE(sheet->requiresSpecialPagination());
  EXPECT_EQ(sheet->defaultOutlineSettings()->valueForKeyPath(u"outlineLevelSettings.displayName"),
            Value(ns::Array::create({u"Body Text"})));
  EXPECT_EQ(VLStylesheet::defaultNovelStylesheet()->defaultOutlineSettings()->valueForKeyPath(
                u"outlineLevelSettings.defaultStyle"),
            Value(ns::Array::create({u"Default_20_Style"})));

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

TEST(VLStylesheetNaming, FreeNamesCountOnlyTheirOwnKind) {
  auto sheet = VLStylesheet::create();
  EXPECT_EQ(sheet->uniqueNameForDisplayName(u"Scene Heading"), u"Scene_20_Heading");
  sheet->addStyle(named(u"Scene_20_Heading"));
  sheet->addStyle(named(u"Scene_20_Heading_1"));
  EXPECT_EQ(sheet->uniqueNameForDisplayName(u"Scene Heading"), u"Scene_20_Heading_2");
  sheet->addStyle(displayed(u"Other", u"Plain"));
  EXPECT_EQ(sheet->uniqueNameForDisplayName(u"Plain"), u"Plain") << "tested against style names";
  EXPECT_EQ(sheet->uniqueNameForDisplayName(u""), std::nullopt);

  // Display names number from 2; a style without one shows its style name.
  EXPECT_EQ(sheet->uniqueDisplayNameForName(u"Plain"), u"Plain 2");
  sheet->addStyle(displayed(u"x", u"Plain 2"));
  EXPECT_EQ(sheet->uniqueDisplayNameForName(u"Plain"), u"Plain 3");
  EXPECT_EQ(sheet->uniqueDisplayNameForName(u"Scene_20_Heading"), u"Scene_20_Heading 2");
  EXPECT_EQ(sheet->uniqueDisplayNameForName(std::nullopt), std::nullopt);

  // Automatic styles by kind and format; display names do not count.
  auto automatic = VLStyle::create();
  automatic->setIsAutomaticStyle(true);
  EXPECT_EQ(sheet->uniqueNameForStyle(automatic), u"P1");
  sheet->addStyle(named(u"P1"));
  sheet->addStyle(named(u"P3"));
  EXPECT_EQ(sheet->uniqueNameForStyle(automatic), u"P2");
  EXPECT_EQ(sheet->uniqueNameForStyle(nullptr), u"P2");
  automatic->setStyleType(VLTextStyleType);
  EXPECT_EQ(sheet->uniqueNameForStyle(automatic), u"T1");
  automatic->setStyleType(VLOtherStyleType);
  EXPECT_EQ(sheet->uniqueNameForStyle(automatic), u"U1");
  sheet->addStyle(displayed(u"Other", u"Q1"));
  EXPECT_EQ(sheet->uniqueNameForStyle(automatic, u"Q%d"), u"Q1");

  // Graphic styles, page layouts and list styles count only their own collection.
  EXPECT_EQ(sheet->uniqueNameForGraphicStyle(nullptr), u"fr1");
  auto graphic = VLGraphicStyle::create();
  graphic->setStyleName(u"fr1");
  sheet->addGraphicStyle(graphic);
  sheet->addStyle(named(u"fr2"));
  EXPECT_EQ(sheet->uniqueNameForGraphicStyle(nullptr), u"fr2");
  auto layout = VLPageLayout::create();
  layout->setName(u"pm1");
  sheet->addPageLayoutStyle(layout);
  EXPECT_EQ(sheet->uniqueNameForPageLayout(nullptr), u"pm2");
  EXPECT_EQ(sheet->pageLayoutStyleForName(u"pm1"), layout);
  auto list = VLListStyle::create();
  list->setStyleName(u"Numbers");
  list->setDisplayName(u"L1");
  sheet->addListStyle(list);
  EXPECT_EQ(sheet->uniqueNameForListStyle(nullptr), u"L1") << "style names only";
  EXPECT_EQ(sheet->listStyleForName(u"Numbers"), list);
  EXPECT_EQ(sheet->listStyleForName(u"L1"), nullptr);
  EXPECT_EQ(sheet->listStyleForDisplayName(u"L1"), list);
}

TEST(VLStylesheetNaming, OutlineLevelNamesComeFromTheFirstOutlineListFirst) {
  auto sheet = VLStylesheet::defaultStylesheet();
  EXPECT_EQ(sheet->displayNameForOutlineLevel(1), u"Heading 1");
  EXPECT_EQ(sheet->displayNameForOutlineLevel(10), u"Default Style") << "10 is no level";
  EXPECT_EQ(sheet->displayNameForOutlineLevel(5), std::nullopt);

  // Lists of levels 1 to 3 named by `names` (empty: no name).
  auto add = [&](bool isOutline, std::vector<std::u16string> names) {
    auto list = VLListStyle::create();
    list->setIsOutlineStyle(isOutline);
    for (size_t i = 0; i < names.size(); ++i) {
      auto level = std::make_shared<VLListBulletLevelStyle>();
      level->setLevel(i + 1);
      if (!names[i].empty())
        level->setDisplayName(names[i]);
      list->addListLevelStyle(level);
    }
    sheet->addListStyle(list);
  };
  add(false, {u"Bullet"});
  add(true, {u"Part", u""});
  add(true, {u"", u"", u"Later"});
  EXPECT_EQ(sheet->displayNameForOutlineLevel(1), u"Part");
  EXPECT_EQ(sheet->displayNameForOutlineLevel(2), u"Heading 2") << "a level without a name";
  EXPECT_EQ(sheet->displayNameForOutlineLevel(3), u"Heading 3") << "only the first outline list";
}

TEST(VLStylesheetImport, EqualStylesAddNothingAndMapToTheStylesHere) {
  auto sheet = VLStylesheet::defaultStylesheet();
  auto source = VLStylesheet::defaultStylesheet();
  auto map = sheet->importStyles({source->styleForName(u"Heading_20_1")}, false);
  EXPECT_EQ(sheet->styles().size(), 5u);
  for (const char16_t *name :
       {u"Heading_20_1", u"Default_20_Style", u"Body_20_Text", u"Heading_20_2", u"Heading_20_3"})
    EXPECT_EQ(mapped(map, name), sheet->styleForName(name)) << ns::toUTF8(name);
  EXPECT_FALSE(sheet->properties()->containsKey(u"importStyleMap")) << "the map is gone after";
  EXPECT_EQ(sheet->importStyles({nullptr}, true)->count(), 0u);
}

TEST(VLStylesheetImport, ParentsComeFirstAndLinksPointIntoTheSheet) {
  auto sheet = VLStylesheet::create();
  auto base = userStyle(u"Base");
  auto body = userStyle(u"Body", base);
  auto title = userStyle(u"Title", base);
  title->setNextStyle(body);
  title->setTabStyle(title);
  body->setTabStyle(title);
  auto map = sheet->importStyles({title, body}, false);
  title->setTabStyle(nullptr); // the rings of the originals
  title->setNextStyle(nullptr);
  auto titleHere = mapped(map, u"Title");
  auto bodyHere = mapped(map, u"Body");
  auto baseHere = mapped(map, u"Base");
  ASSERT_TRUE(titleHere && bodyHere && baseHere);
  EXPECT_EQ(sheet->styles(), (std::vector<VLStylePtr>{baseHere, titleHere, bodyHere}));
  EXPECT_NE(titleHere, title);
  EXPECT_EQ(titleHere->parentStyle(), baseHere);
  EXPECT_EQ(titleHere->nextStyle(), bodyHere);
  EXPECT_EQ(titleHere->tabStyle(), titleHere);
  EXPECT_EQ(bodyHere->tabStyle(), titleHere);
  EXPECT_EQ(bodyHere->nextStyle(), nullptr);

  // Outside importStyles there is no map: the style still comes in.
  std::vector<VLStylePtr> remaining{userStyle(u"B")};
  auto imported = sheet->importStyle(remaining[0], false, remaining);
  EXPECT_TRUE(remaining.empty());
  EXPECT_EQ(imported, sheet->styleForName(u"B"));
}

TEST(VLStylesheetImport, TakenNameIsRenamedOrReplaced) {
  auto sheet = VLStylesheet::create();
  auto resident = userStyle(u"Title");
  resident->setFontSize(10);
  sheet->addStyle(resident);
  auto title = userStyle(u"Title");
  title->setFontSize(20);
  auto body = userStyle(u"Body");
  title->setNextStyle(body);
  auto map = sheet->importStyles({title}, false);
  auto renamed = mapped(map, u"Title");
  EXPECT_EQ(renamed->displayName(), u"Title 2");
  EXPECT_EQ(renamed->styleName(), u"Title_20_2");
  EXPECT_EQ(sheet->styleForName(u"Title"), resident);
  EXPECT_EQ(resident->fontSize(), 10.0);
  // The last step looks the old name up, so the links land on the resident style.
  EXPECT_EQ(resident->nextStyle(), mapped(map, u"Body"));
  EXPECT_EQ(renamed->nextStyle(), body) << "the copy keeps the link it was copied with";

  auto defaults = VLStylesheet::defaultStylesheet();
  auto oldBody = defaults->styleForName(u"Body_20_Text");
  auto source = VLStylesheet::defaultStylesheet();
  auto foreignBody = source->styleForName(u"Body_20_Text");
  foreignBody->setParagraphSpacing(20);
  auto newBody = mapped(defaults->importStyles({foreignBody}, true), u"Body_20_Text");
  EXPECT_EQ(defaults->styles().back(), newBody);
  EXPECT_EQ(defaults->styles().size(), 5u);
  EXPECT_EQ(defaults->styleForName(u"Body_20_Text"), newBody);
  EXPECT_EQ(newBody->paragraphSpacing(), 20.0);
  EXPECT_EQ(defaults->styleForName(u"Heading_20_1")->nextStyle(), newBody);
  EXPECT_EQ(newBody->tabStyle(), defaults->styleForName(u"Heading_20_1"));
  EXPECT_EQ(newBody->parentStyle(), defaults->defaultParagraphStyle());
  EXPECT_EQ(oldBody->tabStyle(), defaults->styleForName(u"Heading_20_1"))
      << "the replaced style keeps its own links";
}

TEST(VLStylesheetImport, ForeignDefaultStyleArrivesAsADifference) {
  auto sheet = VLStylesheet::defaultNovelStylesheet();
  auto base = sheet->defaultParagraphStyle();
  auto defaultCount = [&] {
    return std::count_if(sheet->styles().begin(), sheet->styles().end(),
                         [](const VLStylePtr &style) { return style->isDefaultStyle(); });
  };
  auto map = sheet->importStyles({VLStylesheet::defaultStylesheet()->styleForName(u"Heading_20_1")},
                                 false);
  EXPECT_EQ(defaultCount(), 1);
  EXPECT_EQ(sheet->defaultParagraphStyle(), base);
  auto imported = mapped(map, u"Default_20_Style");
  ASSERT_TRUE(imported);
  EXPECT_FALSE(imported->isDefaultStyle());
  EXPECT_EQ(imported->parentStyle(), base);
  EXPECT_EQ(imported->displayName(), u"Imported Default Style 1");
  EXPECT_EQ(imported->styleName(), u"Imported_20_Default_20_Style_20_1");
  EXPECT_TRUE(imported->definesFont()) << "the fonts differ";
  EXPECT_TRUE(imported->definesAlignment()) << "natural against left";
  EXPECT_FALSE(imported->definesHeadIndent()) << "both 0";
  EXPECT_EQ(mapped(map, u"Heading_20_1")->parentStyle(), imported);

  // The number is tried on style names, which never hold blanks, so it stays 1 and the
  // display name is what moves on.
  auto again = mapped(
      sheet->importStyles({VLStylesheet::defaultStylesheet()->defaultParagraphStyle()}, false),
      u"Default_20_Style");
  EXPECT_NE(again, imported);
  EXPECT_EQ(again->displayName(), u"Imported Default Style 1 2");
  EXPECT_EQ(defaultCount(), 1);
}

TEST(VLStylesheetImport, RingsImportOnceAndTextStylesAreDropped) {
  auto sheet = VLStylesheet::create();
  auto loop = userStyle(u"Loop");
  loop->setNextStyle(loop);
  auto text = userStyle(u"Emphasis");
  text->setStyleType(VLTextStyleType);
  loop->setTabStyle(text);
  auto map = sheet->importStyles({loop, text}, false);
  loop->setNextStyle(nullptr);
  EXPECT_EQ(map->count(), 1u);
  ASSERT_EQ(sheet->styles().size(), 1u);
  auto copy = mapped(map, u"Loop");
  EXPECT_EQ(copy->nextStyle(), copy);
  EXPECT_EQ(copy->tabStyle(), nullptr) << "a link to what was not imported becomes nil";
}
