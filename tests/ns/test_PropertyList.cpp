// Property lists: round trips in both forms, values no property list can carry, and input
// that is malformed on purpose.
#include "ns/Array.h"
#include "ns/Dictionary.h"
#include "ns/PropertyListSerialization.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace vl::ns;

namespace {

constexpr PropertyListFormat BothFormats[] = {PropertyListXMLFormat_v1_0,
                                              PropertyListBinaryFormat_v1_0};

Value roundTrip(const Value &plist, PropertyListFormat format) {
  ErrorPtr error;
  Data data = PropertyListSerialization::dataWithPropertyList(plist, format, &error);
  EXPECT_FALSE(data.empty()) << (error ? toUTF8(error->description()) : "");
  PropertyListFormat read = PropertyListFormat(0);
  Value back = PropertyListSerialization::propertyListWithData(data, &read, &error);
  EXPECT_EQ(read, format);
  return back;
}

void expectUnreadable(const Data &data) {
  ErrorPtr error;
  Value v = PropertyListSerialization::propertyListWithData(data, nullptr, &error);
  EXPECT_TRUE(v.isNil());
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->domain(), CocoaErrorDomain);
  EXPECT_EQ(error->code(), PropertyListReadCorruptError);
}

ErrorPtr writeError(const Value &plist, PropertyListFormat format) {
  ErrorPtr error;
  Data data = PropertyListSerialization::dataWithPropertyList(plist, format, &error);
  EXPECT_TRUE(data.empty());
  EXPECT_FALSE(PropertyListSerialization::propertyListIsValidForFormat(plist, format));
  return error;
}

// A binary property list of encoded objects whose references are `refSize` bytes; the top
// object is the first.
Data bplist(const std::vector<std::string> &objects, int refSize = 1) {
  std::string out = "bplist00";
  std::vector<size_t> offsets;
  for (const std::string &object : objects) {
    offsets.push_back(out.size());
    out += object;
  }
  auto bigEndian = [](uint64_t v, int size) {
    std::string bytes;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
      bytes += static_cast<char>((v >> shift) & 0xFF);
    return bytes;
  };
  size_t table = out.size();
  int offsetSize = table < 0x100 ? 1 : table < 0x10000 ? 2 : 4;
  for (size_t offset : offsets)
    out += bigEndian(offset, offsetSize);
  return Data::fromString(out + std::string(6, '\0') + char(offsetSize) + char(refSize) +
                          bigEndian(objects.size(), 8) + bigEndian(0, 8) + bigEndian(table, 8));
}

std::string nested(const std::string &open, const std::string &close, size_t depth) {
  std::string xml = "<?xml version=\"1.0\"?><plist version=\"1.0\">";
  for (size_t i = 0; i < depth; ++i)
    xml += open;
  for (size_t i = 0; i < depth; ++i)
    xml += close;
  return xml + "</plist>";
}

DictionaryPtr everyKind() {
  auto inner = Dictionary::create({{u"empty array", Value(Array::create())},
                                   {u"empty dictionary", Value(Dictionary::create())}});
  return Dictionary::create({
      {u"string", Value(u"caf\u00e9 <&> \U0001F600 \"q\"")},
      {u"min", Value(std::numeric_limits<int64_t>::min())},
      {u"max", Value(std::numeric_limits<int64_t>::max())},
      {u"real", Value(0.1)},
      {u"tiny", Value(5e-324)},
      {u"true", Value(true)},
      {u"data", Value(Data::fromString(std::string("\0\x01\xff", 3)))},
      {u"date", Value(Date(-86400.0 * 365))},
      {u"array", Value(Array::create({Value(1), Value(u"two"), Value(inner)}))},
      {u"\u00fcnicode key", Value(u"v")},
  });
}

} // namespace

TEST(PropertyList, EveryKindRoundTripsInBothFormats) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  for (PropertyListFormat format : BothFormats) {
    Value back = roundTrip(Value(everyKind()), format);
    ASSERT_TRUE(back.dictionary()) << format;
    EXPECT_EQ(back, Value(everyKind())) << toUTF8(back.description());
    EXPECT_TRUE(back.dictionary()->objectForKey(u"true").isBool());
    EXPECT_TRUE(back.dictionary()->objectForKey(u"date").isDate());
    // Scalars alone, infinities and NaN.
    EXPECT_EQ(roundTrip(Value(u"alone"), format), Value(u"alone"));
    EXPECT_EQ(roundTrip(Value(-inf), format), Value(-inf));
    EXPECT_TRUE(std::isnan(roundTrip(Value(std::nan("")), format).doubleValue()));
  }
  // XML dates carry whole seconds; binary ones keep the fraction, before 2001 too.
  EXPECT_EQ(roundTrip(Value(Date(123456.75)), PropertyListXMLFormat_v1_0).date(), Date(123456));
  EXPECT_EQ(roundTrip(Value(Date(-0.25)), PropertyListBinaryFormat_v1_0).date(), Date(-0.25));
}

TEST(PropertyList, ReadsHandWrittenXML) {
  const char *xml = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<!-- a comment -->
<dict>
  <key>Name</key> <string>  spaced &amp; escaped  </string>
  <key>Hex</key> <integer> 0x1F </integer>
  <key>Big</key> <integer>18446744073709551615</integer>
  <key>Bytes</key> <data>
    AAEC
    /w==
  </data>
  <key>When</key> <date>2001-01-02T00:00:00Z</date>
  <key>Ref</key> <dict><key>CF$UID</key><integer>3</integer></dict>
</dict>
</plist>)";
  PropertyListFormat format = PropertyListFormat(0);
  ErrorPtr error;
  auto dict =
      PropertyListSerialization::propertyListWithData(Data::fromString(xml), &format, &error)
          .dictionary();
  ASSERT_TRUE(dict) << (error ? toUTF8(error->description()) : "");
  EXPECT_EQ(format, PropertyListXMLFormat_v1_0);
  EXPECT_EQ(dict->objectForKey(u"Name"), Value(u"  spaced & escaped  "));
  EXPECT_EQ(dict->objectForKey(u"Hex"), Value(31));
  EXPECT_EQ(dict->objectForKey(u"Big"), Value(UINT64_MAX));
  EXPECT_EQ(dict->objectForKey(u"Bytes").data(),
            Data::fromString(std::string("\0\x01\x02\xff", 4)));
  EXPECT_EQ(dict->objectForKey(u"When").date(), Date(86400));
  auto uid = dict->objectForKey(u"Ref").as<KeyedArchiverUID>();
  ASSERT_TRUE(uid);
  EXPECT_EQ(uid->value(), 3u);
}

TEST(PropertyList, ReadsBinaryEncodingsOtherWritersUse) {
  // A 16-byte integer above INT64_MAX, a 4-byte real, an ASCII string with a Latin-1 byte,
  // a UTF-16 string, a set and a one-byte UID.
  std::string big = std::string("\x14", 1) + std::string(8, '\0') + std::string(8, '\xff');
  Data data = bplist({std::string("\xA6\x01\x02\x03\x04\x05\x06", 7), big,
                      std::string("\x22\x3f\xc0\x00\x00", 5), std::string("\x52\x41\xe9", 3),
                      std::string("\x62\xd8\x3d\xde\x00", 5), std::string("\xC1\x03", 2),
                      std::string("\x80\x09", 2)});
  auto array = PropertyListSerialization::propertyListWithData(data).array();
  ASSERT_TRUE(array);
  ASSERT_EQ(array->count(), 6u);
  EXPECT_EQ((*array)[0], Value(UINT64_MAX));
  EXPECT_EQ((*array)[1], Value(1.5));
  EXPECT_EQ((*array)[2], Value(u"A\u00e9"));
  EXPECT_EQ((*array)[3], Value(u"\U0001F600"));
  EXPECT_EQ((*array)[4], Value(Array::create({Value(u"A\u00e9")})));
  EXPECT_EQ((*array)[5].as<KeyedArchiverUID>()->value(), 9u);
}

TEST(PropertyList, RefusesToWriteWhatNoPropertyListCarries) {
  for (PropertyListFormat format : BothFormats) {
    ErrorPtr error = writeError(Value(Array::create({Value(1), Value()})), format);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->code(), PropertyListWriteInvalidError);
    EXPECT_NE(writeError(Value(std::make_shared<Object>()), format), nullptr);
    EXPECT_NE(writeError(Value(UINT64_MAX), format), nullptr);
    EXPECT_NE(writeError(Value(std::u16string(u"a\0b", 3)), format), nullptr);
  }
  EXPECT_NE(writeError(Value(u"bell \u0007"), PropertyListXMLFormat_v1_0), nullptr);
  EXPECT_EQ(roundTrip(Value(u"bell \u0007"), PropertyListBinaryFormat_v1_0), Value(u"bell \u0007"));
}

TEST(PropertyList, NestingIsLimitedTheSameWayWhenWritingAndReading) {
  auto chain = [](size_t depth) {
    auto root = Array::create();
    auto current = root;
    for (size_t i = 1; i < depth; ++i) {
      auto next = Array::create();
      current->addObject(Value(next));
      current = next;
    }
    return root;
  };
  for (PropertyListFormat format : BothFormats) {
    EXPECT_TRUE(roundTrip(Value(chain(PropertyListMaxDepth)), format).array());
    EXPECT_NE(writeError(Value(chain(PropertyListMaxDepth + 1)), format), nullptr);
  }
  expectUnreadable(Data::fromString(nested("<array>", "</array>", PropertyListMaxDepth + 1)));
  // Binary chains of arrays, each holding the next, with three-byte references.
  auto binaryChain = [](int depth) {
    std::vector<std::string> objects;
    for (int i = 1; i < depth; ++i)
      objects.push_back(std::string("\xA1") + char(i >> 16) + char((i >> 8) & 0xFF) +
                        char(i & 0xFF));
    objects.push_back("\xA0");
    return bplist(objects, 3);
  };
  EXPECT_TRUE(PropertyListSerialization::propertyListWithData(binaryChain(150)).array());
  expectUnreadable(binaryChain(100000));
}

TEST(PropertyList, MalformedBinaryAnswersNilWithAnError) {
  expectUnreadable(Data::fromString("bplist17" + std::string(40, '\0')));
  // A container that holds itself, and one whose reference points past the objects.
  expectUnreadable(bplist({std::string("\xA1\x00", 2)}));
  expectUnreadable(bplist({std::string("\xA1\x05", 2)}));
  // Keys must be strings; null objects have no value.
  expectUnreadable(bplist({std::string("\xD1\x01\x01", 3), std::string("\x10\x01", 2)}));
  expectUnreadable(bplist({std::string("\x00", 1)}));
  // A count that claims more bytes than there are.
  expectUnreadable(bplist({std::string("\x4F\x13\x7f\xff\xff\xff\xff\xff\xff\xff", 10)}));
  // Sixty-four levels each referencing the next twice would expand to 2^64 values.
  std::vector<std::string> objects;
  for (int i = 0; i < 64; ++i)
    objects.push_back(std::string("\xA2") + char(i + 1) + char(i + 1));
  objects.push_back("\x09");
  expectUnreadable(bplist(objects));
}

TEST(PropertyList, EveryTruncationFailsCleanly) {
  Data whole = PropertyListSerialization::dataWithPropertyList(Value(everyKind()),
                                                               PropertyListBinaryFormat_v1_0);
  ASSERT_FALSE(whole.empty());
  for (size_t length = 0; length < whole.length(); ++length)
    expectUnreadable(Data(whole.bytes(), length));
}

TEST(PropertyList, MalformedXMLAnswersNilWithAnError) {
  for (const char *xml : {
           "<plist><dict><key>a</key></dict></plist>",       // key without value
           "<plist><dict><string>a</string></dict></plist>", // value without key
           "<plist><array><string>a</array></plist>",        // not well-formed
           "<plist><widget/></plist>",                       // unknown element
           "<plist><integer>12x</integer></plist>",          // bad integer
           "<plist><integer>-9223372036854775809</integer></plist>",
           "<plist><date>2001-13-01T00:00:00Z</date></plist>",    // bad date
           "<plist><data>@@@@</data></plist>",                    // bad base64
           "<plist><string>a</string><string>b</string></plist>", // two roots
           "<!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;\">]>"
           "<plist><string>&b;&b;&b;&b;</string></plist>",
       })
    expectUnreadable(Data::fromString(xml));
}
