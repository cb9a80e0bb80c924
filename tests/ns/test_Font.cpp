// Fonts and the font manager: lookup by name, interning, traits, trait and family
// conversions, and replaceable catalogues.
#include "ns/Font.h"
#include "ns/FontManager.h"
#include "ns/KeyedArchiver.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace vl::ns;

namespace {

FontManager &manager() {
  return *FontManager::sharedFontManager();
}

FontPtr font(std::u16string_view name, double size = 12) {
  auto f = Font::fontWithName(name, size);
  EXPECT_NE(f, nullptr) << "no font " << std::string(name.begin(), name.end());
  return f;
}

std::string nameOf(const FontPtr &f) {
  return f ? std::string(f->fontName().begin(), f->fontName().end()) : "(nil)";
}

// Installs a catalogue for one test and restores the built-in one after it.
struct CatalogGuard {
  explicit CatalogGuard(std::shared_ptr<FontCatalog> catalog) {
    FontManager::setCatalog(std::move(catalog));
  }
  ~CatalogGuard() { FontManager::setCatalog(nullptr); }
};

class ListCatalog : public FontCatalog {
public:
  explicit ListCatalog(std::vector<FontFace> faces) : faces_(std::move(faces)) {}
  std::vector<FontFace> faces() const override { return faces_; }

private:
  std::vector<FontFace> faces_;
};

FontFace face(const char16_t *name, const char16_t *family, uint32_t traits, int weight = 5) {
  return FontFace{name, family, name, u"Face", traits, weight};
}

} // namespace

TEST(Font, FindsFacesByPostScriptFullAndFamilyName) {
  const std::pair<const char16_t *, const char *> names[] = {
      {u"Helvetica-Bold", "Helvetica-Bold"},
      {u"Courier Bold", "Courier-Bold"},
      {u"Times", "Times-Roman"},          // a family: its regular member
      {u"courier prime", "CourierPrime"}, // ASCII case ignored
      {u"Comic Sans MS", "(nil)"},        // no stand-in
  };
  for (const auto &[name, expected] : names)
    EXPECT_EQ(nameOf(Font::fontWithName(name, 12)), expected);
}

TEST(Font, SameFaceAndSizeIsTheSameObject) {
  auto a = font(u"Times-Roman", 12);
  EXPECT_EQ(a.get(), font(u"Times", 12).get()) << "names of one face meet in one object";
  EXPECT_NE(a.get(), font(u"Times-Roman", 13).get());
  EXPECT_EQ(font(u"Courier", 0).get(), font(u"Courier", 12).get()) << "0: the default size";
  EXPECT_EQ(manager().convertFont(a, 18)->pointSize(), 18.0);
}

TEST(Font, UserAndSystemFonts) {
  EXPECT_EQ(nameOf(Font::userFontOfSize(12)), "Helvetica");
  Font::setUserFontName(u"Georgia");
  EXPECT_EQ(nameOf(Font::userFontOfSize(10)), "Georgia");
  Font::setUserFontName(u"No Such Font");
  EXPECT_EQ(nameOf(Font::userFontOfSize(10)), "Helvetica") << "a missing user font falls back";
  Font::setUserFontName(u"");
}

TEST(FontManager, TraitsAreWhatTheFaceHas) {
  EXPECT_EQ(manager().traitsOfFont(font(u"Helvetica")), 0u) << "no unbold bit for a plain face";
  EXPECT_EQ(manager().traitsOfFont(font(u"Helvetica-BoldOblique")),
            uint32_t{BoldFontMask | ItalicFontMask});
  EXPECT_EQ(manager().traitsOfFont(font(u"Courier-Bold")),
            uint32_t{BoldFontMask | FixedPitchFontMask});
  // Asked by name, the "un" traits count too.
  EXPECT_TRUE(manager().fontNamedHasTraits(u"Times-Bold", BoldFontMask | UnitalicFontMask));
  EXPECT_FALSE(manager().fontNamedHasTraits(u"Times-Bold", UnboldFontMask));
}

TEST(FontManager, TraitConversionsMoveWithinTheFamily) {
  auto plain = font(u"Times-Roman", 11);
  auto bold = manager().convertFontToHaveTrait(plain, BoldFontMask);
  EXPECT_EQ(nameOf(bold), "Times-Bold");
  EXPECT_EQ(nameOf(manager().convertFontToHaveTrait(bold, ItalicFontMask)), "Times-BoldItalic");
  EXPECT_EQ(nameOf(manager().convertFontToNotHaveTrait(font(u"Times-Italic"), ItalicFontMask)),
            "Times-Roman");
  EXPECT_EQ(manager().convertFontToHaveTrait(plain, FixedPitchFontMask).get(), plain.get())
      << "traits other than bold and italic are not conversions";
}

TEST(FontManager, AMissingFaceLeavesTheFontUnchanged) {
  auto symbol = font(u"Symbol", 12);
  EXPECT_EQ(manager().convertFontToHaveTrait(symbol, BoldFontMask).get(), symbol.get());
}

TEST(FontManager, FamilyConversionKeepsTraitsWhereTheFamilyHasThem) {
  auto boldItalic = font(u"Helvetica-BoldOblique", 10);
  auto times = manager().convertFontToFamily(boldItalic, u"Times");
  EXPECT_EQ(nameOf(times), "Times-BoldItalic");
  EXPECT_EQ(nameOf(manager().convertFontToFamily(boldItalic, u"Symbol")), "Symbol")
      << "the closest member when the family lacks the face";
  EXPECT_EQ(manager().convertFontToFamily(boldItalic, u"Wingdings").get(), boldItalic.get())
      << "unknown family: unchanged";
}

TEST(FontManager, ListsTheCatalogue) {
  auto fonts = manager().availableFonts();
  EXPECT_TRUE(std::is_sorted(fonts.begin(), fonts.end()));
  EXPECT_NE(std::find(fonts.begin(), fonts.end(), u"Courier-BoldOblique"), fonts.end());
  auto members = manager().availableMembersOfFontFamily(u"Times");
  ASSERT_EQ(members.size(), 4u);
  EXPECT_EQ(members[0].fontName, u"Times-Roman");
  EXPECT_EQ(members[3].faceName, u"Bold Italic");
}

TEST(FontManager, AReplacedCatalogueIsTheOnlySource) {
  {
    CatalogGuard guard(std::make_shared<ListCatalog>(
        std::vector<FontFace>{face(u"Book-Regular", u"Book", 0), face(u"Book-Light", u"Book", 0, 3),
                              face(u"Book-Semibold", u"Book", BoldFontMask, 8),
                              face(u"Book-Bold", u"Book", BoldFontMask, 9),
                              face(u"Book-Black", u"Book", BoldFontMask, 11),
                              face(u"Mono", u"Mono", FixedPitchFontMask)}));
    EXPECT_EQ(Font::fontWithName(u"Helvetica", 12), nullptr);
    EXPECT_EQ(nameOf(Font::fontWithName(u"Book", 12)), "Book-Regular")
        << "the plain member closest to regular weight";
    EXPECT_EQ(nameOf(manager().convertFontToHaveTrait(font(u"Book"), BoldFontMask)), "Book-Bold")
        << "the bold member closest to bold weight";
    EXPECT_EQ(nameOf(manager().convertFontToHaveTrait(font(u"Book-Black"), UnboldFontMask)),
              "Book-Regular");
    EXPECT_EQ(nameOf(Font::userFontOfSize(12)), "Book-Black")
        << "without Helvetica, the first face in name order";
  }
  EXPECT_EQ(nameOf(Font::fontWithName(u"Helvetica", 12)), "Helvetica") << "restored";
}

TEST(FontManager, InstalledFontCatalogueUsesExactNames) {
  auto installed = fontconfigFontCatalog();
  if (!installed || installed->faces().empty())
    GTEST_SKIP() << "no fontconfig or no fonts installed";
  auto faces = installed->faces();
  CatalogGuard guard(installed);
  for (const FontFace &f : faces) {
    auto found = Font::fontWithName(f.fontName, 12);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->fontName(), f.fontName);
    EXPECT_EQ(found->familyName(), f.familyName);
  }
}

TEST(Font, ArchivesByNameAndSize) {
  auto original = font(u"Georgia-Bold", 15);
  auto back = KeyedUnarchiver::unarchiveObjectWithData(
                  KeyedArchiver::archivedDataWithRootObject(Value(original)))
                  .as<Font>();
  ASSERT_NE(back, nullptr);
  EXPECT_TRUE(back->isEqual(*original));
  EXPECT_EQ(back->traits(), uint32_t{BoldFontMask});
}
