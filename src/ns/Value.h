// Value: the dynamically typed "any object" of the platform: nil, numbers, strings,
// bytes, dates and objects with identity.
#pragma once

#include "ns/Data.h"
#include "ns/Date.h"
#include "ns/Object.h"

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace vl::ns {

/// Order of two values, as the platform's NSComparisonResult.
enum ComparisonResult : int { OrderedAscending = -1, OrderedSame = 0, OrderedDescending = 1 };

namespace detail {
template <class T>
concept PlainInteger = std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> &&
                       !std::same_as<T, char8_t> && !std::same_as<T, char16_t> &&
                       !std::same_as<T, char32_t> && !std::same_as<T, wchar_t>;
}

/// A small variant standing for any value the platform passes as an object. Copies are
/// value copies except for objects, which are shared (reference semantics).
///
/// Numbers convert among each other like the platform's number object; equality follows
/// isEqual: numbers compare by value across kinds (true == 1 == 1.0), strings by content,
/// objects through Object::isEqual. Accessors asked for the wrong kind answer an empty
/// value (0, "", nil), never fail.
class Value {
public:
  enum class Kind : uint8_t { Nil, Bool, Int, UInt, Double, Float, String, Data, Date, Object };

  Value() noexcept = default;
  Value(std::nullptr_t) noexcept {}
  Value(bool b) : v_(b) {}
  template <detail::PlainInteger T>
  Value(T i)
      : v_(std::is_signed_v<T> ? Storage(static_cast<int64_t>(i))
                               : Storage(static_cast<uint64_t>(i))) {}
  Value(double d) : v_(d) {}
  Value(float f) : v_(f) {}
  Value(std::u16string s) : v_(std::move(s)) {}
  Value(std::u16string_view s) : v_(std::u16string(s)) {}
  Value(const char16_t *s) : v_(std::u16string(s)) {}
  Value(ns::Data d) : v_(std::move(d)) {}
  Value(ns::Date d) : v_(d) {}
  template <class T>
  requires std::derived_from<T, ns::Object> Value(std::shared_ptr<T> object) {
    if (object)
      v_ = ObjectPtr(std::move(object));
  }
  /// A value for an object the caller holds by reference (uses shared_from_this).
  static Value of(ns::Object &object) { return Value(object.shared_from_this()); }

  Kind kind() const { return static_cast<Kind>(v_.index()); }
  bool isNil() const { return kind() == Kind::Nil; }
  bool isNumber() const {
    Kind k = kind();
    return k >= Kind::Bool && k <= Kind::Float;
  }
  bool isBool() const { return kind() == Kind::Bool; }
  bool isInteger() const { return kind() == Kind::Int || kind() == Kind::UInt; }
  bool isFloatingPoint() const { return kind() == Kind::Double || kind() == Kind::Float; }
  bool isString() const { return kind() == Kind::String; }
  bool isData() const { return kind() == Kind::Data; }
  bool isDate() const { return kind() == Kind::Date; }
  bool isObject() const { return kind() == Kind::Object; }

  // Number conversions, as the platform's number object (strings are read leniently).
  bool boolValue() const;
  int64_t integerValue() const;
  uint64_t unsignedIntegerValue() const;
  int intValue() const { return static_cast<int>(integerValue()); }
  double doubleValue() const;
  float floatValue() const { return static_cast<float>(doubleValue()); }
  /// The string itself, a number's decimal form (shortest form that reads back for reals,
  /// "1"/"0" for booleans), or an object's description; "" for nil.
  std::u16string stringValue() const;

  /// The string held, or an empty string for any other kind.
  const std::u16string &string() const;
  /// The bytes held, or empty bytes.
  const ns::Data &data() const;
  /// The date held, or the reference date.
  ns::Date date() const;
  /// The object held, or null.
  const ObjectPtr &object() const;
  /// The object held if it is a T, else null.
  template <class T> std::shared_ptr<T> as() const {
    return std::dynamic_pointer_cast<T>(object());
  }
  ArrayPtr array() const;
  DictionaryPtr dictionary() const;

  /// isEqual: of the platform; see the class comment.
  bool isEqual(const Value &other) const;
  bool operator==(const Value &other) const { return isEqual(other); }
  /// Objects by identity, everything else by isEqual.
  bool isIdenticalTo(const Value &other) const;
  size_t hash() const;
  /// Numbers by value, strings by UTF-16 units, dates by time; other pairs order by kind.
  ComparisonResult compare(const Value &other) const;
  /// As %@ shows it: "(null)" for nil.
  std::u16string description() const;

private:
  using Storage = std::variant<std::monostate, bool, int64_t, uint64_t, double, float,
                               std::u16string, ns::Data, ns::Date, ObjectPtr>;
  Storage v_;
};

struct ValueHash {
  size_t operator()(const Value &v) const { return v.hash(); }
};

} // namespace vl::ns
