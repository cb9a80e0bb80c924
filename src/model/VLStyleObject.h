// VLStyleObject: the named, coded base of page layouts, master pages and header/footer bands.
#pragma once

#include "ns/Dictionary.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"
#include "ns/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl {

class VLStyleObject;
using VLStyleObjectPtr = std::shared_ptr<VLStyleObject>;

/// A name, a name for users and a dictionary of free-form values.
///
/// A fresh object has no properties dictionary: setProperty and removePropertyForKey do
/// nothing until setProperties (or decoding) gives it one. Callers that want to keep values
/// set a dictionary first.
///
/// Keyed coding writes "_name", "_displayName", "_properties", in that order; subclasses
/// write these first. Objects of this family are coded, not copied: copy() fails an internal
/// check, and a deep copy goes through the archiver.
class VLStyleObject : public ns::Object, public ns::Coding {
public:
  VL_OBJECT(VLStyleObject)

  VLStyleObject() = default;

  /// The internal name; nil until set. For a page layout, the stylesheet's free "pm%d" name.
  const std::optional<std::u16string> &name() const { return _name; }
  void setName(std::optional<std::u16string> name) { _name = std::move(name); }

  /// The name shown to users: the one set, or name() when none is set.
  const std::optional<std::u16string> &displayName() const {
    return _displayName ? _displayName : _name;
  }
  void setDisplayName(std::optional<std::u16string> displayName) {
    _displayName = std::move(displayName);
  }

  /// The free-form values, shared with the caller; null on a fresh object.
  const ns::DictionaryPtr &properties() const { return _properties; }
  void setProperties(ns::DictionaryPtr properties) { _properties = std::move(properties); }
  /// The value under `key`, or nil (also when there is no dictionary).
  ns::Value propertyForKey(std::u16string_view key) const;
  /// Stores `value` (nil removes) in properties(); does nothing while that is null.
  void setProperty(const ns::Value &value, std::u16string_view key);
  /// Removes `key` from properties(); does nothing while that is null.
  void removePropertyForKey(std::u16string_view key);

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

protected:
  /// Keys "name", "displayName" and "properties".
  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

  /// A string value as a name, nil for anything else.
  static std::optional<std::u16string> nameFromValue(const ns::Value &value);
  /// A name as a value: the string, or nil.
  static ns::Value valueFromName(const std::optional<std::u16string> &name);

private:
  std::optional<std::u16string> _name;
  std::optional<std::u16string> _displayName;
  ns::DictionaryPtr _properties;
};

} // namespace vl
