// VLMemoryRDFModel: an RDFModel held in memory, for hosts without a metadata store of their
// own and for tests.
#pragma once

#include "model/VLRDFModel.h"
#include "ns/Dictionary.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace vl {

class VLMemoryRDFResource;
class VLMemoryRDFModel;
using VLMemoryRDFResourcePtr = std::shared_ptr<VLMemoryRDFResource>;
using VLMemoryRDFModelPtr = std::shared_ptr<VLMemoryRDFModel>;

/// A resource whose properties are a dictionary: any key can be set and read through
/// key-value coding, and a key never set reads as nil.
class VLMemoryRDFResource : public RDFResource {
public:
  VL_OBJECT(VLMemoryRDFResource)

  explicit VLMemoryRDFResource(std::u16string uri) : uri_(std::move(uri)) {}

  std::u16string stringValue() const override { return uri_; }
  /// The live properties (never null).
  const ns::DictionaryPtr &properties() const { return properties_; }

  ns::Value valueForUndefinedKey(std::u16string_view key) override;
  /// Stores the value; nil removes the key.
  void setValueForUndefinedKey(const ns::Value &value, std::u16string_view key) override;

private:
  std::u16string uri_;
  ns::DictionaryPtr properties_ = ns::Dictionary::create();
};

/// Resources by URI. Lookups are O(log n) in the number of resources.
class VLMemoryRDFModel : public RDFModel {
public:
  VL_OBJECT(VLMemoryRDFModel)

  static VLMemoryRDFModelPtr create() { return std::make_shared<VLMemoryRDFModel>(); }

  RDFResourcePtr findResource(std::u16string_view uri) override;
  /// The resource of `uri`, made (with no properties) when there is none yet.
  VLMemoryRDFResourcePtr resourceForURI(std::u16string_view uri);
  /// Gives each outline marker (type 3) of a document's references a resource "#identifier"
  /// with the "title" and "summary" of its properties, as the readers leave them; other
  /// markers and entries without properties are passed over. A null dictionary adds nothing.
  void addResourcesFromReferences(const ns::ConstDictionaryPtr &references);
  /// Forgets the resource of `uri`, if any.
  void removeResource(std::u16string_view uri);
  size_t count() const { return resources_.size(); }

private:
  std::map<std::u16string, VLMemoryRDFResourcePtr, std::less<>> resources_;
};

} // namespace vl
