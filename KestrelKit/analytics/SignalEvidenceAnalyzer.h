#pragma once

#include <KestrelKit/analytics/SignalEvidenceLabel.h>
#include <KestrelKit/analytics/SignalEvidenceObservation.h>
#include <KestrelKit/analytics/SignalEvidenceResult.h>
#include <KestrelKit/analytics/SignalPairAssociation.h>

#include <cstdint>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace kestrel {

/// Asks of every signal of every source whether its values differ between days of a mood group and euthymic
/// days, and of every two signals whether they move together. Pure; any thread. Nothing fails: what is
/// missing shows in the statuses and the reasons.
///
/// An observation whose value is not finite, or whose date is no day of the years 0001 to 9999, is none.
/// Texts are ordered by code points.
struct SignalEvidenceAnalyzer {
  SignalEvidenceAnalyzer() = delete;

  /// What to ask for where nobody chose: days in each group, or days that two signals share.
  static constexpr std::int64_t usualMinimumDays = 5;
  /// The standardized difference from which an association counts, where nobody chose.
  static constexpr double usualMinimumEffect = 0.3;

  /// One result for each of `sourceIDs`, in that order.
  ///
  /// Each observation is paired with the label of its own day and with those 1, 3 and 7 civil days later. The
  /// values paired with each group of states are compared with those paired with euthymia (SignalStatistics)
  /// where both are at least `minimumDays`. All p-values of a run are adjusted together. An association is
  /// observed where its standardized difference is at least `minimumEffect` up or down and its adjusted
  /// p-value at most 0.1, as rounded to four decimals.
  ///
  /// Labels of the state unknown are dropped; of several others of one day the last in the list stands.
  /// Several observations of a signal on one day are paired each by itself; the denominator of the coverage
  /// is the signal's distinct observed days. A source that is given twice counts twice in the family of
  /// p-values.
  static std::vector<SignalEvidenceResult> analyze(std::span<const std::string> sourceIDs,
                                                   std::span<const SignalEvidenceObservation> observations,
                                                   std::span<const SignalEvidenceLabel> labels,
                                                   std::int64_t minimumDays, double minimumEffect);

  /// Spearman's rank correlation (C. Spearman, American Journal of Psychology 15, 1904, 72-101; equal values
  /// share the mean of their ranks) of each two signals that have at least `minimumDays` days in common, and
  /// at least two, and that both vary over these days. Pairs come in the order of source and signal, the
  /// earlier first. Of several values of a signal on one day the last in the list stands.
  ///
  /// Works in `threads` threads, from 1; the result does not depend on their number.
  static std::vector<SignalPairAssociation> pairs(std::span<const SignalEvidenceObservation> observations,
                                                  std::int64_t minimumDays,
                                                  unsigned threads = std::thread::hardware_concurrency());
};

}  // namespace kestrel
