// VLMeasurementUnitsFormatter: unit conversion around the base number formatter.
#include "model/VLMeasurementUnitsFormatter.h"

#include "ns/Bundle.h"
#include "ns/String.h"
#include "ns/UserDefaults.h"

namespace vl {

VL_REGISTER_CLASS(VLMeasurementUnitsFormatter);

namespace {

enum Units : int32_t { Inches = 1, Centimetres = 2, Points = 3, Picas = 4 };

constexpr double pointsPerInch = 72.0;
// A rounded factor: what the unit menus of the application have always shown.
constexpr double pointsPerCentimetre = 28.35;
constexpr double pointsPerPica = 12.0;

std::u16string localized(std::u16string_view key) {
  return ns::Bundle::mainBundle()->localizedStringForKey(key);
}

double pointsPerUnit(int32_t units) {
  switch (units) {
  case Inches:
    return pointsPerInch;
  case Centimetres:
    return pointsPerCentimetre;
  case Picas:
    return pointsPerPica;
  default:
    return 1.0;
  }
}

} // namespace

VLMeasurementUnitsFormatter::VLMeasurementUnitsFormatter() {
  resetMeasurmentUnits();
}

void VLMeasurementUnitsFormatter::resetMeasurmentUnits() {
  auto name = ns::UserDefaults::standardUserDefaults()->stringForKey(u"AppleMeasurementUnits");
  _measurementUnits = Inches;
  if (!name)
    return;
  if (*name == u"Centimetres" || *name == u"Centimeters")
    _measurementUnits = Centimetres;
  else if (*name == u"Points")
    _measurementUnits = Points;
  else if (*name == u"Picas")
    _measurementUnits = Picas;
}

std::optional<std::u16string>
VLMeasurementUnitsFormatter::stringForObjectValue(const ns::Value &value) const {
  if (_multipleValuesString)
    return _multipleValuesString;
  float number = value.floatValue();
  std::u16string_view unit;
  switch (_measurementUnits) {
  case Inches:
    unit = u"in";
    break;
  case Centimetres:
    unit = u"cm";
    break;
  case Points:
    unit = u"pt";
    break;
  case Picas:
    unit = u"pc";
    break;
  default:
    break;
  }
  number = static_cast<float>(number / pointsPerUnit(_measurementUnits));
  auto text = NumberFormatter::stringForObjectValue(ns::Value(number));
  if (!text || unit.empty())
    return text;
  return ns::format(u"%@ %@", *text, localized(unit));
}

bool VLMeasurementUnitsFormatter::getObjectValue(ns::Value *out, std::u16string_view string,
                                                 std::u16string *errorDescription) const {
  // The order of the words decides, not where they stand: "3 in = 7.62 cm" is 3 inches.
  // "in" is matched as written, though it is shown localized.
  const std::pair<std::u16string, int32_t> words[] = {
      {u"in", Inches},
      {localized(u"cm"), Centimetres},
      {localized(u"pt"), Points},
      {localized(u"pc"), Picas},
  };
  int32_t units = _measurementUnits;
  std::u16string_view text = string;
  for (const auto &[word, code] : words) {
    ns::Range found = ns::rangeOfString(string, word);
    if (found.location == ns::NotFound)
      continue;
    units = code;
    text = string.substr(0, found.location);
    break;
  }
  ns::Value number;
  if (!NumberFormatter::getObjectValue(&number, ns::trimmed(text), errorDescription))
    return false;
  if (out)
    *out = ns::Value(static_cast<float>(number.doubleValue() * pointsPerUnit(units)));
  return true;
}

std::shared_ptr<ns::AttributedString>
VLMeasurementUnitsFormatter::attributedStringForObjectValue(const ns::Value &,
                                                            const ns::DictionaryPtr &) const {
  return nullptr;
}

ns::ObjectPtr VLMeasurementUnitsFormatter::copy() const {
  return std::make_shared<VLMeasurementUnitsFormatter>(*this);
}

void VLMeasurementUnitsFormatter::initWithCoder(ns::KeyedUnarchiver &coder) {
  NumberFormatter::initWithCoder(coder);
  resetMeasurmentUnits();
}

} // namespace vl
