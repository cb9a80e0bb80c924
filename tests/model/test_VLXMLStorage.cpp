// Tests of VLXMLStorage: initialisers, forwarding, the delegate hooks and the word count kept
// by each edit.
#include "model/VLAttributedStringAdditions.h"
#include "model/VLXMLStorage.h"
#include "ns/Assert.h"
#include "ns/AttributeNames.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace vl;

namespace {

ns::ConstDictionaryPtr colour(std::u16string_view name) {
  return ns::Dictionary::create({{u"colour", ns::Value(name)}});
}

uint64_t freshCount(const VLXMLStorage &storage) {
  return wordsInRange(storage, ns::Range{0, storage.length()});
}

// Records the hooks a storage calls, answering for the methods it is told to implement.
class RecordingDelegate : public ns::TextStorageDelegate {
public:
  explicit RecordingDelegate(bool responds) : responds(responds) {}
  bool respondsTo(ns::TextStorageDelegateMethod method) const override {
    return responds && (method == ns::TextStorageDelegateMethod::Edited ||
                        method == ns::TextStorageDelegateMethod::WillReplaceCharacters);
  }
  void edited(uint64_t mask, ns::Range range, int64_t change) override {
    calls.push_back("edited " + std::to_string(mask) + " " + std::to_string(range.location) + "," +
                    std::to_string(range.length) + " " + std::to_string(change));
  }
  void textStorage(ns::TextStorage &storage, ns::Range range, std::u16string_view string) override {
    // Called before the change: the storage still holds the old text.
    calls.push_back("will " + std::to_string(range.location) + "," + std::to_string(range.length) +
                    " " + ns::toUTF8(string) + " of " + ns::toUTF8(storage.string()));
  }
  bool responds;
  std::vector<std::string> calls;
};

} // namespace

TEST(VLXMLStorageTest, InitialisersCopyTheContentsAndLeaveTheCountToTheOwner) {
  EXPECT_EQ(VLXMLStorage::create(u"dropped without attributes", nullptr)->length(), 0u);
  auto source = ns::MutableAttributedString::create(u"one two", colour(u"blue"));
  auto storage = VLXMLStorage::create(source);
  source->replaceCharactersInRange(ns::Range{0, 3}, u"changed");
  EXPECT_EQ(storage->string(), u"one two") << "the contents are a copy";
  EXPECT_EQ(storage->wordCount(), 0u);

  storage->setAttributes(colour(u"red"), ns::Range{4, 3});
  EXPECT_EQ(storage->contents()->attribute(u"colour", 5, nullptr), ns::Value(u"red"));
  storage->setContents(ns::MutableAttributedString::create(u"epsilon\n"));
  EXPECT_EQ(storage->wordCount(), 0u);
}

TEST(VLXMLStorageTest, DelegateHooksOnlyWhenTheDelegateResponds) {
  auto storage = VLXMLStorage::create(u"abc def", colour(u"red"));
  RecordingDelegate delegate(true);
  storage->setDelegate(&delegate);
  storage->replaceCharactersInRange(ns::Range{3, 1}, u"--");
  storage->setAttributes(colour(u"blue"), ns::Range{0, 2});
  storage->addAttribute(u"size", ns::Value(3), ns::Range{1, 2});
  EXPECT_EQ(delegate.calls, (std::vector<std::string>{"will 3,1 -- of abc def", "edited 2 3,1 1",
                                                      "edited 1 0,2 0", "edited 1 1,2 0"}));

  RecordingDelegate silent(false);
  storage->setDelegate(&silent);
  storage->replaceCharactersInRange(ns::Range{0, 1}, u"x");
  EXPECT_TRUE(silent.calls.empty());
  storage->setDelegate(nullptr);
}

TEST(VLXMLStorageTest, CountFollowsWordsTouchedByAnEdit) {
  auto storage = VLXMLStorage::create(u"The quick fox.\nIt ran.", colour(u"red"));
  storage->setWordCount(freshCount(*storage));
  ASSERT_EQ(storage->wordCount(), 5u);

  storage->replaceCharactersInRange(ns::Range{6, 0}, u" ");
  EXPECT_EQ(storage->wordCount(), 6u) << "a blank inside a word removes one word and adds two";

  storage->replaceCharactersInRange(ns::Range{6, 1}, u"");
  EXPECT_EQ(storage->wordCount(), 5u) << "removing it joins them again";

  storage->replaceCharactersInRange(ns::Range{14, 1}, u" ");
  EXPECT_EQ(storage->wordCount(), 5u) << "a paragraph end replaced by a blank joins no words";

  storage->replaceCharactersInRange(ns::Range{0, storage->length()}, u"");
  EXPECT_EQ(storage->wordCount(), 0u);
  storage->replaceCharactersInRange(ns::Range{0, 0}, u"Now three words");
  EXPECT_EQ(storage->wordCount(), 3u);
}

TEST(VLXMLStorageTest, CountIsUnsignedAndWraps) {
  auto storage =
      VLXMLStorage::create(u"one two three four five six seven eight nine ten", colour(u"red"));
  ASSERT_EQ(storage->wordCount(), 0u);
  storage->replaceCharactersInRange(ns::Range{0, 4}, u"");
  EXPECT_EQ(storage->wordCount(), UINT64_MAX);
  storage->replaceCharactersInRange(ns::Range{0, 0}, u"one ");
  EXPECT_EQ(storage->wordCount(), 0u);
}

TEST(VLXMLStorageTest, EditsOutsideTheTextFailBeforeChangingAnything) {
  auto storage = VLXMLStorage::create(u"two words", colour(u"red"));
  storage->setWordCount(2);
  EXPECT_THROW(storage->replaceCharactersInRange(ns::Range{5, 10}, u"x"),
               ns::InternalInconsistencyException);
  EXPECT_EQ(storage->string(), u"two words");
  EXPECT_EQ(storage->wordCount(), 2u);
}
