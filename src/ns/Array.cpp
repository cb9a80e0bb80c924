// Array operations.
#include "ns/Array.h"

#include "ns/Assert.h"
#include "ns/String.h"

#include <algorithm>

namespace vl::ns {

const Value &Array::objectAtIndex(size_t index) const {
  VL_ASSERT(index < values_.size(), "index " + std::to_string(index) + " beyond bounds [0 .. " +
                                        std::to_string(values_.size()) + ")");
  return values_[index];
}

Value Array::firstObject() const {
  return values_.empty() ? Value() : values_.front();
}
Value Array::lastObject() const {
  return values_.empty() ? Value() : values_.back();
}

uint64_t Array::indexOfObject(const Value &value) const {
  for (size_t i = 0; i < values_.size(); ++i)
    if (values_[i].isEqual(value))
      return i;
  return NotFound;
}

uint64_t Array::indexOfObjectIdenticalTo(const Value &value) const {
  for (size_t i = 0; i < values_.size(); ++i)
    if (values_[i].isIdenticalTo(value))
      return i;
  return NotFound;
}

void Array::addObject(Value value) {
  values_.push_back(std::move(value));
}

void Array::addObjectsFromArray(const Array &other) {
  if (&other == this) {
    std::vector<Value> copy = values_;
    values_.insert(values_.end(), copy.begin(), copy.end());
    return;
  }
  values_.insert(values_.end(), other.values_.begin(), other.values_.end());
}

void Array::insertObject(Value value, size_t index) {
  VL_ASSERT(index <= values_.size(), "index " + std::to_string(index) + " beyond bounds");
  values_.insert(values_.begin() + static_cast<ptrdiff_t>(index), std::move(value));
}

void Array::replaceObjectAtIndex(size_t index, Value value) {
  VL_ASSERT(index < values_.size(), "index " + std::to_string(index) + " beyond bounds");
  values_[index] = std::move(value);
}

void Array::removeObjectAtIndex(size_t index) {
  VL_ASSERT(index < values_.size(), "index " + std::to_string(index) + " beyond bounds");
  values_.erase(values_.begin() + static_cast<ptrdiff_t>(index));
}

void Array::removeLastObject() {
  VL_ASSERT(!values_.empty(), "removeLastObject on an empty array");
  values_.pop_back();
}

void Array::removeObject(const Value &value) {
  std::erase_if(values_, [&](const Value &v) { return v.isEqual(value); });
}

void Array::removeObjectIdenticalTo(const Value &value) {
  std::erase_if(values_, [&](const Value &v) { return v.isIdenticalTo(value); });
}

ArrayPtr Array::subarrayWithRange(Range range) const {
  VL_ASSERT(range.max() <= values_.size(), "range beyond bounds");
  return create(std::vector<Value>(values_.begin() + static_cast<ptrdiff_t>(range.location),
                                   values_.begin() + static_cast<ptrdiff_t>(range.max())));
}

bool Array::isEqual(const Object &other) const {
  if (this == &other)
    return true;
  auto *o = dynamic_cast<const Array *>(&other);
  if (!o || o->values_.size() != values_.size())
    return false;
  for (size_t i = 0; i < values_.size(); ++i)
    if (!values_[i].isEqual(o->values_[i]))
      return false;
  return true;
}

std::u16string Array::description() const {
  std::u16string out = u"(";
  for (size_t i = 0; i < values_.size(); ++i) {
    out += i == 0 ? u"\n    " : u",\n    ";
    out += values_[i].description();
  }
  out += values_.empty() ? u")" : u"\n)";
  return out;
}

ObjectPtr Array::copy() const {
  return create(values_);
}

Value Array::valueForKey(std::u16string_view key) {
  auto result = create();
  result->values_.reserve(values_.size());
  for (const Value &v : values_)
    result->values_.push_back(v.isObject() ? v.object()->valueForKey(key) : Value());
  return result;
}

void Array::setValueForKey(const Value &value, std::u16string_view key) {
  for (const Value &v : values_)
    if (v.isObject())
      v.object()->setValueForKey(value, key);
}

} // namespace vl::ns
