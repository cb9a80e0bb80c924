// Tests of regular expressions: the screenplay parsers' patterns, matches and captures,
// replacement templates, splitting, options, errors and the pattern cache.
#include "ns/RegularExpression.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace vl::ns;

namespace {

// Three of the screenplay parser's patterns, as the parser writes them.
constexpr std::u16string_view blockComment = uR"re(\n\/\*([^<>]+?)\*\/\n)re";
constexpr std::u16string_view sceneHeader =
    uR"re((?<=\n)(([iI][nN][tT]|[eE][xX][tT]|[^\w][eE][sS][tT]|\.|[iI]\.?\/[eE]\.?)([^\n]+))\n)re";
constexpr std::u16string_view dialogue =
    uR"re((<(Character|Parenthetical)>[^<>\n]+<\/(Character|Parenthetical)>)([^<>]*?)(?=\n{2}|\n{1}<Parenthetical>))re";

const Range notFound{NotFound, 0};

} // namespace

TEST(RegularExpressionPatterns, AnchorsBindToTheWholeStringWithoutOptions) {
  // "^" and "$" are string anchors and "." stops at a line end unless an option says otherwise.
  EXPECT_FALSE(isMatchedByRegex(u"action\nINT. HOUSE", uR"(^INT)"));
  EXPECT_TRUE(isMatchedByRegex(u"action\nINT. HOUSE", uR"(^INT)", RKLMultiline));
  EXPECT_FALSE(isMatchedByRegex(u"a\nb", u"a.b"));
  EXPECT_TRUE(isMatchedByRegex(u"a\nb", u"a.b", RKLDotAll));
  // "$" also matches before a final line end.
  EXPECT_EQ(stringByReplacingOccurrencesOfRegex(u"a\n\nb\n\n", uR"re(\n+$)re", u""), u"a\n\nb");
}

TEST(RegularExpressionPatterns, TheParsersTemplatesFillInTheirCaptures) {
  // Real line feeds in templates, "$n" captures, groups past the ninth.
  std::u16string text = u"\n\n/* hidden\nstuff */\n\nINT. HOUSE - DAY\n\n";
  replaceOccurrencesOfRegex(text, blockComment, u"\n<Boneyard>$1</Boneyard>\n");
  EXPECT_EQ(text, u"\n\n<Boneyard> hidden\nstuff </Boneyard>\n\nINT. HOUSE - DAY\n\n");
  replaceOccurrencesOfRegex(text, sceneHeader, u"\n<SceneHeading>$1</SceneHeading>");
  EXPECT_NE(text.find(u"<SceneHeading>INT. HOUSE - DAY</SceneHeading>"), std::u16string::npos);
  EXPECT_EQ(stringByReplacingOccurrencesOfRegex(u"<Character>BOB</Character>\nHello there.\n\n",
                                                dialogue, u"$1<Dialogue>$4</Dialogue>"),
            u"<Character>BOB</Character><Dialogue>\nHello there.</Dialogue>\n\n");

  std::u16string_view tag = uR"re(<([a-zA-Z\s]+)>([^<>]*)<\/[a-zA-Z\s]+>)re";
  auto tags = arrayOfCaptureComponentsMatchedByRegex(
      u"<Action>Hi</Action><Transition>CUT TO:</Transition>", tag);
  ASSERT_EQ(tags.size(), 2u);
  EXPECT_EQ(tags[0][1], u"Action");
  EXPECT_EQ(tags[1][2], u"CUT TO:");
  EXPECT_EQ(componentsMatchedByRegex(u"<A>x</A><B>y</B>", tag, 1),
            (std::vector<std::u16string>{u"A", u"B"}));
}

TEST(RegularExpressionMatching, CapturesAndGroupsThatDidNotTakePart) {
  auto re = RegularExpression::regularExpressionWithPattern(u"(a)|(b)(c)?");
  ASSERT_TRUE(re);
  auto m = re->firstMatchInString(u"xxb");
  ASSERT_TRUE(m);
  EXPECT_EQ(m->numberOfRanges(), 4u);
  EXPECT_EQ(m->range(), (Range{2, 1}));
  EXPECT_EQ(m->rangeAtIndex(1), notFound);
  EXPECT_EQ(m->rangeAtIndex(2), (Range{2, 1}));
  EXPECT_EQ(m->rangeAtIndex(3), notFound);
  EXPECT_FALSE(re->firstMatchInString(u"xyz"));
  EXPECT_EQ(captureComponentsMatchedByRegex(u"b", u"(a)|(b)"),
            (std::vector<std::u16string>{u"b", u"", u"b"}));
  EXPECT_EQ(stringByMatching(u"b", u"(a)|(b)", 1), std::nullopt);
}

TEST(RegularExpressionMatching, PositionsCountUTF16Units) {
  std::u16string text = u"\U0001F600 é x\U0001F600y";
  auto re = RegularExpression::cached(u"x(.)y");
  auto m = re->firstMatchInString(text);
  ASSERT_TRUE(m);
  EXPECT_EQ(m->range(), (Range{5, 4}));
  EXPECT_EQ(m->rangeAtIndex(1), (Range{6, 2})); // one character, two units
  EXPECT_EQ(rangeOfRegex(text, u"é"), (Range{3, 1}));
}

TEST(RegularExpressionMatching, SearchRange) {
  std::u16string text = u"cat hat bat";
  auto re = RegularExpression::cached(u"\\b\\wat");
  EXPECT_EQ(re->numberOfMatchesInString(text, MatchingNoOptions, Range{4, 7}), 2u);
  EXPECT_EQ(re->rangeOfFirstMatchInString(text, MatchingNoOptions, Range{4, 7}), (Range{4, 3}));
  // Edges of the range anchor ^ and $ by default, not without anchoring bounds.
  auto anchored = RegularExpression::cached(u"^hat$");
  EXPECT_TRUE(anchored->hasMatchInString(text, MatchingNoOptions, Range{4, 3}));
  EXPECT_FALSE(anchored->hasMatchInString(text, MatchingWithoutAnchoringBounds, Range{4, 3}));
  // Look-ahead sees past the range only with transparent bounds.
  auto ahead = RegularExpression::cached(u"cat(?= hat)");
  EXPECT_FALSE(ahead->hasMatchInString(text, MatchingNoOptions, Range{0, 4}));
  EXPECT_TRUE(ahead->hasMatchInString(text, MatchingWithTransparentBounds, Range{0, 4}));
  // Anchored: only a match at the start of the range.
  EXPECT_FALSE(re->hasMatchInString(text, MatchingAnchored, Range{3, 8}));
  EXPECT_EQ(re->numberOfMatchesInString(text, MatchingAnchored, Range{4, 7}), 1u);
  // A range past the end is clipped.
  EXPECT_EQ(re->numberOfMatchesInString(text, MatchingNoOptions, Range{8, 100}), 1u);
}

TEST(RegularExpressionMatching, EnumerationAndStop) {
  auto re = RegularExpression::cached(u"\\d+");
  std::vector<Range> seen;
  re->enumerateMatchesInString(u"1 22 333 4444", [&](const TextCheckingResult &m, bool &stop) {
    seen.push_back(m.range());
    stop = seen.size() == 2;
  });
  EXPECT_EQ(seen, (std::vector<Range>{{0, 1}, {2, 2}}));

  // Empty matches are reported, and the search still moves on.
  EXPECT_EQ(RegularExpression::cached(u"x*")->numberOfMatchesInString(u"abc"), 4u);

  // The block may use the same expression again (on another string).
  int inner = 0;
  re->enumerateMatchesInString(u"1 2", [&](const TextCheckingResult &, bool &) {
    inner += static_cast<int>(re->numberOfMatchesInString(u"7 8 9"));
  });
  EXPECT_EQ(inner, 6);
}

TEST(RegularExpressionOptionsTest, CompileOptions) {
  auto caseless = RegularExpression::create(u"straße", RegularExpressionCaseInsensitive);
  EXPECT_TRUE(caseless->hasMatchInString(u"STRAßE"));
  auto literal = RegularExpression::create(u"a.c(", RegularExpressionIgnoreMetacharacters);
  ASSERT_TRUE(literal);
  EXPECT_FALSE(literal->hasMatchInString(u"abc("));
  EXPECT_TRUE(literal->hasMatchInString(u"xa.c(y"));
}

TEST(RegularExpressionReplacement, Templates) {
  auto re = RegularExpression::cached(u"(\\w+)@(\\w+)");
  EXPECT_EQ(re->stringByReplacingMatchesInString(u"mail bob@home, amy@work.", u"$2:$1"),
            u"mail home:bob, work:amy.");
  EXPECT_EQ(re->stringByReplacingMatchesInString(u"bob@home", u"\\$1 costs \\\\ $0"),
            u"$1 costs \\ bob@home");
  // Digits after "$" continue the group number only while that group exists.
  EXPECT_EQ(re->stringByReplacingMatchesInString(u"bob@home", u"$12"), u"bob2");
  EXPECT_EQ(re->stringByReplacingMatchesInString(u"bob@home", u"[$9]"), u"[]");
  // Only matches inside the range are replaced; the rest is kept.
  EXPECT_EQ(stringByReplacingOccurrencesOfRegex(u"a a a", u"a", u"b", RKLNoOptions, Range{1, 3}),
            u"a b a");
  EXPECT_EQ(re->stringByReplacingMatchesInString(
                u"bob@home", RegularExpression::escapedTemplateForString(u"$1 \\")),
            u"$1 \\");
}

TEST(RegularExpressionReplacement, InPlaceAndPerResult) {
  std::u16string text = u"one two three";
  EXPECT_EQ(replaceOccurrencesOfRegex(text, u"(\\w)(\\w*)", u"$2$1"), 3u);
  EXPECT_EQ(text, u"neo wot hreet");

  auto re = RegularExpression::cached(u"(\\d+)");
  std::u16string subject = u"ab12";
  auto m = re->firstMatchInString(subject);
  ASSERT_TRUE(m);
  EXPECT_EQ(re->replacementStringForResult(*m, subject, 0, u"<$1>"), u"<12>");
  EXPECT_EQ(re->replacementStringForResult(*m, u"XXab12", 2, u"<$1>"), u"<12>");
}

TEST(RegularExpressionSplit, Components) {
  using Pieces = std::vector<std::u16string>;
  EXPECT_EQ(componentsSeparatedByRegex(u"a, b,c,", u",\\s*"), (Pieces{u"a", u"b", u"c", u""}));
  EXPECT_EQ(componentsSeparatedByRegex(u",a", u","), (Pieces{u"", u"a"}));
  EXPECT_EQ(componentsSeparatedByRegex(u"abc", u"x*"), (Pieces{u"abc"}));
  EXPECT_EQ(componentsSeparatedByRegex(u"x1y2z", u"\\d", RKLNoOptions, Range{1, 3}),
            (Pieces{u"", u"y", u""}));
}

TEST(RegularExpressionErrors, BadPatterns) {
  ErrorPtr error;
  EXPECT_FALSE(RegularExpression::regularExpressionWithPattern(u"(unclosed", {}, &error));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), FormattingError);

  // The conveniences answer "nothing" and keep the string.
  error = nullptr;
  EXPECT_FALSE(isMatchedByRegex(u"abc", u"(", RKLNoOptions, std::nullopt, &error));
  EXPECT_TRUE(error);
  EXPECT_EQ(rangeOfRegex(u"abc", u"("), notFound);
  EXPECT_EQ(stringByReplacingOccurrencesOfRegex(u"abc", u"(", u"x"), u"abc");
}

TEST(RegularExpressionCache, SharesCompiledPatterns) {
  auto a = RegularExpression::cached(u"sha+red");
  EXPECT_EQ(a.get(), RegularExpression::cached(std::u16string(u"sha+red")).get());
  auto caseless = RegularExpression::cached(u"sha+red", RegularExpressionCaseInsensitive);
  EXPECT_TRUE(caseless->hasMatchInString(u"SHAARED"));
  // The conveniences' caseless option (2) is the platform's case-insensitive option (1).
  EXPECT_TRUE(isMatchedByRegex(u"SHARED", u"sha+red", RKLCaseless));
}

TEST(RegularExpressionCache, ConcurrentSearchesOnOnePattern) {
  auto re = RegularExpression::cached(u"(\\w+)=(\\d+)");
  std::u16string text;
  for (int i = 0; i < 200; ++i)
    text += u"key=" + std::u16string(1, static_cast<char16_t>(u'0' + i % 10)) + u"; ";
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int round = 0; round < 50; ++round) {
        if (re->numberOfMatchesInString(text) != 200)
          ++wrong;
        if (!isMatchedByRegex(text, u"(\\w+)=(\\d+)"))
          ++wrong;
      }
    });
  for (auto &thread : threads)
    thread.join();
  EXPECT_EQ(wrong.load(), 0);
}

TEST(RegularExpressionEscaping, EscapedPatternMatchesLiterally) {
  std::u16string literal = u"a.b*c (d)[e]{f} ^$|?+\\/-# g";
  auto re = RegularExpression::create(RegularExpression::escapedPatternForString(literal),
                                      RegularExpressionAllowCommentsAndWhitespace);
  ASSERT_TRUE(re);
  EXPECT_EQ(re->rangeOfFirstMatchInString(u"xx" + literal), (Range{2, literal.size()}));
  EXPECT_FALSE(re->hasMatchInString(u"aXb*c (d)[e]{f} ^$|?+\\/-# g"));
}
