// Tests of Fountain parsing: title pages, every element kind of the line parser, its boneyard
// and note rules, its cross-check against the rules' patterns, the regex pipeline and where it
// differs, scripts and hostile text.
#include "converters/fountain/FNElement.h"
#include "converters/fountain/FNScript.h"
#include "converters/fountain/FastFountainParser.h"
#include "converters/fountain/FountainParser.h"
#include "ns/Dictionary.h"
#include "ns/RegularExpression.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace vl;

namespace {

using Strings = std::vector<std::u16string>;
using Entries = std::vector<std::pair<std::u16string, Strings>>;

// "Type marks: text" for each element; the marks are " #number#", " ><" for centred text,
// " ^" for dual dialogue and the section depth.
Strings summary(const FNElementArray &elements) {
  Strings result;
  for (const FNElementPtr &e : elements) {
    std::u16string line = e->elementType();
    if (e->sceneNumber())
      line += u" #" + *e->sceneNumber() + u"#";
    if (e->isCentered())
      line += u" ><";
    if (e->isDualDialogue())
      line += u" ^";
    if (e->sectionDepth())
      line += u" " + ns::fromUTF8(std::to_string(e->sectionDepth()));
    result.push_back(line + u": " + e->elementText());
  }
  return result;
}

// The title page as (key, lines) pairs.
Entries entries(const ns::ArrayPtr &titlePage) {
  Entries result;
  for (const ns::Value &value : *titlePage)
    for (const auto &[key, lines] : *value.as<ns::Dictionary>()) {
      Strings strings;
      for (const ns::Value &line : *lines.as<ns::Array>())
        strings.push_back(line.string());
      result.emplace_back(key, strings);
    }
  return result;
}

struct Parsed {
  Strings elements;
  Entries titlePage;
};

Parsed fast(std::u16string_view text) {
  FastFountainParserPtr parser = FastFountainParser::createWithString(text);
  return {summary(parser->elements()), entries(parser->titlePage())};
}

Parsed regex(std::u16string_view text) {
  return {summary(FountainParser::parseBodyOfString(text)),
          entries(FountainParser::parseTitlePageOfString(text))};
}

struct Case {
  std::u16string_view text;
  Strings elements;
  Entries titlePage = {};
};

void check(Parsed (*parse)(std::u16string_view), const std::vector<Case> &cases) {
  for (const Case &c : cases) {
    Parsed p = parse(c.text);
    EXPECT_EQ(p.elements, c.elements) << ns::toUTF8(c.text);
    EXPECT_EQ(p.titlePage, c.titlePage) << ns::toUTF8(c.text);
  }
}

TEST(FastFountainParser, TitlePages) {
  check(
      fast,
      {{u"Title: Big Fish\nCredit: written by\nAuthor: John August\n\nINT. HOUSE - DAY\n",
        {u"Scene Heading: INT. HOUSE - DAY"},
        {{u"title", {u"Big Fish"}}, {u"credit", {u"written by"}}, {u"authors", {u"John August"}}}},
       // Values on the lines under a directive are trimmed.
       {u"Title:\n    Big Fish\n\tPart Two  \nDraft date: 1/2/03\n\nText.\n",
        {u"Action: Text."},
        {{u"title", {u"Big Fish", u"Part Two"}}, {u"draft date", {u"1/2/03"}}}},
       // Directives without data in a row share one array; an inline one starts a new array.
       {u"Title:\n  A\nContact:\n  B\n\nText.\n",
        {u"Action: Text."},
        {{u"title", {u"A", u"B"}}, {u"contact", {u"A", u"B"}}}},
       {u"Contact:\n  A\nTitle: T\nNotes:\n  B\n\nText.\n",
        {u"Action: Text."},
        {{u"contact", {u"A"}}, {u"title", {u"T"}}, {u"notes", {u"B"}}}},
       {u"AUTHOR: X\n\nText.", {u"Action: Text."}, {{u"authors", {u"X"}}}},
       {u"Author(s): X\n\nText.", {u"Action: Text."}, {{u"author(s)", {u"X"}}}},
       // A lone directive with nothing under it, or a top without one, stays in the script.
       {u"FADE IN:\n\nA field.\n", {u"Action: FADE IN:", u"Action: A field."}},
       {u"Just a line.\n\nAnother.", {u"Action: Just a line.", u"Action: Another."}},
       // Prose before a directive line is lost, and that top is taken out wherever it recurs.
       {u"Some prose\nNote: it ends here\n\nAction.\n\nSome prose\nNote: it ends here\n\nEnd.",
        {u"Action: Action.", u"Action: End."},
        {{u"note", {u"it ends here"}}}},
       {u"\r\n  \tTitle: X\r\n\r\nINT. A - DAY\rText.\r\n",
        {u"Scene Heading: INT. A - DAY\nText."},
        {{u"title", {u"X"}}}}});
}

TEST(FastFountainParser, ScenesCuesAndTransitions) {
  check(
      fast,
      {{u"", {}},
       {u"\u2028\u2029\v\f", {}},
       // Numbers leave the heading's text untrimmed; "." forces a heading, "..." does not.
       {u"INT. HOUSE - DAY #1A#\n\next. road - night\n\nI/E. CAR #12-B.#  \n\nEST. CITY\n\n"
        u"IE SHIP\n\n.SNIPER SCOPE POV #7#\n\nINTERIOR\n\n...and then\n",
        {u"Scene Heading #1A#: INT. HOUSE - DAY ", u"Scene Heading: ext. road - night",
         u"Scene Heading #12-B.#: I/E. CAR ", u"Scene Heading: EST. CITY",
         u"Scene Heading: IE SHIP", u"Scene Heading #7#: SNIPER SCOPE POV", u"Action: INTERIOR",
         u"Action: ...and then"}},
       // A heading needs no blank line, takes the lines under it, and keeps dialogue going.
       {u"A man runs.\nINT. HOUSE - DAY\nHe stops.\n",
        {u"Action: A man runs.", u"Scene Heading: INT. HOUSE - DAY\nHe stops."}},
       {u"BOB\nINT. CAR\nHi.\n", {u"Character: BOB", u"Scene Heading: INT. CAR", u"Dialogue: Hi."}},
       {u"BOB (V.O.)\n(quietly)\nHello.\n  How are you?\n(beat)\nFine.\n\nMARY\nHi.\n",
        {u"Character: BOB (V.O.)", u"Parenthetical: (quietly)", u"Dialogue: Hello.\n  How are you?",
         u"Parenthetical: (beat)", u"Dialogue: Fine.", u"Character: MARY", u"Dialogue: Hi."}},
       // A cue needs a line under it, no lower case, and a blank line above.
       {u"Text.\n\nBOB", {u"Action: Text.", u"Action: BOB"}},
       {u"BOB (cont'd)\nHi.\n", {u"Action: BOB (cont'd)\nHi."}},
       {u"He yells.\nSTOP\nNow.\n", {u"Action: He yells.\nSTOP\nNow."}},
       {u"BOB\n  \n", {u"Character: BOB"}},
       // Dual dialogue marks the cue and the last cue before it, across anything.
       {u"BOB\nLeft.\n\nMARY ^ \nRight.\n",
        {u"Character ^: BOB", u"Dialogue: Left.", u"Character ^: MARY", u"Dialogue: Right."}},
       {u"BOB ^\nOne.\n\nINT. HALL\n\nAction.\n\nMARY ^\nTwo.\n",
        {u"Character ^: BOB", u"Dialogue: One.", u"Scene Heading: INT. HALL", u"Action: Action.",
         u"Character ^: MARY", u"Dialogue: Two."}},
       {u"MARY^\nTwo.\n", {u"Character ^: MARY", u"Dialogue: Two."}},
       // Only listed transitions, or forced ones; centred text is action between marks.
       {u"CUT TO:\n\n  SMASH CUT TO:\n\n> FADE TO BLACK\n\n>\n\n"
        u"JUMP CUT TO:\n\nFADE IN:\nText.\n",
        {u"Transition: CUT TO:", u"Transition:   SMASH CUT TO:", u"Transition: FADE TO BLACK",
         u"Transition: ", u"Action: JUMP CUT TO:", u"Character: FADE IN:", u"Dialogue: Text."}},
       {u">  THE END  <\n\n><\n", {u"Action ><: THE END", u"Action ><: "}},
       // Lines end at every newline character.
       {u"BOB\u2028Hi.\u2029\u2029Text.\vMore.\u0085\u0085End.",
        {u"Character: BOB", u"Dialogue: Hi.", u"Action: Text.\nMore.", u"Action: End."}}});
}

TEST(FastFountainParser, SectionsSynopsesNotesAndBoneyards) {
  check(fast, {// Section depth counts the marks and any blanks before them.
               {u"# Act One\n\n  ## Scene\n= The hero leaves.\n== Twice\n===\n\n#\n\n==== \nText.",
                {u"Section Heading 1:  Act One", u"Section Heading 4:  Scene",
                 u"Synopsis:  The hero leaves.", u"Synopsis: = Twice", u"Page Break: ===",
                 u"Page Break: ==== \nText."}},
               // A note on a line of its own needs a blank line before it.
               {u"Text.\n\n[[A note.]]\n  [[ another ]]  \nLine.\n[[joined]]\n\n[[a]b]]\n\n[[ ]]\n",
                {u"Action: Text.", u"Comment: A note.", u"Comment: another",
                 u"Action: Line.\n[[joined]]", u"Action: [[a]b]]", u"Comment: "}},
               // A boneyard keeps only the lines between its marks, and joins like any block.
               {u"/* opening is dropped\nkept\n\n  kept too\nclosing is dropped */\nAfter.\n",
                {u"Boneyard: \nkept\n\n  kept too\n\nAfter."}},
               {u"/* one line */\n", {u"Boneyard:  one line "}},
               // A closing mark outside a boneyard gives what was held; one never closed loses all.
               {u"Text.\n\nwords here */\n", {u"Action: Text.", u"Boneyard: "}},
               {u"Text.\n\n/*\nlost\n\nBOB\nHi.\n", {u"Action: Text."}}});
}

TEST(FastFountainParser, HostileTextParses) {
  EXPECT_EQ(fast(u"A\xD800 \xDC00\n\n\xDBFF").elements.size(), 2u);
  EXPECT_EQ(fast(u"Text.\n\n" + std::u16string(200000, u'[') + u"\n").elements.size(), 2u);
  std::u16string notes;
  for (int i = 0; i < 2000; ++i)
    notes += u"[[ /* # = \n\n";
  EXPECT_FALSE(fast(notes).elements.empty());
}

// The single-pass parser against the same rules written with their patterns, on random
// scripts built from lines at the edges of each rule.
namespace lineRules {

using namespace vl::ns;

struct Element {
  std::u16string type, text;
  bool centered = false, dual = false;
  std::optional<std::u16string> number = {};
  uint64_t depth = 0;
  bool operator==(const Element &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Element &e) {
  return out << toUTF8(e.type) << "|" << toUTF8(e.text) << "|" << e.centered << e.dual << "|"
             << (e.number ? toUTF8(*e.number) : "-") << "|" << e.depth;
}

bool matches(std::u16string_view s, std::u16string_view pattern, RKLRegexOptions o = RKLNoOptions) {
  return isMatchedByRegex(s, pattern, o);
}
std::u16string replaced(std::u16string_view s, std::u16string_view pattern) {
  return stringByReplacingOccurrencesOfRegex(s, pattern, u"");
}
std::u16string trim(std::u16string_view s) {
  return replaced(s, uR"(^[\t\p{Zs}]+|[\t\p{Zs}]+$)");
}

// The body rules, pattern for pattern, for a text whose first block is no title page.
std::vector<Element> reference(std::u16string_view contents) {
  std::u16string text = replaced(contents, uR"(^\s*)");
  text = u"\n" + stringByReplacingOccurrencesOfRegex(text, uR"(\r\n|\r|\n)", u"\n") + u"\n\n";
  std::vector<std::u16string> lines =
      componentsSeparatedByRegex(text, u"[\\n\\x{0B}\\x{0C}\\r\\x{85}\\x{2028}\\x{2029}]");
  const std::array<std::u16string_view, 8> transitions = {
      u"CUT TO:",       u"FADE OUT.",    u"SMASH CUT TO:", u"CUT TO BLACK.",
      u"MATCH CUT TO:", u"DISSOLVE TO:", u"FADE TO:",      u"WIPE TO:"};
  std::vector<Element> out;
  int blanks = 0;
  bool dialogue = false, boneyard = false;
  std::u16string boneyardText;
  auto takeNumber = [](std::u16string &line) -> std::optional<std::u16string> {
    auto caps = captureComponentsMatchedByRegex(line, uR"(#([^\n#]*?)#\s*$)");
    if (caps.empty())
      return std::nullopt;
    line = replaced(line, uR"(#([^\n#]*?)#\s*$)");
    return caps[1];
  };
  for (size_t i = 0; i < lines.size(); ++i) {
    std::u16string line = lines[i];
    std::u16string first = trim(line).substr(0, 1);
    if (!boneyard && matches(line, uR"(^\s*$)")) {
      ++blanks;
      dialogue = false;
      continue;
    }
    bool starts = matches(line, uR"(^\/\*)"), ends = matches(line, uR"(\*\/\s*$)");
    if (starts && ends) {
      out.push_back(Element{u"Boneyard", replaced(replaced(line, uR"(\/\*)"), uR"(\*\/)")});
      blanks = 0;
      boneyard = false;
    } else if (starts) {
      boneyardText += u"\n";
      boneyard = true;
    } else if (ends) {
      out.push_back(Element{u"Boneyard", boneyardText});
      boneyardText.clear();
      blanks = 0;
      boneyard = false;
    } else if (boneyard) {
      boneyardText += line + u"\n";
    } else if (matches(line, uR"(^={3,}\s*$)")) {
      out.push_back(Element{u"Page Break", line});
      blanks = 0;
    } else if (first == u"=") {
      out.push_back(Element{u"Synopsis", replaced(line, uR"(^\s*={1})")});
    } else if (blanks > 0 && matches(line, uR"(^\s*\[{2}\s*([^\]\n])+\s*\]{2}\s*$)")) {
      out.push_back(Element{u"Comment", trim(replaced(replaced(line, uR"(\[\[)"), uR"(\]\])"))});
    } else if (first == u"#") {
      Range marks = rangeOfRegex(line, uR"(^\s*#+)");
      if (marks.length < line.size())
        out.push_back(
            {u"Section Heading", line.substr(marks.length), false, false, {}, marks.length});
      blanks = 0;
    } else if (line.size() >= 2 && line[0] == u'.' && line[1] != u'.') {
      auto number = takeNumber(line);
      out.push_back(Element{u"Scene Heading", trim(line.substr(1)), false, false, number});
      blanks = 0;
    } else if (matches(line, uR"(^(INT|EXT|EST|I\/??E)[\.\-\s])", RKLCaseless)) {
      auto number = takeNumber(line);
      out.push_back(Element{u"Scene Heading", line, false, false, number});
      blanks = 0;
    } else if (std::find(transitions.begin(), transitions.end(), replaced(line, uR"(^\s*)")) !=
               transitions.end()) {
      out.push_back(Element{u"Transition", line});
      blanks = 0;
    } else if (line[0] == u'>') {
      if (line.size() >= 2 && line.back() == u'<') {
        std::u16string inner = trim(line.substr(1));
        out.push_back(Element{u"Action", trim(inner.substr(0, inner.size() - 1)), true});
      } else {
        out.push_back(Element{u"Transition", trim(line.substr(1))});
      }
      blanks = 0;
    } else if (blanks > 0 && matches(line, u"^[^a-z]+$") && i + 1 < lines.size() &&
               !lines[i + 1].empty()) {
      Element cue{u"Character", line};
      if (matches(line, uR"(\^\s*$)")) {
        cue.dual = true;
        cue.text = replaced(line, uR"(\s*\^\s*$)");
        for (size_t j = out.size(); j-- > 0;)
          if (out[j].type == u"Character") {
            out[j].dual = true;
            break;
          }
      }
      out.push_back(cue);
      dialogue = true;
      blanks = 0;
    } else if (!dialogue) {
      if (blanks == 0 && !out.empty())
        out.back().text += u"\n" + line;
      else
        out.push_back(Element{u"Action", line});
      blanks = 0;
    } else if (blanks == 0 && matches(line, uR"(^\s*\()")) {
      out.push_back(Element{u"Parenthetical", line});
      blanks = 0;
    } else if (!out.empty() && out.back().type == u"Dialogue") {
      out.back().text += u"\n" + line;
    } else {
      out.push_back(Element{u"Dialogue", line});
    }
  }
  return out;
}

std::vector<Element> parsed(std::u16string_view text) {
  std::vector<Element> out;
  FastFountainParserPtr parser = FastFountainParser::createWithString(text);
  for (const FNElementPtr &e : parser->elements())
    out.push_back(Element{e->elementType(), e->elementText(), e->isCentered(), e->isDualDialogue(),
                          e->sceneNumber(), e->sectionDepth()});
  return out;
}

const std::u16string_view Lines[] = {
    // Blanks, text, cues and parentheticals.
    u"", u"  ", u"\t", u"\u00a0", u"\u3000 ", u"Text.", u"lower case", u"BOB", u"BOB ^", u"BOB^ \t",
    u"A ^^", u"MARY (V.O.)", u"(beat)", u"  (aside)", u"^", u"(", u"X\u2028y",
    // Boneyards, page breaks, synopses and notes.
    u"/*", u"/* x", u"x */", u"*/  ", u"/* a */", u"/**/", u"/*/", u"===", u"=== ", u"====x",
    u"= syn", u" =syn", u"==", u"[[note]]", u" [[ n ]] ", u"[[a]b]]", u"[[]]", u"[[ ]]", u"[[[x]]",
    u"[[]",
    // Sections, scene headings, transitions and centred text.
    u"# S", u"  ## S", u"#", u" # ", u"#\u00a0x", u".X", u"..X", u".X #1#", u".#2#", u".",
    u"INT. A #1#", u"int. a", u"EXT.B", u"EST X", u"ie x", u"I/E-x", u"INTX", u"E\u017ft. q",
    u"E\ufb05. q", u"\u0130NT. x", u"INT. A #1# #2#", u"INT. A ## ", u"INT. A #1# x", u"CUT TO:",
    u"  FADE OUT.", u"FADE IN:", u"> T", u">", u"><", u"> C <", u">x<", u"< x >"};
const char16_t Extras[] = {u'#', u'^', u' ', u'\t', u'<', u'>', u'*',      u'/',      u'[',
                           u']', u'=', u'.', u'a',  u'A', u'(', u'\u00a0', u'\u017f', u'\u2029'};

TEST(FastFountainParser, LineRulesMatchThePatternsOnRandomScripts) {
  uint32_t state = 12345;
  auto next = [&state](uint32_t bound) {
    state = state * 1664525u + 1013904223u;
    return (state >> 8) % bound;
  };
  const uint32_t lineCount = std::size(Lines), extraCount = std::size(Extras);
  for (int round = 0; round < 200; ++round) {
    std::u16string text = u"Text.\n\n"; // a first block that is no title page
    for (int i = 0, n = 5 + static_cast<int>(next(40)); i < n; ++i) {
      std::u16string line(Lines[next(lineCount)]);
      if (next(4) == 0)
        line.insert(next(static_cast<uint32_t>(line.size()) + 1), 1, Extras[next(extraCount)]);
      uint32_t end = next(10);
      text += line + (end == 0 ? u"\r\n" : end == 1 ? u"\r" : u"\n");
    }
    ASSERT_EQ(parsed(text), reference(text)) << toUTF8(text);
  }
}

} // namespace lineRules

TEST(FountainParser, EveryPatternCompiles) {
  for (std::u16string_view pattern : {UNIVERSAL_LINE_BREAKS_PATTERN,
                                      BLOCK_COMMENT_PATTERN,
                                      BRACKET_COMMENT_PATTERN,
                                      SYNOPSIS_PATTERN,
                                      PAGE_BREAK_PATTERN,
                                      FALSE_TRANSITION_PATTERN,
                                      FORCED_TRANSITION_PATTERN,
                                      SCENE_HEADER_PATTERN,
                                      FIRST_LINE_ACTION_PATTERN,
                                      TRANSITION_PATTERN,
                                      CHARACTER_CUE_PATTERN,
                                      PARENTHETICAL_PATTERN,
                                      DIALOGUE_PATTERN,
                                      SECTION_HEADER_PATTERN,
                                      ACTION_PATTERN,
                                      CLEANUP_PATTERN,
                                      TITLE_PAGE_PATTERN,
                                      INLINE_DIRECTIVE_PATTERN,
                                      MULTI_LINE_DIRECTIVE_PATTERN,
                                      MULTI_LINE_DATA_PATTERN,
                                      DUAL_DIALOGUE_PATTERN,
                                      CENTERED_TEXT_PATTERN,
                                      SCENE_NUMBER_PATTERN,
                                      MULTI_LINE_ACTION_PATTERN,
                                      BOLD_ITALIC_UNDERLINE_PATTERN,
                                      BOLD_ITALIC_PATTERN,
                                      BOLD_UNDERLINE_PATTERN,
                                      ITALIC_UNDERLINE_PATTERN,
                                      BOLD_PATTERN,
                                      ITALIC_PATTERN,
                                      UNDERLINE_PATTERN}) {
    ns::ErrorPtr error;
    EXPECT_TRUE(ns::RegularExpression::create(pattern, ns::RegularExpressionNoOptions, &error))
        << ns::toUTF8(pattern) << ": " << (error ? ns::toUTF8(error->localizedDescription()) : "");
  }
}

TEST(FountainParser, ElementsAndTitlePage) {
  check(regex,
        {// Only indented lines are title page data.
         {u"Title:\n    Big Fish\nCredit:\nwritten by\nAuthor: John August\nAuthor(s): Two\n\n"
          u"INT. HOUSE - DAY\n",
          {u"SceneHeading: INT. HOUSE - DAY"},
          {{u"title", {u"Big Fish"}}, {u"authors", {u"John August"}}}},
         // Its own tag names, sections of depth 0, "---" as a page break.
         {u"Title: Two words\n\nINT. HOUSE - DAY\n\nA man enters.\n\nBOB\n(softly)\nHello "
          u"<there>...\n\n"
          u"CUT TO:\n\n# Act Two\n\n= Summary here.\n\n---\n\n> THE END <\n",
          {u"SceneHeading: INT. HOUSE - DAY", u"Action: A man enters.", u"Character: BOB",
           u"Parenthetical: (softly)", u"Dialogue: Hello <there>...", u"Transition: CUT TO:",
           u"SectionHeading: # Act Two", u"Synopsis:  Summary here.", u"Page Break: ",
           u"Action ><: THE END"},
          {{u"title", {u"Two words"}}}},
         // The section rewrite takes a scene number and the rest of its line, heading included.
         {u"Text.\n\nINT. HOUSE - DAY #1#\n\nMore.\n",
          {u"Action: Text.", u"SectionHeading: #1#", u"Action: More."}},
         // Dual dialogue walks back over dialogue only, and every "^" goes from the earlier cue.
         {u"Text.\n\nBOB ^\nLeft.\n\nMARY ^\nRight.\n",
          {u"Action: Text.", u"Character ^: BOB ", u"Dialogue: Left.", u"Character ^: MARY",
           u"Dialogue: Right."}},
         {u"Text.\n\nBOB\nLeft.\n\nAction.\n\nMARY ^\nRight.\n",
          {u"Action: Text.", u"Character: BOB", u"Dialogue: Left.", u"Action: Action.",
           u"Character ^: MARY", u"Dialogue: Right."}},
         {u"Text.\n\nMARY ^\nRight.\n", // a cue at index 0 or 1 is never dual: its mark stays
          {u"Action: Text.", u"Character: MARY ^", u"Dialogue: Right."}},
         {u"No blank line: at all", {u"Action: No blank line: at all"}},
         // Notes and boneyards may run over lines.
         {u"Text.\n/*\nhidden\nlines */\n[[a note\nover lines]]\nEnd.\n",
          {u"Action: Text.", u"Boneyard: hidden\nlines ", u"Comment: a note\nover lines",
           u"Action: End."}}});

  // The title block goes up to its first line feed; the body keeps the second.
  std::u16string text = u"Title:\n    A\nCredit:\nby\n\nINT. HOUSE - DAY\n";
  EXPECT_EQ(FountainParser::titlePageOfString(text), u"Title:\n    A\nCredit:\nby");
  EXPECT_EQ(FountainParser::bodyOfString(text), u"\n\n\nINT. HOUSE - DAY\n\n\n");
  EXPECT_EQ(FountainParser::titlePageOfString(u"Text.\n\nMore."), u"");
  EXPECT_EQ(FountainParser::bodyOfString(u"\n\nText.\n\nMore."), u"\n\nText.\n\nMore.\n\n");
}

TEST(BothParsers, AgreeOnPlainScreenplayText) {
  for (std::u16string_view text :
       {u"Title: Same\nAuthor: Us\n\nThe room is dark.\n\nBOB\n(whispering)\nWho's there?\n\n"
        u"MARY\nOnly me.\n\n[[check this]]\n\nCUT TO:\n\nShe leaves.\n",
        u"Text.\n\n> THE END <\n\n= A synopsis.\n\nJOE\nHi.\n"}) {
    Parsed a = fast(text), b = regex(text);
    EXPECT_EQ(a.elements, b.elements) << ns::toUTF8(text);
    EXPECT_EQ(a.titlePage, b.titlePage) << ns::toUTF8(text);
  }
}

TEST(FNScript, LoadsStringsAndFilesThroughEitherParser) {
  std::filesystem::path dir =
      std::filesystem::temp_directory_path() /
      ("fnscript-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()));
  std::filesystem::create_directories(dir);
  auto write = [&](const std::string &name, const std::string &bytes) {
    std::ofstream(dir / name, std::ios::binary) << bytes;
    return ns::fromUTF8((dir / name).string());
  };
  auto script = FNScript::createWithString(u"Title: A\n\nINT. X - DAY #3#\n");
  EXPECT_FALSE(script->filename().has_value());
  EXPECT_EQ(summary(script->elements()), (Strings{u"Scene Heading #3#: INT. X - DAY "}));
  EXPECT_EQ(entries(script->titlePage()), (Entries{{u"title", {u"A"}}}));

  // A load replaces elements and title page; bytes are UTF-8 or else decoded as best it can.
  std::u16string path = write("draft.fountain", "INT. X - DAY\n\nCaf\xc3\xa9.\n");
  script->loadFile(path);
  EXPECT_EQ(script->filename(), u"draft.fountain");
  EXPECT_EQ(summary(script->elements()),
            (Strings{u"Scene Heading: INT. X - DAY", u"Action: Caf\u00e9."}));
  EXPECT_TRUE(script->titlePage()->empty());
  EXPECT_EQ(summary(FNScript::createWithFile(write("latin.fountain", "Caf\xe9.\n"))->elements()),
            (Strings{u"Action: Caf\u00e9."}));
  script = FNScript::createWithFile(path, 1);
  EXPECT_EQ(script->elements().at(0)->elementType(), u"SceneHeading");
  script->loadString(u"Text.", 0);
  EXPECT_EQ(summary(script->elements()), (Strings{u"Action: Text."}));

  // A file that cannot be read leaves the script empty.
  std::u16string missing = ns::fromUTF8((dir / "missing.fountain").string());
  script = FNScript::createWithFile(missing, 1);
  EXPECT_EQ(script->filename(), u"missing.fountain");
  EXPECT_TRUE(script->elements().empty() && script->titlePage()->empty());
  EXPECT_FALSE(FountainParser::parseBodyOfFile(missing).has_value());
  EXPECT_EQ(FountainParser::parseTitlePageOfFile(missing), nullptr);
  std::filesystem::remove_all(dir);
}

} // namespace
