// Fuzz target: any bytes, read as UTF-8, through the single-pass Fountain parser, and small
// inputs through the regex pipeline too.
#include "converters/fountain/FastFountainParser.h"
#include "converters/fountain/FountainParser.h"
#include "ns/String.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::u16string text =
      vl::ns::fromUTF8(std::string_view(reinterpret_cast<const char *>(data), size));
  auto parser = vl::FastFountainParser::createWithString(text);
  // Every element must be whole: reading each one back is where a broken one would show.
  size_t total = 0;
  for (const vl::FNElementPtr &element : parser->elements())
    total += element->description().size();
  (void)total;
  // The pipeline runs many whole-text rewrites, some of them quadratic on long lines: keep it
  // to inputs of script-fragment size.
  if (size < 4096) {
    (void)vl::FountainParser::parseBodyOfString(text);
    (void)vl::FountainParser::parseTitlePageOfString(text);
  }
  return 0;
}
