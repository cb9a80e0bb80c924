// Dates, the injectable clock, time zones and ICU date formatting.
#include "ns/Date.h"

#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <chrono>
#include <memory>

namespace vl::ns {

namespace {
Clock &currentClock() {
  static Clock clock;
  return clock;
}

std::optional<TimeZone> &defaultZone() {
  static std::optional<TimeZone> zone;
  return zone;
}

std::unique_ptr<icu::TimeZone> icuZone(const std::optional<TimeZone> &zone) {
  TimeZone z = zone ? *zone : TimeZone::defaultTimeZone();
  icu::UnicodeString id(reinterpret_cast<const UChar *>(z.name().data()),
                        static_cast<int32_t>(z.name().size()));
  return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(id));
}

std::unique_ptr<icu::SimpleDateFormat> formatter(std::u16string_view pattern,
                                                 const std::optional<TimeZone> &zone) {
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString p(reinterpret_cast<const UChar *>(pattern.data()),
                       static_cast<int32_t>(pattern.size()));
  auto f = std::make_unique<icu::SimpleDateFormat>(p, icu::Locale("en_US_POSIX"), status);
  if (U_FAILURE(status))
    return nullptr;
  f->adoptTimeZone(icuZone(zone).release());
  return f;
}
} // namespace

Date Date::now() {
  if (auto &clock = currentClock())
    return clock();
  using namespace std::chrono;
  double seconds = duration_cast<duration<double>>(system_clock::now().time_since_epoch()).count();
  return dateWithTimeIntervalSince1970(seconds);
}

Clock setClock(Clock clock) {
  Clock previous = std::move(currentClock());
  currentClock() = std::move(clock);
  return previous;
}

TimeZone TimeZone::defaultTimeZone() {
  if (defaultZone())
    return *defaultZone();
  std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
  icu::UnicodeString id;
  zone->getID(id);
  return TimeZone(std::u16string(reinterpret_cast<const char16_t *>(id.getBuffer()),
                                 static_cast<size_t>(id.length())));
}

void TimeZone::setDefaultTimeZone(std::optional<TimeZone> zone) {
  defaultZone() = std::move(zone);
}

int TimeZone::secondsFromGMTForDate(Date date) const {
  auto zone = icuZone(*this);
  int32_t raw = 0, dst = 0;
  UErrorCode status = U_ZERO_ERROR;
  zone->getOffset(date.timeIntervalSince1970() * 1000.0, false, raw, dst, status);
  if (U_FAILURE(status))
    return 0;
  return (raw + dst) / 1000;
}

std::u16string formatDate(Date date, std::u16string_view pattern, std::optional<TimeZone> zone) {
  auto f = formatter(pattern, zone);
  if (!f)
    return {};
  icu::UnicodeString out;
  f->format(date.timeIntervalSince1970() * 1000.0, out);
  return std::u16string(reinterpret_cast<const char16_t *>(out.getBuffer()),
                        static_cast<size_t>(out.length()));
}

std::optional<Date> parseDate(std::u16string_view text, std::u16string_view pattern,
                              std::optional<TimeZone> zone) {
  auto f = formatter(pattern, zone);
  if (!f)
    return std::nullopt;
  f->setLenient(false);
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString t(reinterpret_cast<const UChar *>(text.data()),
                       static_cast<int32_t>(text.size()));
  UDate d = f->parse(t, status);
  if (U_FAILURE(status))
    return std::nullopt;
  return Date::dateWithTimeIntervalSince1970(d / 1000.0);
}

} // namespace vl::ns
