// The single-pass Fountain parser. The per-line tests of the body are written out by hand
// (each one is exactly the pattern named beside it, over a line that holds no line end):
// a regular expression search per rule and line would cost more than the whole pass.
#include "converters/fountain/FastFountainParser.h"

#include "converters/fountain/FountainText.h"
#include "ns/Dictionary.h"
#include "ns/FileManager.h"
#include "ns/Log.h"
#include "ns/RegularExpression.h"
#include "ns/String.h"
#include "ns/StringEncoding.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

namespace vl {

using detail::isBlank;
using detail::isPatternSpace;
using Line = std::u16string_view;

namespace {

constexpr std::u16string_view BoneyardType = u"Boneyard";

constexpr std::array<std::u16string_view, 8> ListedTransitions = {
    u"CUT TO:",       u"FADE OUT.",    u"SMASH CUT TO:", u"CUT TO BLACK.",
    u"MATCH CUT TO:", u"DISSOLVE TO:", u"FADE TO:",      u"WIPE TO:"};

Line dropLeading(Line line, bool (*drop)(char16_t)) {
  size_t i = 0;
  while (i < line.size() && drop(line[i]))
    ++i;
  return line.substr(i);
}

Line dropTrailing(Line line, bool (*drop)(char16_t)) {
  size_t end = line.size();
  while (end > 0 && drop(line[end - 1]))
    --end;
  return line.substr(0, end);
}

// "^\s*$"
bool isBlankLine(Line line) {
  return std::all_of(line.begin(), line.end(), isPatternSpace);
}

// "\*\/\s*$"
bool endsBoneyard(Line line) {
  return dropTrailing(line, isPatternSpace).ends_with(u"*/");
}

// "^={3,}\s*$"
bool isPageBreak(Line line) {
  size_t marks = 0;
  while (marks < line.size() && line[marks] == u'=')
    ++marks;
  return marks >= 3 && isBlankLine(line.substr(marks));
}

// "^\s*\[{2}\s*([^\]\n])+\s*\]{2}\s*$": "[[", at least one character and no "]", "]]".
bool isNote(Line line) {
  Line core = dropTrailing(dropLeading(line, isPatternSpace), isPatternSpace);
  if (core.size() < 5 || !core.starts_with(u"[[") || !core.ends_with(u"]]"))
    return false;
  return core.substr(2, core.size() - 4).find(u']') == Line::npos;
}

// "^[^a-z]+$"
bool hasNoLowercaseLetter(Line line) {
  return !line.empty() &&
         std::none_of(line.begin(), line.end(), [](char16_t c) { return c >= u'a' && c <= u'z'; });
}

// "#([^\n#]*?)#\s*$": the last two "#" of a line, with only white space after them. Answers
// where the match starts, and the number between the marks.
std::optional<size_t> findSceneNumber(Line line, Line &number) {
  Line kept = dropTrailing(line, isPatternSpace);
  if (kept.empty() || kept.back() != u'#' || kept.size() < 2)
    return std::nullopt;
  size_t close = kept.size() - 1;
  size_t open = kept.rfind(u'#', close - 1);
  if (open == Line::npos)
    return std::nullopt;
  number = kept.substr(open + 1, close - open - 1);
  return open;
}

// "^(INT|EXT|EST|I\/??E)[\.\-\s]" ignoring case. Caseless matching folds a few non-ASCII
// characters onto these letters (U+017F, the "st" ligatures), so only lines that cannot
// match are turned away by hand and the pattern decides the rest.
bool isSceneHeading(Line line) {
  if (line.size() < 2)
    return false;
  char16_t first = line[0];
  if (first < 0x80 && first != u'I' && first != u'i' && first != u'E' && first != u'e')
    return false;
  static const ns::RegularExpressionPtr pattern = ns::RegularExpression::cached(
      uR"(^(INT|EXT|EST|I\/??E)[\.\-\s])", ns::RegularExpressionCaseInsensitive);
  return pattern && pattern->hasMatchInString(line);
}

std::u16string removingAll(Line line, std::u16string_view first, std::u16string_view second) {
  std::u16string text(line);
  detail::replaceAllOccurrences(text, first, u"");
  detail::replaceAllOccurrences(text, second, u"");
  return text;
}

std::u16string titleKey(std::u16string_view directive) {
  std::u16string key = ns::lowercaseString(directive);
  if (key == u"author")
    key = u"authors";
  return key;
}

} // namespace

FastFountainParser::FastFountainParser() : titlePage_(ns::Array::create()) {}

FastFountainParserPtr FastFountainParser::createWithString(std::u16string_view string) {
  auto parser = std::make_shared<FastFountainParser>();
  parser->parseContents(string);
  return parser;
}

FastFountainParserPtr FastFountainParser::createWithFile(std::u16string_view path) {
  auto parser = std::make_shared<FastFountainParser>();
  std::optional<ns::Data> bytes = ns::FileManager::defaultManager()->contentsAtPath(path);
  std::optional<std::u16string> text;
  if (bytes)
    text = ns::stringWithData(*bytes, nullptr);
  if (!text) {
    ns::log(ns::LogLevel::Error, "Couldn't read the file " + ns::toUTF8(path));
    return parser;
  }
  parser->parseContents(*text);
  return parser;
}

void FastFountainParser::addTitleEntry(const std::u16string &key, const ns::ArrayPtr &values) {
  titlePage_->addObject(ns::Dictionary::create({{key, ns::Value(values)}}));
}

void FastFountainParser::parseContents(std::u16string_view contents) {
  // Leading white space goes, every line end becomes "\n", and two line feeds close the text
  // so that the last block ends like any other.
  Line rest = dropLeading(contents, isPatternSpace);
  std::u16string text;
  text.reserve(rest.size() + 2);
  for (size_t i = 0; i < rest.size(); ++i) {
    char16_t c = rest[i];
    if (c == u'\r') {
      text += u'\n';
      if (i + 1 < rest.size() && rest[i + 1] == u'\n')
        ++i;
    } else {
      text += c;
    }
  }
  text += u"\n\n";

  // The top of the document, up to the first blank line, may be a title page.
  std::u16string top = text.substr(0, text.find(u"\n\n"));
  if (parseTitlePage(top))
    detail::replaceAllOccurrences(text, top, u"");
  parseBody(text);
}

bool FastFountainParser::parseTitlePage(std::u16string_view top) {
  if (top.empty()) // an empty document
    return false;
  static const ns::RegularExpressionPtr dataFreeDirective =
      ns::RegularExpression::cached(uR"(^([^\t\s][^:]+):([\t\s]*$))");
  static const ns::RegularExpressionPtr inlineDirective =
      ns::RegularExpression::cached(uR"(^([^\t\s][^:]+):\s*([^\t\s].*$))");

  std::u16string openDirective;
  ns::ArrayPtr data = ns::Array::create();
  bool found = false;
  size_t lineStart = 0;
  while (lineStart <= top.size()) {
    size_t lineEnd = std::min(top.find(u'\n', lineStart), top.size());
    Line line = top.substr(lineStart, lineEnd - lineStart);
    lineStart = lineEnd + 1;

    if (auto match = dataFreeDirective->firstMatchInString(line)) {
      if (!openDirective.empty())
        addTitleEntry(openDirective, data);
      // The data array stays: directives written one after another share it.
      openDirective = titleKey(match->substring(line, 1));
      found = true;
    } else if (auto match = inlineDirective->firstMatchInString(line)) {
      if (!openDirective.empty())
        addTitleEntry(openDirective, data);
      addTitleEntry(titleKey(match->substring(line, 1)),
                    ns::Array::create({ns::Value(match->substring(line, 2))}));
      openDirective.clear();
      data = ns::Array::create();
      found = true;
    } else if (found) {
      data->addObject(ns::Value(detail::trimmedBlanks(line)));
    }
  }
  if (!found)
    return false;
  // A lone directive with nothing under it is a first paragraph such as "FADE IN:", not a
  // title page.
  if (!openDirective.empty() && data->empty() && titlePage_->empty())
    return false;
  if (!openDirective.empty())
    addTitleEntry(openDirective, data);
  return true;
}

void FastFountainParser::parseBody(std::u16string_view text) {
  // The text is read as if it began with a line feed, so the first line follows a blank one.
  std::vector<Line> lines;
  lines.emplace_back();
  size_t lineStart = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (detail::isNewline(text[i])) {
      lines.push_back(text.substr(lineStart, i - lineStart));
      lineStart = i + 1;
    }
  }
  lines.push_back(text.substr(lineStart));

  auto add = [this](std::u16string_view type, std::u16string_view elementText) {
    elements_.push_back(FNElement::elementOfType(type, elementText));
    return elements_.back().get();
  };

  uint64_t newlinesBefore = 0;
  bool isInDialogueBlock = false;
  bool isInsideBoneyard = false;
  std::u16string boneyardText;
  // The last cue, found again in constant time when a dual cue follows.
  std::optional<size_t> lastCharacterIndex;
  for (size_t i = elements_.size(); i-- > 0;) {
    if (elements_[i]->elementType() == FNElementTypeCharacter) {
      lastCharacterIndex = i;
      break;
    }
  }

  for (size_t index = 0; index < lines.size(); ++index) {
    const Line line = lines[index];

    if (!isInsideBoneyard && isBlankLine(line)) {
      ++newlinesBefore;
      isInDialogueBlock = false;
      continue;
    }

    bool opensBoneyard = line.starts_with(u"/*");
    bool closesBoneyard = endsBoneyard(line);
    if (opensBoneyard && closesBoneyard) {
      add(BoneyardType, removingAll(line, u"/*", u"*/"));
      newlinesBefore = 0;
      isInsideBoneyard = false;
      continue;
    }
    if (opensBoneyard) {
      // The rest of the opening line is not kept.
      boneyardText += u'\n';
      isInsideBoneyard = true;
      continue;
    }
    if (closesBoneyard) {
      // The start of the closing line is not kept either.
      add(BoneyardType, boneyardText);
      boneyardText.clear();
      newlinesBefore = 0;
      isInsideBoneyard = false;
      continue;
    }
    if (isInsideBoneyard) {
      boneyardText += line;
      boneyardText += u'\n';
      continue;
    }

    if (isPageBreak(line)) {
      add(FNElementTypePageBreak, line);
      newlinesBefore = 0;
      continue;
    }

    Line unindented = dropLeading(line, isBlank);
    if (!unindented.empty() && unindented.front() == u'=') {
      // Drops "^\s*={1}".
      add(FNElementTypeSynopsis, dropLeading(line, isPatternSpace).substr(1));
      continue;
    }

    if (newlinesBefore > 0 && isNote(line)) {
      add(FNElementTypeComment, detail::trimmedBlanks(removingAll(line, u"[[", u"]]")));
      continue;
    }

    if (!unindented.empty() && unindented.front() == u'#') {
      // "^\s*#+" gives the depth, blanks included.
      Line marks = dropLeading(line, isPatternSpace);
      size_t depth = line.size() - marks.size();
      while (depth < line.size() && line[depth] == u'#')
        ++depth;
      Line title = line.substr(depth);
      if (title.empty())
        ns::log(ns::LogLevel::Warning, "Error in the Section Heading");
      else
        add(FNElementTypeSectionHeading, title)->setSectionDepth(depth);
      newlinesBefore = 0;
      continue;
    }

    if (line.size() >= 2 && line[0] == u'.' && line[1] != u'.') {
      Line number;
      std::optional<size_t> numberStart = findSceneNumber(line, number);
      Line heading =
          detail::trimmedBlanks(line.substr(0, numberStart.value_or(line.size())).substr(1));
      FNElement *element = add(FNElementTypeSceneHeading, heading);
      if (numberStart)
        element->setSceneNumber(std::u16string(number));
      newlinesBefore = 0;
      continue;
    }

    if (isSceneHeading(line)) {
      Line number;
      std::optional<size_t> numberStart = findSceneNumber(line, number);
      FNElement *element =
          add(FNElementTypeSceneHeading, line.substr(0, numberStart.value_or(line.size())));
      if (numberStart)
        element->setSceneNumber(std::u16string(number));
      newlinesBefore = 0;
      continue;
    }

    Line unspaced = dropLeading(line, isPatternSpace);
    if (std::find(ListedTransitions.begin(), ListedTransitions.end(), unspaced) !=
        ListedTransitions.end()) {
      add(FNElementTypeTransition, line);
      newlinesBefore = 0;
      continue;
    }

    if (line.front() == u'>') {
      if (line.size() >= 2 && line.back() == u'<') {
        Line inner = detail::trimmedBlanks(line.substr(1));
        inner = detail::trimmedBlanks(inner.substr(0, inner.size() - 1));
        add(FNElementTypeAction, inner)->setIsCentered(true);
      } else {
        add(FNElementTypeTransition, detail::trimmedBlanks(line.substr(1)));
      }
      newlinesBefore = 0;
      continue;
    }

    if (newlinesBefore > 0 && hasNoLowercaseLetter(line) && index + 1 < lines.size() &&
        !lines[index + 1].empty()) {
      FNElement *cue = add(FNElementTypeCharacter, line);
      Line kept = dropTrailing(line, isPatternSpace);
      if (!kept.empty() && kept.back() == u'^') {
        // "\^\s*$" marks the second cue of a pair; "\s*\^\s*$" is taken off.
        cue->setIsDualDialogue(true);
        cue->setElementText(
            std::u16string(dropTrailing(kept.substr(0, kept.size() - 1), isPatternSpace)));
        if (lastCharacterIndex)
          elements_[*lastCharacterIndex]->setIsDualDialogue(true);
      }
      lastCharacterIndex = elements_.size() - 1;
      isInDialogueBlock = true;
      newlinesBefore = 0;
      continue;
    }

    if (!isInDialogueBlock) {
      if (newlinesBefore == 0 && !elements_.empty()) {
        FNElement &last = *elements_.back();
        last.appendElementText(u"\n");
        last.appendElementText(line);
      } else {
        add(FNElementTypeAction, line);
      }
      newlinesBefore = 0;
      isInDialogueBlock = false;
      continue;
    }

    if (newlinesBefore == 0 && dropLeading(line, isPatternSpace).starts_with(u'(')) {
      add(FNElementTypeParenthetical, line);
      newlinesBefore = 0;
    } else if (!elements_.empty() && elements_.back()->elementType() == FNElementTypeDialogue) {
      FNElement &last = *elements_.back();
      last.appendElementText(u"\n");
      last.appendElementText(line);
    } else {
      add(FNElementTypeDialogue, line);
    }
  }
  // A boneyard still open at the end is dropped.
}

} // namespace vl
