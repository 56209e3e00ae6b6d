#pragma once

#include <KestrelKit/foundation/Instant.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace kestrel {

/// What the clocks of a place show, now and in the past: its offset from UTC at every instant.
///
/// The offsets come from the system's own time-zone files (RFC 8536), so that a rule that changed last month is
/// known as soon as the system knows it, and every program of the machine agrees. A cheap value, equal in
/// behaviour to every copy of it; any thread.
class TimeZone {
 public:
  /// The zone of the environment variable `TZ` as the C library reads it, else the system's (`/etc/localtime`).
  ///
  /// `TZ` may name a zone (`Europe/Berlin`, `:Europe/Berlin`), a zone file by its absolute path, or spell out a rule
  /// in the form of POSIX (`CET-1CEST,M3.5.0,M10.5.0/3`). Empty text, and whatever is none of these, is UTC;
  /// so is a zone file that counts leap seconds (`right/Europe/Berlin`), which instants do not.
  static TimeZone current();

  /// The zone without an offset.
  static TimeZone utc();

  /// The zone of that IANA name (`America/New_York`, `UTC`); nothing for any other text. `Factory`, the IANA's name
  /// for a machine that was not told its zone, is one of them: its clocks show UTC.
  static std::optional<TimeZone> named(std::string_view name);

  /// A span of time in which the clocks run without being set.
  struct Stretch {
    Instant begin;                ///< The first instant; minus infinity where nothing came before.
    Instant end;                  ///< The first instant no longer in it; infinity where nothing comes after.
    std::chrono::seconds offset;  ///< What the clocks show minus UTC.

    bool contains(Instant instant) const noexcept { return begin <= instant && instant < end; }

    /// As TimeZone::clockTime(), of an instant in this stretch. Whoever walks through many instants asks the
    /// zone again only when one lies outside.
    std::optional<std::chrono::local_seconds> clockTime(Instant instant) const;
  };

  /// The stretch that `instant`, which must be finite, lies in.
  Stretch stretchAt(Instant instant) const;

  /// What the clocks show at `instant`, its fraction of a second left out. Nothing when it is not finite or lies
  /// more than 2^53 seconds, some 285 million years, from the reference date: there a float tells no seconds apart.
  std::optional<std::chrono::local_seconds> clockTime(Instant instant) const;

  /// When the clocks show `time`. Of two such instants the earlier counts; a time that the clocks skip is read with
  /// the offset in force before the gap.
  Instant instantOf(std::chrono::local_seconds time) const;

  /// When `day` begins: the first instant at which the clocks show it. Where midnight comes twice the earlier
  /// counts; where the clocks skip it, they are set to the day's first time. A day that they skip whole begins when
  /// the next one does.
  Instant startOfDay(std::chrono::local_days day) const;

  struct Rules;

 private:
  explicit TimeZone(std::shared_ptr<const Rules> rules) : rules_(std::move(rules)) {}

  std::shared_ptr<const Rules> rules_;
};

}  // namespace kestrel
