// Style properties: the dictionary, its copy and its coding.
#include "model/VLStyleProperties.h"

namespace vl {

VL_REGISTER_CLASS(VLStyleProperties);

void VLStyleProperties::setProperties(ns::DictionaryPtr properties) {
  _properties = properties ? std::move(properties) : ns::Dictionary::create();
}

ns::ObjectPtr VLStyleProperties::copy() const {
  VLStylePropertiesPtr copy = makeProperties();
  copy->_properties = std::static_pointer_cast<ns::Dictionary>(_properties->mutableCopy());
  return copy;
}

void VLStyleProperties::encodeWithCoder(ns::KeyedArchiver &coder) const {
  coder.encodeObject(_properties, u"properties");
}

void VLStyleProperties::initWithCoder(ns::KeyedUnarchiver &coder) {
  setProperties(coder.decodeObjectForKey(u"properties").dictionary());
}

} // namespace vl
