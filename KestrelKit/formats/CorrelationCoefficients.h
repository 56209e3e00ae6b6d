#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <optional>

namespace kestrel {

/// Correlation coefficients, each -1 to 1; of which kind the producer decides. Absent: could not be computed.
struct CorrelationCoefficients {
  std::optional<double> postsVsSleep{};
  std::optional<double> sentimentVsSleep{};
  std::optional<double> stepsVsPosts{};
  std::optional<double> stepsVsSentiment{};

  bool operator==(const CorrelationCoefficients&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
