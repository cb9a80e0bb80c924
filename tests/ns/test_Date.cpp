// Dates, the injectable clock, time zones, date formatting and the log sink.
#include "ns/Date.h"
#include "ns/Log.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace vl::ns;

TEST(Date, CountsFromTheReferenceDateOnAReplaceableClock) {
  EXPECT_EQ(Date::dateWithTimeIntervalSince1970(978307200.0).timeIntervalSinceReferenceDate(), 0);
  Clock previous = setClock([] { return Date(42); });
  EXPECT_EQ(Date::now().timeIntervalSinceReferenceDate(), 42);
  setClock(previous);
  EXPECT_GT(Date::now().timeIntervalSinceReferenceDate(), 7.0e8); // after 2023
}

TEST(Date, FormatsAndParsesWithTheSessionPattern) {
  Date date(0);
  EXPECT_EQ(formatDate(date, u"yyyy-MM-dd HH:mm:ss ZZZ", TimeZone::utc()),
            u"2001-01-01 00:00:00 +0000");
  EXPECT_EQ(formatDate(date, u"yyyy-MM-dd HH:mm:ss ZZZ", TimeZone(u"Europe/Paris")),
            u"2001-01-01 01:00:00 +0100");
  auto parsed = parseDate(u"2001-01-01 01:00:00 +0100", u"yyyy-MM-dd HH:mm:ss ZZZ");
  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->timeIntervalSinceReferenceDate(), 0);
  EXPECT_FALSE(parseDate(u"yesterday", u"yyyy-MM-dd HH:mm:ss ZZZ"));
}

TEST(Date, DefaultTimeZoneCanBeSetForTests) {
  TimeZone::setDefaultTimeZone(TimeZone(u"Asia/Tokyo"));
  EXPECT_EQ(formatDate(Date(0), u"HH:mm"), u"09:00");
  EXPECT_EQ(TimeZone::defaultTimeZone().secondsFromGMTForDate(Date(0)), 9 * 3600);
  TimeZone::setDefaultTimeZone(std::nullopt);
}

TEST(Log, IsOffByDefaultAndCanBeCaptured) {
  EXPECT_FALSE(isLogging());
  std::vector<std::string> lines;
  LogSink previous = setLogSink([&](LogLevel, std::string_view m) { lines.emplace_back(m); });
  log(LogLevel::Info, "hello");
  setLogSink(previous);
  log(LogLevel::Info, "unheard");
  EXPECT_EQ(lines, std::vector<std::string>{"hello"});
}
