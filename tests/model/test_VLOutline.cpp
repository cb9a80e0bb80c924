// Outline entries: archives that ask for a recount, and copies.
#include "ModelTestSupport.h"
#include "model/VLOutline.h"
#include "ns/Array.h"
#include "ns/MutableAttributedString.h"

#include <gtest/gtest.h>

using namespace vl;
using vl::ns::MakeRange;
using vl::ns::Range;
using vl::ns::Value;

namespace {

VLOutlinePtr scene(std::u16string title, Range range) {
  auto entry = VLOutline::entryWithRange(range, 0);
  entry->setTitle(std::move(title));
  entry->setIdentifier(u"scene1");
  return entry;
}

} // namespace

TEST(VLOutline, ArchiveKeepsFieldsAndAsksForARecount) {
  auto entry = scene(u"INT. HALL", MakeRange(7, 30));
  entry->setLevel(int64_t{1} << 40);
  entry->setWordCount(2147483647);
  entry->setWordCountIncludingChildren(3000000000u);
  entry->setTextTransform(2);
  entry->setWordCountNeedsUpdate(false);

  auto decoded = test::roundTrip(entry);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->identifier(), u"scene1");
  EXPECT_EQ(decoded->title(), u"INT. HALL");
  EXPECT_EQ(decoded->range(), MakeRange(7, 30));
  EXPECT_EQ(decoded->level(), int64_t{1} << 40) << "the level is a full integer";
  EXPECT_EQ(decoded->wordCount(), 2147483647u);
  EXPECT_NE(decoded->wordCountIncludingChildren(), 3000000000u) << "counts are stored in 32 bits";
  EXPECT_EQ(decoded->textTransform(), 2);
  EXPECT_TRUE(decoded->wordCountNeedsUpdate()) << "a decoded entry always recounts";
}

TEST(VLOutline, ArchiveLeavesTheRecountFlagOutAndSharesEntries) {
  auto entry = scene(u"A", MakeRange(0, 4));
  EXPECT_EQ(test::archivedKeys(Value(entry), u"VLOutline"),
            test::sorted({u"identifier", u"range", u"title", u"attributedString", u"level",
                          u"wordCount", u"wordCountIncludingChildren", u"textTransform"}));
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
  EXPECT_FALSE(copy->isEqual(*entry)) << "entries are compared by identity, so equal entries "
                                         "never merge into one run of text";
  EXPECT_EQ(copy->title(), u"Dawn");
  EXPECT_EQ(copy->wordCount(), 9u);
  EXPECT_FALSE(copy->wordCountNeedsUpdate());
  ASSERT_TRUE(copy->attributedString());
  text->replaceCharactersInRange(MakeRange(0, 7), u"changed");
  EXPECT_EQ(copy->attributedString()->string(), u"carried") << "a mutable text is not shared";

  auto fixed = ns::AttributedString::create(u"fixed");
  entry->setAttributedString(fixed);
  EXPECT_EQ(ns::copyOf(*entry)->attributedString(), fixed) << "an immutable text is shared";
}
