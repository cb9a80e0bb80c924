// TextAttachment and TextAttachmentCell: a file carried inside text at one character, and the
// cell that gives it a size on the page.
#pragma once

#include "ns/AttributeNames.h"
#include "ns/FileWrapper.h"
#include "ns/Geometry.h"
#include "ns/Image.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"
#include "ns/Value.h"

#include <memory>
#include <string>
#include <string_view>

namespace vl::ns {

class TextAttachment;
class TextAttachmentCell;
using TextAttachmentPtr = std::shared_ptr<TextAttachment>;
using TextAttachmentCellPtr = std::shared_ptr<TextAttachmentCell>;

/// What an attachment shows: an image, if any, and a size in points.
class TextAttachmentCell : public Object {
public:
  TextAttachmentCell() = default;
  /// A cell of `image` (which may be null) at the image's size in points.
  explicit TextAttachmentCell(ImagePtr image);
  static TextAttachmentCellPtr create(ImagePtr image = nullptr) {
    return std::make_shared<TextAttachmentCell>(std::move(image));
  }

  VL_OBJECT(NSTextAttachmentCell)

  Size cellSize() const { return cellSize_; }
  void setCellSize(Size size) { cellSize_ = size; }
  const ImagePtr &image() const { return image_; }
  /// Sets the image; the size follows it (zero for null).
  void setImage(ImagePtr image);
  /// The attachment the cell belongs to, or null.
  TextAttachment *attachment() const { return attachment_; }
  void setAttachment(TextAttachment *attachment) { attachment_ = attachment; }

private:
  ImagePtr image_;
  Size cellSize_;
  TextAttachment *attachment_ = nullptr;
};

/// A file wrapper placed in text: the text holds attachmentCharacter with the attachment
/// under AttachmentAttributeName.
///
/// Keyed coding key: "fileWrapper". The cell is not stored; a decoded attachment makes its
/// cell again from the wrapper.
class TextAttachment : public Object, public Coding {
public:
  TextAttachment() = default;
  explicit TextAttachment(FileWrapperPtr fileWrapper);
  // Its cell points back at it, so an attachment is not copied.
  TextAttachment(const TextAttachment &) = delete;
  TextAttachment &operator=(const TextAttachment &) = delete;
  ~TextAttachment() override;
  /// initWithFileWrapper:.
  static TextAttachmentPtr create(FileWrapperPtr fileWrapper) {
    return std::make_shared<TextAttachment>(std::move(fileWrapper));
  }

  VL_OBJECT(NSTextAttachment)

  /// The character that stands for an attachment in text, U+FFFC.
  static constexpr char16_t attachmentCharacter = AttachmentCharacter;

  /// The parts of the one-character text that carries an attachment: the string (U+FFFC),
  /// and the attribute to set over it.
  struct AttributedForm {
    std::u16string string;
    std::u16string_view attributeName;
    Value attribute;
  };
  /// The one-character text for `attachment` (nil gives the character with a nil value).
  static AttributedForm attributedStringWithAttachment(const TextAttachmentPtr &attachment);

  const FileWrapperPtr &fileWrapper() const { return fileWrapper_; }
  /// Sets the wrapper; a cell made from the old wrapper is made again on next use.
  void setFileWrapper(FileWrapperPtr fileWrapper);
  /// The cell set, or else one made on first use: the image of a wrapper that holds PNG or
  /// JPEG bytes at its size, or an empty cell of size zero. Never null.
  TextAttachmentCellPtr attachmentCell() const;
  void setAttachmentCell(TextAttachmentCellPtr cell);

  std::u16string description() const override;

  void encodeWithCoder(KeyedArchiver &coder) const override;
  void initWithCoder(KeyedUnarchiver &coder) override;

private:
  FileWrapperPtr fileWrapper_;
  mutable TextAttachmentCellPtr cell_;
  mutable bool cellMade_ = false;
};

} // namespace vl::ns
