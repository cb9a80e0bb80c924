// Style operations on editable text (applying, exchanging, finding and checking paragraph
// styles), the style's text transform, and the spans around a range.
#pragma once

#include "model/VLStyle.h"
#include "ns/AttributedString.h"
#include "ns/MutableAttributedString.h"
#include "ns/Object.h"
#include "ns/Range.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace vl {

/// Bits of the traits mask of applyStyle: the local formatting to keep.
enum VLPreservedTraits : uint64_t {
  VLPreserveBoldTrait = 1,
  VLPreserveItalicTrait = 2,
  VLPreserveUnderlineTrait = 4,
};

// Applying and exchanging styles. Each runs as one batch of edits (beginEditing/endEditing),
// so a text storage processes and fixes the result once.

/// Lays `style` over `range`, run by run: each run's attributes (the user font of size 12 and
/// the default paragraph style when it has none) get style->applyToAttributes and are set
/// back. Properties the style's chain does not define keep the run's values. Costs one
/// applyToAttributes per run.
void applyStyle(ns::MutableAttributedString &string, const VLStyle &style, ns::Range range);
/// The same, keeping the local traits that `preservingTraits` names (VLPreservedTraits): a
/// run's bold or italic font, or its underline, survives when neither its old paragraph
/// style nor `style` has that trait, so what is kept is formatting the run had of its own.
/// Colour, size and family are not kept.
void applyStyle(ns::MutableAttributedString &string, const VLStyle &style,
                uint64_t preservingTraits, ns::Range range);
/// Gives every run of VLParagraphStyleAttributeName that holds `style` itself, from `range`'s
/// location to its end, `newStyle` plus the local differences of the run's first character
/// from `style`. The attributes go over the whole run, unclipped, so character formatting
/// inside a run takes the first character's. Costs one diff per run of the old style.
void convertTextWithStyle(ns::MutableAttributedString &string, const VLStylePtr &style,
                          const VLStylePtr &newStyle, ns::Range range);
/// The same over the whole text.
void convertTextWithStyle(ns::MutableAttributedString &string, const VLStylePtr &style,
                          const VLStylePtr &newStyle);
/// Whether the attributes at `location` differ from the resolved values of their paragraph
/// style in any paragraph or text property: true at the end of the text (empty text
/// included), false where there is no paragraph style.
bool attributesDifferFromStyleDefinitionAtLocation(const ns::AttributedString &string,
                                                   uint64_t location);

// Finding styles and entries.

/// Whether some run holds `style` itself as its paragraph style.
bool usesStyle(const ns::AttributedString &string, const VLStylePtr &style);
/// The longest runs whose paragraph style is `style` itself, in order.
std::vector<ns::Range> rangesOfStyle(const ns::AttributedString &string, const VLStylePtr &style);
/// The distinct paragraph styles of the text, by identity, in order of first appearance.
std::vector<VLStylePtr> stylesInUse(const ns::AttributedString &string);
/// The first longest run of VLOutlineElementAttributeName whose entry has `identifier`;
/// {NotFound, 0} when there is none.
ns::Range rangeOfIdentifier(const ns::AttributedString &string, std::u16string_view identifier);

/// Replaces the text of every run whose paragraph style has a text transform by its lower
/// case (1), upper case (2) or capitalized (3) form, keeping the run's attributes; runs
/// already in that form are not edited. The length may change. One batch of edits.
void applyStyleTransformToText(ns::MutableAttributedString &string);

// Spans near a range.

/// The objects of attribute `name` at and around `range`, each told its longest run through
/// VLRangeHolder::setRange: first the one whose run ends exactly at the location, then one
/// per run from the location on while the runs start before the range's end (so an empty
/// range still looks at the character at its location). Costs the runs visited.
std::vector<ns::ObjectPtr> textSpansForAttribute(const ns::AttributedString &string,
                                                 std::u16string_view name, ns::Range range);
/// The same for VLTextSpanAttributeName.
std::vector<ns::ObjectPtr> textSpansInOrAdjacentToRange(const ns::AttributedString &string,
                                                        ns::Range range);

} // namespace vl
