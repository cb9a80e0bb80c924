// Array: an ordered, mutable collection of values with reference semantics (NSMutableArray).
#pragma once

#include "ns/Object.h"
#include "ns/Range.h"
#include "ns/Value.h"

#include <initializer_list>
#include <vector>

namespace vl::ns {

/// Holders share one array through ArrayPtr and see each other's changes; copy() and
/// mutableCopy() make a new array holding the same values (objects are shared, not copied).
/// An index out of bounds fails an internal check.
class Array : public Object {
public:
  Array() = default;
  Array(std::initializer_list<Value> values) : values_(values) {}
  explicit Array(std::vector<Value> values) : values_(std::move(values)) {}
  static ArrayPtr create() { return std::make_shared<Array>(); }
  static ArrayPtr create(std::initializer_list<Value> values) {
    return std::make_shared<Array>(values);
  }
  static ArrayPtr create(std::vector<Value> values) {
    return std::make_shared<Array>(std::move(values));
  }

  const char *className() const override { return "NSMutableArray"; }

  size_t count() const { return values_.size(); }
  bool empty() const { return values_.empty(); }
  const Value &objectAtIndex(size_t index) const;
  const Value &operator[](size_t index) const { return objectAtIndex(index); }
  /// nil for an empty array.
  Value firstObject() const;
  Value lastObject() const;

  /// Index of the first value isEqual to `value`, or NotFound.
  uint64_t indexOfObject(const Value &value) const;
  /// Index of the first value identical to `value` (objects by pointer), or NotFound.
  uint64_t indexOfObjectIdenticalTo(const Value &value) const;
  bool containsObject(const Value &value) const { return indexOfObject(value) != NotFound; }
  bool containsObjectIdenticalTo(const Value &value) const {
    return indexOfObjectIdenticalTo(value) != NotFound;
  }

  void addObject(Value value);
  void addObjectsFromArray(const Array &other);
  void insertObject(Value value, size_t index);
  void replaceObjectAtIndex(size_t index, Value value);
  void removeObjectAtIndex(size_t index);
  void removeLastObject();
  void removeAllObjects() { values_.clear(); }
  /// Removes every value isEqual to `value`.
  void removeObject(const Value &value);
  /// Removes every value identical to `value`.
  void removeObjectIdenticalTo(const Value &value);
  void setArray(std::vector<Value> values) { values_ = std::move(values); }
  /// A new array with the values of `range`.
  ArrayPtr subarrayWithRange(Range range) const;

  std::vector<Value> &values() { return values_; }
  const std::vector<Value> &values() const { return values_; }
  auto begin() { return values_.begin(); }
  auto end() { return values_.end(); }
  auto begin() const { return values_.begin(); }
  auto end() const { return values_.end(); }

  /// Element by element with Value::isEqual.
  bool isEqual(const Object &other) const override;
  size_t hash() const override { return values_.size(); }
  /// "(\n    a,\n    b\n)" as the platform prints arrays.
  std::u16string description() const override;
  ObjectPtr copy() const override;
  ObjectPtr mutableCopy() const override { return copy(); }

  /// The array of each element's valueForKey (nil for elements that are not objects), so
  /// that a key path over an array of dictionaries gives the array of their values.
  Value valueForKey(std::u16string_view key) override;
  /// setValueForKey on every element that is an object.
  void setValueForKey(const Value &value, std::u16string_view key) override;

private:
  std::vector<Value> values_;
};

} // namespace vl::ns
