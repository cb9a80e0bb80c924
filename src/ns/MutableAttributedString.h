// MutableAttributedString: attributed text that can be edited (the platform's
// NSMutableAttributedString), written through two primitives.
#pragma once

#include "ns/AttributedString.h"

namespace vl::ns {

/// Editable attributed text. Writing rests on two virtual primitives,
/// replaceCharactersInRange(range, string) and setAttributes(attributes, range); every other
/// edit is written once on top of them (and of the read primitives), inside
/// beginEditing/endEditing, so a subclass that overrides the primitives sees every edit.
///
/// A range beyond the text fails an internal check (InternalInconsistencyException naming the
/// operation, the range and the length), as the platform raises its range exception; the
/// check comes before any change.
class MutableAttributedString : public AttributedString {
public:
  VL_OBJECT(NSMutableAttributedString)

  MutableAttributedString() = default;
  explicit MutableAttributedString(std::u16string_view string) : AttributedString(string) {}
  MutableAttributedString(std::u16string_view string, ConstDictionaryPtr attributes)
      : AttributedString(string, std::move(attributes)) {}
  /// initWithAttributedString: the text and runs of `other`.
  explicit MutableAttributedString(const AttributedString &other) : AttributedString(other) {}
  MutableAttributedString(const MutableAttributedString &other)
      : MutableAttributedString(static_cast<const AttributedString &>(other)) {}

  static MutableAttributedStringPtr create() { return std::make_shared<MutableAttributedString>(); }
  static MutableAttributedStringPtr create(std::u16string_view string) {
    return std::make_shared<MutableAttributedString>(string);
  }
  static MutableAttributedStringPtr create(std::u16string_view string,
                                           ConstDictionaryPtr attributes) {
    return std::make_shared<MutableAttributedString>(string, std::move(attributes));
  }
  static MutableAttributedStringPtr create(const AttributedString &other) {
    return std::make_shared<MutableAttributedString>(other);
  }

  // Primitives.

  /// Replaces the units of `range` by `string`, which takes the attributes of the first
  /// replaced unit, else of the unit before, else of the unit after (none in empty text).
  /// Costs the length of `string` plus a move of the text gap from the previous edit.
  virtual void replaceCharactersInRange(Range range, std::u16string_view string);
  /// Gives `range` the attributes `attributes` (nil: none). The string keeps an equal frozen
  /// dictionary, shared with every run that holds equal attributes; later changes to the
  /// argument do not reach the string. O(log runs) plus the hash of a new dictionary.
  virtual void setAttributes(ConstDictionaryPtr attributes, Range range);

  // Edits built on the primitives.

  /// Replaces the units of `range` by the text and attributes of `attributedString`.
  virtual void replaceCharactersInRange(Range range, const AttributedString &attributedString);
  /// Sets attribute `name` to `value` (not nil) over `range`, keeping the others.
  virtual void addAttribute(std::u16string_view name, Value value, Range range);
  /// Sets every attribute of `attributes` over `range`, keeping the others.
  virtual void addAttributes(const Dictionary &attributes, Range range);
  /// Removes attribute `name` from `range`.
  virtual void removeAttribute(std::u16string_view name, Range range);
  /// Appends the text and attributes of `attributedString`; amortized O(its length and runs).
  void appendAttributedString(const AttributedString &attributedString);
  void insertAttributedString(const AttributedString &attributedString, uint64_t location);
  void deleteCharactersInRange(Range range);
  /// Replaces the whole text by `attributedString`.
  void setAttributedString(const AttributedString &attributedString);

  /// Opens a batch of edits; batches nest. Does nothing here; a text storage defers its
  /// processing of edits to the outermost endEditing.
  virtual void beginEditing() {}
  virtual void endEditing() {}

  // Attribute fixing.

  /// Runs fixFontAttributeInRange, fixParagraphStyleAttributeInRange and
  /// fixAttachmentAttributeInRange over `range`, in one batch.
  virtual void fixAttributesInRange(Range range);
  /// A hook for font substitution; this layer substitutes nothing.
  virtual void fixFontAttributeInRange(Range range);
  /// Gives every paragraph that `range` touches the ParagraphStyleAttributeName value of its
  /// first character, over the whole paragraph; when the first character has none, the first
  /// value found in the paragraph. Paragraphs without any value are left alone.
  virtual void fixParagraphStyleAttributeInRange(Range range);
  /// Removes AttachmentAttributeName from the units of `range` that are not U+FFFC.
  virtual void fixAttachmentAttributeInRange(Range range);
};

} // namespace vl::ns
