// Measurement formatter: the user's unit, lengths shown in it, and typed lengths read back.
#include "model/VLMeasurementUnitsFormatter.h"
#include "ns/Bundle.h"
#include "ns/KeyedArchiver.h"
#include "ns/UserDefaults.h"

#include <gtest/gtest.h>

using namespace vl;

namespace {

class VLMeasurementUnitsFormatterTest : public ::testing::Test {
protected:
  void SetUp() override { reset(); }
  void TearDown() override { reset(); }
  static void reset() {
    ns::UserDefaults::resetStandardUserDefaults();
    ns::Bundle::resetMainBundle();
  }
  static void setUnitDefault(std::u16string_view name) {
    ns::UserDefaults::standardUserDefaults()->setObject(ns::Value(name), u"AppleMeasurementUnits");
  }
  static VLMeasurementUnitsFormatter formatter(int32_t units) {
    VLMeasurementUnitsFormatter f;
    f.setMeasurementUnits(units);
    return f;
  }
  static std::u16string show(const VLMeasurementUnitsFormatter &f, double points) {
    return f.stringForObjectValue(ns::Value(points)).value_or(u"(nil)");
  }
  // The points read from `text`, or -1 when it does not read.
  static double read(const VLMeasurementUnitsFormatter &f, std::u16string_view text) {
    ns::Value out;
    if (!f.getObjectValue(&out, text, nullptr))
      return -1;
    EXPECT_EQ(out.kind(), ns::Value::Kind::Float);
    return out.doubleValue();
  }
};

} // namespace

TEST_F(VLMeasurementUnitsFormatterTest, TakesTheUnitFromTheUserDefaults) {
  EXPECT_EQ(VLMeasurementUnitsFormatter().measurementUnits(), 1) << "no default: inches";
  const std::pair<std::u16string_view, int32_t> cases[] = {
      {u"Inches", 1}, {u"Centimetres", 2}, {u"Centimeters", 2},
      {u"Points", 3}, {u"Picas", 4},       {u"Millimeters", 1},
  };
  for (const auto &[name, units] : cases) {
    setUnitDefault(name);
    EXPECT_EQ(VLMeasurementUnitsFormatter().measurementUnits(), units);
  }
  VLMeasurementUnitsFormatter f;
  f.setMeasurementUnits(4);
  setUnitDefault(u"Points");
  f.resetMeasurmentUnits();
  EXPECT_EQ(f.measurementUnits(), 3);
}

TEST_F(VLMeasurementUnitsFormatterTest, ShowsPointsInTheUnit) {
  EXPECT_EQ(show(formatter(1), 72), u"1 in");
  EXPECT_EQ(show(formatter(2), 28.35), u"1 cm") << "28.35 points to the centimetre";
  EXPECT_EQ(show(formatter(3), 72), u"72 pt");
  EXPECT_EQ(show(formatter(4), 24), u"2 pc");
  EXPECT_EQ(show(formatter(9), 72), u"72") << "an unknown unit shows the number alone";

  auto decimal = formatter(1);
  decimal.setNumberStyle(ns::NumberFormatterDecimalStyle);
  EXPECT_EQ(show(decimal, 36), u"0.5 in") << "the base formatter's digits decide";
  decimal.setMultipleValuesString(u"Multiple");
  EXPECT_EQ(show(decimal, 36), u"Multiple");
  EXPECT_EQ(decimal.attributedStringForObjectValue(ns::Value(36), nullptr), nullptr);
}

TEST_F(VLMeasurementUnitsFormatterTest, ReadsAUnitWordWhateverTheUnitAndBareNumbersInIt) {
  for (int32_t units = 1; units <= 4; ++units) {
    auto f = formatter(units);
    EXPECT_EQ(read(f, u"1 in"), 72.0);
    EXPECT_EQ(read(f, u"2cm"), static_cast<double>(static_cast<float>(2 * 28.35)));
    EXPECT_EQ(read(f, u" 7 pt "), 7.0);
    EXPECT_EQ(read(f, u"2 pc"), 24.0);
  }
  EXPECT_EQ(read(formatter(3), u"3 in = 7.62 cm"), 216.0)
      << "inches are looked for first, wherever they stand";

  // A bare number is in the formatter's unit.
  EXPECT_EQ(read(formatter(1), u"1"), 72.0);
  EXPECT_EQ(read(formatter(2), u"1"), static_cast<double>(28.35f));
  EXPECT_EQ(read(formatter(3), u"1"), 1.0);
  EXPECT_EQ(read(formatter(4), u"1"), 12.0);
  EXPECT_EQ(read(formatter(0), u"1"), 1.0);
}

TEST_F(VLMeasurementUnitsFormatterTest, FailsWhenTheNumberDoesNotParse) {
  auto f = formatter(1);
  ns::Value out(5);
  std::u16string error;
  EXPECT_FALSE(f.getObjectValue(&out, u"one in", &error));
  EXPECT_EQ(out, ns::Value(5));
  EXPECT_FALSE(error.empty());
  EXPECT_EQ(read(f, u""), -1);
  EXPECT_EQ(read(f, u"1 cm 1 in"), -1) << "cut before \"in\", the rest is no number";
}

TEST_F(VLMeasurementUnitsFormatterTest, LocalizesUnitWordsButReadsInchesAsWritten) {
  ns::Bundle::mainBundle()->setStringsTable(
      u"", ns::Dictionary::create({{u"in", ns::Value(u"po")}, {u"cm", ns::Value(u"sm")}}));
  auto inches = formatter(1);
  EXPECT_EQ(show(inches, 72), u"1 po");
  EXPECT_EQ(read(inches, u"1 po"), -1) << "the localized inch word is not read back";
  EXPECT_EQ(read(inches, u"1 in"), 72.0);
  EXPECT_EQ(show(formatter(2), 28.35), u"1 sm");
  EXPECT_EQ(read(inches, u"1 sm"), static_cast<double>(28.35f));
  EXPECT_EQ(read(inches, u"1 cm"), -1);
}

TEST_F(VLMeasurementUnitsFormatterTest, DecodesWithTheUsersUnit) {
  auto f = std::make_shared<VLMeasurementUnitsFormatter>();
  f->setNumberStyle(ns::NumberFormatterDecimalStyle);
  f->setMeasurementUnits(2);
  ns::Data archive = ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(f));
  setUnitDefault(u"Picas");
  auto back =
      ns::KeyedUnarchiver::unarchiveObjectWithData(archive).as<VLMeasurementUnitsFormatter>();
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->measurementUnits(), 4);
  EXPECT_EQ(back->numberStyle(), ns::NumberFormatterDecimalStyle);
  EXPECT_EQ(show(*back, 18), u"1.5 pc");
}
