#include <KestrelKit/foundation/TimeZone.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <limits>
#include <string>
#include <utility>

#include "TextForm.h"
#include "TimeZoneRules.h"

namespace kestrel {
namespace {

using namespace std::chrono;

constexpr std::int64_t hourSeconds = 3'600;
constexpr std::int64_t daySeconds = 24 * hourSeconds;
constexpr double exact = 0x1p53;  // beyond, a float no longer tells two seconds apart
constexpr auto always = std::numeric_limits<std::int64_t>::max();
constexpr auto never = std::numeric_limits<std::int64_t>::min();

/// A stretch in whole seconds since 1970; `never` and `always` stand for the infinities.
struct WholeStretch {
  std::int64_t begin;
  std::int64_t end;
  std::int64_t offset;
};

/// The day that `rule` names, in days since 1970.
std::int64_t dayOf(const DayRule& rule, year inYear) {
  const auto count = [](year_month_day date) { return sys_days(date).time_since_epoch().count(); };
  switch (rule.form) {
    case DayRule::Form::weekday: {
      const year_month_weekday nth =
          inYear / month(rule.month) / weekday(rule.day)[std::min(rule.week, 4U)];
      const year_month_weekday_last last = inYear / month(rule.month) / weekday(rule.day)[std::chrono::last];
      return count(rule.week == 5 ? year_month_day(last) : year_month_day(nth));
    }
    case DayRule::Form::dayNoLeap:
      return count(inYear / January / 1) + rule.day - 1 + (inYear.is_leap() && rule.day >= 60 ? 1 : 0);
    case DayRule::Form::dayWithLeap:
      return count(inYear / January / 1) + rule.day;
  }
  std::unreachable();
}

WholeStretch stretchOf(const YearlyRule& rule, std::int64_t time) {
  if (!rule.summer) {
    return {never, always, rule.standardOffset};
  }
  // The Gregorian calendar repeats every 400 years, to the weekday: far years are looked up in near ones.
  constexpr std::int64_t cycle = std::int64_t{146'097} * daySeconds;
  constexpr std::int64_t cycleBegin = 10'957 * daySeconds;  // 2000-01-01
  const std::int64_t inCycle = ((time - cycleBegin) % cycle + cycle) % cycle + cycleBegin;
  const std::int64_t shift = time - inCycle;

  struct Setting {
    std::int64_t at;
    bool summer;
    auto operator<=>(const Setting&) const = default;  // of two at once, summer time prevails
  };
  const year thisYear = year_month_day(floor<days>(sys_seconds(seconds(inCycle)))).year();
  std::array<Setting, 6> settings{};
  auto next = settings.begin();
  for (const year each : {thisYear - years(1), thisYear, thisYear + years(1)}) {
    const auto& [summerOffset, begin, end] = *rule.summer;
    *next++ = {dayOf(begin, each) * daySeconds + begin.time - rule.standardOffset, true};
    *next++ = {dayOf(end, each) * daySeconds + end.time - summerOffset, false};
  }
  std::ranges::sort(settings);
  const auto after = std::ranges::upper_bound(settings, inCycle, {}, &Setting::at);
  const auto before = std::prev(after);
  return {before->at + shift, after->at + shift, before->summer ? rule.summer->offset : rule.standardOffset};
}

WholeStretch stretchOf(const TimeZone::Rules& rules, std::int64_t time) {
  const auto& settings = rules.settings;
  const auto after = std::ranges::upper_bound(settings, time, {}, &TimeZone::Rules::Setting::at);
  if (after != settings.end() || !rules.afterwards) {
    return {after == settings.begin() ? never : std::prev(after)->at, after == settings.end() ? always : after->at,
            after == settings.begin() ? rules.firstOffset : std::prev(after)->offset};
  }
  WholeStretch stretch = stretchOf(*rules.afterwards, time);
  if (!settings.empty()) {
    stretch.begin = std::max(stretch.begin, settings.back().at);
  }
  return stretch;
}

/// Where the clocks show `time`, or how they skip it.
struct Reading {
  std::int64_t instant;  ///< With the offset before the gap, where there is one.
  std::int64_t first;    ///< The instant itself, or the end of the gap.
};

Reading read(const TimeZone::Rules& rules, std::int64_t time) {
  // No clock is more than 26 hours ahead: from here, stretch by stretch, the first that holds the time is the
  // earliest.
  WholeStretch stretch = stretchOf(rules, time - 27 * hourSeconds);
  while (time - stretch.offset >= stretch.end) {
    const WholeStretch next = stretchOf(rules, stretch.end);
    if (time - next.offset < next.begin) {
      return {time - stretch.offset, next.begin};
    }
    stretch = next;
  }
  return {time - stretch.offset, time - stretch.offset};
}

Instant toInstant(std::int64_t time) {
  if (time == never || time == always) {
    return instantSinceReferenceDate(std::copysign(std::numeric_limits<double>::infinity(), static_cast<double>(time)));
  }
  return instantSinceReferenceDate(static_cast<double>(time - ReferenceClock::referenceDateSince1970.count()));
}

std::filesystem::path zoneFolder() {
  const char* chosen = std::getenv("TZDIR");  // NOLINT(concurrency-mt-unsafe): nothing changes it
  return chosen && *chosen ? chosen : "/usr/share/zoneinfo";
}

std::optional<TimeZone::Rules> rulesOf(std::string_view description) {
  if (description.starts_with(':')) {
    description.remove_prefix(1);
  }
  if (description.empty()) {
    return std::nullopt;
  }
  if (auto rules = readZoneFile(zoneFolder() / description)) {  // an absolute path stands for itself
    return rules;
  }
  if (auto yearly = parseYearlyRule(description)) {
    return TimeZone::Rules{.firstOffset = yearly->standardOffset, .settings = {}, .afterwards = yearly};
  }
  return std::nullopt;
}

}  // namespace

TimeZone TimeZone::current() {
  const char* variable = std::getenv("TZ");  // NOLINT(concurrency-mt-unsafe): nothing changes it
  auto rules = variable ? rulesOf(variable) : readZoneFile("/etc/localtime");
  return rules ? TimeZone(std::make_shared<const Rules>(*std::move(rules))) : utc();
}

TimeZone TimeZone::utc() {
  static const auto rules = std::make_shared<const Rules>();
  return TimeZone(rules);
}

std::optional<TimeZone> TimeZone::named(std::string_view name) {
  // What else lies in the folder of zones: the machine's own choice, and the whole set once more, twice.
  const auto isPart = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || isDigit(c) || c == '_' || c == '-' ||
           c == '+' || c == '/';
  };
  const bool hasEmptyPart = ('/' + std::string(name) + '/').find("//") != std::string::npos;
  if (hasEmptyPart || !std::ranges::all_of(name, isPart) || name == "localtime" || name == "posixrules" ||
      name.starts_with("posix/") || name.starts_with("right/")) {
    return std::nullopt;
  }
  auto rules = readZoneFile(zoneFolder() / name);
  return rules ? std::optional(TimeZone(std::make_shared<const Rules>(*std::move(rules)))) : std::nullopt;
}

TimeZone::Stretch TimeZone::stretchAt(Instant instant) const {
  const double time = std::clamp(std::floor(secondsSinceReferenceDate(instant)), -exact, exact);
  const auto [begin, end, offset] =
      stretchOf(*rules_, static_cast<std::int64_t>(time) + ReferenceClock::referenceDateSince1970.count());
  return {toInstant(begin), toInstant(end), seconds(offset)};
}

std::optional<local_seconds> TimeZone::Stretch::clockTime(Instant instant) const {
  const double since = secondsSinceReferenceDate(instant);
  // Written so that a value that is not a number fails, too.
  if (!(std::abs(since) <= exact)) {
    return std::nullopt;
  }
  const seconds whole(static_cast<std::int64_t>(std::floor(since)));
  return local_seconds(ReferenceClock::referenceDateSince1970 + whole + offset);
}

std::optional<local_seconds> TimeZone::clockTime(Instant instant) const {
  if (!std::isfinite(secondsSinceReferenceDate(instant))) {
    return std::nullopt;
  }
  return stretchAt(instant).clockTime(instant);
}

Instant TimeZone::instantOf(local_seconds time) const {
  return toInstant(read(*rules_, time.time_since_epoch().count()).instant);
}

Instant TimeZone::startOfDay(local_days day) const {
  return toInstant(read(*rules_, local_seconds(day).time_since_epoch().count()).first);
}

}  // namespace kestrel
