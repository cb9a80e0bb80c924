// The text of a metadata property value, whatever object carries it.
#include "model/VLRDFModel.h"

#include "ns/AttributedString.h"

namespace vl {

std::optional<std::u16string> textOfPropertyValue(const ns::Value &value) {
  if (value.isNil())
    return std::nullopt;
  if (value.isString())
    return value.string();
  if (auto text = value.as<ns::AttributedString>())
    return std::u16string(text->string());
  return value.stringValue();
}

} // namespace vl
