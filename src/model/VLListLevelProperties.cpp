// List level properties: the display name on top of the free-form style properties.
#include "model/VLListLevelProperties.h"

namespace vl {

VL_REGISTER_CLASS(VLListLevelProperties);

ns::ObjectPtr VLListLevelProperties::copy() const {
  auto copy = std::static_pointer_cast<VLListLevelProperties>(VLStyleProperties::copy());
  copy->_displayName = _displayName;
  return copy;
}

void VLListLevelProperties::encodeWithCoder(ns::KeyedArchiver &coder) const {
  VLStyleProperties::encodeWithCoder(coder);
  coder.encodeObject(_displayName ? ns::Value(*_displayName) : ns::Value(), u"displayName");
}

void VLListLevelProperties::initWithCoder(ns::KeyedUnarchiver &coder) {
  VLStyleProperties::initWithCoder(coder);
  ns::Value name = coder.decodeObjectForKey(u"displayName");
  _displayName = name.isString() ? std::optional(name.string()) : std::nullopt;
}

bool VLListLevelProperties::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (key != u"displayName")
    return VLStyleProperties::kvcValueForKey(key, value);
  value = _displayName ? ns::Value(*_displayName) : ns::Value();
  return true;
}

bool VLListLevelProperties::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  if (key != u"displayName")
    return VLStyleProperties::kvcSetValueForKey(key, value);
  _displayName = value.isString() ? std::optional(value.string()) : std::nullopt;
  return true;
}

} // namespace vl
