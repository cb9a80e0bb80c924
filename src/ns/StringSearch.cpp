// Searching, prefixes, replacing and splitting of UTF-16 text.
#include "ns/String.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>

namespace vl::ns {

int foldCodePoint(char32_t c, char16_t out[4]) {
  if (c < 0x80) {
    out[0] = static_cast<char16_t>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    return 1;
  }
  if (c > 0x10FFFF)
    c = 0xFFFD;
  char16_t source[2];
  int32_t n = 0;
  U16_APPEND_UNSAFE(source, n, static_cast<UChar32>(c));
  UErrorCode status = U_ZERO_ERROR;
  int32_t m = u_strFoldCase(out, 4, source, n, U_FOLD_CASE_DEFAULT, &status);
  if (U_FAILURE(status) || m <= 0 || m > 4) {
    std::copy(source, source + n, out);
    return n;
  }
  return m;
}

namespace {

std::u16string foldCase(std::u16string_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    UChar32 c;
    U16_NEXT(text.data(), i, text.size(), c);
    char16_t buffer[4];
    out.append(buffer, static_cast<size_t>(foldCodePoint(c, buffer)));
  }
  return out;
}

// The length in `hay` of a caseless match of the folded needle that starts at `i`, or
// NotFound. A match covers whole code points of the original text: "ß" matches "ss" but
// "s" does not match half of it.
uint64_t foldedMatchAt(std::u16string_view hay, size_t i, std::u16string_view folded) {
  size_t k = 0, j = i;
  while (k < folded.size()) {
    if (j >= hay.size())
      return NotFound;
    UChar32 c;
    U16_NEXT(hay.data(), j, hay.size(), c);
    char16_t buffer[4];
    size_t n = static_cast<size_t>(foldCodePoint(c, buffer));
    if (k + n > folded.size() || !std::equal(buffer, buffer + n, folded.begin() + k))
      return NotFound;
    k += n;
  }
  return j - i;
}

bool startsCodePoint(std::u16string_view text, size_t i) {
  return i == 0 || i >= text.size() || !U16_IS_TRAIL(text[i]) || !U16_IS_LEAD(text[i - 1]);
}

// A caseless search inside `hay`, answering a range relative to it.
Range caselessSearch(std::u16string_view hay, std::u16string_view needle, uint32_t options) {
  std::u16string folded = foldCase(needle);
  bool backwards = options & BackwardsSearch, anchored = options & AnchoredSearch;
  if (!backwards) {
    size_t last = anchored ? 0 : hay.size();
    for (size_t i = 0; i <= last && i < hay.size(); ++i) {
      if (!startsCodePoint(hay, i))
        continue;
      uint64_t n = foldedMatchAt(hay, i, folded);
      if (n != NotFound)
        return Range{i, n};
    }
    return Range{NotFound, 0};
  }
  // Each code point folds to at least one unit and spans at most two, which bounds how far
  // back a match anchored at the end can start.
  size_t lowest = 0;
  if (anchored && hay.size() > 2 * folded.size())
    lowest = hay.size() - 2 * folded.size();
  for (size_t i = hay.size(); i-- > lowest;) {
    if (!startsCodePoint(hay, i))
      continue;
    uint64_t n = foldedMatchAt(hay, i, folded);
    if (n != NotFound && (!anchored || i + n == hay.size()))
      return Range{i, n};
  }
  return Range{NotFound, 0};
}

Range literalSearch(std::u16string_view hay, std::u16string_view needle, uint32_t options) {
  bool backwards = options & BackwardsSearch, anchored = options & AnchoredSearch;
  size_t at = std::u16string_view::npos;
  if (anchored) {
    if (needle.size() <= hay.size()) {
      size_t candidate = backwards ? hay.size() - needle.size() : 0;
      if (hay.compare(candidate, needle.size(), needle) == 0)
        at = candidate;
    }
  } else {
    at = backwards ? hay.rfind(needle) : hay.find(needle);
  }
  if (at == std::u16string_view::npos)
    return Range{NotFound, 0};
  return Range{at, needle.size()};
}
} // namespace

Range rangeOfString(std::u16string_view text, std::u16string_view needle, uint32_t options,
                    std::optional<Range> range) {
  Range r = range.value_or(Range{0, text.size()});
  if (needle.empty() || r.location > text.size())
    return Range{NotFound, 0};
  r.length = std::min<uint64_t>(r.length, text.size() - r.location);
  std::u16string_view hay = text.substr(r.location, r.length);
  Range found = (options & CaseInsensitiveSearch) ? caselessSearch(hay, needle, options)
                                                  : literalSearch(hay, needle, options);
  if (found.location != NotFound)
    found.location += r.location;
  return found;
}

bool hasPrefix(std::u16string_view text, std::u16string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

bool hasSuffix(std::u16string_view text, std::u16string_view suffix) {
  return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

std::u16string stringByReplacingOccurrencesOfString(std::u16string_view text,
                                                    std::u16string_view target,
                                                    std::u16string_view replacement) {
  if (target.empty())
    return std::u16string(text);
  std::u16string out;
  size_t from = 0;
  for (size_t at; (at = text.find(target, from)) != std::u16string_view::npos;
       from = at + target.size()) {
    out.append(text.substr(from, at - from));
    out.append(replacement);
  }
  out.append(text.substr(from));
  return out;
}

std::vector<std::u16string> componentsSeparatedByString(std::u16string_view text,
                                                        std::u16string_view separator) {
  std::vector<std::u16string> parts;
  if (separator.empty()) {
    parts.emplace_back(text);
    return parts;
  }
  size_t from = 0;
  for (size_t at; (at = text.find(separator, from)) != std::u16string_view::npos;
       from = at + separator.size())
    parts.emplace_back(text.substr(from, at - from));
  parts.emplace_back(text.substr(from));
  return parts;
}

std::vector<std::u16string> componentsSeparatedByCharactersInSet(std::u16string_view text,
                                                                 const CharacterSet &separators) {
  std::vector<std::u16string> parts;
  size_t from = 0;
  for (size_t i = 0; i < text.size();) {
    size_t at = i;
    UChar32 c;
    U16_NEXT(text.data(), i, text.size(), c);
    if (separators.characterIsMember(static_cast<char32_t>(c))) {
      parts.emplace_back(text.substr(from, at - from));
      from = i;
    }
  }
  parts.emplace_back(text.substr(from));
  return parts;
}

} // namespace vl::ns
