// VLFocusedTextStorage: reads and writes shifted onto the base, and the base's edits followed
// and retold in focused positions.
#include "model/VLFocusedTextStorage.h"

#include "model/VLAttributedStringAdditions.h"
#include "model/VLConstants.h"
#include "ns/Dictionary.h"
#include "ns/Value.h"

#include <vector>

namespace vl {

namespace {

// Marks the edits that come through this object, so that their echo from the base is not
// told twice.
class InternalUpdate {
public:
  explicit InternalUpdate(int64_t &depth) : depth_(depth) { ++depth_; }
  ~InternalUpdate() { --depth_; }
  InternalUpdate(const InternalUpdate &) = delete;
  InternalUpdate &operator=(const InternalUpdate &) = delete;

private:
  int64_t &depth_;
};

// Shows the focused edit values to observers for as long as it lives.
class DerivedNotification {
public:
  explicit DerivedNotification(bool &posting) : posting_(posting) { posting_ = true; }
  ~DerivedNotification() { posting_ = false; }
  DerivedNotification(const DerivedNotification &) = delete;
  DerivedNotification &operator=(const DerivedNotification &) = delete;

private:
  bool &posting_;
};

} // namespace

VLFocusedTextStorage::VLFocusedTextStorage(VLXMLStoragePtr base) {
  setBaseTextStorage(std::move(base));
}

VLFocusedTextStorage::~VLFocusedTextStorage() {
  setBaseTextStorage(nullptr);
  setFocusedIdentifier(std::nullopt);
}

void VLFocusedTextStorage::setBaseTextStorage(VLXMLStoragePtr base) {
  ns::NotificationCenter &center = ns::NotificationCenter::defaultCenter();
  if (_baseTextStorage) {
    center.removeObserver(this, ns::TextStorageDidProcessEditingNotification,
                          _baseTextStorage.get());
    center.removeObserver(this, VLSTextStorageEditedNotificaton, _baseTextStorage.get());
  }
  _baseTextStorage = std::move(base);
  _cachedStringIsValid = false;
  if (_baseTextStorage) {
    center.addObserver(
        this, [this](const ns::Notification &note) { baseTextStorageDidProcessEditing(note); },
        ns::TextStorageDidProcessEditingNotification, _baseTextStorage.get());
    center.addObserver(
        this, [this](const ns::Notification &note) { baseTextStorageEdited(note); },
        VLSTextStorageEditedNotificaton, _baseTextStorage.get());
  }
}

void VLFocusedTextStorage::setFocusedRange(ns::Range range) {
  _focusedRange = range;
  _cachedStringIsValid = false;
  _focusedRangeIsValid = true;
  _wordCount = _baseTextStorage ? wordsInRange(*_baseTextStorage, range) : 0;
  _baseWordCount = _baseTextStorage ? _baseTextStorage->wordCount() : 0;
}

ns::Range VLFocusedTextStorage::rangeForBaseRange(ns::Range range) const {
  return ns::Range{range.location - _focusedRange.location, range.length};
}

ns::Range VLFocusedTextStorage::baseRangeForRange(ns::Range range) const {
  return ns::Range{range.location + _focusedRange.location, range.length};
}

// Reads.

uint64_t VLFocusedTextStorage::length() const {
  return _baseTextStorage ? _focusedRange.length : 0;
}

std::u16string_view VLFocusedTextStorage::string() const {
  if (!_cachedStringIsValid) {
    _cachedString =
        _baseTextStorage ? _baseTextStorage->substringWithRange(_focusedRange) : std::u16string();
    _cachedStringIsValid = true;
  }
  return _cachedString;
}

ns::ConstDictionaryPtr VLFocusedTextStorage::attributesAtIndex(uint64_t index,
                                                               ns::Range *effectiveRange) const {
  if (!_baseTextStorage)
    return ns::TextStorage::attributesAtIndex(index, effectiveRange);
  ns::ConstDictionaryPtr attributes =
      _baseTextStorage->attributesAtIndex(index + _focusedRange.location, effectiveRange);
  if (effectiveRange)
    effectiveRange->location -= _focusedRange.location;
  return attributes;
}

char16_t VLFocusedTextStorage::characterAtIndex(uint64_t index) const {
  checkRange(ns::Range{index, 1}, length(), "characterAtIndex:");
  return _baseTextStorage->characterAtIndex(index + _focusedRange.location);
}

std::u16string VLFocusedTextStorage::substringWithRange(ns::Range range) const {
  checkRange(range, length(), "substringWithRange:");
  if (range.empty())
    return std::u16string();
  return _baseTextStorage->substringWithRange(baseRangeForRange(range));
}

ns::Range VLFocusedTextStorage::paragraphRangeForRange(ns::Range range) const {
  uint64_t n = length();
  checkRange(range, n, "paragraphRangeForRange:");
  return ns::detail::paragraphRange(n, range, [this](uint64_t i) {
    return _baseTextStorage->characterAtIndex(i + _focusedRange.location);
  });
}

// Edits.

void VLFocusedTextStorage::replaceCharactersInRange(ns::Range range, std::u16string_view string) {
  if (!_baseTextStorage)
    return;
  InternalUpdate update(_internalUpdate);
  _cachedStringIsValid = false;
  _baseTextStorage->replaceCharactersInRange(baseRangeForRange(range), string);
  int64_t change = static_cast<int64_t>(string.size()) - static_cast<int64_t>(range.length);
  edited(ns::TextStorageEditedCharacters, range, static_cast<int32_t>(change));
}

void VLFocusedTextStorage::setAttributes(ns::ConstDictionaryPtr attributes, ns::Range range) {
  if (!_baseTextStorage)
    return;
  InternalUpdate update(_internalUpdate);
  _baseTextStorage->setAttributes(std::move(attributes), baseRangeForRange(range));
  edited(ns::TextStorageEditedAttributes, range, 0);
}

void VLFocusedTextStorage::addAttribute(std::u16string_view name, ns::Value value,
                                        ns::Range range) {
  if (!_baseTextStorage)
    return;
  InternalUpdate update(_internalUpdate);
  _baseTextStorage->addAttribute(name, std::move(value), baseRangeForRange(range));
  edited(ns::TextStorageEditedAttributes, range, 0);
}

uint64_t VLFocusedTextStorage::editedMask() const {
  return _isPostingDerivedNotification ? _focusedEditedMask : ns::TextStorage::editedMask();
}

ns::Range VLFocusedTextStorage::editedRange() const {
  return _isPostingDerivedNotification ? _focusedEditedRange : ns::TextStorage::editedRange();
}

int64_t VLFocusedTextStorage::changeInLength() const {
  return _isPostingDerivedNotification ? _focusedChangeInLength : ns::TextStorage::changeInLength();
}

// Following the base.

void VLFocusedTextStorage::baseTextStorageEdited(const ns::Notification &notification) {
  const ns::DictionaryPtr &info = notification.userInfo();
  if (!info)
    return;
  int64_t change = info->objectForKey(u"changeInLength").integerValue();
  if (change == 0)
    return;
  ns::Range edit = ns::RangeFromString(info->objectForKey(u"range").stringValue());
  const uint64_t editEnd = edit.max();
  const uint64_t start = _focusedRange.location;
  const uint64_t end = _focusedRange.max();
  if (editEnd < start)
    _focusedRange.location += static_cast<uint64_t>(change);
  else if (edit.location >= start && editEnd < end)
    _focusedRange.length += static_cast<uint64_t>(change);
  else if (edit.location < end)
    _focusedRangeIsValid = false;
}

void VLFocusedTextStorage::baseTextStorageDidProcessEditing(const ns::Notification &) {
  if (!_baseTextStorage)
    return;
  const VLXMLStorage &base = *_baseTextStorage;
  ns::Range edited = base.editedRange();
  int64_t change = base.changeInLength();
  uint64_t mask = base.editedMask();
  if (mask & ns::TextStorageEditedCharacters)
    _cachedStringIsValid = false;
  _focusedEditedRange = rangeForBaseRange(edited);
  _focusedChangeInLength = change;
  _focusedEditedMask = mask;

  if (!_focusedRangeIsValid) {
    ns::NotificationCenter::defaultCenter().postNotificationName(
        VLSFocusedTextStorageDidInvalidateNotification, this);
  } else if (edited.location >= _focusedRange.location && edited.max() <= _focusedRange.max()) {
    _wordCount += static_cast<uint64_t>(
        static_cast<int64_t>(static_cast<int32_t>(base.wordCount() - _baseWordCount)));
    // An edit made through this storage has been told by its own processing.
    if (_internalUpdate == 0) {
      {
        DerivedNotification posting(_isPostingDerivedNotification);
        ns::Notification did(std::u16string(ns::TextStorageDidProcessEditingNotification), this);
        ns::TextStorageDelegate *delegate = this->delegate();
        if (delegate && delegate->respondsTo(ns::TextStorageDelegateMethod::DidProcessEditing))
          delegate->textStorageDidProcessEditing(did);
        ns::NotificationCenter::defaultCenter().postNotification(did);
      }
      std::vector<ns::LayoutManager *> managers = layoutManagers();
      for (ns::LayoutManager *manager : managers)
        manager->textStorage(*this, _focusedEditedMask, _focusedEditedRange, _focusedChangeInLength,
                             _focusedEditedRange);
    }
  }
  _baseWordCount = base.wordCount();
}

} // namespace vl
