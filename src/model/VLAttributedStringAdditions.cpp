// Word, outline, style and marker queries over attributed strings, each reading only the text
// it concerns.
#include "model/VLAttributedStringAdditions.h"

#include "model/VLConstants.h"
#include "ns/String.h"

#include <algorithm>
#include <unordered_set>

namespace vl {

namespace {

constexpr uint32_t WordOptions = ns::StringEnumerationByWords |
                                 ns::StringEnumerationSubstringNotRequired |
                                 ns::StringEnumerationLocalized;
// The first window a word search reads; it doubles until the answer is sure.
constexpr uint64_t FirstWindow = 256;
// Word breaks look a few units past a boundary, so a word this close to a window's cut
// edge may still change when the window grows.
constexpr uint64_t EdgeMargin = 8;

bool isNotFound(uint64_t location) {
  return location == ns::NotFound || location == 0xffffffffULL;
}

// The first (or, reversed, the last) word that the enumeration finds in `text`.
ns::Range firstEnumeratedWord(std::u16string_view text, uint32_t options) {
  ns::Range found{ns::NotFound, 0};
  ns::enumerateSubstringsInRange(text, ns::Range{0, text.size()}, options,
                                 [&](std::u16string_view, ns::Range word, ns::Range, bool &stop) {
                                   if (isNotFound(word.location))
                                     return;
                                   found = word;
                                   stop = true;
                                 });
  return found;
}

} // namespace

ns::Range wordRangeForCharRange(const ns::AttributedString &string, ns::Range range) {
  if (string.length() == 0)
    return range;
  uint64_t start = string.nextWordFromIndex(range.location, false);
  uint64_t end = string.nextWordFromIndex(range.max(), true);
  if (end == ns::NotFound)
    end = range.max();
  return ns::Range{start, end - start};
}

uint64_t wordsInRange(const ns::AttributedString &string, ns::Range range) {
  uint64_t n = string.length();
  uint64_t location = std::min(range.location, n);
  uint64_t length = std::min(range.length, n - location);
  if (length == 0)
    return 0;
  std::u16string text = string.substringWithRange(ns::Range{location, length});
  return ns::countWords(text, ns::Range{0, length});
}

std::optional<std::u16string> lastWordInRange(const ns::AttributedString &string, ns::Range range,
                                              ns::Range *wordRange) {
  std::u16string text = string.substringWithRange(range);
  std::optional<std::u16string> word;
  ns::Range found{ns::NotFound, 0};
  ns::enumerateSubstringsInRange(
      text, ns::Range{0, text.size()}, ns::StringEnumerationByWords | ns::StringEnumerationReverse,
      [&](std::u16string_view substring, ns::Range substringRange, ns::Range, bool &stop) {
        if (isNotFound(substringRange.location))
          return;
        word = std::u16string(substring);
        found = ns::Range{range.location + substringRange.location, substringRange.length};
        stop = true;
      });
  if (wordRange)
    *wordRange = found;
  return word;
}

ns::Range nextWordForwardFromLocation(const ns::AttributedString &string, uint64_t location) {
  const uint64_t n = string.length();
  if (location >= n)
    return ns::Range{ns::NotFound, 0};
  for (uint64_t size = FirstWindow;; size *= 2) {
    uint64_t end = size >= n - location ? n : location + size;
    std::u16string text = string.substringWithRange(ns::Range{location, end - location});
    ns::Range found = firstEnumeratedWord(text, WordOptions);
    if (found.location != ns::NotFound && (end == n || found.max() + EdgeMargin < text.size()))
      return ns::Range{location + found.location, found.length};
    if (end == n)
      return ns::Range{ns::NotFound, 0};
  }
}

ns::Range nextWordBackwardFromLocation(const ns::AttributedString &string, uint64_t location) {
  location = std::min(location, string.length());
  if (location == 0)
    return ns::Range{ns::NotFound, 0};
  for (uint64_t size = FirstWindow;; size *= 2) {
    uint64_t start = size >= location ? 0 : location - size;
    std::u16string text = string.substringWithRange(ns::Range{start, location - start});
    ns::Range found = firstEnumeratedWord(text, WordOptions | ns::StringEnumerationReverse);
    if (found.location != ns::NotFound && (start == 0 || found.location > EdgeMargin))
      return ns::Range{start + found.location, found.length};
    if (start == 0)
      return ns::Range{ns::NotFound, 0};
  }
}

std::vector<VLOutlinePtr> outlineEntriesInRange(const ns::AttributedString &string,
                                                ns::Range range) {
  std::vector<VLOutlinePtr> entries;
  string.enumerateAttribute(VLOutlineElementAttributeName, range, 0,
                            [&](const ns::Value &value, ns::Range run, bool &) {
                              if (auto entry = value.as<VLOutline>()) {
                                entry->setRange(run);
                                entries.push_back(std::move(entry));
                              }
                            });
  return entries;
}

std::vector<VLStylePtr> stylesInRange(const ns::AttributedString &string, ns::Range range) {
  std::vector<VLStylePtr> styles;
  if (range.location == ns::NotFound || range.location >= string.length())
    return styles;
  std::unordered_set<const VLStyle *> seen;
  string.enumerateAttribute(VLParagraphStyleAttributeName, range,
                            ns::AttributedStringEnumerationLongestEffectiveRangeNotRequired,
                            [&](const ns::Value &value, ns::Range, bool &) {
                              if (auto style = value.as<VLStyle>();
                                  style && seen.insert(style.get()).second)
                                styles.push_back(std::move(style));
                            });
  return styles;
}

ns::Range rangeOfMarker(const ns::AttributedString &string, const ns::ObjectPtr &marker) {
  ns::Range found{ns::NotFound, 0};
  if (!marker)
    return found;
  string.enumerateAttribute(VLSTextMarkerAttributeName, ns::Range{0, string.length()}, 0,
                            [&](const ns::Value &value, ns::Range run, bool &stop) {
                              if (value.object() == marker) {
                                found = run;
                                stop = true;
                              }
                            });
  return found;
}

} // namespace vl
