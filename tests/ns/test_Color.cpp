// Colours: spaces in equality, conversions between spaces, named and pattern colours, and
// archiving.
#include "ns/Color.h"
#include "ns/Image.h"
#include "ns/KeyedArchiver.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace vl::ns;

TEST(Color, EqualityIncludesTheSpace) {
  auto calibrated = Color::colorWithCalibratedRed(1, 0, 0, 1);
  EXPECT_FALSE(calibrated->isEqual(*Color::colorWithDeviceRed(1, 0, 0, 1)));
  EXPECT_TRUE(calibrated->isEqual(*Color::redColor()));
  EXPECT_FALSE(calibrated->isEqual(*Color::colorWithCalibratedRed(1, 0, 0, 0.5)));
  EXPECT_FALSE(Color::blackColor()->isEqual(*Color::colorWithDeviceRed(0, 0, 0, 1)))
      << "black in white space is not device RGB black";
  EXPECT_FALSE(Color::textColor()->isEqual(*Color::blackColor()))
      << "a named colour is not the colour it resolves to";
  auto clamped = Color::colorWithDeviceRed(1.5, -0.5, std::nan(""), 2);
  EXPECT_TRUE(clamped->isEqual(*Color::colorWithDeviceRed(1, 0, 0, 1))) << "components clamped";
}

TEST(Color, ConvertsBetweenSpaces) {
  auto grey = Color::colorWithCalibratedWhite(0.25, 0.5);
  auto rgb = grey->colorUsingColorSpaceName(CalibratedRGBColorSpace);
  ASSERT_NE(rgb, nullptr);
  EXPECT_TRUE(rgb->isEqual(*Color::colorWithCalibratedRed(0.25, 0.25, 0.25, 0.5)));
  EXPECT_EQ(grey->redComponent(), 0.25) << "components answer through the conversion";
  auto device = Color::colorWithCalibratedRed(0.1, 0.2, 0.3, 1)
                    ->colorUsingColorSpaceName(DeviceRGBColorSpace);
  ASSERT_NE(device, nullptr);
  EXPECT_TRUE(device->isEqual(*Color::colorWithDeviceRed(0.1, 0.2, 0.3, 1)));
  auto luma = Color::redColor()->colorUsingColorSpaceName(CalibratedWhiteColorSpace);
  ASSERT_NE(luma, nullptr);
  EXPECT_NEAR(luma->whiteComponent(), 0.299, 1e-12);
  EXPECT_EQ(Color::redColor()->colorUsingColorSpaceName(NamedColorSpace), nullptr);
}

TEST(Color, NamedColoursOfTheSystemCatalogue) {
  auto text = Color::textColor();
  EXPECT_EQ(text->colorSpaceName(), NamedColorSpace);
  EXPECT_TRUE(text->isEqual(*Color::colorWithCatalogName(u"System", u"textColor")));
  EXPECT_EQ(Color::colorWithCatalogName(u"System", u"noSuchColor"), nullptr);
  auto rgb = Color::textBackgroundColor()->colorUsingColorSpaceName(CalibratedRGBColorSpace);
  ASSERT_NE(rgb, nullptr);
  EXPECT_TRUE(rgb->isEqual(*Color::colorWithCalibratedRed(1, 1, 1, 1)));
  auto white = text->colorUsingColorSpaceName(DeviceWhiteColorSpace);
  ASSERT_NE(white, nullptr);
  EXPECT_EQ(white->whiteComponent(), 0.0);
}

TEST(Color, PatternsConvertToNothing) {
  auto image = Image::createWithPixels(1, 1, {10, 20, 30, 255});
  auto pattern = Color::colorWithPatternImage(image);
  ASSERT_NE(pattern, nullptr);
  EXPECT_EQ(pattern->colorUsingColorSpaceName(CalibratedRGBColorSpace), nullptr);
  EXPECT_TRUE(pattern->isEqual(*Color::colorWithPatternImage(image)));
  EXPECT_FALSE(pattern->isEqual(
      *Color::colorWithPatternImage(Image::createWithPixels(1, 1, {10, 20, 30, 255}))));
  EXPECT_EQ(Color::colorWithPatternImage(nullptr), nullptr);
}

TEST(Color, Archives) {
  for (const ColorPtr &color :
       {Color::colorWithDeviceRed(0.2, 0.4, 0.6, 0.8), Color::colorWithCalibratedRed(1, 0.5, 0, 1),
        Color::colorWithDeviceWhite(0.3, 1), Color::blackColor(), Color::textColor()}) {
    auto back = KeyedUnarchiver::unarchiveObjectWithData(
                    KeyedArchiver::archivedDataWithRootObject(Value(color)))
                    .as<Color>();
    ASSERT_NE(back, nullptr);
    EXPECT_TRUE(back->isEqual(*color)) << *back << " vs " << *color;
  }
}
