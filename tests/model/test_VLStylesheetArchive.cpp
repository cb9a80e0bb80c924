// Stylesheets in archives and copies: every collection, rings and shared references, what
// decoding loses, what it repairs in damaged archives, and the stored archives of the
// default sheets.
#include "ModelTestSupport.h"
#include "model/VLStylesheet.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

using namespace vl;
using test::named;

namespace {

VLStylesheetPtr sheetOf(std::initializer_list<VLStylePtr> styles) {
  auto sheet = VLStylesheet::create();
  for (const auto &style : styles)
    sheet->addStyle(style);
  return sheet;
}

VLListStylePtr outlineList() {
  auto list = VLListStyle::create();
  list->setStyleName(u"L1");
  list->setIsOutlineStyle(true);
  list->addListLevelStyle(
      VLListLevelStyle::listLevelStyleWithTextList(ns::TextList::create(u"({lower-alpha})")));
  list->addListLevelStyle(
      VLListLevelStyle::listLevelStyleWithTextList(ns::TextList::create(u"{disc}")));
  return list;
}

// Where `style` stands in `sheet`, or -1: links compared by position.
int positionIn(const VLStylesheet &sheet, const VLStylePtr &style) {
  auto found = std::find(sheet.styles().begin(), sheet.styles().end(), style);
  return found == sheet.styles().end() ? -1 : static_cast<int>(found - sheet.styles().begin());
}

VLFontTablePtr fontTable() {
  auto fonts = std::make_shared<VLFontTable>();
  fonts->addFont(VLFont::fontWithNSFont(test::font(u"Courier-Bold")));
  fonts->addFont(VLFont::fontWithNSFont(test::font(u"Times-Roman")));
  return fonts;
}

} // namespace

TEST(VLStylesheetArchive, ArchivesAndCopiesHoldEveryCollection) {
  auto sheet = VLStylesheet::defaultScreenplayStylesheet();
  sheet->setDisplayName(u"Script");
  sheet->properties()->setObject(u"value", u"key");
  for (const auto &style : sheet->styles())
    style->setPageBreakAfter(true);
  sheet->addListStyle(outlineList());
  sheet->setFontTable(fontTable());
  auto layout = VLPageLayout::create();
  layout->setTopMargin(37);
  sheet->addPageLayoutStyle(layout);

  for (const auto &decoded : {test::roundTrip(sheet), ns::copyOf(*sheet)}) {
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->displayName(), u"Script");
    EXPECT_EQ(decoded->properties()->objectForKey(u"key"), ns::Value(u"value"));
    ASSERT_EQ(decoded->styles().size(), sheet->styles().size());
    // The links, rings among them (the action style is its own next style), point at the
    // copies, where the originals stand.
    for (size_t i = 0; i < decoded->styles().size(); ++i) {
      const VLStylePtr &mine = decoded->styles()[i], &theirs = sheet->styles()[i];
      EXPECT_NE(mine, theirs);
      EXPECT_TRUE(mine->isEqualToStyle(theirs)) << i;
      EXPECT_FALSE(mine->pageBreakAfter()) << "never read back";
      EXPECT_EQ(positionIn(*decoded, mine->parentStyle()),
                positionIn(*sheet, theirs->parentStyle()));
      EXPECT_EQ(positionIn(*decoded, mine->nextStyle()), positionIn(*sheet, theirs->nextStyle()));
      EXPECT_EQ(positionIn(*decoded, mine->tabStyle()), positionIn(*sheet, theirs->tabStyle()));
    }
    auto action = decoded->styleForName(u"Action");
    EXPECT_EQ(action->nextStyle(), action);
    ASSERT_EQ(decoded->graphicStyles().size(), 1u);
    EXPECT_NE(decoded->graphicStyles()[0], sheet->graphicStyles()[0]);

    auto list = decoded->listStyleForName(u"L1");
    ASSERT_TRUE(list);
    EXPECT_TRUE(list->isOutlineStyle());
    ASSERT_EQ(list->listLevels().size(), 2u);
    EXPECT_EQ(list->listLevels()[0]->markerFormat(), u"({lower-latin})");
    ASSERT_TRUE(decoded->fontTable());
    EXPECT_NE(decoded->fontTable(), sheet->fontTable());
    ASSERT_EQ(decoded->fontTable()->fonts()->count(), 2u);
    EXPECT_TRUE(decoded->fontTable()->fontForName(u"Times-Roman"));
    ASSERT_EQ(decoded->pageLayoutStyles().size(), 1u);
    EXPECT_EQ(decoded->pageLayoutStyles()[0]->topMargin(), 37.0);
  }
}

// Rings that outlive their sheet would show as leaks in sanitized builds.
TEST(VLStylesheetArchive, SheetsBreakTheirRingsWhenTheyGo) {
  auto kept = VLStylesheet::defaultScreenplayStylesheet()->styleForName(u"Dialogue");
  EXPECT_EQ(kept->parentStyle(), nullptr);
  EXPECT_EQ(kept->nextStyle(), nullptr);
  EXPECT_EQ(kept->tabStyle(), nullptr);

  // A copy owns the styles it links to without listing them, and frees them too.
  auto stray = named(u"Stray");
  stray->setNextStyle(stray);
  auto listed = named(u"Listed");
  listed->setTabStyle(stray);
  auto copy = ns::copyOf(*sheetOf({listed}));
  ASSERT_EQ(copy->styles().size(), 1u);
  auto tab = copy->styles()[0]->tabStyle();
  ASSERT_TRUE(tab);
  EXPECT_EQ(tab->nextStyle(), tab) << "the graph comes back as it was";
  EXPECT_EQ(copy->styleForName(u"Stray"), nullptr) << "and is not listed";
  stray->setNextStyle(nullptr);
}

TEST(VLStylesheetArchive, DecodingRepairsParentChainsThatTheStylesCannotUse) {
  // A parent that closes a loop is dropped where decoding meets it.
  auto a = named(u"A");
  auto b = named(u"B", a);
  a->setParentStyle(b);
  auto self = named(u"Self");
  self->setParentStyle(self);
  auto decoded = test::roundTrip(sheetOf({a, b, self}));
  a->setParentStyle(nullptr);
  self->setParentStyle(nullptr);
  ASSERT_TRUE(decoded);
  auto da = decoded->styleForName(u"A"), db = decoded->styleForName(u"B");
  EXPECT_EQ(da->parentStyle(), nullptr) << "decoded first, its parent closes the loop";
  EXPECT_EQ(db->parentStyle(), da);
  EXPECT_EQ(decoded->styleForName(u"Self")->parentStyle(), nullptr);

  // A chain deeper than the walks go is cut.
  auto deep = VLStylesheet::create();
  VLStylePtr parent;
  for (size_t i = 0; i < VLStyleMaxCascadeDepth + 10; ++i) {
    parent = named(u"S" + std::u16string(ns::format(u"%zu", i)), parent);
    deep->addStyle(parent);
  }
  decoded = test::roundTrip(deep);
  ASSERT_TRUE(decoded);
  const auto &styles = decoded->styles();
  size_t last = VLStyleMaxCascadeDepth - 1;
  EXPECT_TRUE(styles[last]->isDescendantOfStyle(styles[0])) << "the deepest chain that is kept";
  EXPECT_EQ(styles[last + 1]->parentStyle(), nullptr);
  EXPECT_EQ(styles[last + 2]->parentStyle(), styles[last + 1]);

  // An automatic style over an automatic parent could not be applied: it stops being automatic.
  auto automaticParent = named(u"Parent");
  automaticParent->setIsAutomaticStyle(true);
  auto child = named(u"Child", automaticParent);
  child->setIsAutomaticStyle(true);
  decoded = test::roundTrip(sheetOf({child, automaticParent}));
  ASSERT_TRUE(decoded);
  auto decodedChild = decoded->styleForName(u"Child");
  EXPECT_FALSE(decodedChild->isAutomaticStyle());
  EXPECT_TRUE(decoded->styleForName(u"Parent")->isAutomaticStyle());
  EXPECT_EQ(decodedChild->attributes()->objectForKey(VLParagraphStyleAttributeName).as<VLStyle>(),
            decodedChild);
}

TEST(VLStylesheetArchive, FailedDecodingFreesTheRingsItMade) {
  // A style's colour is decoded after its next style: an unknown class there fails the
  // archive once the ring is made, before the sheet holds the style. What is left of the
  // ring shows as a leak in sanitized builds.
  auto style = named(u"Loop");
  style->setNextStyle(style);
  style->setForegroundColor(ns::Color::redColor());
  ns::Data data = ns::KeyedArchiver::archivedDataWithRootObject(sheetOf({style}));
  style->setNextStyle(nullptr);
  std::string bytes(data.view());
  size_t at = bytes.find("NSColor");
  ASSERT_NE(at, std::string::npos);
  bytes[at + 6] = 'X';
  ns::ErrorPtr error;
  EXPECT_TRUE(
      ns::KeyedUnarchiver::unarchiveObjectWithData(ns::Data::fromString(bytes), &error).isNil());
  EXPECT_TRUE(error);
}

// The fuzz corpus starts from these archives, and they pin the archive format: what an
// earlier build wrote must decode to the same sheets. VL_WRITE_STYLESHEET_SEEDS=1 rewrites
// them.
TEST(VLStylesheetArchive, StoredArchivesOfTheDefaultSheetsDecode) {
  // One sheet with every other collection too, so that the fuzzer meets all its classes.
  auto full = VLStylesheet::defaultScreenplayStylesheet();
  full->addListStyle(outlineList());
  auto layout = VLPageLayout::create();
  layout->setName(u"pm1");
  full->addPageLayoutStyle(layout);
  auto fonts = std::make_shared<VLFontTable>();
  fonts->addFont(VLFont::fontWithNSFont(test::font(u"Courier")));
  full->setFontTable(fonts);
  auto automatic = full->styleForName(u"Action")->derivedParagraphStyleWithAttributes(
      *full->styleForName(u"Dialogue")->attributes());
  automatic->setIsAutomaticStyle(true);
  automatic->setStyleName(full->uniqueNameForStyle(automatic));
  full->addStyle(automatic);

  const std::pair<const char *, VLStylesheetPtr> seeds[] = {
      {"default.archive", VLStylesheet::defaultStylesheet()},
      {"novel.archive", VLStylesheet::defaultNovelStylesheet()},
      {"screenplay.archive", VLStylesheet::defaultScreenplayStylesheet()},
      {"full.archive", full}};
  const bool write = std::getenv("VL_WRITE_STYLESHEET_SEEDS") != nullptr;
  auto nameOf = [](const VLStylePtr &style) { return style ? style->styleName() : std::nullopt; };
  for (const auto &[file, sheet] : seeds) {
    std::filesystem::path path =
        std::filesystem::path(VL_SOURCE_DIR) / "fuzz" / "corpus" / "StylesheetArchive" / file;
    SCOPED_TRACE(path);
    if (write) {
      std::filesystem::create_directories(path.parent_path());
      ns::Data data = ns::KeyedArchiver::archivedDataWithRootObject(sheet);
      std::ofstream(path, std::ios::binary)
          .write(reinterpret_cast<const char *>(data.bytes()),
                 static_cast<std::streamsize>(data.length()));
    }
    std::ifstream in(path, std::ios::binary);
    ASSERT_TRUE(in);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                               std::istreambuf_iterator<char>());
    auto decoded =
        ns::KeyedUnarchiver::unarchiveObjectWithData(ns::Data(std::move(bytes))).as<VLStylesheet>();
    ASSERT_TRUE(decoded);
    ASSERT_EQ(decoded->styles().size(), sheet->styles().size());
    for (size_t i = 0; i < decoded->styles().size(); ++i) {
      const auto &mine = decoded->styles()[i];
      const auto &fresh = sheet->styles()[i];
      EXPECT_TRUE(mine->isEqualToStyle(fresh)) << i;
      EXPECT_EQ(nameOf(mine->nextStyle()), nameOf(fresh->nextStyle())) << i;
      EXPECT_EQ(nameOf(mine->tabStyle()), nameOf(fresh->tabStyle())) << i;
    }
    EXPECT_EQ(decoded->graphicStyles().size(), 1u);
    EXPECT_EQ(decoded->listStyles().size(), sheet->listStyles().size());
    EXPECT_EQ(decoded->pageLayoutStyles().size(), sheet->pageLayoutStyles().size());
  }
}
