// VLXMLStorage: a text storage over a plain attributed string that keeps a running word count
// through every edit.
#pragma once

#include "ns/Dictionary.h"
#include "ns/MutableAttributedString.h"
#include "ns/Range.h"
#include "ns/TextStorage.h"
#include "ns/Value.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace vl {

class VLXMLStorage;
using VLXMLStoragePtr = std::shared_ptr<VLXMLStorage>;

/// A text storage whose characters and attributes live in `contents`, a plain mutable
/// attributed string, and which counts its words as it is edited.
///
/// The count is kept by each character edit alone: it subtracts the words around the edit
/// before the change and adds those around it after, so typing costs work in proportion to
/// the word it touches, never to the text. No initialiser counts: `wordCount` starts at 0
/// whatever the text, and an owner that wants a total sets it with setWordCount (for instance
/// to wordsInRange over the whole text). The count is unsigned and wraps: an edit that removes
/// words from a storage whose count was never set goes below zero.
///
/// Every read forwards to `contents`, so reads cost what they cost there.
class VLXMLStorage : public ns::TextStorage {
public:
  VL_OBJECT(VLXMLStorage)

  /// init: empty contents.
  VLXMLStorage();
  /// initWithString:attributes: the string with `attributes` over it when both are given;
  /// with either missing the contents are empty (a string without attributes is dropped).
  VLXMLStorage(std::optional<std::u16string_view> string, ns::ConstDictionaryPtr attributes);
  /// initWithAttributedString: a mutable copy of `other`; nil gives empty contents.
  explicit VLXMLStorage(const ns::AttributedString *other);
  VLXMLStorage(const VLXMLStorage &) = delete;
  VLXMLStorage &operator=(const VLXMLStorage &) = delete;
  ~VLXMLStorage() override;

  static VLXMLStoragePtr create() { return std::make_shared<VLXMLStorage>(); }
  static VLXMLStoragePtr create(std::optional<std::u16string_view> string,
                                ns::ConstDictionaryPtr attributes) {
    return std::make_shared<VLXMLStorage>(string, std::move(attributes));
  }
  static VLXMLStoragePtr create(const ns::AttributedStringPtr &other) {
    return std::make_shared<VLXMLStorage>(other.get());
  }

  // Plain accessors.

  /// When true, every replaceCharactersInRange and setAttributes is written to the log
  /// (ns::log, at debug level). Off by default.
  bool log() const { return _log; }
  void setLog(bool flag) { _log = flag; }
  uint64_t wordCount() const { return _wordCount; }
  void setWordCount(uint64_t count) { _wordCount = count; }
  /// The text itself; never null.
  const ns::MutableAttributedStringPtr &contents() const { return _contents; }
  /// Replaces the text without counting words and without an edit notice; nil gives empty
  /// contents.
  void setContents(ns::MutableAttributedStringPtr contents);

  // Primitives, forwarded to `contents`.

  uint64_t length() const override;
  std::u16string_view string() const override;
  using ns::AttributedString::attributesAtIndex;
  ns::ConstDictionaryPtr attributesAtIndex(uint64_t index,
                                           ns::Range *effectiveRange) const override;
  char16_t characterAtIndex(uint64_t index) const override;
  std::u16string substringWithRange(ns::Range range) const override;
  ns::Range paragraphRangeForRange(ns::Range range) const override;

  using ns::TextStorage::replaceCharactersInRange;
  /// Replaces the characters and updates the count: the delegate's
  /// textStorage(willReplaceCharactersInRange:withString:) if it responds to it; the words of
  /// wordRangeForCharRange(range) subtracted; the change; the words of that word range, grown
  /// by the change in length, added; then edited(characters, range, change). Costs the
  /// paragraph around the edit plus the change.
  void replaceCharactersInRange(ns::Range range, std::u16string_view string) override;
  /// Forwards, then edited(attributes, range, 0).
  void setAttributes(ns::ConstDictionaryPtr attributes, ns::Range range) override;
  /// Forwards to `contents` in one step, then edited(attributes, range, 0).
  void addAttribute(std::u16string_view name, ns::Value value, ns::Range range) override;
  /// The delegate's edited, if it responds to it, then the platform's.
  void edited(uint64_t editedMask, ns::Range range, int64_t changeInLength) override;

  /// Decodes into `contents`.
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

private:
  bool _log = false;
  uint64_t _wordCount = 0;
  ns::MutableAttributedStringPtr _contents;
};

} // namespace vl
