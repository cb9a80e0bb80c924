// RDFModel and RDFResource: the host's metadata model of a document (scene titles, synopses,
// colours), as the writers look resources up in it.
#pragma once

#include "ns/Object.h"
#include "ns/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl {

class RDFModel;
class RDFResource;
using RDFModelPtr = std::shared_ptr<RDFModel>;
using RDFResourcePtr = std::shared_ptr<RDFResource>;

/// One resource of the model: something with a URI and properties read by key ("title",
/// "summary", "color", ...) through key-value coding. Keys a resource does not have answer
/// nil; whether it stores any key at all is the implementation's.
class RDFResource : public ns::Object {
public:
  VL_OBJECT(RDFResource)

  /// The resource's URI.
  virtual std::u16string stringValue() const = 0;

  /// valueForKey("title"): the title the host shows, a string (or an attributed string);
  /// nil when untitled.
  ns::Value title() { return valueForKey(TitleKey); }
  /// valueForKey("summary"): the synopsis; nil when there is none.
  ns::Value summary() { return valueForKey(SummaryKey); }
  /// valueForKey("color"): the label colour, an ns::Color or a "#rrggbb" string; nil when
  /// there is none.
  ns::Value color() { return valueForKey(ColorKey); }

  static constexpr std::u16string_view TitleKey = u"title";
  static constexpr std::u16string_view SummaryKey = u"summary";
  static constexpr std::u16string_view ColorKey = u"color";
};

/// The document model a host hands the writers under VLRDFMetadataDocumentAttribute (as an
/// object in an ns::Value). Writers only look resources up: an outline entry with identifier
/// "scene3" is the resource whose URI is "#scene3" resolved against the writer's base URL.
class RDFModel : public ns::Object {
public:
  VL_OBJECT(RDFModel)

  /// The resource whose URI is `uri` (compared exactly); nil when there is none.
  virtual RDFResourcePtr findResource(std::u16string_view uri) = 0;
};

/// The text of a property value: a string as it is, an attributed string's characters, any
/// other value's description; nullopt for nil.
std::optional<std::u16string> textOfPropertyValue(const ns::Value &value);

} // namespace vl
