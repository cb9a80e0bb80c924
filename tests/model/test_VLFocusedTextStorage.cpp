// Tests of VLFocusedTextStorage: shifted reads and writes, the range following base edits, and
// what the focused side is told.
#include "model/VLConstants.h"
#include "model/VLFocusedTextStorage.h"
#include "model/VLStyle.h"
#include "model/VLStyledTextStorage.h"
#include "ns/Dictionary.h"
#include "ns/NotificationCenter.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace vl;

namespace {

// The host's part: before the base processes an edit, it tells who follows the base where
// the edit happened.
class Host : public ns::TextStorageDelegate {
public:
  bool respondsTo(ns::TextStorageDelegateMethod method) const override {
    return method == ns::TextStorageDelegateMethod::Edited;
  }
  void edited(uint64_t, ns::Range range, int64_t change) override {
    auto info = ns::Dictionary::create({{u"range", ns::Value(ns::StringFromRange(range))},
                                        {u"changeInLength", ns::Value(change)}});
    ns::NotificationCenter::defaultCenter().postNotificationName(VLSTextStorageEditedNotificaton,
                                                                 base, info);
  }
  ns::TextStorage *base = nullptr;
};

// One edit as the focused side learns of it.
struct Told {
  uint64_t mask;
  ns::Range range;
  int64_t change;
  bool operator==(const Told &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Told &told) {
  return out << told.mask << " " << ns::toUTF8(ns::StringFromRange(told.range)) << " "
             << told.change;
}

class RecordingLayout : public ns::LayoutManager {
public:
  void textStorage(ns::TextStorage &, uint64_t mask, ns::Range range, int64_t change,
                   ns::Range invalidated) override {
    told.push_back(Told{mask, range, change});
    invalidatedRanges.push_back(invalidated);
  }
  std::vector<Told> told;
  std::vector<ns::Range> invalidatedRanges;
};

class FocusedTextStorageTest : public ::testing::Test {
protected:
  void SetUp() override {
    auto attributes = ns::Dictionary::create({{u"colour", ns::Value(u"black")}});
    attributes->setObject(ns::Value(VLStyle::create()), VLParagraphStyleAttributeName);
    base = VLStyledTextStorage::create(u"aaaa bbbb cccc dddd eeee ffff\n", attributes);
    base->setWordCount(6);
    host.base = base.get();
    base->setDelegate(&host);
    focused = VLFocusedTextStorage::create(base);
    focused->setFocusedRange(ns::Range{10, 5});
    focused->addLayoutManager(&layout);
    // What observers of the focused storage see while it posts.
    ns::NotificationCenter::defaultCenter().addObserver(
        this,
        [this](const ns::Notification &) {
          posted.push_back(
              Told{focused->editedMask(), focused->editedRange(), focused->changeInLength()});
        },
        ns::TextStorageDidProcessEditingNotification, focused.get());
    ns::NotificationCenter::defaultCenter().addObserver(
        this, [this](const ns::Notification &) { ++invalidations; },
        VLSFocusedTextStorageDidInvalidateNotification, focused.get());
  }
  void TearDown() override { ns::NotificationCenter::defaultCenter().removeObserver(this); }

  VLStyledTextStoragePtr base;
  Host host;
  VLFocusedTextStoragePtr focused;
  RecordingLayout layout;
  std::vector<Told> posted;
  int invalidations = 0;
};

} // namespace

TEST_F(FocusedTextStorageTest, ReadsTheFocusedRangeOfTheBase) {
  EXPECT_EQ(focused->length(), 5u);
  EXPECT_EQ(focused->string(), u"cccc ");
  EXPECT_EQ(focused->wordCount(), 1u);
  EXPECT_EQ(focused->substringWithRange(ns::Range{1, 2}), u"cc");
  EXPECT_EQ(focused->paragraphRangeForRange(ns::Range{2, 0}), (ns::Range{0, 5}))
      << "the focus edges bound the paragraphs";

  base->addAttribute(u"colour", ns::Value(u"red"), ns::Range{12, 10});
  ns::Range effective;
  EXPECT_EQ(focused->attributesAtIndex(3, &effective)->objectForKey(u"colour"), ns::Value(u"red"));
  EXPECT_EQ(effective, (ns::Range{2, 10})) << "shifted, not clipped to the focus";
  focused->attributesAtIndex(0, &effective);
  EXPECT_EQ(effective.location, uint64_t(0) - 10) << "a run starting before the focus wraps";

  EXPECT_EQ(focused->rangeForBaseRange(ns::Range{2, 1}), (ns::Range{uint64_t(0) - 8, 1}));
  EXPECT_EQ(focused->baseRangeForRange(ns::Range{1, 2}), (ns::Range{11, 2}));
}

TEST_F(FocusedTextStorageTest, EditBeforeTheFocusMovesItUnseen) {
  base->replaceCharactersInRange(ns::Range{2, 0}, u"x y");
  EXPECT_EQ(focused->focusedRange(), (ns::Range{13, 5}));
  EXPECT_EQ(focused->string(), u"cccc ");
  EXPECT_TRUE(layout.told.empty()) << "out of view";
  EXPECT_TRUE(posted.empty());
  EXPECT_EQ(base->wordCount(), 7u);
  EXPECT_EQ(focused->wordCount(), 1u);

  // The base's count changed unseen; the next edit in view adds only its own change.
  base->replaceCharactersInRange(ns::Range{15, 0}, u" ");
  EXPECT_EQ(focused->wordCount(), 2u);
}

TEST_F(FocusedTextStorageTest, EditInsideTheFocusIsToldInFocusedPositions) {
  base->replaceCharactersInRange(ns::Range{12, 0}, u"x y");
  EXPECT_EQ(focused->focusedRange(), (ns::Range{10, 8}));
  EXPECT_EQ(focused->string(), u"ccx ycc ");
  EXPECT_EQ(focused->wordCount(), 2u);
  EXPECT_EQ(layout.told, (std::vector<Told>{{ns::TextStorageEditedCharacters, {2, 3}, 3}}));
  EXPECT_EQ(layout.invalidatedRanges, (std::vector<ns::Range>{{2, 3}}));
  EXPECT_EQ(posted, (std::vector<Told>{{ns::TextStorageEditedCharacters, {2, 3}, 3}}));
  EXPECT_EQ(focused->editedRange(), (ns::Range{ns::NotFound, 0}))
      << "the platform's values once told";

  base->replaceCharactersInRange(ns::Range{10, 0}, u"z");
  EXPECT_EQ(focused->focusedRange(), (ns::Range{10, 9})) << "an edit at the start is inside";
  base->replaceCharactersInRange(ns::Range{19, 0}, u"after");
  EXPECT_EQ(focused->focusedRange(), (ns::Range{10, 9})) << "an edit at the end is after";
  EXPECT_EQ(layout.told.size(), 2u);
}

TEST_F(FocusedTextStorageTest, EditAcrossAnEdgeInvalidatesUntilANewRange) {
  base->replaceCharactersInRange(ns::Range{8, 4}, u"");
  EXPECT_FALSE(focused->focusedRangeIsValid());
  EXPECT_EQ(invalidations, 1);
  EXPECT_EQ(focused->focusedRange(), (ns::Range{10, 5})) << "the stale range is kept";
  EXPECT_TRUE(layout.told.empty());

  base->replaceCharactersInRange(ns::Range{0, 0}, u"x");
  EXPECT_EQ(invalidations, 2) << "every further edit repeats the notice";
  focused->setFocusedRange(ns::Range{9, 6});
  EXPECT_TRUE(focused->focusedRangeIsValid());
  EXPECT_EQ(focused->string(), u"cc ddd");
  EXPECT_EQ(focused->wordCount(), 2u);
  base->replaceCharactersInRange(ns::Range{0, 0}, u"x");
  EXPECT_EQ(invalidations, 2);
  EXPECT_EQ(focused->focusedRange(), (ns::Range{10, 6}));

  base->replaceCharactersInRange(ns::Range{14, 2}, u"");
  EXPECT_FALSE(focused->focusedRangeIsValid()) << "an edit ending at the focus end cuts it";
}

TEST_F(FocusedTextStorageTest, AttributeEditReachesLayoutWithoutMovingTheRange) {
  base->addAttribute(u"colour", ns::Value(u"red"), ns::Range{11, 2});
  EXPECT_EQ(focused->focusedRange(), (ns::Range{10, 5}));
  EXPECT_EQ(layout.told, (std::vector<Told>{{ns::TextStorageEditedAttributes, {1, 2}, 0}}));
  EXPECT_EQ(focused->attribute(u"colour", 1, nullptr), ns::Value(u"red"));
}

TEST_F(FocusedTextStorageTest, TypingThroughTheFocusIsReportedOnce) {
  focused->replaceCharactersInRange(ns::Range{2, 0}, u" ");
  EXPECT_EQ(base->string(), u"aaaa bbbb cc cc dddd eeee ffff\n");
  EXPECT_EQ(focused->focusedRange(), (ns::Range{10, 6}));
  EXPECT_EQ(focused->string(), u"cc cc ");
  EXPECT_EQ(base->wordCount(), 7u);
  EXPECT_EQ(focused->wordCount(), 2u);
  ASSERT_EQ(layout.told.size(), 1u);
  EXPECT_EQ(layout.told[0].range, (ns::Range{2, 1}));
  EXPECT_EQ(layout.told[0].change, 1);
  EXPECT_EQ(posted.size(), 1u);

  focused->setAttributes(ns::Dictionary::create({{u"colour", ns::Value(u"green")}}),
                         ns::Range{0, 2});
  EXPECT_EQ(base->attribute(u"colour", 11, nullptr), ns::Value(u"green"));
  EXPECT_EQ(layout.told.size(), 2u);
}

TEST_F(FocusedTextStorageTest, LeavingTheBaseStopsFollowingIt) {
  focused->setBaseTextStorage(nullptr);
  base->replaceCharactersInRange(ns::Range{0, 0}, u"x");
  EXPECT_EQ(focused->focusedRange(), (ns::Range{10, 5}));
  EXPECT_EQ(focused->length(), 0u) << "nothing to show without a base";
  EXPECT_EQ(focused->string(), u"");

  focused->setBaseTextStorage(base);
  focused.reset();
  // Nobody follows the base any more.
  base->replaceCharactersInRange(ns::Range{12, 0}, u"x");
  EXPECT_EQ(base->length(), 32u);
}
