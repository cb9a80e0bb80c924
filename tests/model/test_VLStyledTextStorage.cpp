// Tests of VLStyledTextStorage: the paragraph style repair, and random editing that must keep
// one style per paragraph and an exact word count.
#include "ModelTestSupport.h"
#include "model/VLAttributedStringAdditions.h"
#include "model/VLConstants.h"
#include "model/VLStyle.h"
#include "model/VLStyledTextStorage.h"
#include "ns/Assert.h"
#include "ns/AttributeNames.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using namespace vl;
using test::named;

namespace {

ns::ConstDictionaryPtr styled(const VLStylePtr &style, std::u16string_view colour = u"black") {
  auto attributes = ns::Dictionary::create({{u"colour", ns::Value(colour)}});
  if (style)
    attributes->setObject(ns::Value(style), VLParagraphStyleAttributeName);
  return attributes;
}

VLStylePtr styleAt(const ns::AttributedString &text, uint64_t index) {
  return text.attribute(VLParagraphStyleAttributeName, index, nullptr).as<VLStyle>();
}

// Every paragraph carries one style value from its first unit to its last; the first broken
// paragraph's range as text otherwise.
std::string brokenParagraph(const ns::AttributedString &text) {
  for (uint64_t p = 0; p < text.length();) {
    ns::Range paragraph = text.paragraphRangeForRange(ns::Range{p, 0});
    ns::Range run;
    ns::Value style = text.attribute(VLParagraphStyleAttributeName, p, &run, paragraph);
    if (style.isNil() || run != paragraph)
      return ns::toUTF8(ns::StringFromRange(paragraph)) + " in \"" + ns::toUTF8(text.string()) +
             "\"";
    p = paragraph.max();
  }
  return "";
}

} // namespace

TEST(VLStyledTextStorageTest, FirstCharacterStyleWinsOverTheParagraph) {
  VLStylePtr a = named(u"A"), b = named(u"B");
  auto storage = VLStyledTextStorage::create(u"first half\nnext\n", styled(a));
  storage->setAttributes(styled(b, u"red"), ns::Range{6, 5});
  EXPECT_EQ(styleAt(*storage, 8), a) << "the paragraph's first character's style";
  EXPECT_EQ(storage->attribute(u"colour", 8, nullptr), ns::Value(u"red"))
      << "only the style is repaired";
  EXPECT_EQ(styleAt(*storage, 12), a) << "the next paragraph is untouched";

  storage->setAttributes(styled(b), ns::Range{0, 3});
  EXPECT_EQ(styleAt(*storage, 10), b);
}

TEST(VLStyledTextStorageTest, UnstyledStartTakesTheStyleOnePastItsEnd) {
  VLStylePtr a = named(u"A"), b = named(u"B");
  auto storage = VLStyledTextStorage::create(u"abcd\n", styled(nullptr));
  storage->beginEditing();
  storage->setAttributes(styled(a), ns::Range{2, 1});
  storage->setAttributes(styled(b), ns::Range{3, 2});
  storage->endEditing();
  EXPECT_EQ(styleAt(*storage, 0), b) << "read one past the unstyled run, not at its end";
  EXPECT_EQ(brokenParagraph(*storage), "");

  auto last = VLStyledTextStorage::create(u"abc\n", styled(nullptr));
  last->setAttributes(styled(a), ns::Range{3, 1});
  VLStylePtr fresh = styleAt(*last, 0);
  ASSERT_TRUE(fresh);
  EXPECT_NE(fresh, a) << "one past the run is the paragraph's end: a fresh style";
  EXPECT_TRUE(fresh->isDefaultStyle());
  EXPECT_EQ(brokenParagraph(*last), "");
}

TEST(VLStyledTextStorageTest, UnstyledParagraphsEachGetAFreshDefaultStyle) {
  auto storage = VLStyledTextStorage::create(u"one\ntwo\nthree", styled(nullptr));
  storage->fixAttributesInRange(ns::Range{0, storage->length()});
  VLStylePtr first = styleAt(*storage, 0), second = styleAt(*storage, 4),
             third = styleAt(*storage, 8);
  ASSERT_TRUE(first && second && third);
  EXPECT_TRUE(first->isDefaultStyle());
  EXPECT_NE(first, second) << "a new style object per paragraph";
  EXPECT_NE(second, third);
  EXPECT_EQ(brokenParagraph(*storage), "");
}

TEST(VLStyledTextStorageTest, RangeCheckAndSuppression) {
  VLStylePtr a = named(u"A"), b = named(u"B");
  auto storage = VLStyledTextStorage::create(u"abc\n", styled(a));
  EXPECT_NE(test::failureOf([&] {
              storage->fixParagraphStyleAttributeInRange(ns::Range{2, 3});
            }).find("Range out of bounds in fixParagraphStyleAttributeInRange:"),
            std::string::npos);

  storage->setSuppressParagraphStyleFixing(true);
  storage->setAttributes(styled(b), ns::Range{2, 2});
  EXPECT_EQ(styleAt(*storage, 3), b) << "the repair is the host's to turn off";
}

// Thousands of random edits, in and out of batches, over styled and unstyled text. After each
// edit the running count equals a fresh count of the whole text; after each processed batch
// every paragraph carries exactly one paragraph style.
//
// The pieces are prose: words with inner apostrophes, periods and hyphens, numbers, blanks,
// punctuation, every paragraph end, scripts cut into words by dictionary, and emoji.
//
// Left out on purpose, because there the count around an edit can by its nature differ from a
// fresh count: combining marks and format characters (U+0301, U+00AD, U+200D, so no emoji
// joined by it either). Word breaks look through them to the character they follow, so
// changing a letter under a mark at the edge of the counted stretch can join that word with a
// word beyond it ("1\u0301'a" is two words, "b\u0301'a" one) without the words beyond being
// counted again.
TEST(VLStyledTextStorageTest, RandomEditsKeepTheCountAndOneStylePerParagraph) {
  // Pieces between bars.
  const std::u16string_view all =
      u"the|cat|Über|naïve|don't|3.14|e-mail|x|U.S.|42| |  |, |. |\n|\r\n|\r|\t|—|!|'|.|-|"
      u"\u2029|日本語|東京|ภาษาไทย|\U0001F600|\U0001F1EB\U0001F1F7";
  std::vector<std::u16string> pieces;
  for (size_t start = 0, bar; start <= all.size(); start = bar + 1) {
    bar = std::min(all.find(u'|', start), all.size());
    pieces.emplace_back(all.substr(start, bar - start));
  }
  std::vector<VLStylePtr> styles = {named(u"A"), named(u"B"), nullptr};
  std::mt19937_64 random(20240611);
  auto below = [&](uint64_t n) { return n ? random() % n : 0; };
  auto text = [&](size_t pieceCount) {
    std::u16string s;
    for (size_t i = 0; i < pieceCount; ++i)
      s += pieces[below(pieces.size())];
    return s;
  };
  auto anyRange = [&](const VLStyledTextStorage &s) {
    uint64_t location = below(s.length() + 1);
    return ns::Range{location, std::min<uint64_t>(below(25), s.length() - location)};
  };

  auto storage = VLStyledTextStorage::create(text(200), styled(styles[0]));
  storage->fixAttributesInRange(ns::Range{0, storage->length()});
  storage->setWordCount(wordsInRange(*storage, ns::Range{0, storage->length()}));

  int batchLeft = 0;
  for (int step = 0; step < 4000; ++step) {
    if (batchLeft == 0 && below(5) == 0) {
      storage->beginEditing();
      batchLeft = 1 + static_cast<int>(below(5));
    }
    ns::Range range = anyRange(*storage);
    switch (below(6)) {
    case 0:
      storage->replaceCharactersInRange(ns::Range{range.location, 0}, text(1 + below(4)));
      break;
    case 1:
      storage->replaceCharactersInRange(range, u"");
      break;
    case 2:
      storage->replaceCharactersInRange(range, text(below(4)));
      break;
    case 3: {
      // Text of two runs, either of them possibly without a style.
      auto inserted = ns::MutableAttributedString::create(text(1 + below(3)),
                                                          styled(styles[below(styles.size())]));
      inserted->appendAttributedString(
          ns::AttributedString(text(1 + below(3)), styled(styles[below(styles.size())])));
      storage->replaceCharactersInRange(range, *inserted);
      break;
    }
    case 4:
      storage->setAttributes(styled(styles[below(styles.size())]), range);
      break;
    default:
      storage->removeAttribute(VLParagraphStyleAttributeName, range);
      break;
    }
    ASSERT_EQ(storage->wordCount(), wordsInRange(*storage, ns::Range{0, storage->length()}))
        << "step " << step << " in \"" << ns::toUTF8(storage->string()) << "\"";
    if (batchLeft > 0 && --batchLeft == 0)
      storage->endEditing();
    if (batchLeft == 0) {
      ASSERT_EQ(brokenParagraph(*storage), "") << "step " << step;
    }
    // Keep the text between a few hundred and a few thousand units.
    if (storage->length() > 3000 && batchLeft == 0)
      storage->replaceCharactersInRange(ns::Range{0, storage->length() / 2}, u"");
  }
}
