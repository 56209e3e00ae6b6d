#include <KestrelKit/analytics/TrendUtils.h>
#include <KestrelKit/foundation/ProgrammingError.h>
#include <fmt/format.h>

#include <string_view>

namespace kestrel {
namespace {

constexpr std::int64_t usualDays = 30;
constexpr Seconds day(86'400);

/// `number` without its fraction; `violation` says what it is when it has no 64 bits.
std::int64_t whole(double number, std::string_view violation) {
  if (!(number >= -0x1p63 && number < 0x1p63)) {  // so that a value that is not a number fails, too
    programmingError(violation);
  }
  return static_cast<std::int64_t>(number);
}

}  // namespace

double TrendUtils::Period::aggregate(TrendAggregation aggregation) const noexcept {
  return aggregation == TrendAggregation::average ? sum / static_cast<double>(count) : sum;
}

std::optional<TrendUtils::Periods> TrendUtils::periods(std::optional<Instant> start, Instant end,
                                                       const Calendar& calendar) {
  if (!start) {
    start = calendar.addingDays(end, -usualDays);
    if (!start) {
      return std::nullopt;
    }
  }
  const Seconds span = end - *start;
  return Periods{.previous = {.begin = *start - span, .end = *start},
                 .current = {.begin = *start, .end = end}};
}

TrendResult TrendUtils::compared(const Periods& periods, TrendAggregation aggregation) {
  const auto& [previous, current] = periods;
  if (previous.count == 0 || current.count == 0) {
    return {};
  }
  const double before = previous.aggregate(aggregation);
  const double after = current.aggregate(aggregation);
  if (before == 0) {
    return {};
  }
  const auto days = whole((current.end - current.begin) / day,
                          "a trend over a number of days that is not finite or lies beyond 64 bits");
  return {.value = whole((after - before) / before * 100,
                         "a trend whose percentage is not finite or lies beyond 64 bits"),
          .label = fmt::format("vs previous {} days", days),
          .currentValue = after,
          .previousValue = before};
}

}  // namespace kestrel
