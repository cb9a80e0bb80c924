// Stylesheets in archives and copies: rings and shared references, what decoding loses,
// what it repairs in damaged archives, and the stored archives of the default sheets.
#include "ModelTestSupport.h"
#include "model/VLStylesheet.h"
#include "ns/Assert.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

using namespace vl;

namespace {

VLStylePtr named(std::u16string_view name, const VLStylePtr &parent = nullptr) {
  VLStylePtr style = VLStyle::create();
  style->setStyleName(std::u16string(name));
  style->setParentStyle(parent);
  return style;
}

VLStylesheetPtr sheetOf(std::initializer_list<VLStylePtr> styles) {
  auto sheet = VLStylesheet::create();
  for (const auto &style : styles)
    sheet->addStyle(style);
  return sheet;
}

std::filesystem::path seedDirectory() {
  return std::filesystem::path(VL_SOURCE_DIR) / "fuzz" / "corpus" / "StylesheetArchive";
}

} // namespace

TEST(VLStylesheetArchive, RingsComeBackAsRingsOfTheCopies) {
  auto a = named(u"A");
  auto b = named(u"B", a);
  auto c = named(u"C", a);
  a->setNextStyle(b);
  b->setNextStyle(c);
  c->setNextStyle(a);
  a->setTabStyle(c);
  b->setTabStyle(a);
  c->setTabStyle(c);
  auto sheet = sheetOf({a, b, c});

  for (const auto &decoded : {test::roundTrip(sheet), ns::copyOf(*sheet)}) {
    ASSERT_TRUE(decoded);
    ASSERT_EQ(decoded->styles().size(), 3u);
    auto da = decoded->styles()[0], db = decoded->styles()[1], dc = decoded->styles()[2];
    EXPECT_NE(da, a);
    EXPECT_EQ(da->nextStyle(), db);
    EXPECT_EQ(db->nextStyle(), dc);
    EXPECT_EQ(dc->nextStyle(), da);
    EXPECT_EQ(da->tabStyle(), dc);
    EXPECT_EQ(db->tabStyle(), da);
    EXPECT_EQ(dc->tabStyle(), dc);
    EXPECT_EQ(db->parentStyle(), da);
    EXPECT_EQ(dc->parentStyle(), da);
  }
}

TEST(VLStylesheetArchive, CopiesLosePageBreakAfterOfEveryStyle) {
  auto sheet = VLStylesheet::defaultScreenplayStylesheet();
  for (const auto &style : sheet->styles())
    style->setPageBreakAfter(true);
  auto copy = ns::copyOf(*sheet);
  ASSERT_TRUE(copy);
  for (const auto &style : copy->styles()) {
    EXPECT_FALSE(style->pageBreakAfter()) << ns::toUTF8(*style->styleName());
    EXPECT_TRUE(style->definesPageBreakAfter());
  }
}

TEST(VLStylesheetArchive, DecodingDropsAParentThatClosesALoop) {
  auto a = named(u"A");
  auto b = named(u"B", a);
  a->setParentStyle(b);
  auto self = named(u"Self");
  self->setParentStyle(self);
  auto decoded = test::roundTrip(sheetOf({a, b, self}));
  ASSERT_TRUE(decoded);
  auto da = decoded->styleForName(u"A"), db = decoded->styleForName(u"B");
  EXPECT_EQ(da->parentStyle(), nullptr) << "decoded first, its parent closes the loop";
  EXPECT_EQ(db->parentStyle(), da);
  EXPECT_EQ(decoded->styleForName(u"Self")->parentStyle(), nullptr);
}

TEST(VLStylesheetArchive, DecodingCutsChainsDeeperThanTheWalks) {
  auto sheet = VLStylesheet::create();
  VLStylePtr parent;
  for (size_t i = 0; i < VLStyleMaxCascadeDepth + 10; ++i) {
    parent = named(u"S" + std::u16string(ns::format(u"%zu", i)), parent);
    sheet->addStyle(parent);
  }
  auto decoded = test::roundTrip(sheet);
  ASSERT_TRUE(decoded);
  const auto &styles = decoded->styles();
  size_t last = VLStyleMaxCascadeDepth - 1;
  EXPECT_TRUE(styles[last]->isDescendantOfStyle(styles[0])) << "the deepest chain that is kept";
  EXPECT_EQ(styles[last + 1]->parentStyle(), nullptr);
  EXPECT_EQ(styles[last + 2]->parentStyle(), styles[last + 1]);
}

TEST(VLStylesheetArchive, AutomaticStyleOverAnAutomaticParentIsRepaired) {
  auto parent = named(u"Parent");
  parent->setIsAutomaticStyle(true);
  auto child = named(u"Child", parent);
  child->setIsAutomaticStyle(true);
  EXPECT_THROW(child->attributes(), ns::InternalInconsistencyException);

  auto decoded = test::roundTrip(sheetOf({child, parent}));
  ASSERT_TRUE(decoded);
  auto decodedChild = decoded->styleForName(u"Child");
  EXPECT_FALSE(decodedChild->isAutomaticStyle());
  EXPECT_TRUE(decoded->styleForName(u"Parent")->isAutomaticStyle());
  EXPECT_EQ(decodedChild->attributes()->objectForKey(VLParagraphStyleAttributeName).as<VLStyle>(),
            decodedChild);
}

TEST(VLStylesheetArchive, DecodedSheetOwnsStylesItLinksToWithoutListing) {
  auto stray = named(u"Stray");
  stray->setNextStyle(stray);
  auto listed = named(u"Listed");
  listed->setTabStyle(stray);
  auto sheet = sheetOf({listed});

  std::weak_ptr<VLStyle> copiedStray;
  {
    auto copy = ns::copyOf(*sheet);
    ASSERT_TRUE(copy);
    ASSERT_EQ(copy->styles().size(), 1u);
    auto tab = copy->styles()[0]->tabStyle();
    ASSERT_TRUE(tab);
    EXPECT_EQ(tab->nextStyle(), tab) << "the graph comes back as it was";
    EXPECT_EQ(copy->styleForName(u"Stray"), nullptr) << "and is not listed";
    copiedStray = tab;
  }
  EXPECT_TRUE(copiedStray.expired()) << "the copy broke the ring when it went";
  stray->setNextStyle(nullptr);
}

TEST(VLStylesheetArchive, FailedDecodingFreesTheRingsItMade) {
  // A style's colour is decoded after its next style: an unknown class there fails the
  // archive once the ring is made, before the sheet holds the style. What is left of the
  // ring shows as a leak in sanitized builds.
  auto style = named(u"Loop");
  style->setNextStyle(style);
  style->setForegroundColor(ns::Color::redColor());
  ns::Data data = ns::KeyedArchiver::archivedDataWithRootObject(sheetOf({style}));
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
  struct Seed {
    const char *file;
    VLStylesheetPtr sheet;
  };
  // One sheet with every other collection too, so that the fuzzer meets all its classes.
  auto full = VLStylesheet::defaultScreenplayStylesheet();
  auto outline = VLListStyle::create();
  outline->setStyleName(u"L1");
  outline->setIsOutlineStyle(true);
  outline->addListLevelStyle(
      VLListLevelStyle::listLevelStyleWithTextList(ns::TextList::create(u"({lower-alpha})")));
  outline->addListLevelStyle(
      VLListLevelStyle::listLevelStyleWithTextList(ns::TextList::create(u"{disc}")));
  full->addListStyle(outline);
  auto layout = VLPageLayout::create();
  layout->setName(u"pm1");
  full->addPageLayoutStyle(layout);
  auto fonts = std::make_shared<VLFontTable>();
  fonts->addFont(VLFont::fontWithNSFont(ns::Font::fontWithName(u"Courier", 12)));
  full->setFontTable(fonts);
  auto automatic = full->styleForName(u"Action")->derivedParagraphStyleWithAttributes(
      *full->styleForName(u"Dialogue")->attributes());
  automatic->setIsAutomaticStyle(true);
  automatic->setStyleName(full->uniqueNameForStyle(automatic));
  full->addStyle(automatic);

  Seed seeds[] = {{"default.archive", VLStylesheet::defaultStylesheet()},
                  {"novel.archive", VLStylesheet::defaultNovelStylesheet()},
                  {"screenplay.archive", VLStylesheet::defaultScreenplayStylesheet()},
                  {"full.archive", full}};
  const bool write = std::getenv("VL_WRITE_STYLESHEET_SEEDS") != nullptr;
  for (const Seed &seed : seeds) {
    std::filesystem::path path = seedDirectory() / seed.file;
    if (write) {
      std::filesystem::create_directories(path.parent_path());
      ns::Data data = ns::KeyedArchiver::archivedDataWithRootObject(seed.sheet);
      std::ofstream(path, std::ios::binary)
          .write(reinterpret_cast<const char *>(data.bytes()),
                 static_cast<std::streamsize>(data.length()));
    }
    std::ifstream in(path, std::ios::binary);
    ASSERT_TRUE(in) << path;
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                               std::istreambuf_iterator<char>());
    auto decoded =
        ns::KeyedUnarchiver::unarchiveObjectWithData(ns::Data(std::move(bytes))).as<VLStylesheet>();
    ASSERT_TRUE(decoded) << path;
    ASSERT_EQ(decoded->styles().size(), seed.sheet->styles().size()) << path;
    for (size_t i = 0; i < decoded->styles().size(); ++i) {
      const auto &mine = decoded->styles()[i];
      const auto &fresh = seed.sheet->styles()[i];
      EXPECT_TRUE(mine->isEqualToStyle(fresh)) << path << " " << i;
      auto nameOf = [](const VLStylePtr &style) {
        return style ? style->styleName() : std::nullopt;
      };
      EXPECT_EQ(nameOf(mine->nextStyle()), nameOf(fresh->nextStyle())) << path << " " << i;
      EXPECT_EQ(nameOf(mine->tabStyle()), nameOf(fresh->tabStyle())) << path << " " << i;
    }
    EXPECT_EQ(decoded->graphicStyles().size(), 1u);
    EXPECT_EQ(decoded->listStyles().size(), seed.sheet->listStyles().size());
    EXPECT_EQ(decoded->pageLayoutStyles().size(), seed.sheet->pageLayoutStyles().size());
  }
}

TEST(VLStylesheetArchive, ListStylesAndFontTableRoundTrip) {
  auto sheet = VLStylesheet::defaultNovelStylesheet();
  auto list = VLListStyle::create();
  list->setStyleName(u"L1");
  list->setDisplayName(u"Outline");
  list->setIsOutlineStyle(true);
  list->addListLevelStyle(
      VLListLevelStyle::listLevelStyleWithTextList(ns::TextList::create(u"({lower-alpha})")));
  sheet->addListStyle(list);
  auto fonts = std::make_shared<VLFontTable>();
  fonts->addFont(VLFont::fontWithNSFont(ns::Font::fontWithName(u"Courier-Bold", 12)));
  fonts->addFont(VLFont::fontWithNSFont(ns::Font::fontWithName(u"Times-Roman", 12)));
  sheet->setFontTable(fonts);

  auto copy = copyOf(*sheet);
  ASSERT_NE(copy, sheet);
  auto copiedList = copy->listStyleForName(u"L1");
  ASSERT_TRUE(copiedList);
  EXPECT_NE(copiedList, list);
  EXPECT_EQ(copiedList->displayName(), u"Outline");
  EXPECT_TRUE(copiedList->isOutlineStyle());
  ASSERT_EQ(copiedList->listLevels().size(), 1u);
  EXPECT_EQ(copiedList->listLevelStyles().front()->markerFormat(), u"({lower-latin})");

  ASSERT_TRUE(copy->fontTable());
  EXPECT_NE(copy->fontTable(), fonts);
  ASSERT_EQ(copy->fontTable()->fonts()->count(), 2u);
  auto first = copy->fontTable()->fonts()->objectAtIndex(0).as<VLFont>();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->fontName(), u"Courier-Bold");
  EXPECT_TRUE(first->hasBoldFontWeight());
  EXPECT_TRUE(copy->fontTable()->fontForName(u"Times-Roman"));
}
