#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/model/DayKeyFormatter.h>

#include <optional>
#include <string>
#include <string_view>

namespace kestrel {

/// The calendar day as text, `yyyy-MM-dd`, in the device's zone as it was when the first key was made or
/// read. Any thread.
struct DateKey {
  DateKey() = delete;

  /// The one shared formatter, made at the first call.
  static const DayKeyFormatter& formatter();

  /// As DayKeyFormatter::key().
  static std::optional<std::string> key(Instant instant) { return formatter().key(instant); }

  /// As DayKeyFormatter::date().
  static std::optional<Instant> date(std::string_view key) { return formatter().date(key); }
};

}  // namespace kestrel
