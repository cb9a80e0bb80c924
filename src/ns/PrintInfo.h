// PrintInfo: paper size, orientation and margins of printing (the platform's NSPrintInfo).
#pragma once

#include "ns/Geometry.h"
#include "ns/Object.h"

#include <cstdint>
#include <memory>

namespace vl::ns {

class PrintInfo;
using PrintInfoPtr = std::shared_ptr<PrintInfo>;

/// Values of PrintInfo::orientation, as the platform numbers them.
enum PaperOrientation : uint64_t { PortraitOrientation = 0, LandscapeOrientation = 1 };

/// A plain record of page values in points. The shared instance is changed in place by its
/// users (a reader sets its margins), so a change is seen by everyone who asks for it later.
/// The setters store what they are given: orientation and paper size are independent.
class PrintInfo : public Object {
public:
  PrintInfo() = default;

  /// The process-wide print information, made with the defaults on first use.
  static const PrintInfoPtr &sharedPrintInfo();
  /// Replaces the shared instance; null restores a fresh default one.
  static void setSharedPrintInfo(PrintInfoPtr printInfo);
  /// A fresh default shared instance. For tests.
  static void resetSharedPrintInfo() { setSharedPrintInfo(nullptr); }

  const char *className() const override { return "NSPrintInfo"; }

  /// US Letter, 612 x 792, by default.
  Size paperSize() const { return paperSize_; }
  void setPaperSize(Size size) { paperSize_ = size; }
  /// PortraitOrientation by default.
  PaperOrientation orientation() const { return orientation_; }
  void setOrientation(PaperOrientation orientation) { orientation_ = orientation; }
  /// 72 points (one inch) each by default.
  double leftMargin() const { return leftMargin_; }
  void setLeftMargin(double margin) { leftMargin_ = margin; }
  double rightMargin() const { return rightMargin_; }
  void setRightMargin(double margin) { rightMargin_ = margin; }
  double topMargin() const { return topMargin_; }
  void setTopMargin(double margin) { topMargin_ = margin; }
  double bottomMargin() const { return bottomMargin_; }
  void setBottomMargin(double margin) { bottomMargin_ = margin; }
  /// Whether the page image is centred on the paper; true by default.
  bool isHorizontallyCentered() const { return horizontallyCentered_; }
  void setHorizontallyCentered(bool centered) { horizontallyCentered_ = centered; }
  bool isVerticallyCentered() const { return verticallyCentered_; }
  void setVerticallyCentered(bool centered) { verticallyCentered_ = centered; }

  /// An independent copy with the same values.
  ObjectPtr copy() const override { return std::make_shared<PrintInfo>(*this); }
  /// Equal when every value is.
  bool isEqual(const Object &other) const override;
  size_t hash() const override { return static_cast<size_t>(paperSize_.width) ^ orientation_; }

private:
  Size paperSize_{612, 792};
  PaperOrientation orientation_ = PortraitOrientation;
  double leftMargin_ = 72;
  double rightMargin_ = 72;
  double topMargin_ = 72;
  double bottomMargin_ = 72;
  bool horizontallyCentered_ = true;
  bool verticallyCentered_ = true;
};

} // namespace vl::ns
