// Scanner: numbers and strings read off a text from a moving location.
#include "ns/Scanner.h"

#include <unicode/utf16.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace vl::ns {

namespace {
bool isDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

int hexDigit(char16_t c) {
  if (c >= u'0' && c <= u'9')
    return c - u'0';
  if (c >= u'a' && c <= u'f')
    return c - u'a' + 10;
  if (c >= u'A' && c <= u'F')
    return c - u'A' + 10;
  return -1;
}

// A sign and magnitude as a long long, clamped to its limits.
long long toLongLong(bool negative, uint64_t magnitude, bool overflow) {
  constexpr uint64_t max = static_cast<uint64_t>(std::numeric_limits<long long>::max());
  if (negative) {
    if (overflow || magnitude > max + 1)
      return std::numeric_limits<long long>::min();
    return magnitude == max + 1 ? std::numeric_limits<long long>::min()
                                : -static_cast<long long>(magnitude);
  }
  return overflow || magnitude > max ? std::numeric_limits<long long>::max()
                                     : static_cast<long long>(magnitude);
}
} // namespace

Scanner::Scanner(std::u16string string)
    : string_(std::move(string)),
      // Shares the process-wide set without owning it.
      skipped_(std::shared_ptr<const CharacterSet>(
          std::shared_ptr<void>(), &CharacterSet::whitespaceAndNewlineCharacterSet())) {}

void Scanner::setScanLocation(uint64_t location) {
  location_ = static_cast<size_t>(std::min<uint64_t>(location, string_.size()));
}

void Scanner::setCharactersToBeSkipped(const CharacterSet *set) {
  skipped_ = set ? std::make_shared<const CharacterSet>(*set) : nullptr;
}

uint32_t Scanner::caselessOption() const {
  return caseSensitive_ ? 0u : uint32_t{CaseInsensitiveSearch};
}

size_t Scanner::span(size_t from, const CharacterSet &set, bool members) const {
  size_t i = from;
  while (i < string_.size()) {
    size_t next = i;
    UChar32 c;
    U16_NEXT(string_.data(), next, string_.size(), c);
    if (set.characterIsMember(static_cast<char32_t>(c)) != members)
      break;
    i = next;
  }
  return i;
}

size_t Scanner::afterSkipping() const {
  return skipped_ ? span(location_, *skipped_, true) : location_;
}

bool Scanner::take(size_t start, size_t end, std::u16string *into) {
  if (end == start)
    return false;
  if (into)
    *into = string_.substr(start, end - start);
  location_ = end;
  return true;
}

bool Scanner::isAtEnd() const {
  return afterSkipping() >= string_.size();
}

size_t Scanner::readDecimal(size_t from, bool &negative, uint64_t &magnitude,
                            bool &overflow) const {
  size_t i = from;
  negative = false;
  if (i < string_.size() && (string_[i] == u'+' || string_[i] == u'-'))
    negative = string_[i++] == u'-';
  if (i >= string_.size() || !isDigit(string_[i]))
    return from;
  magnitude = 0;
  overflow = false;
  for (; i < string_.size() && isDigit(string_[i]); ++i) {
    uint64_t digit = static_cast<uint64_t>(string_[i] - u'0');
    if (magnitude > (std::numeric_limits<uint64_t>::max() - digit) / 10)
      overflow = true;
    else
      magnitude = magnitude * 10 + digit;
  }
  return i;
}

bool Scanner::scanLongLong(long long *result) {
  bool negative, overflow;
  uint64_t magnitude;
  size_t start = afterSkipping();
  size_t end = readDecimal(start, negative, magnitude, overflow);
  if (end == start)
    return false;
  if (result)
    *result = toLongLong(negative, magnitude, overflow);
  location_ = end;
  return true;
}

bool Scanner::scanInteger(int64_t *result) {
  long long value;
  if (!scanLongLong(&value))
    return false;
  if (result)
    *result = static_cast<int64_t>(value);
  return true;
}

bool Scanner::scanInt(int *result) {
  long long value;
  if (!scanLongLong(&value))
    return false;
  if (result)
    *result = static_cast<int>(std::clamp<long long>(value, std::numeric_limits<int>::min(),
                                                     std::numeric_limits<int>::max()));
  return true;
}

size_t Scanner::readHex(size_t from, uint64_t &value, bool &overflow) const {
  size_t i = from;
  if (i + 2 < string_.size() && string_[i] == u'0' &&
      (string_[i + 1] == u'x' || string_[i + 1] == u'X') && hexDigit(string_[i + 2]) >= 0)
    i += 2;
  if (i >= string_.size() || hexDigit(string_[i]) < 0)
    return from;
  value = 0;
  overflow = false;
  for (int d; i < string_.size() && (d = hexDigit(string_[i])) >= 0; ++i) {
    if (value >> 60)
      overflow = true;
    else
      value = value << 4 | static_cast<uint64_t>(d);
  }
  return i;
}

bool Scanner::scanHexLongLong(unsigned long long *result) {
  uint64_t value;
  bool overflow;
  size_t start = afterSkipping();
  size_t end = readHex(start, value, overflow);
  if (end == start)
    return false;
  if (result)
    *result = overflow ? std::numeric_limits<unsigned long long>::max() : value;
  location_ = end;
  return true;
}

bool Scanner::scanHexInt(unsigned *result) {
  unsigned long long value;
  if (!scanHexLongLong(&value))
    return false;
  if (result)
    *result = static_cast<unsigned>(
        std::min<unsigned long long>(value, std::numeric_limits<unsigned>::max()));
  return true;
}

bool Scanner::scanDouble(double *result) {
  const size_t start = afterSkipping();
  size_t i = start;
  std::string ascii;
  bool negative = false;
  if (i < string_.size() && (string_[i] == u'+' || string_[i] == u'-'))
    negative = string_[i++] == u'-';
  // The decimal magnitude (position of the first significant digit) tells an overflow
  // from an underflow when the value is out of range.
  int64_t magnitude = 0;
  bool significant = false;
  size_t digits = 0;
  for (; i < string_.size() && isDigit(string_[i]); ++i, ++digits) {
    significant = significant || string_[i] != u'0';
    magnitude += significant;
    ascii += static_cast<char>(string_[i]);
  }
  if (i < string_.size() && string_[i] == u'.') {
    size_t point = i++;
    std::string fraction = ".";
    for (; i < string_.size() && isDigit(string_[i]); ++i, ++digits) {
      if (!significant && string_[i] == u'0')
        --magnitude;
      significant = significant || string_[i] != u'0';
      fraction += static_cast<char>(string_[i]);
    }
    if (digits == 0)
      i = point;
    else
      ascii += fraction;
  }
  if (digits == 0)
    return false;
  if (i < string_.size() && (string_[i] == u'e' || string_[i] == u'E')) {
    size_t j = i + 1;
    std::string exponent = "e";
    if (j < string_.size() && (string_[j] == u'+' || string_[j] == u'-'))
      exponent += static_cast<char>(string_[j++]);
    size_t expStart = j;
    for (; j < string_.size() && isDigit(string_[j]); ++j)
      if (exponent.size() < 12) // beyond this the exponent overflows any double anyway
        exponent += static_cast<char>(string_[j]);
    if (j > expStart) {
      ascii += exponent;
      magnitude += std::strtoll(exponent.c_str() + 1, nullptr, 10);
      i = j;
    }
  }
  double value = 0;
  auto [ptr, ec] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
  (void)ptr;
  if (ec == std::errc::result_out_of_range)
    value = magnitude > 0 ? HUGE_VAL : 0.0;
  if (result)
    *result = negative ? -value : value;
  location_ = i;
  return true;
}

bool Scanner::scanFloat(float *result) {
  double value;
  if (!scanDouble(&value))
    return false;
  if (result)
    *result = static_cast<float>(value);
  return true;
}

bool Scanner::scanString(std::u16string_view string, std::u16string *into) {
  size_t start = afterSkipping();
  if (string.empty())
    return false;
  Range found = rangeOfString(string_, string, AnchoredSearch | caselessOption(),
                              Range{start, string_.size() - start});
  return found.location != NotFound && take(start, found.max(), into);
}

bool Scanner::scanCharactersFromSet(const CharacterSet &set, std::u16string *into) {
  size_t start = afterSkipping();
  return take(start, span(start, set, true), into);
}

bool Scanner::scanUpToString(std::u16string_view string, std::u16string *into) {
  size_t start = afterSkipping();
  size_t end = string_.size();
  if (!string.empty()) {
    Range found =
        rangeOfString(string_, string, caselessOption(), Range{start, string_.size() - start});
    if (found.location != NotFound)
      end = found.location;
  }
  return take(start, end, into);
}

bool Scanner::scanUpToCharactersFromSet(const CharacterSet &set, std::u16string *into) {
  size_t start = afterSkipping();
  return take(start, span(start, set, false), into);
}

} // namespace vl::ns
