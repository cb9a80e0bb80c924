// NumberFormatter: numbers to text and back in a locale's decimal notation (the platform's
// NSNumberFormatter), over ICU's number formats.
#pragma once

#include "ns/Dictionary.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"
#include "ns/Value.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl::ns {

class AttributedString;
class NumberFormatter;
using NumberFormatterPtr = std::shared_ptr<NumberFormatter>;

/// Number styles, as the platform numbers them.
enum NumberFormatterStyle : int64_t {
  /// Whole numbers without grouping: 1234.5 shows as "1234" (halves round to even).
  NumberFormatterNoStyle = 0,
  /// Grouping and up to three fraction digits: "1,234.5".
  NumberFormatterDecimalStyle = 1,
};

/// Formats in the root locale unless told otherwise, so that output never depends on the
/// machine's settings. The ICU formatter is built on first use after a change and kept; a
/// call then costs one ICU format or parse. Rounding is half-even.
///
/// Keyed coding keys: "locale" (string), "numberStyle", "minimumFractionDigits",
/// "maximumFractionDigits" (integers), "usesGroupingSeparator" (boolean).
class NumberFormatter : public Object, public Coding {
public:
  /// No style, root locale.
  NumberFormatter();
  NumberFormatter(const NumberFormatter &other);
  NumberFormatter &operator=(const NumberFormatter &) = delete;
  ~NumberFormatter() override;

  VL_OBJECT(NSNumberFormatter)

  /// An ICU locale identifier ("de_DE", "fr"); "" is the root locale. An identifier ICU does
  /// not know falls back on the root locale's notation.
  const std::string &locale() const { return locale_; }
  void setLocale(std::string localeIdentifier);

  NumberFormatterStyle numberStyle() const { return style_; }
  /// Also resets the fraction digits and grouping to the style's own (no style: 0 and 0
  /// digits, no grouping; decimal: 0 and 3 digits, grouping), as the platform does. An
  /// unknown style counts as no style.
  void setNumberStyle(NumberFormatterStyle style);

  int64_t minimumFractionDigits() const { return minimumFractionDigits_; }
  /// Negative counts as 0; raises the maximum when it would fall below.
  void setMinimumFractionDigits(int64_t digits);
  int64_t maximumFractionDigits() const { return maximumFractionDigits_; }
  /// Negative counts as 0; lowers the minimum when it would rise above.
  void setMaximumFractionDigits(int64_t digits);
  bool usesGroupingSeparator() const { return usesGroupingSeparator_; }
  void setUsesGroupingSeparator(bool uses);

  /// The text of a number (booleans as 0 and 1); nil for nil and for values that are not
  /// numbers.
  std::optional<std::u16string> stringFromNumber(const Value &number) const;
  /// The number the whole of `string` spells, blanks and newlines at its ends aside: an
  /// integer value for whole numbers ICU reads as such, a double otherwise. Nil when any
  /// part of it is not a number ("12abc", "", "-").
  Value numberFromString(std::u16string_view string) const;

  /// stringFromNumber; subclasses show their own values.
  virtual std::optional<std::u16string> stringForObjectValue(const Value &value) const;
  /// numberFromString into `out`: true on success; on failure false, `out` left alone and
  /// `errorDescription` (when given) set to a localized "Invalid number".
  virtual bool getObjectValue(Value *out, std::u16string_view string,
                              std::u16string *errorDescription) const;
  /// The styled form of a value; nil here, which tells the caller to use the plain string.
  virtual std::shared_ptr<AttributedString>
  attributedStringForObjectValue(const Value &value, const DictionaryPtr &defaultAttributes) const;

  /// A formatter with the same settings.
  ObjectPtr copy() const override;

  void encodeWithCoder(KeyedArchiver &coder) const override;
  void initWithCoder(KeyedUnarchiver &coder) override;

private:
  // The ICU formatter (a UNumberFormat), built on demand; null when ICU cannot make one.
  void *format() const;
  void invalidate() { format_.reset(); }

  std::string locale_;
  NumberFormatterStyle style_ = NumberFormatterNoStyle;
  int64_t minimumFractionDigits_ = 0;
  int64_t maximumFractionDigits_ = 0;
  bool usesGroupingSeparator_ = false;
  mutable std::shared_ptr<void> format_;
};

} // namespace vl::ns
