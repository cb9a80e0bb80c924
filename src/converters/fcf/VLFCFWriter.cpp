// VLFCFWriter: writes a range of styled text as FCF records.
#include "converters/fcf/VLFCFWriter.h"

#include "converters/fcf/VLFCFReader.h"
#include "model/VLConstants.h"
#include "ns/Assert.h"
#include "ns/String.h"

#include <algorithm>
#include <array>

namespace vl {

ns::Data VLFCFWriter::dataFromRange(ns::Range range,
                                    const ns::ConstDictionaryPtr & /*documentAttributes*/) {
  _destinationData.clear();
  emitFCFHeader();
  const uint64_t start = range.location;
  const uint64_t end = range.location + range.length;
  if (end <= start || !_attributedString)
    return destinationData();

  std::u16string_view text = _attributedString->string();
  VL_ASSERT(start <= text.size() && range.length <= text.size() - start,
            "Invalid parameter not satisfying: NSMaxRange(range) <= [attributedString length]");
  _destinationData.reserve(_destinationData.size() + range.length + range.length / 8);

  std::u16string part;
  uint64_t position = start;
  while (position < end) {
    uint64_t paragraphEnd = 0;
    uint64_t contentsEnd = 0;
    ns::getParagraphStart(text, nullptr, &paragraphEnd, &contentsEnd, ns::Range{position, 0});
    // The style of the first character written; runs later in the paragraph are not read.
    VLStylePtr style =
        _attributedString->attribute(VLParagraphStyleAttributeName, position, nullptr)
            .as<VLStyle>();
    const uint64_t partEnd = std::min(contentsEnd, end);
    part.assign(text.substr(position, partEnd - position));
    if (partEnd < end && contentsEnd < paragraphEnd)
      part.push_back(u'\r');
    emitString(part, typeForStyle(style));
    position = paragraphEnd;
  }
  return destinationData();
}

void VLFCFWriter::emitFCFHeader() {
  writeInt(VLFCFMagic);
  writeInt(1);
  writeInt(0);
  writeInt(0);
  writeInt(0);
}

void VLFCFWriter::emitString(std::u16string_view string, int32_t type) {
  writeInt(VLFCFTextTag);
  // Counted in UTF-16 units, which the one-byte-a-unit conversion below keeps true.
  writeInt(static_cast<int32_t>(static_cast<uint32_t>(string.size()) + 4u));
  writeInt(type);
  for (char16_t unit : string)
    _destinationData.push_back(unit < 0x80 ? static_cast<uint8_t>(unit) : uint8_t('?'));
}

void VLFCFWriter::writeInt(int32_t value) {
  const uint32_t word = static_cast<uint32_t>(value);
  _destinationData.push_back(static_cast<uint8_t>(word >> 24));
  _destinationData.push_back(static_cast<uint8_t>(word >> 16));
  _destinationData.push_back(static_cast<uint8_t>(word >> 8));
  _destinationData.push_back(static_cast<uint8_t>(word));
}

int32_t VLFCFWriter::typeForPaginationStyle(int64_t paginationStyle) {
  // Indexed by pagination style minus 1; the format has no code for a shot.
  static constexpr std::array<int32_t, 7> types{1, 2, 3, 4, 5, 0, 6};
  if (paginationStyle < 1 || paginationStyle > 7)
    return 0;
  return types[static_cast<size_t>(paginationStyle - 1)];
}

int32_t VLFCFWriter::typeForStyle(const VLStylePtr &style) {
  if (!style)
    return 0;
  int64_t pagination = style->paginationStyle();
  if (pagination == 0)
    pagination = style->proposedScreenplayPaginationStyle();
  return typeForPaginationStyle(pagination);
}

} // namespace vl
