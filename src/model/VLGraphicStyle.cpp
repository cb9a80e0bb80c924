// Graphic styles: the default one and the fixed answers about a graphic.
#include "model/VLGraphicStyle.h"

#include "model/VLLocalization.h"

namespace vl {

VL_REGISTER_CLASS(VLGraphicStyle);

VLGraphicStylePtr VLGraphicStyle::defaultGraphicStyle() {
  auto style = std::make_shared<VLGraphicStyle>();
  style->resetToDefaultProperties();
  style->setIsDefaultStyle(true);
  style->setDisplayName(localizedString(u"Default Graphic Style"));
  style->setStyleName(styleNameForDisplayName(style->displayName()));
  return style;
}

const ns::ColorPtr &VLGraphicStyle::shadowColor() const {
  static const ns::ColorPtr none;
  return none;
}

const ns::ColorPtr &VLGraphicStyle::backgroundColor() const {
  return shadowColor();
}

bool VLGraphicStyle::matchesAttachment(const ns::TextAttachmentPtr &) const {
  return true;
}

VLGraphicStylePtr VLGraphicStyle::derivedGraphicStyleWithAttachment(const ns::TextAttachmentPtr &) {
  auto style = std::make_shared<VLGraphicStyle>();
  style->setParentStyle(self<VLStyle>());
  return style;
}

} // namespace vl
