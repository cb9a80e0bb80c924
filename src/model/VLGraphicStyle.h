// VLGraphicStyle: the style of an inline graphic, kept in the stylesheet beside the
// paragraph and text styles.
#pragma once

#include "model/VLStyle.h"
#include "ns/Geometry.h"
#include "ns/TextAttachment.h"

#include <memory>
#include <string>

namespace vl {

class VLGraphicStyle;
using VLGraphicStylePtr = std::shared_ptr<VLGraphicStyle>;

/// A style with no fields of its own and fixed answers about the graphic: no shadow, no
/// background, placed at the top, relative to the baseline, and matching every attachment.
class VLGraphicStyle : public VLStyle {
public:
  VLGraphicStyle() = default;
  static VLGraphicStylePtr create() { return std::make_shared<VLGraphicStyle>(); }

  VL_OBJECT(VLGraphicStyle)

  /// A new style after resetToDefaultProperties, flagged default, named after the localized
  /// "Default Graphic Style".
  static VLGraphicStylePtr defaultGraphicStyle();

  /// The zero size.
  ns::Size shadowOffset() const { return {}; }
  /// Nil.
  const ns::ColorPtr &shadowColor() const;
  /// Nil.
  const ns::ColorPtr &backgroundColor() const;
  /// "top".
  std::u16string verticalPos() const { return u"top"; }
  /// "baseline".
  std::u16string verticalRel() const { return u"baseline"; }
  /// True for every attachment, nil included.
  bool matchesAttachment(const ns::TextAttachmentPtr &attachment) const;
  /// A new graphic style whose parent is this one; the attachment is not looked at.
  VLGraphicStylePtr derivedGraphicStyleWithAttachment(const ns::TextAttachmentPtr &attachment);

protected:
  VLStylePtr makeStyle() const override { return std::make_shared<VLGraphicStyle>(); }
};

} // namespace vl
