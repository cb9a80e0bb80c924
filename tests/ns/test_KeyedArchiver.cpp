// Keyed archives: the layout other tools read, object graphs with shared objects and rings,
// and archives damaged on purpose.
#include "ns/Array.h"
#include "ns/Assert.h"
#include "ns/Dictionary.h"
#include "ns/KeyedArchiver.h"
#include "ns/Log.h"
#include "ns/PropertyListSerialization.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <pthread.h>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

using namespace vl::ns;

namespace {

// A model object with a field of every kind the coder offers.
class Node : public Object, public Coding {
public:
  VL_OBJECT(TestNode)
  Node() { ++made; }

  std::u16string name;
  int64_t count = 0;
  int32_t small = 0;
  double weight = 0;
  float ratio = 0;
  bool flag = false;
  Size size;
  Point point;
  Rect rect;
  std::shared_ptr<Node> next;
  Value payload;

  void encodeWithCoder(KeyedArchiver &coder) const override {
    coder.encodeObject(Value(name), u"name");
    coder.encodeInteger(count, u"count");
    coder.encodeInt32(small, u"small");
    coder.encodeDouble(weight, u"weight");
    coder.encodeFloat(ratio, u"ratio");
    coder.encodeBool(flag, u"flag");
    coder.encodeSize(size, u"size");
    coder.encodePoint(point, u"point");
    coder.encodeRect(rect, u"rect");
    coder.encodeObject(Value(next), u"next");
    coder.encodeObject(payload, u"payload");
  }
  void initWithCoder(KeyedUnarchiver &coder) override {
    name = coder.decodeObjectForKey(u"name").string();
    count = coder.decodeIntegerForKey(u"count");
    small = coder.decodeInt32ForKey(u"small");
    weight = coder.decodeDoubleForKey(u"weight");
    ratio = coder.decodeFloatForKey(u"ratio");
    flag = coder.decodeBoolForKey(u"flag");
    size = coder.decodeSizeForKey(u"size");
    point = coder.decodePointForKey(u"point");
    rect = coder.decodeRectForKey(u"rect");
    next = coder.decodeObjectForKey(u"next").as<Node>();
    payload = coder.decodeObjectForKey(u"payload");
  }

  static inline int made = 0;
};
VL_REGISTER_CLASS(Node);

// Stops decoding through the unarchiver, or by throwing.
class Refuser : public Object, public Coding {
public:
  VL_OBJECT(TestRefuser)
  void encodeWithCoder(KeyedArchiver &coder) const override { coder.encodeBool(true, u"x"); }
  void initWithCoder(KeyedUnarchiver &coder) override {
    coder.failWithError(Error::errorWithDomain(u"Test", 7));
  }
};
VL_REGISTER_CLASS(Refuser);

class Thrower : public Object, public Coding {
public:
  VL_OBJECT(TestThrower)
  void encodeWithCoder(KeyedArchiver &) const override {}
  void initWithCoder(KeyedUnarchiver &) override { VL_ASSERT(false, "bad field"); }
};
VL_REGISTER_CLASS(Thrower);

// Holds its references weakly, so that no damaged archive can make it leak through a ring.
class Holder : public Object, public Coding {
public:
  VL_OBJECT(TestHolder)
  std::weak_ptr<Object> link;
  int64_t count = 0;
  void encodeWithCoder(KeyedArchiver &coder) const override {
    coder.encodeObject(Value(link.lock()), u"link");
    coder.encodeInteger(count, u"count");
  }
  void initWithCoder(KeyedUnarchiver &coder) override {
    link = coder.decodeObjectForKey(u"link").object();
    count = coder.decodeIntegerForKey(u"count");
  }
};
VL_REGISTER_CLASS(Holder);

std::shared_ptr<Node> node(std::u16string name) {
  auto n = std::make_shared<Node>();
  n->name = std::move(name);
  return n;
}

// Breaks a chain or ring of strong links without recursing through the destructors.
void dismantle(std::shared_ptr<Node> first) {
  while (first) {
    auto next = std::move(first->next);
    first = std::move(next);
  }
}

Value unarchive(const Data &data, ErrorPtr *error = nullptr) {
  return KeyedUnarchiver::unarchiveObjectWithData(data, error);
}

void expectCorrupt(const Data &data) {
  ErrorPtr error;
  EXPECT_TRUE(unarchive(data, &error).isNil());
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->domain(), CocoaErrorDomain);
  EXPECT_EQ(error->code(), CoderReadCorruptError);
}

Value uid(uint64_t index) {
  return Value(KeyedArchiverUID::create(index));
}

// An archive written by hand: "$top" refers to "$objects"[rootIndex].
Data handMade(std::vector<Value> objects, uint64_t rootIndex = 1) {
  objects.insert(objects.begin(), Value(u"$null"));
  auto archive =
      Dictionary::create({{u"$archiver", Value(u"NSKeyedArchiver")},
                          {u"$version", Value(100000)},
                          {u"$top", Value(Dictionary::create({{u"root", uid(rootIndex)}}))},
                          {u"$objects", Value(Array::create(std::move(objects)))}});
  return PropertyListSerialization::dataWithPropertyList(Value(archive),
                                                         PropertyListBinaryFormat_v1_0);
}

Value classEntry(const char16_t *name) {
  return Value(Dictionary::create(
      {{u"$classname", Value(name)}, {u"$classes", Value(Array::create({Value(name)}))}}));
}

Value arrayEntry(std::vector<Value> references, uint64_t classIndex) {
  return Value(Dictionary::create({{u"NS.objects", Value(Array::create(std::move(references)))},
                                   {u"$class", uid(classIndex)}}));
}

} // namespace

TEST(KeyedArchiver, EveryValueKindRoundTrips) {
  auto dictionary = Dictionary::create({
      {u"string", Value(u"caf\u00e9 \U0001F600")},
      {u"nul inside", Value(std::u16string(u"a\0b", 3))},
      {u"int", Value(int64_t{-9000000000})},
      {u"real", Value(2.5)},
      {u"bool", Value(true)},
      {u"data", Value(Data::fromString("bytes"))},
      {u"date", Value(Date(-1e10))},
      {u"array", Value(Array::create({Value(1), Value(u"x"), Value(Array::create())}))},
      {u"dictionary", Value(Dictionary::create({{u"k", Value(false)}}))},
  });
  Value back = unarchive(KeyedArchiver::archivedDataWithRootObject(Value(dictionary)));
  EXPECT_EQ(back, Value(dictionary)) << toUTF8(back.description());
  EXPECT_TRUE(back.dictionary()->objectForKey(u"date").isDate());
  EXPECT_TRUE(back.dictionary()->objectForKey(u"array").array());
  for (Value scalar : {Value(u"alone"), Value(42), Value(1.25), Value(false),
                       Value(Data::fromString("d")), Value(Date(5))})
    EXPECT_EQ(unarchive(KeyedArchiver::archivedDataWithRootObject(scalar)), scalar);
  ErrorPtr error;
  EXPECT_TRUE(unarchive(KeyedArchiver::archivedDataWithRootObject(Value()), &error).isNil());
  EXPECT_EQ(error, nullptr);
}

TEST(KeyedArchiver, WritesTheKeyedArchiveLayout) {
  auto shared = Array::create({Value(u"s")});
  auto root =
      Array::create({Value(shared), Value(shared), Value(Array::create()), Value(u"s"), Value(7)});
  auto archive = PropertyListSerialization::propertyListWithData(
                     KeyedArchiver::archivedDataWithRootObject(Value(root)))
                     .dictionary();
  ASSERT_TRUE(archive);
  EXPECT_EQ(archive->objectForKey(u"$archiver"), Value(u"NSKeyedArchiver"));
  EXPECT_EQ(archive->objectForKey(u"$version"), Value(100000));
  auto objects = archive->objectForKey(u"$objects").array();
  ASSERT_TRUE(objects);
  EXPECT_EQ((*objects)[0], Value(u"$null"));
  auto rootUID =
      archive->objectForKey(u"$top").dictionary()->objectForKey(u"root").as<KeyedArchiverUID>();
  ASSERT_TRUE(rootUID);
  auto rootEntry = (*objects)[rootUID->value()].dictionary();
  ASSERT_TRUE(rootEntry);
  auto references = rootEntry->objectForKey(u"NS.objects").array();
  ASSERT_EQ(references->count(), 5u);
  // The shared array is stored once; equal strings once; numbers as plain values.
  EXPECT_EQ((*references)[0], (*references)[1]);
  EXPECT_NE((*references)[0], (*references)[2]);
  EXPECT_EQ((*objects)[(*references)[4].as<KeyedArchiverUID>()->value()], Value(7));
  size_t strings = 0, arrayClasses = 0;
  for (const Value &entry : *objects) {
    strings += entry == Value(u"s");
    auto d = entry.dictionary();
    if (d && d->objectForKey(u"$classname") == Value(u"NSMutableArray")) {
      ++arrayClasses;
      EXPECT_EQ(
          d->objectForKey(u"$classes"),
          Value(Array::create({Value(u"NSMutableArray"), Value(u"NSArray"), Value(u"NSObject")})));
    }
  }
  EXPECT_EQ(strings, 1u);
  EXPECT_EQ(arrayClasses, 1u);
}

TEST(KeyedArchiver, CodingFieldsAreStoredUnderTheirKeys) {
  auto n = node(u"one");
  n->count = 3;
  n->flag = true;
  n->size = MakeSize(612, 792.5);
  n->rect = MakeRect(1, 2, 3, 4);
  auto archive = PropertyListSerialization::propertyListWithData(
                     KeyedArchiver::archivedDataWithRootObject(Value(n)))
                     .dictionary();
  auto objects = archive->objectForKey(u"$objects").array();
  DictionaryPtr fields;
  for (const Value &entry : *objects)
    if (auto d = entry.dictionary(); d && d->containsKey(u"count"))
      fields = d;
  ASSERT_TRUE(fields);
  EXPECT_EQ(fields->objectForKey(u"count"), Value(3));
  EXPECT_TRUE(fields->objectForKey(u"flag").isBool());
  EXPECT_EQ(fields->objectForKey(u"size"), Value(u"{612, 792.5}"));
  EXPECT_EQ(fields->objectForKey(u"rect"), Value(u"{{1, 2}, {3, 4}}"));
  EXPECT_EQ(fields->objectForKey(u"next").as<KeyedArchiverUID>()->value(), 0u);
  auto nodeClass = (*objects)[fields->objectForKey(u"$class").as<KeyedArchiverUID>()->value()];
  EXPECT_EQ(nodeClass.dictionary()->objectForKey(u"$classname"), Value(u"TestNode"));
}

TEST(KeyedArchiver, PlistutilReadsTheArchive) {
  if (std::system("command -v plistutil >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "plistutil is not installed";
  auto n = node(u"readable");
  Data data = KeyedArchiver::archivedDataWithRootObject(Value(n));
  auto dir = std::filesystem::temp_directory_path() / ("vl_archive_" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  {
    std::ofstream out(dir / "a.archive", std::ios::binary);
    out.write(reinterpret_cast<const char *>(data.bytes()),
              static_cast<std::streamsize>(data.length()));
  }
  std::string command = "plistutil -i '" + (dir / "a.archive").string() + "' -o '" +
                        (dir / "a.xml").string() + "' 2>/dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0);
  std::ifstream in(dir / "a.xml");
  std::string xml((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_NE(xml.find("NSKeyedArchiver"), std::string::npos);
  EXPECT_NE(xml.find("CF$UID"), std::string::npos);
  EXPECT_NE(xml.find("TestNode"), std::string::npos);
  // And the XML form decodes as well as the binary one.
  EXPECT_EQ(unarchive(Data::fromString(xml)).as<Node>()->name, u"readable");
  std::filesystem::remove_all(dir);
}

TEST(KeyedArchiver, CodingObjectsRoundTripWithEveryFieldKind) {
  auto n = node(u"full");
  n->count = -12;
  n->small = -7;
  n->weight = 0.1;
  n->ratio = 1.5f;
  n->flag = true;
  n->size = MakeSize(612, 792);
  n->point = MakePoint(-3.25, 4);
  n->rect = MakeRect(1.5, 2, 300, 400.75);
  n->payload = Value(Array::create({Value(u"p"), Value(Dictionary::create({{u"k", Value(1)}}))}));
  auto back = unarchive(KeyedArchiver::archivedDataWithRootObject(Value(n))).as<Node>();
  ASSERT_TRUE(back);
  EXPECT_EQ(back->name, u"full");
  EXPECT_EQ(back->count, -12);
  EXPECT_EQ(back->small, -7);
  EXPECT_EQ(back->weight, 0.1);
  EXPECT_EQ(back->ratio, 1.5f);
  EXPECT_TRUE(back->flag);
  EXPECT_EQ(back->size, MakeSize(612, 792));
  EXPECT_EQ(back->point, MakePoint(-3.25, 4));
  EXPECT_EQ(back->rect, MakeRect(1.5, 2, 300, 400.75));
  EXPECT_EQ(back->payload, n->payload);
  EXPECT_EQ(back->next, nullptr);
}

TEST(KeyedArchiver, RingsAndSharedObjectsKeepTheirIdentity) {
  auto a = node(u"a"), b = node(u"b"), c = node(u"c");
  a->next = b;
  b->next = a; // a ring of two
  c->next = c; // a style whose next style is itself
  c->payload = Value(a);
  auto root = Array::create({Value(a), Value(b), Value(a), Value(c)});
  Data data = KeyedArchiver::archivedDataWithRootObject(Value(root));
  int before = Node::made;
  auto back = unarchive(data).array();
  ASSERT_TRUE(back);
  EXPECT_EQ(Node::made - before, 3);
  auto a2 = (*back)[0].as<Node>(), b2 = (*back)[1].as<Node>(), c2 = (*back)[3].as<Node>();
  ASSERT_TRUE(a2 && b2 && c2);
  EXPECT_EQ(a2->name, u"a");
  EXPECT_EQ(a2->next, b2);
  EXPECT_EQ(b2->next, a2);
  EXPECT_EQ((*back)[2].object(), a2);
  EXPECT_EQ(c2->next, c2);
  EXPECT_EQ(c2->payload.object(), a2);
  for (auto *n : {a.get(), b.get(), c.get(), a2.get(), b2.get(), c2.get()})
    n->next.reset();
}

TEST(KeyedArchiver, MissingAndMistypedKeysDecodeAsNothing) {
  // A node archived with strings where numbers belong, and numbers where objects belong.
  Value entry = Value(Dictionary::create({{u"count", Value(u"12")},
                                          {u"flag", Value(u"YES")},
                                          {u"weight", Value(Data::fromString("x"))},
                                          {u"size", Value(5)},
                                          {u"name", Value(3)},
                                          {u"small", Value(int64_t{1} << 40)},
                                          {u"ratio", Value(1e300)},
                                          {u"$class", uid(2)}}));
  auto back = unarchive(handMade({entry, classEntry(u"TestNode")})).as<Node>();
  ASSERT_TRUE(back);
  EXPECT_EQ(back->count, 0);
  EXPECT_FALSE(back->flag);
  EXPECT_EQ(back->weight, 0.0);
  EXPECT_EQ(back->size, Size());
  EXPECT_EQ(back->name, u"");
  EXPECT_EQ(back->small, INT32_MAX);
  EXPECT_EQ(back->ratio, std::numeric_limits<float>::infinity());
  EXPECT_EQ(back->next, nullptr);
  EXPECT_TRUE(back->payload.isNil());
}

TEST(KeyedArchiver, ObjectsWithoutCodingAreArchivedAsNilWithAWarning) {
  std::vector<std::string> messages;
  LogSink previous = setLogSink([&](LogLevel level, std::string_view message) {
    if (level == LogLevel::Warning)
      messages.emplace_back(message);
  });
  auto root = Array::create({Value(std::make_shared<Object>()), Value(1)});
  auto back = unarchive(KeyedArchiver::archivedDataWithRootObject(Value(root))).array();
  setLogSink(previous);
  ASSERT_TRUE(back);
  EXPECT_TRUE((*back)[0].isNil());
  EXPECT_EQ((*back)[1], Value(1));
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_NE(messages[0].find("NSObject"), std::string::npos);
}

TEST(KeyedArchiver, DeepGraphsArchiveAndFailCleanlyWhenTooDeepToDecode) {
  auto chain = [](size_t length) {
    auto first = node(u"0");
    auto last = first;
    for (size_t i = 1; i < length; ++i) {
      last->next = node(u16(std::to_string(i)));
      last = last->next;
    }
    return first;
  };
  auto shallow = chain(KeyedArchiveMaxDepth - 1);
  auto back = unarchive(KeyedArchiver::archivedDataWithRootObject(Value(shallow))).as<Node>();
  ASSERT_TRUE(back);
  size_t length = 0;
  for (auto n = back; n; n = n->next)
    ++length;
  EXPECT_EQ(length, KeyedArchiveMaxDepth - 1);
  dismantle(back);
  dismantle(shallow);

  auto deep = chain(KeyedArchiveMaxDepth + 500);
  Data data = KeyedArchiver::archivedDataWithRootObject(Value(deep));
  dismantle(deep);
  EXPECT_FALSE(data.empty());
  expectCorrupt(data);
}

#if defined(__GLIBC__)
TEST(KeyedArchiver, DecodingOnASmallStackStopsBeforeItRunsOut) {
  auto first = node(u"0");
  auto last = first;
  for (size_t i = 1; i < KeyedArchiveMaxDepth - 1; ++i) {
    last->next = node(u"n");
    last = last->next;
  }
  struct Job {
    Data data;
    Value result;
    ErrorPtr error;
  } job{KeyedArchiver::archivedDataWithRootObject(Value(first)), {}, {}};
  dismantle(first);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 512 * 1024);
  pthread_t thread;
  ASSERT_EQ(pthread_create(
                &thread, &attributes,
                [](void *argument) -> void * {
                  auto *j = static_cast<Job *>(argument);
                  j->result = unarchive(j->data, &j->error);
                  return nullptr;
                },
                &job),
            0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  // Either the chain fitted, or decoding stopped with an error; never a crash.
  EXPECT_EQ(job.result.isNil(), job.error != nullptr);
  dismantle(job.result.as<Node>());
}
#endif

TEST(KeyedArchiver, DamagedArchivesAnswerNilWithAnError) {
  Value arrayClass = classEntry(u"NSMutableArray");
  // Unknown class, with its name in the error.
  ErrorPtr error;
  EXPECT_TRUE(unarchive(handMade({Value(Dictionary::create({{u"$class", uid(2)}})),
                                  classEntry(u"NoSuchClass")}),
                        &error)
                  .isNil());
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->code(), CoderReadCorruptError);
  EXPECT_NE(toUTF8(error->localizedFailureReason()).find("NoSuchClass"), std::string::npos);
  // Root reference out of range, and an element reference out of range.
  expectCorrupt(handMade({Value(u"x")}, 9));
  expectCorrupt(handMade({arrayEntry({uid(40)}, 2), arrayClass}));
  // No class, a class entry without a name, a class reference to nothing.
  expectCorrupt(handMade({Value(Dictionary::create({{u"NS.objects", Value(Array::create())}}))}));
  expectCorrupt(handMade({arrayEntry({}, 2), Value(Dictionary::create())}));
  expectCorrupt(handMade({arrayEntry({}, 0)}));
  // Containers of the wrong shape.
  expectCorrupt(handMade(
      {Value(Dictionary::create({{u"NS.objects", Value(3)}, {u"$class", uid(2)}})), arrayClass}));
  expectCorrupt(handMade({arrayEntry({Value(5)}, 2), arrayClass}));
  expectCorrupt(handMade({Value(Dictionary::create({{u"NS.keys", Value(Array::create({uid(3)}))},
                                                    {u"NS.objects", Value(Array::create())},
                                                    {u"$class", uid(2)}})),
                          classEntry(u"NSDictionary"), Value(u"k")}));
  expectCorrupt(handMade({Value(Dictionary::create({{u"NS.keys", Value(Array::create({uid(3)}))},
                                                    {u"NS.objects", Value(Array::create({uid(3)}))},
                                                    {u"$class", uid(2)}})),
                          classEntry(u"NSDictionary"), Value(7)}));
  // An array that contains itself, directly and through a Coding object.
  expectCorrupt(handMade({arrayEntry({uid(1)}, 2), arrayClass}));
  expectCorrupt(handMade({arrayEntry({uid(3)}, 2), arrayClass,
                          Value(Dictionary::create({{u"payload", uid(1)}, {u"$class", uid(4)}})),
                          classEntry(u"TestNode")}));
  // Not an archive at all.
  expectCorrupt(PropertyListSerialization::dataWithPropertyList(Value(Array::create()),
                                                                PropertyListBinaryFormat_v1_0));
  expectCorrupt(Data::fromString("garbage"));
  expectCorrupt(Data());
}

TEST(KeyedArchiver, ClassesCanStopDecoding) {
  ErrorPtr error;
  Data refused = KeyedArchiver::archivedDataWithRootObject(
      Value(Array::create({Value(std::make_shared<Refuser>())})));
  EXPECT_TRUE(unarchive(refused, &error).isNil());
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->domain(), u"Test");
  Data thrown = KeyedArchiver::archivedDataWithRootObject(Value(std::make_shared<Thrower>()));
  expectCorrupt(thrown);
  registerClass("TestNotCoding", [] { return std::make_shared<Object>(); });
  expectCorrupt(
      handMade({Value(Dictionary::create({{u"$class", uid(2)}})), classEntry(u"TestNotCoding")}));
}

TEST(KeyedArchiver, TruncatedAndRandomBytesFailCleanly) {
  auto a = std::make_shared<Holder>(), b = std::make_shared<Holder>();
  a->link = b;
  b->link = a;
  b->count = 9;
  auto root = Dictionary::create({{u"holders", Value(Array::create({Value(a), Value(b)}))},
                                  {u"text", Value(u"t")},
                                  {u"when", Value(Date(3))},
                                  {u"bytes", Value(Data::fromString("xyz"))}});
  Data whole = KeyedArchiver::archivedDataWithRootObject(Value(root));
  auto back = unarchive(whole).dictionary();
  ASSERT_TRUE(back);
  auto holders = back->objectForKey(u"holders").array();
  ASSERT_EQ(holders->count(), 2u);
  EXPECT_EQ((*holders)[0].as<Holder>()->link.lock(), (*holders)[1].object());
  EXPECT_EQ((*holders)[1].as<Holder>()->count, 9);
  for (size_t length = 0; length < whole.length(); ++length)
    expectCorrupt(Data(whole.bytes(), length));
  std::mt19937 random(77);
  for (int round = 0; round < 2000; ++round) {
    std::vector<uint8_t> bytes = whole.toVector();
    for (int i = 0; i < 3; ++i)
      bytes[random() % bytes.size()] = static_cast<uint8_t>(random());
    ErrorPtr error;
    Value v = unarchive(Data(std::move(bytes)), &error);
    EXPECT_EQ(v.isNil(), error != nullptr);
  }
}
