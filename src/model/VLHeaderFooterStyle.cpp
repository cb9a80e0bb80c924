// VLHeaderFooterStyle: key-value access and keyed coding of a header or footer band.
#include "model/VLHeaderFooterStyle.h"

namespace vl {

VL_REGISTER_CLASS(VLHeaderFooterStyle);

bool VLHeaderFooterStyle::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (key == u"dynamicSpacing")
    value = _dynamicSpacing;
  else if (key == u"minimumHeight")
    value = _minimumHeight;
  else if (key == u"topMargin")
    value = _topMargin;
  else if (key == u"bottomMargin")
    value = _bottomMargin;
  else if (key == u"leftMargin")
    value = _leftMargin;
  else if (key == u"rightMargin")
    value = _rightMargin;
  else
    return VLStyleObject::kvcValueForKey(key, value);
  return true;
}

bool VLHeaderFooterStyle::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  if (key == u"dynamicSpacing")
    _dynamicSpacing = value.boolValue();
  else if (key == u"minimumHeight")
    _minimumHeight = value.doubleValue();
  else if (key == u"topMargin")
    _topMargin = value.doubleValue();
  else if (key == u"bottomMargin")
    _bottomMargin = value.doubleValue();
  else if (key == u"leftMargin")
    _leftMargin = value.doubleValue();
  else if (key == u"rightMargin")
    _rightMargin = value.doubleValue();
  else
    return VLStyleObject::kvcSetValueForKey(key, value);
  return true;
}

void VLHeaderFooterStyle::encodeWithCoder(ns::KeyedArchiver &coder) const {
  VLStyleObject::encodeWithCoder(coder);
  coder.encodeDouble(_minimumHeight, u"_minimumHeight");
  coder.encodeDouble(_topMargin, u"_topMargin");
  coder.encodeDouble(_bottomMargin, u"_bottomMargin");
  coder.encodeDouble(_leftMargin, u"_leftMargin");
  coder.encodeDouble(_rightMargin, u"_rightMargin");
  coder.encodeBool(_dynamicSpacing, u"_dynamicSpacing");
}

void VLHeaderFooterStyle::initWithCoder(ns::KeyedUnarchiver &coder) {
  VLStyleObject::initWithCoder(coder);
  _minimumHeight = coder.decodeDoubleForKey(u"_minimumHeight");
  _topMargin = coder.decodeDoubleForKey(u"_topMargin");
  _bottomMargin = coder.decodeDoubleForKey(u"_bottomMargin");
  _leftMargin = coder.decodeDoubleForKey(u"_leftMargin");
  _rightMargin = coder.decodeDoubleForKey(u"_rightMargin");
  if (coder.containsValueForKey(u"_dynamicSpacing"))
    _dynamicSpacing = coder.decodeBoolForKey(u"_dynamicSpacing");
}

} // namespace vl
