// Scanner: numbers, strings, skipping and the location after success and failure.
#include "ns/Scanner.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

using namespace vl::ns;

TEST(Scanner, NumbersFollowedByUnits) {
  Scanner inches(u" 1.5in  ");
  float f = 0;
  EXPECT_TRUE(inches.scanFloat(&f));
  EXPECT_EQ(f, 1.5f);
  EXPECT_FALSE(inches.scanString(u"cm", nullptr));
  std::u16string unit;
  EXPECT_TRUE(inches.scanString(u"IN", &unit));
  EXPECT_EQ(unit, u"in"); // the text as it stands, not the argument
  EXPECT_TRUE(inches.isAtEnd());
  EXPECT_EQ(inches.scanLocation(), 6u);
}

TEST(Scanner, FailureMovesNothingAndWritesNothing) {
  Scanner letters(u"  xyz");
  int i = 7;
  double d = 7;
  EXPECT_FALSE(letters.scanInt(&i));
  EXPECT_FALSE(letters.scanDouble(&d));
  EXPECT_FALSE(letters.scanString(u"q", nullptr));
  EXPECT_EQ(i, 7);
  EXPECT_EQ(d, 7);
  EXPECT_EQ(letters.scanLocation(), 0u);
  EXPECT_FALSE(Scanner(u".").scanDouble(&d));
}

TEST(Scanner, RealsTakeFractionAndExponentOnlyWhenDigitsFollow) {
  const std::tuple<std::u16string, double, uint64_t> cases[] = {
      {u".5", 0.5, 2},       {u"5.", 5, 2},           {u"-3e2x", -300, 4},
      {u"+2.5E-1", 0.25, 7}, {u"2e", 2, 1},           {u"1e+", 1, 1},
      {u"2.54cm", 2.54, 4},  {u"1e999", HUGE_VAL, 5}, {u"-1e-999", 0, 7},
  };
  for (const auto &[text, expected, location] : cases) {
    Scanner s(text);
    double d = 0;
    ASSERT_TRUE(s.scanDouble(&d)) << toUTF8(text);
    EXPECT_DOUBLE_EQ(d, expected) << toUTF8(text);
    EXPECT_EQ(s.scanLocation(), location) << toUTF8(text);
  }
}

TEST(Scanner, IntegersClampAtTheLimitsOfTheirType) {
  int i = 0;
  long long ll = 0;
  Scanner big(u"99999999999 -9223372036854775809 123456789012345678901234 -9223372036854775808");
  EXPECT_TRUE(big.scanInt(&i));
  EXPECT_EQ(i, INT_MAX);
  EXPECT_TRUE(big.scanLongLong(&ll));
  EXPECT_EQ(ll, LLONG_MIN);
  EXPECT_TRUE(big.scanLongLong(&ll));
  EXPECT_EQ(ll, LLONG_MAX);
  EXPECT_EQ(big.scanLocation(), 57u); // every digit was consumed

  unsigned h = 0;
  Scanner hex(u"0x1F ff 0xg FFFFFFFFF");
  EXPECT_TRUE(hex.scanHexInt(&h));
  EXPECT_EQ(h, 0x1Fu);
  EXPECT_TRUE(hex.scanHexInt(&h));
  EXPECT_EQ(h, 0xFFu);
  EXPECT_TRUE(hex.scanHexInt(&h)); // "0" only: "x" is no prefix without a digit after it
  EXPECT_EQ(h, 0u);
  EXPECT_TRUE(hex.scanString(u"xg", nullptr));
  EXPECT_TRUE(hex.scanHexInt(&h));
  EXPECT_EQ(h, UINT_MAX);
}

TEST(Scanner, ScanUpToStopsBeforeItsTargetAndFailsOnNothing) {
  Scanner cue(u"John (V.O.)");
  std::u16string name, extension;
  EXPECT_TRUE(cue.scanUpToString(u"(", &name));
  EXPECT_EQ(name, u"John ");
  EXPECT_FALSE(cue.scanUpToString(u"(", &name));
  EXPECT_EQ(cue.scanLocation(), 5u);
  EXPECT_TRUE(cue.scanUpToString(u")", &extension));
  EXPECT_EQ(extension, u"(V.O.");

  Scanner chapter(u"Chapter 12");
  EXPECT_TRUE(chapter.scanUpToCharactersFromSet(CharacterSet::decimalDigitCharacterSet(), &name));
  EXPECT_EQ(name, u"Chapter ");
  EXPECT_FALSE(
      chapter.scanUpToCharactersFromSet(CharacterSet::decimalDigitCharacterSet(), nullptr));
  EXPECT_TRUE(Scanner(u"one END two").scanUpToString(u"end", &name));
  EXPECT_EQ(name, u"one ");
}

TEST(Scanner, SkippingAndCaseAreSettable) {
  Scanner s(u" 42");
  s.setCharactersToBeSkipped(nullptr);
  EXPECT_FALSE(s.scanInt(nullptr));
  CharacterSet dashes = CharacterSet::characterSetWithCharactersInString(u" -");
  s.setCharactersToBeSkipped(&dashes);
  EXPECT_TRUE(s.scanInt(nullptr));

  Scanner word(u"PT");
  word.setCaseSensitive(true);
  EXPECT_FALSE(word.scanString(u"pt", nullptr));
  EXPECT_TRUE(word.scanString(u"PT", nullptr));

  Scanner letters(u"abc123");
  std::u16string run;
  EXPECT_TRUE(letters.scanCharactersFromSet(CharacterSet::letterCharacterSet(), &run));
  EXPECT_EQ(run, u"abc");
}
