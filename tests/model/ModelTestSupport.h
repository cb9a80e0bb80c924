// Helpers shared by the model tests: archive round trips, archived key names, notice counts.
#pragma once

#include "model/VLConstants.h"
#include "ns/Array.h"
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
  if (!archive)
    return {};
  auto objects = archive->objectForKey(u"$objects").array();
  auto deref = [&](const ns::Value &reference) {
    auto uid = reference.as<ns::KeyedArchiverUID>();
    return uid && uid->value() < objects->count() ? (*objects)[uid->value()] : ns::Value();
  };
  for (const ns::Value &object : *objects) {
    auto entry = object.dictionary();
    if (!entry || !entry->containsKey(u"$class"))
      continue;
    auto classEntry = deref(entry->objectForKey(u"$class")).dictionary();
    if (!classEntry || classEntry->objectForKey(u"$classname").string() != className)
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
