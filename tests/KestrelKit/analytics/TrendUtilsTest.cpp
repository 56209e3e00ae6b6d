#include <KestrelKit/analytics/TrendUtils.h>
#include <KestrelKit/foundation/Iso8601.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <list>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

struct Reading {
  Instant date;
  double value;
};

using Readings = std::vector<Reading>;

Instant at(std::string_view text) { return instantFromIso8601(text).value(); }

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr Seconds day(86'400);

const Calendar utc = Calendar::gregorian(TimeZone::utc());
const Instant end = at("2024-05-31T00:00:00Z");
const Instant start = at("2024-05-01T00:00:00Z");
const TrendResult zero{};

/// Of the 30 days before `end`.
TrendResult ofDefaultPeriod(const Readings& readings, TrendAggregation aggregation = TrendAggregation::sum) {
  return TrendUtils::trend(readings, &Reading::date, &Reading::value, aggregation, std::nullopt, end, {},
                           utc);
}

TrendResult between(Instant from, Instant to, const Readings& readings,
                    TrendAggregation aggregation = TrendAggregation::sum) {
  return TrendUtils::trend(readings, &Reading::date, &Reading::value, aggregation, from, to);
}

/// A period from 1 to 31 May with `current`, and the one before it with `previous`.
TrendResult compared(std::vector<double> previous, std::vector<double> current,
                     TrendAggregation aggregation = TrendAggregation::sum) {
  Readings readings;
  for (const double value : previous) {
    readings.push_back({start - 3 * day, value});
  }
  for (const double value : current) {
    readings.push_back({start + 3 * day, value});
  }
  return between(start, end, readings, aggregation);
}

TEST(TrendUtils, aSumOf15After10HasGrownBy50PercentInTheDefaultPeriodOf30Days) {
  EXPECT_EQ(
      ofDefaultPeriod({{at("2024-05-02T12:00:00Z"), 7},
                       {at("2024-04-10T20:00:00Z"), 4},
                       {at("2024-05-30T23:59:59Z"), 8},
                       {at("2024-04-30T23:59:59Z"), 6},
                       {at("2024-04-01T00:00:00Z") - Seconds(1), 1000},
                       {at("2024-05-31T00:00:01Z"), 1000}}),
      (TrendResult{.value = 50, .label = "vs previous 30 days", .currentValue = 15, .previousValue = 10}));
}

TEST(TrendUtils, aFallFrom15To10IsMinus33PercentTruncatedTowardZero) {
  EXPECT_EQ(
      compared({15}, {10}),
      (TrendResult{.value = -33, .label = "vs previous 30 days", .currentValue = 10, .previousValue = 15}));
}

TEST(TrendUtils, aPercentageLosesItsFractionAndIsNotRounded) {
  const std::pair<double, std::int64_t> rows[] = {
      {199.9, 99},
      {100.9, 0},
      {101, 1},
      {100, 0},
      {99.1, 0},
      {99, -1},
      {98.01, -1},
      {0, -100},
      {-1, -101},
      {250, 150},
      {1e15, 999'999'999'999'900},
  };
  for (const auto& [current, percent] : rows) {
    EXPECT_EQ(compared({100}, {current}).value, percent) << current;
  }
}

TEST(TrendUtils, thePreviousAggregatesSignIsNotCorrectedFor) {
  EXPECT_EQ(compared({-10}, {-15}).value, 50);
  EXPECT_EQ(compared({-10}, {-5}).value, -50);
  EXPECT_EQ(compared({-10}, {10}).value, -200);
  EXPECT_EQ(compared({-10}, {10}).previousValue, -10);
}

TEST(TrendUtils, aPreviousAggregateOf0IsTheZeroResultWhoseCurrentValueIs0) {
  EXPECT_EQ(compared({0}, {12}), zero);
  EXPECT_EQ(compared({-0.0}, {12}), zero);
  EXPECT_EQ(compared({5, -5}, {12}), zero);
  EXPECT_EQ(compared({5, -5}, {12}, TrendAggregation::average), zero);
  EXPECT_EQ(compared({0}, {infinity}), zero);
  EXPECT_NE(
      compared({std::numeric_limits<double>::denorm_min()}, {std::numeric_limits<double>::denorm_min()}),
      zero);
}

TEST(TrendUtils, aCurrentAggregateOf0IsAFallByAHundredPercent) {
  EXPECT_EQ(
      compared({12}, {0}),
      (TrendResult{.value = -100, .label = "vs previous 30 days", .currentValue = 0, .previousValue = 12}));
}

TEST(TrendUtils, anItemDatedExactlyAtThePeriodStartCountsInBothPeriods) {
  const auto result = between(start, end, {{start, 7}, {start - day, 1}, {start + day, 2}});
  EXPECT_EQ(result.previousValue, 8);
  EXPECT_EQ(result.currentValue, 9);
  EXPECT_EQ(between(start, end, {{start, 7}}).label, "vs previous 30 days");
}

TEST(TrendUtils, bothEndsBelongToAPeriodAndNothingBeyondThem) {
  const auto before = [](Instant instant) {
    return instantSinceReferenceDate(std::nextafter(secondsSinceReferenceDate(instant), -infinity));
  };
  const auto after = [](Instant instant) {
    return instantSinceReferenceDate(std::nextafter(secondsSinceReferenceDate(instant), infinity));
  };
  const Instant first = start - (end - start);
  const auto result = between(start, end,
                              {{before(first), 1},
                               {first, 2},
                               {after(first), 4},
                               {before(start), 8},
                               {start, 16},
                               {after(start), 32},
                               {before(end), 64},
                               {end, 128},
                               {after(end), 256},
                               {instantSinceReferenceDate(infinity), 512},
                               {instantSinceReferenceDate(-infinity), 1024},
                               {instantSinceReferenceDate(notANumber), 2048}});
  EXPECT_EQ(result.previousValue, 2 + 4 + 8 + 16);
  EXPECT_EQ(result.currentValue, 16 + 32 + 64 + 128);
}

TEST(TrendUtils, aPeriodOf36HoursIsLabelledWithOneDay) {
  EXPECT_EQ(between(start, start + Seconds(36 * 3600), {{start, 1}}).label, "vs previous 1 days");
}

TEST(TrendUtils, theDaysOfTheLabelAreTruncated) {
  const std::pair<double, const char*> rows[] = {
      {0, "vs previous 0 days"},          {86'399.999, "vs previous 0 days"},
      {86'400, "vs previous 1 days"},     {std::nextafter(2 * 86'400.0, 0), "vs previous 1 days"},
      {2 * 86'400, "vs previous 2 days"}, {10'000 * 86'400.0, "vs previous 10000 days"},
  };
  for (const auto& [seconds, label] : rows) {
    const Instant from{};  // the reference date, so that a fraction of a second is exact
    EXPECT_EQ(between(from, from + Seconds(seconds), {{from, 1}}).label, label) << seconds;
  }
}

TEST(TrendUtils, anEmptyListIsTheZeroResult) {
  EXPECT_EQ(ofDefaultPeriod({}), zero);
  EXPECT_EQ(ofDefaultPeriod({}, TrendAggregation::average), zero);
}

TEST(TrendUtils, aPeriodWithoutAnItemIsTheZeroResult) {
  EXPECT_EQ(compared({}, {12}), zero);
  EXPECT_EQ(compared({12}, {}), zero);
  EXPECT_EQ(ofDefaultPeriod({{end + day, 1}, {end - 61 * day, 1}}), zero);
}

TEST(TrendUtils, aStartAfterTheEndIsTheZeroResult) {
  EXPECT_EQ(between(end, start, {{start, 1}, {end, 1}, {start + day, 1}, {end + day, 1}}), zero);
}

TEST(TrendUtils, anAverageIsOverTheItemsOfEachPeriod) {
  EXPECT_EQ(
      compared({2, 4, 6}, {5, 6}, TrendAggregation::average),
      (TrendResult{.value = 37, .label = "vs previous 30 days", .currentValue = 5.5, .previousValue = 4}));
  EXPECT_EQ(compared({2, 4, 6}, {5, 6}).value, -8);  // 11 after 12
}

TEST(TrendUtils, theItemsMayBeInAnyOrderAndAreAddedInTheOneGiven) {
  EXPECT_EQ(compared({1}, {1e16, 1, -1e16}).currentValue, 0);
  EXPECT_EQ(compared({1}, {1e16, -1e16, 1}).currentValue, 1);
}

TEST(TrendUtils, the30DaysOfTheDefaultPeriodAreThoseOfTheCalendar) {
  // The clocks were put forward on 31 March: 30 days before noon by the clocks are 719 hours, not 720.
  const Instant noon = at("2024-04-15T12:00:00+02:00");
  const Instant noonBefore = at("2024-03-16T12:00:00+01:00");
  const Readings readings{{noon - 30 * day, 8}, {noonBefore - Seconds(1), 2}, {noonBefore, 1}, {noon, 4}};
  const auto in = [&](const char* zone) {
    return TrendUtils::trend(readings, &Reading::date, &Reading::value, TrendAggregation::sum, std::nullopt,
                             noon, {}, Calendar::gregorian(TimeZone::named(zone).value()));
  };
  EXPECT_EQ(
      in("Europe/Berlin"),
      (TrendResult{
          .value = -54, .label = "vs previous 29 days", .currentValue = 1 + 4, .previousValue = 8 + 2 + 1}));
  EXPECT_EQ(
      in("UTC"),
      (TrendResult{
          .value = 87, .label = "vs previous 30 days", .currentValue = 8 + 2 + 1 + 4, .previousValue = 8}));
}

TEST(TrendUtils, withoutAnEndThePeriodEndsNow) {
  const Readings readings{{end, 3}, {end + Seconds(1), 100}, {end - 40 * day, 2}};
  EXPECT_EQ(TrendUtils::trend(readings, &Reading::date, &Reading::value, TrendAggregation::sum, std::nullopt,
                              std::nullopt, end, utc)
                .currentValue,
            3);
  EXPECT_EQ(TrendUtils::trend(readings, &Reading::date, &Reading::value, TrendAggregation::sum,
                              end - 20 * day, std::nullopt, end, utc)
                .label,
            "vs previous 20 days");
}

TEST(TrendUtils, nowIsWhatTheSystemsClockSaysAndTheCalendarThatOfTheDevice) {
  const Instant now = ReferenceClock::now();
  const Readings readings{
      {now - 10 * day, 3}, {now - 40 * day, 2}, {now + 10 * day, 100}, {now - 70 * day, 100}};
  const auto result = TrendUtils::trend(readings, &Reading::date, &Reading::value, TrendAggregation::average);
  EXPECT_EQ(result.value, 50);
  EXPECT_EQ(result.currentValue, 3);
  EXPECT_EQ(result.previousValue, 2);
}

TEST(TrendUtils, anEndThatTheCalendarCannotCountBackFromIsTheZeroResult) {
  for (const double seconds : {infinity, -infinity, notANumber, 1e300, -1e300}) {
    const Instant instant = instantSinceReferenceDate(seconds);
    EXPECT_EQ(TrendUtils::trend(Readings{{instant, 1}}, &Reading::date, &Reading::value,
                                TrendAggregation::sum, std::nullopt, instant, {}, utc),
              zero);
  }
}

TEST(TrendUtils, readsItemsOfAnyKindThroughTwoCallables) {
  const std::list<std::pair<int, const char*>> items{{-2, "10"}, {2, "15"}};
  const auto result = TrendUtils::trend(
      items, [](const auto& item) { return start + item.first * day; },
      [](const auto& item) { return std::strtod(item.second, nullptr); }, TrendAggregation::sum, start, end);
  EXPECT_EQ(result.value, 50);
}

TEST(TrendUtilsDeathTest, aPercentageBeyond64BitsIsAProgrammingError) {
  const double beyond = 0x1p63;
  EXPECT_EQ(compared({100}, {std::nextafter(beyond, 0)}).value, 9'223'372'036'854'774'784);
  EXPECT_EQ(compared({100}, {-beyond}).value, std::numeric_limits<std::int64_t>::min());
  const char* const message = "a trend whose percentage is not finite or lies beyond 64 bits";
  EXPECT_DEATH(compared({100}, {beyond}), message);
  EXPECT_DEATH(compared({100}, {std::nextafter(-beyond, -infinity)}), message);
  EXPECT_DEATH(compared({1e-300}, {1e300}), message);
  EXPECT_DEATH(compared({1}, {infinity}), message);
  EXPECT_DEATH(compared({infinity}, {1}), message);
  EXPECT_DEATH(compared({notANumber}, {1}), message);
  EXPECT_DEATH(compared({1}, {1e308, 1e308}), message);
}

TEST(TrendUtilsDeathTest, aNumberOfDaysBeyond64BitsIsAProgrammingError) {
  const Instant far = instantSinceReferenceDate(-1e300);
  EXPECT_DEATH(between(far, end, {{far, 1}}),
               "a trend over a number of days that is not finite or lies beyond 64 bits");
}

TEST(TrendUtils, isTheSameComparisonWrittenPlainly) {
  EXPECT_TRUE(rc::check([] {
    const auto days = *rc::gen::container<std::vector<int>>(rc::gen::inRange(-100, 100));
    const int from = *rc::gen::inRange(-60, 20);
    const int to = from + *rc::gen::inRange(-2, 60);
    const TrendAggregation aggregation = TrendAggregation::allCases[*rc::gen::inRange<std::size_t>(0, 2)];
    Readings readings;
    std::vector<double> before;
    std::vector<double> now;
    for (const int each : days) {
      const double value = each * each % 17 - 3;
      readings.push_back({start + each * day, value});
      if (each >= 2 * from - to && each <= from) before.push_back(value);
      if (each >= from && each <= to) now.push_back(value);
    }
    const auto aggregate = [&](const std::vector<double>& values) {
      double sum = 0;
      for (const double value : values) sum += value;
      return aggregation == TrendAggregation::sum ? sum : sum / static_cast<double>(values.size());
    };
    TrendResult expected;
    if (!before.empty() && !now.empty() && aggregate(before) != 0) {
      const double p = aggregate(before);
      const double c = aggregate(now);
      expected = {.value = static_cast<std::int64_t>(std::trunc((c - p) / p * 100)),
                  .label = "vs previous " + std::to_string(to - from) + " days",
                  .currentValue = c,
                  .previousValue = p};
    }
    RC_ASSERT(between(start + from * day, start + to * day, readings, aggregation) == expected);
  }));
}

}  // namespace
}  // namespace kestrel
