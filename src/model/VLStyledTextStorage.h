// VLStyledTextStorage: a word-counting text storage in which every paragraph carries exactly
// one paragraph style from its first character to its last.
#pragma once

#include "model/VLXMLStorage.h"

#include <memory>

namespace vl {

class VLStyledTextStorage;
using VLStyledTextStoragePtr = std::shared_ptr<VLStyledTextStorage>;

/// A VLXMLStorage that repairs VLParagraphStyleAttributeName whenever it fixes attributes
/// (after each processed batch of edits, over the paragraphs edited): a paragraph takes the
/// style of its first character; a paragraph that starts without one takes the style found
/// one unit past its first unstyled stretch, or a fresh default style of its own (a new
/// object per paragraph, in no stylesheet) when there is none.
class VLStyledTextStorage : public VLXMLStorage {
public:
  VL_OBJECT(VLStyledTextStorage)

  VLStyledTextStorage() = default;
  /// initWithString:attributes: as VLXMLStorage.
  VLStyledTextStorage(std::optional<std::u16string_view> string, ns::ConstDictionaryPtr attributes)
      : VLXMLStorage(string, std::move(attributes)) {}
  /// initWithAttributedString: as VLXMLStorage.
  explicit VLStyledTextStorage(const ns::AttributedString *other) : VLXMLStorage(other) {}

  static VLStyledTextStoragePtr create() { return std::make_shared<VLStyledTextStorage>(); }
  static VLStyledTextStoragePtr create(std::optional<std::u16string_view> string,
                                       ns::ConstDictionaryPtr attributes) {
    return std::make_shared<VLStyledTextStorage>(string, std::move(attributes));
  }
  static VLStyledTextStoragePtr create(const ns::AttributedStringPtr &other) {
    return std::make_shared<VLStyledTextStorage>(other.get());
  }

  /// For the host: when true, the repair stops after the platform's own paragraph style
  /// fixing. Nothing in this library sets it.
  bool suppressParagraphStyleFixing() const { return _suppressParagraphStyleFixing; }
  void setSuppressParagraphStyleFixing(bool flag) { _suppressParagraphStyleFixing = flag; }
  /// For the host, which sets it while it changes the fonts in use. Nothing here reads it.
  bool isInFontSetChanged() const { return _isInFontSetChanged; }
  void setIsInFontSetChanged(bool flag) { _isInFontSetChanged = flag; }

  /// The platform's fixing, then the repair of VLParagraphStyleAttributeName in every
  /// paragraph that `range` touches (see the class comment). A range past the end fails a
  /// check ("Range out of bounds in fixParagraphStyleAttributeInRange:"). Costs the runs of
  /// those paragraphs.
  void fixParagraphStyleAttributeInRange(ns::Range range) override;

private:
  bool _suppressParagraphStyleFixing = false;
  bool _isInFontSetChanged = false;
};

} // namespace vl
