// Key-value observing: delivery, options, nesting, key paths, dependent keys and lifetimes.
#include "ns/Dictionary.h"
#include "ns/Object.h"
#include "ns/Value.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace vl::ns;

namespace {

DictionaryPtr city(std::u16string name) {
  return Dictionary::create({{u"city", std::move(name)}});
}

// A model whose address is a dictionary ("city"). fullName follows firstName and lastName,
// location follows address.city, partnerAddress follows partner.address. Its fields are
// dictionary entries: setObject changes one unannounced.
class Person : public Dictionary {
public:
  Person()
      : Dictionary({{u"firstName", u"Ann"}, {u"lastName", u"Doe"}, {u"address", city(u"Oslo")}}) {}
  bool announceLastName = true;

  DictionaryPtr address() { return objectForKey(u"address").dictionary(); }
  std::shared_ptr<Person> partner() { return objectForKey(u"partner").as<Person>(); }

  std::vector<std::u16string>
  keyPathsForValuesAffectingValueForKey(std::u16string_view key) const override {
    if (key == u"fullName")
      return {u"firstName", u"lastName"};
    if (key == u"location")
      return {u"address.city"};
    if (key == u"partnerAddress")
      return {u"partner.address"};
    return {};
  }
  bool automaticallyNotifiesObserversForKey(std::u16string_view key) const override {
    return key != u"lastName" || announceLastName;
  }
  Value valueForKey(std::u16string_view key) override {
    if (key == u"fullName")
      return objectForKey(u"firstName").string() + u" " + objectForKey(u"lastName").string();
    if (key == u"location")
      return address() ? Value(u"in " + address()->objectForKey(u"city").string()) : Value();
    if (key == u"partnerAddress")
      return partner() ? Value(partner()->address()) : Value();
    return Dictionary::valueForKey(key);
  }
};

// Two keys that claim to depend on each other.
class Loop : public Object {
public:
  std::vector<std::u16string>
  keyPathsForValuesAffectingValueForKey(std::u16string_view key) const override {
    return {key == u"a" ? u"b" : u"a"};
  }
};

struct Call {
  std::u16string keyPath;
  Object *object;
  DictionaryPtr change;
  const void *context;

  bool has(std::u16string_view key) const { return change->containsKey(key); }
  Value operator[](std::u16string_view key) const { return change->objectForKey(key); }
};

class Recorder : public Object {
public:
  std::vector<Call> calls;
  std::function<void(const Call &)> onCall;

  void observeValueForKeyPath(std::u16string_view keyPath, Object *object,
                              const DictionaryPtr &change, const void *context) override {
    calls.push_back({std::u16string(keyPath), object, change, context});
    if (onCall)
      onCall(Call(calls.back()));
  }
  Value lastNew() const { return calls.back()[KeyValueChangeNewKey]; }
};

const int kContext = 0, kOtherContext = 0;
constexpr uint32_t kOldNew = KeyValueObservingOptionOld | KeyValueObservingOptionNew;

} // namespace

TEST(KeyValueObserving, ChangeHoldsKindAndTheValuesAskedFor) {
  auto p = std::make_shared<Person>();
  Recorder r;
  p->addObserver(&r, u"firstName", kOldNew, &kContext);
  p->setValueForKey(u"Bea", u"firstName");
  p->setValueForKey(u"Roe", u"lastName");
  ASSERT_EQ(r.calls.size(), 1u);
  const Call &c = r.calls[0];
  EXPECT_EQ(c.keyPath, u"firstName");
  EXPECT_EQ(c.object, p.get());
  EXPECT_EQ(c.context, &kContext);
  EXPECT_EQ(c[KeyValueChangeKindKey], Value(int64_t{KeyValueChangeSetting}));
  EXPECT_EQ(c[KeyValueChangeOldKey], Value(u"Ann"));
  EXPECT_EQ(c[KeyValueChangeNewKey], Value(u"Bea"));

  auto d = Dictionary::create();
  d->addObserver(&r, u"k", kOldNew, nullptr);
  d->setValueForKey(5, u"k");
  d->setValueForKey(Value(), u"k");
  EXPECT_FALSE(r.calls.at(2).has(KeyValueChangeNewKey)) << "nil values are absent";

  // Initial: a call at once with the value; prior: a call before the change too.
  Recorder initial, prior;
  p->addObserver(&initial, u"firstName", KeyValueObservingOptionInitial | kOldNew, nullptr);
  ASSERT_EQ(initial.calls.size(), 1u);
  EXPECT_EQ(initial.lastNew(), Value(u"Bea"));
  p->addObserver(&prior, u"firstName", KeyValueObservingOptionPrior | kOldNew, nullptr);
  p->setValueForKey(u"Cid", u"firstName");
  ASSERT_EQ(prior.calls.size(), 2u);
  EXPECT_EQ(prior.calls[0][KeyValueChangeNotificationIsPriorKey], Value(true));
  EXPECT_EQ(prior.calls[0][KeyValueChangeOldKey], Value(u"Bea"));
  EXPECT_EQ(prior.lastNew(), Value(u"Cid"));
}

TEST(KeyValueObserving, NestedAnnouncementsDeliverOnceAtTheOutermostPair) {
  auto p = std::make_shared<Person>();
  Recorder r;
  p->addObserver(&r, u"firstName", kOldNew, nullptr);
  p->willChangeValueForKey(u"firstName");
  p->setObject(u"Bea", u"firstName");
  p->setValueForKey(u"Cid", u"firstName");
  EXPECT_TRUE(r.calls.empty());
  p->didChangeValueForKey(u"firstName");
  ASSERT_EQ(r.calls.size(), 1u);
  EXPECT_EQ(r.calls[0][KeyValueChangeOldKey], Value(u"Ann"));
  EXPECT_EQ(r.lastNew(), Value(u"Cid"));
  p->didChangeValueForKey(u"firstName");
  EXPECT_EQ(r.calls.size(), 1u) << "a did without its will delivers nothing";

  p->announceLastName = false;
  p->addObserver(&r, u"lastName", 0, nullptr);
  p->setValueForKey(u"Roe", u"lastName");
  EXPECT_EQ(r.calls.size(), 1u) << "automatic announcement turned off for the key";
}

TEST(KeyValueObservingPaths, ChangesAnywhereOnThePathReachTheObserver) {
  auto p = std::make_shared<Person>();
  Recorder r;
  p->addObserver(&r, u"address.city", kOldNew, nullptr);
  p->setValueForKeyPath(u"Rome", u"address.city");
  ASSERT_EQ(r.calls.size(), 1u);
  EXPECT_EQ(r.calls[0][KeyValueChangeOldKey], Value(u"Oslo"));
  EXPECT_EQ(r.lastNew(), Value(u"Rome"));

  auto old = p->address(), fresh = city(u"Kyiv");
  p->setValueForKey(fresh, u"address");
  EXPECT_EQ(r.lastNew(), Value(u"Kyiv"));
  old->setValueForKey(u"Bonn", u"city");
  EXPECT_FALSE(old->hasObservers()) << "the replaced intermediate is no longer watched";
  fresh->setValueForKey(u"Lima", u"city");
  EXPECT_EQ(r.lastNew(), Value(u"Lima"));

  p->setValueForKey(Value(), u"address");
  EXPECT_FALSE(r.calls.back().has(KeyValueChangeNewKey)) << "a broken path reads nil";
  p->setValueForKey(old, u"address");
  old->setValueForKey(u"Riga", u"city");
  EXPECT_EQ(r.calls.size(), 6u) << "a mended path is watched again";

  // Three levels, through a replaced middle.
  auto q = std::make_shared<Person>(), s = std::make_shared<Person>();
  p->setObject(q, u"partner");
  Recorder deep;
  p->addObserver(&deep, u"partner.address.city", KeyValueObservingOptionNew, nullptr);
  q->setValueForKey(city(u"Nice"), u"address");
  p->setValueForKey(s, u"partner");
  EXPECT_FALSE(q->hasObservers());
  s->address()->setValueForKey(u"Lima", u"city");
  ASSERT_EQ(deep.calls.size(), 3u);
  EXPECT_EQ(deep.lastNew(), Value(u"Lima"));
  p->removeObserver(&deep, u"partner.address.city");
  p->removeObserver(&r, u"address.city");
  EXPECT_FALSE(p->hasObservers() || s->hasObservers() || s->address()->hasObservers());
}

TEST(KeyValueObservingDependents, AffectingKeysAndPathsAreDeliveredAsTheDependentKey) {
  auto p = std::make_shared<Person>();
  p->setObject(std::make_shared<Person>(), u"partner");
  Recorder r, loc, partner;
  p->addObserver(&r, u"fullName", kOldNew, nullptr);
  p->setValueForKey(u"Bea", u"firstName");
  p->setValueForKey(u"Roe", u"lastName");
  ASSERT_EQ(r.calls.size(), 2u);
  EXPECT_EQ(r.calls[0][KeyValueChangeOldKey], Value(u"Ann Doe"));
  EXPECT_EQ(r.lastNew(), Value(u"Bea Roe"));

  p->addObserver(&loc, u"location", KeyValueObservingOptionNew, nullptr);
  auto old = p->address();
  p->setValueForKey(city(u"Kyiv"), u"address");
  old->setValueForKey(u"Bonn", u"city");
  p->address()->setValueForKey(u"Lima", u"city");
  ASSERT_EQ(loc.calls.size(), 2u);
  EXPECT_EQ(loc.lastNew(), Value(u"in Lima"));

  // A dependent key on the path moves the rest of the path along.
  p->addObserver(&partner, u"partnerAddress.city", 0, nullptr);
  old = p->partner()->address();
  auto fresh = city(u"Kyiv");
  p->partner()->setValueForKey(fresh, u"address");
  old->setValueForKey(u"Bonn", u"city");
  fresh->setValueForKey(u"Lima", u"city");
  EXPECT_EQ(partner.calls.size(), 2u);

  auto loop = std::make_shared<Loop>();
  loop->addObserver(&r, u"a", 0, nullptr);
  loop->willChangeValueForKey(u"b");
  loop->didChangeValueForKey(u"b");
  EXPECT_EQ(r.calls.size(), 3u) << "keys depending on each other deliver once";
}

TEST(KeyValueObservingRemoval, RemovalMatchesTheNewestRegistrationAndStopsDelivery) {
  auto p = std::make_shared<Person>();
  Recorder r;
  p->removeObserver(&r, u"firstName");
  p->addObserver(&r, u"firstName", 0, &kContext);
  p->addObserver(&r, u"firstName", 0, &kOtherContext);
  p->addObserver(&r, u"firstName", 0, &kContext);
  p->removeObserver(&r, u"firstName", &kOtherContext);
  p->removeObserver(&r, u"firstName");
  p->setValueForKey(u"Bea", u"firstName");
  ASSERT_EQ(r.calls.size(), 1u);
  EXPECT_EQ(r.calls[0].context, &kContext);
  p->removeObserver(&r, u"firstName");
  p->removeObserver(&r, u"firstName");
  EXPECT_FALSE(p->hasObservers());
}

TEST(KeyValueObservingRemoval, ObserversMayRemoveThemselvesAndOthersDuringDelivery) {
  auto p = std::make_shared<Person>();
  Recorder first, second, third;
  first.onCall = [&](const Call &) {
    p->removeObserver(&first, u"firstName");
    p->removeObserver(&second, u"firstName");
    p->addObserver(&third, u"firstName", 0, nullptr);
  };
  p->addObserver(&first, u"firstName", 0, nullptr);
  p->addObserver(&second, u"firstName", 0, nullptr);
  p->setValueForKey(u"Bea", u"firstName");
  EXPECT_TRUE(second.calls.empty()) << "removed earlier in the same delivery";
  EXPECT_TRUE(third.calls.empty()) << "added during the delivery";
  p->setValueForKey(u"Cid", u"firstName");
  EXPECT_EQ(first.calls.size(), 1u);
  EXPECT_EQ(third.calls.size(), 1u);

  p->addObserver(&third, u"address.city", 0, nullptr);
  third.onCall = [&](const Call &c) {
    p->removeObserver(&third, c.keyPath);
    p->removeObserver(&third, u"firstName");
  };
  auto old = p->address();
  p->setValueForKey(city(u"Kyiv"), u"address");
  EXPECT_FALSE(p->hasObservers() || old->hasObservers());
}

TEST(KeyValueObservingLifetime, DyingObjectsTakeTheirObservationWithThem) {
  Recorder r;
  auto address = city(u"Oslo");
  {
    auto p = std::make_shared<Person>();
    p->setObject(address, u"address");
    p->addObserver(&r, u"address.city", 0, nullptr);
    p->addObserver(&r, u"location", 0, nullptr);
  }
  EXPECT_FALSE(address->hasObservers()) << "forwarding from a dead object is gone";

  auto p = std::make_shared<Person>();
  p->addObserver(&r, u"address.city", 0, nullptr);
  p->setObject(Value(), u"address"); // the intermediate dies unannounced
  p->setValueForKey(city(u"Rome"), u"address");
  p->removeObserver(&r, u"address.city");
  EXPECT_FALSE(p->hasObservers());

  auto cyclic = std::make_shared<Person>();
  cyclic->setObject(cyclic, u"partner");
  cyclic->addObserver(&r, u"partner.partner.firstName", 0, nullptr);
  cyclic->setValueForKey(u"Cid", u"firstName");
  EXPECT_EQ(r.calls.size(), 2u);
  cyclic->setObject(Value(), u"partner"); // dies with its registration in place

  Person copy(*cyclic);
  EXPECT_FALSE(copy.hasObservers()) << "a copy has no observers of its own";
}
