// Character classes and small text helpers shared by the two Fountain parsers.
#pragma once

#include <string>
#include <string_view>

namespace vl::detail {

/// "\s" of the parsers' patterns: the Unicode White_Space property (none lies above U+FFFF).
constexpr bool isPatternSpace(char16_t c) {
  return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

/// The white space that trimming removes: tab and the space separators (Zs).
constexpr bool isBlank(char16_t c) {
  return c == 0x09 || c == 0x20 || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) ||
         c == 0x202F || c == 0x205F || c == 0x3000;
}

/// The newline set that splits lines: LF, VT, FF, CR, NEL, LS, PS.
constexpr bool isNewline(char16_t c) {
  return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

/// `text` without the leading and trailing units for which `drop` holds.
template <class Predicate> std::u16string_view trimmedBy(std::u16string_view text, Predicate drop) {
  size_t start = 0, end = text.size();
  while (start < end && drop(text[start]))
    ++start;
  while (end > start && drop(text[end - 1]))
    --end;
  return text.substr(start, end - start);
}

/// `text` trimmed of white space (isBlank) at both ends.
inline std::u16string_view trimmedBlanks(std::u16string_view text) {
  return trimmedBy(text, isBlank);
}

/// Replaces every occurrence of `target` (leftmost first, not overlapping) by `replacement`.
/// Linear in the text and the target whatever their content; an empty target changes nothing.
void replaceAllOccurrences(std::u16string &text, std::u16string_view target,
                           std::u16string_view replacement);

} // namespace vl::detail
