// VLSAttributedStringWriter: the walk from start to end of an attributed text that every text
// writer (Fountain, FDX, HTML) shares, with one overridable hook per kind of thing it meets.
#pragma once

#include "model/VLMasterPage.h"
#include "model/VLStylesheet.h"
#include "ns/AttributedString.h"
#include "ns/Data.h"
#include "ns/Dictionary.h"
#include "ns/Error.h"
#include "ns/Object.h"
#include "ns/Range.h"
#include "ns/URL.h"
#include "objects/VLSTextMarker.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace vl {

class VLSAttributedStringWriter;
using VLSAttributedStringWriterPtr = std::shared_ptr<VLSAttributedStringWriter>;

/// The template of the text writers. It owns the walk over the text: blocks (lists and
/// paragraphs), inlines (attachments, links, fields, spans) and the comment and bookmark
/// markers that open and close as the walk passes them. A subclass produces output by
/// overriding hooks; this class writes nothing and its data() is nil.
///
/// Two conventions hold at every level of the walk:
/// - an encode hook takes a character range and answers the position at which the walk goes
///   on, which must lie past the range's start (a hook that makes no progress fails an
///   internal check rather than hang the walk);
/// - a hook that does not recognise what stands at the start of its range answers
///   ns::NotFound ("not mine"), and its caller offers the same range to the next hook.
///
/// The hooks, in the order the walk knows them: data, startEncoding, endEncoding,
/// encodeBodyInRange, encodeBlocksInRange, encodeListInRange, encodeParagraphInRange,
/// encodeInlinesInRange, encodeAttachmentsInRange, encodeLinkInRange, encodeFieldsInRange,
/// encodeSpanInRange, encodeTextMarkersAtLocation, then the marker hooks (bookmark start and
/// end, comment, comment start and end).
///
/// A writer is made for one text and one call of dataFromRange; what a subclass gathers is
/// not reset. The walk writes the ranges of the markers it meets into the markers themselves,
/// to keep them in step with their runs, so two writers must not walk one text at once.
class VLSAttributedStringWriter : public ns::Object {
public:
  VL_OBJECT(VLSAttributedStringWriter)

  /// initWithAttributedString: keeps the text (not copied; a nil text is walked as empty)
  /// with an empty stack of nested strings.
  explicit VLSAttributedStringWriter(ns::AttributedStringPtr attributedString);
  ~VLSAttributedStringWriter() override;
  static VLSAttributedStringWriterPtr create(ns::AttributedStringPtr attributedString) {
    return std::make_shared<VLSAttributedStringWriter>(std::move(attributedString));
  }

  // Entry points.

  /// dataFromRange with nil options: the base URL then comes from the document attributes,
  /// and only if they have one.
  std::optional<ns::Data> dataFromRange(ns::Range range,
                                        const ns::ConstDictionaryPtr &documentAttributes,
                                        ns::ErrorPtr *error);
  /// Writes `range` of the text (clipped to it) and answers data(). In order: keeps the
  /// document attributes and takes their VLReferencesDocumentAttribute as the references;
  /// sets the base URL (below); startEncoding, encodeBodyInRange, endEncoding; data().
  ///
  /// The base URL rule is deliberately lopsided. With options (even empty ones) the base URL
  /// is their ns::BaseURLDocumentOption, so options without the key clear it. With nil
  /// options the same key is looked for in the document attributes and replaces the base URL
  /// only when it is there. The value is an ns::URL or a string holding one.
  ///
  /// The frame never fills `error`; a subclass that reports failure does so in an override
  /// of this entry. Costs one pass over the runs of the range, plus what the hooks cost.
  virtual std::optional<ns::Data> dataFromRange(ns::Range range,
                                                const ns::ConstDictionaryPtr &options,
                                                const ns::ConstDictionaryPtr &documentAttributes,
                                                ns::ErrorPtr *error);

  // Derived values.

  /// VLStylesheetDocumentAttribute of the document attributes; nil without one.
  VLStylesheetPtr stylesheet() const;
  /// The master page under "Standard" in VLMasterPagesKey of the document attributes,
  /// whatever its name; nil without one.
  VLMasterPagePtr masterPage() const;
  /// The string the walk reads at the present nesting level.
  const ns::AttributedStringPtr &currentString() const { return attributedString_; }
  /// Sets the current string aside on the stack and walks `string` instead (an annotation's
  /// text, a header). Every push needs its popAttributedString. Markers are not tracked in a
  /// pushed string: its positions say nothing about the document's.
  void pushAttributedString(ns::AttributedStringPtr string);
  /// Makes the string on top of the stack current again, and answers the one that was. An
  /// unbalanced pop fails an internal check.
  ns::AttributedStringPtr popAttributedString();

  // Fields.

  const ns::AttributedStringPtr &attributedString() const { return attributedString_; }
  const ns::ConstDictionaryPtr &documentAttributes() const { return documentAttributes_; }
  const ns::URLPtr &baseURL() const { return baseURL_; }
  void setBaseURL(ns::URLPtr url) { baseURL_ = std::move(url); }
  /// The document's markers by identifier; nil when the document attributes have none.
  const ns::DictionaryPtr &references() const { return references_; }
  const std::vector<ns::AttributedStringPtr> &attributedStringStack() const {
    return attributedStringStack_;
  }
  /// The marker that is open (spanning, or a point marker waiting for the walk to pass its
  /// character); nil most of the time, and always after encodeBodyInRange.
  const VLSTextMarkerPtr &currentMarker() const { return currentMarker_; }

  // Hooks.

  /// The output; nil here.
  virtual std::optional<ns::Data> data();
  /// Before the walk; does nothing here.
  virtual void startEncoding();
  /// After the walk; does nothing here.
  virtual void endEncoding();
  /// Walks the blocks of `range`, then closes a marker the text left open (its end hook is
  /// called as if the walk had passed it) and clears currentMarker.
  virtual void encodeBodyInRange(ns::Range range);
  /// From the range's start to its end: offers the rest of the range to encodeListInRange,
  /// and when that answers NotFound to encodeParagraphInRange, and goes on from the answer.
  /// Answers the last position reached (the start for an empty range).
  virtual uint64_t encodeBlocksInRange(ns::Range range);
  /// A list starting at the range's start; NotFound here.
  virtual uint64_t encodeListInRange(ns::Range range);
  /// The paragraph holding the range's start, from that start (not from the paragraph's) to
  /// the paragraph's end, whatever the range's length: encodeInlinesInRange up to the
  /// contents end, then encodeTextMarkersAtLocation at the contents end, so that a marker
  /// ending on the last character closes and one on the terminator is seen. Answers the end
  /// of the paragraph, terminator included.
  virtual uint64_t encodeParagraphInRange(ns::Range range);
  /// From the range's start to its end: encodeTextMarkersAtLocation at the position, then
  /// the first of encodeAttachmentsInRange, encodeLinkInRange, encodeFieldsInRange that does
  /// not answer NotFound, else encodeSpanInRange, and on from the answer. Answers the last
  /// position reached.
  virtual uint64_t encodeInlinesInRange(ns::Range range);
  /// Passes over an attachment character at the range's start (answers that position + 1,
  /// writing nothing); NotFound when there is none.
  virtual uint64_t encodeAttachmentsInRange(ns::Range range);
  /// A link starting at the range's start; NotFound here.
  virtual uint64_t encodeLinkInRange(ns::Range range);
  /// A field starting at the range's start; NotFound here.
  virtual uint64_t encodeFieldsInRange(ns::Range range);
  /// One run of uniform attributes at the range's start, cut to the range; answers its end.
  /// Writes nothing here: subclasses write the run's text.
  virtual uint64_t encodeSpanInRange(ns::Range range);
  /// Opens and closes comment and bookmark markers at `location`. Answers NotFound inside a
  /// pushed string (markers belong to the top-level text), else `location`.
  ///
  /// First the open marker closes if its range ends at or before `location`: a bookmark with
  /// encodeBookmarkEnd; a comment with encodeComment when it is a point marker after its
  /// character, else encodeCommentEnd. Then the marker at `location`, unless it is the open
  /// one: a point marker before its character calls encodeBookmarkStart and
  /// encodeBookmarkEnd, or encodeComment, at once; a point marker after its character
  /// becomes the open marker, its range set to its run, and is written when the walk has
  /// passed it; a spanning marker becomes the open marker, its range set to the longest run
  /// from `location` on, and calls encodeBookmarkStart or encodeCommentStart. Markers of
  /// other types call no hook. Only one marker is tracked: a new one replaces the open one
  /// without an end hook for it.
  virtual uint64_t encodeTextMarkersAtLocation(uint64_t location);
  virtual void encodeBookmarkStart(const VLSTextMarkerPtr &marker);
  virtual void encodeBookmarkEnd(const VLSTextMarkerPtr &marker);
  /// A point comment.
  virtual void encodeComment(const VLSTextMarkerPtr &marker);
  virtual void encodeCommentStart(const VLSTextMarkerPtr &marker);
  virtual void encodeCommentEnd(const VLSTextMarkerPtr &marker);

private:
  /// Calls the end hook of currentMarker for its type and clears it.
  void closeCurrentMarker();

  ns::AttributedStringPtr attributedString_;
  ns::ConstDictionaryPtr documentAttributes_;
  ns::URLPtr baseURL_;
  ns::DictionaryPtr references_;
  std::vector<ns::AttributedStringPtr> attributedStringStack_;
  VLSTextMarkerPtr currentMarker_;
};

} // namespace vl
