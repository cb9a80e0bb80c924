// TextView: the host's text view, as far as the library's live objects ask it about layout.
#pragma once

#include "ns/Geometry.h"
#include "ns/Object.h"
#include "ns/Range.h"

namespace vl::ns {

/// The face of the platform's NSTextView that the library's objects in text use. The view
/// itself belongs to the host, which subclasses this over it; the defaults describe a view
/// that lays nothing out, so code handed a bare TextView (or none) still answers.
class TextView : public Object {
public:
  VL_OBJECT(NSTextView)

  /// True when the view has a layout manager, i.e. the geometry below means something.
  virtual bool hasLayoutManager() const { return false; }
  /// The glyphs that show `characterRange`; the range itself by default.
  virtual Range glyphRangeForCharacterRange(Range characterRange) const { return characterRange; }
  /// The bounds of `glyphRange` in the coordinates of the view's text container; zero by
  /// default.
  virtual Rect boundingRectForGlyphRange(Range glyphRange) const {
    (void)glyphRange;
    return Rect{};
  }
  /// Where the text container sits in the view; zero by default.
  virtual Point textContainerOrigin() const { return Point{}; }
};

} // namespace vl::ns
