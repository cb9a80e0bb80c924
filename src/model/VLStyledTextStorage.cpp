// VLStyledTextStorage: the repair of paragraph styles while attributes are fixed.
#include "model/VLStyledTextStorage.h"

#include "model/VLConstants.h"
#include "model/VLStyle.h"
#include "ns/Assert.h"

#include <algorithm>

namespace vl {

void VLStyledTextStorage::fixParagraphStyleAttributeInRange(ns::Range range) {
  // Checked before the platform's step, whose own check would otherwise name it instead.
  const uint64_t n = length();
  VL_ASSERT(range.location <= n && range.length <= n - range.location,
            "Range out of bounds in fixParagraphStyleAttributeInRange:");
  VLXMLStorage::fixParagraphStyleAttributeInRange(range);
  if (_suppressParagraphStyleFixing || range.location >= n)
    return;

  beginEditing();
  // At least the paragraph at the location, even for an empty range.
  uint64_t position = range.location;
  do {
    ns::Range paragraph = paragraphRangeForRange(ns::Range{position, 0});
    ns::Range run;
    ns::Value style = attribute(VLParagraphStyleAttributeName, paragraph.location, &run, paragraph);
    if (!style.isNil()) {
      // The first character's style wins.
      if (run.max() < paragraph.max())
        addAttribute(VLParagraphStyleAttributeName, style,
                     ns::Range{run.max(), paragraph.max() - run.max()});
    } else {
      // The style is read one past the end of the unstyled stretch, not at its end.
      uint64_t next = run.max() + 1;
      ns::Value found = next < paragraph.max()
                            ? attribute(VLParagraphStyleAttributeName, next, nullptr)
                            : ns::Value();
      // Nothing found there (or nothing there at all): the paragraph gets a style of its own.
      if (found.isNil())
        found = ns::Value(VLStyle::defaultParagraphStyle());
      addAttribute(VLParagraphStyleAttributeName, found, paragraph);
    }
    position = std::max(paragraph.max(), position + 1);
  } while (position < range.max() && position < n);
  endEditing();
}

} // namespace vl
