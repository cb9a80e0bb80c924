// List levels: markers for every keyword, the text around the keyword, equality and archiving.
#include "ns/KeyedArchiver.h"
#include "ns/TextList.h"

#include <gtest/gtest.h>

using namespace vl::ns;

namespace {

// The markers of `numbers` in `format`, each followed by "|".
std::u16string markers(std::u16string format, std::initializer_list<int64_t> numbers) {
  TextList list(std::move(format), 0);
  std::u16string out;
  for (int64_t n : numbers)
    out += list.markerForItemNumber(n) + u"|";
  return out;
}

} // namespace

TEST(TextList, MarkersForEveryKeyword) {
  EXPECT_EQ(markers(u"{decimal}", {1234567, -3}), u"1234567|-3|");
  EXPECT_EQ(markers(u"{octal}", {8}), u"10|");
  EXPECT_EQ(markers(u"{lower-hexadecimal}", {255, -26}), u"ff|-1a|");
  EXPECT_EQ(markers(u"{upper-hexadecimal}", {4096, 255}), u"1000|FF|");
  // Roman numerals run from 1 to 3999; other numbers are written in decimal.
  EXPECT_EQ(markers(u"{lower-roman}", {4, 9, 27, -2}), u"iv|ix|xxvii|-2|");
  EXPECT_EQ(markers(u"{upper-roman}", {1994, 3999, 0, 4000}), u"MCMXCIV|MMMCMXCIX|0|4000|");
  // Letters count in bijective base 26.
  EXPECT_EQ(markers(u"{lower-alpha}", {26, 27, 52, 53, 702, 703, 0}), u"z|aa|az|ba|zz|aaa|0|");
  EXPECT_EQ(markers(u"{upper-latin}", {3999}), u"EWU|");
  EXPECT_EQ(markers(u"{upper-alpha}", {INT64_MAX}).size(), 15u);
  // Bullets are the same for every item.
  EXPECT_EQ(markers(u"{disc}", {0, 5}), u"\u2022|\u2022|");
  std::u16string bullets;
  for (auto keyword : {u"circle", u"square", u"hyphen", u"box", u"check", u"diamond"})
    bullets += markerForKeyword(keyword, 5).value_or(u"?");
  EXPECT_EQ(bullets, u"\u25E6\u25AA\u2043\u25AB\u2713\u25C6");
  // The text around the keyword is kept; only the first keyword counts.
  EXPECT_EQ(markers(u"Chapter {upper-roman}:", {4}), u"Chapter IV:|");
  EXPECT_EQ(markers(u"{decimal}-{decimal}", {2}), u"2-{decimal}|");
  // Without a known keyword: the format itself, or what lies around the braces.
  EXPECT_EQ(markers(u"*", {5}), u"*|");
  EXPECT_EQ(markers(u"<{nonsense}>", {5}), u"<>|");
  EXPECT_EQ(markers(u"[{Decimal}]", {5}), u"[]|");
  EXPECT_EQ(markers(u"<{decimal", {5}), u"<|");
  EXPECT_EQ(markerForKeyword(u"bogus", 5), std::nullopt);
}

TEST(TextList, ComparesByValueAndArchives) {
  auto list = TextList::create(u"({upper-alpha})", TextListPrependEnclosingMarker);
  EXPECT_EQ(list->startingItemNumber(), 1);
  EXPECT_TRUE(list->isEqual(TextList(u"({upper-alpha})", TextListPrependEnclosingMarker)));
  EXPECT_FALSE(list->isEqual(TextList(u"({upper-alpha})", 0)));
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
