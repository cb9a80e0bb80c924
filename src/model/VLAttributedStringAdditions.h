// Word, outline, style and marker queries that every attributed string of a document answers.
#pragma once

#include "model/VLOutline.h"
#include "model/VLStyle.h"
#include "ns/AttributedString.h"
#include "ns/Object.h"
#include "ns/Range.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vl {

// Words. A word is what the word enumeration of ns::enumerateSubstringsInRange yields (ICU's
// word breaks); blanks and punctuation between words count for nothing. Each query reads
// only the stretch of text it concerns, never the whole text.

/// `range` widened to word bounds: from the start of the word before (or holding) its
/// location to the end of the word at or after its end (the end itself when there is none).
/// Empty text answers `range` unchanged. Costs the paragraphs around both ends.
ns::Range wordRangeForCharRange(const ns::AttributedString &string, ns::Range range);
/// The number of words in `range`, clipped to the text; costs the range.
uint64_t wordsInRange(const ns::AttributedString &string, ns::Range range);
/// The last word of `range` (found within the range alone, not localized), and its range in
/// `wordRange` if that is not null; nullopt and {NotFound, 0} when the range holds no word.
/// A range beyond the text fails a check.
std::optional<std::u16string> lastWordInRange(const ns::AttributedString &string, ns::Range range,
                                              ns::Range *wordRange);
/// The range of the first word at or after `location`; {NotFound, 0} when none follows.
/// Costs the distance to that word's end.
ns::Range nextWordForwardFromLocation(const ns::AttributedString &string, uint64_t location);
/// The range of the last word before `location` (a word cut by it ends there);
/// {NotFound, 0} when there is none. Costs the distance back to that word's start.
ns::Range nextWordBackwardFromLocation(const ns::AttributedString &string, uint64_t location);

// Outline entries, styles and markers.

/// The entries of VLOutlineElementAttributeName over the longest runs inside `range`, in
/// order; each gets setRange with its run (clipped to `range`), and an entry is listed once
/// per separate run. A range beyond the text fails a check.
std::vector<VLOutlinePtr> outlineEntriesInRange(const ns::AttributedString &string,
                                                ns::Range range);
/// The distinct paragraph styles (VLParagraphStyleAttributeName) in `range`, by identity, in
/// order of first appearance; empty for a location of NotFound or at or past the end.
std::vector<VLStylePtr> stylesInRange(const ns::AttributedString &string, ns::Range range);
/// The longest first run of VLSTextMarkerAttributeName holding this very marker;
/// {NotFound, 0} when there is none or `marker` is nil. Costs a walk of the marker runs.
ns::Range rangeOfMarker(const ns::AttributedString &string, const ns::ObjectPtr &marker);

} // namespace vl
