// VLStyleObject: names, free-form properties, key-value access and keyed coding.
#include "model/VLStyleObject.h"

namespace vl {

VL_REGISTER_CLASS(VLStyleObject);

ns::Value VLStyleObject::propertyForKey(std::u16string_view key) const {
  return _properties ? _properties->objectForKey(key) : ns::Value();
}

void VLStyleObject::setProperty(const ns::Value &value, std::u16string_view key) {
  if (_properties)
    _properties->setObject(value, key);
}

void VLStyleObject::removePropertyForKey(std::u16string_view key) {
  if (_properties)
    _properties->removeObjectForKey(key);
}

std::optional<std::u16string> VLStyleObject::nameFromValue(const ns::Value &value) {
  if (value.isString())
    return value.string();
  return std::nullopt;
}

ns::Value VLStyleObject::valueFromName(const std::optional<std::u16string> &name) {
  return name ? ns::Value(*name) : ns::Value();
}

bool VLStyleObject::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (key == u"name")
    value = valueFromName(_name);
  else if (key == u"displayName")
    value = valueFromName(displayName());
  else if (key == u"properties")
    value = _properties;
  else
    return false;
  return true;
}

bool VLStyleObject::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  if (key == u"name")
    setName(nameFromValue(value));
  else if (key == u"displayName")
    setDisplayName(nameFromValue(value));
  else if (key == u"properties")
    setProperties(value.dictionary());
  else
    return false;
  return true;
}

void VLStyleObject::encodeWithCoder(ns::KeyedArchiver &coder) const {
  coder.encodeObject(valueFromName(_name), u"_name");
  coder.encodeObject(valueFromName(_displayName), u"_displayName");
  coder.encodeObject(_properties, u"_properties");
}

void VLStyleObject::initWithCoder(ns::KeyedUnarchiver &coder) {
  _name = nameFromValue(coder.decodeObjectForKey(u"_name"));
  _displayName = nameFromValue(coder.decodeObjectForKey(u"_displayName"));
  _properties = coder.decodeObjectForKey(u"_properties").dictionary();
}

} // namespace vl
