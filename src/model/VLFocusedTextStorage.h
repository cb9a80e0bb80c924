// VLFocusedTextStorage: one range of another text storage shown and edited as if it were a
// whole document.
#pragma once

#include "model/VLXMLStorage.h"
#include "ns/NotificationCenter.h"
#include "ns/Range.h"
#include "ns/TextStorage.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace vl {

class VLFocusedTextStorage;
using VLFocusedTextStoragePtr = std::shared_ptr<VLFocusedTextStorage>;

/// A window on `baseTextStorage`: it holds no characters or attributes of its own, and every
/// read and write goes to the base, shifted by the start of `focusedRange`.
///
/// Edits made here change the document; they are processed by the base and then reported by
/// this storage once, as its own. Edits made to the base from elsewhere move the range and
/// reach this storage's delegate, observers and layout managers as if they had happened
/// here, with editedMask, editedRange and changeInLength answering the edit in focused
/// positions while they are told. For the range to follow edits the host posts
/// VLSTextStorageEditedNotificaton from the base before the base processes each edit (for
/// instance from the base's delegate's edited hook), with "range" (the replaced range, as text
/// in the form ns::StringFromRange gives) and "changeInLength" (an integer) in the user info;
/// nothing in this library posts it.
///
/// An edit that cuts across an edge of the range makes it invalid: every further base edit
/// then posts VLSFocusedTextStorageDidInvalidateNotification, with this storage as object,
/// until the owner sets a range again. While invalid, reads still use the stale range.
///
/// Only the thread that edits the base may use this object.
class VLFocusedTextStorage : public ns::TextStorage {
public:
  VL_OBJECT(VLFocusedTextStorage)

  /// init: no base.
  VLFocusedTextStorage() = default;
  /// initWithTextStorage: setBaseTextStorage(base).
  explicit VLFocusedTextStorage(VLXMLStoragePtr base);
  VLFocusedTextStorage(const VLFocusedTextStorage &) = delete;
  VLFocusedTextStorage &operator=(const VLFocusedTextStorage &) = delete;
  ~VLFocusedTextStorage() override;

  static VLFocusedTextStoragePtr create(VLXMLStoragePtr base = nullptr) {
    return std::make_shared<VLFocusedTextStorage>(std::move(base));
  }

  /// The document shown; null for none.
  const VLXMLStoragePtr &baseTextStorage() const { return _baseTextStorage; }
  /// Stops observing the old base and observes the new one (its two edit notifications, from
  /// it alone). The focused range is left as it is.
  void setBaseTextStorage(VLXMLStoragePtr base);

  /// The range shown, in base positions.
  ns::Range focusedRange() const { return _focusedRange; }
  /// Shows `range` (in base positions, not checked): the range becomes valid, and wordCount
  /// is counted afresh over it. Costs a word count of the range.
  void setFocusedRange(ns::Range range);
  /// The owner's name for what is shown, such as an outline identifier.
  const std::optional<std::u16string> &focusedIdentifier() const { return _focusedIdentifier; }
  void setFocusedIdentifier(std::optional<std::u16string> identifier) {
    _focusedIdentifier = std::move(identifier);
  }
  /// False once a base edit has cut across the range, and before the first range is set.
  bool focusedRangeIsValid() const { return _focusedRangeIsValid; }
  void setFocusedRangeIsValid(bool flag) { _focusedRangeIsValid = flag; }
  /// The running word count of the focused text: counted by setFocusedRange, then moved by
  /// the base's count changes of the edits inside the range.
  uint64_t wordCount() const { return _wordCount; }

  /// A base range in focused positions. Not clipped: a range before the focus wraps to a
  /// huge location, which callers test for first.
  ns::Range rangeForBaseRange(ns::Range range) const;
  /// A focused range in base positions.
  ns::Range baseRangeForRange(ns::Range range) const;

  // Primitives, read from the base. Without a base the text is empty.

  /// The focused range's length.
  uint64_t length() const override;
  /// The focused text, kept until characters change.
  std::u16string_view string() const override;
  using ns::AttributedString::attributesAtIndex;
  /// The base's attributes at the shifted index; the effective range is shifted back, not
  /// clipped to the focus (its location wraps when the run starts before the focus).
  ns::ConstDictionaryPtr attributesAtIndex(uint64_t index,
                                           ns::Range *effectiveRange) const override;
  char16_t characterAtIndex(uint64_t index) const override;
  std::u16string substringWithRange(ns::Range range) const override;
  ns::Range paragraphRangeForRange(ns::Range range) const override;

  // Edits, forwarded to the base with shifted ranges, then reported here. Without a base
  // they do nothing.

  using ns::TextStorage::replaceCharactersInRange;
  void replaceCharactersInRange(ns::Range range, std::u16string_view string) override;
  void setAttributes(ns::ConstDictionaryPtr attributes, ns::Range range) override;
  void addAttribute(std::u16string_view name, ns::Value value, ns::Range range) override;

  /// While a base edit is told to this storage's observers, the edit in focused positions;
  /// otherwise the platform's values.
  uint64_t editedMask() const override;
  ns::Range editedRange() const override;
  int64_t changeInLength() const override;

  /// Handles VLSTextStorageEditedNotificaton from the base: moves the range for an edit
  /// before it, grows or shrinks it for one inside, invalidates it for one across an edge.
  void baseTextStorageEdited(const ns::Notification &notification);
  /// Handles the base's TextStorageDidProcessEditingNotification: keeps the cached text and
  /// the word count, posts the invalidation notice, and tells this storage's delegate,
  /// observers and layout managers of a foreign edit inside the range.
  void baseTextStorageDidProcessEditing(const ns::Notification &notification);

private:
  VLXMLStoragePtr _baseTextStorage;
  ns::Range _focusedRange{0, 0};
  std::optional<std::u16string> _focusedIdentifier;
  bool _focusedRangeIsValid = false;
  mutable std::u16string _cachedString;
  mutable bool _cachedStringIsValid = false;
  uint64_t _wordCount = 0;
  uint64_t _baseWordCount = 0;
  int64_t _internalUpdate = 0;
  bool _isPostingDerivedNotification = false;
  ns::Range _focusedEditedRange{ns::NotFound, 0};
  int64_t _focusedChangeInLength = 0;
  uint64_t _focusedEditedMask = 0;
};

} // namespace vl
