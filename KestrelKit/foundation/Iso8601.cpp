#include <KestrelKit/foundation/Iso8601.h>

#include <fmt/format.h>

#include <chrono>
#include <cmath>
#include <cstddef>

namespace kestrel {
namespace {

using namespace std::chrono;

constexpr sys_seconds earliest = sys_days{1y / January / 1};
constexpr sys_seconds afterLatest = sys_days{year{10000} / January / 1};

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// Whether `text` has the shape of `pattern`, in which 0 stands for any digit and ± for either sign.
constexpr bool matches(std::string_view text, std::string_view pattern) noexcept {
  if (text.size() != pattern.size()) {
    return false;
  }
  for (std::size_t place = 0; place < text.size(); ++place) {
    const char wanted = pattern[place];
    const char found = text[place];
    const bool fits = wanted == '0' ? isDigit(found) : wanted == '+' ? found == '+' || found == '-' : found == wanted;
    if (!fits) {
      return false;
    }
  }
  return true;
}

constexpr int numberAt(std::string_view text, std::size_t place, std::size_t digits) noexcept {
  int number = 0;
  for (const char digit : text.substr(place, digits)) {
    number = number * 10 + (digit - '0');
  }
  return number;
}

// What local time is ahead of UTC by.
std::optional<minutes> offsetFrom(std::string_view designator) noexcept {
  if (designator == "Z") {
    return minutes{0};
  }
  const bool colon = matches(designator, "+00:00");
  if (!colon && !matches(designator, "+0000")) {
    return std::nullopt;
  }
  const int hour = numberAt(designator, 1, 2);
  const int minute = numberAt(designator, colon ? 4 : 3, 2);
  if (hour > 23 || minute > 59) {
    return std::nullopt;
  }
  const minutes ahead = hours{hour} + minutes{minute};
  return designator.front() == '-' ? -ahead : ahead;
}

}  // namespace

std::optional<std::string> iso8601Text(Instant instant) {
  const double since1970 = std::floor(secondsSinceReferenceDate(instant)) +
                           static_cast<double>(ReferenceClock::referenceDateSince1970.count());
  // Written so that a value that is not a number fails, too.
  if (!(since1970 >= static_cast<double>(earliest.time_since_epoch().count()) &&
        since1970 < static_cast<double>(afterLatest.time_since_epoch().count()))) {
    return std::nullopt;
  }
  const sys_seconds time{seconds{static_cast<seconds::rep>(since1970)}};
  const auto midnight = floor<days>(time);
  const year_month_day day{midnight};
  const hh_mm_ss clock{time - midnight};
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(day.year()),
                     static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()), clock.hours().count(),
                     clock.minutes().count(), clock.seconds().count());
}

std::optional<Instant> instantFromIso8601(std::string_view text) noexcept {
  constexpr std::string_view pattern = "0000-00-00T00:00:00";
  if (!matches(text.substr(0, pattern.size()), pattern)) {
    return std::nullopt;
  }
  const year_month_day day{year{numberAt(text, 0, 4)}, month{static_cast<unsigned>(numberAt(text, 5, 2))},
                           std::chrono::day{static_cast<unsigned>(numberAt(text, 8, 2))}};
  const int hour = numberAt(text, 11, 2);
  const int minute = numberAt(text, 14, 2);
  const int second = numberAt(text, 17, 2);
  const auto offset = offsetFrom(text.substr(pattern.size()));
  if (!day.ok() || hour > 23 || minute > 59 || second > 59 || !offset) {
    return std::nullopt;
  }
  const sys_seconds time = sys_days{day} + hours{hour} + minutes{minute} + seconds{second} - *offset;
  if (day.year() < 1y || time < earliest || time >= afterLatest) {
    return std::nullopt;
  }
  return instantSinceReferenceDate(
      static_cast<double>((time.time_since_epoch() - ReferenceClock::referenceDateSince1970).count()));
}

}  // namespace kestrel
