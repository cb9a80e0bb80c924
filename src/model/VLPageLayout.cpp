// VLPageLayout: the geometry rules, edit brackets, validators and keyed coding of a page.
#include "model/VLPageLayout.h"

#include "model/VLConstants.h"
#include "ns/Assert.h"
#include "ns/NotificationCenter.h"

#include <algorithm>
#include <cmath>

namespace vl {

VL_REGISTER_CLASS(VLPageLayout);

namespace {

// The height of the band carved out of a printer's top or bottom margin.
constexpr double kBandHeight = 35.0;
// The share of the paper a margin or spacing may take.
constexpr double kLimitFraction = 0.4;

bool clampToLimit(ns::Value *number, double limit) {
  if (!number || number->isNil())
    return true;
  double value = number->doubleValue();
  if (value < 0)
    *number = 0.0;
  else if (value > limit)
    *number = limit;
  return true;
}

// Images are archived as the bytes they were made from (PNG for images made from pixels), so
// the archive needs no class of its own for them.
ns::Value archivedImage(const ns::ImagePtr &image) {
  if (!image)
    return {};
  if (!image->data().empty())
    return image->data();
  return image->representationUsingType(ns::ImageFileTypePNG);
}

ns::ImagePtr unarchivedImage(const ns::Value &value) {
  if (auto image = value.as<ns::Image>())
    return image;
  if (value.isData())
    return ns::Image::createWithData(value.data());
  return nullptr;
}

} // namespace

VLPageLayout::VLPageLayout()
    : _headerStyle(VLHeaderFooterStyle::create()), _footerStyle(VLHeaderFooterStyle::create()) {}

VLPageLayoutPtr VLPageLayout::pageLayoutWithPrintInfo(const ns::PrintInfo &printInfo) {
  auto layout = create();
  layout->setStateWithPrintInfo(printInfo);
  return layout;
}

void VLPageLayout::setStateWithPrintInfo(const ns::PrintInfo &printInfo) {
  beginEditing();
  setPageSize(printInfo.paperSize());
  setOrientation(printInfo.orientation());
  setLeftMargin(printInfo.leftMargin());
  setRightMargin(printInfo.rightMargin());
  // Carve a fixed band out of each printer margin so the text stays where the printer put it.
  double top = printInfo.topMargin();
  if (top > 0) {
    double margin = std::floor(top - kBandHeight);
    setTopMargin(margin);
    if (_headerStyle) {
      _headerStyle->setMinimumHeight(top - margin);
      _headerStyle->setBottomMargin(margin);
    }
  }
  double bottom = printInfo.bottomMargin();
  if (bottom > 0) {
    double margin = std::floor(bottom - kBandHeight);
    setBottomMargin(margin);
    if (_footerStyle) {
      _footerStyle->setMinimumHeight(bottom - margin);
      _footerStyle->setTopMargin(margin);
    }
  }
  endEditing();
}

void VLPageLayout::setPageSize(ns::Size size) {
  _pageSize = size;
  _notifyDidChange();
}

void VLPageLayout::setPageWidth(double width) {
  _pageSize.width = width;
  _notifyDidChange();
}

void VLPageLayout::setPageHeight(double height) {
  _pageSize.height = height;
  _notifyDidChange();
}

void VLPageLayout::setOrientation(uint64_t orientation) {
  _orientation = orientation;
  _notifyDidChange();
}

void VLPageLayout::setTopMargin(double margin) {
  _topMargin = margin;
  _notifyDidChange();
}

void VLPageLayout::setBottomMargin(double margin) {
  _bottomMargin = margin;
  _notifyDidChange();
}

void VLPageLayout::setLeftMargin(double margin) {
  _leftMargin = margin;
  _notifyDidChange();
}

void VLPageLayout::setRightMargin(double margin) {
  _rightMargin = margin;
  _notifyDidChange();
}

void VLPageLayout::setHeaderStyle(VLHeaderFooterStylePtr style) {
  _headerStyle = std::move(style);
  _notifyDidChange();
}

void VLPageLayout::setFooterStyle(VLHeaderFooterStylePtr style) {
  _footerStyle = std::move(style);
  _notifyDidChange();
}

void VLPageLayout::setPageUsage(int64_t usage) {
  _pageUsage = usage;
  _notifyDidChange();
}

void VLPageLayout::setBackgroundImage(ns::ImagePtr image) {
  _backgroundImage = std::move(image);
  _notifyDidChange();
}

void VLPageLayout::setFirstPageNumber(uint64_t number) {
  _firstPageNumber = number;
  _notifyDidChange();
}

void VLPageLayout::setHeaderSpacing(double spacing) {
  double height = _headerStyle ? _headerStyle->minimumHeight() : 0;
  double old = headerSpacing();
  setTopMargin(spacing);
  if (_headerStyle)
    _headerStyle->setMinimumHeight(height - (spacing - old));
}

void VLPageLayout::setFooterSpacing(double spacing) {
  double height = _footerStyle ? _footerStyle->minimumHeight() : 0;
  double old = footerSpacing();
  setBottomMargin(spacing);
  if (_footerStyle)
    _footerStyle->setMinimumHeight(height - (spacing - old));
}

double VLPageLayout::contentTopMargin() const {
  return _topMargin + (_headerStyle ? _headerStyle->minimumHeight() : 0);
}

double VLPageLayout::contentBottomMargin() const {
  return _bottomMargin + (_footerStyle ? _footerStyle->minimumHeight() : 0);
}

void VLPageLayout::setContentTopMargin(double margin) {
  if (_headerStyle)
    _headerStyle->setMinimumHeight(margin - _topMargin);
  _notifyDidChange();
}

void VLPageLayout::setContentBottomMargin(double margin) {
  if (_footerStyle)
    _footerStyle->setMinimumHeight(margin - _bottomMargin);
  _notifyDidChange();
}

bool VLPageLayout::validateLeftMargin(ns::Value *number, ns::ErrorPtr *) const {
  return clampToLimit(number, kLimitFraction * pageWidth());
}

bool VLPageLayout::validateRightMargin(ns::Value *number, ns::ErrorPtr *) const {
  return clampToLimit(number, kLimitFraction * pageWidth());
}

bool VLPageLayout::validateHeaderSpacing(ns::Value *number, ns::ErrorPtr *) const {
  return clampToLimit(number, kLimitFraction * pageHeight());
}

bool VLPageLayout::validateFooterSpacing(ns::Value *number, ns::ErrorPtr *) const {
  return clampToLimit(number, kLimitFraction * pageHeight());
}

bool VLPageLayout::validateContentTopMargin(ns::Value *number, ns::ErrorPtr *) const {
  return clampToLimit(number, kLimitFraction * pageHeight());
}

bool VLPageLayout::validateContentBottomMargin(ns::Value *number, ns::ErrorPtr *) const {
  return clampToLimit(number, kLimitFraction * pageHeight());
}

void VLPageLayout::setShouldMirrorPages(bool mirror) {
  setPageUsage(mirror ? VLPageUsageMirrored : VLPageUsageSingleSided);
}

void VLPageLayout::endEditing() {
  VL_ASSERT(_editNesting > 0, "start/end mismatch");
  if (--_editNesting == 0)
    _notifyDidChange();
}

void VLPageLayout::_notifyDidChange() {
  if (_editNesting == 0)
    ns::NotificationCenter::defaultCenter().postNotificationName(VLPageLayoutDidChangeNotification,
                                                                 this);
}

bool VLPageLayout::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (key == u"pageWidth")
    value = pageWidth();
  else if (key == u"pageHeight")
    value = pageHeight();
  else if (key == u"orientation")
    value = _orientation;
  else if (key == u"topMargin")
    value = _topMargin;
  else if (key == u"bottomMargin")
    value = _bottomMargin;
  else if (key == u"leftMargin")
    value = _leftMargin;
  else if (key == u"rightMargin")
    value = _rightMargin;
  else if (key == u"headerStyle")
    value = _headerStyle;
  else if (key == u"footerStyle")
    value = _footerStyle;
  else if (key == u"pageUsage")
    value = _pageUsage;
  else if (key == u"backgroundImage")
    value = _backgroundImage;
  else if (key == u"firstPageNumber")
    value = _firstPageNumber;
  else if (key == u"editNesting")
    value = _editNesting;
  else if (key == u"headerSpacing")
    value = headerSpacing();
  else if (key == u"footerSpacing")
    value = footerSpacing();
  else if (key == u"contentTopMargin")
    value = contentTopMargin();
  else if (key == u"contentBottomMargin")
    value = contentBottomMargin();
  else if (key == u"maxHeaderSpacing")
    value = maxHeaderSpacing();
  else if (key == u"maxFooterSpacing")
    value = maxFooterSpacing();
  else if (key == u"shouldMirrorPages")
    value = shouldMirrorPages();
  else
    return VLStyleObject::kvcValueForKey(key, value);
  return true;
}

bool VLPageLayout::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  if (key == u"pageWidth")
    setPageWidth(value.doubleValue());
  else if (key == u"pageHeight")
    setPageHeight(value.doubleValue());
  else if (key == u"orientation")
    setOrientation(value.unsignedIntegerValue());
  else if (key == u"topMargin")
    setTopMargin(value.doubleValue());
  else if (key == u"bottomMargin")
    setBottomMargin(value.doubleValue());
  else if (key == u"leftMargin")
    setLeftMargin(value.doubleValue());
  else if (key == u"rightMargin")
    setRightMargin(value.doubleValue());
  else if (key == u"headerStyle")
    setHeaderStyle(value.as<VLHeaderFooterStyle>());
  else if (key == u"footerStyle")
    setFooterStyle(value.as<VLHeaderFooterStyle>());
  else if (key == u"pageUsage")
    setPageUsage(value.integerValue());
  else if (key == u"backgroundImage")
    setBackgroundImage(value.as<ns::Image>());
  else if (key == u"firstPageNumber")
    setFirstPageNumber(value.unsignedIntegerValue());
  else if (key == u"editNesting")
    setEditNesting(value.integerValue());
  else if (key == u"headerSpacing")
    setHeaderSpacing(value.doubleValue());
  else if (key == u"footerSpacing")
    setFooterSpacing(value.doubleValue());
  else if (key == u"contentTopMargin")
    setContentTopMargin(value.doubleValue());
  else if (key == u"contentBottomMargin")
    setContentBottomMargin(value.doubleValue());
  else if (key == u"shouldMirrorPages")
    setShouldMirrorPages(value.boolValue());
  else if (key == u"maxHeaderSpacing" || key == u"maxFooterSpacing")
    return true; // derived from the page height; a write has nothing to change
  else
    return VLStyleObject::kvcSetValueForKey(key, value);
  return true;
}

void VLPageLayout::encodeWithCoder(ns::KeyedArchiver &coder) const {
  VLStyleObject::encodeWithCoder(coder);
  coder.encodeSize(_pageSize, u"_pageSize");
  coder.encodeInteger(static_cast<int64_t>(_orientation), u"_orientation");
  coder.encodeInteger(_pageUsage, u"_pageUsage");
  coder.encodeInteger(static_cast<int64_t>(_firstPageNumber), u"_firstPageNumber");
  coder.encodeDouble(_topMargin, u"_topMargin");
  coder.encodeDouble(_bottomMargin, u"_bottomMargin");
  coder.encodeDouble(_leftMargin, u"_leftMargin");
  coder.encodeDouble(_rightMargin, u"_rightMargin");
  coder.encodeObject(_headerStyle, u"_headerStyle");
  coder.encodeObject(_footerStyle, u"_footerStyle");
  coder.encodeObject(archivedImage(_backgroundImage), u"_backgroundImage");
  coder.encodeInteger(_editNesting, u"_editNesting");
}

void VLPageLayout::initWithCoder(ns::KeyedUnarchiver &coder) {
  VLStyleObject::initWithCoder(coder);
  _pageSize = coder.decodeSizeForKey(u"_pageSize");
  _orientation = static_cast<uint64_t>(coder.decodeIntegerForKey(u"_orientation"));
  _pageUsage = coder.decodeIntegerForKey(u"_pageUsage");
  _firstPageNumber = static_cast<uint64_t>(coder.decodeIntegerForKey(u"_firstPageNumber"));
  _topMargin = coder.decodeDoubleForKey(u"_topMargin");
  _bottomMargin = coder.decodeDoubleForKey(u"_bottomMargin");
  _leftMargin = coder.decodeDoubleForKey(u"_leftMargin");
  _rightMargin = coder.decodeDoubleForKey(u"_rightMargin");
  // An archive without a band keeps the fresh one, so the layout always has both.
  if (auto header = coder.decodeObjectForKey(u"_headerStyle").as<VLHeaderFooterStyle>())
    _headerStyle = std::move(header);
  if (auto footer = coder.decodeObjectForKey(u"_footerStyle").as<VLHeaderFooterStyle>())
    _footerStyle = std::move(footer);
  _backgroundImage = unarchivedImage(coder.decodeObjectForKey(u"_backgroundImage"));
  // A negative depth (only a damaged archive holds one) would silence the layout for good.
  _editNesting = std::max<int64_t>(0, coder.decodeIntegerForKey(u"_editNesting"));
}

} // namespace vl
