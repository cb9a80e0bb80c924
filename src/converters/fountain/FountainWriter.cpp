// Printing a Fountain script: title page, body and the whole document.
#include "converters/fountain/FountainWriter.h"

#include "converters/fountain/FountainParser.h"
#include "converters/fountain/FountainText.h"
#include "ns/Array.h"
#include "ns/Dictionary.h"
#include "ns/RegularExpression.h"
#include "ns/String.h"

#include <optional>
#include <string_view>
#include <vector>

namespace vl {

namespace {

// What the platform prints for a nil string in a format.
constexpr std::u16string_view NilText = u"(null)";

bool isBlankText(std::u16string_view text) {
  for (char16_t c : text)
    if (!detail::isPatternSpace(c))
      return false;
  return true;
}

// The key with its first character (a whole code point) in upper case.
std::u16string displayNameForKey(std::u16string_view key) {
  if (key.empty())
    return {};
  size_t first = (key.size() > 1 && key[0] >= 0xD800 && key[0] <= 0xDBFF) ? 2 : 1;
  std::u16string name = ns::uppercaseString(key.substr(0, first));
  name.append(key.substr(first));
  return name;
}

// The strings of a title page value: an array's entries, or a single string.
std::vector<std::u16string> titlePageLines(const ns::Value &value) {
  std::vector<std::u16string> lines;
  if (ns::ArrayPtr array = value.array()) {
    for (const ns::Value &line : *array)
      if (!line.isNil())
        lines.push_back(line.isString() ? line.string() : line.stringValue());
  } else if (value.isString()) {
    lines.push_back(value.string());
  }
  return lines;
}

// The line of a scene heading: forced when the pattern would not see a heading in it, then
// its number.
std::u16string sceneHeadingLine(const FNElement &element, bool suppressSceneNumbers) {
  const std::u16string &text = element.elementText();
  std::u16string probe;
  probe.reserve(text.size() + 2);
  probe.append(u"\n").append(text).append(u"\n");
  std::u16string line;
  if (!ns::isMatchedByRegex(probe, SCENE_HEADER_PATTERN))
    line.append(u".");
  line.append(text);
  if (!suppressSceneNumbers && element.sceneNumber())
    line.append(u" #").append(*element.sceneNumber()).append(u"#");
  return line;
}

// The line of an element before centring and dual marks; nullopt where the platform's
// format would meet a nil string.
std::optional<std::u16string> lineForElement(const FNElement &element, bool suppressSceneNumbers) {
  const std::u16string &type = element.elementType();
  const std::u16string &text = element.elementText();
  if (type == FNElementTypeComment)
    return u"\n[[" + text + u"]]";
  if (type == u"Boneyard")
    return u"/*" + text + u"*/";
  if (type == FNElementTypeSynopsis)
    return u"=" + text;
  if (type == FNElementTypeSceneHeading)
    return sceneHeadingLine(element, suppressSceneNumbers);
  if (type == FNElementTypePageBreak)
    return u"====";
  if (type == FNElementTypeSectionHeading)
    return std::u16string(element.sectionDepth(), u'#') + text;
  if (type == FNElementTypeTransition) {
    // The pattern wants a line feed on both sides, so only text of several lines can match.
    if (text.find(u'\n') != std::u16string::npos && ns::isMatchedByRegex(text, TRANSITION_PATTERN))
      return std::nullopt;
    return u"> " + text;
  }
  return text;
}

} // namespace

std::u16string FountainWriter::documentFromScript(const FNScript &script) {
  std::u16string body = bodyFromScript(script);
  std::u16string titlePage = titlePageFromScript(script);
  std::u16string document;
  document.reserve(titlePage.size() + body.size() + 1);
  if (!titlePage.empty())
    document.append(titlePage).append(u"\n");
  if (!body.empty())
    document.append(body);
  std::u16string_view trimmed = detail::trimmedBy(document, detail::isNewline);
  if (trimmed.size() == document.size())
    return document;
  return std::u16string(trimmed);
}

std::u16string FountainWriter::titlePageFromScript(const FNScript &script) {
  std::u16string result;
  for (const ns::Value &entry : *script.titlePage()) {
    ns::DictionaryPtr dictionary = entry.dictionary();
    if (!dictionary)
      continue;
    for (const auto &[key, value] : *dictionary) {
      std::u16string name = displayNameForKey(key);
      std::vector<std::u16string> lines = titlePageLines(value);
      if (lines.size() == 1) {
        if (key == u"authors")
          name = u"Author";
        result.append(name).append(u": ").append(lines.front()).append(u"\n");
      } else {
        result.append(name).append(u":\n");
        for (const std::u16string &line : lines)
          result.append(u"\t").append(line).append(u"\n");
      }
    }
  }
  return result;
}

std::u16string FountainWriter::bodyFromScript(const FNScript &script) {
  std::u16string body;
  size_t expected = 0;
  for (const FNElementPtr &element : script.elements())
    expected += element ? element->elementText().size() + 8 : 0;
  body.reserve(expected);

  int dualCues = 0;
  for (const FNElementPtr &element : script.elements()) {
    if (!element)
      continue;
    const std::u16string &type = element->elementType();
    if (type != FNElementTypePageBreak && isBlankText(element->elementText()))
      continue;
    std::optional<std::u16string> line = lineForElement(*element, script.suppressSceneNumbers());
    if (element->isCentered()) {
      std::u16string_view shown = line ? std::u16string_view(*line) : NilText;
      bool endsInBlank = line && ns::isMatchedByRegex(*line, u"[ ]$");
      line = u"> " + std::u16string(shown) + (endsInBlank ? u"<" : u" <");
    }
    if (type == FNElementTypeCharacter && element->isDualDialogue() && ++dualCues == 2) {
      // Of a pair of cues only the second carries the mark.
      line = (line ? *line : std::u16string(NilText)) + u" ^";
      dualCues = 0;
    }
    std::u16string_view shown = line ? std::u16string_view(*line) : NilText;
    if (type == FNElementTypeDialogue || type == FNElementTypeParenthetical ||
        type == FNElementTypeComment)
      body.append(shown).append(u"\n");
    else
      body.append(u"\n").append(shown).append(u"\n");
  }
  return body;
}

} // namespace vl
