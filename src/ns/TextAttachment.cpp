// Attachments: cells made from the wrapped file's image, the attachment character and coding.
#include "ns/TextAttachment.h"

namespace vl::ns {

VL_REGISTER_CLASS(TextAttachment);

TextAttachmentCell::TextAttachmentCell(ImagePtr image) {
  setImage(std::move(image));
}

void TextAttachmentCell::setImage(ImagePtr image) {
  image_ = std::move(image);
  cellSize_ = image_ ? image_->size() : Size{};
}

TextAttachment::TextAttachment(FileWrapperPtr fileWrapper) : fileWrapper_(std::move(fileWrapper)) {}

TextAttachment::~TextAttachment() {
  if (cell_ && cell_->attachment() == this)
    cell_->setAttachment(nullptr);
}

TextAttachment::AttributedForm
TextAttachment::attributedStringWithAttachment(const TextAttachmentPtr &attachment) {
  return {std::u16string(1, attachmentCharacter), AttachmentAttributeName, Value(attachment)};
}

void TextAttachment::setFileWrapper(FileWrapperPtr fileWrapper) {
  fileWrapper_ = std::move(fileWrapper);
  // Only a cell this attachment made itself follows the wrapper.
  if (cellMade_) {
    cell_.reset();
    cellMade_ = false;
  }
}

TextAttachmentCellPtr TextAttachment::attachmentCell() const {
  if (!cell_) {
    ImagePtr image;
    if (fileWrapper_ && fileWrapper_->isRegularFile())
      image = Image::createWithData(fileWrapper_->regularFileContents());
    cell_ = TextAttachmentCell::create(std::move(image));
    cell_->setAttachment(const_cast<TextAttachment *>(this));
    cellMade_ = true;
  }
  return cell_;
}

void TextAttachment::setAttachmentCell(TextAttachmentCellPtr cell) {
  if (cell_ && cell_->attachment() == this)
    cell_->setAttachment(nullptr);
  cell_ = std::move(cell);
  cellMade_ = false;
  if (cell_)
    cell_->setAttachment(this);
}

std::u16string TextAttachment::description() const {
  return Object::description() + u" " + (fileWrapper_ ? fileWrapper_->description() : u"(no file)");
}

void TextAttachment::encodeWithCoder(KeyedArchiver &coder) const {
  coder.encodeObject(Value(fileWrapper_), u"fileWrapper");
}

void TextAttachment::initWithCoder(KeyedUnarchiver &coder) {
  setFileWrapper(coder.decodeObjectForKey(u"fileWrapper").as<FileWrapper>());
}

} // namespace vl::ns
