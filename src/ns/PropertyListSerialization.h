// Property lists in their XML and binary forms (the platform's NSPropertyListSerialization).
#pragma once

#include "ns/Data.h"
#include "ns/Error.h"
#include "ns/Object.h"
#include "ns/Value.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vl::ns {

/// The forms of a property list, numbered as the platform numbers them.
enum PropertyListFormat : uint64_t {
  PropertyListXMLFormat_v1_0 = 100,
  PropertyListBinaryFormat_v1_0 = 200,
};

/// Error codes (domain CocoaErrorDomain), as the platform numbers them.
inline constexpr int64_t PropertyListReadCorruptError = 3840;
inline constexpr int64_t PropertyListWriteInvalidError = 3852;

/// Containers nested deeper than this are refused, when writing and when reading, so that
/// neither side can run out of stack.
inline constexpr size_t PropertyListMaxDepth = 200;

/// A reference inside a keyed archive ("CF$UID"): the index of an entry of its "$objects".
/// Property lists carry these only for keyed archives; they are immutable values.
class KeyedArchiverUID : public Object {
public:
  explicit KeyedArchiverUID(uint64_t value) : value_(value) {}
  static std::shared_ptr<KeyedArchiverUID> create(uint64_t value) {
    return std::make_shared<KeyedArchiverUID>(value);
  }

  const char *className() const override { return "CFKeyedArchiverUID"; }
  uint64_t value() const { return value_; }

  bool isEqual(const Object &other) const override;
  size_t hash() const override { return static_cast<size_t>(value_); }
  /// "<CFKeyedArchiverUID>{value = 3}".
  std::u16string description() const override;
  /// Itself: the value is immutable.
  ObjectPtr copy() const override;

private:
  uint64_t value_;
};

/// Converts between property lists held as values and their bytes. A property list is a
/// Dictionary (string keys), an Array, a string, an integer (signed, or unsigned up to
/// INT64_MAX), a real, a boolean, data or a date, nested at most PropertyListMaxDepth deep.
class PropertyListSerialization {
public:
  PropertyListSerialization() = delete;

  /// The bytes of `plist` in `format`, or empty data with `error` (CocoaErrorDomain,
  /// PropertyListWriteInvalidError) when it holds something no property list can carry:
  /// nil, other objects, strings with U+0000, integers above INT64_MAX, dates more than
  /// 2^31 seconds from 2001 (before December 1932 or after January 2069: libplist keeps
  /// dates in 32-bit seconds), or (in XML) control characters that XML 1.0 forbids.
  /// Costs one pass over the values plus libplist's encoding.
  static Data dataWithPropertyList(const Value &plist, PropertyListFormat format,
                                   ErrorPtr *error = nullptr);

  /// The property list in `data` (XML or binary, told apart by the "bplist00" header), with
  /// its form in `format` when given; nil with `error` (CocoaErrorDomain,
  /// PropertyListReadCorruptError) for anything malformed. Containers come back as Array and
  /// Dictionary (always mutable); integers as signed values unless they exceed INT64_MAX;
  /// "CF$UID" references as KeyedArchiverUID. Every offset and count of a binary list is
  /// checked before use; XML is parsed by libxml2 with no network or entity loading. A
  /// binary object referenced from several places is expanded at each, within a budget of
  /// about 16 bytes of values per input byte plus 16 MiB, so a small file cannot expand into
  /// a huge tree. Costs one pass over the input and the values made.
  static Value propertyListWithData(const Data &data, PropertyListFormat *format = nullptr,
                                    ErrorPtr *error = nullptr);

  /// True when `plist` could be written in `format`.
  static bool propertyListIsValidForFormat(const Value &plist, PropertyListFormat format);
};

} // namespace vl::ns
