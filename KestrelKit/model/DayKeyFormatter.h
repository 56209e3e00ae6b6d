#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/TimeZone.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kestrel {

/// Turns instants into day keys, `yyyy-MM-dd` in the Gregorian calendar, and back, in one zone. Immutable;
/// any thread.
class DayKeyFormatter {
 public:
  explicit DayKeyFormatter(TimeZone zone) noexcept : zone_(std::move(zone)) {}

  /// The key of the day that the clocks of the zone show at `instant`. Absent when the instant is not finite
  /// or the day lies outside the years 0001 to 9999.
  std::optional<std::string> key(Instant instant) const;

  /// The instant at which the day of `key` begins: its midnight; where the clocks skip midnight, the day's
  /// first instant; of two midnights the earlier. Absent for text that is no day key of a day that exists.
  std::optional<Instant> date(std::string_view key) const;

 private:
  TimeZone zone_;
};

}  // namespace kestrel
