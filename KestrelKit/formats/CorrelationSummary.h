#pragma once

#include <KestrelKit/formats/CorrelationCoefficients.h>
#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <optional>

namespace kestrel {

/// How posts and health go together, over all days that have both.
struct CorrelationSummary {
  std::optional<std::int64_t> totalOverlappingDays{};  ///< Days that have both.
  std::optional<std::int64_t> highRiskDays{};          ///< What is high the producer decides.
  std::optional<CorrelationCoefficients> correlations{};

  bool operator==(const CorrelationSummary&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
