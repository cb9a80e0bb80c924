// Scanner: reads numbers and strings off a text from a moving location, as the platform's
// NSScanner does.
#pragma once

#include "ns/String.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace vl::ns {

/// Reads a text from its scan location onwards. Before each scan the characters to be
/// skipped (white space and newlines unless set otherwise) are passed over. A scan that
/// succeeds moves the location past what it read, the skipped characters included; a scan
/// that fails answers false, leaves its out argument alone and does not move the location.
/// Out arguments may be null. Each scan costs what it reads and skips.
class Scanner {
public:
  explicit Scanner(std::u16string string);

  const std::u16string &string() const { return string_; }
  uint64_t scanLocation() const { return location_; }
  /// Clamped to the text's length.
  void setScanLocation(uint64_t location);
  /// The set passed over before each scan, or null when nothing is skipped.
  const CharacterSet *charactersToBeSkipped() const { return skipped_.get(); }
  /// Copies the set; null skips nothing.
  void setCharactersToBeSkipped(const CharacterSet *set);
  /// Whether scanString and scanUpToString match case exactly; false by default.
  bool caseSensitive() const { return caseSensitive_; }
  void setCaseSensitive(bool caseSensitive) { caseSensitive_ = caseSensitive; }
  /// True when nothing but characters to be skipped remains.
  bool isAtEnd() const;

  /// An optional sign and decimal digits. A value out of range reads as the nearest limit
  /// of the type, and all its digits are consumed.
  bool scanInt(int *result);
  bool scanInteger(int64_t *result);
  bool scanLongLong(long long *result);
  /// Hexadecimal digits, after an optional "0x" or "0X"; too large reads as the maximum.
  bool scanHexInt(unsigned *result);
  bool scanHexLongLong(unsigned long long *result);
  /// An optional sign, digits with an optional "." and fraction (at least one digit in
  /// all), and an optional exponent that is taken only when digits follow its "e". A "."
  /// with no digit fails.
  bool scanDouble(double *result);
  bool scanFloat(float *result);
  /// The given string, compared as caseSensitive says.
  bool scanString(std::u16string_view string, std::u16string *into);
  /// The longest run of characters in the set; fails on an empty run.
  bool scanCharactersFromSet(const CharacterSet &set, std::u16string *into);
  /// Everything up to the next occurrence of the string, or to the end when there is none;
  /// fails when that is nothing.
  bool scanUpToString(std::u16string_view string, std::u16string *into);
  /// Everything up to the next character in the set, or to the end; fails on nothing.
  bool scanUpToCharactersFromSet(const CharacterSet &set, std::u16string *into);

private:
  // The end of the run from `from` of code points that are (or are not) in the set.
  size_t span(size_t from, const CharacterSet &set, bool members) const;
  size_t afterSkipping() const;
  // Moves to `end` and hands out what lies between, or fails on nothing.
  bool take(size_t start, size_t end, std::u16string *into);
  uint32_t caselessOption() const;
  // Reads sign and digits at `from` into a magnitude, saturating; answers the end or `from`.
  size_t readDecimal(size_t from, bool &negative, uint64_t &magnitude, bool &overflow) const;
  size_t readHex(size_t from, uint64_t &value, bool &overflow) const;

  std::u16string string_;
  size_t location_ = 0;
  std::shared_ptr<const CharacterSet> skipped_;
  bool caseSensitive_ = false;
};

} // namespace vl::ns
