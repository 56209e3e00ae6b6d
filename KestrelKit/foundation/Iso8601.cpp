#include "TextForm.h"

#include <KestrelKit/foundation/CivilDay.h>
#include <KestrelKit/foundation/Iso8601.h>

#include <chrono>
#include <cmath>
#include <cstddef>

namespace kestrel {
namespace {

using namespace std::chrono;

// The years 0001 to 9999.
constexpr sys_seconds begin = sys_days{1y / January / 1};
constexpr sys_seconds end = sys_days{year{10000} / January / 1};

// The two digits at the start of `text`, at most `most`; they are taken from it.
std::optional<int> takeNumber(std::string_view& text, int most) noexcept {
  if (text.size() < 2 || !isDigit(text[0]) || !isDigit(text[1])) {
    return std::nullopt;
  }
  const int number = 10 * (text[0] - '0') + (text[1] - '0');
  text.remove_prefix(2);
  return number <= most ? std::optional{number} : std::nullopt;
}

bool take(std::string_view& text, char wanted) noexcept {
  if (!text.starts_with(wanted)) {
    return false;
  }
  text.remove_prefix(1);
  return true;
}

// What local time is ahead of UTC by: `Z`, `+02:00` or `+0200`.
std::optional<minutes> offsetFrom(std::string_view designator) noexcept {
  if (designator == "Z") {
    return minutes{0};
  }
  const bool behind = take(designator, '-');
  if (!behind && !take(designator, '+')) {
    return std::nullopt;
  }
  const auto hour = takeNumber(designator, 23);
  take(designator, ':');
  const auto minute = takeNumber(designator, 59);
  if (!hour || !minute || !designator.empty()) {
    return std::nullopt;
  }
  const minutes ahead = hours{*hour} + minutes{*minute};
  return behind ? -ahead : ahead;
}

}  // namespace

std::optional<std::string> iso8601Text(Instant instant) {
  const double since1970 = std::floor(secondsSinceReferenceDate(instant)) +
                           static_cast<double>(ReferenceClock::referenceDateSince1970.count());
  // Written so that a value that is not a number fails, too.
  if (!(since1970 >= static_cast<double>(begin.time_since_epoch().count()) &&
        since1970 < static_cast<double>(end.time_since_epoch().count()))) {
    return std::nullopt;
  }
  const sys_seconds time{seconds{static_cast<seconds::rep>(since1970)}};
  const auto midnight = floor<days>(time);
  const year_month_day day{midnight};
  const hh_mm_ss clock{time - midnight};
  // Digit by digit: there is an instant to write for every event that was ever recorded.
  std::string text = "0000-00-00T00:00:00Z";
  const auto put = [&text](std::size_t behind, unsigned number) {
    for (; number != 0; number /= 10) {
      text[--behind] = static_cast<char>('0' + number % 10);
    }
  };
  put(4, static_cast<unsigned>(static_cast<int>(day.year())));
  put(7, static_cast<unsigned>(day.month()));
  put(10, static_cast<unsigned>(day.day()));
  put(13, static_cast<unsigned>(clock.hours().count()));
  put(16, static_cast<unsigned>(clock.minutes().count()));
  put(19, static_cast<unsigned>(clock.seconds().count()));
  return text;
}

std::optional<Instant> instantFromIso8601(std::string_view text) noexcept {
  const auto day = civilDayFromText(text.substr(0, 10));
  if (!day) {
    return std::nullopt;
  }
  text.remove_prefix(10);
  std::optional<int> hour;
  std::optional<int> minute;
  std::optional<int> second;
  const bool hasForm = take(text, 'T') && (hour = takeNumber(text, 23)) && take(text, ':') &&
                       (minute = takeNumber(text, 59)) && take(text, ':') && (second = takeNumber(text, 59));
  if (!hasForm) {
    return std::nullopt;
  }
  const auto offset = offsetFrom(text);
  if (!offset) {
    return std::nullopt;
  }
  const sys_days midnight{day->time_since_epoch()};
  const sys_seconds time = midnight + hours{*hour} + minutes{*minute} + seconds{*second} - *offset;
  if (time < begin || time >= end) {
    return std::nullopt;
  }
  return instantSinceReferenceDate(
      static_cast<double>((time.time_since_epoch() - ReferenceClock::referenceDateSince1970).count()));
}

}  // namespace kestrel
