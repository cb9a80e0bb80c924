// VLHeaderFooterStyle: the geometry of a page's header or footer band.
#pragma once

#include "model/VLStyleObject.h"

#include <memory>

namespace vl {

class VLHeaderFooterStyle;
using VLHeaderFooterStylePtr = std::shared_ptr<VLHeaderFooterStyle>;

/// A band at the top or bottom of a page, in points. The band posts nothing when it changes:
/// the page layout that owns it announces the changes made through its own setters.
///
/// Of the two vertical margins, a header uses bottomMargin (the page's top margin above the
/// band) and a footer topMargin (the page's bottom margin below it).
///
/// Keyed coding writes the base's keys, then "_minimumHeight", "_topMargin",
/// "_bottomMargin", "_leftMargin", "_rightMargin" (reals) and "_dynamicSpacing" (boolean).
class VLHeaderFooterStyle : public VLStyleObject {
public:
  VL_OBJECT(VLHeaderFooterStyle)

  /// Dynamic spacing on, every length 0.
  VLHeaderFooterStyle() = default;
  static VLHeaderFooterStylePtr create() { return std::make_shared<VLHeaderFooterStyle>(); }

  bool dynamicSpacing() const { return _dynamicSpacing; }
  void setDynamicSpacing(bool dynamicSpacing) { _dynamicSpacing = dynamicSpacing; }
  /// The height of the band.
  double minimumHeight() const { return _minimumHeight; }
  void setMinimumHeight(double height) { _minimumHeight = height; }
  double topMargin() const { return _topMargin; }
  void setTopMargin(double margin) { _topMargin = margin; }
  double bottomMargin() const { return _bottomMargin; }
  void setBottomMargin(double margin) { _bottomMargin = margin; }
  double leftMargin() const { return _leftMargin; }
  void setLeftMargin(double margin) { _leftMargin = margin; }
  double rightMargin() const { return _rightMargin; }
  void setRightMargin(double margin) { _rightMargin = margin; }

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  /// A missing "_dynamicSpacing" keeps the default, on.
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

protected:
  /// Keys named after the accessors: "dynamicSpacing", "minimumHeight", "topMargin", ...
  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

private:
  bool _dynamicSpacing = true;
  double _minimumHeight = 0;
  double _topMargin = 0;
  double _bottomMargin = 0;
  double _leftMargin = 0;
  double _rightMargin = 0;
};

} // namespace vl
