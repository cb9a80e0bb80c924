// Ranges of UTF-16 positions, the platform's NSRange and its helper functions.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vl::ns {

/// The location of something that is absent.
inline constexpr uint64_t NotFound = 0x7fffffffffffffffULL;

/// A location and a length, both in UTF-16 units.
struct Range {
  uint64_t location = 0;
  uint64_t length = 0;

  constexpr uint64_t max() const { return location + length; }
  constexpr bool contains(uint64_t index) const { return index >= location && index < max(); }
  constexpr bool empty() const { return length == 0; }
  constexpr bool operator==(const Range &) const = default;
};

constexpr Range MakeRange(uint64_t location, uint64_t length) {
  return Range{location, length};
}
constexpr uint64_t MaxRange(Range r) {
  return r.max();
}
constexpr bool LocationInRange(uint64_t index, Range r) {
  return r.contains(index);
}
constexpr bool EqualRanges(Range a, Range b) {
  return a == b;
}

/// The common part of two ranges; {0, 0} when they do not meet (as the platform answers).
constexpr Range IntersectionRange(Range a, Range b) {
  uint64_t start = std::max(a.location, b.location);
  uint64_t end = std::min(a.max(), b.max());
  if (end <= start)
    return Range{0, 0};
  return Range{start, end - start};
}

/// The smallest range holding both.
constexpr Range UnionRange(Range a, Range b) {
  uint64_t start = std::min(a.location, b.location);
  uint64_t end = std::max(a.max(), b.max());
  return Range{start, end - start};
}

/// "{location, length}", the form ranges take inside dictionaries.
std::u16string StringFromRange(Range range);

/// Reads the first two unsigned integers in the text, as the platform does: "{3, 4}" and
/// "3 4" give {3, 4}; missing numbers read as 0.
Range RangeFromString(std::u16string_view text);

} // namespace vl::ns
