// Keyed archiving: object graphs to and from the keyed-archive layout of a property list.
#include "ns/KeyedArchiver.h"

#include "ns/Array.h"
#include "ns/Assert.h"
#include "ns/Dictionary.h"
#include "ns/Log.h"
#include "ns/PropertyListSerialization.h"
#include "ns/String.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <deque>
#include <limits>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#if defined(__GLIBC__)
#include <pthread.h>
#endif

namespace vl::ns {

namespace {

std::map<std::string, ClassFactory, std::less<>> &registry() {
  static std::map<std::string, ClassFactory, std::less<>> factories;
  return factories;
}

constexpr std::u16string_view ClassKey = u"$class";
constexpr std::u16string_view ObjectsKey = u"NS.objects";
constexpr std::u16string_view KeysKey = u"NS.keys";
constexpr std::u16string_view TimeKey = u"NS.time";
constexpr std::u16string_view StringKey = u"NS.string";
constexpr std::u16string_view BytesKey = u"NS.bytes";
constexpr std::u16string_view DataKey = u"NS.data";

Value uidValue(uint64_t index) {
  return Value(KeyedArchiverUID::create(index));
}

// The numbers of "{1, 2}" or "{{1, 2}, {3, 4}}", in order; missing ones are 0.
template <size_t N> std::array<double, N> numbersIn(std::u16string_view text) {
  std::array<double, N> out{};
  std::string ascii;
  for (char16_t c : text)
    ascii += c < 0x80 ? static_cast<char>(c) : ' ';
  size_t found = 0;
  const char *p = ascii.data(), *end = p + ascii.size();
  while (p < end && found < N) {
    if ((*p >= '0' && *p <= '9') || *p == '-' || *p == '.') {
      double d = 0;
      auto [next, ec] = std::from_chars(p, end, d);
      if (ec == std::errc()) {
        out[found++] = d;
        p = next;
        continue;
      }
    }
    ++p;
  }
  return out;
}

std::u16string number(double d) {
  return stringFromDouble(d);
}

// Decoding recurses through each class's initWithCoder, whose frames we do not know, on a
// thread whose stack we did not size: stop while this much stack is left.
constexpr uintptr_t StackReserve = 256 * 1024;

// The lowest usable address of the calling thread's stack, or 0 when unknown.
uintptr_t findStackLimit() {
#if defined(__GLIBC__)
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0)
    return 0;
  void *base = nullptr;
  size_t size = 0;
  int status = pthread_attr_getstack(&attributes, &base, &size);
  pthread_attr_destroy(&attributes);
  if (status != 0 || size <= StackReserve)
    return 0;
  return reinterpret_cast<uintptr_t>(base) + StackReserve;
#else
  return 0;
#endif
}

// Asking glibc reads /proc for the main thread, so each thread asks once.
uintptr_t stackLimit() {
  thread_local const uintptr_t limit = findStackLimit();
  return limit;
}

bool stackIsLow(uintptr_t limit) {
  // The frame address is the real stack even when a sanitizer moves locals elsewhere.
  return limit && reinterpret_cast<uintptr_t>(__builtin_frame_address(0)) < limit;
}

} // namespace

void registerClass(std::string_view className, ClassFactory factory) {
  registry().insert_or_assign(std::string(className), std::move(factory));
}

ClassFactory classFactory(std::string_view className) {
  auto &factories = registry();
  auto it = factories.find(className);
  return it == factories.end() ? ClassFactory() : it->second;
}

// Archiving.

struct KeyedArchiver::Impl {
  ArrayPtr objects = Array::create({Value(u"$null")});
  DictionaryPtr top = Dictionary::create();
  // The dictionary that encode calls fill: "$top", or the object being encoded.
  Dictionary *current = top.get();
  std::unordered_map<const Object *, uint64_t> objectIndexes;
  std::unordered_map<std::u16string, uint64_t> stringIndexes;
  std::map<std::string, uint64_t, std::less<>> classIndexes;
  // Objects that have their index but not yet their fields.
  std::deque<std::pair<ObjectPtr, uint64_t>> pending;
  // Every object indexed, kept alive so that its address cannot be reused by a temporary
  // made later in an encodeWithCoder and be taken for it.
  std::vector<ObjectPtr> retained;
  bool finished = false;

  uint64_t append(Value value) {
    objects->addObject(std::move(value));
    return objects->count() - 1;
  }

  uint64_t classIndex(std::string_view name, std::initializer_list<const char *> superclasses) {
    auto it = classIndexes.find(name);
    if (it != classIndexes.end())
      return it->second;
    auto classes = Array::create({Value(fromUTF8(name))});
    for (const char *superclass : superclasses)
      classes->addObject(Value(fromUTF8(superclass)));
    auto entry =
        Dictionary::create({{u"$classname", Value(fromUTF8(name))}, {u"$classes", Value(classes)}});
    uint64_t index = append(Value(entry));
    classIndexes.emplace(std::string(name), index);
    return index;
  }

  uint64_t stringIndex(const std::u16string &text) {
    auto it = stringIndexes.find(text);
    if (it != stringIndexes.end())
      return it->second;
    uint64_t index;
    if (text.find(u'\0') == std::u16string::npos) {
      index = append(Value(text));
    } else {
      // Property list strings cannot hold U+0000 through libplist; keep such text as bytes.
      std::string utf8 = toUTF8(text);
      index = append(Value(Dictionary::create(
          {{std::u16string(BytesKey), Value(Data::fromString(utf8))},
           {std::u16string(ClassKey),
            uidValue(classIndex("NSMutableString", {"NSString", "NSObject"}))}})));
    }
    stringIndexes.emplace(text, index);
    return index;
  }

  // The index of `value` in "$objects", adding it (or queueing its fields) on first sight.
  uint64_t reference(const Value &value) {
    switch (value.kind()) {
    case Value::Kind::Nil:
      return 0;
    case Value::Kind::String:
      return stringIndex(value.string());
    case Value::Kind::UInt:
      return append(Value(static_cast<int64_t>(value.unsignedIntegerValue())));
    case Value::Kind::Date:
      return append(Value(Dictionary::create(
          {{std::u16string(TimeKey), Value(value.date().timeIntervalSinceReferenceDate())},
           {std::u16string(ClassKey), uidValue(classIndex("NSDate", {"NSObject"}))}})));
    case Value::Kind::Object:
      return objectReference(value.object());
    default:
      return append(value);
    }
  }

  uint64_t objectReference(const ObjectPtr &object) {
    auto it = objectIndexes.find(object.get());
    if (it != objectIndexes.end())
      return it->second;
    if (!dynamic_cast<const Coding *>(object.get()) && !dynamic_cast<Array *>(object.get()) &&
        !dynamic_cast<Dictionary *>(object.get())) {
      log(LogLevel::Warning, std::string("KeyedArchiver: ") + object->className() +
                                 " does not implement Coding; archived as nil");
      return 0;
    }
    uint64_t index = append(Value());
    objectIndexes.emplace(object.get(), index);
    retained.push_back(object);
    pending.emplace_back(object, index);
    return index;
  }

  void encodeFields(KeyedArchiver &archiver, const ObjectPtr &object, uint64_t index) {
    auto fields = Dictionary::create();
    if (auto *coding = dynamic_cast<const Coding *>(object.get())) {
      Dictionary *saved = current;
      current = fields.get();
      coding->encodeWithCoder(archiver);
      current = saved;
      fields->setObject(uidValue(classIndex(object->className(), {"NSObject"})), ClassKey);
    } else if (auto *array = dynamic_cast<Array *>(object.get())) {
      auto references = Array::create();
      for (const Value &element : *array)
        references->addObject(uidValue(reference(element)));
      fields->setObject(Value(references), ObjectsKey);
      fields->setObject(uidValue(classIndex("NSMutableArray", {"NSArray", "NSObject"})), ClassKey);
    } else if (auto *dictionary = dynamic_cast<Dictionary *>(object.get())) {
      auto keys = Array::create(), values = Array::create();
      for (const auto &[key, element] : *dictionary) {
        keys->addObject(uidValue(stringIndex(key)));
        values->addObject(uidValue(reference(element)));
      }
      fields->setObject(Value(keys), KeysKey);
      fields->setObject(Value(values), ObjectsKey);
      fields->setObject(uidValue(classIndex("NSMutableDictionary", {"NSDictionary", "NSObject"})),
                        ClassKey);
    }
    objects->replaceObjectAtIndex(index, Value(fields));
  }
};

KeyedArchiver::KeyedArchiver() : impl_(std::make_unique<Impl>()) {}
KeyedArchiver::~KeyedArchiver() = default;

Data KeyedArchiver::archivedDataWithRootObject(const Value &root) {
  KeyedArchiver archiver;
  return archiver.finishEncodingWithRootObject(root);
}

void KeyedArchiver::encodeObject(const Value &object, std::u16string_view key) {
  impl_->current->setObject(uidValue(impl_->reference(object)), key);
}

void KeyedArchiver::encodeInteger(int64_t value, std::u16string_view key) {
  impl_->current->setObject(Value(value), key);
}

void KeyedArchiver::encodeInt32(int32_t value, std::u16string_view key) {
  impl_->current->setObject(Value(static_cast<int64_t>(value)), key);
}

void KeyedArchiver::encodeDouble(double value, std::u16string_view key) {
  impl_->current->setObject(Value(value), key);
}

void KeyedArchiver::encodeFloat(float value, std::u16string_view key) {
  impl_->current->setObject(Value(static_cast<double>(value)), key);
}

void KeyedArchiver::encodeBool(bool value, std::u16string_view key) {
  impl_->current->setObject(Value(value), key);
}

namespace {
// "{a, b}", built piecewise: GCC 12 warns falsely about chains of operator+ on u16strings.
std::u16string pairString(double a, double b) {
  std::u16string out = u"{";
  out += number(a);
  out += u", ";
  out += number(b);
  out += u'}';
  return out;
}
} // namespace

void KeyedArchiver::encodeSize(Size value, std::u16string_view key) {
  impl_->current->setObject(Value(pairString(value.width, value.height)), key);
}

void KeyedArchiver::encodePoint(Point value, std::u16string_view key) {
  impl_->current->setObject(Value(pairString(value.x, value.y)), key);
}

void KeyedArchiver::encodeRect(Rect value, std::u16string_view key) {
  std::u16string out = u"{";
  out += pairString(value.origin.x, value.origin.y);
  out += u", ";
  out += pairString(value.size.width, value.size.height);
  out += u'}';
  impl_->current->setObject(Value(std::move(out)), key);
}

Data KeyedArchiver::finishEncodingWithRootObject(const Value &root) {
  VL_ASSERT(!impl_->finished, "finishEncodingWithRootObject called twice");
  encodeObject(root, u"root");
  while (!impl_->pending.empty()) {
    auto [object, index] = std::move(impl_->pending.front());
    impl_->pending.pop_front();
    impl_->encodeFields(*this, object, index);
  }
  impl_->finished = true;
  auto archive = Dictionary::create({{u"$archiver", Value(u"NSKeyedArchiver")},
                                     {u"$version", Value(100000)},
                                     {u"$top", Value(impl_->top)},
                                     {u"$objects", Value(impl_->objects)}});
  ErrorPtr error;
  Data data = PropertyListSerialization::dataWithPropertyList(
      Value(archive), PropertyListBinaryFormat_v1_0, &error);
  if (data.empty())
    log(LogLevel::Error, "KeyedArchiver: " + toUTF8(error ? error->localizedFailureReason() : u""));
  return data;
}

// Unarchiving.

struct KeyedUnarchiver::Impl {
  enum class State : uint8_t { NotStarted, InProgress, Done };

  ArrayPtr objects;
  std::vector<Value> decoded;
  std::vector<State> states;
  const Dictionary *current = nullptr;
  size_t depth = 0;
  uintptr_t stackLimit = 0;
  ErrorPtr error;

  void fail(std::u16string_view reason) {
    if (!error)
      error = Error::errorWithDescription(
          CocoaErrorDomain, CoderReadCorruptError,
          u"The data couldn\u2019t be read because it isn\u2019t in the correct format.", reason);
  }

  Value failed(std::u16string_view reason) {
    fail(reason);
    return Value();
  }

  Value decodeReference(KeyedUnarchiver &unarchiver, const Value &reference) {
    auto uid = reference.as<KeyedArchiverUID>();
    if (!uid)
      return failed(u"expected an object reference");
    uint64_t index = uid->value();
    if (index == 0)
      return Value();
    if (index >= objects->count())
      return failed(u"object reference out of range");
    switch (states[index]) {
    case State::Done:
      return decoded[index];
    case State::InProgress:
      // Only an object made by its factory is known before its fields are decoded.
      if (decoded[index].isNil())
        return failed(u"a container contains itself");
      return decoded[index];
    case State::NotStarted:
      break;
    }
    const Value &entry = objects->objectAtIndex(index);
    if (!entry.isObject()) {
      states[index] = State::Done;
      decoded[index] = entry;
      return entry;
    }
    auto fields = entry.dictionary();
    if (!fields)
      return failed(u"malformed object entry");
    if (depth >= KeyedArchiveMaxDepth || stackIsLow(stackLimit))
      return failed(u"objects nested too deeply");
    states[index] = State::InProgress;
    ++depth;
    Value result = decodeFields(unarchiver, *fields, index);
    --depth;
    if (error)
      return Value();
    states[index] = State::Done;
    decoded[index] = result;
    return result;
  }

  // The class names of an entry: "$classname", then the names of "$classes".
  bool classNames(const Dictionary &fields, std::vector<std::u16string> &names) {
    auto uid = fields.objectForKey(ClassKey).as<KeyedArchiverUID>();
    if (!uid || uid->value() == 0 || uid->value() >= objects->count()) {
      fail(u"object without a class");
      return false;
    }
    auto entry = objects->objectAtIndex(uid->value()).dictionary();
    if (!entry || !entry->objectForKey(u"$classname").isString()) {
      fail(u"class entry without a name");
      return false;
    }
    names.push_back(entry->objectForKey(u"$classname").string());
    if (auto classes = entry->objectForKey(u"$classes").array())
      for (const Value &name : *classes)
        if (name.isString() && name.string() != u"NSObject")
          names.push_back(name.string());
    return true;
  }

  Value decodeFields(KeyedUnarchiver &unarchiver, const Dictionary &fields, uint64_t index) {
    std::vector<std::u16string> names;
    if (!classNames(fields, names))
      return Value();
    for (const std::u16string &name : names) {
      if (name == u"NSArray" || name == u"NSMutableArray" || name == u"NSSet" ||
          name == u"NSMutableSet")
        return decodeArray(unarchiver, fields);
      if (name == u"NSDictionary" || name == u"NSMutableDictionary")
        return decodeDictionary(unarchiver, fields);
      if (name == u"NSDate") {
        const Value &time = fields.objectForKey(TimeKey);
        if (!time.isNumber())
          return failed(u"date without a time");
        return Value(Date(time.doubleValue()));
      }
      if (name == u"NSString" || name == u"NSMutableString") {
        const Value &text = fields.objectForKey(StringKey);
        if (text.isString())
          return text;
        const Value &bytes = fields.objectForKey(BytesKey);
        if (bytes.isData())
          return Value(fromUTF8(bytes.data().view()));
        return failed(u"string without text");
      }
      if (name == u"NSData" || name == u"NSMutableData") {
        const Value &bytes = fields.objectForKey(DataKey);
        if (!bytes.isData())
          return failed(u"data without bytes");
        return bytes;
      }
      if (ClassFactory factory = classFactory(toUTF8(name)))
        return decodeObject(unarchiver, fields, index, factory, name);
    }
    return failed(u"cannot decode object of class (" + names.front() + u")");
  }

  Value decodeObject(KeyedUnarchiver &unarchiver, const Dictionary &fields, uint64_t index,
                     const ClassFactory &factory, const std::u16string &name) {
    ObjectPtr object = factory();
    auto *coding = dynamic_cast<Coding *>(object.get());
    if (!coding)
      return failed(u"class (" + name + u") does not implement Coding");
    // Known before its fields, so that references back to it find it.
    decoded[index] = Value(object);
    const Dictionary *saved = current;
    current = &fields;
    coding->initWithCoder(unarchiver);
    current = saved;
    return Value(object);
  }

  // The references of `key` in `fields`, which must be an array of references.
  ArrayPtr referencesFor(const Dictionary &fields, std::u16string_view key) {
    auto references = fields.objectForKey(key).array();
    if (!references) {
      fail(u"container without its references");
      return nullptr;
    }
    return references;
  }

  Value decodeArray(KeyedUnarchiver &unarchiver, const Dictionary &fields) {
    ArrayPtr references = referencesFor(fields, ObjectsKey);
    if (!references)
      return Value();
    auto array = Array::create();
    array->values().reserve(references->count());
    for (const Value &reference : *references) {
      Value element = decodeReference(unarchiver, reference);
      if (error)
        return Value();
      array->addObject(std::move(element));
    }
    return Value(array);
  }

  Value decodeDictionary(KeyedUnarchiver &unarchiver, const Dictionary &fields) {
    ArrayPtr keys = referencesFor(fields, KeysKey);
    ArrayPtr values = keys ? referencesFor(fields, ObjectsKey) : nullptr;
    if (!values)
      return Value();
    if (keys->count() != values->count())
      return failed(u"dictionary with unequal keys and values");
    auto dictionary = Dictionary::create();
    for (size_t i = 0; i < keys->count(); ++i) {
      Value key = decodeReference(unarchiver, keys->objectAtIndex(i));
      Value value = error ? Value() : decodeReference(unarchiver, values->objectAtIndex(i));
      if (error)
        return Value();
      if (!key.isString())
        return failed(u"dictionary key is not a string");
      dictionary->setObject(std::move(value), key.string());
    }
    return Value(dictionary);
  }

  const Value &valueForKey(std::u16string_view key) const {
    static const Value nil;
    return current ? current->objectForKey(key) : nil;
  }
};

KeyedUnarchiver::KeyedUnarchiver() : impl_(std::make_unique<Impl>()) {}
KeyedUnarchiver::~KeyedUnarchiver() = default;

Value KeyedUnarchiver::unarchiveObjectWithData(const Data &data, ErrorPtr *error) {
  auto corrupt = [&](std::u16string_view reason, ErrorPtr underlying = nullptr) {
    auto info = Dictionary::create(
        {{std::u16string(LocalizedDescriptionKey),
          Value(u"The data couldn\u2019t be read because it isn\u2019t in the correct format.")},
         {std::u16string(LocalizedFailureReasonErrorKey), Value(reason)}});
    if (underlying)
      info->setObject(Value(underlying), UnderlyingErrorKey);
    setError(error, Error::errorWithDomain(CocoaErrorDomain, CoderReadCorruptError, info));
    return Value();
  };
  ErrorPtr plistError;
  auto archive =
      PropertyListSerialization::propertyListWithData(data, nullptr, &plistError).dictionary();
  if (!archive)
    return corrupt(plistError ? u"not a property list: " + plistError->localizedFailureReason()
                              : u"not a keyed archive");
  auto top = archive->objectForKey(u"$top").dictionary();
  auto objects = archive->objectForKey(u"$objects").array();
  if (!top || !objects || objects->empty())
    return corrupt(u"not a keyed archive");
  if (!top->containsKey(u"root"))
    return corrupt(u"archive without a root object");

  KeyedUnarchiver unarchiver;
  Impl &impl = *unarchiver.impl_;
  impl.objects = objects;
  impl.decoded.resize(objects->count());
  impl.states.resize(objects->count(), Impl::State::NotStarted);
  impl.current = top.get();
  impl.stackLimit = stackLimit();
  Value root;
  try {
    root = impl.decodeReference(unarchiver, top->objectForKey(u"root"));
  } catch (const std::exception &exception) {
    impl.fail(u"decoding stopped: " + fromUTF8(exception.what()));
  }
  if (impl.error) {
    for (const Value &value : impl.decoded)
      if (auto *coding = dynamic_cast<Coding *>(value.object().get()))
        coding->decodingDidFail();
    setError(error, impl.error);
    return Value();
  }
  return root;
}

bool KeyedUnarchiver::containsValueForKey(std::u16string_view key) const {
  return impl_->current && impl_->current->containsKey(key);
}

Value KeyedUnarchiver::decodeObjectForKey(std::u16string_view key) {
  if (impl_->error)
    return Value();
  const Value &reference = impl_->valueForKey(key);
  if (!reference.as<KeyedArchiverUID>())
    return Value();
  return impl_->decodeReference(*this, reference);
}

int64_t KeyedUnarchiver::decodeIntegerForKey(std::u16string_view key) {
  const Value &value = impl_->valueForKey(key);
  return value.isNumber() ? value.integerValue() : 0;
}

int32_t KeyedUnarchiver::decodeInt32ForKey(std::u16string_view key) {
  int64_t value = decodeIntegerForKey(key);
  return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

double KeyedUnarchiver::decodeDoubleForKey(std::u16string_view key) {
  const Value &value = impl_->valueForKey(key);
  return value.isNumber() ? value.doubleValue() : 0.0;
}

float KeyedUnarchiver::decodeFloatForKey(std::u16string_view key) {
  double value = decodeDoubleForKey(key);
  // Out of float's range the conversion is undefined; saturate as the platform does.
  if (std::isfinite(value) && std::fabs(value) > std::numeric_limits<float>::max())
    return value > 0 ? std::numeric_limits<float>::infinity()
                     : -std::numeric_limits<float>::infinity();
  return static_cast<float>(value);
}

bool KeyedUnarchiver::decodeBoolForKey(std::u16string_view key) {
  const Value &value = impl_->valueForKey(key);
  return value.isNumber() && value.boolValue();
}

Size KeyedUnarchiver::decodeSizeForKey(std::u16string_view key) {
  auto n = numbersIn<2>(impl_->valueForKey(key).string());
  return Size{n[0], n[1]};
}

Point KeyedUnarchiver::decodePointForKey(std::u16string_view key) {
  auto n = numbersIn<2>(impl_->valueForKey(key).string());
  return Point{n[0], n[1]};
}

Rect KeyedUnarchiver::decodeRectForKey(std::u16string_view key) {
  auto n = numbersIn<4>(impl_->valueForKey(key).string());
  return Rect{{n[0], n[1]}, {n[2], n[3]}};
}

void KeyedUnarchiver::failWithError(ErrorPtr error) {
  if (!error)
    impl_->fail(u"decoding stopped by a class");
  else if (!impl_->error)
    impl_->error = std::move(error);
}

const ErrorPtr &KeyedUnarchiver::error() const {
  return impl_->error;
}

} // namespace vl::ns
