// Outline entries: the recount flag, plain setters, description, archives, copies, key-value
// coding, and entries riding in attributed text.
#include "model/VLConstants.h"
#include "model/VLOutline.h"
#include "ns/Array.h"
#include "ns/KeyedArchiver.h"
#include "ns/MutableAttributedString.h"
#include "ns/PropertyListSerialization.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <string>

using namespace vl;
using vl::ns::MakeRange;
using vl::ns::Range;
using vl::ns::Value;

namespace {

VLOutlinePtr roundTrip(const VLOutlinePtr &entry) {
  ns::Data data = ns::KeyedArchiver::archivedDataWithRootObject(Value(entry));
  return ns::KeyedUnarchiver::unarchiveObjectWithData(data).as<VLOutline>();
}

VLOutlinePtr scene(std::u16string title, Range range) {
  auto entry = VLOutline::entryWithRange(range, 0);
  entry->setTitle(std::move(title));
  entry->setIdentifier(u"scene1");
  return entry;
}

struct Counter : ns::Object {
  int changes = 0;
  void observeValueForKeyPath(std::u16string_view, ns::Object *, const ns::DictionaryPtr &,
                              const void *) override {
    ++changes;
  }
};

} // namespace

TEST(VLOutline, NewEntryNeedsACountAndHasNoNames) {
  auto entry = VLOutline::entryWithRange(MakeRange(4, 10), 2);
  EXPECT_TRUE(entry->wordCountNeedsUpdate());
  EXPECT_EQ(entry->wordCount(), 0u);
  EXPECT_EQ(entry->wordCountIncludingChildren(), 0u);
  EXPECT_FALSE(entry->title());
  EXPECT_FALSE(entry->identifier());
  EXPECT_FALSE(entry->attributedString());
  EXPECT_EQ(entry->range(), MakeRange(4, 10));
  EXPECT_EQ(entry->level(), 2);
  EXPECT_TRUE(VLOutline().wordCountNeedsUpdate()) << "the unarchiver's starting point too";
}

TEST(VLOutline, SettersArePlain) {
  auto entry = VLOutline::entryWithRange(MakeRange(0, 0), 0);
  entry->setWordCount(120);
  EXPECT_TRUE(entry->wordCountNeedsUpdate()) << "only the owner clears the flag";
  entry->setWordCountNeedsUpdate(false);
  entry->setWordCount(130);
  entry->setWordCountIncludingChildren(400);
  entry->setTitle(u"Night");
  EXPECT_FALSE(entry->wordCountNeedsUpdate()) << "no setter marks the counts stale";

  Counter counter;
  entry->addObserver(&counter, u"title", 0, nullptr);
  entry->setTitle(u"Day");
  EXPECT_EQ(counter.changes, 0) << "plain setters raise no change";
  entry->removeObserver(&counter, u"title");
}

TEST(VLOutline, Description) {
  auto entry = scene(u"EXT. FIELD", MakeRange(3, 12));
  entry->setLevel(1);
  std::u16string text = entry->description();
  EXPECT_TRUE(ns::hasPrefix(text, u"0x"));
  EXPECT_TRUE(ns::hasSuffix(text, u" {3, 12} (1) - \"EXT. FIELD\"")) << ns::toUTF8(text);
  EXPECT_TRUE(ns::hasSuffix(VLOutline().description(), u"{0, 0} (0) - \"(null)\""));
}

TEST(VLOutline, ArchiveKeepsFieldsAndAsksForARecount) {
  auto entry = scene(u"INT. HALL", MakeRange(7, 30));
  entry->setLevel(int64_t{1} << 40);
  entry->setWordCount(512);
  entry->setWordCountIncludingChildren(2048);
  entry->setTextTransform(2);
  entry->setWordCountNeedsUpdate(false);

  auto decoded = roundTrip(entry);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->identifier(), u"scene1");
  EXPECT_EQ(decoded->title(), u"INT. HALL");
  EXPECT_EQ(decoded->range(), MakeRange(7, 30));
  EXPECT_EQ(decoded->level(), int64_t{1} << 40) << "the level is a full integer";
  EXPECT_EQ(decoded->wordCount(), 512u);
  EXPECT_EQ(decoded->wordCountIncludingChildren(), 2048u);
  EXPECT_EQ(decoded->textTransform(), 2);
  EXPECT_TRUE(decoded->wordCountNeedsUpdate()) << "a decoded entry always recounts";

  auto untitled = roundTrip(VLOutline::entryWithRange(MakeRange(0, 1), 0));
  ASSERT_TRUE(untitled);
  EXPECT_FALSE(untitled->title());
  EXPECT_FALSE(untitled->identifier());
}

TEST(VLOutline, CountsAreArchivedIn32Bits) {
  auto entry = VLOutline::entryWithRange(MakeRange(0, 1), 0);
  entry->setWordCount(2147483647);
  entry->setWordCountIncludingChildren(3000000000u);
  auto decoded = roundTrip(entry);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->wordCount(), 2147483647u);
  EXPECT_NE(decoded->wordCountIncludingChildren(), 3000000000u);
}

TEST(VLOutline, ArchiveLayout) {
  auto entry = scene(u"A", MakeRange(2, 5));
  ns::Data data = ns::KeyedArchiver::archivedDataWithRootObject(Value(entry));
  auto plist = ns::PropertyListSerialization::propertyListWithData(data).dictionary();
  ASSERT_TRUE(plist);
  ns::DictionaryPtr fields;
  for (const Value &object : *plist->objectForKey(u"$objects").array())
    if (auto dictionary = object.dictionary(); dictionary && dictionary->containsKey(u"level"))
      fields = dictionary;
  ASSERT_TRUE(fields);
  for (auto key : {u"identifier", u"range", u"title", u"attributedString", u"wordCount",
                   u"wordCountIncludingChildren", u"textTransform"})
    EXPECT_TRUE(fields->containsKey(key)) << ns::toUTF8(key);
  EXPECT_FALSE(fields->containsKey(u"wordCountNeedsUpdate"));
}

TEST(VLOutline, SharedEntryDecodesOnce) {
  auto entry = scene(u"A", MakeRange(0, 4));
  auto array = ns::Array::create({Value(entry), Value(entry)});
  auto decoded = ns::KeyedUnarchiver::unarchiveObjectWithData(
                     ns::KeyedArchiver::archivedDataWithRootObject(Value(array)))
                     .array();
  ASSERT_TRUE(decoded);
  ASSERT_EQ(decoded->count(), 2u);
  EXPECT_TRUE(decoded->objectAtIndex(0).as<VLOutline>());
  EXPECT_TRUE(decoded->objectAtIndex(0).isIdenticalTo(decoded->objectAtIndex(1)));
}

TEST(VLOutline, CopyIsAnotherEntryWithTheSameFields) {
  auto entry = scene(u"Dawn", MakeRange(1, 2));
  entry->setWordCount(9);
  entry->setWordCountNeedsUpdate(false);
  auto text = ns::MutableAttributedString::create(u"carried");
  entry->setAttributedString(text);

  auto copy = ns::copyOf(*entry);
  ASSERT_NE(copy, entry);
  EXPECT_FALSE(copy->isEqual(*entry)) << "entries are compared by identity";
  EXPECT_EQ(copy->title(), u"Dawn");
  EXPECT_EQ(copy->identifier(), u"scene1");
  EXPECT_EQ(copy->range(), MakeRange(1, 2));
  EXPECT_EQ(copy->wordCount(), 9u);
  EXPECT_FALSE(copy->wordCountNeedsUpdate());
  ASSERT_TRUE(copy->attributedString());
  text->replaceCharactersInRange(MakeRange(0, 7), u"changed");
  EXPECT_EQ(copy->attributedString()->string(), u"carried") << "a mutable text is not shared";

  auto fixed = ns::AttributedString::create(u"fixed");
  entry->setAttributedString(fixed);
  EXPECT_EQ(ns::copyOf(*entry)->attributedString(), fixed) << "an immutable text is shared";
}

TEST(VLOutline, KeyValueCoding) {
  auto entry = scene(u"Noon", MakeRange(3, 4));
  EXPECT_EQ(entry->valueForKey(u"range"), Value(u"{3, 4}"));
  EXPECT_EQ(entry->valueForKey(u"wordCountNeedsUpdate"), Value(true));
  entry->setValueForKey(Value(u"{10, 20}"), u"range");
  entry->setValueForKey(Value(5), u"title");
  EXPECT_EQ(entry->range(), MakeRange(10, 20));
  EXPECT_FALSE(entry->title()) << "a title that is not text is no title";

  auto holder = ns::Dictionary::create({{u"entry", Value(entry)}});
  holder->setValueForKeyPath(Value(3), u"entry.level");
  EXPECT_EQ(holder->valueForKeyPath(u"entry.level"), Value(3));
}

TEST(VLOutline, EntriesRideInTheTextByReference) {
  auto first = scene(u"One", MakeRange(0, 4));
  auto second = scene(u"One", MakeRange(4, 4)); // alike in every field
  auto text = ns::MutableAttributedString::create(u"abc\ndef\n");
  text->addAttribute(VLOutlineElementAttributeName, Value(first), MakeRange(0, 4));
  text->addAttribute(VLOutlineElementAttributeName, Value(second), MakeRange(4, 4));

  Range run;
  text->attribute(VLOutlineElementAttributeName, 0, &run, MakeRange(0, 8));
  EXPECT_EQ(run, MakeRange(0, 4)) << "two entries never merge into one run";

  auto tail = text->attributedSubstringFromRange(MakeRange(2, 4));
  EXPECT_EQ(tail->attribute(VLOutlineElementAttributeName, 0, nullptr).object(), first);
  EXPECT_EQ(tail->attribute(VLOutlineElementAttributeName, 3, nullptr).object(), second);

  ns::AttributedString whole(*text);
  EXPECT_EQ(whole.attribute(VLOutlineElementAttributeName, 5, nullptr).object(), second);
  auto copy = ns::copyOf(static_cast<const ns::AttributedString &>(*text));
  EXPECT_EQ(copy->attribute(VLOutlineElementAttributeName, 1, nullptr).object(), first);
}
