// Description of a Fountain element.
#include "converters/fountain/FNElement.h"

#include <string>

namespace vl {

std::u16string FNElement::description() const {
  std::u16string result = elementType_;
  if (isCentered_) {
    result += u" (centered)";
  } else if (isDualDialogue_) {
    result += u" (dual dialogue)";
  } else if (sectionDepth_ != 0) {
    std::string depth = std::to_string(sectionDepth_);
    result += u" (";
    result.append(depth.begin(), depth.end());
    result += u')';
  }
  result += u": ";
  result += elementText_;
  return result;
}

} // namespace vl
