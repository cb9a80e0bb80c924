// VLLengthValue: the unit scanner and the unit factors.
#include "model/VLLengthValue.h"

#include "ns/Scanner.h"

#include <array>
#include <string>
#include <utility>

namespace vl {

namespace {

constexpr std::array<double, 7> pointsPerUnit = {
    1.0,                // points
    72.0,               // inches
    1.0,                // percent
    12.0,               // picas
    1.0,                // pixels
    28.346456692913385, // centimetres
    2.834645669291339,  // millimetres
};

// Tried in this order after the number. "pc" maps to the inch code: documents written with
// that reading must keep their sizes.
constexpr std::pair<std::u16string_view, int32_t> unitWords[] = {
    {u"pt", 0}, {u"in", 1}, {u"px", 4}, {u"cm", 5}, {u"pc", 1}, {u"%", 2},
};

} // namespace

bool VLLengthValue::scanLengthValue(std::u16string_view string, double *result, int32_t *units) {
  ns::Scanner scanner{std::u16string(string)};
  float number = 0;
  if (!scanner.scanFloat(&number))
    return false;
  for (const auto &[word, code] : unitWords) {
    if (!scanner.scanString(word, nullptr))
      continue;
    if (result)
      *result = static_cast<double>(number);
    if (units)
      *units = code;
    return true;
  }
  return false;
}

double VLLengthValue::pixelsForValue(double value, int32_t units) {
  auto index = static_cast<uint32_t>(units);
  return index < pointsPerUnit.size() ? value * pointsPerUnit[index] : value;
}

VLLengthValuePtr VLLengthValue::lengthValueWithString(std::u16string_view string) {
  double value = 0;
  int32_t units = 0;
  if (!scanLengthValue(string, &value, &units))
    return nullptr;
  return std::make_shared<VLLengthValue>(value, units);
}

} // namespace vl
