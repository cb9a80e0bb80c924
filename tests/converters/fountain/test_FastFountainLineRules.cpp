// The single-pass parser against the same rules written with their patterns, on random
// scripts built from lines at the edges of each rule.
#include "converters/fountain/FastFountainParser.h"
#include "ns/RegularExpression.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

using namespace vl;
using namespace vl::ns;

namespace {

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

TEST(FastFountainLineRules, MatchThePatternsOnRandomScripts) {
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

} // namespace
