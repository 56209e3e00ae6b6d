#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "SignalSeries.h"

namespace kestrel {

/// A signal's days in the order of their values, made once for all pairs that it takes part in.
///
/// Ranks are doubled throughout, which leaves their correlation what it is and makes them whole numbers, also
/// where equal values share the mean of their ranks.
struct RankedSignal {
  std::vector<std::uint32_t> days{};     ///< Ascending, each once; counted from the first day of all signals.
  std::vector<double> ranks{};           ///< Of each of `days`, from their mean: for n days 1 - n to n - 1.
  double squares = 0;                    ///< The sum of the squares of `ranks`.
  std::vector<std::uint32_t> order{};    ///< The days by ascending value.
  std::vector<std::uint32_t> runEnds{};  ///< The place in `order` behind each run of equal values.

  /// Of several values on a day the last stands. Days are counted from `firstDay`.
  static RankedSignal of(const SignalSeries& series, std::int32_t firstDay);
};

/// How the ranks of two signals go together over the days that they share.
struct RankCorrelation {
  std::size_t sharedDays = 0;
  double products = 0;       ///< The sum of the products of their ranks, each from its mean.
  double firstSquares = 0;   ///< The sum of the squared ranks of the first; 0 where it does not vary.
  double secondSquares = 0;  ///< Likewise of the second.
};

/// Of the ranks of two signals with the same days. Exact for up to 200,000 of them.
double sumOfProducts(std::span<const double> left, std::span<const double> right);

/// Correlates one signal with others that have other days. One thread.
class RankCorrelator {
 public:
  /// For signals within `days` days from the first day of all.
  explicit RankCorrelator(std::size_t days);

  /// Takes `first` for the pairs to come; it must outlive them.
  void take(const RankedSignal& first);

  /// Without sorting anew: either signal has its days in order, and among those that they share a value's
  /// rank follows from how many came before it. Linear in their days.
  RankCorrelation with(const RankedSignal& second);

 private:
  const RankedSignal* first_ = nullptr;
  std::vector<std::uint8_t> isOfFirst_;  // by day: 1 for those of the first
  std::vector<std::uint32_t> ranks_;     // of the second, by day, from 2; 0: not shared, or between pairs
};

}  // namespace kestrel
