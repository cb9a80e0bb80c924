// Paragraph styles and tab stops: platform defaults, value equality, copies, tab order and
// archiving.
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

} // namespace

TEST(ParagraphStyle, DefaultHasThePlatformValues) {
  const ParagraphStylePtr &style = ParagraphStyle::defaultParagraphStyle();
  EXPECT_EQ(style->alignment(), TextAlignmentNatural);
  EXPECT_EQ(style->baseWritingDirection(), WritingDirectionNatural);
  EXPECT_EQ(style->tighteningFactorForTruncation(), 0.05f);
  EXPECT_EQ(style->hyphenationFactor(), 0.0f);
  EXPECT_EQ(style->lineSpacing(), 0.0);
  EXPECT_EQ(style->paragraphSpacing(), 0.0);
  EXPECT_EQ(style->paragraphSpacingBefore(), 0.0);
  EXPECT_EQ(style->headIndent(), 0.0);
  EXPECT_EQ(style->tailIndent(), 0.0);
  EXPECT_EQ(style->firstLineHeadIndent(), 0.0);
  EXPECT_EQ(style->minimumLineHeight(), 0.0);
  EXPECT_EQ(style->maximumLineHeight(), 0.0);
  EXPECT_EQ(style->lineHeightMultiple(), 0.0);
  EXPECT_EQ(style->defaultTabInterval(), 0.0);
  EXPECT_EQ(style->headerLevel(), 0);
  EXPECT_TRUE(style->textLists().empty());
  std::vector<double> expected;
  for (int i = 1; i <= 12; ++i)
    expected.push_back(28.0 * i);
  EXPECT_EQ(locations(*style), expected);
  for (const auto &tab : style->tabStops())
    EXPECT_EQ(tab->tabStopType(), LeftTabStopType);

  EXPECT_EQ(ParagraphStyle::defaultParagraphStyle().get(), style.get()) << "one shared instance";
  EXPECT_TRUE(MutableParagraphStyle().isEqual(*style)) << "a new style starts from the defaults";
  EXPECT_EQ(dynamic_cast<MutableParagraphStyle *>(style.get()), nullptr);
}

TEST(ParagraphStyle, EqualityComparesEveryValue) {
  auto base = ParagraphStyle::defaultParagraphStyle()->mutableParagraphStyle();
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
  for (size_t i = 0; i < std::size(changes); ++i) {
    auto changed = base->mutableParagraphStyle();
    changes[i](*changed);
    EXPECT_FALSE(changed->isEqual(*base)) << "change " << i;
    EXPECT_FALSE(base->isEqual(*changed)) << "change " << i;
    auto same = base->mutableParagraphStyle();
    changes[i](*same);
    EXPECT_TRUE(same->isEqual(*changed)) << "change " << i;
    EXPECT_EQ(same->hash(), changed->hash()) << "change " << i;
  }
}

TEST(ParagraphStyle, EqualityIsByValueAcrossMutability) {
  auto a = MutableParagraphStyle::create();
  a->setHeadIndent(36);
  a->setTabStops({TextTab::create(LeftTabStopType, 72)});
  auto b = MutableParagraphStyle::create();
  b->setHeadIndent(36);
  b->setTabStops({TextTab::create(LeftTabStopType, 72)}); // a different but equal tab
  EXPECT_TRUE(a->isEqual(*b));
  ParagraphStylePtr frozen = a->immutableCopy();
  EXPECT_EQ(std::string(frozen->className()), "NSParagraphStyle");
  EXPECT_TRUE(frozen->isEqual(*b));
  EXPECT_EQ(frozen->hash(), b->hash());
  EXPECT_TRUE(Value(frozen) == Value(b)) << "values holding styles compare by value";

  // -0.0 == 0.0, so the hashes must agree too.
  auto zero = MutableParagraphStyle::create();
  auto negativeZero = MutableParagraphStyle::create();
  negativeZero->setHeadIndent(-0.0);
  EXPECT_TRUE(zero->isEqual(*negativeZero));
  EXPECT_EQ(zero->hash(), negativeZero->hash());
}

TEST(ParagraphStyle, CopiesShareOnlyWhatIsImmutable) {
  const ParagraphStylePtr &shared = ParagraphStyle::defaultParagraphStyle();
  EXPECT_EQ(shared->copy().get(), shared.get()) << "an immutable style is its own copy";

  auto mutableStyle = std::dynamic_pointer_cast<MutableParagraphStyle>(shared->mutableCopy());
  ASSERT_NE(mutableStyle, nullptr);
  mutableStyle->setAlignment(TextAlignmentRight);
  EXPECT_EQ(shared->alignment(), TextAlignmentNatural) << "the shared default is untouched";

  ParagraphStylePtr frozen = mutableStyle->immutableCopy();
  EXPECT_NE(frozen.get(), mutableStyle.get());
  EXPECT_EQ(dynamic_cast<MutableParagraphStyle *>(frozen.get()), nullptr);
  mutableStyle->setAlignment(TextAlignmentLeft);
  EXPECT_EQ(frozen->alignment(), TextAlignmentRight) << "a copy does not follow later changes";

  auto target = MutableParagraphStyle::create();
  target->setParagraphStyle(*frozen);
  EXPECT_TRUE(target->isEqual(*frozen));
  target->setParagraphStyle(*target);
  EXPECT_TRUE(target->isEqual(*frozen)) << "setting a style from itself changes nothing";
}

TEST(ParagraphStyle, TabStopsStaySortedByLocation) {
  auto style = MutableParagraphStyle::create();
  style->setTabStops({TextTab::create(RightTabStopType, 300), TextTab::create(LeftTabStopType, 20),
                      nullptr, TextTab::create(CenterTabStopType, 150)});
  EXPECT_EQ(locations(*style), (std::vector<double>{20, 150, 300})) << "nulls dropped, sorted";

  style->addTabStop(TextTab::create(DecimalTabStopType, 100));
  style->addTabStop(TextTab::create(LeftTabStopType, 400));
  style->addTabStop(TextTab::create(LeftTabStopType, 0));
  style->addTabStop(nullptr);
  EXPECT_EQ(locations(*style), (std::vector<double>{0, 20, 100, 150, 300, 400}));

  // Stops at one location keep the order they came in.
  style->addTabStop(TextTab::create(RightTabStopType, 100));
  EXPECT_EQ(style->tabStops()[2]->tabStopType(), DecimalTabStopType);
  EXPECT_EQ(style->tabStops()[3]->tabStopType(), RightTabStopType);
}

TEST(ParagraphStyle, RemoveTabStopTakesOnlyTheFirstEqualStop) {
  auto style = MutableParagraphStyle::create();
  style->setTabStops({TextTab::create(LeftTabStopType, 36), TextTab::create(LeftTabStopType, 36),
                      TextTab::create(RightTabStopType, 36)});
  style->removeTabStop(TextTab(LeftTabStopType, 36));
  ASSERT_EQ(style->tabStops().size(), 2u);
  EXPECT_EQ(style->tabStops()[0]->tabStopType(), LeftTabStopType);
  EXPECT_EQ(style->tabStops()[1]->tabStopType(), RightTabStopType);

  style->removeTabStop(TextTab(CenterTabStopType, 36));
  style->removeTabStop(TextTab(LeftTabStopType, 37));
  EXPECT_EQ(style->tabStops().size(), 2u) << "no equal stop: nothing removed";
}

TEST(TextTab, ComparesByTypeLocationAndOptions) {
  EXPECT_TRUE(TextTab(LeftTabStopType, 36).isEqual(TextTab(LeftTabStopType, 36)));
  EXPECT_FALSE(TextTab(LeftTabStopType, 36).isEqual(TextTab(RightTabStopType, 36)));
  EXPECT_FALSE(TextTab(LeftTabStopType, 36).isEqual(TextTab(LeftTabStopType, 36.5)));
  EXPECT_EQ(TextTab(CenterTabStopType, 72).hash(), TextTab(CenterTabStopType, 72).hash());
  auto tab = TextTab::create(LeftTabStopType, 10);
  EXPECT_EQ(tab->copy().get(), tab.get()) << "tabs are immutable and shared";
}

TEST(TextTab, AlignmentsMapToTypes) {
  EXPECT_EQ(TextTab::createWithTextAlignment(TextAlignmentRight, 10)->tabStopType(),
            RightTabStopType);
  EXPECT_EQ(TextTab::createWithTextAlignment(TextAlignmentCenter, 10)->tabStopType(),
            CenterTabStopType);
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
  EXPECT_EQ(TextTab(LeftTabStopType, 1).alignment(), TextAlignmentLeft);
  EXPECT_EQ(TextTab(CenterTabStopType, 1).alignment(), TextAlignmentCenter);
}

TEST(ParagraphStyle, ArchivesEveryValue) {
  auto style = MutableParagraphStyle::create();
  style->setAlignment(TextAlignmentJustified);
  style->setLineSpacing(2);
  style->setParagraphSpacing(12);
  style->setParagraphSpacingBefore(6);
  style->setHeadIndent(36);
  style->setTailIndent(-18);
  style->setFirstLineHeadIndent(18);
  style->setMinimumLineHeight(14);
  style->setMaximumLineHeight(28);
  style->setLineHeightMultiple(1.25);
  style->setDefaultTabInterval(36);
  style->setTabStops(
      {TextTab::create(DecimalTabStopType, 144), TextTab::create(LeftTabStopType, 9)});
  style->setBaseWritingDirection(WritingDirectionRightToLeft);
  style->setHyphenationFactor(0.3f);
  style->setTighteningFactorForTruncation(0.1f);
  style->setHeaderLevel(3);
  auto list = TextList::create(u"({lower-roman})", TextListPrependEnclosingMarker);
  list->setStartingItemNumber(4);
  style->setTextLists({TextList::create(u"{decimal}."), list});

  Value decoded = KeyedUnarchiver::unarchiveObjectWithData(
      KeyedArchiver::archivedDataWithRootObject(Value(style)));
  auto back = decoded.as<ParagraphStyle>();
  ASSERT_NE(back, nullptr);
  EXPECT_TRUE(back->isEqual(*style)) << *back;
  EXPECT_NE(dynamic_cast<MutableParagraphStyle *>(back.get()), nullptr) << "the class is kept";

  Value defaults = KeyedUnarchiver::unarchiveObjectWithData(
      KeyedArchiver::archivedDataWithRootObject(Value(ParagraphStyle::defaultParagraphStyle())));
  ASSERT_NE(defaults.as<ParagraphStyle>(), nullptr);
  EXPECT_TRUE(defaults.as<ParagraphStyle>()->isEqual(*ParagraphStyle::defaultParagraphStyle()));
}
