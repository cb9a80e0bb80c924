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

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <pthread.h>
#include <string>
#include <unistd.h>
#include <vector>

using namespace vl::ns;

namespace {

// The archive as plistutil prints it in XML, or nothing when plistutil is not installed.
std::optional<Data> plistutilXML(const Data &data) {
  if (std::system("command -v plistutil >/dev/null 2>&1") != 0)
    return std::nullopt;
  auto base = std::filesystem::temp_directory_path() / ("vl_archive_" + std::to_string(getpid()));
  std::ofstream(base.string() + ".bin", std::ios::binary)
      .write(reinterpret_cast<const char *>(data.bytes()), std::streamsize(data.length()));
  std::string command =
      "plistutil -i '" + base.string() + ".bin' -o '" + base.string() + ".xml' 2>/dev/null";
  const bool ok = std::system(command.c_str()) == 0;
  std::ifstream in(base.string() + ".xml", std::ios::binary);
  std::string xml((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::filesystem::remove(base.string() + ".bin");
  std::filesystem::remove(base.string() + ".xml");
  EXPECT_TRUE(ok) << "plistutil cannot read the archive";
  return Data::fromString(xml);
}

// A model object with a field of most kinds the coder offers. Its link is weak, as a style's
// next style is a reference into its sheet, so no archive can make it leak.
class Node : public Object, public Coding {
public:
  VL_OBJECT(TestNode)
  Node() { ++made; }

  std::u16string name;
  int64_t count = 0;
  int32_t small = 0;
  double weight = 0;
  bool flag = false;
  Size size;
  Rect rect;
  std::weak_ptr<Object> next;
  int stop = 0; // 1: failWithError, 2: throw

  void encodeWithCoder(KeyedArchiver &coder) const override {
    coder.encodeObject(Value(name), u"name");
    coder.encodeInteger(count, u"count");
    coder.encodeInt32(small, u"small");
    coder.encodeDouble(weight, u"weight");
    coder.encodeBool(flag, u"flag");
    coder.encodeSize(size, u"size");
    coder.encodeRect(rect, u"rect");
    coder.encodeObject(Value(next.lock()), u"next");
    coder.encodeInteger(stop, u"stop");
  }
  void initWithCoder(KeyedUnarchiver &coder) override {
    name = coder.decodeObjectForKey(u"name").string();
    count = coder.decodeIntegerForKey(u"count");
    small = coder.decodeInt32ForKey(u"small");
    weight = coder.decodeDoubleForKey(u"weight");
    flag = coder.decodeBoolForKey(u"flag");
    size = coder.decodeSizeForKey(u"size");
    rect = coder.decodeRectForKey(u"rect");
    next = coder.decodeObjectForKey(u"next").object();
    if (coder.decodeIntegerForKey(u"stop") == 1)
      coder.failWithError(Error::errorWithDomain(u"Test", 7));
    VL_ASSERT(coder.decodeIntegerForKey(u"stop") != 2, "bad field");
  }

  std::shared_ptr<Node> nextNode() const { return std::dynamic_pointer_cast<Node>(next.lock()); }
  auto fields() const { return std::make_tuple(name, count, small, weight, flag, size, rect); }

  static inline int made = 0;
};
VL_REGISTER_CLASS(Node);

std::shared_ptr<Node> node(std::u16string name) {
  auto n = std::make_shared<Node>();
  n->name = std::move(name);
  return n;
}

// `length` nodes, each linked to the next, in an array that owns them.
ArrayPtr chain(size_t length) {
  auto nodes = Array::create();
  for (size_t i = 0; i < length; ++i) {
    auto n = node(u16(std::to_string(i)));
    if (i > 0)
      nodes->lastObject().as<Node>()->next = n;
    nodes->addObject(Value(n));
  }
  return nodes;
}

Value unarchive(const Data &data, ErrorPtr *error = nullptr) {
  return KeyedUnarchiver::unarchiveObjectWithData(data, error);
}

Value archiveAndBack(const Value &root) {
  return unarchive(KeyedArchiver::archivedDataWithRootObject(root));
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

Value entry(std::initializer_list<Dictionary::Entry> fields) {
  return Value(Dictionary::create(fields));
}

Value references(std::vector<Value> uids) {
  return Value(Array::create(std::move(uids)));
}

} // namespace

TEST(KeyedArchiver, EveryValueKindRoundTrips) {
  auto dictionary = Dictionary::create({
      {u"string", Value(u"caf\u00e9 \U0001F600")},
      {u"int", Value(int64_t{-9000000000})},
      {u"bool", Value(true)},
      {u"data", Value(Data::fromString("bytes"))},
      {u"date", Value(Date(-1e10))},
      {u"array", Value(Array::create({Value(1), Value(u"x"), Value(Array::create())}))},
      {u"dictionary", Value(Dictionary::create({{u"k", Value(false)}}))},
  });
  Value back = archiveAndBack(Value(dictionary));
  EXPECT_EQ(back, Value(dictionary)) << toUTF8(back.description());
  EXPECT_TRUE(back.dictionary()->objectForKey(u"date").isDate());
  for (Value scalar : {Value(u"alone"), Value(42), Value(Date(5))})
    EXPECT_EQ(archiveAndBack(scalar), scalar);
  ErrorPtr error;
  EXPECT_TRUE(unarchive(KeyedArchiver::archivedDataWithRootObject(Value()), &error).isNil());
  EXPECT_EQ(error, nullptr);
}

TEST(KeyedArchiver, WritesTheKeyedArchiveLayout) {
  auto shared = Array::create({Value(u"s")});
  auto n = node(u"n");
  n->size = MakeSize(612, 792.5);
  n->rect = MakeRect(1, 2, 3, 4);
  auto root = Array::create({Value(shared), Value(shared), Value(u"s"), Value(7), Value(n)});
  auto archive = PropertyListSerialization::propertyListWithData(
                     KeyedArchiver::archivedDataWithRootObject(Value(root)))
                     .dictionary();
  ASSERT_TRUE(archive);
  EXPECT_EQ(archive->objectForKey(u"$archiver"), Value(u"NSKeyedArchiver"));
  auto objects = archive->objectForKey(u"$objects").array();
  EXPECT_EQ((*objects)[0], Value(u"$null"));
  auto at = [&](const Value &ref) { return (*objects)[ref.as<KeyedArchiverUID>()->value()]; };
  auto field = [&](const Value &object, const char16_t *key) {
    return object.dictionary()->objectForKey(key);
  };
  auto refs = field(at(field(archive->objectForKey(u"$top"), u"root")), u"NS.objects").array();
  ASSERT_EQ(refs->count(), 5u);
  // The shared array is stored once, equal strings once, numbers as plain values.
  EXPECT_EQ((*refs)[0], (*refs)[1]);
  EXPECT_EQ((*refs)[2], field(at((*refs)[0]), u"NS.objects").array()->firstObject());
  EXPECT_EQ(at((*refs)[3]), Value(7));
  EXPECT_EQ(
      field(at(field(at((*refs)[0]), u"$class")), u"$classes"),
      Value(Array::create({Value(u"NSMutableArray"), Value(u"NSArray"), Value(u"NSObject")})));
  // A Coding object's fields: geometry as strings, nil as $null.
  Value fields = at((*refs)[4]);
  EXPECT_EQ(field(fields, u"size"), Value(u"{612, 792.5}"));
  EXPECT_EQ(field(fields, u"rect"), Value(u"{{1, 2}, {3, 4}}"));
  EXPECT_EQ(field(fields, u"next"), Value(KeyedArchiverUID::create(0)));
}

TEST(KeyedArchiver, RingsSharedObjectsAndEveryFieldKindRoundTrip) {
  auto a = node(u"a"), b = node(u"b"), c = node(u"c");
  a->next = b;
  b->next = a; // a ring of two
  c->next = c; // a style whose next style is itself
  a->count = -12;
  a->small = -7;
  a->weight = 0.1;
  a->flag = true;
  a->size = MakeSize(612, 792);
  a->rect = MakeRect(1.5, 2, 300, 400.75);
  Data data = KeyedArchiver::archivedDataWithRootObject(
      Value(Array::create({Value(a), Value(b), Value(a), Value(c)})));

  // Another tool reads the archive (plistutil, installed with the dependencies), and the XML
  // form it prints decodes as well as the binary one.
  std::optional<Data> printed = plistutilXML(data);
  Data xml = printed ? *printed
                     : PropertyListSerialization::dataWithPropertyList(
                           PropertyListSerialization::propertyListWithData(data),
                           PropertyListXMLFormat_v1_0);
  EXPECT_NE(std::string(xml.view()).find("CF$UID"), std::string::npos);
  for (const Data &form : {data, xml}) {
    int before = Node::made;
    auto back = unarchive(form).array();
    ASSERT_TRUE(back);
    EXPECT_EQ(Node::made - before, 3);
    auto a2 = (*back)[0].as<Node>(), b2 = (*back)[1].as<Node>(), c2 = (*back)[3].as<Node>();
    ASSERT_TRUE(a2 && b2 && c2);
    EXPECT_EQ(a2->nextNode(), b2);
    EXPECT_EQ(b2->nextNode(), a2);
    EXPECT_EQ((*back)[2].object(), a2);
    EXPECT_EQ(c2->nextNode(), c2);
    EXPECT_TRUE(a2->fields() == a->fields());
  }
}

TEST(KeyedArchiver, MissingAndMistypedKeysDecodeAsNothing) {
  // Strings where numbers belong, numbers where objects belong, values out of range.
  Value fields = entry({{u"count", Value(u"12")},
                        {u"flag", Value(u"YES")},
                        {u"weight", Value(Data::fromString("x"))},
                        {u"size", Value(5)},
                        {u"name", Value(3)},
                        {u"small", Value(int64_t{1} << 40)},
                        {u"$class", uid(2)}});
  auto back = unarchive(handMade({fields, classEntry(u"TestNode")})).as<Node>();
  ASSERT_TRUE(back);
  Node expected;
  expected.small = INT32_MAX;
  EXPECT_TRUE(back->fields() == expected.fields());
  EXPECT_EQ(back->nextNode(), nullptr);
}

TEST(KeyedArchiver, ObjectsWithoutCodingAreArchivedAsNilWithAWarning) {
  std::vector<std::string> warnings;
  LogSink previous = setLogSink([&](LogLevel, std::string_view m) { warnings.emplace_back(m); });
  auto back =
      archiveAndBack(Value(Array::create({Value(std::make_shared<Object>()), Value(1)}))).array();
  setLogSink(previous);
  ASSERT_TRUE(back);
  EXPECT_TRUE((*back)[0].isNil());
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_NE(warnings[0].find("NSObject"), std::string::npos);
}

TEST(KeyedArchiver, DeepGraphsArchiveAndFailCleanlyWhenTooDeepToDecode) {
  // The array and a chain below its first element fill the nesting limit exactly.
  auto back = archiveAndBack(Value(chain(KeyedArchiveMaxDepth - 1))).array();
  ASSERT_TRUE(back);
  size_t length = 0;
  for (auto n = (*back)[0].as<Node>(); n; n = n->nextNode())
    ++length;
  EXPECT_EQ(length, KeyedArchiveMaxDepth - 1);
  Data deep = KeyedArchiver::archivedDataWithRootObject(Value(chain(KeyedArchiveMaxDepth + 500)));
  EXPECT_FALSE(deep.empty());
  expectCorrupt(deep);
}

#if defined(__GLIBC__)
TEST(KeyedArchiver, DecodingOnASmallStackStopsBeforeItRunsOut) {
  struct Job {
    Data data;
    Value result;
    ErrorPtr error;
  } job{KeyedArchiver::archivedDataWithRootObject(Value(chain(KeyedArchiveMaxDepth - 1))), {}, {}};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 512 * 1024);
  pthread_t thread;
  auto run = [](void *argument) -> void * {
    auto *j = static_cast<Job *>(argument);
    j->result = unarchive(j->data, &j->error);
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &job), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  // Either the chain fitted, or decoding stopped with an error; never a crash.
  EXPECT_EQ(job.result.isNil(), job.error != nullptr);
}
#endif

TEST(KeyedArchiver, DamagedArchivesAnswerNilWithAnError) {
  ErrorPtr error;
  EXPECT_TRUE(
      unarchive(handMade({entry({{u"$class", uid(2)}}), classEntry(u"NoSuchClass")}), &error)
          .isNil());
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->code(), CoderReadCorruptError);
  EXPECT_NE(toUTF8(error->localizedFailureReason()).find("NoSuchClass"), std::string::npos);

  Value arrayClass = classEntry(u"NSMutableArray");
  Value dictionaryClass = classEntry(u"NSDictionary");
  for (const std::vector<Value> &objects : std::vector<std::vector<Value>>{
           // An element reference out of range.
           {entry({{u"NS.objects", references({uid(40)})}, {u"$class", uid(2)}}), arrayClass},
           // No class, a class entry without a name.
           {entry({{u"NS.objects", references({})}})},
           {entry({{u"NS.objects", references({})}, {u"$class", uid(2)}}), entry({})},
           // Containers of the wrong shape.
           {entry({{u"NS.objects", Value(3)}, {u"$class", uid(2)}}), arrayClass},
           {entry({{u"NS.keys", references({uid(3)})},
                   {u"NS.objects", references({})},
                   {u"$class", uid(2)}}),
            dictionaryClass, Value(u"k")},
           {entry({{u"NS.keys", references({uid(3)})},
                   {u"NS.objects", references({uid(3)})},
                   {u"$class", uid(2)}}),
            dictionaryClass, Value(7)},
           // An array that contains itself, directly and through a Coding object.
           {entry({{u"NS.objects", references({uid(1)})}, {u"$class", uid(2)}}), arrayClass},
           {entry({{u"NS.objects", references({uid(3)})}, {u"$class", uid(2)}}), arrayClass,
            entry({{u"next", uid(1)}, {u"$class", uid(4)}}), classEntry(u"TestNode")},
       })
    expectCorrupt(handMade(objects));
  expectCorrupt(handMade({Value(u"x")}, 9));
  expectCorrupt(PropertyListSerialization::dataWithPropertyList(Value(Array::create()),
                                                                PropertyListBinaryFormat_v1_0));
}

TEST(KeyedArchiver, ClassesCanStopDecoding) {
  auto refuser = node(u"r");
  refuser->stop = 1;
  ErrorPtr error;
  EXPECT_TRUE(
      unarchive(KeyedArchiver::archivedDataWithRootObject(Value(Array::create({Value(refuser)}))),
                &error)
          .isNil());
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->domain(), u"Test");
  auto thrower = node(u"t");
  thrower->stop = 2; // a failed check inside initWithCoder
  expectCorrupt(KeyedArchiver::archivedDataWithRootObject(Value(thrower)));
  registerClass("TestNotCoding", [] { return std::make_shared<Object>(); });
  expectCorrupt(handMade({entry({{u"$class", uid(2)}}), classEntry(u"TestNotCoding")}));
}

TEST(KeyedArchiver, EveryTruncationFailsCleanly) {
  auto nodes = chain(3);
  nodes->lastObject().as<Node>()->next = nodes->firstObject().object();
  auto root = Dictionary::create({{u"nodes", Value(nodes)},
                                  {u"text", Value(u"t")},
                                  {u"when", Value(Date(3))},
                                  {u"bytes", Value(Data::fromString("xyz"))}});
  Data whole = KeyedArchiver::archivedDataWithRootObject(Value(root));
  for (size_t length = 0; length < whole.length(); ++length)
    expectCorrupt(Data(whole.bytes(), length));
}
