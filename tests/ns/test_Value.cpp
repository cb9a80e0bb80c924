// Values, arrays and dictionaries: conversions, equality and reference semantics.
#include "ns/Array.h"
#include "ns/Assert.h"
#include "ns/Dictionary.h"
#include "ns/Error.h"
#include "ns/String.h"
#include "ns/Value.h"

#include <gtest/gtest.h>

using namespace vl::ns;

TEST(Value, NumbersConvertLikeThePlatformNumberObject) {
  EXPECT_TRUE(Value(true).boolValue());
  EXPECT_EQ(Value(3.9).integerValue(), 3);
  EXPECT_EQ(Value(-3.9).integerValue(), -3);
  EXPECT_EQ(Value(12.0).stringValue(), u"12");
  EXPECT_EQ(Value(0.1f).stringValue(), u"0.1");
  EXPECT_EQ(Value(u"  42abc").integerValue(), 42);
  EXPECT_EQ(Value(u"2.5e1x").doubleValue(), 25.0);
  EXPECT_TRUE(Value(u"yes").boolValue());
}

TEST(Value, NumbersCompareByValueAcrossKinds) {
  EXPECT_EQ(Value(true), Value(1));
  EXPECT_EQ(Value(1), Value(1.0));
  EXPECT_EQ(Value(1).hash(), Value(1.0).hash());
  EXPECT_NE(Value(-1), Value(UINT64_MAX));
  EXPECT_NE(Value(1), Value(u"1"));
  EXPECT_EQ(Value(), Value(nullptr));
  EXPECT_EQ(Value(1).compare(Value(2.5)), OrderedAscending);
}

TEST(Value, ObjectsCompareThroughIsEqualAndIdentitySeparately) {
  auto a = Array::create({1, 2});
  auto b = Array::create({1, 2});
  EXPECT_EQ(Value(a), Value(b));
  EXPECT_FALSE(Value(a).isIdenticalTo(Value(b)));
  EXPECT_TRUE(Value(a).isIdenticalTo(Value(a)));
}

TEST(Array, HoldersShareOneArrayAndCopiesAreSeparate) {
  auto a = Array::create({u"x"});
  ArrayPtr sameHolder = a;
  auto copy = copyOf(*a);
  sameHolder->addObject(u"y");
  EXPECT_EQ(a->count(), 2u);
  EXPECT_EQ(copy->count(), 1u);
  EXPECT_EQ(a->indexOfObject(u"z"), NotFound);
  EXPECT_THROW(a->objectAtIndex(5), InternalInconsistencyException);
}

TEST(Dictionary, IteratesInKeyOrderAndNilRemoves) {
  auto d = Dictionary::create({{u"b", 2}, {u"a", 1}, {u"c", 3}});
  std::u16string keys;
  for (const auto &[k, v] : *d)
    keys += k;
  EXPECT_EQ(keys, u"abc");
  d->setObject(Value(), u"b");
  EXPECT_EQ(d->count(), 2u);
  EXPECT_TRUE(d->objectForKey(u"b").isNil());
  EXPECT_EQ(*d, *Dictionary::create({{u"a", 1}, {u"c", 3.0}}));
}

TEST(KeyValueCoding, KeyPathOverArrayOfDictionariesGivesArrayOfValues) {
  auto characters = Array::create({Dictionary::create({{u"stringValue", u"ANNA"}}),
                                   Dictionary::create({{u"stringValue", u"BOB"}})});
  auto completions = Dictionary::create({{u"characters", characters}});
  Value names = completions->valueForKeyPath(u"characters.stringValue");
  ASSERT_TRUE(names.array());
  EXPECT_EQ(*names.array(), *Array::create({u"ANNA", u"BOB"}));
}

TEST(KeyValueCoding, MissingLevelReadsNilAndWritesNothing) {
  auto attrs = Dictionary::create({{u"settings", Dictionary::create()}});
  EXPECT_TRUE(attrs->valueForKeyPath(u"settings.documentSettings.selectedRange").isNil());
  attrs->setValueForKeyPath(u"{1, 2}", u"settings.documentSettings.selectedRange");
  EXPECT_EQ(attrs->valueForKeyPath(u"settings").dictionary()->count(), 0u);
  attrs->setValueForKeyPath(Dictionary::create(), u"settings.documentSettings");
  attrs->setValueForKeyPath(u"{1, 2}", u"settings.documentSettings.selectedRange");
  EXPECT_EQ(attrs->valueForKeyPath(u"settings.documentSettings.selectedRange"), Value(u"{1, 2}"));
}

TEST(Range, StringFormRoundTrips) {
  EXPECT_EQ(StringFromRange({3, 14}), u"{3, 14}");
  EXPECT_EQ(RangeFromString(u"{3, 14}"), (Range{3, 14}));
  EXPECT_EQ(RangeFromString(u"junk"), (Range{0, 0}));
  EXPECT_EQ(IntersectionRange({0, 5}, {7, 2}), (Range{0, 0}));
  EXPECT_EQ(UnionRange({0, 5}, {7, 2}), (Range{0, 9}));
}

TEST(Assert, FailedCheckNamesItsFileAndLine) {
  int line = 0;
  try {
    line = __LINE__ + 1;
    VL_ASSERT(1 + 1 == 3, "arithmetic is broken");
    FAIL() << "no exception";
  } catch (const InternalInconsistencyException &e) {
    EXPECT_EQ(e.description(), "arithmetic is broken");
    EXPECT_NE(e.file().find("test_Value.cpp"), std::string::npos);
    EXPECT_EQ(e.line(), line);
  }
}

TEST(Error, SetErrorFillsOnlyAGivenSlot) {
  auto e = Error::errorWithDomain(u"test", 101);
  ErrorPtr out;
  setError(&out, e);
  setError(nullptr, e);
  EXPECT_EQ(out, e);
}
