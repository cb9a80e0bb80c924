// Synchronous notifications by name and sender.
//
// Registrations sit in one vector in order of registration. A post walks the registrations
// that existed when it began, by index; removal during a post only marks a registration dead,
// and the dead are swept once the outermost post is over, so indexes and the running block
// stay valid however handlers add, remove or post.
#include "ns/NotificationCenter.h"

#include <algorithm>

namespace vl::ns {

struct NotificationCenter::Impl {
  struct Registration {
    const void *observer;
    Block block;
    std::u16string name;  // empty: any name
    const Object *sender; // null: any sender
    bool live = true;

    bool matches(std::u16string_view postedName, const Object *postedSender) const {
      return live && (name.empty() || name == postedName) && (!sender || sender == postedSender);
    }
  };

  /// Marks the registrations `match` selects dead, and sweeps them unless a post is running.
  template <class Match> void remove(Match match) {
    for (auto &r : registrations)
      if (r->live && match(*r)) {
        r->live = false;
        dirty = true;
      }
    sweep();
  }

  void sweep() {
    if (posting > 0 || !dirty)
      return;
    std::erase_if(registrations, [](const auto &r) { return !r->live; });
    dirty = false;
  }

  bool anyMatch(std::u16string_view name, const Object *sender) const {
    return std::any_of(registrations.begin(), registrations.end(),
                       [&](const auto &r) { return r->matches(name, sender); });
  }

  // unique_ptr: a block keeps its address while later registrations grow the vector.
  std::vector<std::unique_ptr<Registration>> registrations;
  int posting = 0;
  bool dirty = false;
};

NotificationCenter::NotificationCenter() : impl_(std::make_unique<Impl>()) {}

NotificationCenter::~NotificationCenter() = default;

NotificationCenter &NotificationCenter::defaultCenter() {
  static NotificationCenter center;
  return center;
}

void NotificationCenter::addObserver(const void *observer, Block block, std::u16string_view name,
                                     const Object *sender) {
  if (!block)
    return;
  impl_->registrations.push_back(std::make_unique<Impl::Registration>(
      Impl::Registration{observer, std::move(block), std::u16string(name), sender}));
}

void NotificationCenter::removeObserver(const void *observer) {
  impl_->remove([&](const Impl::Registration &r) { return r.observer == observer; });
}

void NotificationCenter::removeObserver(const void *observer, std::u16string_view name,
                                        const Object *sender) {
  impl_->remove([&](const Impl::Registration &r) {
    return r.observer == observer && (name.empty() || r.name == name) &&
           (!sender || r.sender == sender);
  });
}

void NotificationCenter::postNotification(const Notification &notification) {
  Impl &impl = *impl_;
  if (!impl.anyMatch(notification.name(), notification.object()))
    return;
  struct Posting {
    Impl &impl;
    explicit Posting(Impl &i) : impl(i) { ++impl.posting; }
    ~Posting() {
      --impl.posting;
      impl.sweep();
    }
  } posting(impl);
  // Registrations added by a handler land past `end` and wait for the next post.
  for (size_t i = 0, end = impl.registrations.size(); i < end; ++i) {
    Impl::Registration &r = *impl.registrations[i];
    if (r.matches(notification.name(), notification.object()))
      r.block(notification);
  }
}

void NotificationCenter::postNotificationName(std::u16string_view name, Object *sender,
                                              DictionaryPtr userInfo) {
  // Most posts have no listener: find that out before building the notification.
  if (!impl_->anyMatch(name, sender))
    return;
  postNotification(Notification(std::u16string(name), sender, std::move(userInfo)));
}

} // namespace vl::ns
