// Ranges of UTF-16 positions.
#include "ns/Range.h"

namespace vl::ns {

std::u16string StringFromRange(Range range) {
  std::string s = "{";
  s += std::to_string(range.location);
  s += ", ";
  s += std::to_string(range.length);
  s += '}';
  return std::u16string(s.begin(), s.end());
}

Range RangeFromString(std::u16string_view text) {
  uint64_t numbers[2] = {0, 0};
  size_t found = 0;
  size_t i = 0;
  while (found < 2 && i < text.size()) {
    if (text[i] >= u'0' && text[i] <= u'9') {
      uint64_t value = 0;
      while (i < text.size() && text[i] >= u'0' && text[i] <= u'9') {
        value = value * 10 + static_cast<uint64_t>(text[i] - u'0');
        ++i;
      }
      numbers[found++] = value;
    } else {
      ++i;
    }
  }
  return Range{numbers[0], numbers[1]};
}

} // namespace vl::ns
