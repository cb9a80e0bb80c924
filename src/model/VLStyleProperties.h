// VLStyleProperties: a bag of free-form values that a style part carries, the base of the
// properties of list levels.
#pragma once

#include "ns/Dictionary.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"

#include <memory>
#include <string_view>

namespace vl {

class VLStyleProperties;
using VLStylePropertiesPtr = std::shared_ptr<VLStyleProperties>;

/// One mutable dictionary, made with the object and never null.
///
/// Keyed coding key: "properties".
class VLStyleProperties : public ns::Object, public ns::Coding {
public:
  VLStyleProperties() : _properties(ns::Dictionary::create()) {}
  static VLStylePropertiesPtr create() { return std::make_shared<VLStyleProperties>(); }

  VL_OBJECT(VLStyleProperties)

  const ns::DictionaryPtr &properties() const { return _properties; }
  /// Null is taken as a new empty dictionary.
  void setProperties(ns::DictionaryPtr properties);
  ns::Value objectForKey(std::u16string_view key) const { return _properties->objectForKey(key); }
  /// A nil value removes the key.
  void setObject(ns::Value value, std::u16string_view key) {
    _properties->setObject(std::move(value), key);
  }
  void removeObjectForKey(std::u16string_view key) { _properties->removeObjectForKey(key); }

  /// A new object of the same class with a copy of the dictionary (values shared).
  ns::ObjectPtr copy() const override;

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

protected:
  /// A new empty object of the receiver's class, for copies.
  virtual VLStylePropertiesPtr makeProperties() const {
    return std::make_shared<VLStyleProperties>();
  }

private:
  ns::DictionaryPtr _properties;
};

} // namespace vl
