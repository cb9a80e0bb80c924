// Paragraph styles and tab stops: value equality, copies, tab order and archiving.
#include "ns/Array.h"
#include "ns/KeyedArchiver.h"
#include "ns/ParagraphStyle.h"

#include <gtest/gtest.h>

using namespace vl::ns;

namespace {

std::vector<double> locations(const ParagraphStyle &style) {
  std::vector<double> out;
  for (const auto &tab : style.tabStops())
    out.push_back(tab->location());
  return out;
}

// One change away from the defaults for each value a style holds.
using Change = void (*)(MutableParagraphStyle &);
const Change changes[] = {
    [](MutableParagraphStyle &s) { s.setAlignment(TextAlignmentCenter); },
    [](MutableParagraphStyle &s) { s.setLineSpacing(1); },
    [](MutableParagraphStyle &s) { s.setParagraphSpacing(1); },
    [](MutableParagraphStyle &s) { s.setParagraphSpacingBefore(1); },
    [](MutableParagraphStyle &s) { s.setHeadIndent(1); },
    [](MutableParagraphStyle &s) { s.setTailIndent(-1); },
    [](MutableParagraphStyle &s) { s.setFirstLineHeadIndent(1); },
    [](MutableParagraphStyle &s) { s.setMinimumLineHeight(1); },
    [](MutableParagraphStyle &s) { s.setMaximumLineHeight(1); },
    [](MutableParagraphStyle &s) { s.setLineHeightMultiple(1.5); },
    [](MutableParagraphStyle &s) { s.setDefaultTabInterval(36); },
    [](MutableParagraphStyle &s) { s.setBaseWritingDirection(WritingDirectionRightToLeft); },
    [](MutableParagraphStyle &s) { s.setHyphenationFactor(0.5f); },
    [](MutableParagraphStyle &s) { s.setTighteningFactorForTruncation(0); },
    [](MutableParagraphStyle &s) { s.setHeaderLevel(2); },
    [](MutableParagraphStyle &s) { s.setTabStops({}); },
    [](MutableParagraphStyle &s) { s.addTabStop(TextTab::create(RightTabStopType, 100)); },
    [](MutableParagraphStyle &s) { s.setTextLists({TextList::create(u"{disc}")}); },
};

} // namespace

TEST(ParagraphStyle, DefaultHasTabsEvery28PointsAndNewStylesStartFromIt) {
  const ParagraphStyle &style = *ParagraphStyle::defaultParagraphStyle();
  EXPECT_EQ(locations(style),
            (std::vector<double>{28, 56, 84, 112, 140, 168, 196, 224, 252, 280, 308, 336}));
  EXPECT_TRUE(MutableParagraphStyle().isEqual(style)) << "a new style starts from the defaults";
}

TEST(ParagraphStyle, EqualityComparesEveryValue) {
  auto base = ParagraphStyle::defaultParagraphStyle()->mutableParagraphStyle();
  for (size_t i = 0; i < std::size(changes); ++i) {
    auto changed = base->mutableParagraphStyle();
    changes[i](*changed);
    EXPECT_FALSE(changed->isEqual(*base)) << "change " << i;
    auto same = base->mutableParagraphStyle();
    changes[i](*same);
    EXPECT_TRUE(same->isEqual(*changed)) << "change " << i;
    EXPECT_EQ(same->hash(), changed->hash()) << "change " << i;
  }

  // Across mutability, with distinct but equal tabs, and -0.0 against 0.0.
  auto a = MutableParagraphStyle::create(), b = MutableParagraphStyle::create();
  a->setTabStops({TextTab::create(LeftTabStopType, 72)});
  b->setTabStops({TextTab::create(LeftTabStopType, 72)});
  b->setHeadIndent(-0.0);
  ParagraphStylePtr frozen = a->immutableCopy();
  EXPECT_TRUE(frozen->isEqual(*b));
  EXPECT_EQ(frozen->hash(), b->hash());
  EXPECT_TRUE(Value(frozen) == Value(b)) << "values holding styles compare by value";
}

TEST(ParagraphStyle, CopiesShareOnlyWhatIsImmutable) {
  const ParagraphStylePtr &shared = ParagraphStyle::defaultParagraphStyle();
  EXPECT_EQ(shared->copy().get(), shared.get()) << "an immutable style is its own copy";
  auto mutableStyle = std::dynamic_pointer_cast<MutableParagraphStyle>(shared->mutableCopy());
  ASSERT_NE(mutableStyle, nullptr);
  mutableStyle->setAlignment(TextAlignmentRight);
  EXPECT_EQ(shared->alignment(), TextAlignmentNatural) << "the shared default is untouched";

  ParagraphStylePtr frozen = mutableStyle->immutableCopy();
  EXPECT_EQ(dynamic_cast<MutableParagraphStyle *>(frozen.get()), nullptr);
  mutableStyle->setAlignment(TextAlignmentLeft);
  EXPECT_EQ(frozen->alignment(), TextAlignmentRight) << "a copy does not follow later changes";
}

TEST(ParagraphStyle, TabStopsStaySortedByLocation) {
  auto style = MutableParagraphStyle::create();
  style->setTabStops({TextTab::create(RightTabStopType, 300), TextTab::create(LeftTabStopType, 20),
                      nullptr, TextTab::create(CenterTabStopType, 150)});
  EXPECT_EQ(locations(*style), (std::vector<double>{20, 150, 300})) << "nulls dropped, sorted";
  style->addTabStop(TextTab::create(DecimalTabStopType, 100));
  style->addTabStop(TextTab::create(RightTabStopType, 100));
  EXPECT_EQ(locations(*style), (std::vector<double>{20, 100, 100, 150, 300}));
  // Stops at one location keep the order they came in.
  EXPECT_EQ(style->tabStops()[1]->tabStopType(), DecimalTabStopType);

  // Removal takes the first equal stop only.
  style->setTabStops({TextTab::create(LeftTabStopType, 36), TextTab::create(LeftTabStopType, 36),
                      TextTab::create(RightTabStopType, 36)});
  style->removeTabStop(TextTab(LeftTabStopType, 36));
  style->removeTabStop(TextTab(LeftTabStopType, 37));
  ASSERT_EQ(style->tabStops().size(), 2u);
  EXPECT_EQ(style->tabStops()[0]->tabStopType(), LeftTabStopType);
  EXPECT_EQ(style->tabStops()[1]->tabStopType(), RightTabStopType);
}

TEST(TextTab, ComparesByTypeLocationAndOptions) {
  EXPECT_FALSE(TextTab(LeftTabStopType, 36).isEqual(TextTab(RightTabStopType, 36)));
  EXPECT_EQ(TextTab::createWithTextAlignment(TextAlignmentNatural, 10)->tabStopType(),
            LeftTabStopType);
  auto terminators = Dictionary::create({{u"NSTabColumnTerminatorsAttributeName", Value(u".")}});
  auto decimal = TextTab::createWithTextAlignment(TextAlignmentNatural, 10, terminators);
  EXPECT_EQ(decimal->tabStopType(), DecimalTabStopType);
  EXPECT_EQ(decimal->alignment(), TextAlignmentRight);
  EXPECT_FALSE(decimal->isEqual(TextTab(DecimalTabStopType, 10))) << "options take part";
  terminators->setObject(Value(u","), TabColumnTerminatorsAttributeName);
  EXPECT_EQ(decimal->options()->objectForKey(TabColumnTerminatorsAttributeName), Value(u"."))
      << "the options are copied";
}

TEST(ParagraphStyle, ArchivesEveryValue) {
  auto style = MutableParagraphStyle::create();
  for (Change change : changes)
    change(*style);
  style->addTabStop(TextTab::create(DecimalTabStopType, 9));
  auto list = TextList::create(u"({lower-roman})", TextListPrependEnclosingMarker);
  list->setStartingItemNumber(4);
  style->setTextLists({TextList::create(u"{decimal}."), list});
  for (const ParagraphStylePtr &original :
       {ParagraphStylePtr(style), ParagraphStyle::defaultParagraphStyle()}) {
    auto back = KeyedUnarchiver::unarchiveObjectWithData(
                    KeyedArchiver::archivedDataWithRootObject(Value(original)))
                    .as<ParagraphStyle>();
    ASSERT_NE(back, nullptr);
    EXPECT_TRUE(back->isEqual(*original)) << *back;
    EXPECT_EQ(dynamic_cast<MutableParagraphStyle *>(back.get()) != nullptr,
              dynamic_cast<MutableParagraphStyle *>(original.get()) != nullptr)
        << "the class is kept";
  }
}
