// VLFCFWriter: writes a range of styled text as an FCF file, one typed ASCII record a
// paragraph.
#pragma once

#include "model/VLStyle.h"
#include "ns/AttributedString.h"
#include "ns/Data.h"
#include "ns/Dictionary.h"
#include "ns/Object.h"
#include "ns/Range.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace vl {

class VLFCFWriter;
using VLFCFWriterPtr = std::shared_ptr<VLFCFWriter>;

/// Writes the record form VLFCFReader reads. Each paragraph of the range becomes one record
/// typed after the paragraph style at its first written character; its terminator, whatever
/// it was, becomes one CR, except where the range cuts the paragraph. Everything else (fonts,
/// character attributes, attachments, markers) is dropped, and characters above 127 become
/// "?", one byte per UTF-16 unit so that each record's length stays true.
///
/// A writer serves one text; every dataFromRange starts the bytes afresh.
class VLFCFWriter : public ns::Object {
public:
  VL_OBJECT(VLFCFWriter)

  /// initWithAttributedString:.
  explicit VLFCFWriter(ns::AttributedStringPtr attributedString)
      : _attributedString(std::move(attributedString)) {}
  static VLFCFWriterPtr create(ns::AttributedStringPtr attributedString) {
    return std::make_shared<VLFCFWriter>(std::move(attributedString));
  }

  /// The file for the characters of `range`: the 20-byte header, then a record for each
  /// paragraph that the range touches. An empty range gives the header alone. The document
  /// attributes are not read: the format has no room for them. Never fails; a range past
  /// the end of the text fails an internal check. Linear in the range.
  ns::Data dataFromRange(ns::Range range, const ns::ConstDictionaryPtr &documentAttributes = {});

  /// Appends the header: the magic, 1, 0, 0, 0.
  void emitFCFHeader();
  /// Appends one record: the tag, the length of `string` in UTF-16 units plus 4, `type`, and
  /// the text as ASCII.
  void emitString(std::u16string_view string, int32_t type);
  /// Appends a big-endian word.
  void writeInt(int32_t value);

  /// The record type of a pagination style: scene heading 1, action 2, character 3,
  /// parenthetical 4, dialogue 5, transition 6; shots and everything else 0.
  static int32_t typeForPaginationStyle(int64_t paginationStyle);
  /// The record type of a style: by its pagination style, or when that is 0 by the one its
  /// display name proposes; 0 for no style.
  static int32_t typeForStyle(const VLStylePtr &style);

  const ns::AttributedStringPtr &attributedString() const { return _attributedString; }
  void setAttributedString(ns::AttributedStringPtr attributedString) {
    _attributedString = std::move(attributedString);
  }
  /// The bytes built so far.
  ns::Data destinationData() const { return ns::Data(_destinationData); }
  void setDestinationData(const ns::Data &data) { _destinationData = data.toVector(); }

private:
  ns::AttributedStringPtr _attributedString;
  std::vector<uint8_t> _destinationData;
};

} // namespace vl
