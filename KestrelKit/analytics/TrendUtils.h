#pragma once

#include <KestrelKit/analytics/TrendAggregation.h>
#include <KestrelKit/analytics/TrendResult.h>
#include <KestrelKit/foundation/Calendar.h>
#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/TimeZone.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <ranges>

namespace kestrel {

/// Compares a recent period with the one of equal length just before it. Pure; any thread.
struct TrendUtils {
  TrendUtils() = delete;

  /// The change of `items` from the previous period to the current one. `dateOf(item)` is an item's instant,
  /// `valueOf(item)` its value, a double; members will do: `trend(days, &Day::date, &Day::steps, …)`. The
  /// items may be in any order; their values are added in the order given.
  ///
  /// The current period lasts from `start` to `end`, the previous one is as long and ends at `start`. Without
  /// an end it ends `now`; without a start it begins 30 days of `calendar` before its end, at the same time
  /// on the clocks. Both ends belong to both periods, so that an item dated exactly at the start counts in
  /// either.
  ///
  /// No comparison is possible, and the result is a TrendResult as it is made, when a period holds no item,
  /// when the previous aggregate is 0, when `start` lies after `end`, and when `calendar` cannot count back
  /// from the end. A percentage or a number of days that is not finite or lies beyond 64 bits is a
  /// programming error.
  template <std::ranges::input_range Items, class DateOf, class ValueOf>
  static TrendResult trend(const Items& items, DateOf dateOf, ValueOf valueOf, TrendAggregation aggregation,
                           std::optional<Instant> start = std::nullopt,
                           std::optional<Instant> end = std::nullopt, Instant now = ReferenceClock::now(),
                           const Calendar& calendar = Calendar::gregorian(TimeZone::current())) {
    auto periods = TrendUtils::periods(start, end.value_or(now), calendar);
    if (!periods) {
      return {};
    }
    for (const auto& item : items) {
      const Instant date = std::invoke(dateOf, item);
      for (Period* period : {&periods->previous, &periods->current}) {
        if (period->begin <= date && date <= period->end) {
          period->sum += std::invoke(valueOf, item);
          ++period->count;
        }
      }
    }
    return compared(*periods, aggregation);
  }

 private:
  /// One period and what it holds.
  struct Period {
    Instant begin;
    Instant end;
    double sum = 0;
    std::int64_t count = 0;

    double aggregate(TrendAggregation aggregation) const noexcept;
  };

  struct Periods {
    Period previous;
    Period current;
  };

  static std::optional<Periods> periods(std::optional<Instant> start, Instant end, const Calendar& calendar);
  static TrendResult compared(const Periods& periods, TrendAggregation aggregation);
};

}  // namespace kestrel
