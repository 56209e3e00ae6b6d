#include <KestrelKit/foundation/CivilDay.h>
#include <KestrelKit/model/DayKeyFormatter.h>

#include <chrono>
#include <cmath>
#include <cstdint>

namespace kestrel {

std::optional<std::string> DayKeyFormatter::key(Instant instant) const {
  // Well beyond the year 9999, and well within what the calendar types can count.
  constexpr Seconds bound{1e12};
  const Seconds sinceReferenceDate = instant.time_since_epoch();
  if (!(sinceReferenceDate > -bound && sinceReferenceDate < bound)) {
    return std::nullopt;
  }
  const std::chrono::seconds whole{static_cast<std::int64_t>(std::floor(sinceReferenceDate.count()))};
  const std::chrono::local_seconds local{ReferenceClock::referenceDateSince1970 + whole +
                                         zone_.stretchAt(instant).offset};
  return civilDayText(std::chrono::year_month_day{std::chrono::floor<std::chrono::days>(local)});
}

std::optional<Instant> DayKeyFormatter::date(std::string_view key) const {
  const auto day = civilDayFromText(key);
  if (!day) {
    return std::nullopt;
  }
  return zone_.startOfDay(std::chrono::local_days{*day});
}

}  // namespace kestrel
