// Image: a bitmap decoded from PNG or JPEG bytes, or made from RGBA pixels, and its PNG and
// JPEG encodings.
#pragma once

#include "ns/Data.h"
#include "ns/Dictionary.h"
#include "ns/Geometry.h"
#include "ns/Object.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace vl::ns {

class Image;
using ImagePtr = std::shared_ptr<Image>;

/// Bitmap file types, as the platform numbers them. Only PNG and JPEG are written; TIFF,
/// BMP, GIF and JPEG 2000 are neither read nor written.
enum ImageFileType : int64_t {
  ImageFileTypeTIFF = 0,
  ImageFileTypeBMP = 1,
  ImageFileTypeGIF = 2,
  ImageFileTypeJPEG = 3,
  ImageFileTypePNG = 4,
  ImageFileTypeJPEG2000 = 5,
};

/// Properties of representationUsingType.
/// A number from 0.0 to 1.0: JPEG quality / 100; 1.0 when absent.
inline constexpr std::u16string_view ImageCompressionFactor = u"NSImageCompressionFactor";
/// A boolean: progressive JPEG; false when absent.
inline constexpr std::u16string_view ImageProgressive = u"NSImageProgressive";
/// A boolean: Adam7-interlaced PNG; false when absent.
inline constexpr std::u16string_view ImageInterlaced = u"NSImageInterlaced";

/// An immutable bitmap in 8-bit RGBA (straight alpha). An image made from bytes keeps them
/// and decodes its pixels again only when they are asked for, so holding many images costs
/// their bytes, not their pixels.
///
/// Sizes: pixelsWide/pixelsHigh count pixels; size() is in points, from the resolution the
/// file records (72 dots per inch when it records none), so a 144 dpi image of 200 pixels is
/// 100 points wide.
///
/// Limits: images over 32768 pixels on a side or 2^25 pixels in all are refused, so a
/// small file cannot make a huge allocation.
class Image : public Object {
  struct Private {};

public:
  Image(Private) {}

  /// initWithData: PNG or JPEG (told apart by their signatures; grey, palette, 16-bit and
  /// CMYK images are converted to RGBA). Nil for any other bytes, for damaged or truncated
  /// files and for images over the limits; never crashes. Costs one full decode.
  static ImagePtr createWithData(const Data &data);
  /// An image of `width` x `height` pixels from `rgba` (4 bytes a pixel, rows top down);
  /// nil when the buffer is not exactly that size or the size is 0 or over the limits.
  static ImagePtr createWithPixels(uint32_t width, uint32_t height, std::vector<uint8_t> rgba);

  VL_OBJECT(NSImage)

  uint32_t pixelsWide() const { return width_; }
  uint32_t pixelsHigh() const { return height_; }
  /// The size in points.
  Size size() const { return size_; }
  /// Sets the size in points (the resolution written with the encodings follows it).
  void setSize(Size size) { size_ = size; }
  /// The bytes the image was made from; empty for an image made from pixels.
  const Data &data() const { return data_; }
  /// The type of those bytes: PNG or JPEG, or PNG for an image made from pixels.
  ImageFileType fileType() const { return type_; }
  /// The pixels, 4 bytes each, rows top down. Decodes the bytes again on first use and keeps
  /// the result.
  const std::vector<uint8_t> &pixels() const;

  /// The image encoded as `type`: PNG (not interlaced unless ImageInterlaced says so) or JPEG
  /// (quality = ImageCompressionFactor x 100, baseline unless ImageProgressive says so;
  /// transparent pixels are laid over white, as JPEG has no alpha). Empty bytes for any other
  /// type.
  Data representationUsingType(ImageFileType type, const DictionaryPtr &properties = nullptr) const;

  /// The file type the signature at the start of `data` announces, PNG or JPEG; nullopt for
  /// anything else.
  static std::optional<ImageFileType> fileTypeOfData(const Data &data);

private:
  uint32_t width_ = 0;
  uint32_t height_ = 0;
  Size size_;
  Data data_;
  ImageFileType type_ = ImageFileTypePNG;
  mutable std::vector<uint8_t> pixels_;
  mutable bool decoded_ = false;
};

} // namespace vl::ns
