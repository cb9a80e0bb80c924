// Fuzz target: image decoding from arbitrary bytes, and re-encoding what decodes.
#include "ns/Image.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  using namespace vl::ns;
  auto image = Image::createWithData(Data(data, size));
  if (image && image->pixelsWide() * uint64_t{image->pixelsHigh()} <= 4096) {
    image->representationUsingType(ImageFileTypePNG);
    image->representationUsingType(ImageFileTypeJPEG);
  }
  return 0;
}
