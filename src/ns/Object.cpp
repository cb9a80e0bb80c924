// Object basics and key-value coding.
#include "ns/Object.h"

#include "ns/Array.h"
#include "ns/Assert.h"
#include "ns/String.h"
#include "ns/Value.h"

#include <cstdio>
#include <ostream>

namespace vl::ns {

const char *Object::className() const {
  return "NSObject";
}

bool Object::isEqual(const Object &other) const {
  return this == &other;
}

size_t Object::hash() const {
  return std::hash<const void *>()(this);
}

std::u16string Object::description() const {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, ": %p>", static_cast<const void *>(this));
  std::u16string out = u"<";
  out += u16(className());
  out += u16(buffer);
  return out;
}

ObjectPtr Object::copy() const {
  VL_ASSERT(false, std::string("copy is not implemented by ") + className());
  return nullptr;
}

ObjectPtr Object::mutableCopy() const {
  return copy();
}

bool Object::kvcValueForKey(std::u16string_view, Value &) {
  return false;
}

bool Object::kvcSetValueForKey(std::u16string_view, const Value &) {
  return false;
}

Value Object::valueForKey(std::u16string_view key) {
  Value value;
  if (kvcValueForKey(key, value))
    return value;
  return valueForUndefinedKey(key);
}

void Object::setValueForKey(const Value &value, std::u16string_view key) {
  bool announce = hasObservers() && automaticallyNotifiesObserversForKey(key);
  if (announce)
    willChangeValueForKey(key);
  if (!kvcSetValueForKey(key, value))
    setValueForUndefinedKey(value, key);
  if (announce)
    didChangeValueForKey(key);
}

Value Object::valueForKeyPath(std::u16string_view keyPath) {
  size_t dot = keyPath.find(u'.');
  if (dot == std::u16string_view::npos)
    return valueForKey(keyPath);
  Value first = valueForKey(keyPath.substr(0, dot));
  if (!first.isObject())
    return Value();
  return first.object()->valueForKeyPath(keyPath.substr(dot + 1));
}

void Object::setValueForKeyPath(const Value &value, std::u16string_view keyPath) {
  size_t dot = keyPath.find(u'.');
  if (dot == std::u16string_view::npos) {
    setValueForKey(value, keyPath);
    return;
  }
  Value first = valueForKey(keyPath.substr(0, dot));
  if (first.isObject())
    first.object()->setValueForKeyPath(value, keyPath.substr(dot + 1));
}

Value Object::valueForUndefinedKey(std::u16string_view) {
  return Value();
}

void Object::setValueForUndefinedKey(const Value &, std::u16string_view) {}

void Object::observeValueForKeyPath(std::u16string_view, Object *, const DictionaryPtr &,
                                    const void *) {}

std::vector<std::u16string>
Object::keyPathsForValuesAffectingValueForKey(std::u16string_view) const {
  return {};
}

bool Object::automaticallyNotifiesObserversForKey(std::u16string_view) const {
  return true;
}

std::ostream &operator<<(std::ostream &out, const Object &object) {
  return out << toUTF8(object.description());
}

std::ostream &operator<<(std::ostream &out, const Value &value) {
  return out << toUTF8(value.description());
}

} // namespace vl::ns
