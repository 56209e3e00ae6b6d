#pragma once

#include <chrono>
#include <ratio>

namespace kestrel {

/// The clock that every instant is measured on: seconds since 2001-01-01 00:00:00 UTC, the reference date, in a
/// 64-bit float. Like POSIX time it counts no leap seconds.
struct ReferenceClock {
  using rep = double;
  using period = std::ratio<1>;
  using duration = std::chrono::duration<rep, period>;
  using time_point = std::chrono::time_point<ReferenceClock>;
  static constexpr bool is_steady = false;

  /// The present instant, as the system's clock has it.
  static time_point now() noexcept {
    return fromSystem(std::chrono::system_clock::now());
  }

  /// The reference date, counted from 1970-01-01 00:00:00 UTC.
  static constexpr std::chrono::seconds referenceDateSince1970{978'307'200};

  static time_point fromSystem(std::chrono::system_clock::time_point time) noexcept {
    return time_point{time.time_since_epoch() - referenceDateSince1970};
  }
};

/// A point in time. Arithmetic on instants is arithmetic on the float: an instant may be infinite or not a number,
/// and whoever needs a finite one says so.
using Instant = ReferenceClock::time_point;

/// A span of time in seconds.
using Seconds = ReferenceClock::duration;

/// The instant that lies `seconds` after the reference date.
constexpr Instant instantSinceReferenceDate(double seconds) noexcept { return Instant{Seconds{seconds}}; }

/// Seconds from the reference date to `instant`.
constexpr double secondsSinceReferenceDate(Instant instant) noexcept {
  return instant.time_since_epoch().count();
}

}  // namespace kestrel
