#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "SignalSeries.h"

namespace kestrel {

/// A signal's days and ranks, made once for all pairs that it takes part in.
///
/// Ranks here are doubled and counted from their mean: of n values the least has 1 - n, the greatest n - 1.
/// That leaves their correlation what it is and makes them whole numbers, also where equal values share the
/// mean of their ranks. So are the sums of their products, which are exact for up to 200,000 days.
struct RankedSignal {
  /// One of the days, and the run of values that equal its own.
  struct Place {
    std::uint32_t day = 0;       ///< Counted from the first day of all signals.
    std::uint32_t runBegin = 0;  ///< The first place of the run,
    std::uint32_t runEnd = 0;    ///< and the one behind its last.
  };

  std::vector<std::uint32_t> days{};  ///< Ascending, each once.
  std::vector<double> ranks{};        ///< Of each of `days`.
  double squares = 0;                 ///< The sum of the squared ranks.
  std::vector<Place> places{};        ///< The days by ascending value.

  /// Of several values on a day the last stands. Days are counted from `firstDay`.
  static RankedSignal of(std::span<const DayValue> values, std::int32_t firstDay);
};

/// How the ranks of two signals go together over the days that they share.
struct RankCorrelation {
  std::size_t sharedDays = 0;
  double products = 0;       ///< The sum of the products of their ranks.
  double firstSquares = 0;   ///< The sum of the squared ranks of the first; 0 where it does not vary.
  double secondSquares = 0;  ///< Likewise of the second.
};

/// Correlates one signal with others. One thread.
class RankCorrelator {
 public:
  /// For signals within `days` days from the first day of all.
  explicit RankCorrelator(std::size_t days);

  /// Takes `first` for the pairs to come; it must outlive them.
  void take(const RankedSignal& first);

  /// Without sorting anew: among the shared days a value's rank follows from the number of those below it,
  /// and either signal has its own days in order. Linear in their days.
  RankCorrelation with(const RankedSignal& second);

 private:
  const RankedSignal* first_ = nullptr;
  std::vector<std::uint32_t> numberOfDay_;  // the place of a day in the first signal, from 1; 0: it has none
  std::vector<std::uint32_t> numbers_;      // of the days of the second, by its places
  std::vector<std::uint8_t> isShared_;      // by those numbers: 1 for a day of both
  std::vector<std::uint32_t> sharedBeforeFirst_;  // how many shared days stand before each place, and the end
  std::vector<std::uint32_t> sharedBeforeSecond_;
  std::vector<double> ranks_;  // of the first, by those numbers; 0 for a day not shared
};

}  // namespace kestrel
