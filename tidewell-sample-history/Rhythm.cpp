#include "Rhythm.h"

#include <KestrelKit/foundation/Instant.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace kestrel {
namespace {

constexpr std::int64_t secondsPerHour = 3'600;
constexpr std::int64_t secondsPerDay = 86'400;
constexpr std::int64_t nanoseconds = 1'000'000'000;

/// A stretch of days with a character of its own. How much is written at each hour, compared with the other
/// hours of the whole history.
struct Season {
  std::int64_t shortest;  ///< Days.
  std::int64_t longest;
  std::array<std::int64_t, 24> hours;
};

// Lived through in this order over and over, from the last day backwards, so that a history ends on ordinary
// days and one of 25 days or more has each of them.
constexpr std::array<Season, 4> seasons{{
    // 0    1    2    3    4   5   6   7   8   9  10  11   12  13  14  15  16   17   18   19   20   21   22 23
    // hours
    {4, 9, {5, 2, 1, 1, 1, 2, 8, 25, 40, 45, 45, 50, 60, 55, 50, 50, 55, 65, 75, 85, 90, 80, 50, 18}},
    {3, 6, {130, 120, 105, 80,  55,  40,  60,  75,  85,  95,  100, 110,
            120, 115, 110, 110, 120, 130, 150, 170, 185, 190, 170, 150}},
    {3, 7, {6, 5, 4, 3, 1, 1, 1, 3, 6, 9, 12, 14, 18, 18, 17, 16, 17, 20, 22, 24, 25, 22, 16, 10}},
    {1, 3, {}},
}};

// From Sunday, as a percentage.
constexpr std::array<std::int64_t, 7> weekdays{130, 90, 85, 90, 95, 120, 140};

std::int64_t floorDivide(std::int64_t value, std::int64_t divisor) {
  return (value - ((value % divisor + divisor) % divisor)) / divisor;
}

/// The season of each of the `count` days, the first day first.
std::vector<const Season*> seasonsOfDays(std::size_t count, Chance& chance) {
  std::vector<const Season*> days(count);
  std::size_t season = 0;
  std::int64_t left = 0;
  for (auto day = days.rbegin(); day != days.rend(); ++day) {
    if (left == 0) {
      season = day == days.rbegin() ? 0 : (season + 1) % seasons.size();
      left = chance.between(seasons[season].shortest, seasons[season].longest);
    }
    *day = &seasons[season];
    --left;
  }
  return days;
}

/// An hour of the history, the first and the last one cut where the history begins and ends.
struct Slot {
  std::int64_t begin;  ///< Seconds since the reference date.
  std::int64_t end;
  std::int64_t weight;
};

std::vector<Slot> slots(const SampleHistory& history, Chance& chance) {
  const auto end = static_cast<std::int64_t>(secondsSinceReferenceDate(history.end));
  const std::int64_t begin = end - history.days * secondsPerDay;
  const auto offset = static_cast<std::int64_t>(history.utcOffset.count());
  const std::int64_t firstDay = floorDivide(begin + offset, secondsPerDay);
  const std::int64_t lastDay = floorDivide(end + offset, secondsPerDay);

  const auto seasonOf = seasonsOfDays(static_cast<std::size_t>(lastDay - firstDay + 1), chance);
  std::vector<Slot> result;
  for (std::int64_t day = firstDay; day <= lastDay; ++day) {
    const std::int64_t mood = chance.between(60, 140);
    const auto weekday = static_cast<std::size_t>((day + 1) % 7);  // The reference date was a Monday.
    for (std::int64_t hour = 0; hour < 24; ++hour) {
      const std::int64_t whole = day * secondsPerDay + hour * secondsPerHour - offset;
      const std::int64_t from = std::max(whole, begin);
      const std::int64_t to = std::min(whole + secondsPerHour, end);
      if (from >= to) {
        continue;
      }
      const std::int64_t level =
          seasonOf[static_cast<std::size_t>(day - firstDay)]->hours[static_cast<std::size_t>(hour)];
      result.push_back({from, to, level * mood * weekdays[weekday] * (to - from) / secondsPerHour});
    }
  }
  return result;
}

}  // namespace

std::vector<std::int64_t> messageTimes(const SampleHistory& history, Chance& chance) {
  const auto hours = slots(history, chance);
  std::int64_t total = 0;
  for (const Slot& slot : hours) {
    total += slot.weight;
  }

  std::vector<std::int64_t> times;
  times.reserve(static_cast<std::size_t>(history.messages));
  std::int64_t passed = 0;
  for (const Slot& slot : hours) {
    passed += slot.weight;
    // At most 10^7 messages times 7 * 10^11 of weight: within 64 bits.
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): the last day is an ordinary one, all of its hours count
    const auto upToHere = static_cast<std::size_t>(history.messages * passed / total);
    const auto first = static_cast<std::ptrdiff_t>(times.size());
    while (times.size() < upToHere) {
      times.push_back(chance.between(slot.begin * nanoseconds, slot.end * nanoseconds - 1));
    }
    std::sort(times.begin() + first, times.end());
  }
  return times;
}

}  // namespace kestrel
