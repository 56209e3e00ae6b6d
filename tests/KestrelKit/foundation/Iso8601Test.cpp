#include <KestrelKit/foundation/Iso8601.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kestrel {
namespace {

using namespace std::chrono;

// Seconds since the reference date of a time in UTC, by the calendar types.
double at(sys_days day, seconds time = {}) {
  return static_cast<double>((day - sys_days{2001y / January / 1}).count()) * 86400 +
         static_cast<double>(time.count());
}

std::string written(double since) { return iso8601Text(instantSinceReferenceDate(since)).value_or("absent"); }

TEST(Iso8601, writesUtcInWholeSeconds) {
  EXPECT_EQ(written(0), "2001-01-01T00:00:00Z");
  EXPECT_EQ(written(at(2024y / May / 1, 8h + 30min)), "2024-05-01T08:30:00Z");
  EXPECT_EQ(written(at(1969y / December / 31, 23h + 59min + 59s)), "1969-12-31T23:59:59Z");
}

TEST(Iso8601, roundsDownAlsoBeforeTheReferenceDate) {
  EXPECT_EQ(written(0.999), "2001-01-01T00:00:00Z");
  EXPECT_EQ(written(std::nextafter(0.0, -1.0)), "2000-12-31T23:59:59Z");
  EXPECT_EQ(written(-0.25), "2000-12-31T23:59:59Z");
  EXPECT_EQ(written(-1), "2000-12-31T23:59:59Z");
  EXPECT_EQ(written(std::nextafter(-1.0, -2.0)), "2000-12-31T23:59:58Z");
}

TEST(Iso8601, writesTheYears0001To9999) {
  const double first = at(1y / January / 1);
  const double end = at(year{10000} / January / 1);
  EXPECT_EQ(written(first), "0001-01-01T00:00:00Z");
  EXPECT_EQ(written(std::nextafter(first, -1e300)), "absent");
  EXPECT_EQ(written(std::nextafter(end, 0)), "9999-12-31T23:59:59Z");
  EXPECT_EQ(written(end), "absent");
}

TEST(Iso8601, writesNoInstantThatIsNotFinite) {
  for (const double since :
       {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN(), 1e300, -1e300}) {
    EXPECT_EQ(written(since), "absent");
  }
}

TEST(Iso8601, readsZuluAndNumericOffsets) {
  const Instant expected = instantSinceReferenceDate(at(2024y / May / 1, 8h + 30min));
  for (const std::string_view text :
       {"2024-05-01T08:30:00Z", "2024-05-01T08:30:00+00:00", "2024-05-01T08:30:00-00:00",
        "2024-05-01T10:30:00+02:00", "2024-05-01T10:30:00+0200", "2024-04-30T23:00:00-0930",
        "2024-05-02T08:29:00+23:59", "2024-04-30T08:31:00-23:59"}) {
    EXPECT_EQ(instantFromIso8601(text), expected) << text;
  }
}

TEST(Iso8601, readsNothingElse) {
  for (const std::string_view text : {"",
                                      "2024-05-01",
                                      "2024-05-01T08:30:00",
                                      "2024-05-01T08:30Z",
                                      "2024-05-01t08:30:00Z",
                                      "2024-05-01T08:30:00z",
                                      "2024-05-01 08:30:00Z",
                                      " 2024-05-01T08:30:00Z",
                                      "2024-05-01T08:30:00Z ",
                                      "2024-05-01T08:30:00.250Z",
                                      "2024-05-01T08:30:00.Z",
                                      "2024-05-01T08:30:00,5Z",
                                      "2024-05-01T08:30:00+02",
                                      "2024-05-01T08:30:00+2:00",
                                      "2024-05-01T08:30:00+02:0",
                                      "2024-05-01T08:30:00+02:00:00",
                                      "2024-05-01T08:30:00+24:00",
                                      "2024-05-01T08:30:00+23:60",
                                      "2024-05-01T08:30:00 Z",
                                      "2024-05-01T24:00:00Z",
                                      "2024-05-01T23:60:00Z",
                                      "2024-05-01T23:59:60Z",
                                      "2023-02-29T00:00:00Z",
                                      "0000-12-31T23:59:59Z",
                                      "10000-01-01T00:00:00Z",
                                      "2024-05-01T8:30:00Z",
                                      "20240501T083000Z",
                                      "2024-05-01T08:30:00ZZ",
                                      "2024-05-01T08:30:00+02:00Z",
                                      "2024-05-01T08:-1:00Z",
                                      "2024-05-01T08:30:00++0200",
                                      "2024-05-01T08:30:00+:0200"}) {
    EXPECT_EQ(instantFromIso8601(text), std::nullopt) << text;
  }
}

TEST(Iso8601, readsTheYears0001To9999InUtc) {
  EXPECT_EQ(instantFromIso8601("0001-01-01T00:00:00Z"), instantSinceReferenceDate(at(1y / January / 1)));
  EXPECT_EQ(instantFromIso8601("0001-01-01T00:00:00+00:01"), std::nullopt);
  EXPECT_TRUE(instantFromIso8601("0001-01-01T00:00:00-00:01"));
  EXPECT_EQ(instantFromIso8601("9999-12-31T23:59:59Z"),
            instantSinceReferenceDate(at(year{10000} / January / 1) - 1));
  EXPECT_EQ(instantFromIso8601("9999-12-31T23:59:59-00:01"), std::nullopt);
  EXPECT_TRUE(instantFromIso8601("9999-12-31T23:59:59+00:01"));
}

TEST(Iso8601, readsBackWhatItWrites) {
  for (double since = at(1y / January / 1); since < at(year{10000} / January / 1); since += 8'640'007) {
    ASSERT_EQ(instantFromIso8601(written(since)), instantSinceReferenceDate(since)) << written(since);
  }
}

}  // namespace
}  // namespace kestrel
