// Text markers: copies, archives (and markers shared between a document's references and its
// text), key-value coding, and markers riding in text.
#include "model/VLConstants.h"
#include "ns/Array.h"
#include "ns/Dictionary.h"
#include "ns/KeyedArchiver.h"
#include "ns/MutableAttributedString.h"
#include "ns/String.h"
#include "objects/VLSTextMarker.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace vl;
using vl::ns::MakeRange;
using vl::ns::Range;
using vl::ns::Value;

namespace {

Value roundTrip(const Value &root) {
  return ns::KeyedUnarchiver::unarchiveObjectWithData(
      ns::KeyedArchiver::archivedDataWithRootObject(root));
}

auto fields(const VLSTextMarker &m) {
  return std::make_tuple(m.identifier(), m.range(), m.textMarkerType(), m.textMarkerLocation(),
                         m.canDelete(), m.imageSize(), m.date(), m.representedObject());
}

VLSTextMarkerPtr comment(std::u16string identifier, Range range) {
  auto marker = VLSTextMarker::textMarkerWithIdentifier(std::move(identifier), range);
  marker->setTextMarkerType(VLSTextMarkerTypeComment);
  marker->setRepresentedObject(Value(u"Fix this line"));
  return marker;
}

} // namespace

TEST(VLSTextMarker, CopiesAndArchivesCarryEveryField) {
  auto properties = ns::Dictionary::create({{u"title", Value(u"Scene")}});
  auto marker = VLSTextMarker::textMarkerWithIdentifier(u"scene2", MakeRange(10, 0));
  marker->setTextMarkerType(VLSTextMarkerTypeOutlineEntry);
  marker->setTextMarkerLocation(VLSTextMarkerLocationAfter);
  marker->setCanDelete(true);
  marker->setImageSize(ns::MakeSize(0, 0));
  marker->setDate(ns::Date(1000.5));
  marker->setRepresentedObject(Value(properties));

  auto copy = ns::copyOf(*marker);
  ASSERT_NE(copy, marker);
  EXPECT_FALSE(copy->isEqual(*marker)) << "markers compare by identity";
  EXPECT_EQ(fields(*copy), fields(*marker));
  properties->setObject(Value(u"Renamed"), u"title");
  EXPECT_EQ(copy->representedObject().dictionary()->objectForKey(u"title"), Value(u"Scene"))
      << "a copy of the represented object, not the object";

  auto decoded = roundTrip(Value(marker)).as<VLSTextMarker>();
  ASSERT_TRUE(decoded);
  EXPECT_EQ(fields(*decoded), fields(*marker));
  // A new marker's defaults survive too, and the range is stored as text of 64 bits.
  auto bare = std::make_shared<VLSTextMarker>(MakeRange(ns::NotFound, 0));
  decoded = roundTrip(Value(bare)).as<VLSTextMarker>();
  ASSERT_TRUE(decoded);
  EXPECT_EQ(fields(*decoded), fields(*bare));
  EXPECT_EQ(decoded->imageSize(), ns::MakeSize(12, 12));
}

TEST(VLSTextMarker, KeyValueCodingTakesRangeAndSizeAsText) {
  auto marker = comment(u"comment2", MakeRange(4, 2));
  EXPECT_EQ(marker->valueForKey(u"imageSize"), Value(u"{12, 12}"));
  EXPECT_EQ(marker->valueForKeyPath(u"representedObject"), Value(u"Fix this line"));
  marker->setValueForKey(Value(u"{1.5, 40}"), u"imageSize");
  marker->setValueForKey(Value(u"{9, 1}"), u"range");
  EXPECT_EQ(marker->imageSize(), ns::MakeSize(1.5, 40));
  EXPECT_EQ(marker->range(), MakeRange(9, 1));
}

TEST(VLSTextMarker, MarkersSurviveCopiesOfTheirText) {
  auto first = comment(u"comment1", MakeRange(0, 3));
  auto second = comment(u"comment1", MakeRange(3, 3)); // alike in every field
  auto text = ns::MutableAttributedString::create(u"abcdefgh");
  text->addAttribute(VLSTextMarkerAttributeName, Value(first), MakeRange(0, 3));
  text->addAttribute(VLSTextMarkerAttributeName, Value(second), MakeRange(3, 3));

  Range run;
  text->attribute(VLSTextMarkerAttributeName, 1, &run, MakeRange(0, 8));
  EXPECT_EQ(run, MakeRange(0, 3)) << "two markers never merge into one run";

  auto middle = text->attributedSubstringFromRange(MakeRange(2, 3));
  EXPECT_EQ(middle->attribute(VLSTextMarkerAttributeName, 0, nullptr).object(), first)
      << "attribute values are shared, not copied";
  EXPECT_EQ(middle->attribute(VLSTextMarkerAttributeName, 1, nullptr).object(), second);
  ns::AttributedString whole(*text);
  EXPECT_EQ(whole.attribute(VLSTextMarkerAttributeName, 4, nullptr).object(), second);
  EXPECT_TRUE(whole.attribute(VLSTextMarkerAttributeName, 7, nullptr).isNil());

  // An edit before a marker moves its run; the field stays as it was until someone sets it.
  text->replaceCharactersInRange(MakeRange(0, 0), u"xy");
  text->attribute(VLSTextMarkerAttributeName, 5, &run, MakeRange(0, text->length()));
  EXPECT_EQ(run, MakeRange(5, 3));
  EXPECT_EQ(second->range(), MakeRange(3, 3));
}

TEST(VLSTextMarker, AnArchiveKeepsOneObjectPerMarker) {
  // The marker is in the text (its run split by another attribute), in the references and
  // in the root array: all decode to one object.
  auto marker = comment(u"comment1", MakeRange(0, 3));
  auto text = ns::MutableAttributedString::create(u"abc def ghi");
  text->addAttribute(VLSTextMarkerAttributeName, Value(marker), MakeRange(0, 3));
  text->addAttribute(u"NSColor", Value(u"red"), MakeRange(1, 1));
  auto references = ns::Dictionary::create({{u"comment1", Value(marker)}});
  auto decoded = roundTrip(Value(ns::Array::create({text, references, marker}))).array();
  ASSERT_TRUE(decoded);
  auto copy = decoded->objectAtIndex(0).as<ns::MutableAttributedString>();
  ASSERT_TRUE(copy);
  Value copied = decoded->objectAtIndex(2);
  ASSERT_TRUE(copied.as<VLSTextMarker>());
  EXPECT_NE(copied.object(), marker);
  EXPECT_TRUE(
      copied.isIdenticalTo(decoded->objectAtIndex(1).dictionary()->objectForKey(u"comment1")));
  EXPECT_TRUE(copied.isIdenticalTo(copy->attribute(VLSTextMarkerAttributeName, 0, nullptr)));
  EXPECT_TRUE(copied.isIdenticalTo(copy->attribute(VLSTextMarkerAttributeName, 2, nullptr)));
  EXPECT_TRUE(copy->attribute(VLSTextMarkerAttributeName, 3, nullptr).isNil());
}
