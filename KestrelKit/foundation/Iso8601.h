#pragma once

#include <KestrelKit/foundation/Instant.h>

#include <optional>
#include <string>
#include <string_view>

namespace kestrel {

/// `instant` as `2024-05-01T08:30:00Z`: UTC, whole seconds, rounded down. Absent when it is not finite or
/// lies outside the years 0001 to 9999.
std::optional<std::string> iso8601Text(Instant instant);

/// The instant that `text` names: the form that iso8601Text() writes, with `Z` or an offset `+02:00` or
/// `+0200` and without a fraction. The day must exist, the hour be at most 23, minute and second at most 59,
/// likewise the offset's. Absent for anything else, and for an instant that lies outside the years 0001 to
/// 9999 in UTC.
std::optional<Instant> instantFromIso8601(std::string_view text) noexcept;

}  // namespace kestrel
