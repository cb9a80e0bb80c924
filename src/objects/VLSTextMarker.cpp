// Text markers: construction, copying, description, keyed and key-value coding.
#include "objects/VLSTextMarker.h"

#include "model/VLOptionalString.h"
#include "ns/String.h"

namespace vl {

VL_REGISTER_CLASS(VLSTextMarker);

namespace {

std::u16string stringFromSize(ns::Size size) {
  return u"{" + ns::stringFromDouble(size.width) + u", " + ns::stringFromDouble(size.height) + u"}";
}

// Reads "{w, h}" leniently, as ranges are read: missing numbers are 0.
ns::Size sizeFromString(std::u16string_view text) {
  size_t start = text.find(u'{');
  text.remove_prefix(start == std::u16string_view::npos ? 0 : start + 1);
  ns::Size size;
  size.width = ns::doubleValue(text);
  size_t comma = text.find(u',');
  if (comma != std::u16string_view::npos)
    size.height = ns::doubleValue(text.substr(comma + 1));
  return size;
}

} // namespace

VLSTextMarker::VLSTextMarker() = default;

VLSTextMarker::VLSTextMarker(ns::Range range) : _range(range) {}

VLSTextMarkerPtr VLSTextMarker::textMarkerWithIdentifier(std::optional<std::u16string> identifier,
                                                         ns::Range range) {
  auto marker = std::make_shared<VLSTextMarker>(range);
  marker->_identifier = std::move(identifier);
  return marker;
}

std::shared_ptr<VLSTextMarker> VLSTextMarker::copyMarker() const {
  auto marker = std::make_shared<VLSTextMarker>(_range);
  marker->_imageSize = _imageSize;
  marker->_textMarkerType = _textMarkerType;
  marker->_textMarkerLocation = _textMarkerLocation;
  marker->_canDelete = _canDelete;
  marker->_identifier = _identifier;
  marker->_date = _date;
  // The copy must not share a mutable represented object (a dictionary of properties) with
  // the original, or editing one marker's properties would edit the other's.
  if (_representedObject.isObject())
    marker->_representedObject = ns::Value(_representedObject.object()->copy());
  else
    marker->_representedObject = _representedObject;
  return marker;
}

ns::ObjectPtr VLSTextMarker::copy() const {
  return copyMarker();
}

std::u16string VLSTextMarker::description() const {
  return Object::description() +
         ns::format(u" %@ %@", valueOfOptionalString(_identifier), ns::StringFromRange(_range));
}

void VLSTextMarker::encodeWithCoder(ns::KeyedArchiver &coder) const {
  coder.encodeObject(ns::Value(ns::StringFromRange(_range)), u"range");
  coder.encodeSize(_imageSize, u"imageSize");
  coder.encodeInt32(static_cast<int32_t>(_textMarkerType), u"textMarkerType");
  coder.encodeInt32(static_cast<int32_t>(_textMarkerLocation), u"textMarkerLocation");
  coder.encodeBool(_canDelete, u"canDelete");
  coder.encodeObject(valueOfOptionalString(_identifier), u"identifier");
  coder.encodeObject(_representedObject, u"representedObject");
  coder.encodeObject(_date ? ns::Value(*_date) : ns::Value(), u"date");
}

void VLSTextMarker::initWithCoder(ns::KeyedUnarchiver &coder) {
  _range = ns::RangeFromString(coder.decodeObjectForKey(u"range").string());
  _imageSize = coder.decodeSizeForKey(u"imageSize");
  // A 32-bit value widens with its sign, as a C assignment of the decoded int32 does.
  _textMarkerType = static_cast<uint64_t>(int64_t{coder.decodeInt32ForKey(u"textMarkerType")});
  _textMarkerLocation =
      static_cast<uint64_t>(int64_t{coder.decodeInt32ForKey(u"textMarkerLocation")});
  _canDelete = coder.decodeBoolForKey(u"canDelete");
  _identifier = optionalStringOfValue(coder.decodeObjectForKey(u"identifier"));
  _representedObject = coder.decodeObjectForKey(u"representedObject");
  ns::Value date = coder.decodeObjectForKey(u"date");
  _date = date.isDate() ? std::optional<ns::Date>(date.date()) : std::nullopt;
}

bool VLSTextMarker::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (key == u"canDelete")
    value = _canDelete;
  else if (key == u"representedObject")
    value = _representedObject;
  else if (key == u"identifier")
    value = valueOfOptionalString(_identifier);
  else if (key == u"date")
    value = _date ? ns::Value(*_date) : ns::Value();
  else if (key == u"textMarkerType")
    value = _textMarkerType;
  else if (key == u"textMarkerLocation")
    value = _textMarkerLocation;
  else if (key == u"range")
    value = ns::StringFromRange(_range);
  else if (key == u"imageSize")
    value = stringFromSize(_imageSize);
  else
    return Object::kvcValueForKey(key, value);
  return true;
}

bool VLSTextMarker::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  if (key == u"canDelete")
    _canDelete = value.boolValue();
  else if (key == u"representedObject")
    _representedObject = value;
  else if (key == u"identifier")
    _identifier = optionalStringOfValue(value);
  else if (key == u"date")
    _date = value.isDate() ? std::optional<ns::Date>(value.date()) : std::nullopt;
  else if (key == u"textMarkerType")
    _textMarkerType = value.unsignedIntegerValue();
  else if (key == u"textMarkerLocation")
    _textMarkerLocation = value.unsignedIntegerValue();
  else if (key == u"range")
    _range = ns::RangeFromString(value.stringValue());
  else if (key == u"imageSize")
    _imageSize = sizeFromString(value.stringValue());
  else
    return Object::kvcSetValueForKey(key, value);
  return true;
}

} // namespace vl
