// Text markers: construction defaults, copies, archives (and markers shared between a
// document's references and its text), key-value coding, and markers riding in text.
#include "model/VLConstants.h"
#include "ns/Array.h"
#include "ns/Dictionary.h"
#include "ns/KeyedArchiver.h"
#include "ns/MutableAttributedString.h"
#include "ns/String.h"
#include "objects/VLSTextMarker.h"

#include <gtest/gtest.h>

using namespace vl;
using vl::ns::MakeRange;
using vl::ns::Range;
using vl::ns::Value;

namespace {

Value roundTrip(const Value &root) {
  return ns::KeyedUnarchiver::unarchiveObjectWithData(
      ns::KeyedArchiver::archivedDataWithRootObject(root));
}

VLSTextMarkerPtr comment(std::u16string identifier, Range range) {
  auto marker = VLSTextMarker::textMarkerWithIdentifier(std::move(identifier), range);
  marker->setTextMarkerType(VLSTextMarkerTypeComment);
  marker->setRepresentedObject(Value(u"Fix this line"));
  return marker;
}

} // namespace

TEST(VLSTextMarker, NewMarkers) {
  VLSTextMarker marker(MakeRange(3, 2));
  EXPECT_EQ(marker.range(), MakeRange(3, 2));
  EXPECT_EQ(marker.imageSize(), ns::MakeSize(12.0, 12.0));
  EXPECT_EQ(marker.textMarkerType(), 0u);
  EXPECT_EQ(marker.textMarkerLocation(), uint64_t{VLSTextMarkerLocationSpanning});
  EXPECT_FALSE(marker.canDelete());
  EXPECT_FALSE(marker.identifier());
  EXPECT_FALSE(marker.date());
  EXPECT_TRUE(marker.representedObject().isNil());

  auto named = VLSTextMarker::textMarkerWithIdentifier(u"comment1", MakeRange(5, 0));
  EXPECT_EQ(named->identifier(), u"comment1");
  EXPECT_EQ(named->range(), MakeRange(5, 0));
  EXPECT_EQ(named->imageSize(), ns::MakeSize(12.0, 12.0));
}

TEST(VLSTextMarker, Description) {
  auto marker = comment(u"comment4", MakeRange(8, 1));
  std::u16string text = marker->description();
  EXPECT_TRUE(ns::hasPrefix(text, u"<VLSTextMarker: 0x")) << ns::toUTF8(text);
  EXPECT_TRUE(ns::hasSuffix(text, u"> comment4 {8, 1}")) << ns::toUTF8(text);
  EXPECT_TRUE(ns::hasSuffix(VLSTextMarker().description(), u"> (null) {0, 0}"));
}

TEST(VLSTextMarker, CopyCopiesTheRepresentedObject) {
  auto properties = ns::Dictionary::create({{u"title", Value(u"Scene")}});
  auto marker = VLSTextMarker::textMarkerWithIdentifier(u"scene2", MakeRange(10, 0));
  marker->setTextMarkerType(VLSTextMarkerTypeOutlineEntry);
  marker->setTextMarkerLocation(VLSTextMarkerLocationAfter);
  marker->setCanDelete(true);
  marker->setImageSize(ns::MakeSize(30, 20));
  marker->setDate(ns::Date(1000.0));
  marker->setRepresentedObject(Value(properties));

  auto copy = ns::copyOf(*marker);
  ASSERT_NE(copy, marker);
  EXPECT_FALSE(copy->isEqual(*marker)) << "markers compare by identity";
  EXPECT_EQ(copy->identifier(), u"scene2");
  EXPECT_EQ(copy->range(), MakeRange(10, 0));
  EXPECT_EQ(copy->textMarkerType(), 3u);
  EXPECT_EQ(copy->textMarkerLocation(), 2u);
  EXPECT_TRUE(copy->canDelete());
  EXPECT_EQ(copy->imageSize(), ns::MakeSize(30, 20));
  EXPECT_EQ(copy->date(), ns::Date(1000.0));

  auto copied = copy->representedObject().dictionary();
  ASSERT_TRUE(copied);
  EXPECT_NE(copied, properties) << "a copy of the represented object, not the object";
  EXPECT_TRUE(copied->isEqual(*properties));
  properties->setObject(Value(u"Renamed"), u"title");
  EXPECT_EQ(copied->objectForKey(u"title"), Value(u"Scene"));

  EXPECT_EQ(ns::copyOf(*comment(u"c", MakeRange(0, 1)))->representedObject(),
            Value(u"Fix this line"));
}

TEST(VLSTextMarker, ArchiveRoundTrip) {
  auto marker = comment(u"comment7", MakeRange(12, 3));
  marker->setTextMarkerLocation(VLSTextMarkerLocationBefore);
  marker->setCanDelete(true);
  marker->setDate(ns::Date(5000.5));
  marker->setImageSize(ns::MakeSize(0, 0));

  auto decoded = roundTrip(Value(marker)).as<VLSTextMarker>();
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->identifier(), u"comment7");
  EXPECT_EQ(decoded->range(), MakeRange(12, 3));
  EXPECT_EQ(decoded->textMarkerType(), 1u);
  EXPECT_EQ(decoded->textMarkerLocation(), 1u);
  EXPECT_TRUE(decoded->canDelete());
  EXPECT_EQ(decoded->date(), ns::Date(5000.5));
  EXPECT_EQ(decoded->representedObject(), Value(u"Fix this line"));
  EXPECT_EQ(decoded->imageSize(), ns::MakeSize(0, 0)) << "a decoded marker has what was coded";

  auto bare =
      roundTrip(Value(std::make_shared<VLSTextMarker>(MakeRange(1, 1)))).as<VLSTextMarker>();
  ASSERT_TRUE(bare);
  EXPECT_FALSE(bare->identifier());
  EXPECT_FALSE(bare->date());
  EXPECT_TRUE(bare->representedObject().isNil());
  EXPECT_EQ(bare->imageSize(), ns::MakeSize(12, 12));
}

TEST(VLSTextMarker, TypeAndLocationSurviveOnlyTo32Bits) {
  auto marker = std::make_shared<VLSTextMarker>(MakeRange(0, 1));
  marker->setTextMarkerType((uint64_t{1} << 32) | 2);
  marker->setTextMarkerLocation((uint64_t{7} << 33) | 1);
  auto decoded = roundTrip(Value(marker)).as<VLSTextMarker>();
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->textMarkerType(), 2u);
  EXPECT_EQ(decoded->textMarkerLocation(), 1u);

  VLSTextMarker big(MakeRange(ns::NotFound, 0));
  auto far = roundTrip(Value(ns::copyOf(big))).as<VLSTextMarker>();
  ASSERT_TRUE(far);
  EXPECT_EQ(far->range(), MakeRange(ns::NotFound, 0)) << "the range text keeps 64 bits";
}

TEST(VLSTextMarker, MarkerSharedByReferencesAndAnArrayDecodesOnce) {
  auto marker = comment(u"comment1", MakeRange(0, 1));
  auto references = ns::Dictionary::create({{u"comment1", Value(marker)}});
  auto root = ns::Array::create({Value(references), Value(marker)});

  auto decoded = roundTrip(Value(root)).array();
  ASSERT_TRUE(decoded);
  auto fromReferences = decoded->objectAtIndex(0).dictionary()->objectForKey(u"comment1");
  ASSERT_TRUE(fromReferences.as<VLSTextMarker>());
  EXPECT_TRUE(fromReferences.isIdenticalTo(decoded->objectAtIndex(1)));
}

TEST(VLSTextMarker, KeyValueCoding) {
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

TEST(VLSTextMarker, ArchivedTextKeepsOneMarkerObjectPerMarker) {
  auto marker = comment(u"comment1", MakeRange(0, 3));
  auto text = ns::MutableAttributedString::create(u"abc def ghi");
  text->addAttribute(VLSTextMarkerAttributeName, Value(marker), MakeRange(0, 3));
  text->addAttribute(u"NSColor", Value(u"red"), MakeRange(1, 1)); // splits the marker's run
  auto references = ns::Dictionary::create({{u"comment1", Value(marker)}});
  auto decoded = roundTrip(Value(ns::Array::create({text, references}))).array();
  ASSERT_TRUE(decoded);
  auto copy = decoded->objectAtIndex(0).as<ns::MutableAttributedString>();
  ASSERT_TRUE(copy);
  auto copiedMarker = decoded->objectAtIndex(1).dictionary()->objectForKey(u"comment1");
  ASSERT_TRUE(copiedMarker.as<VLSTextMarker>());
  EXPECT_EQ(copy->attribute(VLSTextMarkerAttributeName, 0, nullptr).object(),
            copiedMarker.object());
  EXPECT_EQ(copy->attribute(VLSTextMarkerAttributeName, 2, nullptr).object(),
            copiedMarker.object());
  EXPECT_TRUE(copy->attribute(VLSTextMarkerAttributeName, 3, nullptr).isNil());
}
