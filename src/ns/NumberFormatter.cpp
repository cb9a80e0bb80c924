// NumberFormatter: ICU decimal formats set up from the formatter's style and digit settings.
#include "ns/NumberFormatter.h"

#include "ns/Bundle.h"
#include "ns/String.h"

#include <unicode/uformattable.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

namespace vl::ns {

VL_REGISTER_CLASS(NumberFormatter);

namespace {

// Fraction digits beyond what a double carries only make ICU work harder.
constexpr int64_t maxDigits = 340;

int64_t clampDigits(int64_t digits) {
  return std::clamp<int64_t>(digits, 0, maxDigits);
}

// Runs an ICU call that writes UTF-16 into a buffer, growing the buffer once if needed.
template <class Call> std::optional<std::u16string> formatted(Call call) {
  std::u16string out(32, u'\0');
  UErrorCode status = U_ZERO_ERROR;
  int32_t length = call(out.data(), static_cast<int32_t>(out.size()), &status);
  if (status == U_BUFFER_OVERFLOW_ERROR) {
    out.assign(static_cast<size_t>(length), u'\0');
    status = U_ZERO_ERROR;
    length = call(out.data(), static_cast<int32_t>(out.size()), &status);
  }
  if (U_FAILURE(status) || length < 0)
    return std::nullopt;
  out.resize(static_cast<size_t>(length));
  return out;
}

// Whether the data ICU found for `locale` is of its language (or the root's), and not of
// the process's default locale.
bool servesLanguage(const UNumberFormat *format, const std::string &locale) {
  UErrorCode status = U_ZERO_ERROR;
  const char *valid = unum_getLocaleByType(format, ULOC_VALID_LOCALE, &status);
  if (U_FAILURE(status) || !valid || !*valid || std::string_view(valid) == "root")
    return true;
  char wanted[ULOC_LANG_CAPACITY] = {};
  char found[ULOC_LANG_CAPACITY] = {};
  UErrorCode wantedStatus = U_ZERO_ERROR;
  UErrorCode foundStatus = U_ZERO_ERROR;
  uloc_getLanguage(locale.c_str(), wanted, ULOC_LANG_CAPACITY, &wantedStatus);
  uloc_getLanguage(valid, found, ULOC_LANG_CAPACITY, &foundStatus);
  return U_SUCCESS(wantedStatus) && U_SUCCESS(foundStatus) &&
         std::string_view(wanted) == std::string_view(found);
}

} // namespace

NumberFormatter::NumberFormatter() = default;

NumberFormatter::NumberFormatter(const NumberFormatter &other)
    : Object(other), Coding(other), locale_(other.locale_), style_(other.style_),
      minimumFractionDigits_(other.minimumFractionDigits_),
      maximumFractionDigits_(other.maximumFractionDigits_),
      usesGroupingSeparator_(other.usesGroupingSeparator_),
      // The built ICU formatter is never changed after it is built, so copies may share it.
      format_(other.format_) {}

NumberFormatter::~NumberFormatter() = default;

void NumberFormatter::setLocale(std::string localeIdentifier) {
  locale_ = std::move(localeIdentifier);
  invalidate();
}

void NumberFormatter::setNumberStyle(NumberFormatterStyle style) {
  style_ = style == NumberFormatterDecimalStyle ? style : NumberFormatterNoStyle;
  bool decimal = style_ == NumberFormatterDecimalStyle;
  minimumFractionDigits_ = 0;
  maximumFractionDigits_ = decimal ? 3 : 0;
  usesGroupingSeparator_ = decimal;
  invalidate();
}

void NumberFormatter::setMinimumFractionDigits(int64_t digits) {
  minimumFractionDigits_ = clampDigits(digits);
  maximumFractionDigits_ = std::max(maximumFractionDigits_, minimumFractionDigits_);
  invalidate();
}

void NumberFormatter::setMaximumFractionDigits(int64_t digits) {
  maximumFractionDigits_ = clampDigits(digits);
  minimumFractionDigits_ = std::min(minimumFractionDigits_, maximumFractionDigits_);
  invalidate();
}

void NumberFormatter::setUsesGroupingSeparator(bool uses) {
  usesGroupingSeparator_ = uses;
  invalidate();
}

void *NumberFormatter::format() const {
  if (format_)
    return format_.get();
  UErrorCode status = U_ZERO_ERROR;
  UNumberFormat *format = unum_open(UNUM_DECIMAL, nullptr, 0, locale_.c_str(), nullptr, &status);
  if (U_SUCCESS(status) && format && !servesLanguage(format, locale_)) {
    // ICU stands the process's locale in for one it lacks; the root locale does not depend
    // on the machine.
    unum_close(format);
    format = unum_open(UNUM_DECIMAL, nullptr, 0, "", nullptr, &status);
  }
  if (U_FAILURE(status) || !format) {
    if (format)
      unum_close(format);
    return nullptr;
  }
  unum_setAttribute(format, UNUM_GROUPING_USED, usesGroupingSeparator_ ? 1 : 0);
  unum_setAttribute(format, UNUM_MAX_FRACTION_DIGITS, static_cast<int32_t>(maximumFractionDigits_));
  unum_setAttribute(format, UNUM_MIN_FRACTION_DIGITS, static_cast<int32_t>(minimumFractionDigits_));
  unum_setAttribute(format, UNUM_ROUNDING_MODE, UNUM_ROUND_HALFEVEN);
  format_ =
      std::shared_ptr<void>(format, [](void *f) { unum_close(static_cast<UNumberFormat *>(f)); });
  return format;
}

std::optional<std::u16string> NumberFormatter::stringFromNumber(const Value &number) const {
  if (!number.isNumber())
    return std::nullopt;
  auto *fmt = static_cast<UNumberFormat *>(format());
  if (!fmt)
    return std::nullopt;
  switch (number.kind()) {
  case Value::Kind::Double:
  case Value::Kind::Float: {
    double d = number.doubleValue();
    return formatted([&](UChar *buffer, int32_t capacity, UErrorCode *status) {
      return unum_formatDouble(fmt, d, buffer, capacity, nullptr, status);
    });
  }
  case Value::Kind::UInt:
    if (number.unsignedIntegerValue() >
        static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) {
      std::string digits = std::to_string(number.unsignedIntegerValue());
      return formatted([&](UChar *buffer, int32_t capacity, UErrorCode *status) {
        return unum_formatDecimal(fmt, digits.c_str(), static_cast<int32_t>(digits.size()), buffer,
                                  capacity, nullptr, status);
      });
    }
    [[fallthrough]];
  default: {
    int64_t i = number.integerValue();
    return formatted([&](UChar *buffer, int32_t capacity, UErrorCode *status) {
      return unum_formatInt64(fmt, i, buffer, capacity, nullptr, status);
    });
  }
  }
}

Value NumberFormatter::numberFromString(std::u16string_view string) const {
  std::u16string text = trimmed(string);
  auto *fmt = static_cast<UNumberFormat *>(format());
  if (text.empty() || !fmt || text.size() > static_cast<size_t>(INT32_MAX))
    return Value();
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<UFormattable, void (*)(UFormattable *)> result(ufmt_open(&status), ufmt_close);
  if (U_FAILURE(status))
    return Value();
  int32_t position = 0;
  unum_parseToUFormattable(fmt, result.get(), text.data(), static_cast<int32_t>(text.size()),
                           &position, &status);
  if (U_FAILURE(status) || position != static_cast<int32_t>(text.size()))
    return Value();
  switch (ufmt_getType(result.get(), &status)) {
  case UFMT_LONG:
  case UFMT_INT64: {
    int64_t i = ufmt_getInt64(result.get(), &status);
    return U_FAILURE(status) ? Value() : Value(i);
  }
  case UFMT_DOUBLE: {
    double d = ufmt_getDouble(result.get(), &status);
    return U_FAILURE(status) ? Value() : Value(d);
  }
  default:
    return Value();
  }
}

std::optional<std::u16string> NumberFormatter::stringForObjectValue(const Value &value) const {
  return stringFromNumber(value);
}

bool NumberFormatter::getObjectValue(Value *out, std::u16string_view string,
                                     std::u16string *errorDescription) const {
  Value number = numberFromString(string);
  if (number.isNil()) {
    if (errorDescription)
      *errorDescription = Bundle::mainBundle()->localizedStringForKey(u"Invalid number");
    return false;
  }
  if (out)
    *out = std::move(number);
  return true;
}

std::shared_ptr<AttributedString>
NumberFormatter::attributedStringForObjectValue(const Value &, const DictionaryPtr &) const {
  return nullptr;
}

ObjectPtr NumberFormatter::copy() const {
  return std::make_shared<NumberFormatter>(*this);
}

void NumberFormatter::encodeWithCoder(KeyedArchiver &coder) const {
  coder.encodeObject(Value(fromUTF8(locale_)), u"locale");
  coder.encodeInteger(style_, u"numberStyle");
  coder.encodeInteger(minimumFractionDigits_, u"minimumFractionDigits");
  coder.encodeInteger(maximumFractionDigits_, u"maximumFractionDigits");
  coder.encodeBool(usesGroupingSeparator_, u"usesGroupingSeparator");
}

void NumberFormatter::initWithCoder(KeyedUnarchiver &coder) {
  locale_ = toUTF8(coder.decodeObjectForKey(u"locale").string());
  setNumberStyle(static_cast<NumberFormatterStyle>(coder.decodeIntegerForKey(u"numberStyle")));
  if (coder.containsValueForKey(u"maximumFractionDigits"))
    setMaximumFractionDigits(coder.decodeIntegerForKey(u"maximumFractionDigits"));
  if (coder.containsValueForKey(u"minimumFractionDigits"))
    setMinimumFractionDigits(coder.decodeIntegerForKey(u"minimumFractionDigits"));
  if (coder.containsValueForKey(u"usesGroupingSeparator"))
    setUsesGroupingSeparator(coder.decodeBoolForKey(u"usesGroupingSeparator"));
}

} // namespace vl::ns
