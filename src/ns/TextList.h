// TextList: one level of a list in a paragraph: a marker format, options and the markers
// it gives each item number.
#pragma once

#include "ns/KeyedArchiver.h"
#include "ns/Object.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl::ns {

class TextList;
using TextListPtr = std::shared_ptr<TextList>;

/// Bits of TextList::listOptions.
enum TextListOptions : uint64_t {
  /// The marker of a nested item shows the markers of the levels around it too.
  TextListPrependEnclosingMarker = 1,
};

/// A list level, compared by value (format, options, starting number).
///
/// A marker format is a prefix, a keyword in braces and a suffix: "({lower-alpha})" gives
/// "(a)", "(b)", ... The keywords are:
/// - numbers: "decimal"; "lower-roman", "upper-roman" (1 to 3999; other numbers are written
///   in decimal); "lower-alpha"/"lower-latin", "upper-alpha"/"upper-latin" (a..z, then aa,
///   ab, ..., az, ba: bijective base 26; 0 and negative numbers are written in decimal);
///   "octal", "lower-hexadecimal", "upper-hexadecimal" (a negative number gets a minus sign);
/// - bullets, the same for every item: "disc" U+2022, "circle" U+25E6, "square" U+25AA,
///   "hyphen" U+2043, "box" U+25AB (the small white square the list styles use for it),
///   "check" U+2713, "diamond" U+25C6.
/// A format without braces is its own marker, whatever the number. An unknown keyword, or a
/// "{" without a "}", gives prefix and suffix alone: the braces and what they hold vanish.
/// Keywords are matched exactly (case and blanks count).
///
/// Keyed coding keys: "markerFormat" (string), "listOptions" (integer), "startingItemNumber"
/// (integer).
class TextList : public Object, public Coding {
public:
  /// An empty format (no marker), no options, starting at 1.
  TextList() = default;
  TextList(std::u16string markerFormat, uint64_t options);
  /// initWithMarkerFormat:options:.
  static TextListPtr create(std::u16string markerFormat, uint64_t options = 0);

  VL_OBJECT(NSTextList)

  const std::u16string &markerFormat() const { return markerFormat_; }
  uint64_t listOptions() const { return listOptions_; }
  /// The number of the list's first item; 1 unless set.
  int64_t startingItemNumber() const { return startingItemNumber_; }
  void setStartingItemNumber(int64_t number) { startingItemNumber_ = number; }

  /// The marker of item `number` (the prefix and suffix of the format around it; see the
  /// class comment). Costs a scan of the format and the digits of the number.
  std::u16string markerForItemNumber(int64_t number) const;

  bool isEqual(const Object &other) const override;
  size_t hash() const override;
  std::u16string description() const override;
  ObjectPtr copy() const override;

  void encodeWithCoder(KeyedArchiver &coder) const override;
  void initWithCoder(KeyedUnarchiver &coder) override;

private:
  std::u16string markerFormat_;
  uint64_t listOptions_ = 0;
  int64_t startingItemNumber_ = 1;
};

/// The marker text of `number` for one keyword of a marker format ("decimal" and 3 give
/// "3"), or nullopt for a keyword that is not one of the list keywords.
std::optional<std::u16string> markerForKeyword(std::u16string_view keyword, int64_t number);

} // namespace vl::ns
