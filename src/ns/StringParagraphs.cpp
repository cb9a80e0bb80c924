// Paragraph and line bounds: the ranges a position or range lies in, found by looking only
// at the paragraphs (lines) concerned, so an edit in a long text costs what it touches.
#include "ns/String.h"

namespace vl::ns {

namespace {
bool isLineSeparator(char16_t c) {
  return isParagraphSeparator(c) || c == u'\u2028' || c == u'\u0085';
}

template <bool (*IsSeparator)(char16_t)>
void getBounds(std::u16string_view text, uint64_t *start, uint64_t *end, uint64_t *contentsEnd,
               Range range) {
  const size_t length = text.size();
  size_t location = std::min<uint64_t>(range.location, length);
  size_t rangeEnd = location + std::min<uint64_t>(range.length, length - location);
  // The LF of a CRLF belongs to the paragraph that the CR ends.
  auto insideCRLF = [&](size_t i) {
    return i > 0 && i < length && text[i] == u'\n' && text[i - 1] == u'\r';
  };

  if (start) {
    size_t i = insideCRLF(location) ? location - 1 : location;
    while (i > 0 && !IsSeparator(text[i - 1]))
      --i;
    *start = i;
  }
  if (end || contentsEnd) {
    // The paragraph of the range's last unit, or of its location when it is empty: a range
    // that ends just after a terminator does not reach into the next paragraph.
    size_t last = rangeEnd > location ? rangeEnd - 1 : location;
    size_t terminatorStart, terminatorEnd;
    if (insideCRLF(last)) {
      terminatorStart = last - 1;
      terminatorEnd = last + 1;
    } else {
      size_t i = last;
      while (i < length && !IsSeparator(text[i]))
        ++i;
      terminatorStart = i;
      terminatorEnd = i;
      if (i < length) {
        terminatorEnd = i + 1;
        if (text[i] == u'\r' && i + 1 < length && text[i + 1] == u'\n')
          terminatorEnd = i + 2;
      }
    }
    if (end)
      *end = terminatorEnd;
    if (contentsEnd)
      *contentsEnd = terminatorStart;
  }
}
} // namespace

void getParagraphStart(std::u16string_view text, uint64_t *start, uint64_t *end,
                       uint64_t *contentsEnd, Range range) {
  getBounds<isParagraphSeparator>(text, start, end, contentsEnd, range);
}

Range paragraphRangeForRange(std::u16string_view text, Range range) {
  uint64_t start = 0, end = 0;
  getParagraphStart(text, &start, &end, nullptr, range);
  return Range{start, end - start};
}

void getLineStart(std::u16string_view text, uint64_t *start, uint64_t *end, uint64_t *contentsEnd,
                  Range range) {
  getBounds<isLineSeparator>(text, start, end, contentsEnd, range);
}

Range lineRangeForRange(std::u16string_view text, Range range) {
  uint64_t start = 0, end = 0;
  getLineStart(text, &start, &end, nullptr, range);
  return Range{start, end - start};
}

} // namespace vl::ns
