// VLListLevelProperties: the free-form properties of a list level, with its display name.
#pragma once

#include "model/VLStyleProperties.h"
#include "ns/KeyedArchiver.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl {

/// The properties of one list level style: the free-form values of VLStyleProperties and
/// the level's display name.
///
/// Keyed coding keys: those of VLStyleProperties, then "displayName".
class VLListLevelProperties : public VLStyleProperties {
public:
  VLListLevelProperties() = default;
  static std::shared_ptr<VLListLevelProperties> create() {
    return std::make_shared<VLListLevelProperties>();
  }

  VL_OBJECT(VLListLevelProperties)

  /// The name shown for the level, or nil.
  const std::optional<std::u16string> &displayName() const { return _displayName; }
  void setDisplayName(std::optional<std::u16string> name) { _displayName = std::move(name); }

  /// A copy with its own dictionary (values shared) and the display name.
  ns::ObjectPtr copy() const override;

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

protected:
  VLStylePropertiesPtr makeProperties() const override { return create(); }
  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

private:
  std::optional<std::u16string> _displayName;
};

} // namespace vl
