// Synchronous notifications by name and sender (the platform's NSNotificationCenter).
#pragma once

#include "ns/Dictionary.h"
#include "ns/Object.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vl::ns {

/// A posted notification: a name, the sender (not owned; may be null) and user info.
class Notification {
public:
  Notification(std::u16string name, Object *object, DictionaryPtr userInfo = nullptr)
      : name_(std::move(name)), object_(object), userInfo_(std::move(userInfo)) {}
  const std::u16string &name() const { return name_; }
  Object *object() const { return object_; }
  /// May be null.
  const DictionaryPtr &userInfo() const { return userInfo_; }

private:
  std::u16string name_;
  Object *object_;
  DictionaryPtr userInfo_;
};

/// Delivers notifications synchronously, in order of registration. A registration may be
/// removed (or added) during a post: a removed one is not called again, an added one is
/// called from the next post on. Handlers may post in turn. Not thread-safe: use it from the
/// thread that edits the objects it reports on.
class NotificationCenter {
public:
  using Block = std::function<void(const Notification &)>;

  NotificationCenter();
  ~NotificationCenter();
  NotificationCenter(const NotificationCenter &) = delete;
  NotificationCenter &operator=(const NotificationCenter &) = delete;

  /// The process-wide center.
  static NotificationCenter &defaultCenter();

  /// Calls `block` for notifications named `name` (any name when empty) from `sender` (any
  /// sender when null). `observer` identifies the registration for removal; it is not owned.
  void addObserver(const void *observer, Block block, std::u16string_view name,
                   const Object *sender);
  /// Removes every registration of `observer`.
  void removeObserver(const void *observer);
  /// Removes the registrations of `observer` matching `name` (all when empty) and `sender`
  /// (all when null).
  void removeObserver(const void *observer, std::u16string_view name, const Object *sender);

  /// Calls every matching registration. Costs a scan of the registrations; a post that
  /// nothing matches allocates nothing.
  void postNotification(const Notification &notification);
  /// Builds the notification only when some registration matches it.
  void postNotificationName(std::u16string_view name, Object *sender,
                            DictionaryPtr userInfo = nullptr);

private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

} // namespace vl::ns
