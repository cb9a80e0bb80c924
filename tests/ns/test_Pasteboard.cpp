// The in-memory pasteboard: what writing objects leave on it, and what reading classes get back.
#include "ns/Dictionary.h"
#include "ns/Pasteboard.h"
#include "ns/PropertyListSerialization.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace vl::ns;

namespace {

// Offers a note as plain text, as a property list and under a type it has no value for.
class Note : public Object, public PasteboardWriting {
public:
  explicit Note(std::u16string text) : text(std::move(text)) {}
  std::u16string text;

  std::vector<std::u16string> writableTypesForPasteboard(const Pasteboard *) const override {
    return {u"public.utf8-plain-text", u"test.note", u"test.nothing"};
  }
  Value pasteboardPropertyListForType(std::u16string_view type) const override {
    if (type == u"public.utf8-plain-text")
      return Value(text);
    if (type == u"test.note")
      return Value(Dictionary::create({{u"text", Value(text)}}));
    return Value();
  }

  static std::vector<std::u16string> readableTypesForPasteboard(const Pasteboard *) {
    return {u"test.note"};
  }
  static uint64_t readingOptionsForType(std::u16string_view, const Pasteboard *) {
    return PasteboardReadingAsPropertyList;
  }
  static std::shared_ptr<Note> createWithPasteboardPropertyList(const Value &plist,
                                                                std::u16string_view) {
    auto dictionary = plist.dictionary();
    if (!dictionary)
      return nullptr;
    return std::make_shared<Note>(dictionary->objectForKey(u"text").string());
  }
};

} // namespace

TEST(Pasteboard, WritesEachObjectAsAnItem) {
  Pasteboard pasteboard;
  Note first(u"one"), second(u"twö");
  ASSERT_TRUE(pasteboard.writeObjects({&first, &second}));
  ASSERT_EQ(pasteboard.items().size(), 2u);
  EXPECT_EQ(pasteboard.types(),
            (std::vector<std::u16string>{u"public.utf8-plain-text", u"test.note"}))
      << "a type with no value is left out";
  EXPECT_EQ(pasteboard.stringForType(u"public.utf8-plain-text"), u"one");
  EXPECT_EQ(pasteboard.items()[1].front().second.view(), "tw\xc3\xb6") << "text goes as UTF-8";

  auto notes = pasteboard.readObjects<Note>();
  ASSERT_EQ(notes.size(), 2u);
  EXPECT_EQ(notes[1]->text, u"twö");

  int64_t count = pasteboard.changeCount();
  EXPECT_EQ(pasteboard.clearContents(), count + 1);
  EXPECT_TRUE(pasteboard.types().empty());
  EXPECT_TRUE(pasteboard.readObjects<Note>().empty());
}

TEST(Pasteboard, PropertyListsCrossAsBytes) {
  Pasteboard pasteboard;
  auto plist = Dictionary::create({{u"n", Value(3)}});
  ASSERT_TRUE(pasteboard.setPropertyList(Value(plist), u"test.note"));
  Value back = pasteboard.propertyListForType(u"test.note");
  ASSERT_TRUE(back.dictionary());
  EXPECT_NE(back.dictionary(), plist);
  EXPECT_TRUE(back.dictionary()->isEqual(*plist));

  EXPECT_FALSE(pasteboard.setPropertyList(Value(std::make_shared<Object>()), u"test.object"));
  EXPECT_FALSE(pasteboard.dataForType(u"test.object"));

  // Damaged bytes from the host read as nothing, and reading classes skip them.
  pasteboard.setData(Data::fromString("<plist><dict><key>"), u"test.note");
  EXPECT_TRUE(pasteboard.propertyListForType(u"test.note").isNil());
  EXPECT_TRUE(pasteboard.readObjects<Note>().empty());
}
