// Property lists: written through libplist; read by a bounds-checked binary reader of our own
// and by libxml2 for XML, since libplist 2.2's readers trust offsets and recurse without limit.
#include "ns/PropertyListSerialization.h"

#include "ns/Array.h"
#include "ns/Dictionary.h"
#include "ns/String.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <plist/plist.h>

#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

namespace vl::ns {

bool KeyedArchiverUID::isEqual(const Object &other) const {
  auto *o = dynamic_cast<const KeyedArchiverUID *>(&other);
  return o && o->value_ == value_;
}

std::u16string KeyedArchiverUID::description() const {
  return u"<CFKeyedArchiverUID>{value = " + u16(std::to_string(value_)) + u"}";
}

ObjectPtr KeyedArchiverUID::copy() const {
  return std::const_pointer_cast<Object>(shared_from_this());
}

namespace {

constexpr std::u16string_view ReadFailure =
    u"The data couldn\u2019t be read because it isn\u2019t in the correct format.";
constexpr std::u16string_view WriteFailure = u"The property list could not be written.";

ErrorPtr readError(std::u16string_view reason) {
  return Error::errorWithDescription(CocoaErrorDomain, PropertyListReadCorruptError, ReadFailure,
                                     reason);
}

// Writing: values to a libplist tree.

struct PlistFree {
  void operator()(void *node) const { plist_free(node); }
};
using PlistPtr = std::unique_ptr<void, PlistFree>;

// libplist measures its output in 32 bits; stay well below that.
constexpr uint64_t MaxOutputBytes = uint64_t{1} << 30;

class Writer {
public:
  explicit Writer(PropertyListFormat format) : xml_(format == PropertyListXMLFormat_v1_0) {}

  PlistPtr convert(const Value &value, size_t depth) {
    switch (value.kind()) {
    case Value::Kind::Nil:
      return fail(u"nil is not a property list value");
    case Value::Kind::Bool:
      return PlistPtr(plist_new_bool(value.boolValue() ? 1 : 0));
    case Value::Kind::Int:
      return PlistPtr(plist_new_uint(static_cast<uint64_t>(value.integerValue())));
    case Value::Kind::UInt:
      // libplist writes every integer as 64-bit signed; larger ones would read back negative.
      if (value.unsignedIntegerValue() > static_cast<uint64_t>(INT64_MAX))
        return fail(u"integer above INT64_MAX");
      return PlistPtr(plist_new_uint(value.unsignedIntegerValue()));
    case Value::Kind::Double:
    case Value::Kind::Float:
      return PlistPtr(plist_new_real(value.doubleValue()));
    case Value::Kind::String: {
      std::string utf8;
      if (!stringToUTF8(value.string(), utf8))
        return nullptr;
      return PlistPtr(plist_new_string(utf8.c_str()));
    }
    case Value::Kind::Data: {
      const Data &data = value.data();
      if (!account(data.length()))
        return nullptr;
      return PlistPtr(plist_new_data(reinterpret_cast<const char *>(data.bytes()), data.length()));
    }
    case Value::Kind::Date:
      return convertDate(value.date());
    case Value::Kind::Object:
      return convertObject(value.object(), depth);
    }
    return fail(u"unknown value");
  }

  const std::u16string &problem() const { return problem_; }

private:
  PlistPtr fail(std::u16string_view reason) {
    if (problem_.empty())
      problem_ = reason;
    return nullptr;
  }

  bool account(uint64_t bytes) {
    output_ += bytes;
    if (output_ <= MaxOutputBytes)
      return true;
    fail(u"property list too large");
    return false;
  }

  // libplist takes C strings, so U+0000 cannot pass; XML 1.0 cannot carry most controls.
  bool stringToUTF8(const std::u16string &text, std::string &out) {
    for (char16_t c : text) {
      if (c == 0) {
        fail(u"string with U+0000");
        return false;
      }
      if (xml_ &&
          ((c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r') || c == 0xFFFE || c == 0xFFFF)) {
        fail(u"string with a character XML cannot carry");
        return false;
      }
    }
    if (!account(text.size() * 2 + 8))
      return false;
    out = toUTF8(text);
    return true;
  }

  PlistPtr convertDate(Date date) {
    double t = date.timeIntervalSinceReferenceDate();
    if (!std::isfinite(t) || t <= static_cast<double>(INT32_MIN) ||
        t >= static_cast<double>(INT32_MAX))
      return fail(u"date out of range");
    double whole = std::trunc(t);
    auto sec = static_cast<int32_t>(whole);
    auto usec = static_cast<int32_t>(std::lround((t - whole) * 1e6));
    return PlistPtr(plist_new_date(sec, usec));
  }

  PlistPtr convertObject(const ObjectPtr &object, size_t depth) {
    if (auto uid = std::dynamic_pointer_cast<KeyedArchiverUID>(object))
      return PlistPtr(plist_new_uid(uid->value()));
    auto array = std::dynamic_pointer_cast<Array>(object);
    auto dictionary = std::dynamic_pointer_cast<Dictionary>(object);
    if (!array && !dictionary)
      return fail(u"object of class " + u16(object->className()) +
                  u" is not a property list value");
    if (depth >= PropertyListMaxDepth)
      return fail(u"containers nested too deeply");
    if (array) {
      PlistPtr node(plist_new_array());
      for (const Value &element : *array) {
        PlistPtr child = convert(element, depth + 1);
        if (!child || !account(8))
          return nullptr;
        plist_array_append_item(node.get(), child.release());
      }
      return node;
    }
    PlistPtr node(plist_new_dict());
    for (const auto &[key, element] : *dictionary) {
      std::string utf8Key;
      if (!stringToUTF8(key, utf8Key))
        return nullptr;
      PlistPtr child = convert(element, depth + 1);
      if (!child || !account(16))
        return nullptr;
      plist_dict_set_item(node.get(), utf8Key.c_str(), child.release());
    }
    return node;
  }

  bool xml_;
  uint64_t output_ = 0;
  std::u16string problem_;
};

// What a reader found wrong first.
class Reader {
public:
  const std::u16string &problem() const { return problem_; }

protected:
  std::nullopt_t fail(std::u16string_view reason) {
    if (problem_.empty())
      problem_ = reason;
    return std::nullopt;
  }
  bool failed(std::u16string_view reason) {
    fail(reason);
    return false;
  }

private:
  std::u16string problem_;
};

// Reading binary property lists ("bplist00"). Layout: header, objects, offset table, and a
// 32-byte trailer giving the offset and reference sizes, the object count, the top object
// and the table's offset. Every read below is checked against the object area.

constexpr size_t TrailerSize = 32;
constexpr size_t HeaderSize = 8;

class BinaryReader : public Reader {
public:
  BinaryReader(const uint8_t *bytes, size_t length)
      : p_(bytes), n_(length), budget_(16 * static_cast<uint64_t>(length) + (16u << 20)) {}

  std::optional<Value> read() {
    if (n_ < HeaderSize + TrailerSize + 1)
      return fail(u"binary property list too short");
    const uint8_t *t = p_ + n_ - TrailerSize;
    offsetSize_ = t[6];
    refSize_ = t[7];
    count_ = be(t + 8, 8);
    top_ = be(t + 16, 8);
    uint64_t table = be(t + 24, 8);
    end_ = n_ - TrailerSize;
    if (offsetSize_ < 1 || offsetSize_ > 8 || refSize_ < 1 || refSize_ > 8)
      return fail(u"bad offset or reference size");
    if (count_ == 0 || top_ >= count_)
      return fail(u"bad object count or top object");
    if (table < HeaderSize || table > end_ || count_ > (end_ - table) / offsetSize_)
      return fail(u"offset table out of range");
    table_ = table;
    // The objects lie between the header and the table.
    end_ = table;
    active_.assign(count_, false);
    cache_.resize(count_);
    Value root;
    if (!readObject(top_, 0, root))
      return std::nullopt;
    return root;
  }

private:
  static uint64_t be(const uint8_t *at, size_t size) {
    uint64_t v = 0;
    for (size_t i = 0; i < size; ++i)
      v = (v << 8) | at[i];
    return v;
  }

  // True when [pos, pos + size) lies inside the object area.
  bool fits(uint64_t pos, uint64_t size) const { return pos <= end_ && size <= end_ - pos; }

  bool spend(uint64_t cost) {
    if (cost > budget_)
      return failed(u"property list expands beyond its size budget");
    budget_ -= cost;
    return true;
  }

  bool offsetOf(uint64_t index, uint64_t &offset) {
    if (index >= count_)
      return failed(u"object reference out of range");
    offset = be(p_ + table_ + index * offsetSize_, offsetSize_);
    if (offset < HeaderSize || offset >= end_)
      return failed(u"object offset out of range");
    return true;
  }

  // The count in a marker's low nibble, or in the integer object after it when that is 0xF.
  bool readCount(uint64_t offset, uint8_t info, uint64_t &count, uint64_t &start) {
    if (info != 0xF) {
      count = info;
      start = offset + 1;
      return true;
    }
    if (!fits(offset + 1, 1))
      return failed(u"truncated count");
    uint8_t marker = p_[offset + 1];
    if ((marker >> 4) != 0x1 || (marker & 0xF) > 3)
      return failed(u"bad count marker");
    uint64_t size = uint64_t{1} << (marker & 0xF);
    if (!fits(offset + 2, size))
      return failed(u"truncated count");
    count = be(p_ + offset + 2, size);
    start = offset + 2 + size;
    return true;
  }

  bool readObject(uint64_t index, size_t depth, Value &out) {
    if (index >= count_)
      return failed(u"object reference out of range");
    if (cache_[index]) {
      out = *cache_[index];
      return spend(cost(out));
    }
    uint64_t offset;
    if (!offsetOf(index, offset))
      return false;
    uint8_t marker = p_[offset];
    uint8_t type = marker >> 4;
    uint8_t info = marker & 0xF;
    if (type == 0xA || type == 0xB || type == 0xC || type == 0xD)
      return readContainer(index, offset, type, info, depth, out);
    if (!readScalar(offset, type, info, out))
      return false;
    cache_[index] = out;
    return spend(cost(out));
  }

  static uint64_t cost(const Value &value) {
    return 32 + (value.isString() ? value.string().size() * 2 : 0);
  }

  bool readScalar(uint64_t offset, uint8_t type, uint8_t info, Value &out) {
    switch (type) {
    case 0x0:
      if (info == 0x8 || info == 0x9) {
        out = Value(info == 0x9);
        return true;
      }
      return failed(u"null or fill object");
    case 0x1: {
      if (info > 4 || !fits(offset + 1, uint64_t{1} << info))
        return failed(u"bad integer");
      const uint8_t *at = p_ + offset + 1;
      if (info < 4) {
        // 1, 2 and 4 bytes are unsigned; 8 bytes are two's complement.
        out = Value(static_cast<int64_t>(be(at, size_t{1} << info)));
        return true;
      }
      uint64_t high = be(at, 8), low = be(at + 8, 8);
      if (high == 0)
        out =
            low <= static_cast<uint64_t>(INT64_MAX) ? Value(static_cast<int64_t>(low)) : Value(low);
      else if (high == UINT64_MAX && low > static_cast<uint64_t>(INT64_MAX))
        out = Value(static_cast<int64_t>(low));
      else
        return failed(u"integer out of range");
      return true;
    }
    case 0x2:
      if (info == 2 && fits(offset + 1, 4)) {
        auto bits = static_cast<uint32_t>(be(p_ + offset + 1, 4));
        float f;
        std::memcpy(&f, &bits, sizeof f);
        out = Value(static_cast<double>(f));
        return true;
      }
      if (info == 3 && fits(offset + 1, 8)) {
        out = Value(readDouble(offset + 1));
        return true;
      }
      return failed(u"bad real");
    case 0x3:
      if (info != 3 || !fits(offset + 1, 8))
        return failed(u"bad date");
      out = Value(Date(readDouble(offset + 1)));
      return true;
    case 0x8:
      if (info > 7 || !fits(offset + 1, info + 1))
        return failed(u"bad reference");
      out = Value(KeyedArchiverUID::create(be(p_ + offset + 1, info + 1)));
      return true;
    default:
      break;
    }
    uint64_t count, start;
    if (!readCount(offset, info, count, start))
      return false;
    switch (type) {
    case 0x4:
      if (!fits(start, count))
        return failed(u"truncated data");
      out = Value(Data(p_ + start, count));
      return true;
    case 0x5: {
      if (!fits(start, count))
        return failed(u"truncated string");
      std::u16string s(count, u'\0');
      for (uint64_t i = 0; i < count; ++i)
        s[i] = p_[start + i];
      out = Value(std::move(s));
      return true;
    }
    case 0x6: {
      if (count > (end_ - std::min(start, end_)) / 2 || !fits(start, count * 2))
        return failed(u"truncated string");
      std::u16string s(count, u'\0');
      for (uint64_t i = 0; i < count; ++i)
        s[i] = static_cast<char16_t>(be(p_ + start + 2 * i, 2));
      out = Value(std::move(s));
      return true;
    }
    case 0x7:
      if (!fits(start, count))
        return failed(u"truncated string");
      out = Value(fromUTF8(std::string_view(reinterpret_cast<const char *>(p_ + start), count)));
      return true;
    default:
      return failed(u"unknown object type");
    }
  }

  double readDouble(uint64_t at) const {
    uint64_t bits = be(p_ + at, 8);
    double d;
    std::memcpy(&d, &bits, sizeof d);
    return d;
  }

  bool readContainer(uint64_t index, uint64_t offset, uint8_t type, uint8_t info, size_t depth,
                     Value &out) {
    if (depth >= PropertyListMaxDepth)
      return failed(u"containers nested too deeply");
    if (active_[index])
      return failed(u"container contains itself");
    uint64_t count, start;
    if (!readCount(offset, info, count, start))
      return false;
    uint64_t refs = type == 0xD ? 2 : 1;
    if (count > (end_ - std::min(start, end_)) / (refs * refSize_) ||
        !fits(start, count * refs * refSize_))
      return failed(u"truncated container");
    if (!spend(32 + 16 * count))
      return false;
    active_[index] = true;
    auto ref = [&](uint64_t i) { return be(p_ + start + i * refSize_, refSize_); };
    bool ok = true;
    if (type == 0xD) {
      auto dictionary = Dictionary::create();
      for (uint64_t i = 0; ok && i < count; ++i) {
        Value key, value;
        ok = readObject(ref(i), depth + 1, key) && readObject(ref(count + i), depth + 1, value);
        if (ok && !key.isString())
          ok = failed(u"dictionary key is not a string");
        if (ok)
          dictionary->setObject(std::move(value), key.string());
      }
      out = Value(dictionary);
    } else {
      auto array = Array::create();
      array->values().reserve(count);
      for (uint64_t i = 0; ok && i < count; ++i) {
        Value element;
        ok = readObject(ref(i), depth + 1, element);
        if (ok)
          array->addObject(std::move(element));
      }
      out = Value(array);
    }
    active_[index] = false;
    return ok;
  }

  const uint8_t *p_;
  size_t n_;
  uint64_t end_ = 0;
  uint64_t table_ = 0;
  unsigned offsetSize_ = 0;
  unsigned refSize_ = 0;
  uint64_t count_ = 0;
  uint64_t top_ = 0;
  uint64_t budget_;
  std::vector<bool> active_;
  std::vector<std::optional<Value>> cache_;
};

// Reading XML property lists through libxml2.

struct DocFree {
  void operator()(xmlDoc *doc) const { xmlFreeDoc(doc); }
};

std::string_view nameOf(const xmlNode *node) {
  return reinterpret_cast<const char *>(node->name);
}

std::string contentOf(const xmlNode *node) {
  xmlChar *content = xmlNodeGetContent(node);
  std::string out = content ? reinterpret_cast<const char *>(content) : "";
  xmlFree(content);
  return out;
}

bool isBlankText(const xmlNode *node) {
  if (node->type != XML_TEXT_NODE)
    return false;
  for (const xmlChar *c = node->content; c && *c; ++c)
    if (*c != ' ' && *c != '\t' && *c != '\n' && *c != '\r')
      return false;
  return true;
}

std::string_view trim(std::string_view s) {
  while (!s.empty() &&
         (s.front() == ' ' || s.front() == '\t' || s.front() == '\n' || s.front() == '\r'))
    s.remove_prefix(1);
  while (!s.empty() &&
         (s.back() == ' ' || s.back() == '\t' || s.back() == '\n' || s.back() == '\r'))
    s.remove_suffix(1);
  return s;
}

std::optional<Value> parseInteger(std::string_view text) {
  text = trim(text);
  bool negative = false;
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
    negative = text.front() == '-';
    text.remove_prefix(1);
  }
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    base = 16;
    text.remove_prefix(2);
  }
  uint64_t magnitude = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  if (!negative)
    return magnitude <= static_cast<uint64_t>(INT64_MAX) ? Value(static_cast<int64_t>(magnitude))
                                                         : Value(magnitude);
  if (magnitude > uint64_t{1} << 63)
    return std::nullopt;
  return Value(static_cast<int64_t>(0 - magnitude));
}

std::optional<double> parseReal(std::string_view text) {
  text = trim(text);
  std::string lower;
  for (char c : text)
    lower += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  if (lower == "nan")
    return std::numeric_limits<double>::quiet_NaN();
  if (lower == "inf" || lower == "+inf" || lower == "infinity" || lower == "+infinity")
    return std::numeric_limits<double>::infinity();
  if (lower == "-inf" || lower == "-infinity")
    return -std::numeric_limits<double>::infinity();
  if (!text.empty() && text.front() == '+')
    text.remove_prefix(1);
  double d = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), d);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return d;
}

// Days from 1970-01-01 to a proleptic Gregorian date.
int64_t daysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const auto yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

// "2001-01-01T00:00:00Z", optionally with a fraction of a second.
std::optional<Date> parseDate(std::string_view text) {
  text = trim(text);
  auto number = [&](size_t at, size_t width, int64_t &out) {
    if (at + width > text.size())
      return false;
    out = 0;
    for (size_t i = at; i < at + width; ++i) {
      if (text[i] < '0' || text[i] > '9')
        return false;
      out = out * 10 + (text[i] - '0');
    }
    return true;
  };
  int64_t y, mo, d, h, mi, s;
  if (text.size() < 20 || !number(0, 4, y) || text[4] != '-' || !number(5, 2, mo) ||
      text[7] != '-' || !number(8, 2, d) || text[10] != 'T' || !number(11, 2, h) ||
      text[13] != ':' || !number(14, 2, mi) || text[16] != ':' || !number(17, 2, s))
    return std::nullopt;
  if (mo < 1 || mo > 12 || d < 1 || d > 31 || h > 23 || mi > 59 || s > 60)
    return std::nullopt;
  std::string_view rest = text.substr(19);
  double fraction = 0;
  if (!rest.empty() && rest.front() == '.') {
    size_t digits = 1;
    while (digits < rest.size() && rest[digits] >= '0' && rest[digits] <= '9')
      ++digits;
    std::optional<double> f = parseReal("0" + std::string(rest.substr(0, digits)));
    if (!f || digits == 1)
      return std::nullopt;
    fraction = *f;
    rest.remove_prefix(digits);
  }
  if (rest != "Z")
    return std::nullopt;
  int64_t days = daysFromCivil(y, static_cast<unsigned>(mo), static_cast<unsigned>(d));
  double seconds = static_cast<double>(days * 86400 + h * 3600 + mi * 60 + s) + fraction;
  return Date::dateWithTimeIntervalSince1970(seconds);
}

int base64Digit(unsigned char c) {
  if (c >= 'A' && c <= 'Z')
    return c - 'A';
  if (c >= 'a' && c <= 'z')
    return c - 'a' + 26;
  if (c >= '0' && c <= '9')
    return c - '0' + 52;
  if (c == '+')
    return 62;
  if (c == '/')
    return 63;
  return -1;
}

std::optional<Data> decodeBase64(std::string_view text) {
  std::vector<uint8_t> out;
  out.reserve(text.size() / 4 * 3);
  uint32_t bits = 0;
  int pending = 0;
  bool padded = false;
  for (unsigned char c : text) {
    if (c == ' ' || c == '\t' || c == '\n' || c == '\r')
      continue;
    if (c == '=') {
      padded = true;
      continue;
    }
    int digit = base64Digit(c);
    if (digit < 0 || padded)
      return std::nullopt;
    bits = (bits << 6) | static_cast<uint32_t>(digit);
    pending += 6;
    if (pending >= 8) {
      pending -= 8;
      out.push_back(static_cast<uint8_t>(bits >> pending));
    }
  }
  return Data(std::move(out));
}

class XMLReader : public Reader {
public:
  std::optional<Value> read(const Data &data) {
    if (data.length() > static_cast<size_t>(INT_MAX))
      return fail(u"XML property list too large");
    std::unique_ptr<xmlDoc, DocFree> doc(
        xmlReadMemory(reinterpret_cast<const char *>(data.bytes()), static_cast<int>(data.length()),
                      nullptr, nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    if (!doc)
      return fail(u"not well-formed XML");
    // Declared entities would be expanded by every content read; plists never declare any.
    if (xmlDtd *dtd = doc->intSubset; dtd && (dtd->entities || dtd->pentities))
      return fail(u"XML property list declares entities");
    xmlNode *root = xmlDocGetRootElement(doc.get());
    if (!root)
      return fail(u"no root element");
    xmlNode *top = root;
    if (nameOf(root) == "plist") {
      top = nullptr;
      for (xmlNode *child = root->children; child; child = child->next) {
        if (skippable(child))
          continue;
        if (top || child->type != XML_ELEMENT_NODE)
          return fail(u"plist element must hold one value");
        top = child;
      }
      if (!top)
        return fail(u"empty plist element");
    }
    Value out;
    if (!readValue(top, 0, out))
      return std::nullopt;
    return out;
  }

private:
  static bool skippable(const xmlNode *node) {
    return node->type == XML_COMMENT_NODE || node->type == XML_PI_NODE || isBlankText(node);
  }

  bool readValue(const xmlNode *node, size_t depth, Value &out) {
    if (node->type != XML_ELEMENT_NODE)
      return failed(u"text where a value belongs");
    std::string_view name = nameOf(node);
    if (name == "dict" || name == "array") {
      if (depth >= PropertyListMaxDepth)
        return failed(u"containers nested too deeply");
      return name == "dict" ? readDict(node, depth, out) : readArray(node, depth, out);
    }
    if (name == "true" || name == "false") {
      out = Value(name == "true");
      return true;
    }
    std::string text = contentOf(node);
    if (name == "string") {
      out = Value(fromUTF8(text));
      return true;
    }
    if (name == "integer") {
      std::optional<Value> v = parseInteger(text);
      if (!v)
        return failed(u"bad integer");
      out = *v;
      return true;
    }
    if (name == "real") {
      std::optional<double> v = parseReal(text);
      if (!v)
        return failed(u"bad real");
      out = Value(*v);
      return true;
    }
    if (name == "date") {
      std::optional<Date> v = parseDate(text);
      if (!v)
        return failed(u"bad date");
      out = Value(*v);
      return true;
    }
    if (name == "data") {
      std::optional<Data> v = decodeBase64(text);
      if (!v)
        return failed(u"bad base64 data");
      out = Value(*v);
      return true;
    }
    return failed(u"unknown element " + fromUTF8(name));
  }

  bool readArray(const xmlNode *node, size_t depth, Value &out) {
    auto array = Array::create();
    for (const xmlNode *child = node->children; child; child = child->next) {
      if (skippable(child))
        continue;
      Value element;
      if (!readValue(child, depth + 1, element))
        return false;
      array->addObject(std::move(element));
    }
    out = Value(array);
    return true;
  }

  bool readDict(const xmlNode *node, size_t depth, Value &out) {
    auto dictionary = Dictionary::create();
    std::optional<std::u16string> key;
    for (const xmlNode *child = node->children; child; child = child->next) {
      if (skippable(child))
        continue;
      if (!key) {
        if (child->type != XML_ELEMENT_NODE || nameOf(child) != "key")
          return failed(u"dictionary value without a key");
        key = fromUTF8(contentOf(child));
        continue;
      }
      Value value;
      if (!readValue(child, depth + 1, value))
        return false;
      dictionary->setObject(std::move(value), *key);
      key.reset();
    }
    if (key)
      return failed(u"dictionary key without a value");
    // {"CF$UID": n} is how XML writes a keyed archive's references.
    if (dictionary->count() == 1) {
      const Value &uid = dictionary->objectForKey(u"CF$UID");
      if (uid.isInteger() && (uid.kind() == Value::Kind::UInt || uid.integerValue() >= 0)) {
        out = Value(KeyedArchiverUID::create(uid.unsignedIntegerValue()));
        return true;
      }
    }
    out = Value(dictionary);
    return true;
  }
};

constexpr std::string_view BinaryMagic = "bplist00";

} // namespace

Data PropertyListSerialization::dataWithPropertyList(const Value &plist, PropertyListFormat format,
                                                     ErrorPtr *error) {
  auto invalid = [&](std::u16string_view reason) {
    setError(error, Error::errorWithDescription(CocoaErrorDomain, PropertyListWriteInvalidError,
                                                WriteFailure, reason));
    return Data();
  };
  if (format != PropertyListXMLFormat_v1_0 && format != PropertyListBinaryFormat_v1_0)
    return invalid(u"unknown property list format");
  Writer writer(format);
  PlistPtr root = writer.convert(plist, 0);
  if (!root)
    return invalid(writer.problem());
  char *bytes = nullptr;
  uint32_t length = 0;
  Data out;
  if (format == PropertyListXMLFormat_v1_0) {
    plist_to_xml(root.get(), &bytes, &length);
    if (bytes)
      out = Data(bytes, length);
    plist_to_xml_free(bytes);
  } else {
    plist_to_bin(root.get(), &bytes, &length);
    if (bytes)
      out = Data(bytes, length);
    plist_to_bin_free(bytes);
  }
  if (out.empty())
    return invalid(u"libplist produced no output");
  return out;
}

Value PropertyListSerialization::propertyListWithData(const Data &data, PropertyListFormat *format,
                                                      ErrorPtr *error) {
  std::optional<Value> result;
  std::u16string problem;
  if (data.view().substr(0, BinaryMagic.size()) == BinaryMagic) {
    BinaryReader reader(data.bytes(), data.length());
    result = reader.read();
    problem = reader.problem();
    if (result && format)
      *format = PropertyListBinaryFormat_v1_0;
  } else if (data.view().substr(0, 6) == "bplist") {
    problem = u"unknown binary property list version";
  } else if (data.empty()) {
    problem = u"no data";
  } else {
    XMLReader reader;
    result = reader.read(data);
    problem = reader.problem();
    if (result && format)
      *format = PropertyListXMLFormat_v1_0;
  }
  if (!result) {
    setError(error, readError(problem));
    return Value();
  }
  return std::move(*result);
}

bool PropertyListSerialization::propertyListIsValidForFormat(const Value &plist,
                                                             PropertyListFormat format) {
  if (format != PropertyListXMLFormat_v1_0 && format != PropertyListBinaryFormat_v1_0)
    return false;
  Writer writer(format);
  return writer.convert(plist, 0) != nullptr;
}

} // namespace vl::ns
