// Colours from and to strings: hex forms, the colour name table, and truncating output.
#include "model/VLColorAdditions.h"
#include "model/VLSColorTable.h"
#include "ns/Image.h"

#include <gtest/gtest.h>

#include <string>

using namespace vl;

namespace {

std::u16string hex(std::u16string_view text) {
  auto color = colorWithStringValue(text);
  return color ? stringValue(*color) : u"(nil)";
}

} // namespace

TEST(VLColorAdditions, ReadsHexForms) {
  auto shortForm = colorWithStringValue(u"#abc");
  auto longForm = colorWithStringValue(u"#aabbcc");
  ASSERT_NE(shortForm, nullptr);
  ASSERT_NE(longForm, nullptr);
  EXPECT_TRUE(shortForm->isEqual(*longForm));
  EXPECT_EQ(longForm->colorSpaceName(), ns::DeviceRGBColorSpace);
  EXPECT_EQ(longForm->redComponent(), 0xaa / 255.0);
  EXPECT_EQ(hex(u"#6495ED"), u"#6495ed") << "whole bytes come back exactly";

  EXPECT_EQ(colorWithStringValue(u"#abcd"), nullptr);
  EXPECT_EQ(colorWithStringValue(u"#"), nullptr);
  EXPECT_EQ(hex(u"#12345g"), u"#012345") << "digits end at the first that is not hex";
  EXPECT_EQ(hex(u"#ggg"), u"#000000");
}

TEST(VLColorAdditions, ReadsLowerCaseColourNames) {
  EXPECT_EQ(hex(u"red"), u"#ff0000");
  EXPECT_EQ(hex(u"cornflowerblue"), u"#6495ed");
  EXPECT_EQ(colorWithStringValue(u"Red"), nullptr) << "names are matched as written";
  EXPECT_EQ(colorWithStringValue(u""), nullptr);
  EXPECT_EQ(colorWithStringValue(u"rouge\u00e9"), nullptr);
}

TEST(VLColorAdditions, WritesTruncatedBytes) {
  EXPECT_EQ(stringValue(*ns::Color::colorWithDeviceRed(1, 0.5, 0, 1)), u"#ff7f00")
      << "127.5 is truncated, not rounded";
  EXPECT_EQ(stringValue(*ns::Color::colorWithCalibratedWhite(0.5, 1)), u"#7f7f7f")
      << "greys go through calibrated RGB";
  auto pattern =
      ns::Color::colorWithPatternImage(ns::Image::createWithPixels(1, 1, {1, 2, 3, 255}));
  ASSERT_NE(pattern, nullptr);
  EXPECT_EQ(stringValue(*pattern), u"#ffffff") << "no RGB form";
}

TEST(VLSColorTable, FindsEveryRowByItsExactName) {
  auto rows = VLSColorTable_Entries();
  EXPECT_EQ(rows.size(), 149u);
  for (const VLSColorTableEntry &row : rows) {
    const VLSColorTableEntry *found = VLSColorTable_Find(row.name.data(), row.name.size());
    ASSERT_NE(found, nullptr) << row.name;
    EXPECT_EQ(found->name, row.name);
  }
  const VLSColorTableEntry *grey = VLSColorTable_Find("darkslategrey", 13);
  ASSERT_NE(grey, nullptr);
  EXPECT_EQ(grey->color, 0x2F4F4Fu);
  EXPECT_EQ(VLSColorTable_Find("redder", 3)->name, "red") << "the length bounds the key";
  EXPECT_EQ(VLSColorTable_Find("red", 2), nullptr);
  EXPECT_EQ(VLSColorTable_Find("lightgoldenrodyellowx", 21), nullptr);
  EXPECT_EQ(VLSColorTable_Find(nullptr, 0), nullptr);
}
