// Outline entries: construction, description, copying, keyed and key-value coding.
#include "model/VLOutline.h"

#include "model/VLOptionalString.h"
#include "ns/MutableAttributedString.h"
#include "ns/String.h"

#include <cstdint>

namespace vl {

VL_REGISTER_CLASS(VLOutline);

namespace {

// A count archived in 32 bits comes back as a C assignment of the int32 would give it.
uint64_t widened(int32_t value) {
  return static_cast<uint64_t>(int64_t{value});
}

} // namespace

VLOutline::VLOutline(ns::Range range, int64_t level) : _level(level), _range(range) {}

VLOutlinePtr VLOutline::entryWithRange(ns::Range range, int64_t level) {
  return std::make_shared<VLOutline>(range, level);
}

std::u16string VLOutline::description() const {
  auto address = reinterpret_cast<uintptr_t>(static_cast<const Object *>(this));
  return ns::format(u"%p %@ (%ld) - \"%@\"", address, ns::StringFromRange(_range), _level,
                    valueOfOptionalString(_title));
}

ns::ObjectPtr VLOutline::copy() const {
  auto entry = std::make_shared<VLOutline>(_range, _level);
  entry->_wordCountNeedsUpdate = _wordCountNeedsUpdate;
  entry->_identifier = _identifier;
  entry->_title = _title;
  entry->_wordCount = _wordCount;
  entry->_wordCountIncludingChildren = _wordCountIncludingChildren;
  entry->_textTransform = _textTransform;
  entry->_attributedString = _attributedString;
  if (dynamic_cast<const ns::MutableAttributedString *>(_attributedString.get()))
    entry->_attributedString =
        std::static_pointer_cast<ns::AttributedString>(_attributedString->copy());
  return entry;
}

void VLOutline::encodeWithCoder(ns::KeyedArchiver &coder) const {
  coder.encodeObject(valueOfOptionalString(_identifier), u"identifier");
  coder.encodeObject(ns::Value(ns::StringFromRange(_range)), u"range");
  coder.encodeInteger(_level, u"level");
  coder.encodeObject(valueOfOptionalString(_title), u"title");
  coder.encodeObject(ns::Value(_attributedString), u"attributedString");
  coder.encodeInt32(static_cast<int32_t>(_wordCount), u"wordCount");
  coder.encodeInt32(static_cast<int32_t>(_wordCountIncludingChildren),
                    u"wordCountIncludingChildren");
  coder.encodeInt32(static_cast<int32_t>(_textTransform), u"textTransform");
}

void VLOutline::initWithCoder(ns::KeyedUnarchiver &coder) {
  _identifier = optionalStringOfValue(coder.decodeObjectForKey(u"identifier"));
  _range = ns::RangeFromString(coder.decodeObjectForKey(u"range").string());
  _level = coder.decodeIntegerForKey(u"level");
  _title = optionalStringOfValue(coder.decodeObjectForKey(u"title"));
  _attributedString = coder.decodeObjectForKey(u"attributedString").as<ns::AttributedString>();
  _wordCount = widened(coder.decodeInt32ForKey(u"wordCount"));
  _wordCountIncludingChildren = widened(coder.decodeInt32ForKey(u"wordCountIncludingChildren"));
  _textTransform = coder.decodeInt32ForKey(u"textTransform");
  // Stored counts may predate edits made by a program that did not keep them up.
  _wordCountNeedsUpdate = true;
}

bool VLOutline::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (key == u"identifier")
    value = valueOfOptionalString(_identifier);
  else if (key == u"range")
    value = ns::StringFromRange(_range);
  else if (key == u"level")
    value = _level;
  else if (key == u"title")
    value = valueOfOptionalString(_title);
  else if (key == u"wordCount")
    value = _wordCount;
  else if (key == u"wordCountNeedsUpdate")
    value = _wordCountNeedsUpdate;
  else if (key == u"wordCountIncludingChildren")
    value = _wordCountIncludingChildren;
  else if (key == u"textTransform")
    value = _textTransform;
  else if (key == u"attributedString")
    value = ns::Value(_attributedString);
  else
    return Object::kvcValueForKey(key, value);
  return true;
}

bool VLOutline::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  if (key == u"identifier")
    _identifier = optionalStringOfValue(value);
  else if (key == u"range")
    _range = ns::RangeFromString(value.stringValue());
  else if (key == u"level")
    _level = value.integerValue();
  else if (key == u"title")
    _title = optionalStringOfValue(value);
  else if (key == u"wordCount")
    _wordCount = value.unsignedIntegerValue();
  else if (key == u"wordCountNeedsUpdate")
    _wordCountNeedsUpdate = value.boolValue();
  else if (key == u"wordCountIncludingChildren")
    _wordCountIncludingChildren = value.unsignedIntegerValue();
  else if (key == u"textTransform")
    _textTransform = value.integerValue();
  else if (key == u"attributedString")
    _attributedString = value.as<ns::AttributedString>();
  else
    return Object::kvcSetValueForKey(key, value);
  return true;
}

} // namespace vl
