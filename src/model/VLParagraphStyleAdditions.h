// Line spacing modes of paragraph styles: the named modes (single, double, exactly...) over
// the three line height values, read from and written to platform paragraph styles.
#pragma once

#include "ns/ParagraphStyle.h"
#include "ns/Value.h"

#include <cstdint>

namespace vl {

/// Line spacing modes of lineSpacingModeWithInfo and setLineSpacingMode.
enum VLLineSpacingMode : int64_t {
  VLLineSpacingSingle = 0,
  VLLineSpacingOneAndAHalf = 1,
  VLLineSpacingDouble = 2,
  VLLineSpacingAtLeast = 3,
  VLLineSpacingExactly = 4,
  VLLineSpacingMultiple = 5,
};

/// The three values a line spacing mode sets.
struct VLLineHeights {
  double lineHeightMultiple = 0;
  double minimumLineHeight = 0;
  double maximumLineHeight = 0;
};

/// The values of `mode`: single 1.0, one and a half 1.5, double 2.0 as multiples; at least
/// (minimum), exactly (minimum and maximum) and multiple take `info` (nil counts as 0).
/// Any mode above 5 (or below 0) is single.
VLLineHeights lineHeightsForLineSpacingMode(int64_t mode, const ns::Value &info);

/// The mode the values show, tested in order: a multiple of 1.0, 1.5 or 2.0 whatever the
/// heights; any other non-zero multiple (mode 5); no heights (single); minimum above 0 and
/// equal to the maximum (exactly); minimum not negative (at least, so a minimum of 0 with a
/// maximum above it reads as at least 0); else single. `info`, when given, receives the
/// multiple or the minimum that the mode shows, or nil.
int64_t lineSpacingModeForLineHeights(const VLLineHeights &heights, ns::Value *info);

/// The mode of a paragraph style's own values.
int64_t lineSpacingModeWithInfo(const ns::ParagraphStyle &style, ns::Value *info = nullptr);
/// Sets the three values of `mode` in `style`.
void setLineSpacingMode(ns::MutableParagraphStyle &style, int64_t mode, const ns::Value &info);

} // namespace vl
