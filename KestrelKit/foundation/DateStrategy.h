#pragma once

namespace kestrel {

/// How an instant stands in JSON.
enum class DateStrategy {
  secondsSinceReferenceDate,  ///< A number: seconds since 2001-01-01 00:00:00 UTC. What a coder does untold.
  iso8601,                    ///< Text with a zone designator, in whole seconds: `2024-05-01T08:30:00Z`.
};

}  // namespace kestrel
