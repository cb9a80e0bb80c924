// The root of objects with identity: equality, hashing, description, copying,
// key-value coding and key-value observing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vl::ns {

class Value;
class Object;
class Array;
class Dictionary;
using ObjectPtr = std::shared_ptr<Object>;
using ArrayPtr = std::shared_ptr<Array>;
using DictionaryPtr = std::shared_ptr<Dictionary>;

/// Bits of the options argument of Object::addObserver.
enum KeyValueObservingOptions : uint32_t {
  KeyValueObservingOptionNew = 0x01,
  KeyValueObservingOptionOld = 0x02,
  KeyValueObservingOptionInitial = 0x04,
  KeyValueObservingOptionPrior = 0x08,
};

/// Values under KeyValueChangeKindKey.
enum KeyValueChange : int64_t {
  KeyValueChangeSetting = 1,
  KeyValueChangeInsertion = 2,
  KeyValueChangeRemoval = 3,
  KeyValueChangeReplacement = 4,
};

/// Keys of the change dictionary given to Object::observeValueForKeyPath.
inline constexpr std::u16string_view KeyValueChangeKindKey = u"kind";
inline constexpr std::u16string_view KeyValueChangeNewKey = u"new";
inline constexpr std::u16string_view KeyValueChangeOldKey = u"old";
inline constexpr std::u16string_view KeyValueChangeNotificationIsPriorKey = u"notificationIsPrior";

namespace detail {
struct ObservationInfo;
}

/// Base of every object with identity. Objects live in std::shared_ptr (create them with
/// std::make_shared); the default equality is identity.
///
/// Key-value coding: valueForKey/setValueForKey reach the keys a class declares through the
/// protected hooks kvcValueForKey/kvcSetValueForKey; keys nobody declares go to
/// valueForUndefinedKey/setValueForUndefinedKey, which answer nil and ignore the write.
///
/// Key-value observing: observers are not owned and must remove themselves before they go.
/// A change is announced by willChangeValueForKey/didChangeValueForKey (nesting allowed);
/// setValueForKey announces its change itself unless automaticallyNotifiesObserversForKey
/// says no. With no observer registered, announcing a change costs one pointer test.
class Object : public std::enable_shared_from_this<Object> {
public:
  Object();
  Object(const Object &);
  Object &operator=(const Object &);
  virtual ~Object();

  /// The class name used by descriptions and keyed archives ("NSObject" here).
  virtual const char *className() const;

  /// Value equality where a class defines it; identity otherwise.
  virtual bool isEqual(const Object &other) const;
  /// Consistent with isEqual: equal objects hash alike.
  virtual size_t hash() const;
  /// "<ClassName: 0x...>" unless a class says more.
  virtual std::u16string description() const;

  /// A copy of a class that can be copied. Classes that cannot fail an internal check.
  virtual ObjectPtr copy() const;
  /// A mutable copy, where a class has a mutable form; copy() otherwise.
  virtual ObjectPtr mutableCopy() const;

  // Key-value coding.

  /// The value for `key`, or nil (through valueForUndefinedKey) for an unknown key.
  virtual Value valueForKey(std::u16string_view key);
  /// Sets `key` to `value`, announcing the change to observers.
  virtual void setValueForKey(const Value &value, std::u16string_view key);
  /// Follows a dotted path; a nil or non-object value on the way answers nil.
  Value valueForKeyPath(std::u16string_view keyPath);
  /// Follows all but the last key, then sets it; a missing level makes it do nothing.
  void setValueForKeyPath(const Value &value, std::u16string_view keyPath);
  /// Answers nil. Classes with free-form keys override it.
  virtual Value valueForUndefinedKey(std::u16string_view key);
  /// Does nothing. Classes with free-form keys override it.
  virtual void setValueForUndefinedKey(const Value &value, std::u16string_view key);

  // Key-value observing.

  /// Registers `observer` (not owned) for changes of `keyPath`, a dotted path that may run
  /// through intermediate objects. `context` tells registrations apart. A null observer or
  /// an empty path registers nothing. The registration goes with this object when it dies.
  void addObserver(Object *observer, std::u16string_view keyPath, uint32_t options,
                   const void *context);
  /// Removes the newest matching registration; a null context matches any. Removing a
  /// registration that does not exist does nothing.
  void removeObserver(Object *observer, std::u16string_view keyPath, const void *context = nullptr);
  void willChangeValueForKey(std::u16string_view key);
  void didChangeValueForKey(std::u16string_view key);
  /// Called on the observer for each change; `change` holds the kind and, by the options,
  /// the old and new values (a nil value is absent). The default does nothing.
  virtual void observeValueForKeyPath(std::u16string_view keyPath, Object *object,
                                      const DictionaryPtr &change, const void *context);
  /// Key paths whose changes also change `key` (dependent keys). Empty by default.
  virtual std::vector<std::u16string>
  keyPathsForValuesAffectingValueForKey(std::u16string_view key) const;
  /// Whether setValueForKey announces changes of `key` itself. True by default.
  virtual bool automaticallyNotifiesObserversForKey(std::u16string_view key) const;
  /// True while any observer is registered on this object.
  bool hasObservers() const { return observationInfo_ != nullptr; }

  /// shared_from_this() cast to the dynamic type the caller names.
  template <class T> std::shared_ptr<T> self() {
    return std::static_pointer_cast<T>(shared_from_this());
  }
  template <class T> std::shared_ptr<const T> self() const {
    return std::static_pointer_cast<const T>(shared_from_this());
  }

protected:
  /// Hook for the keys a class declares: stores the value in `value` and answers true, or
  /// answers false for a key it does not know (a subclass then calls its base class).
  virtual bool kvcValueForKey(std::u16string_view key, Value &value);
  /// Hook for the keys a class declares: stores and answers true, or false for an unknown key.
  virtual bool kvcSetValueForKey(std::u16string_view key, const Value &value);

private:
  friend struct detail::ObservationInfo;
  std::unique_ptr<detail::ObservationInfo> observationInfo_;
};

/// Value equality through isEqual, for objects compared by reference.
inline bool operator==(const Object &a, const Object &b) {
  return a.isEqual(b);
}

/// Typed copy: `copyOf(*style)` answers a std::shared_ptr<VLStyle>.
template <class T> std::shared_ptr<T> copyOf(const T &object) {
  return std::static_pointer_cast<T>(object.copy());
}
template <class T> std::shared_ptr<T> mutableCopyOf(const T &object) {
  return std::static_pointer_cast<T>(object.mutableCopy());
}

/// Prints the description in UTF-8 (for test diagnostics).
std::ostream &operator<<(std::ostream &out, const Object &object);
std::ostream &operator<<(std::ostream &out, const Value &value);

/// Declares className() for a class; put it in the public section.
#define VL_OBJECT(Name)                                                                            \
  const char *className() const override {                                                         \
    return #Name;                                                                                  \
  }

} // namespace vl::ns
