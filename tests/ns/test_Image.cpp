// Images: PNG and JPEG round trips, sizes from resolutions, and refusal of bad or oversized
// pictures.
#include "ns/Image.h"

#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>

#include <cstdlib>
#include <cstring>

using namespace vl::ns;

namespace {

// A small picture with distinct colours and a half-transparent corner.
std::vector<uint8_t> samplePixels(uint32_t width, uint32_t height) {
  std::vector<uint8_t> pixels;
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = 0; x < width; ++x) {
      pixels.push_back(static_cast<uint8_t>(x * 255 / std::max(1u, width - 1)));
      pixels.push_back(static_cast<uint8_t>(y * 255 / std::max(1u, height - 1)));
      pixels.push_back(static_cast<uint8_t>((x + y) % 2 ? 200 : 40));
      pixels.push_back(x == 0 && y == 0 ? 128 : 255);
    }
  return pixels;
}

ImagePtr sample(uint32_t width = 7, uint32_t height = 5) {
  auto image = Image::createWithPixels(width, height, samplePixels(width, height));
  EXPECT_NE(image, nullptr);
  return image;
}

// A JPEG of one colour in a space our encoder does not write (grey or CMYK), 8 x 8 pixels.
Data jpegOfColour(J_COLOR_SPACE space, std::vector<uint8_t> pixel) {
  jpeg_compress_struct cinfo;
  jpeg_error_mgr errors;
  cinfo.err = jpeg_std_error(&errors);
  jpeg_create_compress(&cinfo);
  unsigned char *buffer = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&cinfo, &buffer, &size);
  cinfo.image_width = cinfo.image_height = 8;
  cinfo.input_components = static_cast<int>(pixel.size());
  cinfo.in_color_space = space;
  jpeg_set_defaults(&cinfo);
  jpeg_set_quality(&cinfo, 100, TRUE);
  jpeg_start_compress(&cinfo, TRUE);
  std::vector<uint8_t> row;
  for (int x = 0; x < 8; ++x)
    row.insert(row.end(), pixel.begin(), pixel.end());
  while (cinfo.next_scanline < 8) {
    JSAMPROW r = row.data();
    jpeg_write_scanlines(&cinfo, &r, 1);
  }
  jpeg_finish_compress(&cinfo);
  jpeg_destroy_compress(&cinfo);
  Data out(buffer, size);
  std::free(buffer);
  return out;
}

// A 2 x 1 PNG of another colour type and depth; `rows` holds its raw bytes.
Data pngOf(int colorType, int depth, std::vector<uint8_t> rows, bool withTransparency = false) {
  std::vector<uint8_t> out;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(
      png, &out,
      [](png_structp p, png_bytep data, png_size_t n) {
        auto *v = static_cast<std::vector<uint8_t> *>(png_get_io_ptr(p));
        v->insert(v->end(), data, data + n);
      },
      nullptr);
  png_set_IHDR(png, info, 2, 1, depth, colorType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  if (colorType == PNG_COLOR_TYPE_PALETTE) {
    png_color palette[2] = {{255, 0, 0}, {0, 0, 255}};
    png_set_PLTE(png, info, palette, 2);
    png_byte alpha[1] = {0};
    if (withTransparency)
      png_set_tRNS(png, info, alpha, 1, nullptr);
  }
  png_write_info(png, info);
  png_write_row(png, rows.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return Data(std::move(out));
}

} // namespace

TEST(Image, PNGRoundTripIsExactAndJPEGClose) {
  auto image = sample(16, 12);
  image->setSize(Size{8, 6}); // 144 dots per inch
  Data png = image->representationUsingType(ImageFileTypePNG);
  auto back = Image::createWithData(png);
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->data(), png) << "the bytes it was made from";
  EXPECT_EQ(back->pixels(), image->pixels());
  EXPECT_NEAR(back->size().width, 8, 0.1) << "the size follows the resolution";

  Data jpeg = image->representationUsingType(ImageFileTypeJPEG);
  back = Image::createWithData(jpeg);
  ASSERT_NE(back, nullptr);
  EXPECT_NEAR(back->size().height, 6, 0.1);
  const auto &in = image->pixels();
  const auto &out = back->pixels();
  ASSERT_EQ(in.size(), out.size());
  for (size_t i = 4; i < in.size(); ++i) // the first pixel is half transparent
    EXPECT_NEAR(in[i] * (i % 4 != 3), out[i] * (i % 4 != 3), 12) << "byte " << i;
  // The half-transparent pixel is laid over white.
  EXPECT_NEAR(out[0], (0 * 128 + 255 * 127) / 255, 12);
  EXPECT_EQ(out[3], 255);
  Data small = image->representationUsingType(
      ImageFileTypeJPEG, Dictionary::create({{u"NSImageCompressionFactor", 0.1}}));
  EXPECT_LT(small.length(), jpeg.length()) << "the factor is the quality";
}

TEST(Image, OtherLayoutsBecomeRGBA) {
  auto grey = Image::createWithData(jpegOfColour(JCS_GRAYSCALE, {100}));
  ASSERT_NE(grey, nullptr);
  EXPECT_NEAR(grey->pixels()[2], 100, 2);
  EXPECT_EQ(grey->pixels()[3], 255);

  // CMYK JPEGs carry the Adobe marker and store ink inverted: 255 is no ink.
  auto cyan = Image::createWithData(jpegOfColour(JCS_CMYK, {0, 255, 255, 255}));
  ASSERT_NE(cyan, nullptr);
  EXPECT_NEAR(cyan->pixels()[0], 0, 3);
  EXPECT_NEAR(cyan->pixels()[1], 255, 3);
  EXPECT_NEAR(cyan->pixels()[2], 255, 3);

  auto palette = Image::createWithData(pngOf(PNG_COLOR_TYPE_PALETTE, 8, {0, 1}, true));
  ASSERT_NE(palette, nullptr);
  EXPECT_EQ(palette->pixels(), (std::vector<uint8_t>{255, 0, 0, 0, 0, 0, 255, 255}))
      << "the palette's transparency becomes alpha";
  auto deep = Image::createWithData(pngOf(PNG_COLOR_TYPE_GRAY, 16, {0x12, 0x34, 0xFF, 0xFF}));
  ASSERT_NE(deep, nullptr);
  EXPECT_EQ(deep->pixels(), (std::vector<uint8_t>{0x12, 0x12, 0x12, 255, 255, 255, 255, 255}));
}

TEST(Image, BadBytesAnswerNil) {
  for (std::string_view bad :
       {std::string_view(), std::string_view("GIF89a...."), std::string_view("II*\0 a tiff", 11),
        std::string_view("\x89PNG\r\n\x1a\ngarbage"), std::string_view("\xff\xd8\xff garbage")})
    EXPECT_EQ(Image::createWithData(Data::fromString(bad)), nullptr);

  auto image = sample(16, 12);
  for (ImageFileType type : {ImageFileTypePNG, ImageFileTypeJPEG}) {
    auto bytes = image->representationUsingType(type).toVector();
    for (size_t length = 0; length + 2 < bytes.size(); length += 7)
      EXPECT_EQ(Image::createWithData(Data(bytes.data(), length)), nullptr)
          << "type " << type << " truncated to " << length;
  }
}

TEST(Image, OversizedPicturesAreRefused) {
  EXPECT_EQ(Image::createWithPixels(2, 2, std::vector<uint8_t>(15)), nullptr);
  EXPECT_EQ(Image::createWithPixels(40000, 1, std::vector<uint8_t>(160000)), nullptr);

  // A JPEG that claims 5000 x 5000 pixels but holds the data of a tiny one.
  auto bytes = sample(16, 16)->representationUsingType(ImageFileTypeJPEG).toVector();
  bool patched = false;
  for (size_t i = 2; i + 8 < bytes.size(); ++i)
    if (bytes[i] == 0xFF && bytes[i + 1] == 0xC0) { // start of frame: height, width follow
      bytes[i + 5] = 5000 >> 8;
      bytes[i + 6] = 5000 & 0xFF;
      bytes[i + 7] = 5000 >> 8;
      bytes[i + 8] = 5000 & 0xFF;
      patched = true;
      break;
    }
  ASSERT_TRUE(patched);
  EXPECT_EQ(Image::createWithData(Data(bytes)), nullptr);
}
