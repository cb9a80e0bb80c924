// Fuzz target: any bytes through the Fountain reader with document attributes asked for, and
// the markers it lays checked against the text they sit in.
#include "converters/fountain/VLSFountainReader.h"
#include "model/VLConstants.h"
#include "ns/Data.h"
#include "objects/VLSTextMarker.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  auto reader = vl::VLSFountainReader::create();
  vl::ns::DictionaryPtr attributes;
  auto text =
      reader->attributedStringWithData(vl::ns::Data(data, size), nullptr, &attributes, nullptr);
  if (!text)
    return 0;
  if (!attributes || attributes->count() != 4)
    std::abort();
  // Every comment sits on characters of the text, and the text holds it there.
  uint64_t length = text->length();
  for (const auto &[identifier, value] : *reader->references()) {
    auto marker = value.as<vl::VLSTextMarker>();
    if (!marker || marker->identifier() != identifier)
      std::abort();
    vl::ns::Range range = marker->range();
    if (range.max() > length)
      std::abort();
    if (marker->textMarkerType() == vl::VLSTextMarkerTypeComment &&
        (range.length != 1 ||
         !text->attribute(vl::VLSTextMarkerAttributeName, range.location, nullptr)
              .as<vl::VLSTextMarker>()))
      std::abort();
  }
  return 0;
}
