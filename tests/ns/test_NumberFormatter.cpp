// Number formatter: styles and digits, strict parsing, locales, copies and archives.
#include "ns/Array.h"
#include "ns/KeyedArchiver.h"
#include "ns/NumberFormatter.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

using namespace vl::ns;

namespace {

std::u16string show(const NumberFormatter &f, const Value &v) {
  return f.stringFromNumber(v).value_or(u"(nil)");
}

} // namespace

TEST(NumberFormatter, NoStyleShowsWholeNumbersRoundingHalvesToEven) {
  NumberFormatter f;
  EXPECT_EQ(show(f, Value(1234.5)), u"1234") << "no grouping, half to even";
  EXPECT_EQ(show(f, Value(3.5)), u"4");
  EXPECT_EQ(show(f, Value(std::numeric_limits<uint64_t>::max())), u"18446744073709551615");
  // What is not a number has no string.
  EXPECT_FALSE(f.stringFromNumber(Value(u"12")));
  EXPECT_FALSE(f.stringForObjectValue(Value(Array::create())));
}

TEST(NumberFormatter, DecimalStyleGroupsAndShowsUpToThreeFractionDigits) {
  NumberFormatter f;
  f.setNumberStyle(NumberFormatterDecimalStyle);
  EXPECT_EQ(show(f, Value(1234.5)), u"1,234.5");
  EXPECT_EQ(show(f, Value(0.12345)), u"0.123");
  EXPECT_EQ(show(f, Value(0.1f)), u"0.1") << "a float's binary tail is rounded away";

  f.setMinimumFractionDigits(2);
  EXPECT_EQ(show(f, Value(1)), u"1.00");
  f.setMaximumFractionDigits(1);
  EXPECT_EQ(f.minimumFractionDigits(), 1) << "the minimum follows a lower maximum";
  EXPECT_EQ(show(f, Value(2.25)), u"2.2");
  f.setMinimumFractionDigits(4);
  EXPECT_EQ(f.maximumFractionDigits(), 4) << "the maximum follows a higher minimum";
  f.setUsesGroupingSeparator(false);
  EXPECT_EQ(show(f, Value(1234)), u"1234.0000");

  f.setNumberStyle(NumberFormatterNoStyle);
  EXPECT_EQ(show(f, Value(1234.5)), u"1234") << "a style brings its own digit settings";
}

TEST(NumberFormatter, ReadsOnlyStringsThatAreWholeNumbers) {
  NumberFormatter f;
  EXPECT_TRUE(f.numberFromString(u"12").isInteger());
  EXPECT_EQ(f.numberFromString(u" 1.5\n"), Value(1.5)) << "blanks at the ends are trimmed";
  for (const char16_t *bad : {u"12abc", u"1 2", u"", u"  ", u"-", u"in"})
    EXPECT_TRUE(f.numberFromString(bad).isNil());

  Value out(7);
  std::u16string error;
  EXPECT_FALSE(f.getObjectValue(&out, u"seven", &error));
  EXPECT_EQ(out, Value(7)) << "a failed read leaves the result alone";
  EXPECT_EQ(error, u"Invalid number");
  EXPECT_TRUE(f.getObjectValue(&out, u"8", nullptr));
  EXPECT_EQ(out, Value(8));
}

TEST(NumberFormatter, FollowsTheLocaleItIsGiven) {
  NumberFormatter f;
  f.setNumberStyle(NumberFormatterDecimalStyle);
  f.setLocale("de_DE");
  EXPECT_EQ(show(f, Value(1234.5)), u"1.234,5");
  EXPECT_EQ(f.numberFromString(u"1,5"), Value(1.5));
  f.setLocale("xx_NOWHERE");
  EXPECT_EQ(show(f, Value(1234.5)), u"1,234.5") << "unknown locales fall back on the root";
}

TEST(NumberFormatter, CopiesAndArchivesKeepTheSettings) {
  NumberFormatter f;
  f.setNumberStyle(NumberFormatterDecimalStyle);
  f.setLocale("de_DE");
  f.setMinimumFractionDigits(2);
  EXPECT_EQ(show(f, Value(1)), u"1,00") << "builds the ICU formatter the copy will share";

  auto copy = copyOf(f);
  copy->setLocale("");
  EXPECT_EQ(show(*copy, Value(1)), u"1.00");
  EXPECT_EQ(show(f, Value(1)), u"1,00") << "changing the copy leaves the original";

  Value decoded = KeyedUnarchiver::unarchiveObjectWithData(
      KeyedArchiver::archivedDataWithRootObject(Value(std::make_shared<NumberFormatter>(f))));
  auto back = decoded.as<NumberFormatter>();
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(show(*back, Value(1234)), u"1.234,00");
}
