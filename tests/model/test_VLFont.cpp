// Fonts and font tables: late resolution, flags that only rise, lookups, copies and archives.
#include "ModelTestSupport.h"
#include "model/VLFont.h"
#include "model/VLFontTable.h"
#include "ns/FontManager.h"
#include "ns/String.h"

#include <gtest/gtest.h>

using namespace vl;
using vl::ns::Font;
using vl::ns::FontPtr;
using vl::test::roundTrip;

namespace {

std::u16string nameOf(const FontPtr &font) {
  return font ? font->fontName() : u"(nil)";
}

// A font as a file names it, not yet resolved.
VLFontPtr named(std::u16string name, int64_t number = 0) {
  auto font = VLFont::font();
  font->setFontName(std::move(name));
  font->setFontNumber(number);
  return font;
}

} // namespace

TEST(VLFont, FontWithNSFontTakesNameFamilyAndTraits) {
  auto font = VLFont::fontWithNSFont(test::font(u"Times-BoldItalic"));
  EXPECT_EQ(font->fontName(), u"Times-BoldItalic");
  EXPECT_EQ(font->fontFamilyName(), u"Times");
  EXPECT_TRUE(font->hasBoldFontWeight());
  EXPECT_TRUE(font->hasItalicFontStyle());
  EXPECT_EQ(nameOf(font->nsFont()), u"Times-BoldItalic");

  EXPECT_EQ(test::failureOf([] { VLFont::fontWithNSFont(nullptr); }),
            "Invalid parameter not satisfying: nsFont");
}

TEST(VLFont, ResolvesByNameFirst) {
  auto font = named(u"Courier-Bold");
  font->setFontFamilyName(u"Times");
  EXPECT_EQ(nameOf(font->nsFont()), u"Courier-Bold") << "a found name wins over the family";
  EXPECT_EQ(font->nsFont()->pointSize(), 12.0);
  EXPECT_EQ(font->fontFamilyName(), u"Courier") << "the resolved font's family replaces it";
  EXPECT_TRUE(font->hasBoldFontWeight());
}

TEST(VLFont, ResolvesThroughFamilyAndFlagsWhenTheNameIsUnknown) {
  auto font = named(u"Garamond Premier Pro");
  font->setFontFamilyName(u"Times");
  font->setHasBoldFontWeight(true);
  font->setHasItalicFontStyle(true);
  FontPtr resolved = font->nsFont();
  EXPECT_EQ(nameOf(resolved), u"Times-BoldItalic");
  EXPECT_EQ(font->nsFont().get(), resolved.get()) << "resolved once, then kept";
  EXPECT_EQ(font->fontName(), u"Garamond Premier Pro") << "the file's name stays";

  auto plain = VLFont::font();
  EXPECT_EQ(nameOf(plain->nsFont()), nameOf(Font::userFontOfSize(12)))
      << "nothing named: the user font";

  auto bold = VLFont::font();
  bold->setHasBoldFontWeight(true);
  EXPECT_EQ(nameOf(bold->nsFont()), u"Helvetica-Bold") << "the user font made bold";
}

TEST(VLFont, SetNSFontRaisesFlagsAndNeverClearsThem) {
  auto font = VLFont::font();
  font->setHasBoldFontWeight(true);
  font->setNSFont(test::font(u"Helvetica"));
  EXPECT_TRUE(font->hasBoldFontWeight()) << "a plain font leaves the bold request standing";
  EXPECT_FALSE(font->hasItalicFontStyle());
  EXPECT_EQ(font->fontFamilyName(), u"Helvetica");
  EXPECT_FALSE(font->fontName()) << "setting the font does not name it";

  font->setNSFont(test::font(u"Courier-Oblique"));
  EXPECT_TRUE(font->hasItalicFontStyle());
  EXPECT_EQ(font->fontFamilyName(), u"Courier");

  font->setNSFont(nullptr);
  EXPECT_EQ(font->fontFamilyName(), u"Courier") << "forgetting the font keeps its family";
  EXPECT_EQ(nameOf(font->nsFont()), u"Courier-BoldOblique") << "and resolves again from it";
}

TEST(VLFont, CopiesGoThroughTheSetters) {
  auto font = named(u"Times-Bold", 4);
  font->setGenericFontFamilyName(u"roman");
  font->setCharset(77);
  font->nsFont();
  font->setHasBoldFontWeight(false);

  auto copy = ns::copyOf(*font);
  EXPECT_NE(copy.get(), font.get());
  EXPECT_EQ(copy->fontName(), u"Times-Bold");
  EXPECT_EQ(copy->fontFamilyName(), u"Times");
  EXPECT_EQ(copy->genericFontFamilyName(), u"roman");
  EXPECT_EQ(copy->charset(), 77);
  EXPECT_EQ(copy->fontNumber(), 4);
  EXPECT_EQ(copy->nsFont().get(), font->nsFont().get());
  EXPECT_TRUE(copy->hasBoldFontWeight()) << "the copy's font raises the flag again";
}

TEST(VLFont, ArchivesEveryField) {
  auto font = named(u"Palatino-Italic", -2);
  font->setHasBoldFontWeight(true);
  font->setCharset(238);
  font->nsFont();
  auto back = roundTrip(font);
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->fontName(), u"Palatino-Italic");
  EXPECT_EQ(back->fontFamilyName(), u"Palatino");
  EXPECT_FALSE(back->genericFontFamilyName()) << "nil stays nil";
  EXPECT_TRUE(back->hasBoldFontWeight());
  EXPECT_TRUE(back->hasItalicFontStyle());
  EXPECT_EQ(back->charset(), 238);
  EXPECT_EQ(back->fontNumber(), -2);
  ASSERT_NE(back->nsFont(), nullptr);
  EXPECT_TRUE(back->nsFont()->isEqual(*font->nsFont()));
}

TEST(VLFontTable, FindsTheFirstFontByName) {
  VLFontTable table;
  auto nameless = VLFont::font();
  auto first = named(u"Courier", 1), second = named(u"Courier", 2);
  table.addFont(nameless);
  table.addFont(first);
  table.addFont(second);
  table.addFont(first);
  table.addFont(nullptr);
  EXPECT_EQ(table.fonts()->count(), 4u) << "duplicates are kept, nil is not added";
  EXPECT_EQ(table.fontForName(u"Courier"), first);
  EXPECT_EQ(table.fontForName(u"courier"), nullptr);
  EXPECT_EQ(table.fontForName(u""), nullptr) << "a font without a name matches nothing";
  EXPECT_EQ(VLFontTable().fontForName(u"Courier"), nullptr);
}

TEST(VLFontTable, FindsByPlatformFontResolvingEveryFontItPasses) {
  VLFontTable table;
  auto courier = named(u"Courier"), times = named(u"Times-Bold"), later = named(u"Helvetica");
  table.addFont(courier);
  table.addFont(times);
  table.addFont(later);

  EXPECT_EQ(table.fontForNSFont(test::font(u"Times-Bold")), times);
  EXPECT_EQ(courier->fontFamilyName(), u"Courier") << "passed, so resolved";
  EXPECT_FALSE(later->fontFamilyName()) << "not reached, so not resolved";

  EXPECT_EQ(table.fontForNSFont(Font::fontWithName(u"Times-Bold", 13)), nullptr)
      << "size is part of equality";
  EXPECT_EQ(later->fontFamilyName(), u"Helvetica");
  EXPECT_EQ(table.fontForNSFont(nullptr), nullptr);
}

TEST(VLFontTable, ArchivesFontsAndProperties) {
  auto table = std::make_shared<VLFontTable>();
  auto font = named(u"Verdana", 5);
  table->addFont(font);
  table->addFont(font);
  table->properties()->setObject(ns::Value(u"fonttbl"), u"RTFDestinationType");

  auto back = roundTrip(table);
  ASSERT_NE(back, nullptr);
  ASSERT_EQ(back->fonts()->count(), 2u);
  auto first = back->fonts()->objectAtIndex(0).as<VLFont>();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->fontName(), u"Verdana");
  EXPECT_EQ(first->fontNumber(), 5);
  EXPECT_EQ(back->fonts()->objectAtIndex(1).object(), first) << "one font, stored once";
  EXPECT_EQ(back->properties()->objectForKey(u"RTFDestinationType"), ns::Value(u"fonttbl"));
}
