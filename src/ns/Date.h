// Points in time as seconds since the reference date (2001-01-01 00:00:00 UTC), the
// platform's NSDate, with an injectable clock and ICU-backed formatting.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vl::ns {

/// Seconds between 1970-01-01 and 2001-01-01, both UTC.
inline constexpr double TimeIntervalSince1970 = 978307200.0;

class Date {
public:
  constexpr Date() = default;
  constexpr explicit Date(double secondsSinceReferenceDate) : seconds_(secondsSinceReferenceDate) {}
  static Date dateWithTimeIntervalSince1970(double seconds) {
    return Date(seconds - TimeIntervalSince1970);
  }
  /// The clock's present time (the system clock unless a test replaced it).
  static Date now();

  constexpr double timeIntervalSinceReferenceDate() const { return seconds_; }
  constexpr double timeIntervalSince1970() const { return seconds_ + TimeIntervalSince1970; }
  constexpr double timeIntervalSinceDate(Date other) const { return seconds_ - other.seconds_; }
  constexpr Date dateByAddingTimeInterval(double seconds) const { return Date(seconds_ + seconds); }

  constexpr auto operator<=>(const Date &) const = default;

private:
  double seconds_ = 0;
};

/// Replaces the clock behind Date::now(); an empty function restores the system clock.
/// Answers the clock it replaces. For tests.
using Clock = std::function<Date()>;
Clock setClock(Clock clock);

/// A time zone by identifier ("UTC", "Europe/Paris"); the default is the process's own
/// zone unless set with setDefault (tests set "UTC").
class TimeZone {
public:
  explicit TimeZone(std::u16string identifier) : identifier_(std::move(identifier)) {}
  static TimeZone defaultTimeZone();
  static void setDefaultTimeZone(std::optional<TimeZone> zone);
  static TimeZone utc() { return TimeZone(u"UTC"); }
  const std::u16string &name() const { return identifier_; }
  /// Seconds east of UTC at the given date.
  int secondsFromGMTForDate(Date date) const;

private:
  std::u16string identifier_;
};

/// Formats `date` with an ICU date pattern such as "yyyy-MM-dd HH:mm:ss ZZZ" in the POSIX
/// locale, in `zone` (the default zone when empty).
std::u16string formatDate(Date date, std::u16string_view pattern,
                          std::optional<TimeZone> zone = std::nullopt);

/// Parses `text` with the same kind of pattern; nullopt when it does not match.
std::optional<Date> parseDate(std::u16string_view text, std::u16string_view pattern,
                              std::optional<TimeZone> zone = std::nullopt);

} // namespace vl::ns
