// TextStorage: attributed text that gathers its edits and reports them to a delegate,
// observers and layout managers (the platform's NSTextStorage).
#pragma once

#include "ns/MutableAttributedString.h"
#include "ns/NotificationCenter.h"

#include <vector>

namespace vl::ns {

class TextStorage;
using TextStoragePtr = std::shared_ptr<TextStorage>;

/// Bits of an edit mask, as the platform numbers them.
enum TextStorageEditActions : uint64_t {
  TextStorageEditedAttributes = 1,
  TextStorageEditedCharacters = 2,
};

/// Posted with the storage as object before a batch of edits is fixed.
inline constexpr std::u16string_view TextStorageWillProcessEditingNotification =
    u"NSTextStorageWillProcessEditingNotification";
/// Posted with the storage as object after a batch of edits is fixed.
inline constexpr std::u16string_view TextStorageDidProcessEditingNotification =
    u"NSTextStorageDidProcessEditingNotification";

/// The methods of TextStorageDelegate, for TextStorageDelegate::respondsTo.
enum class TextStorageDelegateMethod {
  WillProcessEditing,
  DidProcessEditing,
  Edited,
  WillReplaceCharacters,
};

/// A text storage's delegate. Every method is optional: the defaults do nothing, so callers
/// may call any of them. A delegate says which ones it implements through respondsTo, for
/// storages whose behaviour depends on it ("if the delegate responds to ...").
class TextStorageDelegate {
public:
  virtual ~TextStorageDelegate() = default;

  /// Whether this delegate implements `method`; false unless a delegate says otherwise.
  virtual bool respondsTo(TextStorageDelegateMethod /*method*/) const { return false; }

  /// Before fixing; edits made here join the batch being processed.
  virtual void textStorageWillProcessEditing(const Notification & /*notification*/) {}
  /// After fixing; the storage's editedMask, editedRange and changeInLength are final.
  virtual void textStorageDidProcessEditing(const Notification & /*notification*/) {}
  /// The storage's edited(editedMask, range, changeInLength), for storages that pass it on.
  virtual void edited(uint64_t /*editedMask*/, Range /*range*/, int64_t /*changeInLength*/) {}
  /// Before `textStorage` replaces the units of `range` by `string`, for storages that ask.
  virtual void textStorage(TextStorage & /*textStorage*/, Range /*willReplaceCharactersInRange*/,
                           std::u16string_view /*withString*/) {}
};

/// Lays out a text storage's text; told of each processed batch of edits.
class LayoutManager {
public:
  virtual ~LayoutManager() = default;
  /// `editedMask`, `range` (in the final text) and `changeInLength` describe the batch;
  /// `invalidatedRange` is the range whose attributes fixing may have changed.
  virtual void textStorage(TextStorage &textStorage, uint64_t editedMask, Range range,
                           int64_t changeInLength, Range invalidatedRange) = 0;
};

/// Attributed text that gathers its edits. Every change through the primitives calls
/// edited(mask, range, changeInLength); edits between beginEditing and the matching outermost
/// endEditing form one batch, and an edit outside a batch is a batch of its own. Processing a
/// batch (processEditing):
///
///  1. the delegate's textStorageWillProcessEditing and TextStorageWillProcessEditingNotification;
///  2. fixAttributesInRange over the edited range grown to whole paragraphs, when characters
///     or attributes were edited (edits made while processing join the batch);
///  3. the delegate's textStorageDidProcessEditing and TextStorageDidProcessEditingNotification;
///  4. each layout manager's textStorage(storage, mask, range, change, invalidatedRange);
///  5. editedMask, editedRange and changeInLength go back to 0, {NotFound, 0} and 0.
///
/// A subclass that keeps its text elsewhere overrides the primitives and calls edited itself.
/// The delegate and layout managers are not owned; they must outlive their registration.
class TextStorage : public MutableAttributedString {
public:
  VL_OBJECT(NSTextStorage)

  TextStorage() = default;
  explicit TextStorage(std::u16string_view string) : MutableAttributedString(string) {}
  TextStorage(std::u16string_view string, ConstDictionaryPtr attributes)
      : MutableAttributedString(string, std::move(attributes)) {}
  /// The text and runs of `other`, with no delegate and no layout managers.
  explicit TextStorage(const AttributedString &other) : MutableAttributedString(other) {}
  TextStorage(const TextStorage &other)
      : TextStorage(static_cast<const AttributedString &>(other)) {}
  ~TextStorage() override;

  static TextStoragePtr create() { return std::make_shared<TextStorage>(); }
  static TextStoragePtr create(std::u16string_view string) {
    return std::make_shared<TextStorage>(string);
  }
  static TextStoragePtr create(std::u16string_view string, ConstDictionaryPtr attributes) {
    return std::make_shared<TextStorage>(string, std::move(attributes));
  }
  static TextStoragePtr create(const AttributedString &other) {
    return std::make_shared<TextStorage>(other);
  }

  using MutableAttributedString::replaceCharactersInRange;
  /// Replaces the characters, then edited(TextStorageEditedCharacters, range, change).
  void replaceCharactersInRange(Range range, std::u16string_view string) override;
  /// Sets the attributes, then edited(TextStorageEditedAttributes, range, 0).
  void setAttributes(ConstDictionaryPtr attributes, Range range) override;

  void beginEditing() override;
  /// Closes a batch; the outermost one processes the edits it gathered. Fails a check when no
  /// batch is open.
  void endEditing() override;

  /// Records an edit: `range` is where the change happened before it (the units replaced),
  /// `changeInLength` what it added. The mask accumulates, the edited range becomes the union
  /// with the earlier edited range, moved for the change in length, and the changes add up.
  /// Processes the edit at once outside a batch (and outside processing).
  virtual void edited(uint64_t editedMask, Range range, int64_t changeInLength);
  /// The edits gathered since the last processing; 0 when none.
  virtual uint64_t editedMask() const { return editedMask_; }
  /// Where the gathered edits lie in the current text; {NotFound, 0} when there are none.
  virtual Range editedRange() const { return editedRange_; }
  virtual int64_t changeInLength() const { return changeInLength_; }
  /// Processes the gathered edits as the class comment says.
  virtual void processEditing();

  TextStorageDelegate *delegate() const { return delegate_; }
  /// Sets the delegate (not owned; null for none).
  void setDelegate(TextStorageDelegate *delegate) { delegate_ = delegate; }
  const std::vector<LayoutManager *> &layoutManagers() const { return layoutManagers_; }
  /// Adds a layout manager (not owned) unless it is there already.
  void addLayoutManager(LayoutManager *layoutManager);
  void removeLayoutManager(LayoutManager *layoutManager);

private:
  uint64_t editedMask_ = 0;
  Range editedRange_{NotFound, 0};
  int64_t changeInLength_ = 0;
  int64_t editingNesting_ = 0;
  bool processing_ = false;
  TextStorageDelegate *delegate_ = nullptr;
  std::vector<LayoutManager *> layoutManagers_;
};

} // namespace vl::ns
