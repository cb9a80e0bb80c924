// String operations: case, search, character sets, paragraphs, words, formatting, UUIDs.
#include "ns/Array.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <random>

using namespace vl::ns;

namespace {
struct Piece {
  std::u16string text;
  Range range;
  Range enclosing;
  bool operator==(const Piece &) const = default;
};

std::ostream &operator<<(std::ostream &os, const Piece &p) {
  return os << toUTF8(p.text) << " {" << p.range.location << "," << p.range.length << "} {"
            << p.enclosing.location << "," << p.enclosing.length << "}";
}

std::vector<Piece> pieces(std::u16string_view text, uint32_t options,
                          std::optional<Range> range = std::nullopt) {
  std::vector<Piece> out;
  enumerateSubstringsInRange(text, range.value_or(Range{0, text.size()}), options,
                             [&](std::u16string_view s, Range r, Range e, bool &) {
                               out.push_back({std::u16string(s), r, e});
                             });
  return out;
}

std::vector<std::u16string> words(std::u16string_view text) {
  std::vector<std::u16string> out;
  for (auto &p : pieces(text, StringEnumerationByWords))
    out.push_back(p.text);
  return out;
}
} // namespace

TEST(StringCase, MapsCapitalizesAndComparesWithFullFolding) {
  EXPECT_EQ(uppercaseString(u"straße ǆ"), u"STRASSE Ǆ");
  EXPECT_EQ(lowercaseString(u"ÀB İ"), u"àb i\u0307");
  EXPECT_EQ(capitalizedString(u"  int. house-day\tnight"), u"  Int. House-Day\tNight");
  EXPECT_EQ(capitalizedString(u"don't o’neil 3RD ßtraße"), u"Don't O’neil 3rd Sstraße");
  EXPECT_EQ(caseInsensitiveCompare(u"Straße", u"STRASSE"), OrderedSame);
  EXPECT_EQ(caseInsensitiveCompare(u"apple", u"Banana"), OrderedAscending);
  EXPECT_EQ(compare(u"B", u"a"), OrderedAscending);
}

TEST(StringSearch, FindsLiteralOccurrencesWithOptionsAndRange) {
  std::u16string text = u"abcabc";
  EXPECT_EQ(rangeOfString(text, u"bc"), (Range{1, 2}));
  EXPECT_EQ(rangeOfString(text, u"bc", BackwardsSearch), (Range{4, 2}));
  EXPECT_EQ(rangeOfString(text, u"ab", AnchoredSearch), (Range{0, 2}));
  EXPECT_EQ(rangeOfString(text, u"bc", AnchoredSearch).location, NotFound);
  EXPECT_EQ(rangeOfString(text, u"bc", AnchoredSearch | BackwardsSearch), (Range{4, 2}));
  EXPECT_EQ(rangeOfString(text, u"abc", 0, Range{1, 4}).location, NotFound);
  EXPECT_EQ(rangeOfString(text, u"").location, NotFound);
}

TEST(StringSearch, CaselessSearchAnswersPositionsInTheOriginalText) {
  EXPECT_EQ(rangeOfString(u"Hello World", u"wORLD", CaseInsensitiveSearch), (Range{6, 5}));
  // Folding changes lengths: positions still count units of the text searched.
  EXPECT_EQ(rangeOfString(u"Die Straße hier", u"STRASSE", CaseInsensitiveSearch), (Range{4, 6}));
  EXPECT_EQ(rangeOfString(u"ßx", u"X", CaseInsensitiveSearch), (Range{1, 1}));
  // A match never covers part of a character's folding.
  EXPECT_EQ(rangeOfString(u"Maß", u"s", CaseInsensitiveSearch).location, NotFound);
  EXPECT_EQ(rangeOfString(u"aXbX", u"x", CaseInsensitiveSearch, Range{2, 2}), (Range{3, 1}));
  EXPECT_EQ(rangeOfString(u"a😀b", u"B", CaseInsensitiveSearch), (Range{3, 1}));
}

TEST(StringSearch, PrefixesReplacingAndSplitting) {
  EXPECT_FALSE(hasPrefix(u"IN", u"INT"));
  EXPECT_FALSE(hasSuffix(u"O:", u"TO:"));
  EXPECT_EQ(stringByReplacingOccurrencesOfString(u"a..b...", u"..", u"_"), u"a_b_.");
  EXPECT_EQ(componentsSeparatedByString(u"a,b,,c", u","),
            (std::vector<std::u16string>{u"a", u"b", u"", u"c"}));
  EXPECT_EQ(
      componentsSeparatedByCharactersInSet(u"a\r\nb\u2029c", CharacterSet::newlineCharacterSet()),
      (std::vector<std::u16string>{u"a", u"", u"b", u"c"}));
}

TEST(CharacterSet, NamedSetsHoldTheirCategories) {
  // Each set with one member and one neighbour that is not.
  const std::tuple<const CharacterSet &, char32_t, char32_t> sets[] = {
      {CharacterSet::whitespaceCharacterSet(), 0x3000, u'\n'},
      {CharacterSet::newlineCharacterSet(), 0x2028, u' '},
      {CharacterSet::whitespaceAndNewlineCharacterSet(), 0x85, u'x'},
      {CharacterSet::letterCharacterSet(), U'𝐀', u'1'},
      {CharacterSet::alphanumericCharacterSet(), u'1', u'-'},
      {CharacterSet::decimalDigitCharacterSet(), u'٣', u'½'},
      {CharacterSet::punctuationCharacterSet(), u'«', u'a'},
      {CharacterSet::uppercaseLetterCharacterSet(), u'Ä', u'ä'},
      {CharacterSet::lowercaseLetterCharacterSet(), u'ä', u'Ä'},
  };
  for (const auto &[set, in, out] : sets) {
    EXPECT_TRUE(set.characterIsMember(in)) << std::hex << uint32_t(in);
    EXPECT_FALSE(set.characterIsMember(out)) << std::hex << uint32_t(out);
  }
  EXPECT_FALSE(CharacterSet::whitespaceCharacterSet().characterIsMember(0x110000));
}

TEST(CharacterSet, BuildsCombinesAndInverts) {
  CharacterSet set = CharacterSet::characterSetWithCharactersInString(u"a-😀");
  EXPECT_TRUE(set.characterIsMember(u'-'));
  EXPECT_TRUE(set.characterIsMember(U'😀'));
  EXPECT_FALSE(set.characterIsMember(0xD83D)); // a surrogate alone is not the emoji
  EXPECT_FALSE(set.invertedSet().characterIsMember(u'a'));
  set.formUnionWithCharacterSet(CharacterSet::characterSetWithRange(u'0', 10));
  EXPECT_TRUE(set.characterIsMember(u'9'));
  EXPECT_FALSE(set.characterIsMember(u':'));
  CharacterSet copy = set;
  set.addCharactersInString(u"z");
  EXPECT_FALSE(copy.characterIsMember(u'z')) << "copies are separate";
}

TEST(CharacterSet, TrimsWholeCodePointsAtBothEnds) {
  EXPECT_EQ(trimmed(u" \t\n Scene \u2029"), u"Scene");
  CharacterSet smiley = CharacterSet::characterSetWithCharactersInString(u"😀");
  EXPECT_EQ(stringByTrimmingCharactersInSet(u"😀a😀", smiley), u"a");
  EXPECT_EQ(stringByTrimmingCharactersInSet(u" a\n", CharacterSet::whitespaceCharacterSet()),
            u"a\n");
}

// a0 b1 LF2 c3 d4 CR5 LF6 e7 f8 CR9 g10 h11 PS12 i13 j14 LS15 k16 l17
static const std::u16string kParagraphs = u"ab\ncd\r\nef\rgh\u2029ij\u2028kl";

TEST(StringParagraphs, ParagraphsEndAtEachKindOfTerminator) {
  const std::pair<Range, Range> cases[] = {
      {{0, 0}, {0, 3}},
      {{2, 0}, {0, 3}},
      {{3, 0}, {3, 4}},   // CRLF is one terminator
      {{6, 0}, {3, 4}},   // between CR and LF
      {{5, 1}, {3, 4}},   // the CR alone
      {{7, 0}, {7, 3}},   // lone CR
      {{10, 0}, {10, 3}}, // U+2029
      {{13, 0}, {13, 5}}, // U+2028 does not end a paragraph
      {{18, 0}, {13, 5}}, // at the very end
      {{50, 3}, {13, 5}}, // past the end: clamped
      // Ranges ending after a terminator stay in their paragraph.
      {{0, 3}, {0, 3}},
      {{0, 4}, {0, 7}},
      {{1, 5}, {0, 7}}, // ends between CR and LF
      {{4, 3}, {3, 4}},
      {{2, 11}, {0, 13}},
      {{2, 12}, {0, 18}},
  };
  for (const auto &[range, expected] : cases)
    EXPECT_EQ(paragraphRangeForRange(kParagraphs, range), expected)
        << range.location << "," << range.length;
}

TEST(StringParagraphs, ReportsStartEndAndContentsEnd) {
  uint64_t start = 99, end = 99, contentsEnd = 99;
  getParagraphStart(kParagraphs, &start, &end, &contentsEnd, Range{4, 0});
  EXPECT_EQ(start, 3u);
  EXPECT_EQ(end, 7u);
  EXPECT_EQ(contentsEnd, 5u);

  // After a final terminator there is an empty last paragraph.
  EXPECT_EQ(paragraphRangeForRange(u"ab\r\n", Range{4, 0}), (Range{4, 0}));
  EXPECT_EQ(paragraphRangeForRange(u"ab\r\n", Range{2, 0}), (Range{0, 4}));
}

TEST(StringParagraphs, LinesAlsoEndAtLineSeparatorAndNextLine) {
  EXPECT_EQ(lineRangeForRange(kParagraphs, Range{13, 0}), (Range{13, 3}));
  EXPECT_EQ(lineRangeForRange(kParagraphs, Range{16, 0}), (Range{16, 2}));
  EXPECT_EQ(lineRangeForRange(kParagraphs, Range{14, 3}), (Range{13, 5}));
  EXPECT_EQ(lineRangeForRange(u"a\u0085b", Range{0, 0}), (Range{0, 2}));
  EXPECT_EQ(paragraphRangeForRange(u"a\u0085b", Range{0, 0}), (Range{0, 3}));
  uint64_t contentsEnd = 0;
  getLineStart(kParagraphs, nullptr, nullptr, &contentsEnd, Range{13, 1});
  EXPECT_EQ(contentsEnd, 15u);
}

TEST(StringEnumeration, LinesAndParagraphsComeWholeWithTheirTerminators) {
  std::u16string text = u"a\r\nb\u2028c\n";
  EXPECT_EQ(pieces(text, StringEnumerationByParagraphs),
            (std::vector<Piece>{{u"a", {0, 1}, {0, 3}}, {u"b\u2028c", {3, 3}, {3, 4}}}));
  EXPECT_EQ(
      pieces(text, StringEnumerationByLines),
      (std::vector<Piece>{{u"a", {0, 1}, {0, 3}}, {u"b", {3, 1}, {3, 2}}, {u"c", {5, 1}, {5, 2}}}));
  // A range that touches a paragraph yields all of it.
  EXPECT_EQ(pieces(text, StringEnumerationByParagraphs, Range{4, 1}),
            (std::vector<Piece>{{u"b\u2028c", {3, 3}, {3, 4}}}));
  EXPECT_TRUE(pieces(text, StringEnumerationByParagraphs, Range{2, 0}).empty());
}

TEST(StringEnumeration, WordsSkipBlanksAndPunctuation) {
  EXPECT_EQ(words(u"Hello, world! It's 3.5 o'clock; don't panic."),
            (std::vector<std::u16string>{u"Hello", u"world", u"It's", u"3.5", u"o'clock", u"don't",
                                         u"panic"}));
  EXPECT_EQ(words(u"1,000 apples — 2nd try... (yes)"),
            (std::vector<std::u16string>{u"1,000", u"apples", u"2nd", u"try", u"yes"}));
  EXPECT_TRUE(words(u" ... -- !? \n").empty());
}

TEST(StringEnumeration, WordsReportEnclosingRangesUpToTheNextWord) {
  std::u16string text = u"Hi, you there";
  std::vector<Piece> expected{
      {u"Hi", {0, 2}, {0, 4}}, {u"you", {4, 3}, {4, 4}}, {u"there", {8, 5}, {8, 5}}};
  EXPECT_EQ(pieces(text, StringEnumerationByWords), expected);
  std::reverse(expected.begin(), expected.end());
  EXPECT_EQ(pieces(text, StringEnumerationByWords | StringEnumerationReverse), expected);
  // A range cuts words at its edges.
  EXPECT_EQ(pieces(u"Hello there", StringEnumerationByWords, Range{1, 6}),
            (std::vector<Piece>{{u"ello", {1, 4}, {1, 5}}, {u"t", {6, 1}, {6, 1}}}));
}

TEST(StringEnumeration, CountsIdeographsAndKanaAsWords) {
  auto found = words(u"東京は 晴れ。ABC");
  ASSERT_GE(found.size(), 3u);
  EXPECT_EQ(found.back(), u"ABC");
  for (auto &w : found)
    EXPECT_EQ(w.find(u'。'), std::u16string::npos);
  EXPECT_EQ(countWords(u"東京は 晴れ。ABC", Range{0, 11}), found.size());
}

TEST(StringEnumeration, ComposedCharactersAndSentences) {
  EXPECT_EQ(pieces(u"e\u0301😀x", StringEnumerationByComposedCharacterSequences),
            (std::vector<Piece>{
                {u"e\u0301", {0, 2}, {0, 2}}, {u"😀", {2, 2}, {2, 2}}, {u"x", {4, 1}, {4, 1}}}));
  EXPECT_EQ(pieces(u"One. Two?\nThree", StringEnumerationBySentences),
            (std::vector<Piece>{{u"One.", {0, 4}, {0, 5}},
                                {u"Two?", {5, 4}, {5, 5}},
                                {u"Three", {10, 5}, {10, 5}}}));
}

TEST(StringWords, CountsWordsInAClippedRange) {
  std::u16string text = u"The cat's 2 hats, don't they?";
  EXPECT_EQ(countWords(text, Range{0, text.size()}), 6u);
  EXPECT_EQ(countWords(text, Range{4, 1000}), 5u);
  EXPECT_EQ(countWords(text, Range{1000, 5}), 0u);
}

TEST(StringWords, NextWordFromIndexMovesToWordEdges) {
  std::u16string text = u"Hello, world"; // H0 o4 ,5 ␠6 w7 d11
  const std::tuple<uint64_t, bool, uint64_t> cases[] = {
      {3, true, 5},  {5, true, 12}, {12, true, 12}, {99, true, 12}, {12, false, 7},
      {9, false, 7}, {7, false, 0}, {0, false, 0},  {99, false, 7},
  };
  for (auto [index, forward, edge] : cases)
    EXPECT_EQ(nextWordFromIndex(text, index, forward), edge) << index << forward;
  // Words cut by dictionary: the edges of the run, which its recount needs whole.
  std::u16string japanese = u"私は日本語を話します。はい";
  EXPECT_EQ(nextWordFromIndex(japanese, 3, true), 10u);
  EXPECT_EQ(nextWordFromIndex(japanese, 12, false), 11u);
}

// A running count kept the way a text storage keeps it: only the words around each edit are
// counted, before and after. It must always equal a full count.
TEST(StringWords, LocalRecountsAroundEditsMatchAFullCount) {
  std::mt19937 random(11);
  // Kana and ideographs are cut by dictionary, across their whole run.
  const std::u16string alphabet = u"abcxyz  ..,,''-\n19é東京はカナ。";
  std::u16string text = u"It's a test, don't worry. 3.5 apples\nand more";
  uint64_t count = countWords(text, Range{0, text.size()});
  for (int step = 0; step < 400; ++step) {
    uint64_t location = random() % (text.size() + 1);
    uint64_t length = std::min<uint64_t>(random() % 4, text.size() - location);
    std::u16string insert;
    for (uint32_t n = random() % 4; n > 0; --n)
      insert += alphabet[random() % alphabet.size()];
    uint64_t start = nextWordFromIndex(text, location, false);
    uint64_t end = nextWordFromIndex(text, location + length, true);
    count -= countWords(text, Range{start, end - start});
    text.replace(location, length, insert);
    count += countWords(text, Range{start, end - start + insert.size() - length});
    ASSERT_EQ(count, countWords(text, Range{0, text.size()})) << toUTF8(text) << " @" << step;
  }
}

TEST(StringFormat, ConversionsFlagsAndArguments) {
  const std::pair<std::u16string, std::u16string> cases[] = {
      {format(u"%@_%ld", u"Scene", 3), u"Scene_3"},
      {format(u"%2.2d:%2.2d #%2.2x%2.2X", 1, 33, 255, 10), u"01:33 #ff0A"},
      {format(u"%4.4x|%02d|%-5s|%5s", 255, 5, u"ab", u"cd"), u"00ff|05|ab   |   cd"},
      {format(u"%%d is %d%% %+d % d", 7, 4, 4), u"%d is 7% +4  4"},
      // Integer conversions take the argument's value; %d is 32 bits wide.
      {format(u"%ld %d %d %d", 3.7, u"42abc", Value(true), int64_t{1} << 32 | 9), u"3 42 1 9"},
      {format(u"%x %lx %o", -1, -1, 8), u"ffffffff ffffffffffffffff 10"},
      {format(u"%lu %zd %lld", UINT64_MAX, -5, -7LL), u"18446744073709551615 -5 -7"},
      {format(u"%e|%g|%.2f", 12345.0, 1e20, u"3.14159"), u"1.234500e+04|1e+20|3.14"},
      {format(u"%c%C %s %@ [%.3@]", 65, u'é', u"t", Value(2.5), u"abcdef"), u"Aé t 2.5 [abc]"},
      // Missing, extra and positional arguments.
      {format(u"%@ %s %d %f|%C|"), u"(null) (null) 0 0.000000||"},
      {format(u"%d", 1, 2, 3), u"1"},
      {format(u"%2$@ %1$@ %2$@", u"a", u"b"), u"b a b"},
      {format(u"%*d|%-*d|", 4, 7, 3, 8), u"   7|8  |"},
      // Malformed conversions stay as written.
      {format(u"50%"), u"50%"},
      {format(u"%y %d", 5), u"%y 5"},
      {format(u"%l"), u"%l"},
  };
  for (const auto &[got, expected] : cases)
    EXPECT_EQ(got, expected);
  EXPECT_EQ(format(u"%99999999999d", 1).size(), 65536u); // widths are bounded
  std::u16string a = UUIDString();
  EXPECT_EQ(a.size(), 36u);
  EXPECT_NE(a, UUIDString());
  EXPECT_EQ(a[14], u'4'); // random, version 4
  EXPECT_EQ(a, uppercaseString(a));
}
