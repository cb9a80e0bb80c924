// Text storage edits: gathering edits into batches and processing each batch once.
#include "ns/TextStorage.h"

#include "ns/Assert.h"

#include <algorithm>

namespace vl::ns {

TextStorage::~TextStorage() = default;

void TextStorage::replaceCharactersInRange(Range range, std::u16string_view string) {
  int64_t change = static_cast<int64_t>(string.size()) - static_cast<int64_t>(range.length);
  MutableAttributedString::replaceCharactersInRange(range, string);
  edited(TextStorageEditedCharacters, range, change);
}

void TextStorage::setAttributes(ConstDictionaryPtr attributes, Range range) {
  MutableAttributedString::setAttributes(std::move(attributes), range);
  edited(TextStorageEditedAttributes, range, 0);
}

void TextStorage::beginEditing() {
  ++editingNesting_;
}

void TextStorage::endEditing() {
  VL_ASSERT(editingNesting_ > 0, "endEditing without beginEditing");
  if (--editingNesting_ == 0 && editedMask_ != 0 && !processing_)
    processEditing();
}

void TextStorage::edited(uint64_t editedMask, Range range, int64_t changeInLength) {
  if (editedMask_ == 0) {
    editedRange_ = range;
    changeInLength_ = 0;
  } else {
    editedRange_ = UnionRange(editedRange_, range);
  }
  // The edit lies inside the union, so the union's end moves with the change.
  int64_t grown = static_cast<int64_t>(editedRange_.length) + changeInLength;
  editedRange_.length = static_cast<uint64_t>(std::max<int64_t>(grown, 0));
  changeInLength_ += changeInLength;
  editedMask_ |= editedMask;
  if (editingNesting_ == 0 && !processing_)
    processEditing();
}

void TextStorage::processEditing() {
  // Edits made while processing join this batch; whatever happens, the batch ends here.
  struct Processing {
    TextStorage &storage;
    explicit Processing(TextStorage &s) : storage(s) { storage.processing_ = true; }
    ~Processing() {
      storage.processing_ = false;
      storage.editedMask_ = 0;
      storage.editedRange_ = Range{NotFound, 0};
      storage.changeInLength_ = 0;
    }
  } processing(*this);

  NotificationCenter &center = NotificationCenter::defaultCenter();
  Notification will(std::u16string(TextStorageWillProcessEditingNotification), this);
  if (delegate_)
    delegate_->textStorageWillProcessEditing(will);
  center.postNotification(will);

  Range invalidated = editedRange_;
  if (editedMask_ & (TextStorageEditedAttributes | TextStorageEditedCharacters)) {
    uint64_t n = length();
    uint64_t location = std::min(editedRange_.location, n);
    Range edited{location, std::min(editedRange_.length, n - location)};
    Range paragraphs = paragraphRangeForRange(edited);
    fixAttributesInRange(paragraphs);
    invalidated = UnionRange(paragraphs, editedRange_);
  }

  Notification did(std::u16string(TextStorageDidProcessEditingNotification), this);
  if (delegate_)
    delegate_->textStorageDidProcessEditing(did);
  center.postNotification(did);

  std::vector<LayoutManager *> managers = layoutManagers_;
  for (LayoutManager *manager : managers)
    manager->textStorage(*this, editedMask_, editedRange_, changeInLength_, invalidated);
}

void TextStorage::addLayoutManager(LayoutManager *layoutManager) {
  if (layoutManager && std::find(layoutManagers_.begin(), layoutManagers_.end(), layoutManager) ==
                           layoutManagers_.end())
    layoutManagers_.push_back(layoutManager);
}

void TextStorage::removeLayoutManager(LayoutManager *layoutManager) {
  std::erase(layoutManagers_, layoutManager);
}

} // namespace vl::ns

namespace vl::ns {
VL_REGISTER_CLASS(TextStorage);
} // namespace vl::ns
