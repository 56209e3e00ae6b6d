#pragma once

#include <KestrelKit/analytics/SignalEvidenceComparison.h>
#include <KestrelKit/analytics/SignalEvidenceReason.h>
#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kestrel {

/// A comparison that could not be evaluated.
struct SignalEvidenceUnevaluated {
  std::string signalID{};
  SignalEvidenceComparison comparison = SignalEvidenceComparison::elevatedVsEuthymia;
  std::optional<std::int64_t> lagDays{};  ///< SignalEvidenceAnalyzer always gives it.
  SignalEvidenceReason reason = SignalEvidenceReason::insufficientSamples;

  bool operator==(const SignalEvidenceUnevaluated&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
