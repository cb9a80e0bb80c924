// Value conversions, equality, hashing and ordering.
#include "ns/Value.h"

#include "ns/Array.h"
#include "ns/Dictionary.h"
#include "ns/String.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

namespace vl::ns {

namespace {

const std::u16string &emptyString() {
  static const std::u16string empty;
  return empty;
}

// Integers as the platform's number object holds them: one signed and one unsigned kind.
bool integerParts(const Value &v, bool &negative, uint64_t &magnitude) {
  switch (v.kind()) {
  case Value::Kind::Bool:
    negative = false;
    magnitude = v.boolValue() ? 1 : 0;
    return true;
  case Value::Kind::Int: {
    int64_t i = v.integerValue();
    negative = i < 0;
    magnitude = negative ? (0 - static_cast<uint64_t>(i)) : static_cast<uint64_t>(i);
    return true;
  }
  case Value::Kind::UInt:
    negative = false;
    magnitude = v.unsignedIntegerValue();
    return true;
  default:
    return false;
  }
}

int compareNumbers(const Value &a, const Value &b) {
  bool an, bn;
  uint64_t am, bm;
  if (integerParts(a, an, am) && integerParts(b, bn, bm)) {
    if (an != bn)
      return an ? -1 : 1;
    if (am == bm)
      return 0;
    bool less = am < bm;
    if (an)
      less = !less;
    return less ? -1 : 1;
  }
  double x = a.doubleValue(), y = b.doubleValue();
  if (x < y)
    return -1;
  if (x > y)
    return 1;
  return 0;
}

} // namespace

bool Value::boolValue() const {
  switch (kind()) {
  case Kind::Bool:
    return std::get<bool>(v_);
  case Kind::Int:
    return std::get<int64_t>(v_) != 0;
  case Kind::UInt:
    return std::get<uint64_t>(v_) != 0;
  case Kind::Double:
    return std::get<double>(v_) != 0.0;
  case Kind::Float:
    return std::get<float>(v_) != 0.0f;
  case Kind::String:
    return ns::boolValue(std::get<std::u16string>(v_));
  default:
    return false;
  }
}

int64_t Value::integerValue() const {
  switch (kind()) {
  case Kind::Bool:
    return std::get<bool>(v_) ? 1 : 0;
  case Kind::Int:
    return std::get<int64_t>(v_);
  case Kind::UInt:
    return static_cast<int64_t>(std::get<uint64_t>(v_));
  case Kind::Double:
  case Kind::Float: {
    double d = doubleValue();
    if (std::isnan(d))
      return 0;
    if (d >= 9.2233720368547758e18)
      return std::numeric_limits<int64_t>::max();
    if (d <= -9.2233720368547758e18)
      return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(d);
  }
  case Kind::String:
    return ns::integerValue(std::get<std::u16string>(v_));
  default:
    return 0;
  }
}

uint64_t Value::unsignedIntegerValue() const {
  switch (kind()) {
  case Kind::UInt:
    return std::get<uint64_t>(v_);
  case Kind::Double:
  case Kind::Float: {
    double d = doubleValue();
    if (std::isnan(d) || d <= 0)
      return static_cast<uint64_t>(integerValue());
    if (d >= 1.8446744073709552e19)
      return std::numeric_limits<uint64_t>::max();
    return static_cast<uint64_t>(d);
  }
  default:
    return static_cast<uint64_t>(integerValue());
  }
}

double Value::doubleValue() const {
  switch (kind()) {
  case Kind::Bool:
    return std::get<bool>(v_) ? 1.0 : 0.0;
  case Kind::Int:
    return static_cast<double>(std::get<int64_t>(v_));
  case Kind::UInt:
    return static_cast<double>(std::get<uint64_t>(v_));
  case Kind::Double:
    return std::get<double>(v_);
  case Kind::Float:
    return static_cast<double>(std::get<float>(v_));
  case Kind::String:
    return ns::doubleValue(std::get<std::u16string>(v_));
  default:
    return 0.0;
  }
}

std::u16string Value::stringValue() const {
  switch (kind()) {
  case Kind::Nil:
    return {};
  case Kind::Bool:
    return std::get<bool>(v_) ? u"1" : u"0";
  case Kind::Int:
    return u16(std::to_string(std::get<int64_t>(v_)));
  case Kind::UInt:
    return u16(std::to_string(std::get<uint64_t>(v_)));
  case Kind::Double:
    return stringFromDouble(std::get<double>(v_));
  case Kind::Float: {
    // A float shows its own shortest form, not that of the widened double.
    char buffer[32];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, std::get<float>(v_));
    return u16(std::string_view(buffer, static_cast<size_t>(result.ptr - buffer)));
  }
  case Kind::String:
    return std::get<std::u16string>(v_);
  default:
    return description();
  }
}

const std::u16string &Value::string() const {
  if (auto *s = std::get_if<std::u16string>(&v_))
    return *s;
  return emptyString();
}

const ns::Data &Value::data() const {
  static const ns::Data empty;
  if (auto *d = std::get_if<ns::Data>(&v_))
    return *d;
  return empty;
}

ns::Date Value::date() const {
  if (auto *d = std::get_if<ns::Date>(&v_))
    return *d;
  return ns::Date();
}

const ObjectPtr &Value::object() const {
  static const ObjectPtr none;
  if (auto *o = std::get_if<ObjectPtr>(&v_))
    return *o;
  return none;
}

ArrayPtr Value::array() const {
  return as<Array>();
}
DictionaryPtr Value::dictionary() const {
  return as<Dictionary>();
}

bool Value::isEqual(const Value &other) const {
  if (isNumber() && other.isNumber())
    return compareNumbers(*this, other) == 0;
  if (kind() != other.kind())
    return false;
  switch (kind()) {
  case Kind::Nil:
    return true;
  case Kind::String:
    return std::get<std::u16string>(v_) == std::get<std::u16string>(other.v_);
  case Kind::Data:
    return std::get<ns::Data>(v_) == std::get<ns::Data>(other.v_);
  case Kind::Date:
    return std::get<ns::Date>(v_) == std::get<ns::Date>(other.v_);
  case Kind::Object: {
    const ObjectPtr &a = std::get<ObjectPtr>(v_);
    const ObjectPtr &b = std::get<ObjectPtr>(other.v_);
    return a == b || a->isEqual(*b);
  }
  default:
    return false;
  }
}

bool Value::isIdenticalTo(const Value &other) const {
  if (isObject() || other.isObject())
    return object() == other.object();
  return isEqual(other);
}

size_t Value::hash() const {
  switch (kind()) {
  case Kind::Nil:
    return 0;
  case Kind::Bool:
  case Kind::Int:
  case Kind::UInt:
  case Kind::Double:
  case Kind::Float: {
    // Equal numbers of different kinds must hash alike: hash integral values as integers.
    double d = doubleValue();
    if (std::isfinite(d) && d == std::floor(d) && std::fabs(d) < 9.0e18)
      return std::hash<int64_t>()(static_cast<int64_t>(d));
    if (kind() == Kind::UInt)
      return std::hash<uint64_t>()(unsignedIntegerValue());
    return std::hash<double>()(d);
  }
  case Kind::String:
    return std::hash<std::u16string>()(std::get<std::u16string>(v_));
  case Kind::Data:
    return std::hash<std::string_view>()(std::get<ns::Data>(v_).view());
  case Kind::Date:
    return std::hash<double>()(std::get<ns::Date>(v_).timeIntervalSinceReferenceDate());
  case Kind::Object:
    return std::get<ObjectPtr>(v_)->hash();
  }
  return 0;
}

ComparisonResult Value::compare(const Value &other) const {
  int r = 0;
  if (isNumber() && other.isNumber()) {
    r = compareNumbers(*this, other);
  } else if (kind() != other.kind()) {
    r = kind() < other.kind() ? -1 : 1;
  } else if (isString()) {
    return ns::compare(string(), other.string());
  } else if (isDate()) {
    double a = date().timeIntervalSinceReferenceDate();
    double b = other.date().timeIntervalSinceReferenceDate();
    r = a < b ? -1 : (a > b ? 1 : 0);
  } else if (isData()) {
    int c = data().view().compare(other.data().view());
    r = c < 0 ? -1 : (c > 0 ? 1 : 0);
  }
  return static_cast<ComparisonResult>(r);
}

std::u16string Value::description() const {
  switch (kind()) {
  case Kind::Nil:
    return u"(null)";
  case Kind::Data: {
    static const char hex[] = "0123456789abcdef";
    std::u16string out = u"<";
    const ns::Data &d = data();
    for (size_t i = 0; i < d.length(); ++i) {
      if (i > 0 && i % 4 == 0)
        out += u' ';
      out += static_cast<char16_t>(hex[d.bytes()[i] >> 4]);
      out += static_cast<char16_t>(hex[d.bytes()[i] & 15]);
    }
    return out + u">";
  }
  case Kind::Date:
    return formatDate(date(), u"yyyy-MM-dd HH:mm:ss ZZZ", TimeZone::utc());
  case Kind::Object:
    return object()->description();
  default:
    return stringValue();
  }
}

} // namespace vl::ns
