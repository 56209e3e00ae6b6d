#pragma once

#include <KestrelKit/analytics/SignalEvidenceAssociation.h>
#include <KestrelKit/analytics/SignalEvidenceComparison.h>
#include <KestrelKit/analytics/SignalEvidenceStatus.h>
#include <KestrelKit/analytics/SignalEvidenceUnevaluated.h>
#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {

/// What SignalEvidenceAnalyzer found in one source. The four figures of the strongest association, that with
/// the largest standardized difference up or down, are absent where there is no association.
struct SignalEvidenceResult {
  std::string sourceID{};
  SignalEvidenceStatus status = SignalEvidenceStatus::noData;
  std::int64_t observedDays = 0;      ///< Distinct days on which any signal of the source has a value.
  std::int64_t overlappingDays = 0;   ///< Those of them that carry a label other than unknown.
  std::int64_t evaluatedSignals = 0;  ///< Signals with at least one association.
  std::optional<std::string> strongestSignalID{};
  std::optional<SignalEvidenceComparison> strongestComparison{};
  std::optional<double> standardizedDifference{};  ///< Of the strongest association.
  std::optional<std::int64_t> strongestLagDays{};
  std::vector<SignalEvidenceAssociation> associations{};  ///< By signal, raw value of the comparison, lag.
  std::vector<SignalEvidenceUnevaluated> unevaluated{};   ///< By signal, lag, comparison in its own order.

  bool operator==(const SignalEvidenceResult&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
