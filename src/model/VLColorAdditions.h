// Colours as the strings of style sheets and files: "#rrggbb", "#rgb" and colour names.
#pragma once

#include "ns/Color.h"

#include <string>
#include <string_view>

namespace vl {

/// The colour a string names, as a device RGB colour with alpha 1. "#" and three hex digits
/// doubles each ("#abc" is "#aabbcc"); "#" and six is "#rrggbb"; any other length after "#"
/// answers nil. Hex digits are read up to the first character that is not one, as C's
/// strtol reads them, so "#12345g" is 0x012345 and "#gggggg" black. Without "#", the
/// lower-case name from the colour name table ("cornflowerblue"); an unknown name, or one
/// in another case, answers nil.
ns::ColorPtr colorWithStringValue(std::u16string_view string);

/// "#rrggbb" of the colour's RGB values (calibrated, unless the colour is already in a
/// calibrated or device RGB space), each channel times 255 truncated, not rounded: a round
/// trip is exact only for whole bytes. "#ffffff" when the colour has no RGB form (a pattern).
std::u16string stringValue(const ns::Color &color);

} // namespace vl
