// Sheet objects: the pasteboard round trip, which edits an object allows and its selection
// frame.
#include "ns/String.h"
#include "ns/TextView.h"
#include "objects/VLSSheetObject.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace vl;
using vl::ns::MakeRange;
using vl::ns::Value;

namespace {

VLSSheetObjectPtr field(std::u16string_view type, bool isBlock) {
  auto object = std::make_shared<VLSSheetObject>();
  object->setType(std::u16string(type));
  object->setIsBlock(isBlock);
  return object;
}

// A laid-out view whose glyphs sit two to a character.
class LaidOutView : public ns::TextView {
public:
  bool hasLayoutManager() const override { return true; }
  ns::Range glyphRangeForCharacterRange(ns::Range range) const override {
    return MakeRange(range.location * 2, range.length * 2);
  }
  ns::Rect boundingRectForGlyphRange(ns::Range glyphs) const override {
    return ns::MakeRect(glyphs.location, 20, glyphs.length * 5.0, 14);
  }
  ns::Point textContainerOrigin() const override { return ns::MakePoint(5, 7); }
};

class NoLayoutView : public ns::TextView {
public:
  ns::Point textContainerOrigin() const override { return ns::MakePoint(5, 7); }
};

} // namespace

TEST(VLSSheetObject, PasteboardRoundTripKeepsTheTypeAndDropsTheBlockFlag) {
  auto pasteboard = ns::Pasteboard::create();
  auto block = field(VLSSheetObjectTypeTokenField, true);
  ASSERT_TRUE(pasteboard->writeObjects({block.get()}));
  EXPECT_EQ(pasteboard->types(),
            std::vector<std::u16string>{std::u16string(VLSSheetObjectPasteboardType)});
  // What crosses is a property list dictionary of the type and the flag.
  EXPECT_EQ(pasteboard->propertyListForType(VLSSheetObjectPasteboardType),
            Value(ns::Dictionary::create(
                {{u"type", Value(VLSSheetObjectTypeTokenField)}, {u"isBlock", Value(true)}})));

  auto read = pasteboard->readObjects<VLSSheetObject>();
  ASSERT_EQ(read.size(), 1u);
  EXPECT_NE(read[0], block);
  EXPECT_EQ(read[0]->type(), std::u16string(VLSSheetObjectTypeTokenField));
  EXPECT_FALSE(read[0]->isBlock()) << "reading never makes a block";
  EXPECT_EQ(read[0]->attributedString()->string(), VLSSheetObjectTypeTokenField);

  // Any text is a type; other content reads as an object without one.
  auto plist = ns::Dictionary::create({{u"type", Value(u"SomethingElse")}, {u"isBlock", true}});
  EXPECT_EQ(VLSSheetObject::createWithPasteboardPropertyList(Value(plist), u"other")->type(),
            u"SomethingElse");
  EXPECT_FALSE(VLSSheetObject::createWithPasteboardPropertyList(Value(u"text"), u"")->type());
  EXPECT_FALSE(
      VLSSheetObject::createWithDictionary(ns::Dictionary::create({{u"type", Value(3)}}).get())
          ->type());
  EXPECT_FALSE(VLSSheetObject().dictionaryValue()->containsKey(u"type"));
}

TEST(VLSSheetObject, ChangesMustLieWhollyInside) {
  VLSSheetObject object;
  const std::pair<ns::Range, bool> cases[] = {{MakeRange(11, 2), true},  {MakeRange(10, 5), true},
                                              {MakeRange(10, 0), true},  {MakeRange(14, 1), true},
                                              {MakeRange(15, 0), false}, {MakeRange(9, 2), false},
                                              {MakeRange(14, 2), false}};
  for (const auto &[change, allowed] : cases)
    EXPECT_EQ(object.textView(nullptr, change, u"x", MakeRange(10, 5)), allowed)
        << change.location << "," << change.length;
  EXPECT_FALSE(object.textView(nullptr, MakeRange(3, 0), u"", MakeRange(3, 0)))
      << "an empty object takes no change";
}

TEST(VLSSheetObject, SelectionFrameGrowsTheGlyphBounds) {
  VLSSheetObject object;
  LaidOutView laidOut;
  // Characters 3..5 are glyphs 6..10: x 6, width 20; grown by 2 each side, moved by (5, 7).
  EXPECT_EQ(object.selectionFrameForRange(MakeRange(3, 2), &laidOut), ns::MakeRect(9, 25, 24, 18));
  NoLayoutView bare;
  EXPECT_EQ(object.selectionFrameForRange(MakeRange(3, 2), &bare), ns::MakeRect(3, 5, 4, 4));
  EXPECT_EQ(object.selectionFrameForRange(MakeRange(3, 2), nullptr), ns::MakeRect(-2, -2, 4, 4));
}
