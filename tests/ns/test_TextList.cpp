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

TEST(TextList, MarkersForEveryKeyword) {
  struct Case {
    const char16_t *format;
    int64_t number;
    const char16_t *marker;
  };
  const Case cases[] = {
      {u"{decimal}", 1234567, u"1234567"},
      {u"{decimal}", -3, u"-3"},
      {u"{octal}", 8, u"10"},
      {u"{lower-hexadecimal}", 255, u"ff"},
      {u"{upper-hexadecimal}", 4096, u"1000"},
      {u"{lower-hexadecimal}", -26, u"-1a"},
      // Roman numerals run from 1 to 3999; other numbers are written in decimal.
      {u"{lower-roman}", 4, u"iv"},
      {u"{lower-roman}", 9, u"ix"},
      {u"{lower-roman}", 27, u"xxvii"},
      {u"{upper-roman}", 1994, u"MCMXCIV"},
      {u"{upper-roman}", 3999, u"MMMCMXCIX"},
      {u"{upper-roman}", 0, u"0"},
      {u"{upper-roman}", 4000, u"4000"},
      {u"{lower-roman}", -2, u"-2"},
      // Letters count in bijective base 26: z, aa, ..., az, ba, ..., zz, aaa.
      {u"{lower-alpha}", 26, u"z"},
      {u"{lower-alpha}", 27, u"aa"},
      {u"{lower-alpha}", 52, u"az"},
      {u"{lower-alpha}", 53, u"ba"},
      {u"{lower-alpha}", 702, u"zz"},
      {u"{lower-alpha}", 703, u"aaa"},
      {u"{lower-latin}", 3999, u"ewu"},
      {u"{upper-alpha}", 27, u"AA"},
      {u"{upper-latin}", 3, u"C"},
      {u"{lower-alpha}", 0, u"0"},
      // Bullets are the same for every item.
      {u"{disc}", 5, u"\u2022"},
      {u"{circle}", 5, u"\u25E6"},
      {u"{square}", 5, u"\u25AA"},
      {u"{hyphen}", 5, u"\u2043"},
      {u"{box}", 5, u"\u25AB"},
      {u"{check}", 5, u"\u2713"},
      {u"{diamond}", 5, u"\u25C6"},
      // The text around the keyword is kept; only the first keyword counts.
      {u"({decimal})", 3, u"(3)"},
      {u"Chapter {upper-roman}:", 4, u"Chapter IV:"},
      {u"{decimal}-{decimal}", 2, u"2-{decimal}"},
      // Without a known keyword: the format itself, or what lies around the braces.
      {u"*", 5, u"*"},
      {u"<{nonsense}>", 5, u"<>"},
      {u"[{Decimal}]", 5, u"[]"},
      {u"<{decimal", 5, u"<"},
      {u"{}", 5, u""},
  };
  for (const Case &c : cases)
    EXPECT_EQ(marker(c.format, c.number), c.marker)
        << static_cast<int>(c.format[1]) << " " << c.number;
  EXPECT_EQ(marker(u"{upper-alpha}", INT64_MAX).size(), 14u);
  EXPECT_EQ(markerForKeyword(u"bogus", 5), std::nullopt);
}

TEST(TextList, ComparesByValueAndArchives) {
  auto list = TextList::create(u"({upper-alpha})", TextListPrependEnclosingMarker);
  EXPECT_EQ(list->startingItemNumber(), 1);
  EXPECT_TRUE(list->isEqual(TextList(u"({upper-alpha})", TextListPrependEnclosingMarker)));
  EXPECT_FALSE(list->isEqual(TextList(u"({upper-alpha})", 0)));
  EXPECT_FALSE(list->isEqual(TextList(u"{upper-alpha}", TextListPrependEnclosingMarker)));
  list->setStartingItemNumber(3);
  EXPECT_FALSE(list->isEqual(TextList(u"({upper-alpha})", TextListPrependEnclosingMarker)));

  auto back = KeyedUnarchiver::unarchiveObjectWithData(
                  KeyedArchiver::archivedDataWithRootObject(Value(list)))
                  .as<TextList>();
  ASSERT_NE(back, nullptr);
  EXPECT_TRUE(back->isEqual(*list));
  EXPECT_EQ(back->hash(), list->hash());
  EXPECT_EQ(back->markerForItemNumber(2), u"(B)");
}
