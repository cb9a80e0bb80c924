// Dictionary: a mutable map from string keys to values with reference semantics
// (NSMutableDictionary), kept as a sorted flat vector so small maps are cheap and
// iteration order never depends on hashing.
#pragma once

#include "ns/Object.h"
#include "ns/Value.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vl::ns {

using ConstDictionaryPtr = std::shared_ptr<const Dictionary>;

/// Holders share one dictionary through DictionaryPtr; a read-only holder takes a
/// ConstDictionaryPtr. Iteration runs in key order (UTF-16 unit order). Lookups are binary
/// searches; insertion is linear in the count, which suits the dozen keys of run attributes.
class Dictionary : public Object {
public:
  using Entry = std::pair<std::u16string, Value>;

  Dictionary() = default;
  Dictionary(std::initializer_list<Entry> entries);
  static DictionaryPtr create() { return std::make_shared<Dictionary>(); }
  static DictionaryPtr create(std::initializer_list<Entry> entries) {
    return std::make_shared<Dictionary>(entries);
  }

  const char *className() const override { return "NSMutableDictionary"; }

  size_t count() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  /// The value for `key`, or nil. The reference stays valid until the next change.
  const Value &objectForKey(std::u16string_view key) const;
  /// A pointer to the value for `key`, or null.
  const Value *find(std::u16string_view key) const;
  Value *find(std::u16string_view key);
  bool containsKey(std::u16string_view key) const { return find(key) != nullptr; }

  /// Stores `value` under `key`; a nil value removes the key.
  void setObject(Value value, std::u16string_view key);
  void removeObjectForKey(std::u16string_view key);
  void removeObjectsForKeys(const std::vector<std::u16string> &keys);
  void removeAllObjects() { entries_.clear(); }
  /// Copies every entry of `other` in, replacing values under equal keys.
  void addEntriesFromDictionary(const Dictionary &other);
  void setDictionary(const Dictionary &other) { entries_ = other.entries_; }

  std::vector<std::u16string> allKeys() const;
  std::vector<Value> allValues() const;
  const std::vector<Entry> &entries() const { return entries_; }
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }

  /// Same keys with Value::isEqual values.
  bool isEqual(const Object &other) const override;
  size_t hash() const override { return entries_.size(); }
  /// "{\n    key = value;\n}" as the platform prints dictionaries.
  std::u16string description() const override;
  ObjectPtr copy() const override;
  ObjectPtr mutableCopy() const override { return copy(); }

  /// objectForKey.
  Value valueForKey(std::u16string_view key) override;

protected:
  /// setObject (nil removes); Object::setValueForKey announces the change.
  bool kvcSetValueForKey(std::u16string_view key, const Value &value) override;

private:
  std::vector<Entry>::const_iterator lowerBound(std::u16string_view key) const;
  std::vector<Entry> entries_;
};

} // namespace vl::ns
