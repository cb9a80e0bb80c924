// Case mapping and caseless comparison in the root locale, with ICU's full mappings.
#include "ns/Assert.h"
#include "ns/String.h"

#include <unicode/casemap.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

namespace vl::ns {

namespace {
int32_t length32(size_t n) {
  VL_ASSERT(n <= static_cast<size_t>(INT32_MAX), "String too long for case mapping");
  return static_cast<int32_t>(n);
}

// Runs an ICU mapping that may change the length, growing the output once if needed.
template <class Mapping> std::u16string mapWith(std::u16string_view text, Mapping &&map) {
  std::u16string out;
  if (text.empty())
    return out;
  out.resize(text.size() + 8);
  UErrorCode status = U_ZERO_ERROR;
  int32_t n = map(out.data(), length32(out.size()), text.data(), length32(text.size()), status);
  if (status == U_BUFFER_OVERFLOW_ERROR) {
    out.resize(static_cast<size_t>(n));
    status = U_ZERO_ERROR;
    n = map(out.data(), n, text.data(), length32(text.size()), status);
  }
  if (U_FAILURE(status))
    return std::u16string(text);
  out.resize(static_cast<size_t>(n));
  return out;
}

bool isWordCodePoint(UChar32 c) {
  return (U_GET_GC_MASK(c) & (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)) != 0;
}

bool isApostrophe(UChar32 c) {
  return c == u'\'' || c == 0x2019;
}
} // namespace

std::u16string uppercaseString(std::u16string_view text) {
  return mapWith(text,
                 [](char16_t *dest, int32_t cap, const char16_t *src, int32_t len,
                    UErrorCode &status) { return u_strToUpper(dest, cap, src, len, "", &status); });
}

std::u16string lowercaseString(std::u16string_view text) {
  return mapWith(text,
                 [](char16_t *dest, int32_t cap, const char16_t *src, int32_t len,
                    UErrorCode &status) { return u_strToLower(dest, cap, src, len, "", &status); });
}

// A word is a run of letters, marks and digits, with an apostrophe between letters kept
// inside ("don't"). Its first code point is title-cased even when it is a digit, so
// "3rd" stays "3rd"; everything else is lower-cased.
std::u16string capitalizedString(std::u16string_view text) {
  std::u16string out;
  out.reserve(text.size());
  size_t i = 0;
  while (i < text.size()) {
    size_t start = i;
    UChar32 c;
    U16_NEXT(text.data(), i, text.size(), c);
    bool word = isWordCodePoint(c);
    // Extend the run of the same kind.
    while (i < text.size()) {
      size_t next = i;
      UChar32 d;
      U16_NEXT(text.data(), next, text.size(), d);
      bool inWord = isWordCodePoint(d);
      if (word && !inWord && isApostrophe(d) && next < text.size()) {
        size_t after = next;
        UChar32 e;
        U16_NEXT(text.data(), after, text.size(), e);
        inWord = u_isalpha(e);
      }
      if (inWord != word)
        break;
      i = next;
    }
    std::u16string_view run = text.substr(start, i - start);
    if (word) {
      out += mapWith(run, [](char16_t *dest, int32_t cap, const char16_t *src, int32_t len,
                             UErrorCode &status) {
        return icu::CaseMap::toTitle("", U_TITLECASE_WHOLE_STRING | U_TITLECASE_NO_BREAK_ADJUSTMENT,
                                     nullptr, src, len, dest, cap, nullptr, status);
      });
    } else {
      out += lowercaseString(run);
    }
  }
  return out;
}

ComparisonResult caseInsensitiveCompare(std::u16string_view a, std::u16string_view b) {
  UErrorCode status = U_ZERO_ERROR;
  int32_t c = u_strCaseCompare(a.data(), length32(a.size()), b.data(), length32(b.size()),
                               U_FOLD_CASE_DEFAULT | U_COMPARE_CODE_POINT_ORDER, &status);
  if (U_FAILURE(status))
    return compare(a, b);
  return c < 0 ? OrderedAscending : (c > 0 ? OrderedDescending : OrderedSame);
}

} // namespace vl::ns
