// VLMeasurementUnitsFormatter: shows lengths held in points in the user's unit ("1 in",
// "2.54 cm") and reads what the user types back into points.
#pragma once

#include "ns/NumberFormatter.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl {

class VLMeasurementUnitsFormatter;
using VLMeasurementUnitsFormatterPtr = std::shared_ptr<VLMeasurementUnitsFormatter>;

/// The number itself is shown and read by the base number formatter, which the host sets
/// up (digits, locale); this class adds the unit. Its unit numbers are its own: 1 inches,
/// 2 centimetres, 3 points, 4 picas. Centimetres count 28.35 points here, not the exact
/// factor of VLLengthValue, so a round trip through both classes is not exact.
///
/// Archived as its base number formatter; the unit is the user's and is read again from the
/// user defaults on decoding, and multipleValuesString is not archived.
class VLMeasurementUnitsFormatter : public ns::NumberFormatter {
public:
  /// Takes the user's unit (resetMeasurmentUnits).
  VLMeasurementUnitsFormatter();

  VL_OBJECT(VLMeasurementUnitsFormatter)

  int32_t measurementUnits() const { return _measurementUnits; }
  void setMeasurementUnits(int32_t units) { _measurementUnits = units; }
  /// Sets the unit from the user default "AppleMeasurementUnits": "Inches" 1, "Centimetres"
  /// or "Centimeters" 2, "Points" 3, "Picas" 4, anything else or nothing 1.
  void resetMeasurmentUnits();
  /// What to show in place of a value when a selection holds several; nil shows values.
  const std::optional<std::u16string> &multipleValuesString() const {
    return _multipleValuesString;
  }
  void setMultipleValuesString(std::optional<std::u16string> string) {
    _multipleValuesString = std::move(string);
  }

  /// multipleValuesString when set. Otherwise the value in points (read as a single-precision
  /// number, nil as 0) converted to the unit, formatted by the base formatter, then a blank
  /// and the localized unit word ("in", "cm", "pt", "pc"); a unit number outside 1...4 shows
  /// the number alone.
  std::optional<std::u16string> stringForObjectValue(const ns::Value &value) const override;
  /// Reads a number with an optional unit word into points, as a single-precision number.
  /// The unit is the first of "in" (not localized), then the localized "cm", "pt" and "pc",
  /// that occurs anywhere in the string; the text is cut before it, trimmed, and parsed by
  /// the base formatter. Without a unit word the number is in measurementUnits. Answers
  /// false, with the base formatter's error description, when the number does not parse.
  bool getObjectValue(ns::Value *out, std::u16string_view string,
                      std::u16string *errorDescription) const override;
  /// Nil, so that the plain string is shown.
  std::shared_ptr<ns::AttributedString>
  attributedStringForObjectValue(const ns::Value &value,
                                 const ns::DictionaryPtr &defaultAttributes) const override;

  ns::ObjectPtr copy() const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

private:
  int32_t _measurementUnits = 1;
  std::optional<std::u16string> _multipleValuesString;
};

} // namespace vl
