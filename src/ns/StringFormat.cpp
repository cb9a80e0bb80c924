// printf-style formatting with the platform's conversions, and fresh UUID strings.
#include "ns/String.h"

#include <uuid/uuid.h>

#include <clocale>
#include <cstdio>
#include <cstring>
#include <vector>

namespace vl::ns {

namespace {
// Widths and precisions past this are taken as this: no sensible format needs more, and a
// hostile one must not make us allocate without bound.
constexpr int kMaxWidth = 1 << 16;

enum class Length { None, Char, Short, Long, LongLong, LongDouble, Size };

struct Spec {
  std::string flags;
  int width = -1;
  int precision = -1;
  Length length = Length::None;
  char conversion = 0;
};

// Runs snprintf with one argument; numbers are formatted by the C library and only their
// decimal point is put back to "." if the host set a locale that uses another.
template <class T> std::u16string cFormat(const std::string &spec, T value) {
  char small[128];
  int n = std::snprintf(small, sizeof small, spec.c_str(), value);
  if (n < 0)
    return {};
  std::string bytes;
  if (static_cast<size_t>(n) < sizeof small) {
    bytes.assign(small, static_cast<size_t>(n));
  } else {
    bytes.resize(static_cast<size_t>(n) + 1);
    std::snprintf(bytes.data(), bytes.size(), spec.c_str(), value);
    bytes.resize(static_cast<size_t>(n));
  }
  return u16(bytes);
}

std::u16string localeNeutral(std::u16string text) {
  const char *point = std::localeconv()->decimal_point;
  if (point && std::strcmp(point, ".") != 0 && *point) {
    std::u16string local = u16(point);
    size_t at = text.find(local);
    if (at != std::u16string::npos) {
      text[at] = u'.';
      text.erase(at + 1, local.size() - 1);
    }
  }
  return text;
}

std::string cSpec(const Spec &spec, const char *length, char conversion) {
  std::string out(1, '%');
  out += spec.flags;
  if (spec.width >= 0)
    out += std::to_string(spec.width);
  if (spec.precision >= 0) {
    out += '.';
    out += std::to_string(spec.precision);
  }
  out += length;
  out += conversion;
  return out;
}

std::u16string pad(std::u16string text, const Spec &spec) {
  if (spec.width > 0 && text.size() < static_cast<size_t>(spec.width)) {
    std::u16string blanks(static_cast<size_t>(spec.width) - text.size(), u' ');
    if (spec.flags.find('-') != std::string::npos)
      text += blanks;
    else
      text.insert(0, blanks);
  }
  return text;
}

std::u16string formatString(std::u16string text, const Spec &spec) {
  if (spec.precision >= 0 && text.size() > static_cast<size_t>(spec.precision))
    text.resize(static_cast<size_t>(spec.precision));
  return pad(std::move(text), spec);
}

std::u16string formatSigned(const Value &value, const Spec &spec) {
  int64_t v = value.integerValue();
  switch (spec.length) {
  case Length::None:
    v = static_cast<int32_t>(v);
    break;
  case Length::Short:
    v = static_cast<int16_t>(v);
    break;
  case Length::Char:
    v = static_cast<signed char>(v);
    break;
  default:
    break;
  }
  return cFormat(cSpec(spec, "ll", spec.conversion), static_cast<long long>(v));
}

std::u16string formatUnsigned(const Value &value, const Spec &spec) {
  uint64_t v = value.unsignedIntegerValue();
  switch (spec.length) {
  case Length::None:
    v = static_cast<uint32_t>(v);
    break;
  case Length::Short:
    v = static_cast<uint16_t>(v);
    break;
  case Length::Char:
    v = static_cast<unsigned char>(v);
    break;
  default:
    break;
  }
  return cFormat(cSpec(spec, "ll", spec.conversion), static_cast<unsigned long long>(v));
}

std::u16string formatPointer(const Value &value, const Spec &spec) {
  uint64_t address = value.isObject() ? reinterpret_cast<uintptr_t>(value.object().get())
                                      : value.unsignedIntegerValue();
  Spec plain = spec;
  plain.flags.clear();
  plain.width = -1;
  plain.precision = -1;
  std::u16string text = u"0x";
  text += cFormat(cSpec(plain, "ll", 'x'), static_cast<unsigned long long>(address));
  return pad(std::move(text), spec);
}

// Reads a run of decimal digits at `i`, answering -1 when there is none.
int readNumber(std::u16string_view format, size_t &i) {
  if (i >= format.size() || format[i] < u'0' || format[i] > u'9')
    return -1;
  int n = 0;
  while (i < format.size() && format[i] >= u'0' && format[i] <= u'9') {
    n = std::min(kMaxWidth, n * 10 + (format[i] - u'0'));
    ++i;
  }
  return n;
}
} // namespace

std::u16string stringWithFormat(std::u16string_view format,
                                std::initializer_list<FormatArgument> arguments) {
  static const Value nil;
  const FormatArgument *args = arguments.begin();
  const size_t count = arguments.size();
  size_t nextArgument = 0;
  auto argumentAt = [&](size_t index) -> const Value & {
    return index < count ? args[index].value() : nil;
  };

  std::u16string out;
  out.reserve(format.size() + 16 * count);
  size_t i = 0;
  while (i < format.size()) {
    size_t percent = format.find(u'%', i);
    if (percent == std::u16string_view::npos) {
      out.append(format.substr(i));
      break;
    }
    out.append(format.substr(i, percent - i));
    i = percent + 1;
    if (i < format.size() && format[i] == u'%') {
      out += u'%';
      ++i;
      continue;
    }

    Spec spec;
    // "%2$@": an argument by its position, counted from 1.
    std::optional<size_t> position;
    size_t j = i;
    int n = readNumber(format, j);
    if (n > 0 && j < format.size() && format[j] == u'$') {
      position = static_cast<size_t>(n - 1);
      i = j + 1;
    }
    while (i < format.size() && format[i] != 0 && format[i] < 0x80 &&
           std::strchr("-+ #0'", static_cast<char>(format[i]))) {
      if (format[i] != u'\'') // grouping would follow the C locale's conventions, not ours
        spec.flags += static_cast<char>(format[i]);
      ++i;
    }
    if (i < format.size() && format[i] == u'*') {
      ++i;
      int64_t w = argumentAt(nextArgument++).integerValue();
      if (w < 0) {
        spec.flags += '-';
        w = -w;
      }
      spec.width = static_cast<int>(std::min<int64_t>(w, kMaxWidth));
    } else {
      spec.width = readNumber(format, i);
    }
    if (i < format.size() && format[i] == u'.') {
      ++i;
      if (i < format.size() && format[i] == u'*') {
        ++i;
        int64_t p = argumentAt(nextArgument++).integerValue();
        spec.precision = p < 0 ? -1 : static_cast<int>(std::min<int64_t>(p, kMaxWidth));
      } else {
        spec.precision = std::max(0, readNumber(format, i));
      }
    }
    for (bool more = true; more && i < format.size();) {
      switch (format[i]) {
      case u'h':
        spec.length = spec.length == Length::Short ? Length::Char : Length::Short;
        break;
      case u'l':
        spec.length = spec.length == Length::Long ? Length::LongLong : Length::Long;
        break;
      case u'q':
      case u'j':
        spec.length = Length::LongLong;
        break;
      case u'z':
      case u't':
        spec.length = Length::Size;
        break;
      case u'L':
        spec.length = Length::LongDouble;
        break;
      default:
        more = false;
        continue;
      }
      ++i;
    }
    if (i >= format.size()) {
      out.append(format.substr(percent)); // an unfinished conversion stays as written
      break;
    }
    char16_t conversion = format[i++];
    spec.conversion = static_cast<char>(conversion);
    auto take = [&]() -> const Value & {
      return position ? argumentAt(*position) : argumentAt(nextArgument++);
    };

    switch (conversion) {
    case u'@':
      out += formatString(take().description(), spec);
      break;
    case u's': {
      const Value &v = take();
      out += formatString(v.isNil() ? u"(null)" : v.stringValue(), spec);
      break;
    }
    case u'd':
    case u'i':
      out += formatSigned(take(), spec);
      break;
    case u'u':
    case u'x':
    case u'X':
    case u'o':
      out += formatUnsigned(take(), spec);
      break;
    case u'D':
    case u'U':
    case u'O':
      // The platform's old spellings of %ld, %lu and %lo.
      spec.length = Length::Long;
      spec.conversion = static_cast<char>(conversion + (u'a' - u'A'));
      out += conversion == u'D' ? formatSigned(take(), spec) : formatUnsigned(take(), spec);
      break;
    case u'f':
    case u'F':
    case u'e':
    case u'E':
    case u'g':
    case u'G':
    case u'a':
    case u'A':
      out += localeNeutral(cFormat(cSpec(spec, "", spec.conversion), take().doubleValue()));
      break;
    case u'c':
    case u'C': {
      auto unit = static_cast<char16_t>(take().unsignedIntegerValue());
      out += pad(unit ? std::u16string(1, unit) : std::u16string(), spec);
      break;
    }
    case u'p':
      out += formatPointer(take(), spec);
      break;
    case u'n':
      take(); // never writes through an argument
      break;
    default:
      out.append(format.substr(percent, i - percent)); // unknown: left as written
      break;
    }
  }
  return out;
}

std::u16string UUIDString() {
  uuid_t uuid;
  uuid_generate_random(uuid);
  char text[37];
  uuid_unparse_upper(uuid, text);
  return u16(text);
}

} // namespace vl::ns
