// Helpers of the FCF tests: FCF bytes built record by record, and paragraph style names.
#pragma once

#include "model/VLConstants.h"
#include "model/VLStyle.h"
#include "ns/AttributedString.h"
#include "ns/Data.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vl::test {

/// FCF bytes written by hand, independently of the writer.
class FCFBytes {
public:
  /// Starts with the header: magic "FCF2" and the words 1, 0, 0, 0.
  FCFBytes() { word(0x46434632).word(1).word(0).word(0).word(0); }

  FCFBytes &word(uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
      bytes_.push_back(static_cast<char>((value >> shift) & 0xff));
    return *this;
  }
  FCFBytes &raw(std::string_view bytes) {
    bytes_ += bytes;
    return *this;
  }
  /// A record with the true length.
  FCFBytes &record(int32_t type, std::string_view text) {
    return word(0x46545854).word(static_cast<uint32_t>(text.size() + 4)).word(type).raw(text);
  }
  /// A record head with any length, and no text.
  FCFBytes &head(uint32_t length, int32_t type) {
    return word(0x46545854).word(length).word(static_cast<uint32_t>(type));
  }

  const std::string &str() const { return bytes_; }
  ns::Data data() const { return ns::Data::fromString(bytes_); }

private:
  std::string bytes_;
};

/// The style name of the paragraph style at `index`, or "" when there is none.
inline std::u16string paragraphStyleNameAt(const ns::AttributedString &text, uint64_t index) {
  auto style = text.attribute(VLParagraphStyleAttributeName, index, nullptr).as<VLStyle>();
  return style && style->styleName() ? *style->styleName() : std::u16string();
}

} // namespace vl::test
