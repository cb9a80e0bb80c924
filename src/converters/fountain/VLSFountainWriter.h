// VLSFountainWriter: writes a styled screenplay or novel as Fountain text, emphasis as mark-up
// and scene titles and synopses from the host's metadata model.
#pragma once

#include "converters/fountain/FNElement.h"
#include "converters/writer/VLSAttributedStringWriter.h"
#include "model/VLRDFModel.h"
#include "ns/Array.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl {

class VLSFountainWriter;
using VLSFountainWriterPtr = std::shared_ptr<VLSFountainWriter>;

/// Walks a styled text and turns each paragraph into an FNElement, which FountainWriter then
/// prints (scene numbers suppressed). The element type comes from the paragraph's
/// VLParagraphStyleAttributeName style: a header level makes a section of that depth, else
/// the pagination style or display name (scene heading, action, character, parenthetical,
/// dialogue, shot as scene heading, transition); anything else is action. A style that
/// transforms to capitals writes capitals; U+2028 becomes a line feed inside the element.
///
/// Runs become text with emphasis marks: "*" italic, "**" bold, "***" both, "_" underline.
/// Marks open after a run's leading white space and close before its trailing white space;
/// underline opens outside emphasis and closes after it. A change from one emphasis to
/// another inside an open mark is not written: the first mark stays until plain text. Stars
/// and underscores in the text are not escaped.
///
/// A spanning comment marker writes "[[note]]" where it starts; point comments and
/// bookmarks write nothing. With a model under VLRDFMetadataDocumentAttribute, the synopsis
/// of a heading's outline entry follows the heading, and in a novel (isScreenplay cleared)
/// the title of each scene entry is put back as a scene heading before its first paragraph.
///
/// The title page holds Title and Author from the document attributes, "Type: Novel" for a
/// novel, and the family of the first plain prose style's font when that is not Courier.
///
/// Lost on writing: point comments, bookmarks, attachments, link and field targets, styles
/// outside the table, font sizes and colours, trait changes inside open emphasis, dual
/// dialogue, scene numbers. Costs one pass over the runs, linear in the text.
class VLSFountainWriter : public VLSAttributedStringWriter {
public:
  VL_OBJECT(VLSFountainWriter)

  /// initWithAttributedString: a screenplay writer with no elements yet.
  explicit VLSFountainWriter(ns::AttributedStringPtr attributedString);
  static VLSFountainWriterPtr create(ns::AttributedStringPtr attributedString) {
    return std::make_shared<VLSFountainWriter>(std::move(attributedString));
  }

  // Hooks.

  /// Takes the model from VLRDFMetadataDocumentAttribute.
  void startEncoding() override;
  /// The elements and title page printed as Fountain, in UTF-8. Never nil.
  std::optional<ns::Data> data() override;
  /// One element for the paragraph (see the class comment); answers the paragraph's end.
  uint64_t encodeParagraphInRange(ns::Range range) override;
  /// The run's text with its marks; answers the run's end.
  uint64_t encodeSpanInRange(ns::Range range) override;
  /// "[[note]]" with the marker's represented object, cleaned; nothing without one.
  void encodeCommentStart(const VLSTextMarkerPtr &marker) override;
  /// Nothing: the note was written whole at its start.
  void encodeCommentEnd(const VLSTextMarkerPtr &marker) override;

  // Steps.

  /// `string` on one line: its paragraphs joined by single spaces.
  static std::u16string cleanString(std::u16string_view string);
  /// Appends to the paragraph being written.
  void emitString(std::u16string_view string);
  /// The emphasis mark of the two low trait bits: "*" italic, "**" bold, "***" both, "".
  static std::u16string_view markupForFontTraits(uint64_t traits);
  /// Before a run with `traits` and underlining: closes emphasis when the run has none and
  /// underlining when it is not underlined, then writes the held-back white space.
  void closeMarkupIfNecessaryForEmphasis(uint64_t traits, bool isUnderlined);
  /// Opens underlining, then emphasis, where the run has them and none is open.
  void openMarkupIfNecessaryForEmphasis(uint64_t traits, bool isUnderlined);
  /// Adds the model's title of the scene `identifier` as a scene heading (unless it is the
  /// placeholder "Untitled Section" with no synopsis) and its synopsis; nothing without a
  /// model or a resource.
  void encodeSceneForIdentifier(std::u16string_view identifier, uint64_t location);
  /// Adds the model's synopsis of `identifier`, of whatever length; nothing without one.
  void encodeSummaryForIdentifier(std::u16string_view identifier, uint64_t location);

  // Fields.

  /// The text of the paragraph being walked.
  const std::u16string &paragraphString() const { return paragraphString_; }
  /// Declared for subclasses; the writer itself never fills it. Never null.
  const ns::ArrayPtr &spans() const { return spans_; }
  const FNElementArray &elements() const { return elements_; }
  /// Trailing white space of the last run, held back until the next run decides on marks.
  const std::u16string &bufferedWhitespace() const { return bufferedWhitespace_; }
  const RDFModelPtr &model() const { return model_; }
  void setModel(RDFModelPtr model) { model_ = std::move(model); }
  /// True after construction; a host clears it for a novel.
  bool isScreenplay() const { return isScreenplay_; }
  void setIsScreenplay(bool isScreenplay) { isScreenplay_ = isScreenplay; }
  /// The font family named on the title page; nil until a plain prose style names one.
  const std::optional<std::u16string> &baseFontFamily() const { return baseFontFamily_; }
  void setBaseFontFamily(std::optional<std::u16string> family) {
    baseFontFamily_ = std::move(family);
  }

private:
  /// The resource of the scene `identifier`: "#identifier" against the base URL.
  RDFResourcePtr resourceForIdentifier(std::u16string_view identifier) const;
  void addElement(std::u16string_view type, std::u16string text);

  std::u16string paragraphString_;
  ns::ArrayPtr spans_ = ns::Array::create();
  FNElementArray elements_;
  bool openUnderlinig_ = false;
  uint64_t openEmphasis_ = 0;
  std::u16string bufferedWhitespace_;
  RDFModelPtr model_;
  bool isScreenplay_ = true;
  std::optional<std::u16string> baseFontFamily_;
};

} // namespace vl
