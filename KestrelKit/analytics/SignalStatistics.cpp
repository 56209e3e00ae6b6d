#include <KestrelKit/analytics/SignalStatistics.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <numeric>
#include <tuple>

namespace kestrel {
namespace {

constexpr double noSpread = 1e-12;       // below, a pooled deviation or a difference of means is none
constexpr double normalQuantile = 1.96;  // of 0.975, for an interval of 95 %

/// The error function for `t` from 0.
double errorFunction(double t) noexcept {
  constexpr double p = 0.3275911;
  constexpr double a[] = {0.254829592, -0.284496736, 1.421413741, -1.453152027, 1.061405429};
  const double k = 1 / (1 + p * t);
  return 1 - k * (a[0] + k * (a[1] + k * (a[2] + k * (a[3] + k * a[4])))) * std::exp(-t * t);
}

}  // namespace

double SignalStatistics::roundedToFourDecimals(double value) noexcept {
  return std::round(value * 10'000) / 10'000;
}

std::optional<StandardizedDifference> SignalStatistics::standardizedDifference(
    const SampleMoments& reference, const SampleMoments& comparison) noexcept {
  if (reference.count < 2 || comparison.count < 2) {
    return std::nullopt;
  }
  const auto referenceCount = static_cast<double>(reference.count);
  const auto comparisonCount = static_cast<double>(comparison.count);
  const double freedom = referenceCount + comparisonCount - 2;
  const double deviation = std::sqrt(
      (reference.variance * (referenceCount - 1) + comparison.variance * (comparisonCount - 1)) / freedom);
  const double distance = comparison.mean - reference.mean;
  if (deviation < noSpread) {
    return std::abs(distance) < noSpread ? std::optional(StandardizedDifference{}) : std::nullopt;
  }
  const double d = distance / deviation;
  const double error = std::sqrt((referenceCount + comparisonCount) / (referenceCount * comparisonCount) +
                                 d * d / (2 * freedom));
  if (!std::isfinite(deviation) || !std::isfinite(error)) {
    return std::nullopt;
  }
  const double p = std::min(2 * (1 - standardNormalDistribution(std::abs(d) / error)), 1.0);
  return StandardizedDifference{
      .difference = roundedToFourDecimals(d),
      .confidenceInterval = {.lower = roundedToFourDecimals(d - normalQuantile * error),
                             .upper = roundedToFourDecimals(d + normalQuantile * error)},
      .pValue = roundedToFourDecimals(p),
  };
}

double SignalStatistics::standardNormalDistribution(double x) noexcept {
  const double erf = errorFunction(std::abs(x) / std::numbers::sqrt2);
  return (1 + (x < 0 ? -erf : erf)) / 2;
}

std::vector<double> SignalStatistics::benjaminiHochberg(std::span<const double> pValues) {
  std::vector<std::size_t> ranked(pValues.size());
  std::iota(ranked.begin(), ranked.end(), std::size_t{0});
  std::ranges::sort(ranked, {}, [&](std::size_t place) { return std::tuple(pValues[place], place); });

  std::vector<double> adjusted(pValues.size());
  const auto family = static_cast<double>(pValues.size());
  double least = 1;
  for (std::size_t rank = ranked.size(); rank > 0; --rank) {
    const std::size_t place = ranked[rank - 1];
    least = std::min(least, pValues[place] * family / static_cast<double>(rank));
    adjusted[place] = least;
  }
  return adjusted;
}

}  // namespace kestrel
