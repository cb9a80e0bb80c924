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

/// Implemented by classes that can be archived. A decoded object is made empty by its
/// registered factory and registered with the unarchiver before initWithCoder runs, so
/// rings of references (a style's next style pointing back) decode to the same objects.
class Coding {
public:
  virtual ~Coding() = default;
  virtual void encodeWithCoder(KeyedArchiver &coder) const = 0;
  virtual void initWithCoder(KeyedUnarchiver &coder) = 0;
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
#define VL_REGISTER_CLASS(Type)                                                                  \
  static const bool vl_registered_##Type = [] {                                                  \
    ::vl::ns::registerClass(std::make_shared<Type>()->className(),                               \
                            [] { return std::make_shared<Type>(); });                            \
    return true;                                                                                 \
  }()

/// Encodes an object graph. An object reached twice is stored once; the graph may hold
/// cycles. Values of every kind are supported: nil, numbers, strings, data and dates as
/// themselves, Array and Dictionary as NSArray/NSDictionary, and objects that implement
/// Coding. An object that does not implement Coding is stored as nil (and logged).
class KeyedArchiver {
public:
  KeyedArchiver();
  ~KeyedArchiver();
  KeyedArchiver(const KeyedArchiver &) = delete;
  KeyedArchiver &operator=(const KeyedArchiver &) = delete;

  /// The archive of `root`: a binary property list.
  static Data archivedDataWithRootObject(const Value &root);

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

  /// Encodes `root` under "root" and answers the finished archive.
  Data finishEncodingWithRootObject(const Value &root);

private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// Decodes archives made by KeyedArchiver. A missing key decodes as 0, false or nil; a
/// value of the wrong kind decodes the same way. Malformed archives answer nil, never crash.
class KeyedUnarchiver {
public:
  KeyedUnarchiver();
  ~KeyedUnarchiver();
  KeyedUnarchiver(const KeyedUnarchiver &) = delete;
  KeyedUnarchiver &operator=(const KeyedUnarchiver &) = delete;

  /// The root object of `data`, or nil (with `error` filled, when given) when the bytes are
  /// not an archive or name a class with no registered factory.
  static Value unarchiveObjectWithData(const Data &data, ErrorPtr *error = nullptr);

  bool containsValueForKey(std::u16string_view key) const;
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

private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

} // namespace vl::ns
