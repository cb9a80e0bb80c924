// Helpers shared by the model tests: fonts, named styles, archive round trips and keys,
// failed checks and change counters.
#pragma once

#include "model/VLConstants.h"
#include "model/VLStyle.h"
#include "ns/Array.h"
#include "ns/Assert.h"
#include "ns/Dictionary.h"
#include "ns/KeyedArchiver.h"
#include "ns/NotificationCenter.h"
#include "ns/PropertyListSerialization.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace vl::test {

/// The catalogue font `name` at `size`; fails the test if there is none.
inline ns::FontPtr font(std::u16string_view name, double size = 12) {
  ns::FontPtr found = ns::Font::fontWithName(name, size);
  EXPECT_TRUE(found) << "font missing from the catalogue";
  return found;
}

/// A new style with `styleName` (unset when empty) below `parent`.
inline VLStylePtr named(std::u16string_view styleName, const VLStylePtr &parent = nullptr) {
  VLStylePtr style = VLStyle::create();
  if (!styleName.empty())
    style->setStyleName(std::u16string(styleName));
  style->setParentStyle(parent);
  return style;
}

inline VLStylePtr childOf(const VLStylePtr &parent) {
  return named(u"", parent);
}

/// `object` archived and decoded again; fails the test if decoding reports an error.
template <class T> std::shared_ptr<T> roundTrip(const std::shared_ptr<T> &object) {
  ns::Data data = ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(object));
  ns::ErrorPtr error;
  ns::Value decoded = ns::KeyedUnarchiver::unarchiveObjectWithData(data, &error);
  EXPECT_FALSE(error);
  return decoded.as<T>();
}

/// The coder keys (sorted, "$class" left out) of the first object of `className` in the
/// archive of `root`; empty if there is none.
inline std::vector<std::u16string> archivedKeys(const ns::Value &root, std::u16string className) {
  auto archive = ns::PropertyListSerialization::propertyListWithData(
                     ns::KeyedArchiver::archivedDataWithRootObject(root))
                     .dictionary();
  auto objects = archive ? archive->objectForKey(u"$objects").array() : nullptr;
  if (!objects)
    return {};
  for (const ns::Value &object : *objects) {
    auto entry = object.dictionary();
    auto uid = entry ? entry->objectForKey(u"$class").as<ns::KeyedArchiverUID>() : nullptr;
    auto entryClass =
        uid && uid->value() < objects->count() ? (*objects)[uid->value()].dictionary() : nullptr;
    if (!entryClass || entryClass->objectForKey(u"$classname").string() != className)
      continue;
    std::vector<std::u16string> keys = entry->allKeys();
    keys.erase(std::remove(keys.begin(), keys.end(), u"$class"), keys.end());
    std::sort(keys.begin(), keys.end());
    return keys;
  }
  return {};
}

/// `keys` sorted, to compare with archivedKeys.
inline std::vector<std::u16string> sorted(std::vector<std::u16string> keys) {
  std::sort(keys.begin(), keys.end());
  return keys;
}

/// The description of the failed internal check `f` throws, or "(no failure)".
template <class F> std::string failureOf(F &&f) {
  try {
    f();
  } catch (const ns::InternalInconsistencyException &e) {
    return e.description();
  }
  return "(no failure)";
}

/// Counts key-value change notices.
struct Counter : ns::Object {
  int changes = 0;
  void observeValueForKeyPath(std::u16string_view, ns::Object *, const ns::DictionaryPtr &,
                              const void *) override {
    ++changes;
  }
};

/// Counts the page layout notices posted by one sender while it lives.
class LayoutNotices {
public:
  explicit LayoutNotices(const ns::Object &sender) {
    ns::NotificationCenter::defaultCenter().addObserver(
        this, [this](const ns::Notification &) { ++count; }, VLPageLayoutDidChangeNotification,
        &sender);
  }
  ~LayoutNotices() { ns::NotificationCenter::defaultCenter().removeObserver(this); }
  LayoutNotices(const LayoutNotices &) = delete;
  LayoutNotices &operator=(const LayoutNotices &) = delete;

  int count = 0;
};

} // namespace vl::test
