// Line spacing modes: the table from modes to line heights and the ordered tests back.
#include "model/VLParagraphStyleAdditions.h"

namespace vl {

VLLineHeights lineHeightsForLineSpacingMode(int64_t mode, const ns::Value &info) {
  double value = info.doubleValue();
  switch (mode) {
  case VLLineSpacingOneAndAHalf:
    return {1.5, 0, 0};
  case VLLineSpacingDouble:
    return {2.0, 0, 0};
  case VLLineSpacingAtLeast:
    return {0, value, 0};
  case VLLineSpacingExactly:
    return {0, value, value};
  case VLLineSpacingMultiple:
    return {value, 0, 0};
  default:
    return {1.0, 0, 0};
  }
}

int64_t lineSpacingModeForLineHeights(const VLLineHeights &heights, ns::Value *info) {
  auto answer = [info](int64_t mode, ns::Value shown) {
    if (info)
      *info = std::move(shown);
    return mode;
  };
  double multiple = heights.lineHeightMultiple;
  double minimum = heights.minimumLineHeight;
  double maximum = heights.maximumLineHeight;
  // The named multiples win over any heights that may also be set.
  if (multiple == 1.0)
    return answer(VLLineSpacingSingle, {});
  if (multiple == 1.5)
    return answer(VLLineSpacingOneAndAHalf, {});
  if (multiple == 2.0)
    return answer(VLLineSpacingDouble, {});
  if (multiple != 0)
    return answer(VLLineSpacingMultiple, multiple);
  if (minimum == 0 && maximum == 0)
    return answer(VLLineSpacingSingle, {});
  if (minimum > 0 && minimum == maximum)
    return answer(VLLineSpacingExactly, minimum);
  if (minimum >= 0)
    return answer(VLLineSpacingAtLeast, minimum);
  return answer(VLLineSpacingSingle, {});
}

int64_t lineSpacingModeWithInfo(const ns::ParagraphStyle &style, ns::Value *info) {
  return lineSpacingModeForLineHeights(
      {style.lineHeightMultiple(), style.minimumLineHeight(), style.maximumLineHeight()}, info);
}

void setLineSpacingMode(ns::MutableParagraphStyle &style, int64_t mode, const ns::Value &info) {
  VLLineHeights heights = lineHeightsForLineSpacingMode(mode, info);
  style.setLineHeightMultiple(heights.lineHeightMultiple);
  style.setMinimumLineHeight(heights.minimumLineHeight);
  style.setMaximumLineHeight(heights.maximumLineHeight);
}

} // namespace vl
