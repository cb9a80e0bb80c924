// Lengths with units: the scanner's unit words, the unit factors, and points.
#include "model/VLLengthValue.h"

#include <gtest/gtest.h>

#include <string>

using namespace vl;

namespace {

struct Scanned {
  bool ok;
  double value;
  int32_t units;
};

Scanned scan(std::u16string_view text) {
  Scanned s{false, -99, -99};
  s.ok = VLLengthValue::scanLengthValue(text, &s.value, &s.units);
  return s;
}

} // namespace

TEST(VLLengthValue, ReadsEachUnitWord) {
  struct Case {
    std::u16string_view text;
    int32_t units;
    double points;
  };
  const Case cases[] = {
      {u"12pt", 0, 12.0},   {u"1in", 1, 72.0},
      {u"2.54cm", 5, 72.0}, {u"1pc", 1, 72.0}, // picas are read with the inch code
      {u"50%", 2, 50.0},    {u"1px", 4, 1.0},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(std::string(c.text.begin(), c.text.end()));
    auto length = VLLengthValue::lengthValueWithString(c.text);
    ASSERT_NE(length, nullptr);
    EXPECT_EQ(length->units(), c.units);
    EXPECT_NEAR(length->points(), c.points, 1e-4);
  }
  EXPECT_EQ(VLLengthValue::lengthValueWithString(u"2.54cm")->value(), static_cast<double>(2.54f))
      << "the number is read in single precision";
}

TEST(VLLengthValue, NeedsANumberAndAKnownUnitWord) {
  EXPECT_EQ(VLLengthValue::lengthValueWithString(u"12"), nullptr) << "a bare number";
  EXPECT_EQ(VLLengthValue::lengthValueWithString(u"10mm"), nullptr) << "mm is not read";
  EXPECT_EQ(VLLengthValue::lengthValueWithString(u""), nullptr);

  Scanned failed = scan(u"12 em");
  EXPECT_FALSE(failed.ok);
  EXPECT_EQ(failed.value, -99) << "a failed scan stores nothing";
  EXPECT_EQ(failed.units, -99);
  EXPECT_TRUE(VLLengthValue::scanLengthValue(u"1in", nullptr, nullptr)) << "null results";
}

TEST(VLLengthValue, SkipsBlanksAndIgnoresWhatFollowsTheUnit) {
  Scanned s = scan(u"  -1.5 in and more");
  EXPECT_TRUE(s.ok);
  EXPECT_EQ(s.value, -1.5);
  EXPECT_EQ(s.units, 1);
  EXPECT_EQ(scan(u"3PT").units, 0) << "unit words are read in any case";
  EXPECT_EQ(scan(u"3 inches").units, 1);
}

TEST(VLLengthValue, ConvertsByTheUnitTable) {
  EXPECT_EQ(VLLengthValue::pixelsForValue(2, 0), 2.0);
  EXPECT_EQ(VLLengthValue::pixelsForValue(2, 3), 24.0) << "picas set directly count 12";
  EXPECT_EQ(VLLengthValue::pixelsForValue(1, 5), 28.346456692913385);
  EXPECT_EQ(VLLengthValue::pixelsForValue(10, 6), 28.34645669291339);
  EXPECT_EQ(VLLengthValue::pixelsForValue(7, 7), 7.0) << "outside the table";
  EXPECT_EQ(VLLengthValue::pixelsForValue(7, -1), 7.0) << "negative codes too";

  VLLengthValue length;
  length.setValue(3);
  length.setUnits(3);
  EXPECT_EQ(length.points(), 36.0);
}
