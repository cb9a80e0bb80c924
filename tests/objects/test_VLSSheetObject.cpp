// Sheet objects: the pasteboard round trip, which edits an object allows, its selection frame,
// its own text and the needs-update log.
#include "ns/AttributeNames.h"
#include "ns/Font.h"
#include "ns/Log.h"
#include "ns/ParagraphStyle.h"
#include "ns/PropertyListSerialization.h"
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

TEST(VLSSheetObject, PasteboardRoundTripDropsTheBlockFlag) {
  auto pasteboard = ns::Pasteboard::create();
  auto block = field(VLSSheetObjectTypeTokenField, true);
  ASSERT_TRUE(pasteboard->writeObjects({block.get()}));
  EXPECT_EQ(pasteboard->types(),
            std::vector<std::u16string>{std::u16string(VLSSheetObjectPasteboardType)});

  // What crosses is a property list dictionary of the type and the flag.
  auto plist = pasteboard->propertyListForType(VLSSheetObjectPasteboardType).dictionary();
  ASSERT_TRUE(plist);
  EXPECT_EQ(plist->objectForKey(u"type"), Value(VLSSheetObjectTypeTokenField));
  EXPECT_EQ(plist->objectForKey(u"isBlock"), Value(true));

  auto read = pasteboard->readObjects<VLSSheetObject>();
  ASSERT_EQ(read.size(), 1u);
  EXPECT_NE(read[0], block);
  EXPECT_EQ(read[0]->type(), std::u16string(VLSSheetObjectTypeTokenField));
  EXPECT_FALSE(read[0]->isBlock()) << "reading never makes a block";
}

TEST(VLSSheetObject, ReadingAcceptsAnyContent) {
  auto plist = ns::Dictionary::create({{u"type", Value(u"SomethingElse")}, {u"isBlock", true}});
  auto object = VLSSheetObject::createWithPasteboardPropertyList(Value(plist), u"other.type");
  EXPECT_EQ(object->type(), u"SomethingElse") << "any text is a type";
  EXPECT_FALSE(object->isBlock());

  auto plain = VLSSheetObject::createWithPasteboardPropertyList(Value(u"text"), u"");
  ASSERT_TRUE(plain);
  EXPECT_FALSE(plain->type());
  auto numbered =
      VLSSheetObject::createWithDictionary(ns::Dictionary::create({{u"type", Value(3)}}).get());
  EXPECT_FALSE(numbered->type());
  EXPECT_FALSE(VLSSheetObject::createWithDictionary(nullptr)->type());
  EXPECT_FALSE(VLSSheetObject().dictionaryValue()->containsKey(u"type"))
      << "no type is left out, not written as nil";

  EXPECT_EQ(VLSSheetObject::readingOptionsForType(VLSSheetObjectPasteboardType, nullptr),
            uint64_t{ns::PasteboardReadingAsPropertyList});
  EXPECT_EQ(VLSSheetObject::readableTypesForPasteboard(nullptr),
            VLSSheetObject().writableTypesForPasteboard(nullptr));
}

TEST(VLSSheetObject, ChangesMustLieWhollyInside) {
  VLSSheetObject object;
  auto allowed = [&](ns::Range change) {
    return object.textView(nullptr, change, u"x", MakeRange(10, 5));
  };
  EXPECT_TRUE(allowed(MakeRange(11, 2)));
  EXPECT_TRUE(allowed(MakeRange(10, 5))) << "the whole object";
  EXPECT_TRUE(allowed(MakeRange(10, 0))) << "an insertion at its start";
  EXPECT_TRUE(allowed(MakeRange(14, 1)));
  EXPECT_FALSE(allowed(MakeRange(15, 0))) << "an insertion at its very end";
  EXPECT_FALSE(allowed(MakeRange(9, 2))) << "begins before it";
  EXPECT_FALSE(allowed(MakeRange(14, 2))) << "runs past its end";
  EXPECT_FALSE(object.textView(nullptr, MakeRange(3, 0), u"", MakeRange(3, 0)))
      << "an empty object takes no change";
  EXPECT_FALSE(object.insertNewlineInRange(MakeRange(10, 5), nullptr));
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

TEST(VLSSheetObject, ShowsItsTypeText) {
  auto text = field(VLSSheetObjectTypeTextField, false)->attributedString();
  ASSERT_TRUE(text);
  EXPECT_EQ(text->string(), VLSSheetObjectTypeTextField);
  auto font = text->attribute(ns::FontAttributeName, 0, nullptr).as<ns::Font>();
  ASSERT_TRUE(font);
  EXPECT_EQ(font->pointSize(), 12.0);
  EXPECT_EQ(text->attribute(ns::ParagraphStyleAttributeName, 0, nullptr).object(),
            ns::ParagraphStyle::defaultParagraphStyle());
  EXPECT_EQ(VLSSheetObject().attributedString()->length(), 0u);
}

TEST(VLSSheetObject, NeedsUpdateIsStoredAndLogged) {
  std::vector<std::string> lines;
  auto previous =
      ns::setLogSink([&](ns::LogLevel, std::string_view line) { lines.emplace_back(line); });
  VLSSheetObject object;
  object.setNeedsUpdate(true);
  object.setValueForKey(Value(false), u"needsUpdate");
  ns::setLogSink(std::move(previous));

  EXPECT_FALSE(object.needsUpdate());
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].rfind("0x", 0), 0u);
  EXPECT_NE(lines[0].find(" needsUpdate:1"), std::string::npos) << lines[0];
  EXPECT_NE(lines[1].find(" needsUpdate:0"), std::string::npos) << lines[1];
}
