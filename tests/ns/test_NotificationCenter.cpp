// Notification center: filtering by name and sender, order, and changes during a post.
#include "ns/NotificationCenter.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

using namespace vl::ns;

namespace {

constexpr std::u16string_view kEdited = u"Edited", kMoved = u"Moved";
using Log = std::vector<std::string>;

// A block that logs "who:name".
NotificationCenter::Block record(Log &log, std::string who) {
  return [&log, who](const Notification &n) {
    log.push_back(who + ":" + std::string(n.name().begin(), n.name().end()));
  };
}

} // namespace

TEST(NotificationCenter, FiltersByNameAndSenderInOrderOfRegistration) {
  NotificationCenter center;
  Object a, b;
  Log log;
  int named = 0, fromA = 0, any = 0, both = 0;
  center.addObserver(&named, record(log, "named"), kEdited, nullptr);
  center.addObserver(&fromA, record(log, "fromA"), u"", &a);
  center.addObserver(&any, record(log, "any"), u"", nullptr);
  center.addObserver(&both, record(log, "both"), kMoved, &b);
  center.postNotificationName(kEdited, &a);
  center.postNotificationName(kMoved, &b);
  center.postNotificationName(kEdited, nullptr);
  EXPECT_EQ(log, (Log{"named:Edited", "fromA:Edited", "any:Edited", "any:Moved", "both:Moved",
                      "named:Edited", "any:Edited"}));

  std::optional<Notification> seen;
  center.addObserver(
      &seen, [&](const Notification &n) { seen = n; }, kMoved, nullptr);
  auto info = Dictionary::create({{u"changeInLength", 3}});
  center.postNotificationName(kMoved, &a, info);
  ASSERT_TRUE(seen);
  EXPECT_EQ(seen->object(), &a);
  EXPECT_EQ(seen->userInfo(), info);
}

TEST(NotificationCenter, RemovalBySelectionAndInFull) {
  NotificationCenter center;
  Object a, b;
  Log log;
  int storage = 0;
  center.addObserver(&storage, record(log, "e"), kEdited, &a);
  center.addObserver(&storage, record(log, "m"), kMoved, &a);
  center.addObserver(&storage, record(log, "b"), kEdited, &b);
  center.removeObserver(&storage, kEdited, &a);
  center.postNotificationName(kEdited, &a);
  center.postNotificationName(kMoved, &a);
  center.removeObserver(&storage, u"", &a);
  center.postNotificationName(kMoved, &a);
  center.postNotificationName(kEdited, &b);
  center.removeObserver(&storage);
  center.removeObserver(&storage);
  center.postNotificationName(kEdited, &b);
  EXPECT_EQ(log, (Log{"m:Moved", "b:Edited"}));
}

TEST(NotificationCenter, RemovalDuringAPostIsImmediateAdditionWaitsForTheNextPost) {
  NotificationCenter center;
  Log log;
  int first = 0, second = 0, late = 0;
  auto removeAndAdd = [&](const Notification &) {
    log.push_back("first");
    center.removeObserver(&second);
    center.removeObserver(&first);
    center.addObserver(&late, record(log, "late"), kEdited, nullptr);
  };
  center.addObserver(&first, removeAndAdd, kEdited, nullptr);
  center.addObserver(&second, record(log, "second"), kEdited, nullptr);
  center.postNotificationName(kEdited, nullptr);
  center.postNotificationName(kEdited, nullptr);
  EXPECT_EQ(log, (Log{"first", "late:Edited"}));
}

TEST(NotificationCenter, HandlersMayPostAndRemoveFromNestedPosts) {
  NotificationCenter center;
  Log log;
  int outer = 0, inner = 0, victim = 0;
  auto repost = [&](const Notification &) {
    log.push_back("outer");
    center.postNotificationName(kMoved, nullptr);
  };
  auto removeVictim = [&](const Notification &) {
    log.push_back("inner");
    center.removeObserver(&victim);
  };
  center.addObserver(&outer, repost, kEdited, nullptr);
  center.addObserver(&inner, removeVictim, kMoved, nullptr);
  center.addObserver(&victim, record(log, "victim"), u"", nullptr);
  center.postNotificationName(kEdited, nullptr);
  EXPECT_EQ(log, (Log{"outer", "inner"})) << "removed in the nested post, so not called after";
}
