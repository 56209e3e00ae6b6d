#include <KestrelKit/foundation/Calendar.h>
#include <KestrelKit/foundation/ProgrammingError.h>
#include <unicode/calendar.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <utility>

namespace kestrel {
namespace {

using std::chrono::days;
using std::chrono::December;
using std::chrono::floor;
using std::chrono::hours;
using std::chrono::January;
using std::chrono::local_days;
using std::chrono::year;
using std::chrono::year_month_day;

/// The locale that the environment chooses for times, as the C library chooses it.
std::string_view timeLocale() {
  for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nothing changes it
    if (value && *value) {
      return value;
    }
  }
  return "C";
}

/// `language_COUNTRY.charset@modifier` without what ICU would misread: the charset, and a modifier that is not a
/// keyword.
std::string withoutCharset(std::string_view locale) {
  const auto at = locale.find('@');
  const auto modifier = at == std::string_view::npos ? std::string_view() : locale.substr(at);
  const auto upToCharset = [](std::string_view text) { return text.substr(0, text.find('.')); };
  std::string result(upToCharset(locale.substr(0, at)));
  if (modifier.find('=') != std::string_view::npos) {
    result += upToCharset(modifier);
  }
  return result;
}

}  // namespace

/// The names of days. ICU's calendars change while they are asked, so each question goes to a copy; they run in UTC
/// and are told local days, the clocks being the zone's business.
class Calendar::Days {
 public:
  explicit Days(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    calendar_.reset(icu::Calendar::createInstance(*icu::TimeZone::getGMT(), locale, status));
    if (auto* gregorian = dynamic_cast<icu::GregorianCalendar*>(calendar_.get())) {
      constexpr UDate firstOfAll = -184'303'902'528'000'000.0;  // where ICU's calendars begin
      gregorian->setGregorianChange(firstOfAll, status);
    }
    if (!calendar_ || U_FAILURE(status)) {
      programmingError("ICU has no calendar: its data are missing");
    }
    // The type alone tells: other calendars that count the same days are subclasses of ICU's Gregorian one.
    isGregorian_ = calendar_->getType() == std::string_view("gregorian");
  }

  /// The components of midnight; nothing for a day that is not held whole.
  std::optional<Components> midnightOf(local_days day) const {
    if (isGregorian_ && firstCivilDay <= day && day <= lastCivilDay) {
      return civilMidnightOf(day);
    }
    return icuMidnightOf(day);
  }

 private:
  // The days that the C++ calendar types hold. They cost a small part of what ICU does.
  static constexpr local_days firstCivilDay{year::min() / January / 1};
  static constexpr local_days lastCivilDay{year::max() / December / 31};

  static Components civilMidnightOf(local_days day) {
    const year_month_day date(day);
    const int sinceChrist = static_cast<int>(date.year());
    return {.year = sinceChrist > 0 ? sinceChrist
                                    : 1 - sinceChrist,  // of its era: no year 0 lies between the two
            .month = static_cast<int>(static_cast<unsigned>(date.month())),
            .day = static_cast<int>(static_cast<unsigned>(date.day())),
            .hour = 0};
  }

  /// As midnightOf(), for any day. ICU's range begins and ends with a midnight, so noon tells, and a float of
  /// milliseconds is exact there at both ends.
  std::optional<Components> icuMidnightOf(local_days day) const {
    constexpr UDate dayMilliseconds = 86'400'000;
    const std::unique_ptr<icu::Calendar> calendar(calendar_->clone());
    const UDate noon = (static_cast<UDate>(day.time_since_epoch().count()) + 0.5) * dayMilliseconds;
    UErrorCode status = U_ZERO_ERROR;
    calendar->setTime(noon, status);
    if (U_FAILURE(status) || calendar->getTime(status) != noon) {
      return std::nullopt;
    }
    const Components components{.year = calendar->get(UCAL_YEAR, status),
                                .month = calendar->get(UCAL_MONTH, status) + 1,
                                .day = calendar->get(UCAL_DAY_OF_MONTH, status),
                                .hour = 0};
    return U_SUCCESS(status) ? std::optional(components) : std::nullopt;
  }

  std::unique_ptr<icu::Calendar> calendar_;
  bool isGregorian_ = false;
};

Calendar::Calendar(std::shared_ptr<const Days> days, TimeZone zone)
    : days_(std::move(days)), zone_(std::move(zone)) {}

Calendar Calendar::current() { return ofLocale(timeLocale(), TimeZone::current()); }

Calendar Calendar::ofLocale(std::string_view locale, TimeZone zone) {
  return {std::make_shared<const Days>(icu::Locale::createCanonical(withoutCharset(locale).c_str())),
          std::move(zone)};
}

Calendar Calendar::gregorian(TimeZone zone) {
  static const auto days = std::make_shared<const Days>(icu::Locale("en_US_POSIX@calendar=gregorian"));
  return {days, std::move(zone)};
}

std::optional<Calendar::Components> Calendar::components(Instant instant) const {
  const auto hour = hourAround(instant);
  return hour ? std::optional(hour->components) : std::nullopt;
}

std::optional<Calendar::Components> Calendar::components(std::chrono::local_seconds clockTime) const {
  const auto day = floor<days>(clockTime);
  auto components = days_->midnightOf(day);
  if (components) {
    components->hour = static_cast<int>((floor<hours>(clockTime) - day).count());
  }
  return components;
}

std::optional<Calendar::Hour> Calendar::hourAround(Instant instant) const {
  const auto time = zone_.clockTime(instant);
  if (!time) {
    return std::nullopt;
  }
  const auto shown = components(*time);
  if (!shown) {
    return std::nullopt;
  }
  const auto hour = floor<hours>(*time);
  const auto stretch = zone_.stretchAt(instant);
  const Instant begin(hour.time_since_epoch() - stretch.offset - ReferenceClock::referenceDateSince1970);
  return Hour{.components = *shown,
              .begin = std::max(begin, stretch.begin),
              .end = std::min(begin + Seconds(hours(1)), stretch.end)};
}

std::optional<Instant> Calendar::addingDays(Instant instant, std::int64_t count) const {
  constexpr std::int64_t most = 10'000'000'000;  // more days than any calendar holds, and no sum of them overflows
  const auto time = zone_.clockTime(instant);
  if (!time || !components(instant) || count < -most || count > most) {
    return std::nullopt;
  }
  if (count == 0) {
    return instant;  // also where it is the later of two with its time
  }
  const double since = secondsSinceReferenceDate(instant);
  const Seconds fraction(since - std::floor(since));
  const Instant moved = zone_.instantOf(*time + days(count)) + fraction;
  return components(moved) ? std::optional(moved) : std::nullopt;
}

}  // namespace kestrel
