// List additions to the platform's text list and mutable paragraph style: whether a list is
// numbered, and the indent and tab layout of a paragraph's lists.
#pragma once

#include "ns/ParagraphStyle.h"
#include "ns/TextList.h"

#include <vector>

namespace vl {

/// The depth of one list level in points.
inline constexpr double VLListLevelIndent = 36.0;
/// Where a level's marker stands, in points from the start of the level.
inline constexpr double VLListMarkerOffset = 11.0;

/// isOrderedList of the platform's text list: the keyword between the first "{" and the
/// first "}" after it, trimmed of white space, is a number keyword (decimal, roman, alpha,
/// latin, octal, hexadecimal). No braces: not ordered.
bool isOrderedList(const ns::TextList &list);

/// applyLists: of the platform's mutable paragraph style: lays out `lists` (null for none)
/// and undoes the layout of the lists the style had. With F the first line indent:
/// - the old indent is (count of the style's lists) * 36 + F, or 0 without lists;
/// - the new indent is (count of `lists`) * 36 + F, or 0 for null (not F);
/// - tab stops up to the larger of the two indents go, those beyond stay;
/// - left tabs are added at (count - 1) * 36 + F + 11 for the marker and at the new indent
///   (none for an empty array);
/// - when the indent shrinks, the default paragraph style's left tabs strictly between the
///   new and the old indent come back;
/// - then the head indent and the lists are set.
void applyLists(ns::MutableParagraphStyle &style, const std::vector<ns::TextListPtr> *lists);

} // namespace vl
