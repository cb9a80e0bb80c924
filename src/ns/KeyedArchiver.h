// Keyed archiving of object graphs (the platform's NSKeyedArchiver/NSKeyedUnarchiver),
// stored as a binary property list in the keyed-archive layout ($archiver, $version,
// $top, $objects with UID references).
#pragma once

#include "ns/Data.h"
#include "ns/Error.h"
#include "ns/Geometry.h"
#include "ns/Object.h"
#include "ns/Value.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vl::ns {

class KeyedArchiver;
class KeyedUnarchiver;

/// Error code (domain CocoaErrorDomain) of an archive that cannot be decoded, as the
/// platform numbers it.
inline constexpr int64_t CoderReadCorruptError = 4864;

/// Objects nested deeper than this (an object whose decoding decodes another, and so on)
/// make the archive fail to decode rather than exhaust the stack: each level runs a class's
/// initWithCoder on the stack. Decoding also stops when less than 256 KiB of the thread's
/// stack is left (where glibc tells the stack's bounds).
inline constexpr size_t KeyedArchiveMaxDepth = 1000;

/// Implemented by classes that can be archived. A decoded object is made empty by its
/// registered factory and registered with the unarchiver before initWithCoder runs, so
/// rings of references (a style's next style pointing back) decode to the same objects.
class Coding {
public:
  virtual ~Coding() = default;
  virtual void encodeWithCoder(KeyedArchiver &coder) const = 0;
  virtual void initWithCoder(KeyedUnarchiver &coder) = 0;
  /// Called on every object decoded so far when the archive fails, before the unarchiver
  /// lets go of them. An object that can hold others in a ring (a style's next style)
  /// drops its references here, so that the unfinished graph is freed. Does nothing by
  /// default.
  virtual void decodingDidFail() {}
};

/// Makes an empty instance of a class for the unarchiver.
using ClassFactory = std::function<ObjectPtr()>;

/// Registers the factory for archives naming `className` ($classname). Registering a name
/// twice replaces the factory.
void registerClass(std::string_view className, ClassFactory factory);
/// The factory for `className`, or an empty function.
ClassFactory classFactory(std::string_view className);

/// Registers T (which derives from Object and Coding) under its className() at start-up:
/// put VL_REGISTER_CLASS(VLStyle) in the class's .cpp file.
#define VL_REGISTER_CLASS(Type)                                                                    \
  [[maybe_unused]] static const bool vl_registered_##Type = [] {                                   \
    ::vl::ns::registerClass(std::make_shared<Type>()->className(),                                 \
                            [] { return std::make_shared<Type>(); });                              \
    return true;                                                                                   \
  }()

/// Encodes an object graph. An object reached twice (the same pointer) is stored once; the
/// graph may hold cycles. Values of every kind are supported: nil, numbers, strings, data
/// and dates as themselves, Array and Dictionary as NSMutableArray/NSMutableDictionary, and
/// objects that implement Coding. An object that does not implement Coding is stored as nil
/// (with a warning through ns::log). Encoding never recurses: an object met by encodeObject
/// gets its reference at once and its fields are encoded after the current object's, so
/// graphs of any depth can be written. Unsigned integers above INT64_MAX are stored as
/// their 64-bit pattern and decode as negative integers.
class KeyedArchiver {
public:
  KeyedArchiver();
  ~KeyedArchiver();
  KeyedArchiver(const KeyedArchiver &) = delete;
  KeyedArchiver &operator=(const KeyedArchiver &) = delete;

  /// The archive of `root`: a binary property list. Empty data (logged as an error) only when
  /// libplist cannot carry it: more than about 1 GiB, or a coder key holding U+0000.
  static Data archivedDataWithRootObject(const Value &root);

  /// Stores `object` by reference under `key` of the object being encoded (or of "$top"
  /// outside encodeWithCoder); nil stores the reference to "$null".
  void encodeObject(const Value &object, std::u16string_view key);
  void encodeInteger(int64_t value, std::u16string_view key);
  void encodeInt32(int32_t value, std::u16string_view key);
  void encodeInt64(int64_t value, std::u16string_view key) { encodeInteger(value, key); }
  void encodeDouble(double value, std::u16string_view key);
  void encodeFloat(float value, std::u16string_view key);
  void encodeBool(bool value, std::u16string_view key);
  /// Stored as the string "{width, height}".
  void encodeSize(Size value, std::u16string_view key);
  void encodePoint(Point value, std::u16string_view key);
  void encodeRect(Rect value, std::u16string_view key);

  /// Encodes `root` under "root" and answers the finished archive. Call it once; the
  /// archiver is spent afterwards.
  Data finishEncodingWithRootObject(const Value &root);

private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// Decodes archives made by KeyedArchiver (binary or XML). A missing key decodes as 0, false
/// or nil; a value of the wrong kind decodes the same way, and numbers convert among each
/// other. Every object is decoded once: a second reference answers the same object. Arrays,
/// dictionaries, dates, strings and data of the platform's classes come back as Array,
/// Dictionary (always mutable), Date, string and Data values.
///
/// Malformed archives answer nil with an error, never crash: references out of range, class
/// entries without a name, containers that are not arrays of references, unknown classes,
/// a container that contains itself (only Coding objects may be reached again while they are
/// being decoded), nesting beyond KeyedArchiveMaxDepth, or an exception thrown by a class's
/// initWithCoder. After the first failure every decodeObjectForKey answers nil.
class KeyedUnarchiver {
public:
  KeyedUnarchiver();
  ~KeyedUnarchiver();
  KeyedUnarchiver(const KeyedUnarchiver &) = delete;
  KeyedUnarchiver &operator=(const KeyedUnarchiver &) = delete;

  /// The root object of `data`, or nil with `error` (CocoaErrorDomain, CoderReadCorruptError)
  /// when the bytes are not an archive, name a class with no registered factory, or fail any
  /// check above; or with the error a class gave failWithError. An archive whose root is nil
  /// answers nil with no error. Costs one parse of the property list and one initWithCoder
  /// per object.
  static Value unarchiveObjectWithData(const Data &data, ErrorPtr *error = nullptr);

  bool containsValueForKey(std::u16string_view key) const;
  /// The object under `key`, decoded on first use; nil for a missing key or a key holding a
  /// plain number.
  Value decodeObjectForKey(std::u16string_view key);
  int64_t decodeIntegerForKey(std::u16string_view key);
  int32_t decodeInt32ForKey(std::u16string_view key);
  int64_t decodeInt64ForKey(std::u16string_view key) { return decodeIntegerForKey(key); }
  double decodeDoubleForKey(std::u16string_view key);
  float decodeFloatForKey(std::u16string_view key);
  bool decodeBoolForKey(std::u16string_view key);
  Size decodeSizeForKey(std::u16string_view key);
  Point decodePointForKey(std::u16string_view key);
  Rect decodeRectForKey(std::u16string_view key);

  /// Lets initWithCoder report data it cannot accept: decoding stops and the archive
  /// answers nil with `error` (the first one reported wins).
  void failWithError(ErrorPtr error);
  /// The failure so far, or null.
  const ErrorPtr &error() const;

private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

} // namespace vl::ns
