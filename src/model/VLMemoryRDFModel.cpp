// An RDFModel held in memory: resources by URI with dictionaries of properties.
#include "model/VLMemoryRDFModel.h"

namespace vl {

ns::Value VLMemoryRDFResource::valueForUndefinedKey(std::u16string_view key) {
  return properties_->objectForKey(key);
}

void VLMemoryRDFResource::setValueForUndefinedKey(const ns::Value &value, std::u16string_view key) {
  properties_->setObject(value, key);
}

RDFResourcePtr VLMemoryRDFModel::findResource(std::u16string_view uri) {
  auto found = resources_.find(uri);
  return found == resources_.end() ? nullptr : found->second;
}

VLMemoryRDFResourcePtr VLMemoryRDFModel::resourceForURI(std::u16string_view uri) {
  auto found = resources_.find(uri);
  if (found != resources_.end())
    return found->second;
  auto resource = std::make_shared<VLMemoryRDFResource>(std::u16string(uri));
  resources_.emplace(std::u16string(uri), resource);
  return resource;
}

void VLMemoryRDFModel::addResourcesFromReferences(const ns::ConstDictionaryPtr &references) {
  if (!references)
    return;
  // Markers live in a layer above this one: they are read through key-value coding.
  constexpr int64_t OutlineEntryMarkerType = 3;
  for (const auto &[identifier, value] : *references) {
    const ns::ObjectPtr &marker = value.object();
    if (!marker || marker->valueForKey(u"textMarkerType").integerValue() != OutlineEntryMarkerType)
      continue;
    ns::DictionaryPtr properties = marker->valueForKey(u"representedObject").dictionary();
    if (!properties)
      continue;
    VLMemoryRDFResourcePtr resource = resourceForURI(u"#" + identifier);
    for (std::u16string_view key : {RDFResource::TitleKey, RDFResource::SummaryKey})
      resource->setValueForKey(properties->objectForKey(key), key);
  }
}

void VLMemoryRDFModel::removeResource(std::u16string_view uri) {
  auto found = resources_.find(uri);
  if (found != resources_.end())
    resources_.erase(found);
}

} // namespace vl
