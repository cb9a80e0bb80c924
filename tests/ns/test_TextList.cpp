// List levels: markers for every keyword, the text around the keyword, equality and archiving.
#include "ns/KeyedArchiver.h"
#include "ns/TextList.h"

#include <gtest/gtest.h>

using namespace vl::ns;

namespace {

std::u16string marker(std::u16string format, int64_t number) {
  return TextList(std::move(format), 0).markerForItemNumber(number);
}

} // namespace

TEST(TextList, DecimalOctalAndHexadecimal) {
  EXPECT_EQ(marker(u"{decimal}", 0), u"0");
  EXPECT_EQ(marker(u"{decimal}", 7), u"7");
  EXPECT_EQ(marker(u"{decimal}", 1234567), u"1234567");
  EXPECT_EQ(marker(u"{decimal}", -3), u"-3");
  EXPECT_EQ(marker(u"{octal}", 8), u"10");
  EXPECT_EQ(marker(u"{octal}", 0), u"0");
  EXPECT_EQ(marker(u"{lower-hexadecimal}", 255), u"ff");
  EXPECT_EQ(marker(u"{upper-hexadecimal}", 255), u"FF");
  EXPECT_EQ(marker(u"{upper-hexadecimal}", 4096), u"1000");
  EXPECT_EQ(marker(u"{lower-hexadecimal}", -26), u"-1a");
}

TEST(TextList, RomanNumeralsFromOneTo3999) {
  EXPECT_EQ(marker(u"{lower-roman}", 1), u"i");
  EXPECT_EQ(marker(u"{lower-roman}", 4), u"iv");
  EXPECT_EQ(marker(u"{lower-roman}", 9), u"ix");
  EXPECT_EQ(marker(u"{lower-roman}", 14), u"xiv");
  EXPECT_EQ(marker(u"{lower-roman}", 26), u"xxvi");
  EXPECT_EQ(marker(u"{lower-roman}", 27), u"xxvii");
  EXPECT_EQ(marker(u"{upper-roman}", 1994), u"MCMXCIV");
  EXPECT_EQ(marker(u"{upper-roman}", 3999), u"MMMCMXCIX");
  EXPECT_EQ(marker(u"{upper-roman}", 0), u"0") << "no roman zero: decimal";
  EXPECT_EQ(marker(u"{upper-roman}", 4000), u"4000");
  EXPECT_EQ(marker(u"{lower-roman}", -2), u"-2");
}

TEST(TextList, LettersCountInBijectiveBase26) {
  EXPECT_EQ(marker(u"{lower-alpha}", 1), u"a");
  EXPECT_EQ(marker(u"{lower-alpha}", 26), u"z");
  EXPECT_EQ(marker(u"{lower-alpha}", 27), u"aa");
  EXPECT_EQ(marker(u"{lower-alpha}", 28), u"ab");
  EXPECT_EQ(marker(u"{lower-alpha}", 52), u"az");
  EXPECT_EQ(marker(u"{lower-alpha}", 53), u"ba");
  EXPECT_EQ(marker(u"{lower-alpha}", 702), u"zz");
  EXPECT_EQ(marker(u"{lower-alpha}", 703), u"aaa");
  EXPECT_EQ(marker(u"{lower-latin}", 3999), u"ewu");
  EXPECT_EQ(marker(u"{upper-alpha}", 27), u"AA");
  EXPECT_EQ(marker(u"{upper-latin}", 3), u"C");
  EXPECT_EQ(marker(u"{lower-alpha}", 0), u"0") << "no letter for zero: decimal";
  EXPECT_EQ(marker(u"{upper-alpha}", INT64_MAX).size(), 14u) << "the largest number still works";
}

TEST(TextList, BulletsAreTheSameForEveryItem) {
  const std::pair<const char16_t *, char16_t> bullets[] = {
      {u"{disc}", u'\u2022'},   {u"{circle}", u'\u25E6'}, {u"{square}", u'\u25AA'},
      {u"{hyphen}", u'\u2043'}, {u"{box}", u'\u25AB'},    {u"{check}", u'\u2713'},
      {u"{diamond}", u'\u25C6'}};
  for (const auto &[format, bullet] : bullets) {
    EXPECT_EQ(marker(format, 1), std::u16string(1, bullet))
        << "format " << static_cast<int>(format[1]);
    EXPECT_EQ(marker(format, 0), marker(format, 99));
  }
}

TEST(TextList, TextAroundTheKeywordIsKept) {
  EXPECT_EQ(marker(u"({decimal})", 3), u"(3)");
  EXPECT_EQ(marker(u"{decimal}.", 12), u"12.");
  EXPECT_EQ(marker(u"Chapter {upper-roman}:", 4), u"Chapter IV:");
  EXPECT_EQ(marker(u"{disc} ", 1), u"\u2022 ");
  EXPECT_EQ(marker(u"{decimal}-{decimal}", 2), u"2-{decimal}") << "only the first keyword";
}

TEST(TextList, FormatsWithoutAKnownKeyword) {
  EXPECT_EQ(marker(u"*", 5), u"*") << "no braces: the format is the marker";
  EXPECT_EQ(marker(u"", 5), u"");
  EXPECT_EQ(marker(u"<{nonsense}>", 5), u"<>") << "unknown keyword: prefix and suffix";
  EXPECT_EQ(marker(u"[{Decimal}]", 5), u"[]") << "keywords match exactly";
  EXPECT_EQ(marker(u"<{decimal", 5), u"<") << "unclosed brace: the prefix";
  EXPECT_EQ(marker(u"{}", 5), u"");
  EXPECT_EQ(markerForKeyword(u"decimal", 5), u"5");
  EXPECT_EQ(markerForKeyword(u"bogus", 5), std::nullopt);
}

TEST(TextList, ComparesByFormatOptionsAndStart) {
  TextList a(u"{decimal}.", 0);
  EXPECT_TRUE(a.isEqual(TextList(u"{decimal}.", 0)));
  EXPECT_EQ(a.hash(), TextList(u"{decimal}.", 0).hash());
  EXPECT_FALSE(a.isEqual(TextList(u"{decimal}", 0)));
  EXPECT_FALSE(a.isEqual(TextList(u"{decimal}.", TextListPrependEnclosingMarker)));
  TextList b(u"{decimal}.", 0);
  b.setStartingItemNumber(5);
  EXPECT_FALSE(a.isEqual(b));
  EXPECT_EQ(a.startingItemNumber(), 1);

  auto copy = copyOf(b);
  EXPECT_NE(copy.get(), &b);
  EXPECT_TRUE(copy->isEqual(b));
}

TEST(TextList, Archives) {
  auto list = TextList::create(u"({upper-alpha})", TextListPrependEnclosingMarker);
  list->setStartingItemNumber(3);
  auto back = KeyedUnarchiver::unarchiveObjectWithData(
                  KeyedArchiver::archivedDataWithRootObject(Value(list)))
                  .as<TextList>();
  ASSERT_NE(back, nullptr);
  EXPECT_TRUE(back->isEqual(*list));
  EXPECT_EQ(back->markerForItemNumber(2), u"(B)");
}
