#include <KestrelKit/foundation/CivilDay.h>
#include <KestrelKit/model/DayKeyFormatter.h>

#include <chrono>

namespace kestrel {

std::optional<std::string> DayKeyFormatter::key(Instant instant) const {
  const auto time = zone_.clockTime(instant);
  return time ? civilDayText(std::chrono::floor<std::chrono::days>(*time)) : std::nullopt;
}

std::optional<Instant> DayKeyFormatter::date(std::string_view key) const {
  const auto day = civilDayFromText(key);
  if (!day) {
    return std::nullopt;
  }
  return zone_.startOfDay(*day);
}

}  // namespace kestrel
