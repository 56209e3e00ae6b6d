#pragma once

#include <KestrelKit/analytics/ConfidenceInterval.h>

namespace kestrel {

/// How far the means of two samples lie apart. Every float has four decimals.
struct StandardizedDifference {
  double difference = 0;  ///< In pooled standard deviations; positive where the comparison's mean is higher.
  ConfidenceInterval confidenceInterval{};  ///< 95 %.
  double pValue = 1;                        ///< Two-sided, 0 to 1.

  bool operator==(const StandardizedDifference&) const = default;
};

}  // namespace kestrel
