// Images: PNG and JPEG decoding and encoding with libpng and libjpeg, guarded against bad
// bytes and oversized pictures.
#include "ns/Image.h"

#include <jpeglib.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <jerror.h>

namespace vl::ns {

namespace {

constexpr uint32_t maxSide = 32768;
constexpr uint64_t maxPixels = uint64_t{1} << 25;

bool withinLimits(uint64_t width, uint64_t height) {
  return width > 0 && height > 0 && width <= maxSide && height <= maxSide &&
         width * height <= maxPixels;
}

// What a decoder gives back. The decoders below use setjmp/longjmp for the libraries' errors,
// so everything with a destructor lives here, in the caller's frame, and the decoding
// functions hold only plain pointers across setjmp.
struct Decoded {
  const uint8_t *input = nullptr;
  size_t length = 0;
  size_t position = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  double dpiX = 72;
  double dpiY = 72;
  std::vector<uint8_t> pixels;
};

// PNG ---------------------------------------------------------------------------------------

void pngRead(png_structp png, png_bytep out, png_size_t count) {
  auto *d = static_cast<Decoded *>(png_get_io_ptr(png));
  if (count > d->length - d->position)
    png_error(png, "truncated");
  std::memcpy(out, d->input + d->position, count);
  d->position += count;
}

void pngWarning(png_structp, png_const_charp) {}

void pngError(png_structp png, png_const_charp) {
  png_longjmp(png, 1);
}

bool decodePNG(Decoded *d) {
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, pngError, pngWarning);
  if (!png)
    return false;
  png_infop info = png_create_info_struct(png);
  if (!info) {
    png_destroy_read_struct(&png, nullptr, nullptr);
    return false;
  }
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_read_struct(&png, &info, nullptr);
    return false;
  }
  png_set_read_fn(png, d, pngRead);
  png_set_user_limits(png, maxSide, maxSide);
  png_read_info(png, info);
  png_uint_32 width = 0, height = 0;
  int depth = 0, colorType = 0, interlace = 0;
  png_get_IHDR(png, info, &width, &height, &depth, &colorType, &interlace, nullptr, nullptr);
  if (!withinLimits(width, height))
    png_error(png, "too large");
  png_uint_32 resX = 0, resY = 0;
  int unit = 0;
  if (png_get_pHYs(png, info, &resX, &resY, &unit) && unit == PNG_RESOLUTION_METER && resX > 0 &&
      resY > 0) {
    d->dpiX = resX * 0.0254;
    d->dpiY = resY * 0.0254;
  }
  d->width = width;
  d->height = height;
  png_set_expand(png);
  png_set_strip_16(png);
  png_set_gray_to_rgb(png);
  png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
  int passes = png_set_interlace_handling(png);
  png_read_update_info(png, info);
  if (png_get_rowbytes(png, info) != size_t{width} * 4)
    png_error(png, "unexpected row size");
  try {
    d->pixels.assign(size_t{width} * height * 4, 0);
  } catch (...) {
    png_error(png, "out of memory");
  }
  for (int pass = 0; pass < passes; ++pass)
    for (png_uint_32 y = 0; y < height; ++y)
      png_read_row(png, d->pixels.data() + size_t{y} * width * 4, nullptr);
  png_read_end(png, nullptr);
  png_destroy_read_struct(&png, &info, nullptr);
  return true;
}

struct Encoded {
  std::vector<uint8_t> bytes;
  unsigned char *jpegBuffer = nullptr;
  unsigned long jpegSize = 0;
};

void pngWrite(png_structp png, png_bytep data, png_size_t count) {
  auto *e = static_cast<Encoded *>(png_get_io_ptr(png));
  try {
    e->bytes.insert(e->bytes.end(), data, data + count);
  } catch (...) {
    png_error(png, "out of memory");
  }
}

void pngFlush(png_structp) {}

bool encodePNG(const uint8_t *pixels, uint32_t width, uint32_t height, double dpiX, double dpiY,
               bool interlaced, Encoded *e) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, pngError, pngWarning);
  if (!png)
    return false;
  png_infop info = png_create_info_struct(png);
  if (!info) {
    png_destroy_write_struct(&png, nullptr);
    return false;
  }
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_set_write_fn(png, e, pngWrite, pngFlush);
  png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGBA,
               interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  if (std::fabs(dpiX - 72) > 0.01 || std::fabs(dpiY - 72) > 0.01)
    png_set_pHYs(png, info, static_cast<png_uint_32>(std::lround(dpiX / 0.0254)),
                 static_cast<png_uint_32>(std::lround(dpiY / 0.0254)), PNG_RESOLUTION_METER);
  png_write_info(png, info);
  int passes = png_set_interlace_handling(png);
  for (int pass = 0; pass < passes; ++pass)
    for (uint32_t y = 0; y < height; ++y)
      png_write_row(png, pixels + size_t{y} * width * 4);
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return true;
}

// JPEG --------------------------------------------------------------------------------------

struct JPEGErrors {
  jpeg_error_mgr manager;
  jmp_buf jump;
};

void jpegErrorExit(j_common_ptr cinfo) {
  longjmp(reinterpret_cast<JPEGErrors *>(cinfo->err)->jump, 1);
}

// Warnings are silent, except those that say the picture's data ended early: libjpeg would
// pad the picture with grey, and a few bytes claiming a huge picture would cost its whole
// buffer and a long decode.
void jpegMessage(j_common_ptr cinfo, int level) {
  int code = cinfo->err->msg_code;
  if (level < 0 && (code == JWRN_JPEG_EOF || code == JWRN_HIT_MARKER))
    longjmp(reinterpret_cast<JPEGErrors *>(cinfo->err)->jump, 1);
}

bool decodeJPEG(Decoded *d) {
  jpeg_decompress_struct cinfo;
  JPEGErrors errors;
  cinfo.err = jpeg_std_error(&errors.manager);
  errors.manager.error_exit = jpegErrorExit;
  errors.manager.emit_message = jpegMessage;
  if (setjmp(errors.jump)) {
    jpeg_destroy_decompress(&cinfo);
    return false;
  }
  jpeg_create_decompress(&cinfo);
  jpeg_mem_src(&cinfo, d->input, static_cast<unsigned long>(d->length));
  if (jpeg_read_header(&cinfo, TRUE) != JPEG_HEADER_OK ||
      !withinLimits(cinfo.image_width, cinfo.image_height)) {
    jpeg_destroy_decompress(&cinfo);
    return false;
  }
  if (cinfo.saw_JFIF_marker && cinfo.X_density > 0 && cinfo.Y_density > 0) {
    if (cinfo.density_unit == 1) {
      d->dpiX = cinfo.X_density;
      d->dpiY = cinfo.Y_density;
    } else if (cinfo.density_unit == 2) {
      d->dpiX = cinfo.X_density * 2.54;
      d->dpiY = cinfo.Y_density * 2.54;
    }
  }
  bool cmyk = cinfo.jpeg_color_space == JCS_CMYK || cinfo.jpeg_color_space == JCS_YCCK;
  cinfo.out_color_space = cmyk ? JCS_CMYK : JCS_EXT_RGBA;
  jpeg_start_decompress(&cinfo);
  uint32_t width = cinfo.output_width, height = cinfo.output_height;
  if (cinfo.output_components != 4 || !withinLimits(width, height)) {
    jpeg_destroy_decompress(&cinfo);
    return false;
  }
  d->width = width;
  d->height = height;
  try {
    // Grown row by row, so that a truncated file stops before the whole buffer exists.
    d->pixels.reserve(std::min<size_t>(size_t{width} * height * 4, size_t{1} << 24));
  } catch (...) {
    jpeg_destroy_decompress(&cinfo);
    return false;
  }
  // A file whose rows end early fails with the premature-end warning above.
  while (cinfo.output_scanline < height) {
    size_t offset = d->pixels.size();
    try {
      d->pixels.resize(offset + size_t{width} * 4);
    } catch (...) {
      jpeg_destroy_decompress(&cinfo);
      return false;
    }
    JSAMPROW row = d->pixels.data() + offset;
    jpeg_read_scanlines(&cinfo, &row, 1);
  }
  jpeg_finish_decompress(&cinfo);
  // Adobe writes CMYK inverted; its marker says so.
  bool inverted = cmyk && cinfo.saw_Adobe_marker;
  jpeg_destroy_decompress(&cinfo);
  if (cmyk) {
    for (size_t i = 0; i < d->pixels.size(); i += 4) {
      unsigned c = d->pixels[i], m = d->pixels[i + 1], y = d->pixels[i + 2], k = d->pixels[i + 3];
      if (!inverted) {
        c = 255 - c;
        m = 255 - m;
        y = 255 - y;
        k = 255 - k;
      }
      d->pixels[i] = static_cast<uint8_t>(c * k / 255);
      d->pixels[i + 1] = static_cast<uint8_t>(m * k / 255);
      d->pixels[i + 2] = static_cast<uint8_t>(y * k / 255);
      d->pixels[i + 3] = 255;
    }
  }
  return true;
}

bool encodeJPEG(const uint8_t *rgb, uint32_t width, uint32_t height, double dpiX, double dpiY,
                int quality, bool progressive, Encoded *e) {
  jpeg_compress_struct cinfo;
  JPEGErrors errors;
  cinfo.err = jpeg_std_error(&errors.manager);
  errors.manager.error_exit = jpegErrorExit;
  errors.manager.emit_message = [](j_common_ptr, int) {};
  if (setjmp(errors.jump)) {
    jpeg_destroy_compress(&cinfo);
    return false;
  }
  jpeg_create_compress(&cinfo);
  jpeg_mem_dest(&cinfo, &e->jpegBuffer, &e->jpegSize);
  cinfo.image_width = width;
  cinfo.image_height = height;
  cinfo.input_components = 3;
  cinfo.in_color_space = JCS_RGB;
  jpeg_set_defaults(&cinfo);
  jpeg_set_quality(&cinfo, quality, TRUE);
  // Full-resolution colour at high quality: chroma subsampling would blur coloured edges.
  if (quality >= 90)
    for (int i = 0; i < cinfo.num_components; ++i)
      cinfo.comp_info[i].h_samp_factor = cinfo.comp_info[i].v_samp_factor = 1;
  if (progressive)
    jpeg_simple_progression(&cinfo);
  cinfo.density_unit = 1;
  cinfo.X_density = static_cast<UINT16>(std::clamp<long>(std::lround(dpiX), 1, 65535));
  cinfo.Y_density = static_cast<UINT16>(std::clamp<long>(std::lround(dpiY), 1, 65535));
  jpeg_start_compress(&cinfo, TRUE);
  while (cinfo.next_scanline < height) {
    JSAMPROW row = const_cast<uint8_t *>(rgb + size_t{cinfo.next_scanline} * width * 3);
    jpeg_write_scanlines(&cinfo, &row, 1);
  }
  jpeg_finish_compress(&cinfo);
  jpeg_destroy_compress(&cinfo);
  return true;
}

bool decode(const Data &data, std::optional<ImageFileType> type, Decoded &d) {
  d.input = data.bytes();
  d.length = data.length();
  if (type == ImageFileTypePNG)
    return decodePNG(&d);
  if (type == ImageFileTypeJPEG)
    return decodeJPEG(&d);
  return false;
}

} // namespace

std::optional<ImageFileType> Image::fileTypeOfData(const Data &data) {
  static constexpr uint8_t png[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  if (data.length() >= sizeof png && std::memcmp(data.bytes(), png, sizeof png) == 0)
    return ImageFileTypePNG;
  if (data.length() >= 3 && data.bytes()[0] == 0xFF && data.bytes()[1] == 0xD8 &&
      data.bytes()[2] == 0xFF)
    return ImageFileTypeJPEG;
  return std::nullopt;
}

ImagePtr Image::createWithData(const Data &data) {
  auto type = fileTypeOfData(data);
  Decoded d;
  if (!type || !decode(data, type, d))
    return nullptr;
  auto image = std::make_shared<Image>(Private{});
  image->width_ = d.width;
  image->height_ = d.height;
  image->size_ = Size{d.width * 72.0 / d.dpiX, d.height * 72.0 / d.dpiY};
  image->data_ = data;
  image->type_ = *type;
  return image;
}

ImagePtr Image::createWithPixels(uint32_t width, uint32_t height, std::vector<uint8_t> rgba) {
  if (!withinLimits(width, height) || rgba.size() != size_t{width} * height * 4)
    return nullptr;
  auto image = std::make_shared<Image>(Private{});
  image->width_ = width;
  image->height_ = height;
  image->size_ = Size{static_cast<double>(width), static_cast<double>(height)};
  image->pixels_ = std::move(rgba);
  image->decoded_ = true;
  return image;
}

const std::vector<uint8_t> &Image::pixels() const {
  if (!decoded_) {
    Decoded d;
    if (decode(data_, type_, d) && d.width == width_ && d.height == height_)
      pixels_ = std::move(d.pixels);
    decoded_ = true;
  }
  return pixels_;
}

Data Image::representationUsingType(ImageFileType type, const DictionaryPtr &properties) const {
  if (type != ImageFileTypePNG && type != ImageFileTypeJPEG)
    return Data();
  const std::vector<uint8_t> &rgba = pixels();
  if (rgba.size() != size_t{width_} * height_ * 4 || rgba.empty())
    return Data();
  auto property = [&](std::u16string_view key) -> const Value * {
    return properties ? properties->find(key) : nullptr;
  };
  double dpiX = size_.width > 0 ? width_ * 72.0 / size_.width : 72;
  double dpiY = size_.height > 0 ? height_ * 72.0 / size_.height : 72;
  Encoded e;
  if (type == ImageFileTypePNG) {
    const Value *interlaced = property(ImageInterlaced);
    if (!encodePNG(rgba.data(), width_, height_, dpiX, dpiY, interlaced && interlaced->boolValue(),
                   &e))
      return Data();
    return Data(std::move(e.bytes));
  }
  const Value *factor = property(ImageCompressionFactor);
  int quality = static_cast<int>(
      std::lround(std::clamp(factor ? factor->doubleValue() : 1.0, 0.0, 1.0) * 100));
  const Value *progressive = property(ImageProgressive);
  // JPEG has no alpha: lay the picture over white.
  std::vector<uint8_t> rgb(size_t{width_} * height_ * 3);
  for (size_t i = 0, j = 0; i < rgba.size(); i += 4, j += 3) {
    unsigned alpha = rgba[i + 3];
    for (int c = 0; c < 3; ++c)
      rgb[j + c] = static_cast<uint8_t>((rgba[i + c] * alpha + 255 * (255 - alpha) + 127) / 255);
  }
  bool ok = encodeJPEG(rgb.data(), width_, height_, dpiX, dpiY, std::max(quality, 1),
                       progressive && progressive->boolValue(), &e);
  Data out;
  if (ok && e.jpegBuffer)
    out = Data(e.jpegBuffer, e.jpegSize);
  std::free(e.jpegBuffer);
  return out;
}

} // namespace vl::ns
