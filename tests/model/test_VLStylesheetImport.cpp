// Stylesheets: importing styles from another sheet with their parent, next and tab links,
// matching, renaming, replacing, the default style rule and the map of old names.
#include "model/VLStylesheet.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace vl;

namespace {

VLStylePtr named(std::u16string_view displayName, const VLStylePtr &parent = nullptr) {
  VLStylePtr style = VLStyle::create();
  style->setDisplayName(std::u16string(displayName));
  style->setStyleName(VLStyle::styleNameForDisplayName(displayName));
  style->setParentStyle(parent);
  return style;
}

VLStylePtr mapped(const ns::DictionaryPtr &map, std::u16string_view name) {
  return map->objectForKey(name).as<VLStyle>();
}

size_t defaultCount(const VLStylesheet &sheet) {
  return std::count_if(sheet.styles().begin(), sheet.styles().end(),
                       [](const VLStylePtr &style) { return style->isDefaultStyle(); });
}

// Sees whether the map lies in the sheet's properties when the styles change.
struct MapWatcher : ns::Object {
  VLStylesheet *sheet = nullptr;
  int changesWithMap = 0;
  void observeValueForKeyPath(std::u16string_view, ns::Object *, const ns::DictionaryPtr &,
                              const void *) override {
    if (sheet->properties()->containsKey(u"importStyleMap"))
      ++changesWithMap;
  }
};

} // namespace

TEST(VLStylesheetImport, EqualStylesAddNothingAndMapToTheStylesHere) {
  auto sheet = VLStylesheet::defaultStylesheet();
  auto source = VLStylesheet::defaultStylesheet();
  auto map = sheet->importStyles({source->styleForName(u"Heading_20_1")}, false);
  EXPECT_EQ(sheet->styles().size(), 5u);
  for (const char16_t *name :
       {u"Heading_20_1", u"Default_20_Style", u"Body_20_Text", u"Heading_20_2", u"Heading_20_3"})
    EXPECT_EQ(mapped(map, name), sheet->styleForName(name)) << ns::toUTF8(name);
  EXPECT_FALSE(sheet->properties()->containsKey(u"importStyleMap"));
  EXPECT_EQ(sheet->importStyles({}, true)->count(), 0u);
  EXPECT_EQ(sheet->importStyles({nullptr}, true)->count(), 0u);
}

TEST(VLStylesheetImport, ParentsComeFirstAndLinksPointIntoTheSheet) {
  auto sheet = VLStylesheet::create();
  auto source = VLStylesheet::create();
  auto base = named(u"Base");
  auto body = named(u"Body", base);
  auto title = named(u"Title", base);
  title->setNextStyle(body);
  title->setTabStyle(title);
  body->setTabStyle(title);
  for (const auto &style : {title, body, base})
    source->addStyle(style);

  auto map = sheet->importStyles({title, body}, false);
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
}

TEST(VLStylesheetImport, MapLiesInThePropertiesWhileRunning) {
  auto sheet = VLStylesheet::create();
  MapWatcher watcher;
  watcher.sheet = sheet.get();
  sheet->addObserver(&watcher, u"styles", 0, nullptr);
  sheet->importStyles({named(u"A")}, false);
  sheet->removeObserver(&watcher, u"styles");
  EXPECT_EQ(watcher.changesWithMap, 1);
  EXPECT_FALSE(sheet->properties()->containsKey(u"importStyleMap"));

  // Outside importStyles there is no map: the style still comes in.
  std::vector<VLStylePtr> remaining{named(u"B")};
  auto imported = sheet->importStyle(remaining[0], false, remaining);
  EXPECT_TRUE(remaining.empty());
  EXPECT_EQ(imported, sheet->styleForName(u"B"));
  EXPECT_EQ(sheet->importStyle(imported, false, remaining), nullptr) << "not held: the map's entry";
}

TEST(VLStylesheetImport, TakenNameWithoutReplaceIsRenamed) {
  auto sheet = VLStylesheet::create();
  auto old = named(u"Name");
  old->setFontSize(10);
  sheet->addStyle(old);
  auto foreign = named(u"Name");
  foreign->setFontSize(20);

  auto map = sheet->importStyles({foreign}, false);
  auto copy = mapped(map, u"Name");
  ASSERT_TRUE(copy);
  EXPECT_EQ(copy->displayName(), u"Name 2");
  EXPECT_EQ(copy->styleName(), u"Name_20_2");
  EXPECT_EQ(sheet->styles(), (std::vector<VLStylePtr>{old, copy}));
  EXPECT_EQ(sheet->styleForName(u"Name"), old);
  EXPECT_EQ(old->displayName(), u"Name");
  EXPECT_EQ(old->fontSize(), 10.0);
}

TEST(VLStylesheetImport, ReplaceMovesTheNewStyleLastAndRelinks) {
  auto sheet = VLStylesheet::defaultStylesheet();
  auto oldBody = sheet->styleForName(u"Body_20_Text");
  auto source = VLStylesheet::defaultStylesheet();
  auto body = source->styleForName(u"Body_20_Text");
  body->setParagraphSpacing(20);

  auto map = sheet->importStyles({body}, true);
  auto newBody = mapped(map, u"Body_20_Text");
  EXPECT_EQ(sheet->styles().back(), newBody);
  EXPECT_EQ(sheet->styles().size(), 5u);
  EXPECT_EQ(sheet->styleForName(u"Body_20_Text"), newBody);
  EXPECT_EQ(newBody->paragraphSpacing(), 20.0);
  EXPECT_EQ(sheet->styleForName(u"Heading_20_1")->nextStyle(), newBody);
  EXPECT_EQ(newBody->tabStyle(), sheet->styleForName(u"Heading_20_1"));
  EXPECT_EQ(newBody->parentStyle(), sheet->defaultParagraphStyle());
  EXPECT_EQ(oldBody->tabStyle(), sheet->styleForName(u"Heading_20_1"))
      << "the replaced style keeps its own links";
}

TEST(VLStylesheetImport, ForeignDefaultStyleArrivesAsADifference) {
  auto sheet = VLStylesheet::defaultNovelStylesheet();
  auto base = sheet->defaultParagraphStyle();
  auto source = VLStylesheet::defaultStylesheet();
  auto map = sheet->importStyles({source->styleForName(u"Heading_20_1")}, false);

  EXPECT_EQ(defaultCount(*sheet), 1u);
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
  EXPECT_EQ(defaultCount(*sheet), 1u);
}

TEST(VLStylesheetImport, RingsImportOnceAndTextStylesAreDropped) {
  auto sheet = VLStylesheet::create();
  auto loop = named(u"Loop");
  loop->setNextStyle(loop);
  auto text = named(u"Emphasis");
  text->setStyleType(VLTextStyleType);
  loop->setTabStyle(text);

  auto map = sheet->importStyles({loop, text}, false);
  EXPECT_EQ(map->count(), 1u);
  ASSERT_EQ(sheet->styles().size(), 1u);
  auto copy = mapped(map, u"Loop");
  EXPECT_EQ(copy->nextStyle(), copy);
  EXPECT_EQ(copy->tabStyle(), nullptr) << "a link to what was not imported becomes nil";
  EXPECT_FALSE(map->containsKey(u"Emphasis"));
  loop->setNextStyle(nullptr);

  std::vector<VLStylePtr> closure;
  sheet->addStylesForStyle(copy, closure);
  sheet->addStylesForStyle(copy, closure);
  EXPECT_EQ(closure.size(), 1u);
}

TEST(VLStylesheetImport, LinksAreSetOnTheStyleHoldingTheOldName) {
  auto sheet = VLStylesheet::create();
  auto resident = named(u"Title");
  resident->setFontSize(30);
  sheet->addStyle(resident);
  auto title = named(u"Title");
  auto body = named(u"Body");
  title->setNextStyle(body);

  auto map = sheet->importStyles({title}, false);
  auto renamed = mapped(map, u"Title");
  EXPECT_EQ(renamed->styleName(), u"Title_20_2");
  EXPECT_EQ(resident->nextStyle(), mapped(map, u"Body")) << "the last step looks the old name up";
  EXPECT_EQ(renamed->nextStyle(), body) << "the copy keeps the link it was copied with";
}
