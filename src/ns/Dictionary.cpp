// Dictionary operations over a sorted vector of entries.
#include "ns/Dictionary.h"

#include <algorithm>

namespace vl::ns {

namespace {
const Value &nilValue() {
  static const Value nil;
  return nil;
}
} // namespace

Dictionary::Dictionary(std::initializer_list<Entry> entries) {
  for (const Entry &e : entries)
    setObject(e.second, e.first);
}

std::vector<Dictionary::Entry>::const_iterator
Dictionary::lowerBound(std::u16string_view key) const {
  return std::lower_bound(entries_.begin(), entries_.end(), key,
                          [](const Entry &e, std::u16string_view k) { return e.first < k; });
}

const Value *Dictionary::find(std::u16string_view key) const {
  auto it = lowerBound(key);
  if (it != entries_.end() && it->first == key)
    return &it->second;
  return nullptr;
}

Value *Dictionary::find(std::u16string_view key) {
  return const_cast<Value *>(static_cast<const Dictionary *>(this)->find(key));
}

const Value &Dictionary::objectForKey(std::u16string_view key) const {
  const Value *v = find(key);
  return v ? *v : nilValue();
}

void Dictionary::setObject(Value value, std::u16string_view key) {
  if (value.isNil()) {
    removeObjectForKey(key);
    return;
  }
  auto it = entries_.begin() + (lowerBound(key) - entries_.cbegin());
  if (it != entries_.end() && it->first == key)
    it->second = std::move(value);
  else
    entries_.emplace(it, std::u16string(key), std::move(value));
}

void Dictionary::removeObjectForKey(std::u16string_view key) {
  auto it = lowerBound(key);
  if (it != entries_.end() && it->first == key)
    entries_.erase(it);
}

void Dictionary::removeObjectsForKeys(const std::vector<std::u16string> &keys) {
  for (const auto &k : keys)
    removeObjectForKey(k);
}

void Dictionary::addEntriesFromDictionary(const Dictionary &other) {
  if (&other == this)
    return;
  if (entries_.empty()) {
    entries_ = other.entries_;
    return;
  }
  for (const Entry &e : other.entries_)
    setObject(e.second, e.first);
}

std::vector<std::u16string> Dictionary::allKeys() const {
  std::vector<std::u16string> keys;
  keys.reserve(entries_.size());
  for (const Entry &e : entries_)
    keys.push_back(e.first);
  return keys;
}

std::vector<Value> Dictionary::allValues() const {
  std::vector<Value> values;
  values.reserve(entries_.size());
  for (const Entry &e : entries_)
    values.push_back(e.second);
  return values;
}

bool Dictionary::isEqual(const Object &other) const {
  if (this == &other)
    return true;
  auto *o = dynamic_cast<const Dictionary *>(&other);
  if (!o || o->entries_.size() != entries_.size())
    return false;
  for (size_t i = 0; i < entries_.size(); ++i)
    if (entries_[i].first != o->entries_[i].first ||
        !entries_[i].second.isEqual(o->entries_[i].second))
      return false;
  return true;
}

std::u16string Dictionary::description() const {
  std::u16string out = u"{\n";
  for (const Entry &e : entries_)
    out += u"    " + e.first + u" = " + e.second.description() + u";\n";
  return out + u"}";
}

ObjectPtr Dictionary::copy() const {
  auto d = create();
  d->entries_ = entries_;
  return d;
}

Value Dictionary::valueForKey(std::u16string_view key) {
  return objectForKey(key);
}

bool Dictionary::kvcSetValueForKey(std::u16string_view key, const Value &value) {
  setObject(value, key);
  return true;
}

} // namespace vl::ns
