// Text storages: batches of edits, the order in which a batch is processed, fixing, and
// storages that keep their text elsewhere.
#include "ns/Assert.h"
#include "ns/AttributeNames.h"
#include "ns/NotificationCenter.h"
#include "ns/TextStorage.h"

#include <gtest/gtest.h>

using namespace vl::ns;

namespace {

std::string str(Range r) {
  return "{" + std::to_string(r.location) + "," + std::to_string(r.length) + "}";
}

// Writes down everything a storage reports, in order.
class Log : public TextStorageDelegate, public LayoutManager {
public:
  using TextStorageDelegate::textStorage;

  explicit Log(TextStorage &storage) : storage(storage) {
    storage.setDelegate(this);
    storage.addLayoutManager(this);
    NotificationCenter::defaultCenter().addObserver(
        this,
        [this](const Notification &n) {
          events.push_back(n.name() == TextStorageWillProcessEditingNotification ? "will note"
                                                                                 : "did note");
        },
        u"", &storage);
  }
  ~Log() override {
    NotificationCenter::defaultCenter().removeObserver(this);
    storage.setDelegate(nullptr);
    storage.removeLayoutManager(this);
  }

  void textStorageWillProcessEditing(const Notification &) override {
    events.push_back("will");
    if (onWill)
      onWill();
  }
  void textStorageDidProcessEditing(const Notification &) override {
    events.push_back("did " + std::to_string(storage.editedMask()) + " " +
                     str(storage.editedRange()) + " " + std::to_string(storage.changeInLength()));
  }
  void textStorage(TextStorage &, uint64_t mask, Range range, int64_t change,
                   Range invalidated) override {
    events.push_back("layout " + std::to_string(mask) + " " + str(range) + " " +
                     std::to_string(change) + " " + str(invalidated));
  }
  size_t count(const std::string &event) const {
    return static_cast<size_t>(std::count(events.begin(), events.end(), event));
  }

  TextStorage &storage;
  std::vector<std::string> events;
  std::function<void()> onWill;
};

// A storage that writes down its fixing and may edit while fixing.
class FixingStorage : public TextStorage {
public:
  using TextStorage::TextStorage;
  void fixAttributesInRange(Range range) override {
    if (log)
      log->push_back("fix " + str(range));
    if (onFix)
      onFix(range);
    TextStorage::fixAttributesInRange(range);
  }
  std::vector<std::string> *log = nullptr;
  std::function<void(Range)> onFix;
};

// Keeps its text in an inner string, as a storage with a contents object does, and tells
// the platform of its edits itself.
class ContentsStorage : public TextStorage {
public:
  using TextStorage::attributesAtIndex;
  using TextStorage::replaceCharactersInRange;

  uint64_t length() const override { return contents.length(); }
  std::u16string_view string() const override { return contents.string(); }
  ConstDictionaryPtr attributesAtIndex(uint64_t index, Range *effectiveRange) const override {
    return contents.attributesAtIndex(index, effectiveRange);
  }
  void replaceCharactersInRange(Range range, std::u16string_view string) override {
    int64_t change = static_cast<int64_t>(string.size()) - static_cast<int64_t>(range.length);
    contents.replaceCharactersInRange(range, string);
    edited(TextStorageEditedCharacters, range, change);
  }
  void setAttributes(ConstDictionaryPtr attributes, Range range) override {
    contents.setAttributes(std::move(attributes), range);
    edited(TextStorageEditedAttributes, range, 0);
  }

  MutableAttributedString contents;
};

} // namespace

TEST(TextStorage, AnEditOutsideABatchIsProcessedAtOnceInOrder) {
  FixingStorage s(u"Hello\nworld");
  Log log(s);
  s.log = &log.events;
  EXPECT_THROW(s.replaceCharactersInRange(Range{12, 0}, u"x"), InternalInconsistencyException);
  EXPECT_THROW(s.setAttributes(nullptr, Range{4, 8}), InternalInconsistencyException);
  EXPECT_TRUE(log.events.empty()) << "a failed range check records no edit";
  s.replaceCharactersInRange(Range{6, 0}, u"big ");
  EXPECT_EQ(log.events, (std::vector<std::string>{"will", "will note", "fix {6,9}", "did 2 {6,4} 4",
                                                  "did note", "layout 2 {6,4} 4 {6,9}"}));
  EXPECT_EQ(s.editedMask(), 0u);
}

TEST(TextStorage, ABatchGathersItsEditsAndIsProcessedOnce) {
  FixingStorage s(u"0123456789\n0123456789");
  Log log(s);
  s.log = &log.events;
  s.beginEditing();
  s.replaceCharactersInRange(Range{10, 0}, u"abc");
  EXPECT_EQ(s.editedRange(), (Range{10, 3}));
  s.beginEditing();
  s.deleteCharactersInRange(Range{0, 2}); // before the first edit: the range follows
  s.endEditing();
  EXPECT_TRUE(log.events.empty());
  EXPECT_EQ(s.editedMask(), uint64_t(TextStorageEditedCharacters));
  EXPECT_EQ(s.editedRange(), (Range{0, 11}));
  EXPECT_EQ(s.changeInLength(), 1);
  s.setAttributes(Dictionary::create({{u"k", 1}}), Range{1, 1});
  s.endEditing();
  EXPECT_EQ(log.events,
            (std::vector<std::string>{"will", "will note", "fix {0,12}", "did 3 {0,11} 1",
                                      "did note", "layout 3 {0,11} 1 {0,12}"}));
  EXPECT_THROW(s.endEditing(), InternalInconsistencyException);
}

TEST(TextStorage, EditedRangeGrowsAndShrinksWithLaterEdits) {
  TextStorage s(u"0123456789abcdef");
  s.beginEditing();
  s.replaceCharactersInRange(Range{10, 2}, u"x");
  s.replaceCharactersInRange(Range{0, 0}, u"yy");
  EXPECT_EQ(s.editedRange(), (Range{0, 13}));
  s.deleteCharactersInRange(Range{12, 3}); // the first edit and what follows
  EXPECT_EQ(s.editedRange(), (Range{0, 12}));
  EXPECT_EQ(s.changeInLength(), -2);
  s.endEditing();
  EXPECT_EQ(s.string(), u"yy0123456789ef");
}

TEST(TextStorage, EditsWhileProcessingJoinTheBatch) {
  FixingStorage s(u"one\ntwo");
  Log log(s);
  s.log = &log.events;
  log.onWill = [&] {
    log.onWill = nullptr;
    s.replaceCharactersInRange(Range{0, 0}, u">");
  };
  s.onFix = [&](Range range) { s.addAttribute(u"fixed", true, range); };
  s.replaceCharactersInRange(Range{7, 0}, u"!");
  EXPECT_EQ(log.count("will"), 1u);
  EXPECT_EQ(log.events.back(), "layout 3 {0,9} 2 {0,9}");
  EXPECT_EQ(s.attribute(u"fixed", 0, nullptr), Value(true));
}

TEST(TextStorage, CompositeEditsAreOneBatch) {
  TextStorage s(u"aaabbbccc");
  s.setAttributes(Dictionary::create({{u"k", 1}}), Range{3, 3});
  Log log(s);
  s.addAttribute(u"b", true, Range{1, 7}); // over three runs
  s.appendAttributedString(AttributedString(u"ddd", Dictionary::create({{u"k", 2}})));
  EXPECT_EQ(log.count("will"), 2u);
  EXPECT_EQ(log.events[4], "layout 1 {1,7} 0 {0,9}");
  EXPECT_EQ(log.events.back(), "layout 3 {9,3} 3 {0,12}");
}

TEST(TextStorage, ProcessingRepairsParagraphStylesAndAttachments) {
  auto bodyStyle = std::make_shared<Object>(), headingStyle = std::make_shared<Object>();
  TextStorage s(u"Heading\nBody text");
  s.addAttribute(ParagraphStyleAttributeName, headingStyle, Range{0, 8});
  s.addAttribute(ParagraphStyleAttributeName, bodyStyle, Range{8, 9});
  // Typing heading-styled text into the body: the body keeps its style.
  auto typed = Dictionary::create({{u"NSAttachment", 1}});
  typed->setObject(Value(headingStyle), ParagraphStyleAttributeName);
  s.replaceCharactersInRange(Range{12, 0}, AttributedString(u"X\uFFFC", typed));
  Range r;
  EXPECT_EQ(s.attribute(ParagraphStyleAttributeName, 12, &r, Range{0, s.length()}).object(),
            bodyStyle);
  EXPECT_EQ(r, (Range{8, 11}));
  EXPECT_TRUE(s.attribute(AttachmentAttributeName, 12, nullptr).isNil());
  EXPECT_FALSE(s.attribute(AttachmentAttributeName, 13, nullptr).isNil());
  // Joining the paragraphs gives the body the heading's style.
  s.deleteCharactersInRange(Range{7, 1});
  EXPECT_EQ(s.attribute(ParagraphStyleAttributeName, 10, &r, Range{0, s.length()}).object(),
            headingStyle);
  EXPECT_EQ(r, (Range{0, s.length()}));
}

TEST(TextStorage, ARemovedLayoutManagerIsNotCalled) {
  TextStorage s(u"abc");
  Log log(s);
  s.removeLayoutManager(&log);
  s.replaceCharactersInRange(Range{0, 0}, u"x");
  EXPECT_EQ(log.count("will"), 1u);
  EXPECT_EQ(log.events.back(), "did note") << "no layout manager called";
}

TEST(TextStorage, AStorageKeepingItsTextElsewhereIsProcessedThroughItsPrimitives) {
  auto style = std::make_shared<Object>();
  ContentsStorage s;
  Log log(s);
  s.beginEditing();
  s.appendAttributedString(AttributedString(u"one\n", Dictionary::create({{u"k", 1}})));
  auto styled = Dictionary::create();
  styled->setObject(Value(style), ParagraphStyleAttributeName);
  s.appendAttributedString(AttributedString(u"two", styled));
  s.replaceCharactersInRange(Range{4, 0}, u"new ");
  s.endEditing();
  EXPECT_EQ(s.contents.string(), u"one\nnew two");
  EXPECT_EQ(log.events.back(), "layout 3 {0,11} 11 {0,11}");
  Range r;
  EXPECT_EQ(s.contents.attribute(ParagraphStyleAttributeName, 4, &r, Range{0, 11}).object(), style);
  EXPECT_EQ(r, (Range{4, 7}));
}
