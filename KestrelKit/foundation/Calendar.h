#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/TimeZone.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace kestrel {

/// A way of naming days (Gregorian, Buddhist, Hebrew, …) in a time zone.
///
/// The Gregorian calendar and its relatives are proleptic: the rule of leap years holds for all time, also before
/// 1582, so that a day has the same name here, in ISO 8601 text and in the C++ calendar types. Days begin at midnight
/// in every calendar. A cheap value; any thread.
class Calendar {
 public:
  /// The user's own calendar: that of the locale in `LC_ALL`, else `LC_TIME`, else `LANG` (an empty variable counts
  /// as absent), where a `@calendar=` keyword goes before the habit of the country; in TimeZone::current(). Asked
  /// anew at every call.
  static Calendar current();

  /// The calendar of the locale identifier `locale` (`th_TH`, `de_DE.UTF-8@calendar=hebrew`), Gregorian where it
  /// names none that is known.
  static Calendar ofLocale(std::string_view locale, TimeZone zone);

  /// The Gregorian calendar.
  static Calendar gregorian(TimeZone zone);

  const TimeZone& timeZone() const noexcept { return zone_; }

  /// What the calendar and the clocks show.
  struct Components {
    int year;   ///< Of its era.
    int month;  ///< From 1, in the calendar's own order.
    int day;    ///< Of the month, from 1.
    int hour;   ///< 0 to 23.

    bool operator==(const Components&) const = default;
  };

  /// A span of time in which all components stay what they are. It is at most an hour long and ends early where the
  /// clocks are set.
  struct Hour {
    Components components;
    Instant begin;  ///< The first instant.
    Instant end;    ///< The first instant no longer in it.

    bool contains(Instant instant) const noexcept { return begin <= instant && instant < end; }
  };

  /// The components of `instant`; nothing when it is not finite, or lies in a day that the calendar cannot hold
  /// (some five million years from now or ago).
  std::optional<Components> components(Instant instant) const;

  /// The components of what the clocks show; nothing in a day that the calendar cannot hold.
  std::optional<Components> components(std::chrono::local_seconds clockTime) const;

  /// The hour that `instant` lies in; nothing where components() gives nothing. Whoever walks through many instants
  /// asks again only when one lies outside.
  std::optional<Hour> hourAround(Instant instant) const;

  /// `instant` moved by whole days, back when `days` is negative, the time on the clocks kept. Of two instants with
  /// that time the earlier counts, and a time that the clocks skip is read with the offset in force before the gap.
  /// Nothing when either instant has no components.
  std::optional<Instant> addingDays(Instant instant, std::int64_t days) const;

 private:
  class Days;

  Calendar(std::shared_ptr<const Days> days, TimeZone zone);

  std::shared_ptr<const Days> days_;
  TimeZone zone_;
};

}  // namespace kestrel
