// Fuzz target: any bytes through the FCF reader; whatever it reads must write and read back
// to the same text.
#include "converters/fcf/VLFCFReader.h"
#include "converters/fcf/VLFCFWriter.h"
#include "ns/Assert.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  vl::ns::Data bytes(data, size);
  vl::ns::MutableAttributedStringPtr text;
  try {
    text = vl::VLFCFReader::create()->attributedStringWithData(bytes, nullptr, nullptr, nullptr);
  } catch (const vl::ns::InternalInconsistencyException &) {
    // Records that run past the end are refused by a check, by design.
    return 0;
  }
  if (!text)
    return 0;
  vl::ns::Data written =
      vl::VLFCFWriter::create(text)->dataFromRange(vl::ns::Range{0, text->length()});
  auto again =
      vl::VLFCFReader::create()->attributedStringWithData(written, nullptr, nullptr, nullptr);
  if (!again || again->string() != text->string())
    std::abort();
  return 0;
}
