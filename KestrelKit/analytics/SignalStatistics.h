#pragma once

#include <KestrelKit/analytics/SampleMoments.h>
#include <KestrelKit/analytics/StandardizedDifference.h>

#include <optional>
#include <span>
#include <vector>

namespace kestrel {

/// The figures of SignalEvidenceAnalyzer, each by itself. Pure; any thread.
struct SignalStatistics {
  SignalStatistics() = delete;

  /// `value` with four decimals, to the nearest, halves away from zero.
  static double roundedToFourDecimals(double value) noexcept;

  /// The difference of the means, `comparison` minus `reference`, over the pooled standard deviation: d of
  /// J. Cohen, "Statistical Power Analysis for the Behavioral Sciences", 2nd edition 1988, chapter 2, with
  /// the large-sample standard error of L. V. Hedges and I. Olkin, "Statistical Methods for Meta-Analysis",
  /// 1985, chapter 5, and the normal distribution.
  ///
  /// Two samples without any spread are no different when they are equal (difference 0, interval [0, 0],
  /// p-value 1). Absent for other samples without spread, for fewer than 2 values on a side, and where the
  /// values are so large or so far apart that a figure would lie beyond a 64-bit float.
  static std::optional<StandardizedDifference> standardizedDifference(
      const SampleMoments& reference, const SampleMoments& comparison) noexcept;

  /// The standard normal distribution function, to within 7.5e-8, by approximation 7.1.26 of the error
  /// function in M. Abramowitz and I. A. Stegun, "Handbook of Mathematical Functions", 1964, whose error is
  /// at most 1.5e-7.
  static double standardNormalDistribution(double x) noexcept;

  /// The p-values of one family of comparisons, 0 to 1 each, adjusted for their number, in the order given:
  /// Y. Benjamini and Y. Hochberg, Journal of the Royal Statistical Society B 57, 1995, 289-300. But for
  /// rounding an adjusted value never lies below its own, and never falls as they rise.
  static std::vector<double> benjaminiHochberg(std::span<const double> pValues);
};

}  // namespace kestrel
