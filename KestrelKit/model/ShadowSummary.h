#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>

namespace kestrel {

/// How often the circadian classifier agreed with the user, beside how often the day before did.
struct ShadowSummary {
  std::int64_t scoredDays = 0;
  double circadianAccuracy = 0;  ///< Share of the scored days, 0 to 1; 0 where none was scored.
  double baselineAccuracy = 0;   ///< Likewise, of a forecast that repeats the previous label.

  bool operator==(const ShadowSummary&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
