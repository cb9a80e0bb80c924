// Cost of change announcements and notification posts, with and without listeners.
#include "ns/Dictionary.h"
#include "ns/NotificationCenter.h"
#include "ns/Object.h"

#include <benchmark/benchmark.h>

using namespace vl::ns;

namespace {

class Sink : public Object {
public:
  int64_t seen = 0;
  void observeValueForKeyPath(std::u16string_view, Object *, const DictionaryPtr &,
                              const void *) override {
    ++seen;
  }
};

void BM_AnnounceUnobserved(benchmark::State &state) {
  auto d = Dictionary::create();
  for (auto _ : state) {
    d->willChangeValueForKey(u"key");
    d->didChangeValueForKey(u"key");
    benchmark::DoNotOptimize(d.get());
  }
}
BENCHMARK(BM_AnnounceUnobserved);

void BM_AnnounceObservedOtherKey(benchmark::State &state) {
  auto d = Dictionary::create();
  Sink sink;
  d->addObserver(&sink, u"other", 0, nullptr);
  for (auto _ : state) {
    d->willChangeValueForKey(u"key");
    d->didChangeValueForKey(u"key");
  }
  d->removeObserver(&sink, u"other");
}
BENCHMARK(BM_AnnounceObservedOtherKey);

void BM_SetObservedKey(benchmark::State &state) {
  auto d = Dictionary::create();
  Sink sink;
  d->addObserver(&sink, u"key", KeyValueObservingOptionNew | KeyValueObservingOptionOld, nullptr);
  int64_t i = 0;
  for (auto _ : state)
    d->setValueForKey(++i, u"key");
  d->removeObserver(&sink, u"key");
}
BENCHMARK(BM_SetObservedKey);

void BM_ReplaceIntermediateOnObservedPath(benchmark::State &state) {
  auto root = Dictionary::create();
  Sink sink;
  root->addObserver(&sink, u"a.b.c", 0, nullptr);
  for (auto _ : state)
    root->setValueForKey(Dictionary::create({{u"b", Dictionary::create()}}), u"a");
  root->removeObserver(&sink, u"a.b.c");
}
BENCHMARK(BM_ReplaceIntermediateOnObservedPath);

void BM_PostWithoutListener(benchmark::State &state) {
  NotificationCenter center;
  Object sender, other;
  int observer = 0;
  center.addObserver(
      &observer, [](const Notification &) {}, u"Edited", &other);
  for (auto _ : state)
    center.postNotificationName(u"Edited", &sender);
}
BENCHMARK(BM_PostWithoutListener);

void BM_PostToOneListener(benchmark::State &state) {
  NotificationCenter center;
  Object sender;
  int observer = 0;
  int64_t seen = 0;
  center.addObserver(
      &observer, [&](const Notification &) { ++seen; }, u"Edited", &sender);
  for (auto _ : state)
    center.postNotificationName(u"Edited", &sender);
  benchmark::DoNotOptimize(seen);
}
BENCHMARK(BM_PostToOneListener);

} // namespace
