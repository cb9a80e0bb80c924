// VLPageLayout: paper, margins and the header and footer bands of a page.
#pragma once

#include "model/VLHeaderFooterStyle.h"
#include "model/VLStyleObject.h"
#include "ns/Error.h"
#include "ns/Geometry.h"
#include "ns/Image.h"
#include "ns/PrintInfo.h"

#include <cstdint>
#include <memory>

namespace vl {

class VLPageLayout;
using VLPageLayoutPtr = std::shared_ptr<VLPageLayout>;

/// Values of pageUsage with a meaning; any other value is carried as it is.
enum VLPageUsage : int64_t { VLPageUsageSingleSided = 0, VLPageUsageMirrored = 3 };

/// The geometry of a page, in points.
///
/// The top margin runs from the paper's edge to the header band; the band has a height
/// (headerStyle()->minimumHeight()) and the text starts below both, so the content margin is
/// margin plus band. setHeaderSpacing moves the edge and keeps the text where it is;
/// setContentTopMargin moves the text and keeps the edge. The bottom mirrors this with the
/// footer band.
///
/// Changes are announced by VLPageLayoutDidChangeNotification (object: the layout) on the
/// default notification center, posted synchronously by every setter below (whether or not
/// the value changed) unless a beginEditing bracket is open: then the bracket's outermost
/// endEditing posts once, whether or not anything changed. Changing a band's values directly
/// posts nothing.
///
/// Keyed coding writes the base's keys, then "_pageSize", "_orientation", "_pageUsage",
/// "_firstPageNumber", the four margins, "_headerStyle", "_footerStyle",
/// "_backgroundImage" (its PNG or JPEG bytes) and "_editNesting". The nesting is kept, so a
/// layout archived inside a bracket comes back silent until it is balanced.
class VLPageLayout : public VLStyleObject {
public:
  VL_OBJECT(VLPageLayout)

  /// A header and a footer band; every number 0.
  VLPageLayout();
  static VLPageLayoutPtr create() { return std::make_shared<VLPageLayout>(); }
  /// A new layout that took the state of `printInfo` (see setStateWithPrintInfo).
  static VLPageLayoutPtr pageLayoutWithPrintInfo(const ns::PrintInfo &printInfo);

  /// Takes paper size, orientation, left and right margin from `printInfo`, and splits each
  /// positive top or bottom margin m into a page margin floor(m - 35) and a band of the rest,
  /// so the text stays where the printer put it: 72 gives 37 and a band of 35. A margin below
  /// 35 gives a negative page margin; a margin of 0 or less leaves margin and band alone.
  /// Works inside a bracket of its own, so it posts one notice (none inside a caller's).
  void setStateWithPrintInfo(const ns::PrintInfo &printInfo);

  // The paper. Setters post a notice.
  ns::Size pageSize() const { return _pageSize; }
  void setPageSize(ns::Size size);
  double pageWidth() const { return _pageSize.width; }
  void setPageWidth(double width);
  double pageHeight() const { return _pageSize.height; }
  void setPageHeight(double height);

  // Field reads. The setters store, then post a notice.
  /// As ns::PrintInfo numbers it (ns::PortraitOrientation, ns::LandscapeOrientation).
  uint64_t orientation() const { return _orientation; }
  void setOrientation(uint64_t orientation);
  double topMargin() const { return _topMargin; }
  void setTopMargin(double margin);
  double bottomMargin() const { return _bottomMargin; }
  void setBottomMargin(double margin);
  double leftMargin() const { return _leftMargin; }
  void setLeftMargin(double margin);
  double rightMargin() const { return _rightMargin; }
  void setRightMargin(double margin);
  /// The header band; null only if a caller set null.
  const VLHeaderFooterStylePtr &headerStyle() const { return _headerStyle; }
  void setHeaderStyle(VLHeaderFooterStylePtr style);
  /// The footer band; null only if a caller set null.
  const VLHeaderFooterStylePtr &footerStyle() const { return _footerStyle; }
  void setFooterStyle(VLHeaderFooterStylePtr style);
  /// VLPageUsageSingleSided, VLPageUsageMirrored, or another value carried as it is.
  int64_t pageUsage() const { return _pageUsage; }
  void setPageUsage(int64_t usage);
  /// Carried and coded, never drawn here; may be null.
  const ns::ImagePtr &backgroundImage() const { return _backgroundImage; }
  void setBackgroundImage(ns::ImagePtr image);
  uint64_t firstPageNumber() const { return _firstPageNumber; }
  void setFirstPageNumber(uint64_t number);
  /// The depth of open beginEditing brackets.
  int64_t editNesting() const { return _editNesting; }
  /// Stores without a notice.
  void setEditNesting(int64_t nesting) { _editNesting = nesting; }

  // The bands.

  /// topMargin(): the distance from the paper's edge to the header band.
  double headerSpacing() const { return _topMargin; }
  /// bottomMargin(): the distance from the paper's edge to the footer band.
  double footerSpacing() const { return _bottomMargin; }
  /// Moves the header band's edge to `spacing` and changes the band's height by as much the
  /// other way, so contentTopMargin() stays. The notice is posted by setTopMargin, before the
  /// band changes: bracket the call where observers must see the final height.
  void setHeaderSpacing(double spacing);
  /// The same for the bottom margin and the footer band.
  void setFooterSpacing(double spacing);
  /// topMargin() plus the header band's height: where the text starts.
  double contentTopMargin() const;
  /// bottomMargin() plus the footer band's height.
  double contentBottomMargin() const;
  /// Makes the header band's height `margin` - topMargin(), keeping the edge; posts.
  void setContentTopMargin(double margin);
  /// Makes the footer band's height `margin` - bottomMargin(), keeping the edge; posts.
  void setContentBottomMargin(double margin);
  /// 0.4 of the page height.
  double maxHeaderSpacing() const { return 0.4 * _pageSize.height; }
  double maxFooterSpacing() const { return 0.4 * _pageSize.height; }

  // Validators: they correct rather than refuse. A number below 0 becomes 0.0, one above the
  // limit becomes the limit; nil (or a null pointer) stays. `error` is never written; the
  // answer is always true. The limit is 0.4 of pageWidth() for the side margins and 0.4 of
  // pageHeight() for the spacings and content margins.

  bool validateLeftMargin(ns::Value *number, ns::ErrorPtr *error) const;
  bool validateRightMargin(ns::Value *number, ns::ErrorPtr *error) const;
  bool validateHeaderSpacing(ns::Value *number, ns::ErrorPtr *error) const;
  bool validateFooterSpacing(ns::Value *number, ns::ErrorPtr *error) const;
  bool validateContentTopMargin(ns::Value *number, ns::ErrorPtr *error) const;
  bool validateContentBottomMargin(ns::Value *number, ns::ErrorPtr *error) const;

  /// True exactly when pageUsage() is VLPageUsageMirrored.
  bool shouldMirrorPages() const { return _pageUsage == VLPageUsageMirrored; }
  /// setPageUsage with VLPageUsageMirrored or VLPageUsageSingleSided.
  void setShouldMirrorPages(bool mirror);

  /// Opens a bracket: changes until the matching endEditing post nothing.
  void beginEditing() { ++_editNesting; }
  /// Closes a bracket; closing the outermost posts one notice. Closing a bracket that was
  /// never opened fails an internal check ("start/end mismatch").
  void endEditing();

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

protected:
  /// Posts VLPageLayoutDidChangeNotification unless a bracket is open.
  void _notifyDidChange();

  /// Keys named after the accessors: "pageWidth", "pageHeight", "orientation", the four
  /// margins, "headerStyle", "footerStyle", "pageUsage", "backgroundImage",
  /// "firstPageNumber", "editNesting", "headerSpacing", "footerSpacing",
  /// "contentTopMargin", "contentBottomMargin", "shouldMirrorPages", and, read only,
  /// "maxHeaderSpacing" and "maxFooterSpacing". Writes go through the setters, so they post.
  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

private:
  uint64_t _orientation = 0;
  double _topMargin = 0;
  double _bottomMargin = 0;
  double _leftMargin = 0;
  double _rightMargin = 0;
  VLHeaderFooterStylePtr _headerStyle;
  VLHeaderFooterStylePtr _footerStyle;
  int64_t _pageUsage = 0;
  ns::ImagePtr _backgroundImage;
  uint64_t _firstPageNumber = 0;
  int64_t _editNesting = 0;
  ns::Size _pageSize;
};

} // namespace vl
