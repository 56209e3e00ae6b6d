#include <KestrelKit/foundation/Iso8601.h>
#include <KestrelKit/model/DayKeyFormatter.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kestrel {
namespace {

DayKeyFormatter in(std::string_view zone) { return DayKeyFormatter{*TimeZone::named(zone)}; }

Instant at(std::string_view text) { return instantFromIso8601(text).value(); }

// The instant at which a day starts, in UTC.
std::string start(std::string_view zone, std::string_view key) {
  const auto instant = in(zone).date(key);
  return instant ? iso8601Text(*instant).value_or("unprintable") : "absent";
}

TEST(DayKeyFormatter, givesTheLocalDayAt2330WhateverItIsInUtc) {
  EXPECT_EQ(in("America/Los_Angeles").key(at("2024-05-02T06:30:00Z")), "2024-05-01");
  EXPECT_EQ(in("Pacific/Auckland").key(at("2024-05-01T11:30:00Z")), "2024-05-01");
  EXPECT_EQ(in("Pacific/Kiritimati").key(at("2024-05-01T09:30:00Z")), "2024-05-01");
  EXPECT_EQ(in("UTC").key(at("2024-05-01T23:30:00Z")), "2024-05-01");
}

TEST(DayKeyFormatter, changesTheDayAtMidnight) {
  const Instant midnight = at("2024-02-29T00:00:00+01:00");
  const DayKeyFormatter berlin = in("Europe/Berlin");
  EXPECT_EQ(berlin.key(midnight), "2024-02-29");
  EXPECT_EQ(berlin.key(instantSinceReferenceDate(std::nextafter(secondsSinceReferenceDate(midnight), 0))),
            "2024-02-28");
  EXPECT_EQ(in("UTC").key(instantSinceReferenceDate(std::nextafter(0.0, -1.0))), "2000-12-31");
}

TEST(DayKeyFormatter, startsADayAtItsMidnight) {
  EXPECT_EQ(start("Europe/Berlin", "2024-03-31"), "2024-03-30T23:00:00Z");
  EXPECT_EQ(start("Europe/Berlin", "2024-04-01"), "2024-03-31T22:00:00Z");
  EXPECT_EQ(start("UTC", "2024-05-01"), "2024-05-01T00:00:00Z");
}

TEST(DayKeyFormatter, startsADayWhoseMidnightIsSkippedAtItsFirstInstant) {
  // The clocks of Santiago went from 2024-09-08 00:00 (UTC-4) to 01:00 (UTC-3).
  EXPECT_EQ(start("America/Santiago", "2024-09-08"), "2024-09-08T04:00:00Z");
}

TEST(DayKeyFormatter, startsADayWithTwoMidnightsAtTheEarlier) {
  // The clocks of Havana went back from 2024-11-03 01:00 (UTC-4) to 00:00 (UTC-5).
  EXPECT_EQ(start("America/Havana", "2024-11-03"), "2024-11-03T04:00:00Z");
}

TEST(DayKeyFormatter, readsNoMalformedText) {
  for (const std::string_view key : {"", "2024-5-1", "2024-02-30", "0000-01-01", "2024-05-01T00:00:00Z",
                                     " 2024-05-01", "2024-05-01 ", "yesterday", "20240501", "10000-01-01"}) {
    EXPECT_EQ(in("UTC").date(key), std::nullopt) << key;
  }
}

TEST(DayKeyFormatter, hasKeysOfTheYears0001To9999) {
  const DayKeyFormatter utc = in("UTC");
  EXPECT_EQ(utc.key(at("0001-01-01T00:00:00Z")), "0001-01-01");
  EXPECT_EQ(utc.key(at("0001-01-01T00:00:00Z") - Seconds{1}), std::nullopt);
  EXPECT_EQ(utc.key(at("9999-12-31T23:59:59Z")), "9999-12-31");
  EXPECT_EQ(utc.key(at("9999-12-31T23:59:59Z") + Seconds{1}), std::nullopt);
  // Beyond what the calendar types can count the years of, up to the ends of what has a time on the clocks.
  for (const double since : {1.0e12, 2.068e12, -2.068e12, 0x1p53, -0x1p53, 0x1p54, 1e300, -1e300, std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(), std::nan("")}) {
    EXPECT_EQ(utc.key(instantSinceReferenceDate(since)), std::nullopt);
  }
}

TEST(DayKeyFormatter, givesTheKeyOfEveryDayItReads) {
  for (const std::string_view zone :
       {"America/Santiago", "America/Havana", "Asia/Kathmandu", "Pacific/Chatham"}) {
    const DayKeyFormatter formatter = in(zone);
    for (std::chrono::sys_days day = std::chrono::year{1960} / 1 / 1; day < std::chrono::year{2040} / 1 / 1;
         day += std::chrono::days{1}) {
      const std::string key = iso8601Text(ReferenceClock::fromSystem(day))->substr(0, 10);
      const auto instant = formatter.date(key);
      ASSERT_TRUE(instant) << key;
      ASSERT_EQ(formatter.key(*instant), key) << zone;
      ASSERT_NE(formatter.key(*instant - Seconds{0.5}), key) << zone;
    }
  }
}

}  // namespace
}  // namespace kestrel
