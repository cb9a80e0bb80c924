// The regular-expression Fountain parser.
#include "converters/fountain/FountainParser.h"

#include "converters/fountain/FountainText.h"
#include "ns/Dictionary.h"
#include "ns/FileManager.h"
#include "ns/RegularExpression.h"
#include "ns/String.h"
#include "ns/StringEncoding.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace vl {

namespace {

struct Rewrite {
  std::u16string_view pattern;
  std::u16string_view replacement;
};

constexpr std::array<Rewrite, 17> Rewrites = {{
    {UNIVERSAL_LINE_BREAKS_PATTERN, UNIVERSAL_LINE_BREAKS_TEMPLATE},
    {BLOCK_COMMENT_PATTERN, BLOCK_COMMENT_TEMPLATE},
    {BRACKET_COMMENT_PATTERN, BRACKET_COMMENT_TEMPLATE},
    {SYNOPSIS_PATTERN, SYNOPSIS_TEMPLATE},
    {PAGE_BREAK_PATTERN, PAGE_BREAK_TEMPLATE},
    {FALSE_TRANSITION_PATTERN, FALSE_TRANSITION_TEMPLATE},
    {FORCED_TRANSITION_PATTERN, FORCED_TRANSITION_TEMPLATE},
    {SCENE_HEADER_PATTERN, SCENE_HEADER_TEMPLATE},
    {FIRST_LINE_ACTION_PATTERN, FIRST_LINE_ACTION_TEMPLATE},
    {TRANSITION_PATTERN, TRANSITION_TEMPLATE},
    {CHARACTER_CUE_PATTERN, CHARACTER_CUE_TEMPLATE},
    {PARENTHETICAL_PATTERN, PARENTHETICAL_TEMPLATE},
    {DIALOGUE_PATTERN, DIALOGUE_TEMPLATE},
    {SECTION_HEADER_PATTERN, SECTION_HEADER_TEMPLATE},
    {ACTION_PATTERN, ACTION_TEMPLATE},
    {CLEANUP_PATTERN, CLEANUP_TEMPLATE},
    {NEWLINE_REPLACEMENT, NEWLINE_RESTORE},
}};

constexpr std::u16string_view TagPattern = uR"(<([a-zA-Z\s]+)>([^<>]*)<\/[a-zA-Z\s]+>)";

bool equalIgnoringASCIICase(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size())
    return false;
  for (size_t i = 0; i < a.size(); ++i) {
    char16_t x = a[i], y = b[i];
    if (x >= u'A' && x <= u'Z')
      x = static_cast<char16_t>(x + 32);
    if (y >= u'A' && y <= u'Z')
      y = static_cast<char16_t>(y + 32);
    if (x != y)
      return false;
  }
  return true;
}

// Replaces an ASCII target in any case. The targets here are short and fixed, and no
// non-ASCII character folds onto their letters, so comparing ASCII case is exact.
std::u16string replacingIgnoringCase(std::u16string_view text, std::u16string_view target,
                                     std::u16string_view replacement) {
  std::u16string result;
  result.reserve(text.size());
  size_t i = 0;
  while (i < text.size()) {
    if (i + target.size() <= text.size() &&
        equalIgnoringASCIICase(text.substr(i, target.size()), target)) {
      result += replacement;
      i += target.size();
    } else {
      result += text[i++];
    }
  }
  return result;
}

// Keeps the line feeds inside each multi-line block of `pattern` from the line-based
// rewrites: every text the pattern captures is replaced, wherever it stands and in any case,
// by the same text with NEWLINE_REPLACEMENT for each line feed.
void protectLineFeeds(std::u16string &text, std::u16string_view pattern) {
  for (const std::u16string &capture : ns::componentsMatchedByRegex(text, pattern, 1)) {
    std::u16string protectedText = capture;
    detail::replaceAllOccurrences(protectedText, u"\n", NEWLINE_REPLACEMENT);
    text = ns::stringByReplacingOccurrencesOfRegex(
        text, ns::RegularExpression::escapedPatternForString(capture),
        ns::RegularExpression::escapedTemplateForString(protectedText), ns::RKLCaseless);
  }
}

std::u16string titleKey(std::u16string_view directive) {
  std::u16string key = ns::lowercaseString(directive);
  if (key == u"author" || key == u"author(s)")
    key = u"authors";
  return key;
}

std::optional<std::u16string> readFile(std::u16string_view path) {
  std::optional<ns::Data> bytes = ns::FileManager::defaultManager()->contentsAtPath(path);
  if (!bytes)
    return std::nullopt;
  return ns::stringWithData(*bytes, nullptr);
}

// The length of the first block of `text` (which starts with no line feed), up to and
// including the first of two line feeds, when that block is a title page.
std::optional<size_t> titlePageLength(std::u16string_view text) {
  size_t blank = text.find(u"\n\n");
  if (blank == std::u16string_view::npos)
    return std::nullopt;
  std::u16string stretch(text.substr(0, blank + 1));
  stretch += u'\n';
  if (!ns::isMatchedByRegex(stretch, TITLE_PAGE_PATTERN))
    return std::nullopt;
  return blank + 1;
}

std::u16string_view withoutLeadingLineFeeds(std::u16string_view text) {
  return text.substr(std::min(text.find_first_not_of(u'\n'), text.size()));
}

} // namespace

std::u16string FountainParser::bodyOfString(std::u16string_view string) {
  std::u16string_view body = withoutLeadingLineFeeds(string);
  if (std::optional<size_t> length = titlePageLength(body))
    body.remove_prefix(*length);
  std::u16string result;
  result.reserve(body.size() + 4);
  result += u"\n\n";
  result += body;
  result += u"\n\n";
  return result;
}

std::u16string FountainParser::titlePageOfString(std::u16string_view string) {
  std::u16string_view text = withoutLeadingLineFeeds(string);
  std::optional<size_t> length = titlePageLength(text);
  if (!length)
    return u"";
  // The block ends in one line feed and starts with none, so trimming "\n+" leaves this.
  std::u16string_view block = text.substr(0, *length);
  while (!block.empty() && block.back() == u'\n')
    block.remove_suffix(1);
  return std::u16string(block);
}

FNElementArray FountainParser::parseBodyOfString(std::u16string_view string) {
  std::u16string text = bodyOfString(string);
  protectLineFeeds(text, BLOCK_COMMENT_PATTERN);
  protectLineFeeds(text, BRACKET_COMMENT_PATTERN);
  // Free the angle brackets for the tags; the ellipsis would read as forced scene headings.
  text = replacingIgnoringCase(text, u"<", u"&lt;");
  text = replacingIgnoringCase(text, u">", u"&gt;");
  text = replacingIgnoringCase(text, u"...", u"::trip::");

  for (const Rewrite &rewrite : Rewrites)
    text = ns::stringByReplacingOccurrencesOfRegex(text, rewrite.pattern, rewrite.replacement);

  FNElementArray elements;
  auto tags = ns::RegularExpression::cached(TagPattern);
  if (!tags)
    return elements;
  for (const ns::TextCheckingResult &match : tags->matchesInString(text)) {
    std::u16string type(match.substring(text, 1));
    std::u16string elementText(match.substring(text, 2));
    elementText = replacingIgnoringCase(elementText, u"&lt;", u"<");
    elementText = replacingIgnoringCase(elementText, u"&gt;", u">");
    elementText = replacingIgnoringCase(elementText, u"::trip::", u"...");

    auto element = std::make_shared<FNElement>();
    if (type == FNElementTypeSceneHeading) {
      std::vector<std::u16string> number =
          ns::captureComponentsMatchedByRegex(elementText, SCENE_NUMBER_PATTERN, ns::RKLCaseless);
      if (!number.empty()) {
        element->setSceneNumber(number[2]);
        detail::replaceAllOccurrences(elementText, number[1], u"");
      }
    }
    element->setElementType(type);
    element->setElementText(std::u16string(detail::trimmedBy(elementText, detail::isNewline)));

    if (ns::isMatchedByRegex(element->elementText(), CENTERED_TEXT_PATTERN)) {
      element->setIsCentered(true);
      std::optional<std::u16string> inner =
          ns::stringByMatching(element->elementText(), uR"((>?)\s*([^<>\n]*)\s*(<?))", 2);
      element->setElementText(std::u16string(detail::trimmedBlanks(inner.value_or(u""))));
    }
    if (type == FNElementTypeSceneHeading) {
      std::optional<std::u16string> heading =
          ns::stringByMatching(element->elementText(), uR"(^\.?(.+))", 1);
      if (heading)
        element->setElementText(std::move(*heading));
    }
    if (type == FNElementTypeSectionHeading) {
      std::vector<std::u16string> section =
          ns::captureComponentsMatchedByRegex(element->elementText(), SECTION_HEADER_PATTERN);
      if (!section.empty()) {
        element->setSectionDepth(section[2].size());
        element->setElementText(section[3]);
      }
    }
    // A cue marked "^" pairs with the cue before it, across that cue's dialogue only.
    if (elements.size() >= 2 && type == FNElementTypeCharacter &&
        ns::isMatchedByRegex(element->elementText(), DUAL_DIALOGUE_PATTERN)) {
      element->setIsDualDialogue(true);
      element->setElementText(
          ns::stringByReplacingOccurrencesOfRegex(element->elementText(), uR"(\s*\^$)", u""));
      for (size_t j = elements.size(); j-- > 0;) {
        FNElement &earlier = *elements[j];
        if (earlier.elementType() == FNElementTypeCharacter) {
          earlier.setIsDualDialogue(true);
          std::u16string cue = earlier.elementText();
          detail::replaceAllOccurrences(cue, u"^", u"");
          earlier.setElementText(std::move(cue));
        }
        if (earlier.elementType() != FNElementTypeDialogue &&
            earlier.elementType() != FNElementTypeParenthetical)
          break;
      }
    }
    elements.push_back(std::move(element));
  }
  return elements;
}

std::optional<FNElementArray> FountainParser::parseBodyOfFile(std::u16string_view path) {
  std::optional<std::u16string> text = readFile(path);
  if (!text)
    return std::nullopt;
  return parseBodyOfString(*text);
}

ns::ArrayPtr FountainParser::parseTitlePageOfString(std::u16string_view string) {
  ns::ArrayPtr result = ns::Array::create();
  std::u16string titlePage = titlePageOfString(string);
  std::optional<std::u16string> currentKey;
  ns::ArrayPtr data = ns::Array::create();
  auto addCurrent = [&] {
    result->addObject(ns::Dictionary::create({{*currentKey, ns::Value(data)}}));
  };

  size_t lineStart = 0;
  while (lineStart <= titlePage.size()) {
    size_t lineEnd = std::min(titlePage.find(u'\n', lineStart), titlePage.size());
    std::u16string_view line(titlePage.data() + lineStart, lineEnd - lineStart);
    lineStart = lineEnd + 1;

    std::vector<std::u16string> captures =
        ns::captureComponentsMatchedByRegex(line, INLINE_DIRECTIVE_PATTERN);
    if (!captures.empty()) {
      if (currentKey && !data->empty()) {
        addCurrent();
        data = ns::Array::create();
      }
      result->addObject(ns::Dictionary::create(
          {{titleKey(captures[1]), ns::Value(ns::Array::create({ns::Value(captures[2])}))}}));
      currentKey.reset();
      continue;
    }
    captures = ns::captureComponentsMatchedByRegex(line, MULTI_LINE_DIRECTIVE_PATTERN);
    if (!captures.empty()) {
      if (currentKey && !data->empty())
        addCurrent();
      currentKey = titleKey(captures[1]);
      data = ns::Array::create();
      continue;
    }
    if (std::optional<std::u16string> value =
            ns::stringByMatching(line, MULTI_LINE_DATA_PATTERN, ns::RKLNoOptions, std::nullopt, 2))
      data->addObject(ns::Value(std::move(*value)));
  }
  if (currentKey && !data->empty())
    addCurrent();
  return result;
}

ns::ArrayPtr FountainParser::parseTitlePageOfFile(std::u16string_view path) {
  std::optional<std::u16string> text = readFile(path);
  if (!text)
    return nullptr;
  return parseTitlePageOfString(*text);
}

} // namespace vl
