// VLLengthValue: a length with a unit, read from text such as "12pt" or "2.54cm", and its
// size in points.
#pragma once

#include "ns/Object.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace vl {

class VLLengthValue;
using VLLengthValuePtr = std::shared_ptr<VLLengthValue>;

/// Unit codes and their points per unit: 0 points (1), 1 inches (72), 2 percent (1),
/// 3 picas (12), 4 pixels (1), 5 centimetres (28.346456692913385), 6 millimetres
/// (2.834645669291339). Any other code counts 1 point per unit.
class VLLengthValue : public ns::Object {
public:
  /// 0 points.
  VLLengthValue() = default;
  VLLengthValue(double value, int32_t units) : _units(units), _value(value) {}

  VL_OBJECT(VLLengthValue)

  /// Reads a number (single precision, after any white space) and a unit word right after
  /// it, white space between allowed, case ignored: "pt" 0, "in" 1, "px" 4, "cm" 5, "pc" 1
  /// (picas are read as inches, so "1pc" is 72 points), "%" 2. Text after the unit is
  /// ignored. Answers false, storing nothing, when there is no number or no unit word: a bare
  /// number is not a length. `result` and `units` may be null.
  static bool scanLengthValue(std::u16string_view string, double *result, int32_t *units);
  /// `value` times the points per unit of `units`; codes outside the table, negative ones
  /// included, leave it unchanged.
  static double pixelsForValue(double value, int32_t units);
  /// A length from a successful scan, or nil.
  static VLLengthValuePtr lengthValueWithString(std::u16string_view string);

  /// The length in points.
  double points() const { return pixelsForValue(_value, _units); }
  double value() const { return _value; }
  void setValue(double value) { _value = value; }
  int32_t units() const { return _units; }
  void setUnits(int32_t units) { _units = units; }

private:
  int32_t _units = 0;
  double _value = 0;
};

} // namespace vl
