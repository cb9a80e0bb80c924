// Attributed strings: runs and their merging, reads, enumeration, edits, subclasses that keep
// their text elsewhere, and a long random walk against a naive model.
#include "ns/Array.h"
#include "ns/Assert.h"
#include "ns/AttributeNames.h"
#include "ns/KeyedArchiver.h"
#include "ns/MutableAttributedString.h"
#include "ns/PropertyListSerialization.h"
#include "ns/String.h"
#include "ns/TextStorage.h"

#include <gtest/gtest.h>

#include <random>

using namespace vl::ns;

namespace {

// An object with identity: equal only to itself.
class Marker : public Object {
public:
  VL_OBJECT(Marker)
};

// An object equal by value.
class Number : public Object {
public:
  VL_OBJECT(Number)
  explicit Number(int n) : n(n) {}
  bool isEqual(const Object &other) const override {
    auto *o = dynamic_cast<const Number *>(&other);
    return o && o->n == n;
  }
  size_t hash() const override { return static_cast<size_t>(n); }
  int n;
};

ConstDictionaryPtr attrs(std::initializer_list<Dictionary::Entry> entries) {
  return Dictionary::create(entries);
}

// The runs as the string reports them, as "text:k=v,..." strings.
std::vector<std::string> runs(const AttributedString &s) {
  std::vector<std::string> out;
  s.enumerateAttributesInRange(Range{0, s.length()},
                               AttributedStringEnumerationLongestEffectiveRangeNotRequired,
                               [&](const ConstDictionaryPtr &a, Range r, bool &) {
                                 std::string run = toUTF8(s.substringWithRange(r)) + ":";
                                 for (const auto &[k, v] : *a)
                                   run += toUTF8(k) + "=" + toUTF8(v.description()) + ",";
                                 out.push_back(run);
                               });
  return out;
}

using Runs = std::vector<std::string>;

// Exposes the engine's own checks.
class Probe : public MutableAttributedString {
public:
  using MutableAttributedString::MutableAttributedString;
  std::string invariants() const { return storage_.checkInvariants(); }
  size_t dictionaries() const { return storage_.distinctAttributeCount(); }
  size_t runCount() const { return storage_.runCount(); }
};

// Keeps its text in an inner string and overrides only the primitives. With `chop`, its
// effective ranges are cut into pieces of at most three units, as a storage whose ranges are
// not the longest ones would answer.
class Forwarding : public MutableAttributedString {
public:
  using MutableAttributedString::attributesAtIndex;
  using MutableAttributedString::replaceCharactersInRange;

  explicit Forwarding(bool chop = false) : chop(chop) {}

  uint64_t length() const override { return contents.length(); }
  std::u16string_view string() const override { return contents.string(); }
  ConstDictionaryPtr attributesAtIndex(uint64_t index, Range *effectiveRange) const override {
    ConstDictionaryPtr a = contents.attributesAtIndex(index, effectiveRange);
    if (chop && effectiveRange && index < length())
      *effectiveRange = IntersectionRange(*effectiveRange, Range{index - index % 3, 3});
    return a;
  }
  void replaceCharactersInRange(Range range, std::u16string_view string) override {
    contents.replaceCharactersInRange(range, string);
    ++characterEdits;
  }
  void setAttributes(ConstDictionaryPtr attributes, Range range) override {
    contents.setAttributes(std::move(attributes), range);
    ++attributeEdits;
  }

  MutableAttributedString contents;
  bool chop;
  int characterEdits = 0;
  int attributeEdits = 0;
};

} // namespace

TEST(AttributedString, AdjacentRunsMergeByValueAndObjectsByIdentity) {
  Probe s(u"aaaabbbb");
  s.setAttributes(attrs({{u"k", 1}}), Range{0, 4});
  s.setAttributes(attrs({{u"k", 1.0}}), Range{4, 4}); // equal numbers
  EXPECT_EQ(runs(s), (Runs{"aaaabbbb:k=1,"}));

  auto one = std::make_shared<Marker>(), two = std::make_shared<Marker>();
  s.setAttributes(attrs({{u"m", one}}), Range{0, 4});
  s.setAttributes(attrs({{u"m", two}}), Range{4, 4});
  EXPECT_EQ(s.runCount(), 2u);
  s.setAttributes(attrs({{u"m", one}}), Range{4, 4});
  EXPECT_EQ(s.runCount(), 1u);

  s.setAttributes(attrs({{u"v", std::make_shared<Number>(7)}}), Range{0, 2});
  s.setAttributes(attrs({{u"v", std::make_shared<Number>(7)}}), Range{2, 6});
  EXPECT_EQ(s.runCount(), 1u);
  EXPECT_EQ(s.invariants(), "");
}

TEST(AttributedString, EqualDictionariesAreSharedAndFrozen) {
  Probe s(u"0123456789");
  auto given = Dictionary::create({{u"k", 1}});
  s.setAttributes(given, Range{0, 2});
  s.setAttributes(attrs({{u"k", 2}}), Range{2, 2});
  s.setAttributes(Dictionary::create({{u"k", 1}}), Range{4, 2});
  EXPECT_EQ(s.attributesAtIndex(0, nullptr), s.attributesAtIndex(5, nullptr));
  EXPECT_EQ(s.dictionaries(), 3u); // k=1, k=2 and none
  given->setObject(Value(9), u"k");
  EXPECT_EQ(s.attribute(u"k", 0, nullptr), Value(1));
}

TEST(AttributedString, InsertedTextTakesTheAttributesOfItsNeighbours) {
  MutableAttributedString s(u"abcd");
  s.setAttributes(attrs({{u"k", 1}}), Range{0, 2});
  s.setAttributes(attrs({{u"k", 2}}), Range{2, 2});
  s.replaceCharactersInRange(Range{2, 1}, u"XY"); // the first replaced character
  EXPECT_EQ(runs(s), (Runs{"ab:k=1,", "XYd:k=2,"}));
  s.replaceCharactersInRange(Range{2, 0}, u"-"); // the character before
  EXPECT_EQ(runs(s), (Runs{"ab-:k=1,", "XYd:k=2,"}));
  s.replaceCharactersInRange(Range{0, 0}, u"<"); // at the start: the character after
  EXPECT_EQ(runs(s), (Runs{"<ab-:k=1,", "XYd:k=2,"}));

  MutableAttributedString empty;
  empty.replaceCharactersInRange(Range{0, 0}, u"new");
  EXPECT_TRUE(empty.attributesAtIndex(0, nullptr)->empty());
}

TEST(AttributedString, EffectiveRangesAreRunsAndLongestOnesJoinEqualValues) {
  // The model walk checks the longest ranges of single attributes in depth.
  MutableAttributedString s(u"0123456789");
  s.setAttributes(attrs({{u"k", 1}, {u"x", 1}}), Range{0, 3});
  s.setAttributes(attrs({{u"k", 1}, {u"x", 2}}), Range{3, 3});
  Range r;
  EXPECT_EQ(s.attribute(u"k", 4, &r), Value(1));
  EXPECT_EQ(r, (Range{3, 3})); // the run of the whole dictionary
  EXPECT_EQ(s.attribute(u"k", 4, &r, Range{0, 10}), Value(1));
  EXPECT_EQ(r, (Range{0, 6}));
}

TEST(AttributedString, QueriesAtTheEndAnswerNothingAndBeyondFail) {
  AttributedString s(u"abc", attrs({{u"k", 1}}));
  Range r{9, 9};
  EXPECT_TRUE(s.attributesAtIndex(3, &r)->empty());
  EXPECT_EQ(r, (Range{3, 0}));
  EXPECT_THROW(s.attributesAtIndex(4, &r), InternalInconsistencyException);
  EXPECT_THROW(s.attribute(u"k", 0, &r, Range{0, 4}), InternalInconsistencyException);

  MutableAttributedString m(u"abc");
  EXPECT_THROW(m.replaceCharactersInRange(Range{2, 5}, u"x"), InternalInconsistencyException);
  EXPECT_THROW(m.setAttributes(nullptr, Range{NotFound, 1}), InternalInconsistencyException);
  EXPECT_EQ(m.string(), u"abc");
}

TEST(AttributedString, EnumerationWalksRunsForwardsAndBackwards) {
  MutableAttributedString s(u"aabbccdd");
  s.setAttributes(attrs({{u"k", 1}}), Range{0, 2});
  s.setAttributes(attrs({{u"k", 1}, {u"x", 1}}), Range{2, 2});
  s.setAttributes(attrs({{u"k", 2}}), Range{4, 4});
  std::vector<std::pair<Value, Range>> seen;
  auto record = [&](const Value &v, Range r, bool &) { seen.emplace_back(v, r); };

  s.enumerateAttribute(u"k", Range{1, 6}, 0, record);
  EXPECT_EQ(seen, (std::vector<std::pair<Value, Range>>{{1, {1, 3}}, {2, {4, 3}}}));
  seen.clear();
  s.enumerateAttribute(u"k", Range{1, 6}, AttributedStringEnumerationReverse, record);
  EXPECT_EQ(seen, (std::vector<std::pair<Value, Range>>{{2, {4, 3}}, {1, {1, 3}}}));
  seen.clear();
  s.enumerateAttribute(u"x", Range{0, 8}, 0, [&](const Value &v, Range r, bool &stop) {
    seen.emplace_back(v, r);
    stop = !v.isNil();
  });
  EXPECT_EQ(seen, (std::vector<std::pair<Value, Range>>{{Value(), {0, 2}}, {1, {2, 2}}}));
}

TEST(AttributedString, EnumerationGoesOnAfterTheBlockChangesItsRange) {
  MutableAttributedString s(u"ab-cd-ef");
  s.setAttributes(attrs({{u"k", 1}}), Range{2, 1});
  s.setAttributes(attrs({{u"k", 1}}), Range{5, 1});
  std::vector<Range> seen;
  s.enumerateAttribute(u"k", Range{0, s.length()}, 0, [&](const Value &v, Range r, bool &) {
    seen.push_back(r);
    if (!v.isNil())
      s.replaceCharactersInRange(r, u"<->");
  });
  EXPECT_EQ(s.string(), u"ab<->cd<->ef");
  EXPECT_EQ(seen, (std::vector<Range>{{0, 2}, {2, 1}, {5, 2}, {7, 1}, {10, 2}}));
}

TEST(AttributedString, SubstringsCopyTextAndRuns) {
  MutableAttributedString s(u"Hello, world");
  s.setAttributes(attrs({{u"b", true}}), Range{0, 5});
  s.setAttributes(attrs({{u"i", true}}), Range{7, 5});
  auto sub = s.attributedSubstringFromRange(Range{3, 6});
  EXPECT_EQ(runs(*sub), (Runs{"lo:b=1,", ", :", "wo:i=1,"}));
  EXPECT_THROW(s.attributedSubstringFromRange(Range{10, 3}), InternalInconsistencyException);
  s.deleteCharactersInRange(Range{0, 12});
  EXPECT_EQ(sub->string(), u"lo, wo"); // a copy, not a view
}

TEST(AttributedString, AppendingItselfAndAddingDictionariesKeepTheRuns) {
  MutableAttributedString s(u"one", attrs({{u"k", 1}}));
  s.insertAttributedString(AttributedString(u"[", attrs({{u"k", 3}})), 0);
  s.appendAttributedString(s); // itself
  EXPECT_EQ(runs(s), (Runs{"[:k=3,", "one:k=1,", "[:k=3,", "one:k=1,"}));
  s.addAttributes(Dictionary{{u"k", 5}, {u"i", true}}, Range{1, 4});
  EXPECT_EQ(runs(s), (Runs{"[:k=3,", "one[:i=1,k=5,", "one:k=1,"}));
}

TEST(AttributedString, ParagraphRangesAgreeWithTheStringsAtEveryRange) {
  // The storage walks its own blocks; the answers must be the plain string's.
  std::u16string text = u"one\ntwo\r\n\r\nthree\rfour\u2029five\u2028still five\n";
  AttributedString s(text);
  for (uint64_t location = 0; location <= text.size(); ++location)
    for (uint64_t length = 0; location + length <= text.size(); ++length)
      ASSERT_EQ(s.paragraphRangeForRange(Range{location, length}),
                paragraphRangeForRange(text, Range{location, length}))
          << location << "," << length;
  EXPECT_EQ(s.paragraphRangeForRange(Range{8, 0}), (Range{4, 5})); // the LF of CRLF
}

TEST(AttributedString, NextWordAgreesWithTheWholeText) {
  // Paragraphs of every length, one beyond the window the search starts with.
  std::mt19937 random(7);
  const char16_t *pieces[] = {u"word",   u"it's", u"3.5",         u"\u00e9t\u00e9", u" ",
                              u"  ",     u", ",   u"\n",          u"\r\n",          u"\u2029",
                              u"\u2028", u"--",   u"\u65e5\u672c"};
  std::u16string text;
  while (text.size() < 3000)
    text += pieces[random() % std::size(pieces)];
  for (int i = 0; i < 1000; ++i)
    text += i % 7 ? u"long " : u"line, ";
  text += u"\nend";
  AttributedString s(text);
  for (uint64_t i = 0; i <= text.size(); i += (i < 3100 ? 1 : 97)) {
    ASSERT_EQ(s.nextWordFromIndex(i, true), nextWordFromIndex(text, i, true)) << i;
    ASSERT_EQ(s.nextWordFromIndex(i, false), nextWordFromIndex(text, i, false)) << i;
  }
  // A word beyond the first window, and none before it.
  AttributedString blanks(std::u16string(9000, u' ') + u"x");
  EXPECT_EQ(blanks.nextWordFromIndex(10, true), 9001u);
  EXPECT_EQ(blanks.nextWordFromIndex(8999, false), 0u);
}

TEST(AttributedString, FixingGivesEachParagraphTheStyleOfItsFirstCharacter) {
  auto first = std::make_shared<Marker>(), second = std::make_shared<Marker>();
  MutableAttributedString s(u"aaaa\nbbbb\ncccc\ndddd");
  s.addAttribute(ParagraphStyleAttributeName, first, Range{0, 2});
  s.addAttribute(ParagraphStyleAttributeName, second, Range{2, 5}); // into the next paragraph
  s.addAttribute(ParagraphStyleAttributeName, first, Range{12, 2}); // after an unstyled start
  s.fixParagraphStyleAttributeInRange(Range{1, 13});
  auto styleRun = [&](uint64_t i) {
    Range r;
    Value v = s.attribute(ParagraphStyleAttributeName, i, &r, Range{0, s.length()});
    return std::make_pair(v.object(), r);
  };
  EXPECT_EQ(styleRun(0), std::make_pair(ObjectPtr(first), Range{0, 5}));
  EXPECT_EQ(styleRun(5), std::make_pair(ObjectPtr(second), Range{5, 5}));
  EXPECT_EQ(styleRun(10), std::make_pair(ObjectPtr(first), Range{10, 5}));
  EXPECT_EQ(styleRun(15), std::make_pair(ObjectPtr(), Range{15, 4}));
  EXPECT_THROW(s.fixParagraphStyleAttributeInRange(Range{0, 20}), InternalInconsistencyException);
}

TEST(AttributedString, FixingDropsAttachmentsFromOrdinaryCharacters) {
  MutableAttributedString s(u"ab\uFFFCcd");
  s.addAttribute(AttachmentAttributeName, std::make_shared<Marker>(), Range{1, 3});
  s.fixAttributesInRange(Range{0, 5});
  Range r;
  EXPECT_FALSE(s.attribute(AttachmentAttributeName, 2, &r, Range{0, 5}).isNil());
  EXPECT_EQ(r, (Range{2, 1})); // the attachment character alone
}

TEST(AttributedString, EqualityAndCopies) {
  MutableAttributedString a(u"ab"), b(u"ab");
  a.setAttributes(attrs({{u"k", 1}}), Range{0, 1});
  b.setAttributes(attrs({{u"k", 1}}), Range{0, 1});
  EXPECT_TRUE(a.isEqual(b));
  b.addAttribute(u"k", 2, Range{1, 1});
  EXPECT_FALSE(a.isEqual(b));

  auto copy = std::dynamic_pointer_cast<AttributedString>(a.copy());
  auto mutableCopy = std::dynamic_pointer_cast<MutableAttributedString>(a.mutableCopy());
  ASSERT_TRUE(copy && mutableCopy);
  EXPECT_EQ(std::dynamic_pointer_cast<MutableAttributedString>(copy), nullptr);
  mutableCopy->replaceCharactersInRange(Range{0, 0}, u"x");
  EXPECT_EQ(a.string(), u"ab");
  EXPECT_TRUE(copy->isEqual(a));
}

TEST(AttributedString, SubclassOverridingOnlyThePrimitivesServesEveryOperation) {
  // The model walk below covers edits and attribute reads; this covers the rest.
  Forwarding s(true);
  s.appendAttributedString(AttributedString(u"first line\n", attrs({{u"k", 1}})));
  s.appendAttributedString(AttributedString(u"second line", attrs({{u"k", 1}})));
  EXPECT_EQ(s.characterEdits, 2);
  EXPECT_EQ(s.attributeEdits, 2);
  EXPECT_EQ(s.nextWordFromIndex(11, true), 17u);
  s.deleteCharactersInRange(Range{0, 6});
  EXPECT_EQ(s.contents.string(), u"line\nsecond line");
  EXPECT_TRUE(AttributedString(s).isEqualToAttributedString(s.contents));
  std::vector<Range> walked;
  s.enumerateAttribute(u"k", Range{0, s.length()}, 0,
                       [&](const Value &, Range range, bool &) { walked.push_back(range); });
  EXPECT_EQ(walked, std::vector<Range>{(Range{0, 16})}); // joined across the chopped ranges
}

namespace {

// Edits `s` and a naive model (a plain text and one dictionary per unit) alike, and compares
// runs and longest effective ranges after each step.
template <class S> void randomWalk(S &s, uint32_t seed, int steps) {
  std::mt19937 random(seed);
  auto below = [&](uint64_t n) -> uint64_t { return n ? random() % n : 0; };
  const std::u16string names[] = {u"k", u"m", u"v"};
  ObjectPtr markers[] = {std::make_shared<Marker>(), std::make_shared<Marker>()};
  auto value = [&](size_t name) { // numbers, objects with identity, objects equal by value
    return name == 0   ? Value(static_cast<int64_t>(below(3)))
           : name == 1 ? Value(markers[below(2)])
                       : Value(std::make_shared<Number>(static_cast<int>(below(2))));
  };
  auto dictionary = [&] {
    auto d = Dictionary::create();
    for (size_t n = 0; n < 3; ++n)
      if (below(2))
        d->setObject(value(n), names[n]);
    return d;
  };
  constexpr std::u16string_view pool = u"ab\ncd \r\u2029e\u2028fg\r\nh  ij";
  auto text = [&] { return std::u16string(pool.substr(below(pool.size()), below(6))); };

  std::u16string model;
  std::vector<ConstDictionaryPtr> at;
  auto replace = [&](Range r, std::u16string_view t, const AttributedString *from) {
    // The first replaced unit's, else the one before's, else the one after's.
    auto a = at.empty() ? attrs({}) : at[r.length || !r.location ? r.location : r.location - 1];
    model.replace(r.location, r.length, t);
    at.erase(at.begin() + r.location, at.begin() + r.max());
    at.insert(at.begin() + r.location, t.size(), a);
    for (uint64_t i = 0; from && i < t.size(); ++i)
      at[r.location + i] = from->attributesAtIndex(i, nullptr);
  };

  // A few thousand units cut into hundreds of runs first, so blocks split and join.
  std::u16string start;
  for (int i = 0; i < 100; ++i)
    start += u"abcdefghijklmnopqrstuvwxyz\n012";
  s.replaceCharactersInRange(Range{0, 0}, start);
  replace(Range{0, 0}, start, nullptr);
  for (int step = -300; step < steps; ++step) {
    SCOPED_TRACE(::testing::Message() << "seed " << seed << " step " << step);
    uint64_t n = model.size(), kind = step < 0 ? 2 : below(8), location = below(n + 1);
    uint64_t longest = kind < 2 || kind > 4 ? (n > 4000 ? 60 : 8) : kind == 2 ? 300 : 40;
    Range r{location, below(std::min(longest, n - location) + 1)};
    if (step < 0)
      r = IntersectionRange(Range{10 * uint64_t(step + 300), 1 + below(12)}, Range{0, n});
    size_t which = below(3);
    const std::u16string &name = names[which];
    Value v = value(which);
    if (kind < 2) {
      std::u16string t = text();
      s.replaceCharactersInRange(r, t);
      replace(r, t, nullptr);
    } else if (kind == 2) {
      auto d = dictionary();
      s.setAttributes(d, r);
      std::fill(at.begin() + r.location, at.begin() + r.max(), d);
    } else if (kind < 5) { // add one attribute, or remove it
      v = kind == 3 ? v : Value();
      v.isNil() ? s.removeAttribute(name, r) : s.addAttribute(name, v, r);
      for (uint64_t i = r.location; i < r.max(); ++i) {
        auto d = std::make_shared<Dictionary>(*at[i]);
        v.isNil() ? d->removeObjectForKey(name) : d->setObject(v, name);
        at[i] = d;
      }
    } else {
      AttributedString a(text() + u"x", dictionary());
      if (kind == 7)
        s.appendAttributedString(a), r = Range{n, 0};
      else
        s.replaceCharactersInRange(r, a);
      replace(r, a.string(), &a);
    }

    ASSERT_TRUE(s.string() == model);
    if constexpr (requires { s.invariants(); }) {
      ASSERT_EQ(s.invariants(), "");
    }
    n = model.size();
    bool full = step % 97 == 0 || step == steps - 1; // every run, else one
    for (uint64_t i = full ? 0 : below(n); i < n;) {
      Range run;
      ConstDictionaryPtr a = s.attributesAtIndex(i, &run);
      ASSERT_TRUE(run.contains(i));
      for (uint64_t j = run.location; j < run.max(); ++j)
        ASSERT_TRUE(at[j]->isEqual(*a)) << "attributes differ at " << j;
      i = full ? run.max() : n;
    }
    if (!n)
      continue;
    uint64_t i = below(n), from = below(i + 1);
    Range in{from, i + 1 + below(n - i) - from}, found;
    ASSERT_TRUE(s.attribute(name, i, &found, in).isEqual(at[i]->objectForKey(name)));
    auto same = [&](uint64_t j) {
      return at[j]->objectForKey(name).isEqual(at[i]->objectForKey(name));
    };
    uint64_t lo = i, hi = i + 1;
    while (lo > in.location && same(lo - 1))
      --lo;
    while (hi < in.max() && same(hi))
      ++hi;
    ASSERT_EQ(found, (Range{lo, hi - lo}));
  }
}

} // namespace

TEST(AttributedStringModel, RandomEditsMatchANaiveModel) {
  Probe s;
  randomWalk(s, 1, 2000);
  // A subclass keeping its text elsewhere, and a text storage, answer the same.
  Forwarding chopped(true);
  randomWalk(chopped, 5, 500);
  TextStorage storage;
  randomWalk(storage, 6, 500);
}

TEST(AttributedStringCoding, ArchiveRoundTripKeepsRunsAndSharesDictionaries) {
  auto bold = Dictionary::create({{u"weight", u"bold"}});
  auto text = MutableAttributedString::create(u"one two three");
  text->setAttributes(bold, Range{0, 3});
  text->setAttributes(bold, Range{8, 5});
  Value decoded = KeyedUnarchiver::unarchiveObjectWithData(
      KeyedArchiver::archivedDataWithRootObject(Value(text)));
  auto copy = decoded.as<MutableAttributedString>();
  ASSERT_TRUE(copy);
  EXPECT_TRUE(copy->isEqualToAttributedString(*text));
  EXPECT_EQ(copy->attributesAtIndex(0, nullptr), copy->attributesAtIndex(10, nullptr));
}

TEST(AttributedStringCoding, RunsThatDoNotCoverTheTextAreCorrupt) {
  auto text = AttributedString::create(u"abc", Dictionary::create({{u"k", 1}}));
  Data archive = KeyedArchiver::archivedDataWithRootObject(Value(text));
  // Make the one run longer than the text.
  Value plist = PropertyListSerialization::propertyListWithData(archive);
  ArrayPtr objects = plist.dictionary()->objectForKey(u"$objects").array();
  ASSERT_TRUE(objects);
  for (Value &v : *objects)
    if (v.isInteger() && v.integerValue() == 3)
      v = Value(4);
  Data corrupt =
      PropertyListSerialization::dataWithPropertyList(plist, PropertyListBinaryFormat_v1_0);
  ASSERT_FALSE(corrupt.empty());
  ErrorPtr error;
  EXPECT_TRUE(KeyedUnarchiver::unarchiveObjectWithData(corrupt, &error).isNil());
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), CoderReadCorruptError);
}
