// Colours from and to "#rrggbb" strings and colour names.
#include "model/VLColorAdditions.h"

#include "model/VLSColorTable.h"
#include "ns/String.h"

#include <cstdlib>

namespace vl {

ns::ColorPtr colorWithStringValue(std::u16string_view string) {
  uint32_t rgb = 0;
  if (!string.empty() && string.front() == u'#') {
    std::u16string digits;
    if (string.size() == 4) {
      for (char16_t c : string.substr(1))
        digits.append(2, c);
    } else if (string.size() == 7) {
      digits = string.substr(1);
    } else {
      return nullptr;
    }
    // Six characters cannot overflow a long, and strtol's early stop is the reading wanted.
    std::string bytes = ns::toUTF8(digits);
    rgb = static_cast<uint32_t>(std::strtol(bytes.c_str(), nullptr, 16));
  } else {
    std::string name = ns::toUTF8(string);
    const VLSColorTableEntry *entry = VLSColorTable_Find(name.data(), name.size());
    if (!entry)
      return nullptr;
    rgb = entry->color;
  }
  return ns::Color::colorWithDeviceRed(((rgb >> 16) & 0xff) / 255.0, ((rgb >> 8) & 0xff) / 255.0,
                                       (rgb & 0xff) / 255.0, 1.0);
}

std::u16string stringValue(const ns::Color &color) {
  auto space = color.colorSpaceName();
  const ns::Color *rgb = &color;
  ns::ColorPtr converted;
  if (space != ns::CalibratedRGBColorSpace && space != ns::DeviceRGBColorSpace) {
    converted = color.colorUsingColorSpaceName(ns::CalibratedRGBColorSpace);
    if (!converted)
      return u"#ffffff";
    rgb = converted.get();
  }
  auto byte = [](double component) { return static_cast<unsigned>(component * 255.0); };
  return ns::format(u"#%2.2x%2.2x%2.2x", byte(rgb->redComponent()), byte(rgb->greenComponent()),
                    byte(rgb->blueComponent()));
}

} // namespace vl
