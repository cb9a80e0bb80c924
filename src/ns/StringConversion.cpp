// UTF-8 conversion, lenient number reading and the shortest form of reals.
#include "ns/String.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <charconv>
#include <cmath>
#include <cstdlib>

namespace vl::ns {

std::string toUTF8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    char32_t c = text[i++];
    if (U16_IS_LEAD(c) && i < text.size() && U16_IS_TRAIL(text[i])) {
      c = U16_GET_SUPPLEMENTARY(c, text[i]);
      ++i;
    } else if (U16_IS_SURROGATE(c)) {
      c = 0xFFFD;
    }
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

namespace {
// Decodes UTF-8; answers false at the first malformed sequence when strict.
bool decodeUTF8(std::string_view text, std::u16string &out, bool strict) {
  out.clear();
  out.reserve(text.size());
  const auto *s = reinterpret_cast<const uint8_t *>(text.data());
  int32_t length = static_cast<int32_t>(text.size());
  if (static_cast<size_t>(length) != text.size())
    return false;
  for (int32_t i = 0; i < length;) {
    UChar32 c;
    U8_NEXT(s, i, length, c);
    if (c < 0) {
      if (strict)
        return false;
      c = 0xFFFD;
    }
    if (c <= 0xFFFF) {
      out += static_cast<char16_t>(c);
    } else {
      out += static_cast<char16_t>(U16_LEAD(c));
      out += static_cast<char16_t>(U16_TRAIL(c));
    }
  }
  return true;
}
} // namespace

std::u16string fromUTF8(std::string_view text) {
  std::u16string out;
  decodeUTF8(text, out, false);
  return out;
}

bool fromUTF8Strict(std::string_view text, std::u16string &out) {
  std::u16string decoded;
  if (!decodeUTF8(text, decoded, true))
    return false;
  out = std::move(decoded);
  return true;
}

std::u16string u16(std::string_view ascii) {
  std::u16string out;
  out.reserve(ascii.size());
  for (char c : ascii)
    out += static_cast<char16_t>(static_cast<unsigned char>(c));
  return out;
}

ComparisonResult compare(std::u16string_view a, std::u16string_view b) {
  int c = a.compare(b);
  return c < 0 ? OrderedAscending : (c > 0 ? OrderedDescending : OrderedSame);
}

namespace {
bool isBlank(char16_t c) {
  return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f' || c == u'\v' ||
         c == 0xA0 || c == 0x2028 || c == 0x2029 || (c >= 0x2000 && c <= 0x200A) || c == 0x3000 ||
         c == 0x202F || c == 0x205F || c == 0x85;
}

// The leading number of `text` in ASCII, after blanks: sign, digits, and for reals a
// fraction and exponent.
std::string leadingNumber(std::u16string_view text, bool real) {
  size_t i = 0;
  while (i < text.size() && isBlank(text[i]))
    ++i;
  std::string out;
  if (i < text.size() && (text[i] == u'+' || text[i] == u'-'))
    out += static_cast<char>(text[i++]);
  size_t digits = 0;
  while (i < text.size() && text[i] >= u'0' && text[i] <= u'9') {
    out += static_cast<char>(text[i++]);
    ++digits;
  }
  if (!real)
    return digits ? out : std::string();
  if (i < text.size() && text[i] == u'.') {
    out += '.';
    ++i;
    while (i < text.size() && text[i] >= u'0' && text[i] <= u'9') {
      out += static_cast<char>(text[i++]);
      ++digits;
    }
  }
  if (!digits)
    return std::string();
  if (i < text.size() && (text[i] == u'e' || text[i] == u'E')) {
    size_t j = i + 1;
    std::string exponent = "e";
    if (j < text.size() && (text[j] == u'+' || text[j] == u'-'))
      exponent += static_cast<char>(text[j++]);
    size_t expDigits = 0;
    while (j < text.size() && text[j] >= u'0' && text[j] <= u'9') {
      exponent += static_cast<char>(text[j++]);
      ++expDigits;
    }
    if (expDigits)
      out += exponent;
  }
  return out;
}
} // namespace

int64_t integerValue(std::u16string_view text) {
  std::string n = leadingNumber(text, false);
  if (n.empty())
    return 0;
  errno = 0;
  long long v = std::strtoll(n.c_str(), nullptr, 10);
  return static_cast<int64_t>(v); // strtoll clamps on overflow, as the platform does
}

int intValue(std::u16string_view text) {
  int64_t v = integerValue(text);
  if (v > INT32_MAX)
    return INT32_MAX;
  if (v < INT32_MIN)
    return INT32_MIN;
  return static_cast<int>(v);
}

double doubleValue(std::u16string_view text) {
  std::string n = leadingNumber(text, true);
  if (n.empty())
    return 0.0;
  return std::strtod(n.c_str(), nullptr);
}

float floatValue(std::u16string_view text) {
  return static_cast<float>(doubleValue(text));
}

bool boolValue(std::u16string_view text) {
  size_t i = 0;
  while (i < text.size() && isBlank(text[i]))
    ++i;
  if (i < text.size() && (text[i] == u'+' || text[i] == u'-'))
    ++i;
  while (i < text.size() && text[i] == u'0')
    ++i;
  if (i >= text.size())
    return false;
  char16_t c = text[i];
  return c == u'Y' || c == u'y' || c == u'T' || c == u't' || (c >= u'1' && c <= u'9');
}

std::u16string stringFromDouble(double value) {
  if (std::isnan(value))
    return u"nan";
  if (std::isinf(value))
    return value < 0 ? u"-inf" : u"inf";
  if (value == 0)
    return std::signbit(value) ? u"-0" : u"0";
  char buffer[64];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return u16(std::string_view(buffer, static_cast<size_t>(result.ptr - buffer)));
}

} // namespace vl::ns
