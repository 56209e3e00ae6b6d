#pragma once

#include <KestrelKit/analytics/ConfidenceInterval.h>
#include <KestrelKit/analytics/SignalEvidenceComparison.h>
#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <string>

namespace kestrel {

/// How the days of one group of states differ from euthymic days in one signal, at one lag. Its source is
/// that of the result it stands in. Every float has four decimals.
struct SignalEvidenceAssociation {
  std::string signalID{};
  SignalEvidenceComparison comparison = SignalEvidenceComparison::elevatedVsEuthymia;
  std::int64_t lagDays = 0;           ///< Days from the observation to the label it is paired with.
  std::int64_t pairedDays = 0;        ///< `referenceDays` + `comparisonDays`.
  double coverage = 0;                ///< Paired values of the signal's observed days, 0 to 1.
  std::int64_t referenceDays = 0;     ///< Values paired with euthymia.
  std::int64_t comparisonDays = 0;    ///< Values paired with a state of the comparison's group.
  double standardizedDifference = 0;  ///< In pooled standard deviations; positive where the group's mean lies
                                      ///< above that of euthymia.
  ConfidenceInterval confidenceInterval{};  ///< Of the standardized difference, 95 %.
  double pValue = 0;                        ///< Two-sided, 0 to 1.
  double adjustedPValue = 0;                ///< By Benjamini and Hochberg over the whole run, 0 to 1.

  bool operator==(const SignalEvidenceAssociation&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
